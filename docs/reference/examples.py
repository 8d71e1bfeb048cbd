"""Compiles the examples in the comments of the headers. An example that begins with #include is a source
file; any other is put into a function.

Usage: examples.py INCLUDE-FOLDER C-COMPILER C++-COMPILER [FLAG...]
"""
import pathlib
import re
import subprocess
import sys

include, cc, cxx, *flags = sys.argv[1:]
LANGUAGES = {
    ".h": ([cc, "-x", "c", "-std=c99"],
           "#include <stdio.h>\n#include <korv/datacnv.h>\n#include <korv/korv.h>\n"
           "#include <korv/mask.h>\n#include <korv/provider.h>\n"),
    ".hpp": ([cxx, "-x", "c++", "-std=c++17"], "#include <cstdio>\n#include <korv/korv.hpp>\n"),
}
FRAME = "#include <stdlib.h>\nCtrlBlkI request;\n"



def check(compiler, program):
    subprocess.run([*compiler, *flags, "-Wall", "-Wextra", "-Werror", "-fsyntax-only",
                    "-Wno-unused-but-set-variable", "-Wno-missing-field-initializers",
                    f"-I{include}", "-"],
                   input=program, text=True, check=True)


count = 0
for suffix, (compiler, program) in LANGUAGES.items():
    program += FRAME
    for header in sorted(pathlib.Path(include, "korv").glob("*" + suffix)):
        for code in re.findall(r"@code\n(.*?)@endcode", header.read_text(encoding="utf-8"), re.S):
            lines = re.sub(r"^ \* ?", "", code, flags=re.M).rstrip(" *")
            count += 1
            if lines.startswith("#include"):
                check(compiler, lines)
                continue
            program += f"void example{count}(void);\nvoid example{count}(void) {{\n{lines}}}\n"
    check(compiler, program)
if not count:
    sys.exit("no examples")
print(f"{count} examples compiled")
