"""Splits C++ source text into tokens that know where they stand."""

import re
from typing import NamedTuple

KINDS = re.compile(
    r"""
      (?P<space>\s+)
    | (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<directive>(?m:^)[ \t]*\#(?:\\\n|[^\n])*)
    | (?P<string>(?:u8|u|U|L)?"(?:\\.|[^"\\\n])*")
    | (?P<character>(?:u8|u|U|L)?'(?:\\.|[^'\\\n])+')
    | (?P<number>\.?\d(?:'?[0-9A-Za-z_.])*)
    | (?P<word>[A-Za-z_]\w*)
    | (?P<sign><<=|>>=|<=>|->\*|\.\.\.|::|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
    """,
    re.VERBOSE | re.DOTALL,
)
OPENING = {"(": ")", "{": "}", "[": "]"}
CLOSING = set(OPENING.values())


class Token(NamedTuple):
    kind: str
    text: str
    begin: int
    end: int


def tokenize(source: str, macros: frozenset[str] = frozenset()) -> list[Token]:
    """All tokens but white space, comments, directives and what `#ifdef` leaves out."""
    found = []
    left_out: list[bool] = []
    for match in KINDS.finditer(source):
        kind = str(match.lastgroup)
        if kind == "directive":
            follow(match.group().split("#", 1)[1].split(), macros, left_out)
        elif kind not in ("space", "comment") and not any(left_out):
            found.append(Token(kind, match.group(), match.start(), match.end()))
    return found


def follow(directive: list[str], macros: frozenset[str], left_out: list[bool]) -> None:
    """Keeps the stack of conditions; other conditions than one macro count as fulfilled."""
    match directive:
        case ["ifdef", name, *_]:
            left_out.append(name not in macros)
        case ["ifndef", name, *_]:
            left_out.append(name in macros)
        case ["if", *_]:
            left_out.append(False)
        case ["else" | "elif", *_]:
            left_out[-1] = not left_out[-1]
        case ["endif", *_]:
            left_out.pop()


def stands_apart(source: str, token: Token) -> bool:
    """Whether white space surrounds a sign: that makes it a binary operator, as formatted here."""
    return source[token.begin - 1].isspace() and source[token.end].isspace()


def closing(tokens: list[Token], at: int) -> int:
    """The index of the bracket that closes the one at `at`."""
    depth = 0
    for index in range(at, len(tokens)):
        if tokens[index].text in OPENING:
            depth += 1
        elif tokens[index].text in CLOSING:
            depth -= 1
            if depth == 0:
                return index
    raise ValueError(f"nothing closes {tokens[at]}")


def arguments(tokens: list[Token], opening: int) -> list[tuple[int, int]]:
    """The texts between a bracket's commas, as ranges of characters."""
    end = closing(tokens, opening)
    found: list[tuple[int, int]] = []
    first = index = opening + 1
    angles = 0
    while index <= end:
        text = tokens[index].text
        if index == end or (text == "," and angles == 0):
            if index > first:
                found.append((tokens[first].begin, tokens[index - 1].end))
            first = index + 1
        # Template lists: their brackets touch the word in front of them.
        if text == "<" and tokens[index - 1].end == tokens[index].begin:
            angles += 1
        elif text == ">" and angles:
            angles -= 1
        index = closing(tokens, index) + 1 if text in OPENING and index < end else index + 1
    return found
