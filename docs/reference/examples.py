"""Compiles the examples in the comments of the headers.

Usage: examples.py INCLUDE-FOLDER COMPILER [FLAG...]
"""
import pathlib
import re
import subprocess
import sys

include, *compiler = sys.argv[1:]
FRAME = """#include <korv/datacnv.h>
#include <korv/korv.h>
#include <stdlib.h>
CtrlBlkI request;
"""
program, count = FRAME, 0
for header in sorted(pathlib.Path(include, "korv").glob("*.h")):
    for code in re.findall(r"@code\n(.*?)@endcode", header.read_text(encoding="utf-8"), re.S):
        lines = re.sub(r"^ \* ?", "", code, flags=re.M).rstrip(" *")
        program += f"void example{count}(void);\nvoid example{count}(void) {{\n{lines}}}\n"
        count += 1
subprocess.run([*compiler, "-x", "c", "-std=c99", "-Wall", "-Wextra", "-Werror",
                "-Wno-unused-but-set-variable", "-fsyntax-only", f"-I{include}", "-"],
               input=program, text=True, check=True)
if not count:
    sys.exit("no examples")
print(f"{count} examples compiled")
