"""Flowsheets in Python: a flowsheet-file document and the set-up flowsheet made from it.

The document is what the flowsheet file would hold; every accepted change is written into it,
so that it can be saved, sent to the workers of a sweep, or set up again. Real values (of
variables and real parameters), specs and bounds are applied to the set-up flowsheet in place;
anything else (an integer, text or set parameter, a block, a connection) may change its
structure, and the flowsheet is set up again from the changed document. Either way a change
that is refused changes nothing.
"""
import copy
import json
import os
import re
from dataclasses import dataclass, field

import numpy as np

from . import _zorexp
from ._zorexp import InputError
from .values import REAL_KINDS, brief, checked, is_attribute_object, is_pint_quantity, plain, to_json

_ELEMENT = re.compile(r"^(.*)\(([^()]*)\)$")


@dataclass
class SolveResult:
    """What a solve ended with. converged is False for any status but "converged"; the values
    then hold the last iterate."""
    status: str
    converged: bool
    iterations: int
    residual_norm: float
    message: str
    largest_residuals: list = field(default_factory=list)   # [(equation label, residual)], largest first
    wall_time: float = 0.0                                    # seconds

    def __bool__(self):
        return self.converged


class Values(np.ndarray):
    """The real values of a property: a view of the solver's own doubles (writing to it writes
    them). It knows where it came from: spec, lower, upper, unit and quantity."""

    def __array_finalize__(self, obj):
        self._origin = None   # slices and results of arithmetic are plain values

    def _attribute(self, name):
        if self._origin is None:
            raise AttributeError(f"{name} is known only on the array fs[path] returns")
        sheet, path = self._origin
        return sheet.attribute(path, name)

    path = property(lambda self: self._origin[1] if self._origin else None)
    spec = property(lambda self: self._attribute("spec"))
    lower = property(lambda self: self._attribute("lower"))
    upper = property(lambda self: self._attribute("upper"))
    unit = property(lambda self: self._attribute("unit"))
    quantity = property(lambda self: self._attribute("quantity"))

    def to(self, unit):
        """A copy of the values in another unit of their quantity (fs["C1.T"].to("F"))."""
        if self._origin is None:
            raise AttributeError("to() is known only on the array fs[path] returns")
        sheet, path = self._origin
        return sheet.in_unit(path, unit)

    def quantity_of(self, ureg):
        """The values as a pint Quantity of the registry ureg, in their base unit."""
        return ureg.Quantity(np.array(self), pint_unit(self.unit))


# Unit texts of the units table that pint spells otherwise.
_PINT_SPELLING = {"C": "degC", "°C": "degC", "F": "degF", "°F": "degF", "R": "degR", "°R": "degR", "hr": "hour"}


def pint_unit(text):
    """A unit of the units table as pint writes it ("C" is degC, "kmol/hr" is kmol/hour, "m2"
    is m**2)."""
    if not text:
        return ""
    def word(w):
        w = _PINT_SPELLING.get(w, w)
        return re.sub(r"^([A-Za-z]+)(\d)$", r"\1**\2", w)
    return "/".join(" ".join(word(w) for w in part.split(" ")) for part in text.split("/"))


def _split(path):
    if not isinstance(path, str) or "." not in path or path.startswith(".") or path.endswith("."):
        raise InputError(f"{path!r}: a path is BLOCK.PROPERTY, such as \"C1.T_CELL\" or \"C1.T_CELL(3)\"")
    block, sub = path.split(".", 1)
    return block, sub


def _merge(old, new):
    """A later assignment to the same property: attributes combine, values replace."""
    if is_attribute_object(old) and is_attribute_object(new):
        return {**old, **new}
    if is_attribute_object(new) and old is not None and not isinstance(old, dict):
        return {"value": old, **new}
    if is_attribute_object(old) and not isinstance(new, dict):
        return {**old, "value": new}
    return new


def _keyed(entry, indices):
    """A whole-array entry as an object keyed by index, so that one element can be changed."""
    if isinstance(entry, dict) and not is_attribute_object(entry):
        return dict(entry)
    if not is_attribute_object(entry):
        entry = {"value": entry}
    out = {index: {} for index in indices}
    for attr, value in entry.items():
        many = isinstance(value, (list, np.ndarray))
        for k, index in enumerate(indices):
            out[index][attr] = value[k] if many else value
    return out


