"""Tokens of a model description.

Newlines end statements, except inside brackets and after a token that cannot end an
expression (an operator, a comma, a colon). '#' starts a comment that runs to the end of
the line. Every token carries its line and column for error messages.
"""
from dataclasses import dataclass

from .errors import DescriptionError

KEYWORDS = {
    "model", "port", "structure", "stream", "extends", "properties", "assignments",
    "equations", "handwritten", "over", "flags", "default", "set", "of", "integer", "string",
    "internal", "global", "external", "virtual", "multiport", "in", "out", "inout", "for",
    "where", "do", "end", "if", "then", "elseif", "else", "when", "group", "call", "and", "or",
    "not", "true", "false", "script", "checks",
}

# Longest first, so that ':=' wins over ':'.
OPERATORS = [":=", "==", "<>", "<=", ">=", "..", "<", ">", "+", "-", "*", "/", "^", "(", ")",
             ",", ":", ".", "=", "[", "]", "{", "}"]

# After these a newline does not end the statement.
CONTINUES = {"+", "-", "*", "/", "^", "(", ",", ":=", "==", "<>", "<=", ">=", "<", ">", "=",
             "[", "{", "and", "or", "not", ".."}


@dataclass(frozen=True)
class Token:
    kind: str      # NAME, KEYWORD, NUMBER, STRING, OP, NEWLINE, EOF
    text: str
    line: int
    col: int

    def where(self):
        return f"{self.line}:{self.col}"


def tokenize(text, path):
    tokens = []
    depth = 0
    line, col, i = 1, 1, 0
    n = len(text)

    def add(kind, s, l, c):
        tokens.append(Token(kind, s, l, c))

    while i < n:
        ch = text[i]
        if ch == "\n":
            prev = tokens[-1] if tokens else None
            if depth == 0 and prev is not None and prev.kind != "NEWLINE" and \
                    not (prev.kind in ("OP", "KEYWORD") and prev.text in CONTINUES):
                add("NEWLINE", "\n", line, col)
            i += 1
            line += 1
            col = 1
            continue
        if ch in " \t\r":
            i += 1
            col += 1
            continue
        if ch == "#":
            while i < n and text[i] != "\n":
                i += 1
            continue
        if ch == '"':
            j = i + 1
            out = []
            while j < n and text[j] != '"':
                if text[j] == "\n":
                    raise DescriptionError(path, line, col, "text not closed before the end of the line")
                if text[j] == "\\" and j + 1 < n and text[j + 1] in '"\\':
                    out.append(text[j + 1])
                    j += 2
                    continue
                out.append(text[j])
                j += 1
            if j >= n:
                raise DescriptionError(path, line, col, "text not closed")
            add("STRING", "".join(out), line, col)
            col += j + 1 - i
            i = j + 1
            continue
        if ch.isdigit() or (ch == "." and i + 1 < n and text[i + 1].isdigit() and
                            not (tokens and tokens[-1].text == ".")):
            j = i
            while j < n and text[j].isdigit():
                j += 1
            # A '.' followed by '.' is the range operator, not a decimal point.
            if j < n and text[j] == "." and not (j + 1 < n and text[j + 1] == "."):
                j += 1
                while j < n and text[j].isdigit():
                    j += 1
            if j < n and text[j] in "eE":
                k = j + 1
                if k < n and text[k] in "+-":
                    k += 1
                if k < n and text[k].isdigit():
                    j = k
                    while j < n and text[j].isdigit():
                        j += 1
            add("NUMBER", text[i:j], line, col)
            col += j - i
            i = j
            continue
        if ch.isalpha() or ch == "_":
            j = i
            while j < n and (text[j].isalnum() or text[j] == "_"):
                j += 1
            word = text[i:j]
            add("KEYWORD" if word in KEYWORDS else "NAME", word, line, col)
            col += j - i
            i = j
            continue
        for op in OPERATORS:
            if text.startswith(op, i):
                if op in "([{":
                    depth += 1
                elif op in ")]}":
                    depth = max(0, depth - 1)
                add("OP", op, line, col)
                i += len(op)
                col += len(op)
                break
        else:
            raise DescriptionError(path, line, col, f"unexpected character {ch!r}")
    if tokens and tokens[-1].kind != "NEWLINE":
        add("NEWLINE", "\n", line, col)
    add("EOF", "", line, col)
    return tokens
