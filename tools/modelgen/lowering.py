"""From the parsed expressions of a description to the generator's expression form: names
resolved to loop variables, properties and members; terms recorded in the order they first
occur; every misuse reported with its place."""
from dataclasses import dataclass
from typing import Optional

from . import ir
from . import syntax as S
from .errors import DescriptionError
from .model import ATTRIBUTES, SPEC_NAMES, SetRef

# What the filter of a sum or product may read: it is tested at every element of every
# evaluation, so it reads no real values and no texts.
FILTER_OPS = {"itv", "int", "bool", "icmp", "iadd", "isub", "imul", "and", "or", "not", "iparam", "lparam", "isize"}
UNARY_FUNCTIONS = {"exp", "log", "log10", "sqrt", "sin", "cos", "tanh", "cosh", "sinh", "abs"}
# Attributes a condition may read: the logical flags of a variable.
FLAG_ATTRIBUTES = ("ISMATCHED", "ISCONNECTED", "RECORD")


@dataclass
class Ref:
    """A resolved property path: steps [(PropDecl, [index])], the final declaration, and an
    attribute (SPEC, LOWER, ...) when the path ends in one."""
    steps: list
    decl: object
    attr: Optional[str] = None

    def sym(self):
        return ir.Sym(self.steps)


class Scope:
    def __init__(self, parent=None):
        self.parent = parent
        self.vars = {}

    def find(self, name):
        s = self
        while s is not None:
            if name in s.vars:
                return s.vars[name]
            s = s.parent
        return None

    def child(self):
        return Scope(self)


