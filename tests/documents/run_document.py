"""Runs the commands of a document and compares their output with the output that it shows.

Usage: run_document.py DOCUMENT BUILD-FOLDER

In the document
  a block whose first line is a comment with a file's name, /* name.c */, // name.cpp or # name, is
  written to that file;
  a block of `sh` is run by bash in the same scratch folder;
  a block of `text` after it holds what the commands print.
Any other block is only read. The commands find the library where it has been installed from the
build folder, and the compilers and tools that the machine has.
"""
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
            "CMAKE_GENERATOR": "Ninja",
            "PATH": f"{prefix / 'bin'}:{os.environ['PATH']}", "PREFIX": str(prefix),
            "TEMPLATE": str(HERE.parent.parent / "examples/provider_template"),
            "TEMPLATE_CPP": str(HERE.parent.parent / "examples/provider_template_cpp")}


def run(commands: str, folder: pathlib.Path, variables: dict[str, str]) -> str:
    print(commands, end="")
    result = subprocess.run(["bash", "-eu", "-o", "pipefail", "-c", commands], cwd=folder,
                            env=variables, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            check=False, text=True, stdin=subprocess.DEVNULL, timeout=300)
    if result.returncode:
        sys.exit(f"exit status {result.returncode}\n{result.stdout}")
    return result.stdout


def main() -> None:
    document, build = (pathlib.Path(argument) for argument in sys.argv[1:])
    blocks = BLOCK.findall(document.read_text(encoding="utf-8"))
    ran = compared = 0
    with tempfile.TemporaryDirectory() as folder:
        prefix = pathlib.Path(folder, "prefix")
        subprocess.run(["cmake", "--install", build, "--prefix", prefix],
                       stdout=subprocess.DEVNULL, check=True)
        scratch = pathlib.Path(folder, "scratch")
        scratch.mkdir()
        printed = None
        for language, content in blocks:
            named = NAMED.match(content)
            if language == "sh":
                printed = run(content, scratch, environment(prefix))
                ran += 1
            elif language == "text" and printed is not None:
                if printed != content:
                    sys.exit(f"printed:\n{printed}instead of:\n{content}")
                printed = None
                compared += 1
            elif named:
                (scratch / named.group(1)).write_text(content, encoding="utf-8")
    if not compared:
        sys.exit("no command of this document has its output beside it")
    print(f"{ran} blocks of commands run, {compared} outputs compared")


if __name__ == "__main__":
    main()
