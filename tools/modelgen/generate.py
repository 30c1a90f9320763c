"""One container class from its description: the class declaration, Construct, the copy
operations and the nine operations of the container protocol. The equations are written once,
as residuals; the equation count, the Jacobian pattern, the residual and the Jacobian values
all come from that one form."""
from dataclasses import dataclass, field
from typing import Optional

from . import ir
from . import syntax as S
from .cpp import Block, Emitter, cstr, set_object
from .errors import DescriptionError
from .lowering import Lowering, Scope
from .model import SetRef, kind_of

INDENT = "    "


def unparse(e):
    """A description's expression as text, for messages."""
    if isinstance(e, S.Num):
        return e.text
    if isinstance(e, S.Str):
        return f'"{e.text}"'
    if isinstance(e, S.Bool):
        return "true" if e.value else "false"
    if isinstance(e, S.Name):
        return e.name
    if isinstance(e, S.Apply):
        return f"{unparse(e.target)}({', '.join(unparse(a) for a in e.args)})"
    if isinstance(e, S.Member):
        return f"{unparse(e.base)}.{e.name}"
    if isinstance(e, S.Unary):
        return f"{'not ' if e.op == 'not' else '-'}{unparse(e.operand)}"
    if isinstance(e, S.Binary):
        return f"{unparse(e.left)} {e.op} {unparse(e.right)}"
    if isinstance(e, S.Range):
        return f"{unparse(e.low)} .. {unparse(e.high)}"
    if isinstance(e, S.Reduce):
        return f"{e.kind}({e.var} in {unparse(e.over)}: {unparse(e.body)})"
    return "?"


def ir_object(sym):
    """C++ of a property reached by a path without indices, in set-up code."""
    obj = ""
    for d, _idx in sym.steps:
        obj = d.cpp_access(obj)
    return obj


# --- the equations as a tree of control statements -------------------------------------------

@dataclass(eq=False)
class Row:
    """One equation row: a residual, or with a condition two alternative residuals chosen at
    each evaluation; the terms of all alternatives in first-occurrence order."""
    label: str
    residuals: list
    condition: Optional[ir.Node]
    walk: ir.Walk
    tok: object


@dataclass(eq=False)
class CallNode:
    """call (outputs) = PROC(inputs): the procedure's equations, one per output element. Each
    argument is ('ref', Ref), ('array', Ref), ('int' | 'real' | 'text', node) or ('iter', Iter)."""
    label: str
    proc: object
    inputs: list
    outputs: list
    mode: int
    tok: object


@dataclass(eq=False)
class LoopNode:
    iters: list
    where: Optional[ir.Node]
    stored: bool                   # the filter is recorded by SetUpEquations, not re-evaluated
    body: list


@dataclass(eq=False)
class ChoiceNode:
    """A condition on parameters: the alternative is chosen once, by SetUpEquations."""
    branches: list                 # [(condition, body)]
    otherwise: list


@dataclass(eq=False)
class GroupNode:
    number: int
    body: list


@dataclass(eq=False)
class AssignLeaf:
    target: object                 # lowering.Ref
    value: ir.Node
    ordinal: int
    tok: object
    pass_no: int = 0               # the pass argument of an internal index set's assignment


@dataclass
class Resolved:
    """A text index resolved to a position once, by SetUpEquations."""
    slot: int
    decl: object
    dim: int
    node: ir.Node
    array: object = None    # the path of the array (a Sym without the array's indices)


