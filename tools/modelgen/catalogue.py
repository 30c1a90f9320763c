"""What the generator knows of every type name a description may use: the runtime's own
types, the variable and parameter types of the library's tables, and the container types of
the registry (with their descriptions where they have one)."""
import re
from dataclasses import dataclass, field
from typing import Optional

# Runtime types every description may name, by category.
RUNTIME_TYPES = {
    "REALVARIABLE": "variable",
    "INTEGERPARAMETER": "integer",
    "REALPARAMETER": "real",
    "STRINGPARAMETER": "string",
    "LOGICALPARAMETER": "logical",
    "COMPONENTLISTNAME": "string",
}

# The generic bases of the base-type library, with the properties they register.
GENERIC_BASES = {
    "GENERICMODEL": ("Model", [("ComponentList", "COMPONENTLISTNAME")]),
    "GENERICSTREAM": ("Model", [("ComponentList", "COMPONENTLISTNAME")]),
    "GENERICPORT": ("Port", [("ComponentList", "COMPONENTLISTNAME"), ("ISCONNECTED", "LOGICALPARAMETER")]),
    "GENERICSTRUCTURE": ("Structure", [("ComponentList", "COMPONENTLISTNAME")]),
}

KIND_OF_KEYWORD = {"model": "Model", "stream": "Model", "port": "Port", "structure": "Structure"}


@dataclass
class TypeInfo:
    name: str
    category: str                 # variable, integer, real, string, logical, container
    kind: Optional[str] = None    # for containers: Model, Port, Structure
    base: Optional[str] = None    # for containers
    exported: bool = False
    modelled: bool = False        # the registry row is MODELLED or PROPERTIES
    equations: bool = False       # the registry row is MODELLED: it may have equations
    description: object = None    # the parsed description, for modelled containers
    row: int = -1                 # position in registry.def

    @property
    def cpp(self):
        return "VX_" + self.name

    @property
    def is_value(self):
        return self.category in ("variable", "integer", "real", "string", "logical")


@dataclass
class ProcArg:
    kind: str          # R, I or S
    dims: int


@dataclass
class Procedure:
    """A row of procedures/procedures.def."""
    name: str
    inputs: list       # [ProcArg]
    outputs: list
    component_list: bool

    @property
    def cpp(self):
        return "VXProc_" + self.name


@dataclass
class Catalogue:
    types: dict = field(default_factory=dict)
    procedures: dict = field(default_factory=dict)

    def find(self, name):
        return self.types.get(name)

    def containers(self):
        return sorted((t for t in self.types.values() if t.category == "container" and t.row >= 0),
                      key=lambda t: t.row)


def _rows(path, macro):
    """The first field of each row of an X-macro table, with the row's whole text."""
    out = []
    with open(path, encoding="utf-8") as f:
        for line in f:
            line = line.strip()
            m = re.match(re.escape(macro) + r"\(([A-Za-z0-9_]+)\s*,(.*)\)\s*$", line)
            if m:
                out.append((m.group(1), [x.strip() for x in m.group(2).split(",")]))
    return out


def _signature(text):
    """ "R*, R[1]* -> R" as ([ProcArg], [ProcArg])."""
    ins, outs = text.split("->")
    def items(part):
        part = part.strip()
        if not part or part == "(none)":
            return []
        out = []
        for item in part.split(","):
            item = item.strip().rstrip("*")
            dims = int(item[2]) if "[" in item else 0
            out.append(ProcArg(item[0], dims))
        return out
    return items(ins), items(outs)


def load_procedures(cat, path):
    pattern = re.compile(r'VX_PROCEDURE\((\w+),\s*"[^"]*",\s*"[^"]*",\s*\d+,\s*\w+,\s*"([^"]*)",\s*(\w+),\s*(\w+)\)')
    try:
        with open(path, encoding="utf-8") as f:
            for line in f:
                m = pattern.match(line.strip())
                if m:
                    ins, outs = _signature(m.group(2))
                    cat.procedures[m.group(1)] = Procedure(m.group(1), ins, outs, m.group(4) == "yes")
    except FileNotFoundError:
        pass


def load(types_dir, registry_def):
    cat = Catalogue()
    for name, category in RUNTIME_TYPES.items():
        cat.types[name] = TypeInfo(name, category)
    for name, (kind, _props) in GENERIC_BASES.items():
        cat.types[name] = TypeInfo(name, "container", kind=kind, modelled=True)
    for name, _ in _rows(f"{types_dir}/variable_types.def", "VX_VARIABLE_TYPE"):
        cat.types[name] = TypeInfo(name, "variable")
    for name, _ in _rows(f"{types_dir}/option_types.def", "VX_OPTION_TYPE"):
        cat.types[name] = TypeInfo(name, "string")
    for macro, category in (("VX_INTEGER_TYPE", "integer"), ("VX_REAL_TYPE", "real"),
                            ("VX_LOGICAL_TYPE", "logical")):
        for name, _ in _rows(f"{types_dir}/scalar_parameter_types.def", macro):
            cat.types[name] = TypeInfo(name, category)
    for row, (name, fields) in enumerate(_rows(registry_def, "VX_CONTAINER")):
        kind, base, exports, content = fields[0], fields[1], fields[2], fields[3]
        cat.types[name] = TypeInfo(name, "container", kind=kind, base=base,
                                   exported=(exports == "EXPORTED"), modelled=(content in ("MODELLED", "PROPERTIES")),
                                   equations=(content == "MODELLED"),
                                   row=row)
    return cat
