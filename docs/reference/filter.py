#!/usr/bin/env python3
"""Prints a public header for Doxygen: with an example for each function, out of docs/reference/examples, with the
text that a twin shares with its counterpart, and with the constants that the lists of korv/tokens.h make.

Doxygen's own @copydetails would copy the example of the counterpart, too, and @snippet would need a line in each
comment.
"""
import pathlib
import re
import sys
import textwrap

HEADER = pathlib.Path(sys.argv[1])
FUNCTION = re.compile(r"/\*\*((?:(?!\*/).)*)\*/(?=\nKORV_API [^;]*?\b(\w+)\()", re.S)
CODE = re.compile(r"@code.*?@endcode", re.S)


def examples() -> list[str]:
    """The bodies of the example functions, after the functions that they use."""
    found = []
    for path in sorted(pathlib.Path(__file__).parent.glob("examples/*.c")):
        source = path.read_text(encoding="utf-8")
        helpers = re.findall(r"^(static (?!void )\w+ (\w+)\(.*?^}\n)", source, re.M | re.S)
        for body in re.findall(r"^static void \w+\(void\) {\n(.*?)^}", source, re.M | re.S):
            used = [text + "\n" for text, name in helpers if re.search(rf"\b{name}\b", body)]
            found.append("".join(used) + textwrap.dedent(body))
    return found


def comment(match: re.Match) -> str:
    text, name = match.groups()
    shared = re.search(r"@copydetails (\w+)", text)
    if shared:
        # After the first sentence, which is of the counterpart alone.
        details = re.split(r"\.\s", CODE.sub("", COMMENTS[shared[1]]), maxsplit=1)[1]
        text = text.replace(shared[0], "\n *\n * " + details.lstrip("* \n"))
    example = next((body for body in EXAMPLES if re.search(rf"\b{name}\(", body)), "")
    if example and "@code" not in text:
        text += "\n@code\n" + example + "@endcode\n"
    return f"/**{text}*/"


def constants(match: re.Match) -> str:
    lists = {name: re.findall(r"X\((\d+), (\w+)\) +/\* (.*?) \*/", body)
             for name, body in re.findall(r"#define (KORV_TOKENS_\w+)\(X\)((?:.*\\\n)*.*\n)", HEADER_TEXT)}
    return "".join(f"    KORV_TOKID_{name} = {number}, /**< {text} */\n"
                   for number, name, text in lists[match.group(1)])


HEADER_TEXT = HEADER.read_text(encoding="utf-8")
COMMENTS = {name: text for text, name in FUNCTION.findall(HEADER_TEXT)}
EXAMPLES = examples()
output = FUNCTION.sub(comment, HEADER_TEXT)
output = re.sub(r" *(KORV_TOKENS_\w+)\(KORV_TOKEN_CONSTANT\)\n?", constants, output)
output = re.sub(r"#(define|undef) KORV_TOKEN_\w+.*\n", "", output)
output = re.sub(r" *KORV_TOKENS_\w+\(KORV_TOKEN_NAME\)", "", output)
print(output, end="")
