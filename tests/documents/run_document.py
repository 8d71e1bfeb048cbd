"""Does what a document tells its reader to do, and compares what is printed with what stands there.

Usage: run_document.py DOCUMENT --prefix FOLDER [--root FOLDER]

In the document
  a block whose first line is a comment with a file's name, /* name.c */, // name.cpp or # name, is
  written to that file;
  a block of `sh` is run by bash in the same scratch folder;
  a block of `text` behind it holds what the commands print.
Any other block is only read. The library is installed in the prefix; with --root the commands run
in that folder.
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
NAMED = re.compile(r"(?:/\* | *// |# )([\w.-]+\.\w+|CMakeLists\.txt|Makefile)(?: \*/)?\n")


def environment(prefix: pathlib.Path) -> dict[str, str]:
    libraries = prefix / "lib"
    return {**os.environ, "PKG_CONFIG_PATH": str(libraries / "pkgconfig"),
            "CMAKE_PREFIX_PATH": str(prefix), "LD_LIBRARY_PATH": str(libraries), "LC_ALL": "C.UTF-8",
            "PATH": f"{prefix / 'bin'}:{os.environ['PATH']}", "PREFIX": str(prefix),
            "TEMPLATE": str(HERE.parent.parent / "examples/provider_template")}


def run(commands: str, folder: str, variables: dict[str, str]) -> str:
    print(commands, end="")
    result = subprocess.run(["bash", "-eu", "-o", "pipefail", "-c", commands], cwd=folder,
                            env=variables, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            check=False, text=True, stdin=subprocess.DEVNULL, timeout=300)
    if result.returncode:
        sys.exit(f"exit status {result.returncode}\n{result.stdout}")
    return result.stdout


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("document", type=pathlib.Path)
    parser.add_argument("--prefix", type=pathlib.Path, required=True)
    parser.add_argument("--root", type=pathlib.Path)
    options = parser.parse_args()
    blocks = BLOCK.findall(options.document.read_text(encoding="utf-8"))
    ran = compared = 0
    with tempfile.TemporaryDirectory() as scratch:
        folder = str(options.root or scratch)
        printed = None
        for language, content in blocks:
            named = NAMED.match(content)
            if language == "sh":
                printed = run(content, folder, environment(options.prefix.resolve()))
                ran += 1
            elif language == "text" and printed is not None:
                if printed != content:
                    sys.exit(f"printed:\n{printed}instead of:\n{content}")
                printed = None
                compared += 1
            elif named:
                pathlib.Path(scratch, named.group(1)).write_text(content, encoding="utf-8")
    if not compared:
        sys.exit("no command of this document has its output beside it")
    print(f"{ran} blocks of commands run, {compared} outputs compared")


if __name__ == "__main__":
    main()
