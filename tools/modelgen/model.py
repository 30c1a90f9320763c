"""The meaning of a description: its properties with their C++ types, the sets they run over,
and name lookup through the base chain and into members (ports, sub-models, structures)."""
from dataclasses import dataclass, field
from typing import Optional

from .catalogue import GENERIC_BASES, KIND_OF_KEYWORD
from .errors import DescriptionError

ATTRIBUTES = {"VALUE", "SPEC", "LOWER", "UPPER", "RECORD", "ISMATCHED", "ISCONNECTED"}
SPEC_NAMES = {"Free": "VX_SPEC_FREE", "Fixed": "VX_SPEC_FIXED", "Initial": "VX_SPEC_INITIAL",
              "RateInitial": "VX_SPEC_RATEINITIAL"}


@dataclass(eq=False)
class SetRef:
    """A set that arrays are sized over and loops run over."""
    kind: str                       # prop (a set property), components, connections (of a multiport)
    prop: Optional["PropDecl"] = None

    @property
    def elem(self):
        """integer or string."""
        if self.kind == "prop":
            return self.prop.setkind
        return "string"

    def key(self):
        return (self.kind, id(self.prop) if self.prop else None)

    def text(self):
        if self.kind == "components":
            return "components"
        return self.prop.name


@dataclass(eq=False)
class PropDecl:
    name: str
    category: str                   # value, set, internal_set, global, global_structure,
                                    # external, virtual, multiport, member, componentlist
    typeinfo: object = None         # TypeInfo of the value, container, port or referenced type
    setkind: Optional[str] = None   # for sets
    over: list = field(default_factory=list)    # [SetRef]
    description: Optional[str] = None
    flags: int = 0
    default: object = None
    direction: Optional[str] = None
    owner: str = ""                 # the type that declares it
    tok: object = None
    inherited_cpp: Optional[str] = None   # C++ access to an inherited runtime member

    @property
    def is_array(self):
        return bool(self.over)

    @property
    def value_category(self):
        """variable, integer, real, string or logical for values (and references to them)."""
        if self.category in ("value", "global", "external", "virtual", "componentlist") and self.typeinfo:
            return self.typeinfo.category if self.typeinfo.is_value else None
        return None

    @property
    def is_reference(self):
        return self.category in ("global", "external", "virtual", "global_structure")

    def array_kinds(self):
        return "".join("I" if s.elem == "integer" else "S" for s in self.over)

    def element_cpp(self):
        return self.typeinfo.cpp

    def cpp_type(self):
        if self.category in ("set", "internal_set"):
            return "VX_INTEGERSET" if self.setkind == "integer" else "VX_STRINGSET"
        if self.category == "multiport":
            return f"VX_M{ {'in': 'I', 'out': 'O', 'inout': 'IO'}[self.direction] }{self.typeinfo.name}"
        inner = self.element_cpp()
        if self.is_array:
            inner = f"VX_ARRAY_{self.array_kinds()}<{inner}, {inner}>"
        if self.category == "global":
            return f"VX_Global<{inner}>"
        if self.category == "global_structure":
            return f"VX_GlobalStructureRef<{inner}>"
        if self.category == "external":
            return f"VX_External<{inner}>"
        if self.category == "virtual":
            return f"VX_Virtual<{inner}>"
        return inner

    def cpp_access(self, obj):
        """C++ expression of the member itself in object obj ('' for this)."""
        base = self.inherited_cpp or self.name
        if obj:
            base = f"{obj}.{base}"
        if self.is_reference:
            return f"(*{base})"
        return base


def fail(path, tok, message):
    raise DescriptionError(path, tok.line if tok else 0, tok.col if tok else 0, message)


class TypeModel:
    """Properties of one container type, its own and inherited, resolved."""

    def __init__(self, typeinfo, own, inherited):
        self.typeinfo = typeinfo
        self.own = own                 # [PropDecl] declared by this type
        self.all = inherited + own     # base first

    def find(self, name):
        for p in reversed(self.all):
            if p.name == name:
                return p
        return None

    def suggest(self, name):
        for p in self.all:
            if p.name.lower() == name.lower():
                return p.name
        return None


