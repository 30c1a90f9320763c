"""`zorexp solve FILE --plot PATH.png [--plot-vars ...]`: draws array variables of a solution.

    python3 -m zorexp.result_plot RESULTS.csv PATH.png [BLOCK.ARRAY ...]

RESULTS.csv is the solve's CSV (block,path,value,unit,spec). With one variable (named, or the
only array) the figure is PATH.png; with several, one figure per variable:
PATH-BLOCK.ARRAY.png. The files written are listed on stderr.
"""
import csv
import os
import re
import sys

from .plotting import plot_profile

_ELEMENT = re.compile(r"^(.*)\(([^()]*)\)$")


def read_arrays(csv_file):
    """{"BLOCK.ARRAY": (indices, values, unit)} in file order."""
    arrays = {}
    with open(csv_file, newline="", encoding="utf-8") as f:
        for row in csv.DictReader(f):
            element = _ELEMENT.match(row["path"])
            if not element:
                continue
            name = f"{row['block']}.{element.group(1)}"
            indices, values, _ = arrays.setdefault(name, ([], [], row["unit"]))
            indices.append(element.group(2))
            values.append(float(row["value"]) if row["value"] else float("nan"))
    return arrays


def main(argv):
    if len(argv) < 2:
        print("usage: python3 -m zorexp.result_plot RESULTS.csv PATH.png [BLOCK.ARRAY ...]", file=sys.stderr)
        return 2
    csv_file, png, wanted = argv[0], argv[1], argv[2:]
    arrays = read_arrays(csv_file)
    by_key = {name.upper(): name for name in arrays}
    if wanted:
        missing = [w for w in wanted if w.upper() not in by_key]
        if missing:
            print(f"zorexp: --plot-vars {', '.join(missing)}: no array variable of that name (the array variables: "
                  f"{', '.join(arrays) or 'none'})", file=sys.stderr)
            return 2
        names = [by_key[w.upper()] for w in wanted]
    else:
        names = list(arrays)
    if not names:
        print("zorexp: --plot: the flowsheet has no array variables to draw", file=sys.stderr)
        return 2
    import matplotlib.pyplot as plt
    stem, ext = os.path.splitext(png)
    for name in names:
        target = png if len(names) == 1 else f"{stem}-{name}{ext or '.png'}"
        indices, values, unit = arrays[name]
        ax = plot_profile(name, indices, values, unit, None, file=target)
        plt.close(ax.figure)
        print(f"plot: {target}", file=sys.stderr)
    return 0


def run(argv):
    """main, with any failure (a file that cannot be written, a value that cannot be drawn) on one line."""
    try:
        return main(argv)
    except Exception as e:  # noqa: BLE001 - the command reports every failure as one line
        print(f"zorexp: --plot: {type(e).__name__}: {e}".splitlines()[0], file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(run(sys.argv[1:]))
