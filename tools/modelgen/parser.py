"""Recursive-descent parser of model descriptions (grammar in docs/model-description.md)."""
from .errors import DescriptionError
from .lexer import tokenize
from . import syntax as S

REDUCTIONS = {"sum", "prod", "min", "max"}
KINDS = {"model", "port", "structure", "stream"}
SECTIONS = {"properties", "assignments", "equations", "handwritten", "script", "checks"}


class Parser:
    def __init__(self, text, path):
        self.path = path
        self.toks = tokenize(text, path)
        self.i = 0

    # --- token helpers -------------------------------------------------------------------
    @property
    def tok(self):
        return self.toks[self.i]

    def peek(self, k=1):
        return self.toks[min(self.i + k, len(self.toks) - 1)]

    def fail(self, message, tok=None):
        t = tok or self.tok
        raise DescriptionError(self.path, t.line, t.col, message)

    def at(self, text, kind=None):
        t = self.tok
        return t.text == text and (kind is None or t.kind == kind) and t.kind in ("OP", "KEYWORD")

    def accept(self, text):
        if self.at(text):
            t = self.tok
            self.i += 1
            return t
        return None

    def expect(self, text, what=None):
        if not self.at(text):
            self.fail(f"expected {what or repr(text)}, found {self.describe(self.tok)}")
        t = self.tok
        self.i += 1
        return t

    def expect_name(self, what="a name"):
        t = self.tok
        if t.kind != "NAME":
            self.fail(f"expected {what}, found {self.describe(t)}")
        self.i += 1
        return t

    def expect_integer(self, message):
        """A whole number that is not negative ("mode 5", "pass 1", "[3]"); fails with message."""
        if self.tok.kind != "NUMBER" or not self.tok.text.isdigit():
            self.fail(message)
        value = int(self.tok.text)
        self.i += 1
        return value

    def keyword_integer(self, keyword, message):
        """The integer after an optional keyword, or None when the keyword is not there."""
        if self.tok.kind != "NAME" or self.tok.text != keyword:
            return None
        self.i += 1
        return self.expect_integer(message)

    def expect_newline(self):
        if self.tok.kind != "NEWLINE":
            self.fail(f"expected the end of the line, found {self.describe(self.tok)}")
        self.i += 1

    def skip_newlines(self):
        while self.tok.kind == "NEWLINE":
            self.i += 1

    @staticmethod
    def describe(t):
        if t.kind == "EOF":
            return "the end of the file"
        if t.kind == "NEWLINE":
            return "the end of the line"
        if t.kind == "STRING":
            return f'text "{t.text}"'
        return repr(t.text)

    # --- file ----------------------------------------------------------------------------
    def parse(self):
        self.skip_newlines()
        t = self.tok
        if t.text not in KINDS or t.kind != "KEYWORD":
            self.fail("a description starts with model, port, structure or stream")
        self.i += 1
        name = self.expect_name("the type's name").text
        self.expect("extends", "'extends' and the base type")
        base = self.expect_name("the base type").text
        doc = None
        if self.tok.kind == "STRING":
            doc = self.tok.text
            self.i += 1
        self.expect_newline()
        d = S.Description(self.path, t, t.text, name, base, doc)
        seen = set()
        while True:
            self.skip_newlines()
            t = self.tok
            if t.kind == "EOF":
                break
            if t.kind != "KEYWORD" or t.text not in SECTIONS:
                self.fail(f"expected a section (properties, assignments, equations, handwritten, script, checks), "
                          f"found {self.describe(t)}")
            if t.text in seen and t.text != "script":
                self.fail(f"section {t.text} given twice")
            seen.add(t.text)
            self.i += 1
            if t.text == "script":
                d.scripts.append(self.script(t))
                continue
            self.expect_newline()
            if t.text == "properties":
                d.props = self.section(self.prop)
            elif t.text == "assignments":
                d.assignments = self.section(lambda: self.statement(equations=False))
            elif t.text == "equations":
                d.equations = self.section(lambda: self.statement(equations=True))
            elif t.text == "checks":
                d.checks = self.section(self.check_case)
            else:
                d.handwritten = self.section(self.handwritten_op)
        return d

    def section(self, item):
        out = []
        while True:
            self.skip_newlines()
            t = self.tok
            if t.kind == "EOF" or (t.kind == "KEYWORD" and t.text in SECTIONS):
                return out
            out.append(item())

    def handwritten_op(self):
        t = self.expect_name("an operation name")
        self.expect_newline()
        return (t.text, t)

    def check_case(self):
        t = self.tok
        if t.kind != "STRING":
            self.fail('a check case is "name": PATH := value, ...')
        self.i += 1
        self.expect(":", "':' and the settings")
        settings = []
        while self.tok.kind != "NEWLINE":
            target = self.postfix()
            self.expect(":=", "':=' and a value")
            negative = self.accept("-") is not None
            v = self.tok
            if v.kind not in ("NUMBER", "STRING") and v.text not in ("true", "false"):
                self.fail("a check setting takes a number, a text, true or false")
            self.i += 1
            settings.append((_path_text(target), ("-" if negative else "") + v.text))
            if not self.accept(","):
                break
        self.expect_newline()
        return S.CheckCase(t, t.text, settings)

    def script(self, t):
        if self.tok.kind != "STRING":
            self.fail("expected the script's name as text")
        name = self.tok.text
        self.i += 1
        self.expect_newline()
        lines = []
        while True:
            self.skip_newlines()
            if self.accept("end"):
                self.expect_newline()
                return S.Script(t, name, lines)
            if self.tok.kind != "STRING":
                self.fail("a script's lines are texts, one per line, closed by 'end'")
            lines.append(self.tok.text)
            self.i += 1
            self.expect_newline()

    # --- properties ----------------------------------------------------------------------
    def prop(self):
        nt = self.expect_name("a property name")
        self.expect(":", "':' and the property's type")
        pt = self.prop_type()
        p = S.Prop(nt, nt.text, pt)
        if self.accept("over"):
            p.over.append(self.set_name())
            while self.accept(","):
                p.over.append(self.set_name())
        seen = set()
        while self.tok.kind != "NEWLINE":
            t = self.tok
            what = "description" if t.kind == "STRING" else t.text
            if what not in ("description", "flags", "default"):
                self.fail(f"expected a description, 'flags' or 'default', found {self.describe(t)}")
            if what in seen:
                self.fail(f"{what} given twice")
            seen.add(what)
            self.i += 1
            if what == "description":
                p.description = t.text
            elif what == "flags":
                p.flags = self.expect_integer("expected the registration flags as an integer")
            else:
                p.default = self.expression()
        self.expect_newline()
        return p

    def set_name(self):
        t = self.tok
        if t.kind == "NAME":
            self.i += 1
            return (t.text, t)
        self.fail("expected the name of a set (or 'components')")

    def prop_type(self):
        t = self.tok
        if self.accept("integer") or self.accept("string"):
            self.expect("set", "'set'")
            return S.PropType("set", setkind=t.text)
        if self.accept("internal"):
            k = self.tok
            if not (self.accept("integer") or self.accept("string")):
                self.fail("expected 'integer set' or 'string set'")
            self.expect("set", "'set'")
            return S.PropType("internal_set", setkind=k.text)
        if self.accept("global"):
            if self.accept("structure"):
                return S.PropType("global_structure", self.expect_name("a structure type").text)
            return S.PropType("global", self.expect_name("a parameter type").text)
        if self.accept("external"):
            return S.PropType("external", self.expect_name("a type").text)
        if self.accept("virtual"):
            return S.PropType("virtual", self.expect_name("a type").text)
        if self.accept("multiport"):
            d = self.tok
            if not (self.accept("in") or self.accept("out") or self.accept("inout")):
                self.fail("expected in, out or inout after 'multiport'")
            self.expect("of", "'of' and the port type")
            return S.PropType("multiport", self.expect_name("a port type").text, direction=d.text)
        return S.PropType("type", self.expect_name("a type").text)

    # --- statements ----------------------------------------------------------------------
    def block(self, equations, closers=("end",)):
        """Statements up to one of the closing keywords (not consumed)."""
        body = []
        while True:
            self.skip_newlines()
            if self.tok.kind == "EOF":
                self.fail(f"missing '{closers[0]}'")
            if self.tok.kind == "KEYWORD" and self.tok.text in closers:
                return body
            body.append(self.statement(equations))

    def statement(self, equations):
        t = self.tok
        if self.accept("for"):
            iters = [self.iterator()]
            while self.accept(","):
                iters.append(self.iterator())
            where = self.expression() if self.accept("where") else None
            if self.accept(":"):
                if self.tok.kind == "NEWLINE":
                    self.skip_newlines()
                return S.For(t, iters, where, [self.statement(equations)])
            self.expect("do", "':' or 'do'")
            self.expect_newline()
            body = self.block(equations)
            self.expect("end")
            self.expect_newline()
            return S.For(t, iters, where, body)
        if self.accept("if"):
            branches = []
            cond = self.expression()
            self.expect("then")
            self.expect_newline()
            branches.append((cond, self.block(equations, ("elseif", "else", "end"))))
            otherwise = []
            while True:
                if self.accept("elseif"):
                    cond = self.expression()
                    self.expect("then")
                    self.expect_newline()
                    branches.append((cond, self.block(equations, ("elseif", "else", "end"))))
                    continue
                if self.accept("else"):
                    self.expect_newline()
                    otherwise = self.block(equations)
                self.expect("end")
                self.expect_newline()
                return S.If(t, branches, otherwise)
        if equations and self.accept("when"):
            cond = self.expression()
            self.expect("then")
            self.expect_newline()
            then = self.block(equations, ("else",))
            self.expect("else", "'else': a choice made at each evaluation needs both alternatives")
            self.expect_newline()
            otherwise = self.block(equations)
            self.expect("end")
            self.expect_newline()
            return S.When(t, cond, then, otherwise)
        if equations and self.accept("group"):
            self.expect_newline()
            body = self.block(equations)
            self.expect("end")
            self.expect_newline()
            return S.Group(t, body)
        if equations:
            label = None
            if self.tok.kind == "STRING" and self.peek().text == ":":
                label = self.tok.text
                self.i += 2
            t = self.tok
            if self.accept("call"):
                self.expect("(", "'(' and the outputs")
                outputs = self.arguments(")")
                self.expect("=", "'=' and the procedure")
                proc = self.expect_name("a procedure name").text
                self.expect("(", "'(' and the inputs")
                inputs = self.arguments(")")
                mode = self.keyword_integer("mode", "expected the procedure's mode as an integer") or 0
                self.expect_newline()
                return S.Call(t, label, outputs, proc, inputs, mode)
            left = self.expression()
            if self.at(":="):
                self.fail("equations are written with '=' (':=' assigns, in the assignments section)")
            self.expect("=", "'=' (an equation is left side = right side)")
            right = self.expression()
            self.expect_newline()
            return S.Equation(t, label, left, right)
        ordinal = None
        if self.at("["):
            self.i += 1
            ordinal = self.expect_integer("expected a statement number")
            self.expect("]")
        t = self.tok
        target = self.postfix()
        if self.at("="):
            self.fail("assignments are written with ':=' ('=' is for equations)")
        self.expect(":=", "':='")
        value = self.expression()
        pass_no = self.keyword_integer("pass", "expected the pass as an integer (pass 0, pass 1)")
        self.expect_newline()
        return S.Assign(t, target, value, ordinal, pass_no)

    def iterator(self):
        nt = self.expect_name("a loop variable")
        self.expect("in", "'in' and a set")
        return (nt.text, self.expression())

    def arguments(self, closer):
        args = []
        if self.accept(closer):
            return args
        while True:
            args.append(self.expression())
            if self.accept(closer):
                return args
            self.expect(",", f"',' or '{closer}'")

    # --- expressions ---------------------------------------------------------------------
    def expression(self):
        return self.range_expr()

    def range_expr(self):
        low = self.or_expr()
        t = self.tok
        if self.accept(".."):
            return S.Range(t, low, self.or_expr())
        return low

    def or_expr(self):
        e = self.and_expr()
        while self.at("or"):
            t = self.tok
            self.i += 1
            e = S.Binary(t, "or", e, self.and_expr())
        return e

    def and_expr(self):
        e = self.not_expr()
        while self.at("and"):
            t = self.tok
            self.i += 1
            e = S.Binary(t, "and", e, self.not_expr())
        return e

    def not_expr(self):
        t = self.tok
        if self.accept("not"):
            return S.Unary(t, "not", self.not_expr())
        return self.comparison()

    def comparison(self):
        e = self.additive()
        for op in ("==", "<>", "<=", ">=", "<", ">"):
            if self.at(op):
                t = self.tok
                self.i += 1
                return S.Binary(t, op, e, self.additive())
        return e

    def additive(self):
        e = self.term()
        while self.at("+") or self.at("-"):
            t = self.tok
            self.i += 1
            e = S.Binary(t, t.text, e, self.term())
        return e

    def term(self):
        e = self.unary()
        while self.at("*") or self.at("/"):
            t = self.tok
            self.i += 1
            e = S.Binary(t, t.text, e, self.unary())
        return e

    def unary(self):
        t = self.tok
        if self.accept("-"):
            return S.Unary(t, "-", self.unary())
        if self.accept("+"):
            return self.unary()
        return self.power()

    def power(self):
        base = self.postfix()
        t = self.tok
        if self.accept("^"):
            return S.Binary(t, "^", base, self.unary())   # right associative
        return base

    def postfix(self):
        e = self.primary()
        while True:
            t = self.tok
            if self.accept("("):
                if isinstance(e, S.Name) and e.name in REDUCTIONS and self.tok.kind == "NAME" and \
                        self.peek().text == "in":
                    var = self.expect_name().text
                    self.expect("in")
                    over = self.expression()
                    where = self.expression() if self.accept("where") else None
                    self.expect(":", "':' and the term")
                    body = self.expression()
                    self.expect(")")
                    e = S.Reduce(e.tok, e.name, var, over, body, where)
                    continue
                e = S.Apply(t, e, self.arguments(")"))
            elif self.accept("."):
                nt = self.tok
                if nt.kind not in ("NAME", "KEYWORD"):
                    self.fail("expected a member name after '.'")
                self.i += 1
                e = S.Member(nt, e, nt.text)
            else:
                return e

    def primary(self):
        t = self.tok
        if t.kind == "NUMBER":
            self.i += 1
            return S.Num(t, t.text)
        if t.kind == "STRING":
            self.i += 1
            return S.Str(t, t.text)
        if self.accept("true"):
            return S.Bool(t, True)
        if self.accept("false"):
            return S.Bool(t, False)
        if t.kind == "NAME":
            self.i += 1
            return S.Name(t, t.text)
        if self.accept("("):
            e = self.expression()
            self.expect(")")
            return e
        if self.accept("{"):
            items = self.arguments("}")
            return S.SetLiteral(t, items)
        self.fail(f"expected a value, found {self.describe(t)}")


def _path_text(e):
    if isinstance(e, S.Name):
        return e.name
    if isinstance(e, S.Member):
        return f"{_path_text(e.base)}.{e.name}"
    if isinstance(e, S.Apply):
        return f"{_path_text(e.target)}({','.join(_index_text(a) for a in e.args)})"
    raise ValueError("not a path")


def _index_text(e):
    if isinstance(e, (S.Num, S.Name)):
        return e.text if isinstance(e, S.Num) else e.name
    if isinstance(e, S.Str):
        return e.text
    if isinstance(e, S.Unary) and e.op == "-" and isinstance(e.operand, S.Num):
        return "-" + e.operand.text
    return "?"


def parse_file(path):
    with open(path, encoding="utf-8") as f:
        text = f.read()
    return Parser(text, path).parse()