class Lowering:
    def __init__(self, world, desc, tmodel):
        self.world = world
        self.desc = desc
        self.path = desc.path
        self.tm = tmodel
        self.red_stack = []       # set keys of the reductions being lowered, outermost first

    def fail(self, tok, message):
        raise DescriptionError(self.path, tok.line, tok.col, message)

    # --- sets ----------------------------------------------------------------------------
    def set_of(self, e, scope):
        """The SetRef a loop or reduction runs over."""
        if isinstance(e, S.Name):
            if e.name == "components":
                return SetRef("components")
            d = self.tm.find(e.name)
            if d is None:
                self.fail(e.tok, f"unknown set {e.name}")
            if d.category in ("set", "internal_set"):
                return SetRef("prop", d)
            if d.category == "multiport":
                return SetRef("connections", d)
            self.fail(e.tok, f"{e.name} is not a set (loops run over sets, components or a multiport's connections)")
        self.fail(e.tok, "a loop runs over a set named by its property, components or a multiport")

    def new_iter(self, name, setref, role, tok, scope):
        if scope.find(name) is not None or self.tm.find(name) is not None:
            self.fail(tok, f"loop variable {name} hides a property or another loop variable of the same name")
        slot = None
        if role == "red":
            key = setref.key()
            slot = (key, sum(1 for k in self.red_stack if k == key))
        return ir.Iter(name, setref, role, slot=slot)

    # --- references ------------------------------------------------------------------------
    def flatten(self, e):
        """[(name, args or None, token)] of a path such as IN_F(j).Z(i)."""
        if isinstance(e, S.Name):
            return [(e.name, None, e.tok)]
        if isinstance(e, S.Apply) and isinstance(e.target, (S.Name, S.Member)):
            parts = self.flatten(e.target)
            name, args, tok = parts[-1]
            if args is not None:
                self.fail(e.tok, f"{name}(...)(...): index an array once, with all its indices")
            parts[-1] = (name, e.args, tok)
            return parts
        if isinstance(e, S.Member):
            return self.flatten(e.base) + [(e.name, None, e.tok)]
        self.fail(e.tok, "expected a property, an array element or a member")

    def resolve(self, e, scope, allow_attr=False):
        parts = self.flatten(e)
        tm = self.tm
        steps = []
        decl = None
        for k, (name, args, tok) in enumerate(parts):
            if decl is not None and decl.value_category is not None:
                if allow_attr and name in ATTRIBUTES and k == len(parts) - 1 and args is None:
                    return Ref(steps, decl, name)
                self.fail(tok, f"{decl.name} is a {decl.value_category} value and has no member {name}")
            if tm is None:
                self.fail(tok, f"{decl.name} holds no members")
            d = tm.find(name)
            if d is None:
                hint = tm.suggest(name)
                where = "" if tm is self.tm else f" in {tm.typeinfo.name}"
                self.fail(tok, f"unknown property {name}{where}" + (f" (did you mean {hint}?)" if hint else ""))
            idx = []
            if args is not None:
                dims = len(d.over) if d.category != "multiport" else 1
                if dims == 0:
                    self.fail(tok, f"{name} is not an array")
                if len(args) != dims:
                    self.fail(tok, f"{name} takes {dims} ind{'ex' if dims == 1 else 'ices'}, given {len(args)}")
                sets = d.over if d.category != "multiport" else [SetRef("connections", d)]
                idx = [self.index(a, s, scope) for a, s in zip(args, sets)]
            elif d.is_array and k < len(parts) - 1:
                self.fail(tok, f"{name} is an array: give its indices before '.'")
            steps.append((d, idx))
            decl = d
            tm = self.member_model(d, tok)
        return Ref(steps, decl)

    def member_model(self, d, tok):
        if d.category in ("member", "multiport", "global_structure"):
            return self.world.type_model(d.typeinfo.name, self.path, tok)
        if d.category in ("external", "virtual") and d.typeinfo.category == "container":
            return self.world.type_model(d.typeinfo.name, self.path, tok)
        return None

    def index(self, e, setref, scope):
        """An index of an array: ('iter', Iter, offset), ('int', node) or ('str', node)."""
        want = setref.elem
        if isinstance(e, S.Name) and scope.find(e.name):
            it = scope.find(e.name)
            if it.elem != want:
                self.fail(e.tok, f"{e.name} runs over {it.elem}s but the index takes {want}s")
            return ("iter", it, 0)
        if want == "integer" and isinstance(e, S.Binary) and e.op in "+-" and isinstance(e.left, S.Name) \
                and scope.find(e.left.name) and isinstance(e.right, S.Num) and e.right.is_int:
            it = scope.find(e.left.name)
            if it.elem != "integer":
                self.fail(e.tok, f"{e.left.name} runs over strings: it cannot be shifted")
            k = int(e.right.text)
            it.needs_value = True
            return ("iter", it, k if e.op == "+" else -k)
        node = self.expr(e, scope, None, want="int" if want == "integer" else "string")
        return ("int" if want == "integer" else "str", node)

    # --- expressions -------------------------------------------------------------------------
    def expr(self, e, scope, walk, want="double"):
        n = self._expr(e, scope, walk, want)
        if want == "double" and n.ctype == "int":
            return ir.to_double(n)
        if want != "any" and n.ctype != want and not (want == "double" and n.ctype == "double"):
            names = {"double": "a number", "int": "an integer", "bool": "a condition", "string": "a text"}
            self.fail(e.tok, f"expected {names.get(want, want)} here, found {names.get(n.ctype, n.ctype)}")
        return n

    def _expr(self, e, scope, walk, want):
        if isinstance(e, S.Num):
            if e.is_int and want in ("int", "any", "string"):
                return ir.inum(int(e.text))
            return ir.num(float(e.text)) if not e.is_int or want != "int" else ir.inum(int(e.text))
        if isinstance(e, S.Str):
            return ir.mk("str", "string", e.text)
        if isinstance(e, S.Bool):
            return ir.boolean(e.value)
        if isinstance(e, S.Unary):
            if e.op == "not":
                return ir.logic("not", self.expr(e.operand, scope, None, "bool"))
            x = self._expr(e.operand, scope, walk, want)
            if x.ctype == "int":
                return ir.ibin("isub", ir.inum(0), x)
            return ir.neg(self.as_double(x, e))
        if isinstance(e, S.Binary):
            return self.binary(e, scope, walk, want)
        if isinstance(e, S.Reduce):
            return self.reduce(e, scope, walk)
        if isinstance(e, S.Range):
            self.fail(e.tok, "a range a .. b is a set value: it can only be assigned to an integer set")
        if isinstance(e, S.SetLiteral):
            self.fail(e.tok, "a set {...} is a set value: it can only be assigned to a set")
        if isinstance(e, S.Apply) and isinstance(e.target, S.Name) and self.is_function(e.target.name, scope):
            return self.call(e, scope, walk)
        if isinstance(e, S.Name) and scope.find(e.name):
            it = scope.find(e.name)
            if it.elem == "integer":
                it.needs_value = True
                return ir.mk("itv", "int", it)
            return ir.mk("its", "string", it)
        if isinstance(e, S.Name) and e.name in SPEC_NAMES:
            return ir.mk("spec", "spec", SPEC_NAMES[e.name])
        return self.value_of(self.resolve(e, scope, allow_attr=True), e, walk)

    def is_function(self, name, scope):
        return scope.find(name) is None and self.tm.find(name) is None and \
            (name in UNARY_FUNCTIONS or name in ("min", "max", "size", "member", "option", "real", "der"))

    def value_of(self, ref, e, walk):
        d = ref.decl
        cat = d.value_category
        if d.is_array and not ref.steps[-1][1]:
            self.fail(e.tok, f"{d.name} is an array: give its indices")
        if ref.attr is not None:
            if ref.attr not in FLAG_ATTRIBUTES or cat != "variable":
                self.fail(e.tok, f"{d.name}.{ref.attr}: conditions read the flags "
                                 f"{', '.join(FLAG_ATTRIBUTES)} of variables only")
            return ir.mk("attr", "bool", ref.sym(), ref.attr)
        sym = ref.sym()
        if cat in ("variable", "real"):
            if walk is not None:
                walk.occur(sym, lambda m: self.fail(e.tok, m))
            return ir.read(sym)
        if cat == "integer":
            return ir.mk("iparam", "int", sym)
        if cat == "string":
            return ir.mk("sparam", "string", sym)
        if cat == "logical":
            return ir.mk("lparam", "bool", sym)
        self.fail(e.tok, f"{d.name} is a {d.category.replace('_', ' ')}, not a value")

    def as_double(self, n, e):
        if n.ctype == "int":
            return ir.to_double(n)
        if n.ctype != "double":
            self.fail(e.tok, "expected a number")
        return n

    def binary(self, e, scope, walk, want):
        op = e.op
        if op in ("and", "or"):
            return ir.logic(op, self.expr(e.left, scope, None, "bool"), self.expr(e.right, scope, None, "bool"))
        if op in ("==", "<>", "<", "<=", ">", ">="):
            a = self._expr(e.left, scope, None, "any")
            b = self._expr(e.right, scope, None, "any")
            if a.ctype == "string" or b.ctype == "string":
                if a.ctype != b.ctype:
                    self.fail(e.tok, "a text compares only with a text")
                if op not in ("==", "<>"):
                    self.fail(e.tok, "texts compare with == and <> only (without regard to case)")
                return ir.mk("scmp", "bool", op, a, b)
            if a.ctype == "int" and b.ctype == "int":
                return ir.mk("icmp", "bool", op, a, b)
            return ir.cmp(op, self.as_double(a, e.left), self.as_double(b, e.right))
        a = self._expr(e.left, scope, walk, want)
        b = self._expr(e.right, scope, walk, want)
        if a.ctype == "int" and b.ctype == "int" and op in "+-*" and want in ("int", "any"):
            return ir.ibin({"+": "iadd", "-": "isub", "*": "imul"}[op], a, b)
        a, b = self.as_double(a, e.left), self.as_double(b, e.right)
        return {"+": ir.add, "-": ir.sub, "*": ir.mul, "/": ir.div, "^": ir.power}[op](a, b)

    def reduce(self, e, scope, walk):
        setref = self.set_of(e.over, scope)
        inner = scope.child()
        it = self.new_iter(e.var, setref, "red", e.tok, scope)
        inner.vars[e.var] = it
        if e.where is not None:
            it.where = self.expr(e.where, inner, None, "bool")
            if any(n.op not in FILTER_OPS for n in ir.nodes(it.where)):
                self.fail(e.where.tok, f"the filter of a {e.kind} reads integer and logical parameters, set sizes and "
                                             f"integer loop variables only")
        self.red_stack.append(setref.key())
        if walk is not None:
            walk.enter(it)
        body = self.expr(e.body, inner, walk, "double")
        if walk is not None:
            walk.leave()
        self.red_stack.pop()
        if e.kind in ("sum", "prod"):
            return ir.red(e.kind, it, body)
        return ir.red(e.kind, it, body)

    def call(self, e, scope, walk):
        name = e.target.name
        args = e.args
        if name == "der":
            self.fail(e.tok, "der(...) (a time derivative) is reserved for dynamic models; "
                             "this generator makes steady-state models only")
        if name in UNARY_FUNCTIONS:
            if len(args) != 1:
                self.fail(e.tok, f"{name} takes one argument")
            x = self.expr(args[0], scope, walk, "double")
            return ir.fabs(x) if name == "abs" else ir.fn(name, x)
        if name in ("min", "max"):
            if len(args) != 2:
                self.fail(e.tok, f"{name}(a, b) takes two arguments; {name}(x in SET: term) runs over a set")
            a = self.expr(args[0], scope, walk, "double")
            b = self.expr(args[1], scope, walk, "double")
            return ir.max2(a, b) if name == "max" else ir.min2(a, b)
        if name == "real":
            return ir.to_double(self.expr(args[0], scope, walk, "int"))
        if name == "size":
            if len(args) != 1:
                self.fail(e.tok, "size takes one set")
            return ir.mk("isize", "int", self.set_of(args[0], scope))
        if name == "member":
            if len(args) != 2:
                self.fail(e.tok, "member(text, set) takes two arguments")
            x = self.expr(args[0], scope, None, "string")
            return ir.mk("member", "bool", x, self.set_of(args[1], scope))
        if name == "option":
            if len(args) != 1 or not isinstance(args[0], S.Str):
                self.fail(e.tok, 'option takes the option\'s name as text: option("KBASE")')
            return ir.mk("option", "option", args[0].text)
        self.fail(e.tok, f"unknown function {name}")
