"""Conversion of Python values to flowsheet-file values, checked before anything is changed."""
import json
import math
import numbers

import numpy as np

from ._zorexp import InputError

ATTRIBUTES = ("value", "spec", "lower", "upper", "unit")
REAL_KINDS = ("real_variable", "real_parameter")


def is_attribute_object(value):
    return isinstance(value, dict) and value and all(k in ATTRIBUTES for k in value)


def brief(value, limit=60):
    text = repr(value.tolist() if isinstance(value, np.ndarray) else value)
    return text if len(text) <= limit else text[:limit - 3] + "..."


def _real(path, value, whole):
    """A finite real number, or InputError naming the path and the value."""
    if isinstance(value, (bool, np.bool_)) or not isinstance(value, numbers.Real):
        raise InputError(f"{path}: {brief(whole)} is not a number")
    x = float(value)
    if not math.isfinite(x):
        raise InputError(f"{path}: {brief(whole)} is not a finite number")
    return x


def real_values(path, value, size):
    """A number (scalar target, size None) or a list of numbers (array of size elements)."""
    if size is None:
        if isinstance(value, np.ndarray) and value.ndim == 0:
            value = value.item()
        return _real(path, value, value)
    if isinstance(value, numbers.Real) and not isinstance(value, bool):
        return _real(path, value, value)           # one value for every element
    try:
        array = np.asarray(value)
    except Exception:  # noqa: BLE001 - anything numpy cannot take is not a list of numbers
        raise InputError(f"{path}: {brief(value)} is not a list of numbers") from None
    if array.ndim != 1 or array.dtype.kind not in "biuf" or array.dtype.kind == "b":
        raise InputError(f"{path}: {brief(value)} is not a list of numbers")
    if array.shape[0] != size:
        raise InputError(f"{path} has {size} elements, the list gives {array.shape[0]}")
    array = array.astype(float)
    if not np.all(np.isfinite(array)):
        raise InputError(f"{path}: {brief(value)} holds a value that is not a finite number")
    return array


def with_unit(value):
    """(300, "K") and a pint quantity as the file's attribute object {"value": 300, "unit": "K"};
    the host converts the value to the base unit of its type."""
    if isinstance(value, tuple) and len(value) == 2 and isinstance(value[1], str):
        return {"value": value[0], "unit": value[1]}
    if is_pint_quantity(value):
        return {"value": value.magnitude, "unit": host_unit(value.units)}
    return value


def is_pint_quantity(value):
    return hasattr(value, "magnitude") and hasattr(value, "units") and not isinstance(value, np.ndarray)


# pint's short unit names that the units table writes otherwise.
_HOST_SPELLING = {"h": "hr", "Δ°C": "delta_degC", "Δ°F": "delta_degF"}


def host_unit(units):
    """A pint unit as the units table writes it: "kmol / h" is "kmol/hr", "W / m ** 2 / K" is
    "W/m2/K", "kg * m ** 2" is "kg m2"."""
    text = format(units, "~C").replace("**", "")
    parts = [" ".join(_HOST_SPELLING.get(w, w) for w in part.split("*")) for part in text.split("/")]
    return "/".join(parts)


def checked(path, value, kind, size):
    """The value as the flowsheet file would hold it, checked where Python can check it."""
    value = with_unit(value)
    if is_attribute_object(value):
        out = dict(value)
        if "value" in out and kind in REAL_KINDS:
            out["value"] = real_values(path, out["value"], size)
        for bound in ("lower", "upper"):
            if bound in out:
                out[bound] = real_values(path, out[bound], size)
        return out
    if kind in REAL_KINDS:
        return real_values(path, value, size)
    if isinstance(value, np.ndarray):
        return value.tolist()
    if isinstance(value, np.generic):
        return value.item()
    return value


def _default(o):
    if isinstance(o, np.ndarray):
        return o.tolist()
    if isinstance(o, np.generic):
        return o.item()
    raise TypeError(f"{o!r} cannot be a flowsheet value")


def to_json(value):
    try:
        return json.dumps(value, default=_default, allow_nan=False)
    except (TypeError, ValueError) as e:
        raise InputError(str(e)) from None


def plain(value):
    """A document with numpy values replaced by Python ones (for pickling and printing)."""
    return json.loads(to_json(value))