class TypeGen:
    def __init__(self, world, desc, rel, headers):
        self.world = world
        self.desc = desc
        self.rel = rel                  # path of the description relative to the library root
        self.headers = headers          # type name -> include path of its header
        self.info = world.cat.find(desc.name)
        self.tm = world.type_model(desc.name, desc.path, desc.tok)
        self.base_tm = world.type_model(desc.base, desc.path, desc.tok)
        self.low = Lowering(world, desc, self.tm)
        self.handwritten = {name for name, _tok in desc.handwritten}
        self.groups = []
        self.assignments = []
        self.statement_number = 0
        self.uses_choices = False
        self.uses_calls = False
        self.uses_components = False
        self.resolved = []
        self.set_sources = []           # (text of a range assignment, integer parameters it reads)
        self.own_checks = []            # checks that this object's arrays run over their loops' sets
        self.lower_assignments()
        self.lower_equations()

    def fail(self, tok, message):
        raise DescriptionError(self.desc.path, tok.line, tok.col, message)

    # --- lowering --------------------------------------------------------------------------
    def lower_assignments(self):
        counter = [0]

        def stmts(items, scope):
            out = []
            for s in items:
                if isinstance(s, S.Assign):
                    if s.ordinal is not None:
                        counter[0] = s.ordinal
                    else:
                        counter[0] += 1
                    out.append(self.assign_leaf(s, scope, counter[0]))
                elif isinstance(s, S.For):
                    inner, iters = self.loop_scope(s, scope)
                    where = self.low.expr(s.where, inner, None, "bool") if s.where is not None else None
                    out.append(LoopNode(iters, where, False, stmts(s.body, inner)))
                elif isinstance(s, S.If):
                    branches = [(self.low.expr(c, scope, None, "bool"), stmts(b, scope)) for c, b in s.branches]
                    out.append(ChoiceNode(branches, stmts(s.otherwise, scope)))
                else:
                    self.fail(s.tok, "not a statement of the assignments section")
            return out

        self.assignments = stmts(self.desc.assignments, Scope())

    def assign_leaf(self, s, scope, ordinal):
        ref = self.low.resolve(s.target, scope, allow_attr=True)
        d = ref.decl
        attr = ref.attr or "VALUE"
        if d.is_array and not ref.steps[-1][1]:
            self.fail(s.tok, f"{d.name} is an array: assign its elements in a loop (for i in SET: {d.name}(i) := ...)")
        if d.category in ("set", "internal_set"):
            value = self.set_value(s.value, scope, d)
        elif attr == "SPEC":
            if d.value_category != "variable":
                self.fail(s.tok, f"{d.name} is not a variable: only variables have a spec")
            value = self.low.expr(s.value, scope, None, "spec")
        elif attr in ("RECORD", "ISMATCHED", "ISCONNECTED"):
            value = self.low.expr(s.value, scope, None, "bool")
        elif attr in ("LOWER", "UPPER"):
            if d.value_category not in ("variable", "real", "integer"):
                self.fail(s.tok, f"{d.name} has no bounds")
            value = self.low.expr(s.value, scope, None, "int" if d.value_category == "integer" else "double")
        else:
            cat = d.value_category
            if cat is None:
                self.fail(s.tok, f"{d.name} is a {d.category.replace('_', ' ')}: it cannot be assigned")
            want = {"variable": "double", "real": "double", "integer": "int", "string": "any", "logical": "bool"}[cat]
            if isinstance(s.value, S.Apply) and isinstance(s.value.target, S.Name) and s.value.target.name == "option":
                value = self.low.expr(s.value, scope, None, "option")
            else:
                value = self.low.expr(s.value, scope, None, want)
                if cat == "string" and value.ctype not in ("string",):
                    self.fail(s.tok, f"{d.name} takes a text")
        ref.attr = attr
        if s.pass_no is not None and d.category != "internal_set":
            self.fail(s.tok, f"{d.name} is not an internal index set: only those take a pass")
        return AssignLeaf(ref, value, ordinal, s.tok, s.pass_no or 0)

    def set_value(self, e, scope, d):
        """The value of an assignment to set d, checked to hold members of d's kind."""
        if isinstance(e, S.Binary) and e.op == "*":
            return ir.mk("setprod", "set", self.set_value(e.left, scope, d), self.set_value(e.right, scope, d))
        if isinstance(e, S.SetLiteral):
            return ir.mk("setlit", "set", self.stored_set(e, d))
        if isinstance(e, S.Range):
            if d.setkind != "integer":
                self.fail(e.tok, f"{d.name} is a set of texts; a range a .. b makes integers")
            lo = self.low.expr(e.low, scope, None, "int")
            hi = self.low.expr(e.high, scope, None, "int")
            params = [n.args[0] for n in self.all_nodes(ir.mk("pair", "int", lo, hi)) if n.op == "iparam"]
            source = (f"{d.name} := {unparse(e)}", params)
            if source not in self.set_sources:   # a set made again on a later pass is one source
                self.set_sources.append(source)
            return ir.mk("range", "set", lo, hi)
        if isinstance(e, S.Apply) and isinstance(e.target, S.Name) and e.target.name == "option":
            if d.setkind != "string":
                self.fail(e.tok, f"{d.name}: a list option gives a set of texts")
            return self.low.expr(e, scope, None, "option")
        if isinstance(e, S.Name) and (e.name == "components" or self.tm.find(e.name) is not None):
            setref = self.low.set_of(e, scope)
            if setref.elem != d.setkind:
                self.fail(e.tok, f"{d.name} is a set of {d.setkind}s, {e.name} of {setref.elem}s")
            return ir.mk("setof", "set", setref)
        self.fail(e.tok, "a set takes a range a .. b, a set {...}, another set, components, option(\"NAME\") "
                         "or the product A * B of two of these")

    def stored_set(self, e, d):
        """The stored form of a set {...}: each member closed by a double quote."""
        members = []
        for item in e.items:
            if d.setkind == "string":
                if not isinstance(item, S.Str) or '"' in item.text:
                    self.fail(item.tok, f"{d.name} is a set of texts: its members are texts without a double quote")
                text = item.text
            else:
                negative = isinstance(item, S.Unary) and item.op == "-"
                num = item.operand if negative else item
                if not isinstance(num, S.Num) or not num.is_int:
                    self.fail(item.tok, f"{d.name} is a set of integers: its members are integers")
                text = ("-" if negative else "") + num.text
            if any(m.lower() == text.lower() for m in members):
                self.fail(item.tok, f"{d.name}: member {text} given twice")
            members.append(text)
        return "".join(m + '"' for m in members)

    def loop_scope(self, s, scope):
        inner = scope.child()
        iters = []
        for name, set_expr in s.iters:
            setref = self.low.set_of(set_expr, inner)
            it = self.low.new_iter(name, setref, "eq", s.tok, inner)
            inner.vars[name] = it
            iters.append(it)
        return inner, iters

    def lower_equations(self):
        for k, s in enumerate(self.desc.equations, start=1):
            body = self.eq_stmts(s.body if isinstance(s, S.Group) else [s], Scope())
            self.groups.append(GroupNode(k, body))

    def next_label(self, label):
        self.statement_number += 1
        return label if label is not None else f"VX_Eqn{self.statement_number}"

    def eq_stmts(self, items, scope):
        out = []
        for s in items:
            if isinstance(s, S.Equation):
                label = self.next_label(s.label)
                walk = ir.Walk()
                residual = self.residual(s, scope, walk)
                out.append(Row(label, [residual], None, walk, s.tok))
            elif isinstance(s, S.Call):
                out.append(self.call_node(s, scope))
            elif isinstance(s, S.For):
                inner, iters = self.loop_scope(s, scope)
                where, stored = None, False
                if s.where is not None:
                    where = self.low.expr(s.where, inner, None, "bool")
                    stored = not self.cheap(where)
                    self.uses_choices |= stored
                out.append(LoopNode(iters, where, stored, self.eq_stmts(s.body, inner)))
            elif isinstance(s, S.If):
                branches = []
                for c, b in s.branches:
                    cond = self.low.expr(c, scope, None, "bool")
                    if self.reads_variables(cond):
                        self.fail(c.tok, "this condition reads a variable: a choice made at each evaluation "
                                         "is written 'when ... then ... else ... end'")
                    branches.append((cond, self.eq_stmts(b, scope)))
                self.uses_choices = True
                out.append(ChoiceNode(branches, self.eq_stmts(s.otherwise, scope)))
            elif isinstance(s, S.When):
                out.extend(self.when_rows(s, scope))
            elif isinstance(s, S.Group):
                self.fail(s.tok, "a group stands only at the top of the equations section")
            else:
                self.fail(s.tok, "not a statement of the equations section")
        return out

    def call_node(self, s, scope):
        proc = self.world.cat.procedures.get(s.procedure)
        if proc is None:
            self.fail(s.tok, f"unknown procedure {s.procedure} (procedures/procedures.def lists them)")
        for what, given, wanted in (("inputs", s.inputs, proc.inputs), ("outputs", s.outputs, proc.outputs)):
            if len(given) != len(wanted):
                self.fail(s.tok, f"{s.procedure} takes {len(wanted)} {what}, given {len(given)}")
        inputs = [self.call_argument(e, spec, scope, False) for e, spec in zip(s.inputs, proc.inputs)]
        outputs = [self.call_argument(e, spec, scope, True) for e, spec in zip(s.outputs, proc.outputs)]
        self.uses_calls = True
        return CallNode(self.next_label(s.label), proc, inputs, outputs, s.mode, s.tok)

    def call_argument(self, e, spec, scope, output):
        kind = {"R": "a real", "I": "an integer", "S": "a text"}[spec.kind]
        if isinstance(e, S.Name) and scope.find(e.name) and spec.dims == 0 and not output:
            return ("iter", scope.find(e.name))
        if isinstance(e, (S.Name, S.Member, S.Apply)) and not (isinstance(e, S.Apply) and isinstance(e.target, S.Name)
                                                               and self.low.is_function(e.target.name, scope)):
            ref = self.low.resolve(e, scope)
            d = ref.decl
            if d.value_category is None:
                self.fail(e.tok, f"{d.name} is not a variable or parameter")
            indexed = bool(ref.steps[-1][1])
            if spec.dims == 0:
                if d.is_array and not indexed:
                    self.fail(e.tok, f"{d.name} is an array; this argument is a scalar: give its indices")
                if output and d.value_category != "variable":
                    self.fail(e.tok, f"an output of a procedure is a variable; {d.name} is a {d.value_category} parameter")
                return ("ref", ref)
            if indexed or len(d.over) != spec.dims:
                self.fail(e.tok, f"this argument is an array of {spec.dims} ind{'ex' if spec.dims == 1 else 'ices'}: "
                                 f"give a whole array such as {d.name}")
            return ("array", ref)
        if output:
            self.fail(e.tok, "an output of a procedure is a variable")
        if spec.dims:
            self.fail(e.tok, f"this argument is an array; a constant is {kind} scalar")
        want = {"R": "double", "I": "int", "S": "string"}[spec.kind]
        node = self.low.expr(e, scope, None, want)
        return ({"R": "real", "I": "int", "S": "text"}[spec.kind], node)

    def residual(self, s, scope, walk):
        builder = ir.WalkBuilder(walk, self.desc.path)
        left = self.low.expr(s.left, scope, builder, "double")
        right = self.low.expr(s.right, scope, builder, "double")
        return ir.sub(left, right)

    def when_rows(self, s, scope):
        cond = self.low.expr(s.condition, scope, None, "bool")
        if self.reads_text(cond):
            self.fail(s.condition.tok, "a choice made at each evaluation cannot compare texts; "
                                       "a condition on parameters is written 'if ... then'")
        if any(n.op == "attr" for n in self.all_nodes(cond)):
            self.fail(s.condition.tok, "a choice made at each evaluation cannot read a variable's flags; "
                                       "a condition on them is written 'if ... then'")
        alts = []
        for body in (s.then, s.otherwise):
            eqs = []
            for e in body:
                if not isinstance(e, S.Equation):
                    self.fail(e.tok, "the alternatives of 'when' are equations, one row each")
                eqs.append(e)
            alts.append(eqs)
        if len(alts[0]) != len(alts[1]):
            self.fail(s.tok, f"the alternatives of 'when' must have as many equations: "
                             f"{len(alts[0])} against {len(alts[1])}")
        labels = [[self.next_label(e.label) for e in eqs] for eqs in alts]
        rows = []
        for j in range(len(alts[0])):
            walk = ir.Walk()
            residuals = [self.residual(alts[0][j], scope, walk), self.residual(alts[1][j], scope, walk)]
            rows.append(Row(labels[0][j], residuals, cond, walk, alts[0][j].tok))
        return rows

    @staticmethod
    def all_nodes(root):
        seen = set()
        stack = [root]
        while stack:
            n = stack.pop()
            if n.uid in seen:
                continue
            seen.add(n.uid)
            yield n
            for a in n.args:
                if isinstance(a, ir.Node):
                    stack.append(a)
                elif isinstance(a, ir.Iter) and a.bound_to is not None:
                    stack.append(a.bound_to)
                elif isinstance(a, ir.Sym):
                    for _d, idx in a.steps:
                        for i in idx:
                            if i[0] in ("int", "str"):
                                stack.append(i[1])

    def reads_variables(self, node):
        return any(n.op == "read" and n.args[0].steps[-1][0].value_category == "variable"
                   for n in self.all_nodes(node))

    def reads_text(self, node):
        return any(n.ctype == "string" or n.op in ("scmp", "member") for n in self.all_nodes(node))

    def cheap(self, node):
        """A loop filter that can be evaluated again at every evaluation: loop variables,
        numbers and integer arithmetic only."""
        return all(n.op in ("itv", "int", "num", "icmp", "cmp", "iadd", "isub", "imul", "and", "or", "not", "bool")
                   for n in self.all_nodes(node))

    # --- positions ---------------------------------------------------------------------------
    def same_set(self, setref, declared, step):
        """True when a loop over setref walks an array dimension declared over `declared` in
        the array's own order: the same set of this object."""
        return step == 0 and setref.key() == declared.key()

    def resolved_position(self, d, dim, node, arr_name, step, emitter, block, array=None):
        # A member's array is found by SetUpEquations once, so the path to it may not depend on
        # a loop either (IRXNCFG.KEQA(IRXN) is fine, IN_F(j).Z(WATERID) is not).
        prefix_free = array is not None and any(
            i[0] == "iter" or (i[0] in ("int", "str") and i[1].free)
            for _d, idx in array.steps[:-1] for i in idx)
        if node.free or (step != 0 and (array is None or prefix_free)):
            self.fail(d.tok, f"{d.name}: a text index inside an indexed member or depending on a loop variable "
                             f"is not supported by this generator")
        key = array.exact if array is not None and step != 0 else None
        for r in self.resolved:
            if r.decl is d and r.dim == dim and r.node is node and \
                    (r.array.exact if r.array is not None else None) == key:
                return f"m_position[{r.slot}]"
        r = Resolved(len(self.resolved), d, dim, node, array if step != 0 else None)
        self.resolved.append(r)
        return f"m_position[{r.slot}]"

    # --- emission: class structure -----------------------------------------------------------
    @property
    def cls(self):
        return f"VX_{self.desc.name}"

    @property
    def base_cls(self):
        return f"VX_{self.desc.base}"

    def container_id(self):
        return cstr(f"{kind_of(self.desc)} {self.desc.name}\tV7.0")

    def dependencies(self):
        deps = [self.desc.base]
        for p in self.tm.own:
            if p.typeinfo is not None and p.typeinfo.category == "container" and p.typeinfo.name not in deps:
                deps.append(p.typeinfo.name)
        return deps

    def member_init(self, p):
        if p.category == "global" or p.category == "global_structure":
            return f"{p.name}()"
        return f"{p.name}(true)"

    def registration(self, p):
        desc = cstr(p.description) if p.description is not None else "nullptr"
        fn = {"global": "VX_GlobalBase", "global_structure": "VX_GlobalBase", "external": "VX_ExternalBase",
              "virtual": "VX_VirtualBase"}.get(p.category, "VX_Type")
        line = f"{fn}::AddProperty(&{p.name}, this, {cstr(p.name)}, {desc}, {p.flags}, 0)"
        if self.desc.kind == "stream" and p.category == "member" and p.typeinfo.kind == "Port":
            return f"{line}->HostPortType(2);"
        return line + ";"

    def sized_arrays(self):
        return [p for p in self.tm.own if p.is_array and p.category in ("value", "member")]

    def header(self):
        d = self.desc
        lines = [f"// Generated by tools/modelgen from {self.rel}; edit the description, not this file.",
                 "#pragma once", '#include "frame/generated_support.hpp"']
        for dep in self.dependencies():
            inc = self.headers.get(dep)
            if inc:
                lines.append(f'#include "{inc}"')
        lines.append("")
        if d.doc:
            lines.append(f"// {d.name}: {d.doc}")
        lines.append(f"class {self.cls} : public {self.base_cls} {{")
        lines.append("public:")
        lines += [
            f"    explicit {self.cls}(bool constructProperties = true);",
            f"    {self.cls}(const {self.cls}& o);",
            f"    {self.cls}& operator=(const {self.cls}& o);",
            f"    ~{self.cls}() override;",
            "    void Construct();",
            f"    static const char* VX_ContainerId() {{ return {self.container_id()}; }}",
            "    const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); }",
            "    bool ContainerDerivesFrom(const char* id) const override;",
            "    void SetDims() override;",
            "    int ExecuteAssignments(int level, int context) override;",
            "    int SetUpEquations() override;",
            "    int Residuals(double* r, int group, int start) override;",
            "    int Jacobian(double* values, int group, int start) override;",
            "    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override;",
        ]
        if d.scripts:
            lines += ["    // The class's model scripts, as wide text: the script named name, or with no name the one",
                      "    // at index (from 0); null when there is none.",
                      "    static const wchar_t* StaticScript(const char* name, int index);",
                      "    const wchar_t* Script(const char* name, int index) const override { return StaticScript(name, index); }"]
        for name in sorted(self.handwritten):
            if name not in ("SetDims", "ExecuteAssignments", "SetUpEquations", "Residuals", "Jacobian",
                            "JacPattern", "Construct"):
                self.fail(dict(d.handwritten)[name], f"{name} is not an operation that can be written by hand")
        lines.append("")
        for p in self.tm.own:
            comment = f"  // {p.description}" if p.description else ""
            lines.append(f"    {p.cpp_type()} {p.name};{comment}")
        lines.append("")
        lines.append("    int m_firstGroup = 0, m_localEqnCount = 0, m_localNZCount = 0;")
        private = self.private_members()
        if private:
            lines.append("")
            lines.append("private:")
            lines += [f"    {decl};  // {comment}" for decl, _name, comment in private]
        lines.append("};")
        if self.desc.kind == "port":
            lines.append(f"VX_MULTIPORT_CLASSES({d.name})")
        return "\n".join(lines) + "\n"

    def private_members(self):
        """(declaration, name, comment) of the state SetUpEquations leaves for the other passes."""
        out = []
        if self.uses_choices:
            out.append(("std::vector<std::uint8_t> m_choices", "m_choices",
                        "alternatives chosen by SetUpEquations, in the order they are met"))
            out.append((f"std::array<std::size_t, {max(1, len(self.groups))}> m_groupChoice{{}}", "m_groupChoice",
                        "where each group's choices start"))
        if self.uses_components:
            out.append(("std::shared_ptr<const VX_StrSetData> m_componentSet", "m_componentSet",
                        "the components, as SetUpEquations saw them"))
        if self.resolved:
            out.append((f"std::array<std::ptrdiff_t, {len(self.resolved)}> m_position{{}}", "m_position",
                        "text indices resolved by SetUpEquations"))
        return out

    def source(self):
        # Residuals and Jacobian first: they tell which positions SetUpEquations must resolve.
        residuals = self.residuals_fn()
        jacobian = self.jacobian_fn()
        parts = [f"// Generated by tools/modelgen from {self.rel}; edit the description, not this file.",
                 f'#include "{self.headers[self.desc.name]}"', "",
                 "#include <cmath>", "#include <exception>", "#include <limits>", ""]
        parts.append(self.constructors())
        if "Construct" not in self.handwritten:
            parts.append(self.construct_fn())
        parts.append(f"bool {self.cls}::ContainerDerivesFrom(const char* id) const {{\n"
                     f"    return (id && VX_EqualCI(id, VX_ContainerId())) || {self.base_cls}::ContainerDerivesFrom(id);\n}}\n")
        for name, fn in (("SetDims", self.setdims_fn), ("ExecuteAssignments", self.assignments_fn),
                         ("SetUpEquations", self.setup_fn), ("JacPattern", self.pattern_fn)):
            if name not in self.handwritten:
                parts.append(fn())
        if self.desc.scripts:
            parts.append(self.scripts_fn())
        if "Residuals" not in self.handwritten:
            parts.append(residuals)
        if "Jacobian" not in self.handwritten:
            parts.append(jacobian)
        return "\n".join(parts)

    def scripts_fn(self):
        """The script stores, made once on the first call: per script its name and lines, then
        an empty store that ends the list."""
        body = []
        stores = []
        for k, sc in enumerate(self.desc.scripts):
            for line in sc.lines:
                if any(ord(ch) > 126 for ch in line):
                    self.fail(sc.tok, "script lines are plain ASCII text")
            items = ",\n        ".join(cstr(x) for x in [sc.name] + sc.lines)
            body.append(f"    static const char* const kScript{k}[] = {{\n        {items}}};")
            length = sum(len(line) + 1 for line in sc.lines)
            stores.append(f"VX_Script(kScript{k}, {len(sc.lines) + 1}, {k}, {length})")
        body.append(f"    static const VX_Script kStores[] = {{{', '.join(stores + ['VX_Script()'])}}};")
        body.append("    return VX_Script::Find(kStores, name, index);")
        return f"const wchar_t* {self.cls}::StaticScript(const char* name, int index) {{\n" + "\n".join(body) + "\n}\n"

    def constructors(self):
        own = self.tm.own
        inits = [f"{self.base_cls}(false)"] + [self.member_init(p) for p in own]
        copies = [f"{self.base_cls}(o)"] + [f"{p.name}(o.{p.name})" for p in own] + \
                 ["m_firstGroup(o.m_firstGroup)", "m_localEqnCount(o.m_localEqnCount)", "m_localNZCount(o.m_localNZCount)"] + \
                 [f"{name}(o.{name})" for _d, name, _c in self.private_members()]
        assigns = [f"    {self.base_cls}::operator=(o);"] + [f"    {p.name} = o.{p.name};" for p in own] + \
                  ["    m_firstGroup = o.m_firstGroup;", "    m_localEqnCount = o.m_localEqnCount;",
                   "    m_localNZCount = o.m_localNZCount;"] + \
                  [f"    {name} = o.{name};" for _d, name, _c in self.private_members()]
        sep = ",\n      "
        return (f"{self.cls}::{self.cls}(bool constructProperties)\n    : {sep.join(inits)} {{\n"
                f"    if (constructProperties) Construct();\n}}\n\n"
                f"{self.cls}::{self.cls}(const {self.cls}& o)\n    : {sep.join(copies)} {{}}\n\n"
                f"{self.cls}& {self.cls}::operator=(const {self.cls}& o) {{\n" + "\n".join(assigns) +
                "\n    return *this;\n}\n\n"
                f"{self.cls}::~{self.cls}() = default;\n")

    def construct_fn(self):
        body = [f"    {self.base_cls}::Construct();"] + [f"    {self.registration(p)}" for p in self.tm.own]
        for p in self.tm.own:
            if p.default is not None:
                body.append(f"    {self.default_value(p)}")
        return f"void {self.cls}::Construct() {{\n" + "\n".join(body) + "\n}\n"

    def default_value(self, p):
        if p.category != "value" or p.is_array:
            self.fail(p.tok, "a default is given to a scalar variable or parameter only")
        e = p.default
        cat = p.value_category
        if isinstance(e, S.Unary) and e.op == "-" and isinstance(e.operand, S.Num):
            text = "-" + e.operand.text
        elif isinstance(e, S.Num):
            text = e.text
        elif isinstance(e, S.Str) and cat == "string":
            return f"{p.name}.SetDefault(VX_Value({cstr(e.text)}, 0));"
        elif isinstance(e, S.Bool) and cat == "logical":
            return f"{p.name}.SetDefault(VX_Value({'true' if e.value else 'false'}, 0));"
        else:
            self.fail(p.tok, f"the default of {p.name} must be a literal of its kind")
        if cat == "integer":
            if not text.lstrip("-").isdigit():
                self.fail(p.tok, f"{p.name} is an integer parameter: its default is an integer")
            return f"{p.name}.SetDefault(VX_Value({text}, 0));"
        if cat in ("variable", "real"):
            return f"{p.name}.SetDefault(VX_Value({float(text)!r}, 0));"
        self.fail(p.tok, f"the default of {p.name} must be a literal of its kind")

    def setdims_fn(self):
        body = []
        for p in self.sized_arrays():
            body.append(f"    {p.name}.SetDim({', '.join(set_object(s) for s in p.over)});")
        body.append(f"    {self.base_cls}::SetDims();")
        return f"void {self.cls}::SetDims() {{\n" + "\n".join(body) + "\n}\n"

    # --- emission: assignments ---------------------------------------------------------------
    def assignments_fn(self):
        em = Emitter(self, "setup")
        top = Block()
        self.emit_assignments(self.assignments, top, em)
        body = "\n".join(INDENT * 2 + line if line else "" for line in top.pre + top.body)
        return (f"int {self.cls}::ExecuteAssignments(int level, int context) {{\n"
                f"    const int base = {self.base_cls}::ExecuteAssignments(level - 1, context);\n"
                f"    if (base < 0) return base;\n"
                f"    try {{\n{body}\n    }} catch (const std::exception& e) {{\n"
                f"        return VX_ReportFailure(*this, \"ExecuteAssignments\", e);\n    }}\n"
                f"    return base;\n}}\n")

    def emit_assignments(self, items, block, em):
        for item in items:
            if isinstance(item, AssignLeaf):
                child = Block(block, barrier="hard")
                datum = self.assign_datum(item, child, em)
                target = self.assign_target(item, child, em)
                v = em.fresh("v")
                child.add(f"const VX_Value {v}({datum}, context, level, {item.ordinal});")
                d = item.target.decl
                if d.category == "internal_set":
                    child.add(f"InitialiseInternalIndexSet({target}, {v}, {item.pass_no});")
                else:
                    child.add(f"{target}.Assign(&{v});")
                # A statement about a reference that nothing is linked to yet has nothing to act on.
                refs = self.references_of(list(item.target.steps), [item.value])
                guard = " && ".join(f"{r.name}.Target()" for r in refs)
                block.nest(f"if ({guard}) {{" if guard else "{", child)
            else:
                # A loop or a choice tests its condition where it stands, after the statements
                # before it (which may assign what it reads), and only when the references it
                # reads are linked.
                child = Block(block, barrier="hard")
                if isinstance(item, LoopNode):
                    conditions = [item.where] if item.where is not None else []
                    self.emit_loop(item, child, em, "assign", lambda inner, item=item: self.emit_assignments(item.body, inner, em))
                else:
                    conditions = [cond for cond, _body in item.branches]
                    self.emit_choice(item, child, em, "assign", lambda body, inner: self.emit_assignments(body, inner, em))
                refs = self.references_of([], conditions)
                guard = " && ".join(f"{r.name}.Target()" for r in refs)
                block.nest(f"if ({guard}) {{" if guard else "{", child)

    def references_of(self, steps, values):
        """This object's references (globals, externals) among steps and read by values."""
        refs = []
        steps = list(steps)
        for value in values:
            if not isinstance(value, ir.Node):
                continue
            for n in self.all_nodes(value):
                if n.op in ("read", "iparam", "sparam", "lparam", "attr"):
                    steps.extend(n.args[0].steps[:1])
        for d, _idx in steps:
            if d.is_reference and d in self.tm.own and d not in refs:
                refs.append(d)
        return refs

    def assign_target(self, leaf, block, em):
        ref = leaf.target
        obj = em.object_expr(ir.Sym(ref.steps), block)
        if ref.decl.category in ("set", "internal_set") or ref.attr == "VALUE":
            return obj
        return f"{obj}.{ref.attr}()"

    def assign_datum(self, leaf, block, em):
        v = leaf.value
        d = leaf.target.decl
        if d.category in ("set", "internal_set"):
            return self.set_datum(v, d, block, em)
        if v.op == "option":
            option = f"VX_ComponentListOption(*ComponentList(), {cstr(v.args[0])})"
            cat = d.value_category
            if cat == "integer":
                return f"{option}.v().Integer()"
            if cat == "string":
                return f"{option}.v()"
            self.fail(leaf.tok, f"{d.name}: a list option is assigned to an integer, text or set")
        return em.emit(v, block)

    def set_datum(self, v, d, block, em):
        """C++ of a set value (VX_IntSetValue or VX_StrSetValue) for set d."""
        if v.op == "range":
            return f"VX_IntSetValue({em.emit(v.args[0], block)}, {em.emit(v.args[1], block)})"
        if v.op == "setof":
            return f"{set_object(v.args[0])}.v()" if v.args[0].kind != "components" else "ComponentList()->v()"
        if v.op == "option":
            return f"VX_ComponentListOption(*ComponentList(), {cstr(v.args[0])}).StringSet()"
        if v.op == "setlit":
            return f"VX_{'Int' if d.setkind == 'integer' else 'Str'}SetValue({cstr(v.args[0])})"
        if v.op == "setprod":
            return f"({self.set_datum(v.args[0], d, block, em)} * {self.set_datum(v.args[1], d, block, em)})"
        raise AssertionError(f"not a set value: {v.op}")

    # --- emission: control statements shared by the four equation passes ----------------------
    def emit_loop(self, item, block, em, mode, body_fn):
        """Loops of an equation or assignment statement. mode: 'record' (SetUpEquations records a
        stored filter), 'replay' (the other passes read it back), 'assign'."""
        chain = []
        cur = block
        for it in item.iters:
            header, child, footer = em.open_loop(it, cur)
            chain.append((cur, header, child, footer))
            cur = child
        if item.where is None:
            body_fn(cur)
        else:
            filtered = Block(cur, binds=item.iters)
            if item.stored and mode == "record":
                w = em.emit(item.where, cur)
                cur.add(f"m_choices.push_back({w} ? 1 : 0);")
                cond = w
            elif item.stored and mode == "replay":
                cond = "m_choices[choice++] != 0"
            else:
                cond = em.emit(item.where, cur)
            body_fn(filtered)
            cur.nest(f"if ({cond}) {{", filtered)
        for parent, header, child, footer in reversed(chain):
            parent.nest(header, child, footer)

    def emit_choice(self, item, block, em, mode, body_fn):
        """A condition on parameters: evaluated and recorded by SetUpEquations ('record'),
        evaluated by the assignments ('assign'), read back by the other passes ('replay')."""
        n = len(item.branches)
        has_else = bool(item.otherwise)
        if mode == "replay":
            tests = [f"alternative == {k}" for k in range(1, n + 1)]
        else:
            tests = [em.emit(cond, block) for cond, _body in item.branches]
        arms = []
        for k, ((_cond, body), test) in enumerate(zip(item.branches, tests), start=1):
            child = Block(block, barrier="hard")
            if mode == "record":
                child.add(f"m_choices.push_back({k});")
            body_fn(body, child)
            arms.append((f"{'if' if k == 1 else '} else if'} ({test}) {{", child))
        if has_else or mode == "record":
            child = Block(block, barrier="hard")
            if mode == "record":
                child.add(f"m_choices.push_back({n + 1 if has_else else 0});")
            if has_else:
                body_fn(item.otherwise, child)
            arms.append(("} else {", child))
        lines = []
        if mode == "replay":
            lines.append("{")
            lines.append(INDENT + "const std::uint8_t alternative = m_choices[choice++];")
        pad = INDENT if mode == "replay" else ""
        for header, child in arms:
            lines.append(pad + header)
            lines.extend(pad + INDENT + line if line else "" for line in child.pre + child.body)
        lines.append(pad + "}")
        if mode == "replay":
            lines.append("}")
        block.body.extend(lines)

    # --- emission: the equation passes ---------------------------------------------------------
    def emit_items(self, items, block, em, mode, leaf):
        for item in items:
            if isinstance(item, (Row, CallNode)):
                leaf(item, block)
            elif isinstance(item, LoopNode):
                self.emit_loop(item, block, em, mode, lambda inner, item=item: self.emit_items(item.body, inner, em, mode, leaf))
            elif isinstance(item, ChoiceNode):
                self.emit_choice(item, block, em, mode, lambda body, inner: self.emit_items(body, inner, em, mode, leaf))

    def has_calls(self, items):
        for item in items:
            if isinstance(item, CallNode):
                return True
            if isinstance(item, LoopNode) and self.has_calls(item.body):
                return True
            if isinstance(item, ChoiceNode) and (any(self.has_calls(b) for _c, b in item.branches) or
                                                 self.has_calls(item.otherwise)):
                return True
        return False

    def bind_call(self, call, group, b, em):
        """SetUpEquations of a call: a counting instance adds its equations and entries to the
        group, the kept instance is bound and handed to this model."""
        child = Block(b, barrier="hard")
        lines = []
        for arg in call.inputs + call.outputs:
            lines.append(self.call_argument_code(arg, child, em))
        args = f"{call.mode}{', ComponentList()' if call.proc.component_list else ''}"
        child.add("auto arguments = [&](VX_ProcedureType& p) {")
        child.body.extend(INDENT + line for line in lines)
        child.add("};")
        child.add(f"{call.proc.cpp} counting(true, {args});")
        child.add("arguments(counting);")
        child.add(f"if (const int nz = counting.NZAndEqnContribution(this, m_firstGroup + {group}, n); nz < 0) return nz;")
        child.add(f"auto* kept = new {call.proc.cpp}(false, {args});")
        child.add("arguments(*kept);")
        child.add("kept->LastArgument();")
        child.add(f"if (const int s = kept->CreateEquationsAndSetGroup(this, m_firstGroup + {group}, {cstr(call.label)}); s < 0) return s;")
        b.nest("{", child)

    def call_argument_code(self, arg, block, em):
        kind, x = arg
        if kind == "iter":
            return f"p.Argument({em.iter_object(x)});"
        if kind == "ref":
            return f"p.Argument({em.object_expr(ir.Sym(x.steps), block)});"
        if kind == "array":
            return f"VX_ArrayArgument(p, {em.object_expr(ir.Sym(x.steps), block)});"
        value = em.emit(x, block)
        cast = {"int": "static_cast<int>", "real": "static_cast<double>", "text": "static_cast<const char*>"}[kind]
        return f"p.Argument({cast}({value}));"

    def group_text(self, g, block, indent=2):
        return [INDENT * indent + line if line else "" for line in block.pre + block.body]

    def setup_fn(self):
        em = Emitter(self, "setup")
        lines = [f"int {self.cls}::SetUpEquations() {{",
                 f"    int n = {self.base_cls}::SetUpEquations();",
                 "    if (n < 0) return n;",
                 "    m_firstGroup = VX_ModelType::m_stLastGroup;",
                 "    const int start = n;"]
        if self.uses_choices:
            lines.append("    m_choices.clear();")
        if self.uses_components:
            lines.append("    m_componentSet = ComponentList()->v().Shared();")
        lines.append("    try {")
        top = Block()
        for r in self.resolved:
            arr = em.object_expr(r.array, top) if r.array is not None else r.decl.cpp_access("")
            text = em.emit(r.node, top)
            # -1 when there is no such element: only an equation that names it reads the
            # position, and setting that equation up fails naming the array and the index.
            top.add(f"m_position[{r.slot}] = {arr}.PositionOfText({r.dim}, {text});")
        groups = []
        for g in self.groups:
            block = Block(barrier="hard")
            if self.uses_choices:
                block.add(f"m_groupChoice[{g.number - 1}] = m_choices.size();")

            def leaf(row, b, g=g):
                if isinstance(row, CallNode):
                    self.bind_call(row, g.number, b, em)
                    return
                b.add(f"SetGroupLimits(m_firstGroup + {g.number});")
                b.add("++n;")
                self.emit_walk_setup(row.walk.items, b, em, "AddNonZero({obj});", check=True)

            self.emit_items(g.body, block, em, "record", leaf)
            groups.append(f"        // group {g.number}")
            groups += self.group_text(g, block)
        for d in self.references_in_equations():
            top.body.append(f"VX_CheckLinked({d.name}, {cstr(d.name)});")
        top.body.extend(self.own_checks)
        lines += self.group_text(None, top)
        lines += groups
        lines += ["    } catch (const std::exception& e) {",
                  f'        return VX_ReportFailure(*this, "SetUpEquations", e, std::string(){self.set_context()});',
                  "    }",
                  "    m_localEqnCount = n - start;",
                  "    return SetLocalEqnCount(n);",
                  "}", ""]
        return "\n".join(lines)

    def references_in_equations(self):
        """This object's references (globals, externals) that its equations read."""
        out = []
        for g in self.groups:
            for node in self.nodes_of(g.body):
                if node.op in ("read", "iparam", "sparam", "lparam", "attr"):
                    d = node.args[0].steps[0][0]
                    if d.is_reference and d in self.tm.own and d not in out:
                        out.append(d)
        return sorted(out, key=self.tm.own.index)

    def nodes_of(self, items):
        for item in items:
            if isinstance(item, Row):
                for r in item.residuals:
                    yield from self.all_nodes(r)
                if item.condition is not None:
                    yield from self.all_nodes(item.condition)
            elif isinstance(item, LoopNode):
                if item.where is not None:
                    yield from self.all_nodes(item.where)
                yield from self.nodes_of(item.body)
            elif isinstance(item, ChoiceNode):
                for cond, body in item.branches:
                    yield from self.all_nodes(cond)
                    yield from self.nodes_of(body)
                yield from self.nodes_of(item.otherwise)

    def set_context(self):
        """What a failed SetUpEquations adds to its message: how the sets that size the arrays
        were made, with the parameters they were made from ("NPOINTS := 1 .. NPTS, NPTS = 0")."""
        parts = []
        for text, params in self.set_sources:
            piece = cstr(text)
            for sym in params:
                piece += f' + ", {sym.text()} = " + std::to_string({ir_object(sym)}.fv())'
            parts.append(piece)
        if not parts:
            return ""
        return ' + " (" + ' + ' + "; " + '.join(parts) + ' + ")"'

    def walk_entries(self, items, block, em, entry):
        """The entries of a walk in order, each by entry(sym, block) returning its statement,
        guarded to the first element of the loops it does not depend on; loops opened as
        the walk has them."""
        for item in items:
            if item[0] == "entry":
                _kind, sym, guards = item
                stmt = entry(sym, block)
                if guards:
                    cond = " && ".join(em.iter_first(g, block) for g in guards)
                    stmt = f"if ({cond}) {stmt}"
                block.add(stmt)
            else:
                _kind, it, inner = item
                header, child, footer = em.open_loop(it, block)
                self.walk_entries(inner, child, em, entry)
                block.nest(header, child, footer)

    def emit_walk_setup(self, items, block, em, template, check=False):
        """The entries of a walk in set-up code: template per entry, with check the test that
        every array read by a loop's position runs over that loop's set (once per array for
        this object's own arrays, per element for arrays of members)."""
        def entry(sym, block):
            obj = em.object_expr(sym, block)
            for k, (d, idx) in enumerate(sym.steps):
                for dim, i in enumerate(idx):
                    if not (check and i[0] == "iter" and i[2] == 0 and d.category != "multiport"):
                        continue
                    # An integer index over another set is read by its value, which needs
                    # no check: a missing element fails AddNonZero here.
                    if i[1].elem != "string" and not self.same_set(i[1].setref, d.over[dim], k):
                        continue
                    holder = em.object_expr(ir.Sym(sym.steps[:k] + [(d, [])]), block)
                    line = f"VX_CheckIndexedBy({holder}, {dim}, {em.set_data(i[1].setref, block)});"
                    if k == 0 and self.same_set(i[1].setref, d.over[dim], 0):
                        if line not in self.own_checks:
                            self.own_checks.append(line)
                    else:
                        block.add(line)
            return template.format(obj=obj)

        self.walk_entries(items, block, em, entry)

    def pattern_fn(self):
        em = Emitter(self, "setup")
        lines = [f"int {self.cls}::JacPattern(int*& rows, int*& cols, VX_EquationType** types) {{",
                 f"    const int n = {self.base_cls}::JacPattern(rows, cols, types);",
                 "    if (n < 0) return n;",
                 "    const int* const first = rows;",
                 "    try {"]
        for g in self.groups:
            block = Block(barrier="hard")
            if self.uses_choices:
                block.add(f"std::size_t choice = m_groupChoice[{g.number - 1}];")
            if self.has_calls(g.body):
                block.add("int proc = 0;")

            def leaf(row, b, g=g):
                if isinstance(row, CallNode):
                    b.add(f"if (VX_ProcedureType* q = ProcedureEquation(m_firstGroup + {g.number}, proc++))")
                    b.add(f"    if (const int s = q->JacPattern(this, rows, cols, types); s < 0) return s;")
                    return
                child = Block(b, barrier="hard")
                child.add(f"const int eqn = AddEquation({cstr(row.label)}, types);")
                self.emit_walk_setup(row.walk.items, child, em, "AddTerm({obj}, rows, cols, eqn);")
                child.add("AddOp(VX_OP_EQUATION, eqn);")
                b.nest("{", child)

            self.emit_items(g.body, block, em, "replay", leaf)
            if self.uses_choices:
                block.add("static_cast<void>(choice);")
            lines.append(f"        {{  // group {g.number}")
            lines += self.group_text(g, block, indent=3)
            lines.append("        }")
        lines += ["    } catch (const std::exception& e) {",
                  '        return VX_ReportFailure(*this, "JacPattern", e);',
                  "    }",
                  "    m_localNZCount = static_cast<int>(rows - first);",
                  "    return n + m_localNZCount;",
                  "}", ""]
        return "\n".join(lines)

    def evaluation_fn(self, name, out, count, skip, leaf):
        """Residuals or Jacobian: the base's block, then this class's groups, all or one."""
        em = Emitter(self, "hot")
        lines = [f"int {self.cls}::{name}(double* {out}, int group, int start) {{",
                 f"    int idx = {self.base_cls}::{name}({out}, group, start);",
                 "    if (idx < 0) return idx;",
                 f"    const int end = idx + {count};",
                 "    if (!ContainsGroup(group)) return end;"]
        if self.groups:
            lines.append("    int k = idx;")
        for g in self.groups:
            block = Block(barrier="hard")
            if self.uses_choices:
                block.add(f"std::size_t choice = m_groupChoice[{g.number - 1}];")
            if self.has_calls(g.body):
                block.add("int proc = 0;")
            self.emit_items(g.body, block, em, "replay", lambda row, b, g=g: leaf(row, b, em, g))
            if self.uses_choices:
                block.add("static_cast<void>(choice);")
            lines.append(f"    // group {g.number}")
            lines.append(f"    if (group != 0 && group != m_firstGroup + {g.number}) {{")
            lines.append(f"        {skip}(m_firstGroup + {g.number}, k);")
            lines.append("    } else {")
            lines += self.group_text(g, block)
            lines.append("        if (group != 0) return end;")
            lines.append("    }")
        lines.append("    return group == 0 ? " + ("k" if self.groups else "idx") + " : end;")
        lines.append("}")
        lines.append("")
        return "\n".join(lines)

    def call_evaluation(self, b, g, operation, out):
        b.add(f"if (VX_ProcedureType* q = ProcedureEquation(m_firstGroup + {g.number}, proc++))")
        b.add(f"    if (const int s = q->{operation}({out}, k); s < 0) return s;")

    def residuals_fn(self):
        def leaf(row, b, em, g):
            if isinstance(row, CallNode):
                return self.call_evaluation(b, g, "Residuals", "r")
            if row.condition is None:
                b.add(f"r[k++] = {em.emit(row.residuals[0], b)};")
                return
            arms = []
            for e in row.residuals:
                child = Block(b, barrier="hard")
                child.add(f"r[k++] = {em.emit(e, child)};")
                arms.append(child)
            test = em.emit(row.condition, b)
            b.nest(f"if ({test}) {{", arms[0], "} else {")
            b.body.extend(INDENT + line if line else "" for line in arms[1].pre + arms[1].body)
            b.add("}")
        return self.evaluation_fn("Residuals", "r", "m_localEqnCount", "AddEqnsInGroup", leaf)

    def jacobian_fn(self):
        def leaf(row, b, em, g):
            if isinstance(row, CallNode):
                return self.call_evaluation(b, g, "Jacobian", "values")
            targets = {sym.family: t for sym, t in row.walk.targets}
            if row.condition is None:
                self.emit_walk_hot(row.walk.items, b, em, row.residuals[0], targets)
                return
            arms = []
            for e in row.residuals:
                child = Block(b, barrier="hard")
                self.emit_walk_hot(row.walk.items, child, em, e, targets)
                arms.append(child)
            test = em.emit(row.condition, b)
            b.nest(f"if ({test}) {{", arms[0], "} else {")
            b.body.extend(INDENT + line if line else "" for line in arms[1].pre + arms[1].body)
            b.add("}")
        return self.evaluation_fn("Jacobian", "values", "m_localNZCount", "AddNZsandProcsInGroup", leaf)

    def emit_walk_hot(self, items, block, em, residual, targets):
        def entry(sym, block):
            return f"values[k++] = {em.emit(ir.derivative(residual, targets[sym.family]), block)};"

        self.walk_entries(items, block, em, entry)
