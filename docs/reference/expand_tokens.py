#!/usr/bin/env python3
"""Prints korv/tokens.h for Doxygen: with the constants that its lists make, and without the macros
that make them."""
import re
import sys

with open(sys.argv[1], encoding="utf-8") as file:
    text = file.read()
lists = {name: re.findall(r"X\((\d+), (\w+)\)", body)
         for name, body in re.findall(r"#define (KORV_TOKENS_\w+)\(X\)((?:.*\\\n)*.*\n)", text)}


def constants(match: re.Match) -> str:
    return "".join(f"    KORV_TOKID_{name} = {number}, /**< {name.replace('_', ' ').lower()} */\n"
                   for number, name in lists[match.group(1)])


text = re.sub(r" *(KORV_TOKENS_\w+)\(KORV_TOKEN_CONSTANT\)\n?", constants, text)
text = re.sub(r"#(define|undef) KORV_TOKEN_\w+.*\n", "", text)
text = re.sub(r" *KORV_TOKENS_\w+\(KORV_TOKEN_NAME\)", "", text)
print(text, end="")
