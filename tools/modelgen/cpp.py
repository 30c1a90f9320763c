"""C++ for expressions, in two modes:

- 'setup' (assignments, conditions of SetUpEquations, the Jacobian pattern): values through the
  dependency-recording accessors v(), elements through the arrays' operator() with set
  iterators;
- 'hot' (Residuals, Jacobian): values through fv() and the arrays' value vectors by position;
  no name lookups, no allocation, no text.

Nodes are emitted once and named in the outermost block where everything they depend on is
bound (loop-invariant code moves out of loops, shared subexpressions are computed once), but
never above a barrier (a group, an alternative), so work of one alternative is not done for
another.
"""
from . import ir
from .model import SetRef


def cstr(text):
    out = ['"']
    for ch in text:
        if ch in '"\\':
            out.append("\\" + ch)
        elif ch == "\t":
            out.append("\\t")
        elif ch == "\n":
            out.append("\\n")
        elif ord(ch) < 32 or ord(ch) > 126:
            for b in ch.encode("utf-8"):
                out.append(f"\\{b:03o}")
        else:
            out.append(ch)
    out.append('"')
    return "".join(out)


def set_object(setref):
    """The C++ object a set is: what iterators are built from and arrays are sized over."""
    if setref.kind == "components":
        return "ComponentList()->v()"
    if setref.kind == "connections":
        return f"{setref.prop.name}.Connections()"
    return setref.prop.name


def cdouble(v):
    if v == float("inf"):
        return "std::numeric_limits<double>::infinity()"
    r = repr(float(v))
    if "e" in r or "." in r or "inf" in r or "nan" in r:
        return r
    return r + ".0"


DECLS = {"double": "const double", "int": "const int", "bool": "const bool", "pos": "const std::ptrdiff_t",
         "ptr": "const double* const", "string": "const char* const"}


def reads_elements(node, bound=frozenset(), memo=None):
    """True when evaluating node reads an array element at an index that no loop inside node
    makes valid: such a read may not move out of the loop it is written in (the loop may run
    over nothing, and the element need not exist then)."""
    if memo is None:
        memo = {}
    key = (node.uid, bound)
    if key in memo:
        return memo[key]
    out = False
    if node.op in ("read", "iparam", "sparam", "lparam", "obj", "attr"):
        for _d, idx in node.args[0].steps:
            for i in idx:
                if not (i[0] == "iter" and i[1] in bound):
                    out = True
    elif node.op in ("red", "argext"):
        out = reads_elements(node.args[2], bound | {node.args[1]}, memo)
    elif node.op == "prodexcl":
        body_at, prod, fresh, body_loop, at = node.args
        out = reads_elements(body_at, bound, memo) or reads_elements(prod, bound, memo) or \
            reads_elements(body_loop, bound | {fresh}, memo)
    else:
        out = any(reads_elements(a, bound, memo) for a in node.args if isinstance(a, ir.Node))
    memo[key] = out
    return out


class Block:
    def __init__(self, parent=None, binds=(), barrier=False):
        self.parent = parent
        self.binds = set(binds)
        self.barrier = barrier
        self.pre = []
        self.body = []
        self.names = {}

    def chain(self):
        b = self
        while b is not None:
            yield b
            b = b.parent

    def text(self, indent):
        pad = " " * indent
        return [pad + line if line else "" for line in self.pre + self.body]

    def add(self, line):
        self.body.append(line)

    def nest(self, header, child, footer="}", indent=4):
        self.body.append(header)
        self.body.extend(" " * indent + line if line else "" for line in child.pre + child.body)
        self.body.append(footer)


