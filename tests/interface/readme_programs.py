"""Compiles and runs the programs of README.md and compares what they print with what stands there.

Usage: readme_programs.py README C-COMPILER CXX-COMPILER INCLUDE-FOLDER LIBRARY-FOLDER [FLAG...]
"""
import os
import re
import subprocess
import sys
import tempfile

readme, cc, cxx, include, libraries, *flags = sys.argv[1:]
with open(readme, encoding="utf-8") as file:
    blocks = re.findall(r"^```(c|cpp|text)\n(.*?)^```$", file.read(), re.M | re.S)
programs = [(blocks[i], blocks[i + 1][1]) for i in range(len(blocks) - 1)
            if blocks[i][0] != "text" and blocks[i + 1][0] == "text"]
assert [program[0] for program, _ in programs] == ["c", "cpp"], "one program of each language"

for (language, code), expected in programs:
    with tempfile.TemporaryDirectory() as folder:
        source, program = f"{folder}/first.{language}", f"{folder}/first"
        with open(source, "w", encoding="utf-8") as file:
            file.write(code)
        compiler = [cc, "-std=c99"] if language == "c" else [cxx, "-std=c++11"]
        subprocess.run([*compiler, *flags, "-Wall", "-Wextra", "-Werror", f"-I{include}", source,
                        "-o", program, f"-L{libraries}", "-lKORVSupport", "-lKORVDataCnvLib"],
                       check=True)
        run = subprocess.run([program], env={**os.environ, "LD_LIBRARY_PATH": libraries},
                             check=True, capture_output=True, text=True)
        if run.stdout != expected:
            sys.exit(f"the {language} program prints\n{run.stdout}instead of\n{expected}")
    print(f"{language}: as printed in the README")
