"""Finds the functions of a source file, and its definitions of data."""

from dataclasses import dataclass

from tokens import OPENING, Token, closing

NOT_NAMES = {"__attribute__", "decltype", "alignas", "noexcept", "static_assert", "sizeof"}


@dataclass(frozen=True)
class Unit:
    """A function or a definition of data: tokens[first:last] are what it computes."""

    name: str
    is_function: bool
    first: int
    last: int


def head_end(tokens: list[Token], at: int) -> int:
    """The index of the first brace or semicolon that is in no other bracket, or the end."""
    while at < len(tokens) and tokens[at].text not in "{};":
        at = closing(tokens, at) + 1 if tokens[at].text in "([" else at + 1
    return at


def skip_template(tokens: list[Token], at: int) -> int:
    """The index behind a `template <...>`."""
    depth = 0
    while True:
        at += 1
        depth += {"<": 1, ">": -1}.get(tokens[at].text, 0)
        if depth == 0:
            return at + 1


def function_name(tokens: list[Token], begin: int, end: int) -> tuple[str, int] | None:
    """The name in front of the first parameter list, and where the list opens."""
    for at in range(begin + 1, end):
        name = tokens[at - 1]
        if name.text == "=" or (name.text == "[" and tokens[at].text != "["):
            if tokens[at - 2].text != "[":
                return None
        if tokens[at].text != "(" or name.text in NOT_NAMES or tokens[at + 1].text in "&*":
            continue
        if name.text == "operator":
            return "operator()", at + 2
        if name.kind == "word":
            return name.text, at
    return None


def data_name(tokens: list[Token], begin: int, end: int) -> str:
    """The last word in front of the `=`, an array's bounds aside; or the word at the brace."""
    at = begin
    while at < end and tokens[at].text != "=":
        at += 1
    words = [t.text for t in tokens[begin:at] if t.kind == "word"]
    if tokens[at - 1].text == "]":
        while tokens[at].text != "[":
            at -= 1
        words = [t.text for t in tokens[begin:at] if t.kind == "word"]
    return words[-1] if words else ""


def find_units(tokens: list[Token]) -> list[Unit]:
    """Every function with a body and every definition with a value, in order."""
    found: list[Unit] = []
    scan(tokens, 0, len(tokens), "", found)
    return found


def scan(tokens: list[Token], at: int, last: int, scope: str, found: list[Unit]) -> None:
    while at < last:
        while tokens[at].text == "template":
            at = skip_template(tokens, at)
        if tokens[at].text in ("public", "private", "protected"):
            at += 2
            continue
        end = head_end(tokens, at)
        if end >= last or tokens[end].text == "}":
            return
        at = declaration(tokens, at, end, scope, found) + 1


def declaration(tokens: list[Token], at: int, end: int, scope: str, found: list[Unit]) -> int:
    """Takes in what begins at `at` and has its first brace or semicolon at `end`; returns the
    index of its last token."""
    words = [token.text for token in tokens[at:end]]
    head = set(words)
    if tokens[end].text == ";":
        if "=" in head and not head & {"using", "typedef", "operator"}:
            equals = at + words.index("=")
            found.append(Unit(scope + data_name(tokens, at, end), False, equals + 1, end))
        return end
    close = closing(tokens, end)
    if "namespace" in head or words[:1] == ["extern"] and len(words) == 2:
        scan(tokens, end + 1, close, scope, found)
        return close
    if not head & {"(", "="} and head & {"struct", "class"} or "enum" in head:
        if "enum" not in head:
            scan(tokens, end + 1, close, scope + words[1] + "::", found)
        return close
    named = function_name(tokens, at, end)
    if named is None:
        while tokens[close].text != ";":
            close = closing(tokens, close) + 1 if tokens[close].text in OPENING else close + 1
        found.append(Unit(scope + data_name(tokens, at, end), False, end, close))
        return close
    name, parameters = named
    # A compiler-only function leaves nothing in the object that a mutant could change.
    if "consteval" not in head:
        inits = closing(tokens, parameters) + 1
        while inits < end and tokens[inits].text != ":":
            inits += 1
        found.append(Unit(scope + name, True, inits, close + 1))
    return close