class Emitter:
    def __init__(self, gen, mode):
        self.gen = gen
        self.mode = mode
        self.count = 0

    def fresh(self, prefix="t"):
        self.count += 1
        return f"{prefix}{self.count}"

    # --- placement ---------------------------------------------------------------------------
    def home(self, node, block):
        chain = list(block.chain())
        limit = len(chain) - 1
        for f in node.free:
            for i, b in enumerate(chain):
                if f in b.binds:
                    limit = min(limit, i)
                    break
            else:
                raise AssertionError(f"loop variable {f.name} is not bound where {node.text()} is used")
        unsafe = None
        for i, b in enumerate(chain):
            if i >= limit:
                break
            if b.barrier == "hard":
                limit = i
                break
            if b.barrier == "loop":
                if unsafe is None:
                    unsafe = reads_elements(node)
                if unsafe:
                    limit = i
                    break
        return chain[limit]

    def named(self, node, block):
        for b in block.chain():
            if node.uid in b.names:
                return b.names[node.uid]
            # A loop that binds one of the node's variables again (a sum over c inside the
            # entries' loop over c) hides the values computed outside it.
            if b.binds & node.free:
                return None
        return None

    def define(self, node, block, expr):
        home = self.home(node, block)
        name = self.fresh("o" if node.ctype == "obj" else "t")
        if node.ctype == "obj":
            home.pre.append(f"auto& {name} = {expr};")
        else:
            home.pre.append(f"{DECLS[node.ctype]} {name} = {expr};")
        home.names[node.uid] = name
        return name

    # --- expressions -------------------------------------------------------------------------
    def emit(self, node, block):
        name = self.named(node, block)
        if name is not None:
            return name
        op, a = node.op, node.args
        if op == "num":
            return cdouble(a[0])
        if op == "int":
            return str(a[0])
        if op == "bool":
            return "true" if a[0] else "false"
        if op == "str":
            return cstr(a[0])
        if op == "spec":
            return a[0]
        if op == "itv":
            return self.iter_value(a[0], block)
        if op == "its":
            return self.iter_text(a[0], block)
        if op == "itpos":
            return self.iter_pos(a[0], block)
        if op in ("read", "iparam", "sparam", "lparam"):
            return self.read(node, block)
        if op == "attr":
            return f"{self.object_expr(a[0], block)}.Flag(VX_ATTR_{a[1]})"
        if op in ("red", "argext", "prodexcl"):
            return self.reduction(node, block)
        if op == "obj":
            return self.define(node, block, self.object_expr(a[0], block))
        if op == "vals":
            return self.define(node, block, f"{self.emit(a[0], block)}.Values()")
        if op == "stride":
            return self.define(node, block, f"static_cast<int>({self.emit(a[0], block)}.Stride({a[1]}))")
        expr = self.compose(node, block)
        if op in ("real",):
            return expr
        return self.define(node, block, expr)

    def compose(self, node, block):
        op, a = node.op, node.args
        E = lambda x: self.emit(x, block)
        if op in ("add", "sub", "mul", "div"):
            sym = {"add": "+", "sub": "-", "mul": "*", "div": "/"}[op]
            return f"{E(a[0])} {sym} {E(a[1])}"
        if op == "neg":
            return f"-{E(a[0])}"
        if op == "pow":
            return f"std::pow({E(a[0])}, {E(a[1])})"
        if op == "fn":
            return f"std::{a[0]}({E(a[1])})"
        if op == "abs":
            return f"std::fabs({E(a[0])})"
        if op == "sign":
            x = E(a[0])
            return f"({x} > 0.0 ? 1.0 : ({x} < 0.0 ? -1.0 : 0.0))"
        if op == "max2":
            x, y = E(a[0]), E(a[1])
            return f"({x} > {y} ? {x} : {y})"
        if op == "min2":
            x, y = E(a[0]), E(a[1])
            return f"({x} < {y} ? {x} : {y})"
        if op == "select":
            return f"({E(a[0])} ? {E(a[1])} : {E(a[2])})"
        if op == "real":
            return f"static_cast<double>({E(a[0])})"
        if op in ("iadd", "isub", "imul"):
            sym = {"iadd": "+", "isub": "-", "imul": "*"}[op]
            return f"({E(a[0])} {sym} {E(a[1])})"
        if op in ("cmp", "icmp"):
            sym = {"==": "==", "==pos": "==", "<>": "!=", "<": "<", "<=": "<=", ">": ">", ">=": ">="}[a[0]]
            return f"({E(a[1])} {sym} {E(a[2])})"
        if op == "scmp":
            eq = "==" if a[0] == "==" else "!="
            return f"(SUValue::CompareCI({E(a[1])}, {E(a[2])}) {eq} 0)"
        if op in ("and", "or"):
            return f"({E(a[0])} {'&&' if op == 'and' else '||'} {E(a[1])})"
        if op == "not":
            return f"(!{E(a[0])})"
        if op == "isize":
            return f"static_cast<int>({self.set_data(a[0], block)}.Size())"
        if op == "member":
            return f"{self.set_data(a[1], block)}.Contains({E(a[0])})"
        raise AssertionError(f"cannot emit {op}")

    # --- loop variables ----------------------------------------------------------------------
    def iter_pos(self, it, block):
        if it.bound_to is not None:
            return self.emit(it.bound_to, block)
        if self.mode == "setup":
            return f"{self.iter_object(it)}.Position()"
        return f"p_{it.cname()}"

    def iter_value(self, it, block):
        if self.mode == "setup" and it.bound_to is None:
            return f"{self.iter_object(it)}.Integer()"
        if it.bound_to is not None:
            return f"{self.set_data(it.setref, block)}.At(static_cast<std::size_t>({self.iter_pos(it, block)}))"
        return f"v_{it.cname()}"

    def iter_text(self, it, block):
        if self.mode == "setup" and it.bound_to is None:
            return f"{self.iter_object(it)}.String()"
        return f"{self.set_data(it.setref, block)}.At(static_cast<std::size_t>({self.iter_pos(it, block)})).c_str()"

    @staticmethod
    def iter_object(it):
        return f"it_{it.cname()}"

    # --- sets --------------------------------------------------------------------------------
    def set_data(self, setref, block):
        """The set's members (VX_IntSetData or VX_StrSetData), as the mode reads them."""
        if setref.kind == "components":
            if self.mode == "hot":
                self.gen.uses_components = True
                return "(*m_componentSet)"
            return "ComponentList()->v().Data()"
        if setref.kind == "connections":
            return f"{setref.prop.name}.Connections().fv()"
        return f"{setref.prop.name}.fv()"

    def open_loop(self, it, block):
        """A block that runs once per element of it's set; returns (header, child, footer).
        A filtered loop skips the elements its filter refuses and counts those it admits."""
        header, child, footer = self.open_set_loop(it, block)
        if it.where is None:
            return header, child, footer
        c = it.cname()
        # In the loop's preamble, so that nothing is computed for an element it refuses.
        test = self.emit(it.where, child)
        child.pre.append(f"if (!({test})) continue;")
        child.pre.append(f"++f_{c};")
        return f"{{ std::ptrdiff_t f_{c} = 0; {header}", child, f"{footer} static_cast<void>(f_{c}); }}"

    def iter_first(self, it, block):
        """The test that a loop is at the first element it admits."""
        if it.where is not None:
            return f"f_{it.cname()} == 1"
        return f"{self.iter_pos(it, block)} == 0"

    def open_set_loop(self, it, block):
        child = Block(block, binds=[it], barrier="loop")
        if self.mode == "setup":
            cls = "VX_IntegerSetIter" if it.elem == "integer" else "VX_StringSetIter"
            header = f"for ({cls} {self.iter_object(it)}({set_object(it.setref)}); {self.iter_object(it)}.Next();) {{"
            return header, child, "}"
        data = self.set_data(it.setref, block)
        c = it.cname()
        if it.elem == "integer" and it.needs_value:
            header = (f"{{ std::ptrdiff_t p_{c} = 0; for (const auto& r_{c} : {data}.Ranges()) "
                      f"for (int v_{c} = r_{c}.first; v_{c} <= r_{c}.second; ++v_{c}, ++p_{c}) {{")
            return header, child, "}}"
        header = f"for (std::ptrdiff_t p_{c} = 0, n_{c} = static_cast<std::ptrdiff_t>({data}.Size()); p_{c} < n_{c}; ++p_{c}) {{"
        return header, child, "}"

    # --- reductions --------------------------------------------------------------------------
    def reduction(self, node, block):
        op, a = node.op, node.args
        home = self.home(node, block)
        name = self.fresh("t")
        if op == "prodexcl":
            body_at, prod, fresh, body_loop, at = a
            f = self.emit(body_at, home)
            p = self.emit(prod, home)
            home.pre.append(f"double {name};")
            fallback = Block(home)
            header, child, footer = self.open_loop(fresh, fallback)
            inner = self.emit(body_loop, child)
            child.add(f"if ({self.iter_pos(fresh, child)} != {self.iter_pos(at, child)}) {name} *= {inner};")
            fallback.nest(header, child, footer)
            home.pre.append(f"if ({f} != 0.0) {{")
            home.pre.append(f"    {name} = {p} / {f};")
            home.pre.append("} else {")
            home.pre.append(f"    {name} = 1.0;")
            home.pre.extend("    " + line for line in fallback.pre + fallback.body)
            home.pre.append("}")
            home.names[node.uid] = name
            return name
        kind, it, body = a
        header, child, footer = self.open_loop(it, home)
        b = self.emit(body, child)
        if op == "argext":
            best = self.fresh("b")
            cmpop = ">" if kind == "max" else "<"
            home.pre.append(f"std::ptrdiff_t {name} = -1;")
            home.pre.append(f"double {best} = {'-' if kind == 'max' else ''}std::numeric_limits<double>::max();")
            child.add(f"if ({b} {cmpop} {best}) {{ {best} = {b}; {name} = {self.iter_pos(it, child)}; }}")
        else:
            init = {"sum": "0.0", "prod": "1.0", "max": "-std::numeric_limits<double>::max()",
                    "min": "std::numeric_limits<double>::max()"}[kind]
            home.pre.append(f"double {name} = {init};")
            if kind == "sum":
                child.add(f"{name} += {b};")
            elif kind == "prod":
                child.add(f"{name} *= {b};")
            else:
                child.add(f"if ({b} {'>' if kind == 'max' else '<'} {name}) {name} = {b};")
        home.pre.append(header)
        home.pre.extend("    " + line if line else "" for line in child.pre + child.body)
        home.pre.append(footer)
        home.names[node.uid] = name
        return name

    # --- property values ---------------------------------------------------------------------
    def read(self, node, block):
        sym = node.args[0]
        if self.mode == "setup":
            expr = self.object_expr(sym, block)
            if node.op == "sparam":
                return f"{expr}.v()"
            return f"{expr}.v()"
        d, idx = sym.steps[-1]
        if not idx:
            obj = self.object_of_prefix(sym, len(sym.steps) - 1, block)
            # Named, so that it is read once where it is loop-invariant (a store through the
            # residual array could alias it for the compiler).
            return self.define(node, block, f"{d.cpp_access(obj)}.fv()")
        arr = self.object_node(sym, len(sym.steps), array_only=True)
        arr_name = self.emit(arr, block)
        if node.op == "read" and d.value_category == "variable":
            vals = self.emit(ir.mk("vals", "ptr", arr), block)
            flat = self.flat_position(sym, len(sym.steps) - 1, arr, arr_name, block)
            return f"{vals}[{flat}]"
        flat = self.flat_position(sym, len(sym.steps) - 1, arr, arr_name, block)
        return f"static_cast<const {d.element_cpp()}&>(*{arr_name}.At(static_cast<int>({flat}))).fv()"

    def object_node(self, sym, upto, array_only=False):
        """A node for the object reached by the first `upto` steps; with array_only, the last
        step's array itself (its indices left out)."""
        steps = list(sym.steps[:upto])
        if array_only:
            steps[-1] = (steps[-1][0], [])
        return ir.mk("obj", "obj", ir.Sym(steps))

    def object_of_prefix(self, sym, k, block):
        """C++ of the object that holds step k ('' when it is this object)."""
        if k == 0:
            return ""
        node = self.object_node(sym, k)
        if not node.free and all(not idx for _d, idx in sym.steps[:k]):
            return self.object_expr(ir.Sym(sym.steps[:k]), block)
        return self.emit(node, block)

    def object_expr(self, sym, block):
        """C++ of the object a path names (the element itself, when indexed)."""
        obj = ""
        for k, (d, idx) in enumerate(sym.steps):
            base = d.cpp_access(obj)
            if not idx:
                obj = base
                continue
            if self.mode == "setup":
                obj = f"{base}({', '.join(self.setup_index(i, block) for i in idx)})"
                continue
            if d.category == "multiport":
                obj = f"{base}.PortAt({self.hot_position(d, 0, idx[0], base, k, block)})"
                continue
            flat = self.flat_position(ir.Sym(sym.steps[:k + 1]), k, None, base, block)
            obj = f"static_cast<{d.element_cpp()}&>(*{base}.At(static_cast<int>({flat})))"
        return obj

    def setup_index(self, i, block):
        if i[0] == "iter":
            it, off = i[1], i[2]
            if off == 0:
                return self.iter_object(it)
            return f"{self.iter_object(it)}.Integer() {'+' if off > 0 else '-'} {abs(off)}"
        return self.emit(i[1], block)

    def flat_position(self, sym, k, arr_node, arr_name, block):
        d, idx = sym.steps[k]
        parts = []
        for dim, i in enumerate(idx):
            pos = self.hot_position(d, dim, i, arr_name, k, block, ir.Sym(sym.steps[:k] + [(d, [])]))
            if len(idx) == 1:
                return pos
            stride = self.emit(ir.mk("stride", "int", arr_node, dim), block) if arr_node is not None \
                else f"{arr_name}.Stride({dim})"
            parts.append(f"{pos} * {stride}")
        return " + ".join(parts)

    def hot_position(self, d, dim, i, arr_name, step, block, array=None):
        sets = d.over if d.category != "multiport" else [SetRef("connections", d)]
        declared = sets[dim]
        if i[0] == "iter":
            it, off = i[1], i[2]
            if off == 0 and (it.elem == "string" or self.gen.same_set(it.setref, declared, step)):
                return self.iter_pos(it, block)
            value = self.iter_value(it, block)
            if off:
                value = f"{value} {'+' if off > 0 else '-'} {abs(off)}"
            return f"{arr_name}.PositionOf({dim}, {value})"
        if i[0] == "int":
            return f"{arr_name}.PositionOf({dim}, {self.emit(i[1], block)})"
        return self.gen.resolved_position(d, dim, i[1], arr_name, step, self, block, array)
