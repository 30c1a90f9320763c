"""The expression form the generator computes with: a DAG of shared nodes (the same
subexpression is one node, which is what common subexpressions are shared by), symbolic
derivatives, and the order of first occurrence of an equation's terms.

Node types (ctype): 'double' values; 'int' integer values (indices, counts); 'bool' conditions;
'pos' positions in a set (from argmin/argmax); 'obj' objects (array or port objects, in the
order they are reached); 'ptr' value vectors of arrays.
"""
import itertools
import math

_uid = itertools.count()


class Iter:
    """A loop variable. role 'eq': a loop of equation statements (fixed within one equation);
    'red': the variable of a sum, product, minimum or maximum inside an expression."""

    def __init__(self, name, setref, role, slot=None, bound_to=None):
        self.uid = next(_uid)
        self.name = name
        self.setref = setref
        self.role = role
        self.slot = slot            # for 'red': (set key, rank) identifying the term family
        self.bound_to = bound_to    # a 'pos' node: this variable stands for a computed position
        self.needs_value = False    # its integer value is read (not only its position)
        self.where = None           # for 'red': a condition on parameters; other elements are skipped

    @property
    def elem(self):
        return self.setref.elem

    def cname(self):
        return f"{self.name.lower()}{self.uid}"

    def __repr__(self):
        return f"<{self.name}#{self.uid}>"


class Sym:
    """A term: a variable or real parameter, reached through steps [(PropDecl, [index])].
    An index is ('iter', Iter, offset), ('int', node) or ('str', node)."""

    def __init__(self, steps):
        self.steps = steps
        self.exact = tuple((id(d), tuple(_index_key(i, exact=True) for i in idx)) for d, idx in steps)
        self.family = tuple((id(d), tuple(_index_key(i, exact=False) for i in idx)) for d, idx in steps)

    def iters(self):
        out = []
        for _d, idx in self.steps:
            for i in idx:
                if i[0] == "iter":
                    out.append(i[1])
                elif i[0] in ("int", "str"):
                    out.extend(i[1].free)
        return out

    def slots(self):
        """Slots of the reduction variables this term depends on."""
        return {it.slot for it in self.iters() if it.role == "red" and it.bound_to is None}

    def substitute(self, mapping):
        steps = []
        changed = False
        for d, idx in self.steps:
            nidx = []
            for i in idx:
                if i[0] == "iter" and i[1] in mapping:
                    nidx.append(("iter", mapping[i[1]], i[2]))
                    changed = True
                elif i[0] in ("int", "str") and any(f in mapping for f in i[1].free):
                    nidx.append((i[0], substitute(i[1], mapping)))
                    changed = True
                else:
                    nidx.append(i)
            steps.append((d, nidx))
        return Sym(steps) if changed else self

    def text(self):
        parts = []
        for d, idx in self.steps:
            s = d.name
            if idx:
                s += "(" + ", ".join(_index_text(i) for i in idx) + ")"
            parts.append(s)
        return ".".join(parts)


def _index_key(i, exact):
    if i[0] == "iter":
        it = i[1]
        if it.bound_to is not None:
            return ("bound", it.bound_to.key, i[2])
        if it.role == "red" and not exact:
            return ("slot", it.slot, i[2])
        return ("it", it.uid, i[2])
    return (i[0], i[1].key)


def _index_text(i):
    if i[0] == "iter":
        return i[1].name + (f"{i[2]:+d}" if i[2] else "")
    return i[1].text()


class Node:
    __slots__ = ("op", "args", "ctype", "key", "free", "uid", "__weakref__")

    def text(self):
        op, a = self.op, self.args
        if op == "num":
            return repr(a[0])
        if op in ("int", "bool"):
            return str(a[0])
        if op == "read":
            return a[0].text()
        if op in ("itv", "itpos"):
            return a[0].name
        if op in ("add", "sub", "mul", "div", "pow", "iadd", "isub", "imul"):
            sym = {"add": "+", "sub": "-", "mul": "*", "div": "/", "pow": "^", "iadd": "+", "isub": "-",
                   "imul": "*"}[op]
            return f"({a[0].text()} {sym} {a[1].text()})"
        return f"{op}(" + ", ".join(x.text() if isinstance(x, Node) else str(x) for x in a) + ")"


_table = {}


def _arg_key(a):
    if isinstance(a, Node):
        return ("n", a.uid)
    if isinstance(a, Iter):
        return ("i", a.uid)
    if isinstance(a, Sym):
        return ("s", a.exact)
    return ("v", a)


