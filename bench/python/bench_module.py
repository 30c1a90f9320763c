"""The Python module against numpy and against itself, as ratios measured in one process.

    PYTHONPATH=build-release/python /usr/bin/python3 bench/python/bench_module.py [--points N] [--cases N]

1. Reading and writing a 10^6-element array through the module, against numpy.copy of an
   array of the same size (medians of repeated runs):
   - view: fs[path] (a view of the solver's values, no copy);
   - read copy: numpy.array(fs[path]);
   - write into view: fs[path][:] = x;
   - checked write: fs[path] = x (checked and applied as user values, kept in the document).
2. A sweep of small cases on 2 local workers against the same cases solved one after another
   in this process (scheduler="sequential"); the cluster is started before timing.
"""
import argparse
import json
import pathlib
import statistics
import time

import numpy as np

import zorexp

ROOT = pathlib.Path(__file__).resolve().parents[2]


def median_seconds(run, repeat):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        run()
        times.append(time.perf_counter() - start)
    return statistics.median(times)


def array_io(points, repeat):
    doc = json.loads((ROOT / "examples" / "coolant_profile.json").read_text())
    wall = doc["blocks"]["WALL"]["set"]
    n = points
    wall["NPTS"] = n - 1
    wall["T_PROCESS"] = {"value": 270.0, "spec": "Fixed"}
    wall["T_COOL_"] = {"value": 230.0, "spec": "Fixed"}
    fs = zorexp.Flowsheet(doc)
    path = "WALL.T_PROCESS"
    base = np.random.default_rng(1).uniform(250, 290, n)
    baseline = median_seconds(lambda: np.copy(base), repeat)
    rows = [
        ("view fs[path]", median_seconds(lambda: fs[path], repeat)),
        ("read copy np.array(fs[path])", median_seconds(lambda: np.array(fs[path]), repeat)),
        ("write into view fs[path][:] = x", median_seconds(lambda: fs[path].__setitem__(slice(None), base), repeat)),
        ("checked write fs[path] = x", median_seconds(lambda: fs.__setitem__(path, base), max(3, repeat // 10))),
    ]
    print(f"array of {n} doubles; numpy.copy median {baseline * 1e3:.3f} ms")
    for name, seconds in rows:
        print(f"  {name:34s} {seconds * 1e3:10.3f} ms   ratio {seconds / baseline:8.3f}")


def sweep_speed(cases, workers, npts):
    doc = json.loads((ROOT / "examples" / "coolant_profile.json").read_text())
    if npts:
        wall = doc["blocks"]["WALL"]["set"]
        wall["NPTS"] = npts
        wall["T_PROCESS"] = {"value": 270.0, "spec": "Fixed"}
        wall["T_COOL_"] = {"value": 230.0, "spec": "Fixed"}
    fs = zorexp.Flowsheet(doc)
    grid = {"WALL.U": np.linspace(0.2, 0.6, cases)}
    zorexp.sweep(fs, {"WALL.U": [0.3, 0.4]}, outputs=["WALL.Q_FLUX"], workers=workers)   # cluster up
    start = time.perf_counter()
    sequential = zorexp.sweep(fs, grid, outputs=["WALL.Q_FLUX"], scheduler="sequential")
    t_seq = time.perf_counter() - start
    start = time.perf_counter()
    parallel = zorexp.sweep(fs, grid, outputs=["WALL.Q_FLUX"], workers=workers)
    t_par = time.perf_counter() - start
    assert np.allclose(sequential["WALL.Q_FLUX"], parallel["WALL.Q_FLUX"])
    print(f"sweep of {cases} cases of {fs['WALL.Q_FLUX'].size} cells: sequential {t_seq:.3f} s, {workers} local workers {t_par:.3f} s, "
          f"ratio {t_par / t_seq:.3f}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--points", type=int, default=1_000_000)
    parser.add_argument("--repeat", type=int, default=31)
    parser.add_argument("--cases", type=int, default=1000)
    parser.add_argument("--workers", type=int, default=2)
    parser.add_argument("--npts", type=int, default=0, help="cells of the swept coolant profile (0: the example's 9)")
    parser.add_argument("--sweep-only", action="store_true")
    args = parser.parse_args()
    if not args.sweep_only:
        array_io(args.points, args.repeat)
    sweep_speed(args.cases, args.workers, args.npts)


if __name__ == "__main__":
    main()
