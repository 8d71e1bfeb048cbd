"""The small changes that are tried on a function's tokens."""

import re
from collections.abc import Iterator
from typing import NamedTuple

from tokens import OPENING, Token, arguments, closing, stands_apart


class Change(NamedTuple):
    """source[begin:end] becomes `text`."""

    kind: str
    begin: int
    end: int
    text: str


BINARY = {
    "<": ("<=", ">"), "<=": ("<", ">"), ">": (">=", "<"), ">=": (">", "<"),
    "==": ("!=",), "!=": ("==",), "&&": ("||",), "||": ("&&",),
    "+": ("-",), "-": ("+",), "*": ("+",), "/": ("*",), "%": ("/",),
    "<<": (">>",), ">>": ("<<",), "&": ("|",), "|": ("&",), "^": ("|",),
    "+=": ("-=",), "-=": ("+=",), "*=": ("/=",), "/=": ("*=",), "|=": ("&=",), "^=": ("|=",),
}  # fmt: skip
UNARY = {"!": "", "~": "", "-": "", "++": "--", "--": "++"}
CONDITIONS = ("if", "while")
CONTROL = {"for", "if", "while", "switch", "sizeof", "else", "do"}
# Statements that begin with these are no expressions that could be left out.
KEPT = {
    "auto", "const", "constexpr", "static", "static_assert", "struct", "typedef", "using",
    "case", "default", "else", "do", "for", "if", "switch", "while", "goto", "return",
}  # fmt: skip


def changes(source: str, tokens: list[Token], first: int, last: int) -> Iterator[Change]:
    """Every change of tokens[first:last]."""
    for at in range(first, last):
        token = tokens[at]
        yield from changed_sign(source, token)
        yield from changed_value(token)
        if token.text == "?":
            yield Change("condition", token.begin, token.begin, "&& false ")
            yield Change("condition", token.begin, token.begin, "|| true ")
        if token.text in CONDITIONS:
            yield from changed_condition(source, tokens, at)
        if token.text in "({" and at > first:
            yield from changed_arguments(source, tokens, at, first)
    for begin in statements(tokens, first, last):
        yield from changed_statement(tokens, begin)


def changed_sign(source: str, token: Token) -> Iterator[Change]:
    if token.kind != "sign":
        return
    if token.text in BINARY and stands_apart(source, token):
        for text in BINARY[token.text]:
            yield Change("operator", token.begin, token.end, text)
    elif token.text in UNARY:
        yield Change("operator", token.begin, token.end, UNARY[token.text])


def changed_value(token: Token) -> Iterator[Change]:
    text = token.text
    other = ""
    if token.kind == "number":
        for step in (1, -1):
            if other := shifted(text, step):
                yield Change("constant", token.begin, token.end, other)
        return
    if token.kind in ("character", "string"):
        # The first character, unless it is an escape or none, becomes its neighbour.
        if match := re.fullmatch(r"""(\w*['"])([ !#-&(-Z^-}])(.*)""", text, re.DOTALL):
            other = match[1] + chr(ord(match[2]) + 1) + match[3]
    elif text in ("true", "false"):
        other = "false" if text == "true" else "true"
    elif text.startswith("KORV_") and text.isupper():
        other = "KORV_FAILURE" if text == "KORV_SUCCESS" else "KORV_SUCCESS"
    if other:
        yield Change("constant", token.begin, token.end, other)


def shifted(literal: str, step: int) -> str:
    """An integer literal one more or less, in the same base; empty when it is not to be had."""
    match = re.fullmatch(r"(0[xX][0-9A-Fa-f']+|[0-9']+)([uUlL]*)", literal)
    if not match:
        return ""
    digits = match[1].replace("'", "")
    value = int(digits, 16 if digits[:2] in ("0x", "0X") else 10) + step
    if value < 0:
        return ""
    return (f"0x{value:X}" if digits[:2] in ("0x", "0X") else str(value)) + match[2]


def changed_condition(source: str, tokens: list[Token], at: int) -> Iterator[Change]:
    opening = at + (2 if tokens[at + 1].text == "constexpr" else 1)
    begin, end = tokens[opening].end, tokens[closing(tokens, opening)].begin
    condition = source[begin:end]
    yield Change("condition", begin, end, f"!({condition})")
    yield Change("condition", begin, end, f"({condition}) && false")
    if tokens[at].text == "if":
        yield Change("condition", begin, end, f"({condition}) || true")


def changed_arguments(source: str, tokens: list[Token], at: int, first: int) -> Iterator[Change]:
    """Neighbours in a call or an initialiser exchanged; a member's initial value left out."""
    before = tokens[at - 1]
    if before.text in CONTROL:
        return
    if tokens[at].text == "(":
        fitting = before.kind == "word" or before.text == ">"
    else:
        fitting = before.kind == "word" or before.text in ("=", "(", ",", "{")
    if not fitting or any(token.text == ";" for token in tokens[at : closing(tokens, at)]):
        return
    found = arguments(tokens, at)
    for (begin, middle), (other, end) in zip(found, found[1:]):
        one, two = source[begin:middle], source[other:end]
        if one != two:
            yield Change("arguments", begin, end, two + source[middle:other] + one)
    body = first
    while tokens[first].text == ":" and tokens[body].text != "{":
        body += 1
    if found and at < body:
        yield Change("statement", found[0][0], found[-1][1], "")


def statements(tokens: list[Token], first: int, last: int) -> Iterator[int]:
    """The indices where a statement may begin."""
    skip_to = first
    for at in range(first + 1, last):
        if tokens[at].text == "for":
            skip_to = closing(tokens, at + 1) + 1
        if at < skip_to:
            continue
        if tokens[at].text != "{" and ends_statement(tokens, at - 1, first):
            yield at


def ends_statement(tokens: list[Token], at: int, first: int) -> bool:
    """Whether the next statement begins behind tokens[at]."""
    text = tokens[at].text
    if text in ("{", "}", ";", "else", "do"):
        return True
    if text == ":":
        while tokens[at].text not in ("case", "default", "?", "{", "}", ";") and at > first:
            at -= 1
        return tokens[at].text in ("case", "default")
    if text == ")":
        opening = at
        while tokens[opening].text != "(" or closing(tokens, opening) != at:
            opening -= 1
        return tokens[opening - 1].text in ("for", "if", "while", "constexpr")
    return False


def changed_statement(tokens: list[Token], at: int) -> Iterator[Change]:
    """The statement left out; what a return gives replaced by a zero."""
    end = at
    while tokens[end].text != ";":
        if tokens[end].text in "})]":
            return
        end = closing(tokens, end) + 1 if tokens[end].text in OPENING else end + 1
    if end == at:
        return
    text = tokens[at].text
    before = tokens[at - 1].text
    if text == "return":
        if end > at + 1:
            yield Change("return", tokens[at + 1].begin, tokens[end - 1].end, "{}")
        # A function's last return cannot be left out.
        if before in (")", ":", "else") or tokens[end + 1].text != "}":
            yield Change("statement", tokens[at].begin, tokens[end - 1].end, "")
    elif text not in KEPT and not tokens[at].kind == tokens[at + 1].kind == "word":
        yield Change("statement", tokens[at].begin, tokens[end - 1].end, "")
