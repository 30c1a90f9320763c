"""Case studies: every combination of values of fixed variables and real parameters, solved in
parallel on Dask workers (a local cluster of this machine's cores by default, or the cluster
of a scheduler address) or one after another in this process.

Each worker sets the flowsheet up once and solves its cases with the same engine as the
zorexp command's sweep; a case starts from the solution of the nearest case that worker has
solved, and from the flowsheet's own start when that does not converge. A case that fails is
recorded with its message; a worker that dies loses only the cases it held, which are tried
once more, each on its own, and then marked failed.
"""
import atexit
import itertools
import math
import os
import uuid

import numpy as np

from . import _zorexp
from ._zorexp import InputError
from .values import REAL_KINDS, to_json

SEQUENTIAL = "sequential"
_NEIGHBOURS_KEPT = 4096          # solved cases a worker remembers for warm starts
_STATUS_WIDTH = 24

# --- on the worker -------------------------------------------------------------------------

_studies = {}                    # study -> {sheet, solved case points, their unknowns}


def _worker_state(study, doc_json, source):
    state = _studies.get(study)
    if state is None:
        _studies.clear()         # one study at a time per worker: the previous flowsheet goes
        state = _studies[study] = {"sheet": _zorexp.Sheet(doc_json, source), "points": None, "unknowns": []}
    return state


def _nearest(state, point, scale):
    """The unknowns of the solved case nearest to point, measured across each varied range."""
    n = len(state["unknowns"])
    if n == 0:
        return None
    distance = np.sum(((state["points"][:n] - point) / scale) ** 2, axis=1)
    return state["unknowns"][int(np.argmin(distance))]


def _remember(state, point, unknowns):
    n = len(state["unknowns"])
    if n >= _NEIGHBOURS_KEPT:
        return
    if state["points"] is None or n == len(state["points"]):
        grown = np.empty((max(16, 2 * n), point.size))
        if n:
            grown[:n] = state["points"][:n]
        state["points"] = grown
    state["points"][n] = point
    state["unknowns"].append(unknowns)


def _solve_cases(study, doc_json, source, paths, outputs, cases, scale, options, case_hook=None):
    """Solves cases [(index, values)] of a study in order; returns [(index, status, converged,
    iterations, message, outputs)]. Runs on a worker (or in this process when sequential)."""
    try:
        state = _worker_state(study, doc_json, source)
    except (InputError, _zorexp.SolveError) as e:
        return [(i, "failed", False, 0, str(e), None) for i, _ in cases]
    sheet = state["sheet"]
    done = []
    for index, values in cases:
        if case_hook is not None:
            case_hook(values)
        point = np.asarray(values, dtype=float)
        try:
            r = sheet.solve_case(paths, list(point), _nearest(state, point, scale), **options)
        except (InputError, _zorexp.SolveError) as e:
            done.append((index, "failed", False, 0, str(e), None))
            continue
        row = None
        if r["converged"]:
            row = [np.array(sheet.values(p), dtype=float) for p in outputs]
            _remember(state, point, r["unknowns"])
        done.append((index, r["status"], r["converged"], r["iterations"], r["message"], row))
    return done


# --- the study ------------------------------------------------------------------------------

_default_client = None


def _local_client(workers):
    """The embedded cluster: worker processes (a flowsheet makes its session current, so no
    threads), one thread each, restarted when they die; kept for later studies."""
    global _default_client
    n = workers or os.cpu_count() or 1
    if _default_client is not None and len(_default_client.scheduler_info()["workers"]) == n:
        return _default_client
    import dask
    from distributed import Client, LocalCluster
    _close_default()
    # A task whose worker dies is not retried by the scheduler: the sweep retries its cases itself.
    # The statistical profiler samples the solving thread every 10 ms; the cases do not need it.
    with dask.config.set({"distributed.scheduler.allowed-failures": 0, "distributed.worker.daemon": False,
                          "distributed.worker.profile.enabled": False}):
        cluster = LocalCluster(n_workers=n, threads_per_worker=1, processes=True, dashboard_address=None)
        _default_client = Client(cluster)
    return _default_client


def _close_default():
    global _default_client
    if _default_client is not None:
        cluster = _default_client.cluster
        _default_client.close()
        cluster.close()
        _default_client = None


atexit.register(_close_default)


def _grid(fs, variables):
    if not isinstance(variables, dict) or not variables:
        raise InputError("sweep: give the values to vary as {\"BLOCK.PATH\": values, ...}")
    paths, grids = [], []
    for path, values in variables.items():
        info = fs._live.describe(path)
        if info["kind"] not in REAL_KINDS or (info["kind"] == "real_variable" and fs.get(path, "spec") != "Fixed"):
            raise InputError(f"sweep: {path} is {'a free variable' if info['kind'] == 'real_variable' else 'not a real value'};"
                             " a sweep varies a fixed variable or a real parameter")
        try:
            grid = np.asarray(values, dtype=float).ravel()
        except (TypeError, ValueError):
            raise InputError(f"sweep: {path}: the values are not numbers") from None
        if grid.size == 0 or not np.all(np.isfinite(grid)):
            raise InputError(f"sweep: {path}: give one or more finite numbers")
        paths.append(path)
        grids.append(grid)
    return paths, grids


