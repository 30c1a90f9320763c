"""Profiles of array variables drawn with matplotlib (Agg: no display needed)."""
import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402


def axis_label(name, quantity, unit):
    """"C1.T_CELL (TEMPERATURE, K)", leaving out what is not known."""
    known = [t for t in (quantity, unit) if t]
    return f"{name} ({', '.join(known)})" if known else name


def plot_profile(name, indices, values, unit, quantity, ax=None, file=None):
    """Draws values against their index (numbers when every index is a number, in set order
    otherwise); returns the Axes."""
    if ax is None:
        _, ax = plt.subplots(figsize=(6.4, 4.0))
    try:
        x = np.array([float(i) for i in indices])
        ax.plot(x, values, marker="o", markersize=3)
    except ValueError:
        ax.plot(range(len(values)), values, marker="o", markersize=3)
        ax.set_xticks(range(len(values)), indices, rotation=45)
    ax.set_xlabel(f"index of {name}")
    ax.set_ylabel(axis_label(name, quantity, unit))
    ax.grid(True, alpha=0.3)
    if file is not None:
        ax.figure.tight_layout()
        ax.figure.savefig(file)
    return ax