def mk(op, ctype, *args, free_extra=(), bind=None):
    key = (op,) + tuple(_arg_key(a) for a in args)
    n = _table.get(key)
    if n is not None:
        return n
    n = Node()
    n.op = op
    n.args = args
    n.ctype = ctype
    n.key = key
    n.uid = next(_uid)
    free = set(free_extra)
    for a in args:
        if isinstance(a, Node):
            free |= a.free
        elif isinstance(a, Iter):
            free |= _iter_free(a)
        elif isinstance(a, Sym):
            for it in a.iters():
                free |= _iter_free(it)
    if bind is not None:
        free.discard(bind)
    n.free = frozenset(free)
    _table[key] = n
    return n


def _iter_free(it):
    if it.bound_to is not None:
        return set(it.bound_to.free)
    # A filtered loop depends on the loop variables its filter reads.
    return {it} | (set(it.where.free) if it.where is not None else set())


def nodes(node):
    """Every node of an expression, each once."""
    seen, stack, out = set(), [node], []
    while stack:
        n = stack.pop()
        if n.uid in seen:
            continue
        seen.add(n.uid)
        out.append(n)
        stack.extend(a for a in n.args if isinstance(a, Node))
    return out


# --- constructors with the folding that is exact ---------------------------------------------

ZERO = None
ONE = None


def num(v):
    return mk("num", "double", float(v))


def is_num(n, v=None):
    return n.op == "num" and (v is None or n.args[0] == v)


def add(a, b):
    if is_num(a) and is_num(b):
        return num(a.args[0] + b.args[0])
    if is_num(a, 0.0):
        return b
    if is_num(b, 0.0):
        return a
    return mk("add", "double", a, b)


def sub(a, b):
    if is_num(a) and is_num(b):
        return num(a.args[0] - b.args[0])
    if is_num(b, 0.0):
        return a
    if is_num(a, 0.0):
        return neg(b)
    return mk("sub", "double", a, b)


def neg(a):
    if is_num(a):
        return num(-a.args[0])
    if a.op == "neg":
        return a.args[0]
    return mk("neg", "double", a)


def mul(a, b):
    if is_num(a) and is_num(b):
        return num(a.args[0] * b.args[0])
    if is_num(a, 0.0) or is_num(b, 0.0):
        return num(0.0)
    if is_num(a, 1.0):
        return b
    if is_num(b, 1.0):
        return a
    if is_num(a, -1.0):
        return neg(b)
    if is_num(b, -1.0):
        return neg(a)
    if a.op == "neg" and b.op == "neg":
        return mul(a.args[0], b.args[0])
    if a.op == "neg":
        return neg(mul(a.args[0], b))
    if b.op == "neg":
        return neg(mul(a, b.args[0]))
    return mk("mul", "double", a, b)


def div(a, b):
    if is_num(a) and is_num(b) and b.args[0] != 0.0:
        return num(a.args[0] / b.args[0])
    if is_num(a, 0.0):
        return num(0.0)
    if is_num(b, 1.0):
        return a
    if a.op == "neg":
        return neg(div(a.args[0], b))
    return mk("div", "double", a, b)


def power(a, b):
    if is_num(b, 1.0):
        return a
    if is_num(b, 0.0):
        return num(1.0)
    if is_num(a) and is_num(b):
        try:
            return num(math.pow(a.args[0], b.args[0]))
        except (OverflowError, ValueError):
            pass
    return mk("pow", "double", a, b)


FUNCTIONS = {"exp", "log", "log10", "sqrt", "sin", "cos", "tanh", "cosh", "sinh"}


def fn(name, a):
    return mk("fn", "double", name, a)


def fabs(a):
    return mk("abs", "double", a)


def sign(a):
    return mk("sign", "double", a)


def max2(a, b):
    return mk("max2", "double", a, b)


def min2(a, b):
    return mk("min2", "double", a, b)


def select(c, a, b):
    if a is b:
        return a
    if c.op == "bool":
        return a if c.args[0] else b
    return mk("select", a.ctype, c, a, b)


def read(sym):
    return mk("read", "double", sym)


def to_double(intnode):
    if intnode.op == "int":
        return num(intnode.args[0])
    return mk("real", "double", intnode)


def red(kind, it, body):
    if kind == "sum" and is_num(body, 0.0):
        return num(0.0)
    return mk("red", "double", kind, it, body, bind=it)


