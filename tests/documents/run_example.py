"""Runs a program of docs/reference/examples and compares each line with the comment after its printf.

Usage: run_example.py SOURCE PROGRAM
"""
import os
import pathlib
import re
import subprocess
import sys

source, program = sys.argv[1:]
expected = re.findall(r"printf\([^;]*;\s*// (.*)", pathlib.Path(source).read_text(encoding="utf-8"))
printed = subprocess.run([program], stdout=subprocess.PIPE, text=True, check=True,
                         env={**os.environ, "LC_ALL": "C"}, timeout=60).stdout.splitlines()
if not expected or printed != expected:
    sys.exit(f"printed {printed}\ninstead of {expected}")
print(f"{len(expected)} lines as in the comments")
