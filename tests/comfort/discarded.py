"""Compiles discarded.cpp and compares the lines that draw a warning with those that are marked.

Usage: discarded.py SOURCE COMPILER [FLAG...]
"""
import re
import subprocess
import sys

source, *command = sys.argv[1:]
with open(source, encoding="utf-8") as file:
    marked = {number for number, line in enumerate(file, 1) if line.rstrip().endswith("// drops")}
words = subprocess.run([*command, "-Wunused-result", "-fsyntax-only", source], check=True,
                       capture_output=True, text=True).stderr
warned = {int(line) for line in
          re.findall(r":(\d+):\d+: warning: .*(?:nodiscard|warn_unused_result)", words)}
if not marked or marked != warned:
    sys.exit(f"{words}\nlines without a warning: {sorted(marked - warned)}, "
             f"without a mark: {sorted(warned - marked)}")
print(f"{len(marked)} discarded results, each with a warning")