class World:
    """All types, with the resolved property lists of container types built on demand."""

    def __init__(self, catalogue):
        self.cat = catalogue
        self.models = {}

    def type_model(self, name, path="", tok=None):
        if name in self.models:
            return self.models[name]
        info = self.cat.find(name)
        if info is None or info.category != "container":
            fail(path, tok, f"{name} is not a container type")
        if name in GENERIC_BASES:
            kind, props = GENERIC_BASES[name]
            decls = []
            for pname, ptype in props:
                cat = "componentlist" if ptype == "COMPONENTLISTNAME" else "value"
                d = PropDecl(pname, cat, self.cat.find(ptype), owner=name)
                d.inherited_cpp = "(*ComponentList())" if cat == "componentlist" else "ConnectionFlag()"
                decls.append(d)
            tm = TypeModel(info, [], decls)
        else:
            base = self.type_model(info.base, path, tok) if info.base else None
            own = self.resolve_props(info.description) if info.description else []
            tm = TypeModel(info, own, base.all if base else [])
        self.models[name] = tm
        return tm

    def resolve_props(self, d):
        base = self.type_model(d.base, d.path, d.tok)
        scope = TypeModel(self.cat.find(d.name), [], list(base.all))
        own = []
        for p in d.props:
            if scope.find(p.name) is not None and p.name in {x.name for x in own}:
                fail(d.path, p.tok, f"property {p.name} declared twice")
            decl = self.resolve_prop(d, p, scope)
            own.append(decl)
            scope.all.append(decl)
        return own

    def resolve_prop(self, d, p, scope):
        pt = p.ptype
        decl = PropDecl(p.name, pt.category if pt.category != "type" else None, None,
                        description=p.description, flags=p.flags, default=p.default,
                        direction=pt.direction, owner=d.name, tok=p.tok)
        if pt.category in ("set", "internal_set"):
            decl.category = pt.category
            decl.setkind = pt.setkind
        else:
            info = self.cat.find(pt.typename)
            if info is None:
                near = [n for n in self.cat.types if n.lower() == pt.typename.lower()]
                hint = f" (did you mean {near[0]}?)" if near else ""
                fail(d.path, p.tok, f"unknown type {pt.typename} for property {p.name}{hint}")
            decl.typeinfo = info
            if pt.category == "type":
                decl.category = "value" if info.is_value else "member"
                if info.category == "container" and info.kind == "Model" and d.kind == "port":
                    fail(d.path, p.tok, "a port cannot hold a model")
            elif pt.category == "multiport":
                if info.category != "container" or info.kind != "Port":
                    fail(d.path, p.tok, f"a multiport holds ports; {pt.typename} is not a port type")
            elif pt.category == "global" and not info.is_value:
                fail(d.path, p.tok, f"a global is a parameter or variable; {pt.typename} is not")
            elif pt.category == "global_structure" and (info.category != "container" or info.kind != "Structure"):
                fail(d.path, p.tok, f"a global structure reference needs a structure type; {pt.typename} is not")
        for name, tok in p.over:
            decl.over.append(self.set_ref(d, name, tok, scope))
        if decl.over and decl.category in ("set", "internal_set", "multiport", "global", "global_structure"):
            fail(d.path, p.tok, f"{p.name}: a {decl.category.replace('_', ' ')} cannot be an array")
        if len(decl.over) > 4:
            fail(d.path, p.tok, f"{p.name}: arrays have at most four indices")
        return decl

    def set_ref(self, d, name, tok, scope):
        if name == "components":
            return SetRef("components")
        s = scope.find(name)
        if s is None:
            fail(d.path, tok, f"unknown set {name}")
        if s.category in ("set", "internal_set"):
            return SetRef("prop", s)
        if s.category == "multiport":
            return SetRef("connections", s)
        fail(d.path, tok, f"{name} is not a set")


def kind_of(description):
    return KIND_OF_KEYWORD[description.kind]