def _table(paths, outputs, shapes, cases, rows, table):
    fields = [(p, "f8") for p in paths] + [("status", f"U{_STATUS_WIDTH}"), ("converged", "?"), ("iterations", "i4"),
                                           ("message", "O")]
    fields += [(o, "f8", s) if s else (o, "f8") for o, s in zip(outputs, shapes)]
    out = np.zeros(len(cases), dtype=fields)
    for i, values in enumerate(cases):
        for p, v in zip(paths, values):
            out[p][i] = v
    for index, status, converged, iterations, message, row in rows:
        out["status"][index] = status[:_STATUS_WIDTH]
        out["converged"][index] = converged
        out["iterations"][index] = iterations
        out["message"][index] = message
        for o, value in zip(outputs, row if row is not None else [None] * len(outputs)):
            out[o][index] = math.nan if value is None else value
    if table == "pandas":
        import pandas as pd
        return pd.DataFrame({name: list(out[name]) if out[name].ndim > 1 else out[name] for name in out.dtype.names})
    return out


def sweep(fs, variables, outputs=(), scheduler=None, workers=None, max_iterations=50, tolerance=1e-8,
          table="numpy", case_hook=None):
    """Solves fs at every combination of the values in variables ({"C1.U": numpy.linspace(...),
    ...}; the last path varies fastest) and returns one row per case: the varied values, status,
    converged, iterations, message and each output (nan for a case that failed).

    scheduler: None for a local cluster of workers processes (default: this machine's cores),
    a scheduler address ("tcp://host:8786") or a distributed.Client for a cluster of machines,
    or "sequential" to solve the cases one after another in this process.
    table: "numpy" (a structured array) or "pandas" (a DataFrame).
    case_hook: called on the worker with each case's values before it is solved (instrumentation).
    """
    if table not in ("numpy", "pandas"):
        raise InputError(f"sweep: table {table!r}: give \"numpy\" or \"pandas\"")
    paths, grids = _grid(fs, variables)
    outputs = [outputs] if isinstance(outputs, str) else list(outputs)
    shapes = [np.shape(fs[o]) for o in outputs]          # every output is checked before anything runs
    shapes = [s[0] if s else None for s in shapes]
    options = {"max_iterations": int(max_iterations), "tolerance": float(tolerance)}
    if options["max_iterations"] < 1 or not (options["tolerance"] > 0 and math.isfinite(options["tolerance"])):
        raise InputError(f"sweep: max_iterations {max_iterations} and tolerance {tolerance}: at least 1 iteration"
                         " and a finite tolerance above 0")
    cases = list(itertools.product(*[g.tolist() for g in grids]))
    scale = np.array([max(np.ptp(g), 1e-300) for g in grids])
    doc_json, source, study = to_json(fs.to_dict()), fs.source, uuid.uuid4().hex
    indexed = list(enumerate(cases))

    if scheduler == SEQUENTIAL:
        rows = _solve_cases(study, doc_json, source, paths, outputs, indexed, scale, options, case_hook)
        return _table(paths, outputs, shapes, cases, rows, table)

    if scheduler is None:
        client = _local_client(workers)
    elif isinstance(scheduler, str):
        from distributed import Client
        client = Client(scheduler)
    else:
        client = scheduler
    n_workers = max(1, len(client.scheduler_info()["workers"]))
    # Two contiguous chunks per worker: neighbouring cases share a worker and its warm starts, and
    # few tasks keep Dask's own cost per task small against cases that solve in a fraction of a
    # millisecond.
    size = max(1, math.ceil(len(indexed) / (n_workers * 2)))
    chunks = [indexed[k:k + size] for k in range(0, len(indexed), size)]
    futures = [client.submit(_solve_cases, study, doc_json, source, paths, outputs, chunk, scale, options, case_hook,
                             pure=False) for chunk in chunks]
    rows, retry = [], []
    for chunk, future in zip(chunks, futures):
        try:
            rows.extend(future.result())
        except Exception:  # noqa: BLE001 - a worker died or the task could not run: retried below
            retry.extend(chunk)
    # Each case of a lost chunk is tried once more on its own, one at a time, so that a worker
    # that dies again takes no other case with it.
    for case in retry:
        future = client.submit(_solve_cases, study, doc_json, source, paths, outputs, [case], scale, options, case_hook,
                               pure=False)
        try:
            rows.extend(future.result())
        except Exception as e:  # noqa: BLE001 - the case failed twice: recorded, the study goes on
            rows.append((case[0], "failed", False, 0,
                         f"the worker solving this case failed twice: {type(e).__name__}: {e}", None))
    return _table(paths, outputs, shapes, cases, rows, table)
