"""The parsed form of a model description: declarations, statements and expressions, each
with the token it starts at."""
from dataclasses import dataclass, field
from typing import Optional

from .lexer import Token


# --- expressions -----------------------------------------------------------------------------

@dataclass(eq=False)
class Expr:
    tok: Token


@dataclass(eq=False)
class Num(Expr):
    text: str

    @property
    def is_int(self):
        return all(ch.isdigit() for ch in self.text)


@dataclass(eq=False)
class Str(Expr):
    text: str


@dataclass(eq=False)
class Bool(Expr):
    value: bool


@dataclass(eq=False)
class Name(Expr):
    name: str


@dataclass(eq=False)
class Apply(Expr):
    """NAME(args): an array element, a function call, or (after a member) a member element."""
    target: Expr
    args: list


@dataclass(eq=False)
class Member(Expr):
    base: Expr
    name: str


@dataclass(eq=False)
class Unary(Expr):
    op: str        # '-' or 'not'
    operand: Expr


@dataclass(eq=False)
class Binary(Expr):
    op: str        # + - * / ^ == <> < <= > >= and or
    left: Expr
    right: Expr


@dataclass(eq=False)
class Range(Expr):
    low: Expr
    high: Expr


@dataclass(eq=False)
class SetLiteral(Expr):
    """{a, b, ...}: a stored set value, members in the order written."""
    items: list


@dataclass(eq=False)
class Reduce(Expr):
    kind: str      # sum, prod, min, max
    var: str
    over: Expr
    body: Expr
    where: Optional[Expr] = None   # only the elements this condition on parameters admits


# --- statements ------------------------------------------------------------------------------

@dataclass(eq=False)
class Stmt:
    tok: Token


@dataclass(eq=False)
class Assign(Stmt):
    target: Expr
    value: Expr
    ordinal: Optional[int] = None   # given explicitly as [n]
    pass_no: Optional[int] = None   # `pass n` of an internal index set's assignment


@dataclass(eq=False)
class For(Stmt):
    iters: list                     # [(name, set expression)]
    where: Optional[Expr]
    body: list


@dataclass(eq=False)
class If(Stmt):
    branches: list                  # [(condition, body)]
    otherwise: list


@dataclass(eq=False)
class When(Stmt):
    condition: Expr
    then: list
    otherwise: list


@dataclass(eq=False)
class Equation(Stmt):
    label: Optional[str]
    left: Expr
    right: Expr


@dataclass(eq=False)
class Call(Stmt):
    label: Optional[str]
    outputs: list
    procedure: str
    inputs: list
    mode: int = 0


@dataclass(eq=False)
class Group(Stmt):
    body: list


# --- declarations ----------------------------------------------------------------------------

@dataclass(eq=False)
class PropType:
    category: str                   # type, set, internal_set, global, global_structure,
                                    # external, virtual, multiport
    typename: Optional[str] = None
    setkind: Optional[str] = None   # integer or string, for sets
    direction: Optional[str] = None # in, out or inout, for multiports


@dataclass(eq=False)
class Prop:
    tok: Token
    name: str
    ptype: PropType
    over: list = field(default_factory=list)   # [(set name, token)]
    description: Optional[str] = None
    flags: int = 0
    default: Optional[Expr] = None


@dataclass(eq=False)
class Script:
    tok: Token
    name: str
    lines: list


@dataclass(eq=False)
class CheckCase:
    """Settings under which the generic checks exercise a type: [(path text, value text)]."""
    tok: Token
    name: str
    settings: list


@dataclass(eq=False)
class Description:
    path: str
    tok: Token
    kind: str                        # model, port, structure, stream
    name: str
    base: str
    doc: Optional[str]
    props: list = field(default_factory=list)
    assignments: list = field(default_factory=list)
    equations: list = field(default_factory=list)
    handwritten: list = field(default_factory=list)   # [(operation name, token)]
    scripts: list = field(default_factory=list)
    checks: list = field(default_factory=list)