class Flowsheet:
    """A flowsheet: load one with Flowsheet.load(path_or_dict) or build one in code with
    add_block and connect. fs["BLOCK.PATH"] reads and writes values."""

    def __init__(self, document=None, source="<flowsheet>"):
        doc = copy.deepcopy(document) if document is not None else {}
        doc.setdefault("version", 1)
        doc.setdefault("blocks", {})
        doc.setdefault("connections", [])
        self._source = source
        self._sheet = None
        self._doc = doc
        if doc["blocks"]:
            self._sheet = _zorexp.Sheet(to_json(doc), source)

    @classmethod
    def load(cls, path_or_dict):
        """A flowsheet from a file (read as the zorexp command reads it) or a dict of the same form."""
        if isinstance(path_or_dict, dict):
            return cls(path_or_dict)
        path = os.fspath(path_or_dict)
        try:
            with open(path, encoding="utf-8") as f:
                text = f.read()
        except (OSError, UnicodeDecodeError) as e:
            raise InputError(f"{path}: cannot read the flowsheet file: {e.strerror or e}") from None
        fs = cls.__new__(cls)
        fs._source = path
        fs._sheet = _zorexp.Sheet(text, path, True)   # the file's own faults are reported with line and column
        fs._doc = json.loads(text)
        fs._doc.setdefault("blocks", {})
        fs._doc.setdefault("connections", [])
        return fs

    # --- the document
    def to_dict(self):
        """The flowsheet as a flowsheet-file document (with every accepted change)."""
        return plain(self._doc)

    def save(self, path):
        with open(path, "w", encoding="utf-8") as f:
            json.dump(self.to_dict(), f, indent=2)
            f.write("\n")

    @property
    def source(self):
        return self._source

    def blocks(self):
        """[(name, type)] in file order."""
        return self._sheet.blocks() if self._sheet is not None else []

    @property
    def _live(self):
        """The set-up flowsheet; a document without blocks has none yet."""
        if self._sheet is None:
            raise InputError(f"{self._source}: the flowsheet has no blocks (add_block adds one)")
        return self._sheet

    def _rebuild(self, doc, change):
        """Sets up the changed document; on a refusal nothing changes."""
        try:
            sheet = _zorexp.Sheet(to_json(doc), self._source)
        except (InputError, _zorexp.SolveError) as e:
            raise type(e)(f"{change}: {e}") from None
        self._sheet, self._doc = sheet, doc

    def add_block(self, name, type_name, components=None, **settings):
        """Adds a block of a type with values for its properties (NPTS=100, T_COOL={"value": 300,
        "spec": "Fixed"}); components names a component list of the document."""
        if not isinstance(name, str) or not name or "." in name:
            raise InputError(f"block name {name!r}: give a name without dots")
        if any(b.lower() == name.lower() for b in self._doc["blocks"]):
            raise InputError(f"block {name}: the flowsheet already has a block of that name")
        doc = copy.deepcopy(self._doc)
        block = {"type": type_name}
        if components is not None:
            block["components"] = components
        if settings:
            block["set"] = {path: plain(value) for path, value in settings.items()}
        doc["blocks"][name] = block
        self._rebuild(doc, f"block {name} ({type_name})")

    def connect(self, from_port, to_port, name=None):
        """Joins an outlet port to an inlet port, each "BLOCK.PORT"."""
        doc = copy.deepcopy(self._doc)
        connection = {"from": from_port, "to": to_port}
        if name is not None:
            connection["name"] = name
        doc["connections"].append(connection)
        self._rebuild(doc, f"connection {from_port} -> {to_port}")

    # --- values
    def __getitem__(self, path):
        _split(path)
        info = self._live.describe(path)
        kind = info["kind"]
        if kind in REAL_KINDS or (kind == "array" and info["element_kind"] in REAL_KINDS):
            view = self._live.values(path).view(Values)
            view._origin = (self._sheet, path)
            return view
        if kind == "container" or kind == "array":
            what = f"an array of {info['element_kind'] or 'nothing yet'}" if kind == "array" else f"a {info['type']}"
            raise InputError(f"{path} is {what}: name one of its values")
        return self._live.plain_value(path)

    def __setitem__(self, path, value):
        block, sub = _split(path)
        info = self._live.describe(path)
        kind = info["kind"]
        element_kind = info["element_kind"]
        size = info.get("size")
        real = kind in REAL_KINDS or (kind == "array" and element_kind in REAL_KINDS)
        if real and is_pint_quantity(value):
            value = self._from_pint(path, value)
        value = checked(path, value, element_kind if kind == "array" else kind, size if kind == "array" else None)
        if real:
            if isinstance(value, np.ndarray):
                self._live.apply_numbers(path, value)     # no detour through text for an array's values
            else:
                self._live.apply(path, to_json(value))
            self._record(self._doc, block, sub, self._as_applied(path, value))
        else:
            doc = copy.deepcopy(self._doc)
            self._record(doc, block, sub, value)
            self._rebuild(doc, f"{path} = {brief(value)}")

    def _from_pint(self, path, quantity):
        """A pint quantity as (magnitude, unit) for the host: in the property's base unit when
        pint can convert it there (pint and the units table may spell a unit differently), in
        its own unit otherwise, so that the host names the quantity and the units it accepts."""
        base = self._live.attribute(path, "unit")
        try:
            return (np.asarray(quantity.to(pint_unit(base)).magnitude, dtype=float), base) if base else quantity
        except Exception:  # noqa: BLE001 - pint cannot convert: the host refuses it with its message
            return quantity

    def _as_applied(self, path, value):
        """What a real value became, in base units, for the document: a value given with a unit
        is kept as the number the flowsheet holds, so that later changes combine with it."""
        given = value if is_attribute_object(value) else {"value": value}
        out = {}
        for attr in given:
            if attr == "value":
                values = self._live.values(path)
                out["value"] = float(values) if values.ndim == 0 else np.array(values)
            elif attr in ("lower", "upper"):
                out[attr] = self._live.attribute(path, attr)
            elif attr == "spec":
                out["spec"] = given["spec"]
        return out if is_attribute_object(value) else out["value"]

    def get(self, path, attribute):
        """One attribute of a property: "lower", "upper", "spec", "unit" or "quantity"."""
        _split(path)
        return self._live.attribute(path, attribute)

    def index(self, path):
        """The index texts of an array in set order."""
        _split(path)
        return self._live.index_texts(path)

    def fix(self, path):
        """Fixes a variable (or every element of an array) at its current value."""
        self[path] = {"spec": "Fixed"}

    def free(self, path):
        """Frees a variable (or every element of an array): the solver moves it."""
        self[path] = {"spec": "Free"}

    def _record(self, doc, block, sub, value):
        name = next((b for b in doc["blocks"] if b.lower() == block.lower()), block)
        sets = doc["blocks"][name].setdefault("set", {})
        upper = sub.upper()
        element = _ELEMENT.match(sub)
        whole = next((k for k in sets if element and k.upper() == element.group(1).upper()), None)
        if whole is not None:
            keyed = _keyed(sets[whole], self._live.index_texts(f"{block}.{whole}"))
            index = next((k for k in keyed if k.upper() == element.group(2).upper()), element.group(2))
            keyed[index] = _merge(keyed.get(index), value)
            sets[whole] = keyed
            return
        old = None
        for key in list(sets):
            if key.upper() == upper:
                old = sets.pop(key)
            elif key.upper().startswith(upper + "("):
                del sets[key]
        sets[sub] = _merge(old, value)

    # --- analysis and solving
    def analyse(self):
        """Equations against unknowns, structural rank and what to fix, as `zorexp analyse --json`."""
        return json.loads(self._live.analyse())

    def solve(self, max_iterations=50, tolerance=1e-8):
        """Solves from the current values. Returns a SolveResult (converged or not); raises
        SolveError when the flowsheet is not square and structurally nonsingular."""
        return SolveResult(**self._live.solve(max_iterations, tolerance))

    # --- pictures
    def plot(self, path, ax=None, file=None):
        """Draws an array's profile against its index; returns the matplotlib Axes. With file,
        the figure is also written there (PNG by its extension)."""
        from .plotting import plot_profile
        values = self[path]
        if values.ndim != 1:
            raise InputError(f"{path} is a single value: plot draws arrays")
        return plot_profile(path, self.index(path), np.array(values), values.unit, values.quantity, ax=ax, file=file)

    def __repr__(self):
        return f"<zorexp.Flowsheet {self._source}: {len(self._doc['blocks'])} blocks>"