def argext(kind, it, body):
    return mk("argext", "pos", kind, it, body, bind=it)


_fresh = {}


def prodexcl(it, body, at, prod):
    """The product over it of body, leaving out the element at the position of loop variable
    `at`: prod / body(at) when body(at) is not zero, else the product of the others."""
    key = (it.uid, at.uid)
    fresh = _fresh.get(key)
    if fresh is None:
        fresh = _fresh[key] = Iter(it.name, it.setref, "red", slot=it.slot)
        if it.where is not None:
            fresh.where = substitute(it.where, {it: fresh})
    body_at = substitute(body, {it: at})
    body_loop = substitute(body, {it: fresh})
    return mk("prodexcl", "double", body_at, prod, fresh, body_loop, at, bind=fresh)


# Integer and logical nodes.
def inum(v):
    return mk("int", "int", int(v))


def ibin(op, a, b):
    if a.op == "int" and b.op == "int":
        return inum({"iadd": a.args[0] + b.args[0], "isub": a.args[0] - b.args[0],
                     "imul": a.args[0] * b.args[0]}[op])
    return mk(op, "int", a, b)


def boolean(v):
    return mk("bool", "bool", bool(v))


def cmp(op, a, b):
    return mk("cmp", "bool", op, a, b)


def logic(op, a, b=None):
    if op == "not":
        return mk("not", "bool", a)
    return mk(op, "bool", a, b)


# --- substitution of loop variables ----------------------------------------------------------

def substitute(node, mapping, memo=None):
    """The node with loop variables replaced (mapping: Iter -> Iter)."""
    if not (node.free & set(mapping)):
        return node
    if memo is None:
        memo = {}
    if node.uid in memo:
        return memo[node.uid]
    args = []
    for a in node.args:
        if isinstance(a, Node):
            args.append(substitute(a, mapping, memo))
        elif isinstance(a, Iter):
            args.append(mapping.get(a, a))
        elif isinstance(a, Sym):
            args.append(a.substitute(mapping))
        else:
            args.append(a)
    out = rebuild(node, args)
    memo[node.uid] = out
    return out


def rebuild(node, args):
    op = node.op
    if op == "add":
        return add(*args)
    if op == "sub":
        return sub(*args)
    if op == "mul":
        return mul(*args)
    if op == "div":
        return div(*args)
    if op == "neg":
        return neg(*args)
    if op == "pow":
        return power(*args)
    if op == "select":
        return select(*args)
    if op in ("iadd", "isub", "imul"):
        return ibin(op, *args)
    if op in ("red", "argext"):
        return mk(op, node.ctype, *args, bind=args[1])
    if op == "prodexcl":
        return mk(op, node.ctype, *args, bind=args[2])
    return mk(op, node.ctype, *args)


# --- derivatives -----------------------------------------------------------------------------

class Target:
    """The term an entry differentiates by: a family of terms and, for each reduction slot
    the family depends on, the loop variable of the entry walk that fixes it."""

    def __init__(self, family, binding):
        self.family = family
        self.binding = binding      # slot -> Iter

    def matches(self, sym):
        if sym.family != self.family:
            return False
        for it in sym.iters():
            if it.role == "red" and it.bound_to is None and it.slot in self.binding:
                if self.binding[it.slot] is not it:
                    return False
        return True


def derivative(node, target, memo=None):
    if memo is None:
        memo = {}
    if node.uid in memo:
        return memo[node.uid]
    d = _derivative(node, target, memo)
    memo[node.uid] = d
    return d


def _derivative(n, t, memo):
    op, a = n.op, n.args
    D = lambda x: derivative(x, t, memo)
    zero = num(0.0)
    if n.ctype != "double":
        return zero
    if op in ("num", "real"):
        return zero
    if op == "read":
        return num(1.0) if t.matches(a[0]) else zero
    if op == "add":
        return add(D(a[0]), D(a[1]))
    if op == "sub":
        return sub(D(a[0]), D(a[1]))
    if op == "neg":
        return neg(D(a[0]))
    if op == "mul":
        return add(mul(D(a[0]), a[1]), mul(a[0], D(a[1])))
    if op == "div":
        da, db = D(a[0]), D(a[1])
        if is_num(db, 0.0):
            return div(da, a[1])
        return div(sub(da, mul(n, db)), a[1])
    if op == "pow":
        base, ex = a
        db, de = D(base), D(ex)
        out = zero
        if not is_num(db, 0.0):
            out = mul(mul(ex, power(base, sub(ex, num(1.0)))), db)
        if not is_num(de, 0.0):
            out = add(out, mul(mul(n, fn("log", base)), de))
        return out
    if op == "fn":
        name, x = a
        dx = D(x)
        if is_num(dx, 0.0):
            return zero
        if name == "exp":
            f = n
        elif name == "log":
            return div(dx, x)
        elif name == "log10":
            return div(dx, mul(x, num(math.log(10.0))))
        elif name == "sqrt":
            return div(dx, mul(num(2.0), n))
        elif name == "sin":
            f = fn("cos", x)
        elif name == "cos":
            f = neg(fn("sin", x))
        elif name == "tanh":
            f = sub(num(1.0), mul(n, n))
        elif name == "cosh":
            f = fn("sinh", x)
        elif name == "sinh":
            f = fn("cosh", x)
        else:
            raise ValueError(name)
        return mul(f, dx)
    if op == "abs":
        return mul(sign(a[0]), D(a[0]))
    if op == "sign":
        return zero
    if op in ("max2", "min2"):
        c = cmp(">" if op == "max2" else "<", a[0], a[1])
        return select(c, D(a[0]), D(a[1]))
    if op == "select":
        return select(a[0], D(a[1]), D(a[2]))
    if op == "red":
        kind, it, body = a
        bound = t.binding.get(it.slot) if it.bound_to is None else None
        if kind == "sum":
            if bound is not None:
                return D(substitute(body, {it: bound}))
            return red("sum", it, D(body))
        if kind == "prod":
            if bound is not None:
                return mul(prodexcl(it, body, bound, n), D(substitute(body, {it: bound})))
            inner = D(body)
            if is_num(inner, 0.0):
                return zero
            return red("sum", it, mul(prodexcl(it, body, it, n), inner))
        # min, max: the derivative of the selected element
        pos = argext(kind, it, body)
        if bound is not None:
            hit = cmp("==pos", pos, mk("itpos", "pos", bound))
            return select(hit, D(substitute(body, {it: bound})), zero)
        at = Iter(it.name, it.setref, "red", slot=it.slot, bound_to=pos)
        return D(substitute(body, {it: at}))
    raise ValueError(f"no derivative rule for {op}")


# --- first-occurrence order of an equation's terms -------------------------------------------

class Walk:
    """Where an equation's Jacobian entries come from, in order: terms in the order they first
    occur in the equation, entries of a term family inside the loops of the reductions they
    are written in. items: [('entry', Sym, guards) | ('loop', Iter, [items])]; guards are
    loop variables that must be at their first element for the entry to be written there."""

    def __init__(self):
        self.items = []
        self.seen = {}      # family -> (guards, reduction context)
        self.targets = []   # (Sym, Target) in entry order

    def count_static(self):
        """Entries when no loop is involved, or None."""
        def walk(items):
            n = 0
            for it in items:
                if it[0] == "loop":
                    return None
                n += 1
            return n
        return walk(self.items)


class WalkBuilder:
    def __init__(self, walk, path):
        self.walk = walk
        self.path = path
        self.stack = []      # open reductions: (Iter, items list)

    def items(self):
        return self.stack[-1][1] if self.stack else self.walk.items

    def enter(self, it):
        loop = ("loop", it, [])
        self.items().append(loop)
        self.stack.append((it, loop[2]))

    def leave(self):
        it, items = self.stack.pop()
        # A loop that got no entries is dropped again.
        container = self.items()
        if not items and container and container[-1][0] == "loop" and container[-1][1] is it:
            container.pop()

    def occur(self, sym, tok_error):
        fam = sym.family
        context = [it for it, _ in self.stack]
        slots = sym.slots()
        if fam in self.walk.seen:
            guards, _ctx = self.walk.seen[fam]
            for g in guards:
                # Written again in another unfiltered loop over the same set: that loop has
                # elements exactly when the first one has, so the entry stays where it is.
                if g not in context and not any(c.setref.key() == g.setref.key() and c.where is None
                                                 and g.where is None for c in context):
                    tok_error(f"{sym.text()} is first written inside a sum or product over {g.name}, "
                              f"where it does not depend on {g.name}; write it outside first")
            return
        guards = [it for it in context if it.slot not in slots]
        self.walk.seen[fam] = (guards, context)
        binding = {it.slot: it for it in context if it.slot in slots}
        self.items().append(("entry", sym, guards))
        self.walk.targets.append((sym, Target(fam, binding)))
