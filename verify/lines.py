#!/usr/bin/env python3
"""Counts the lines of the product and of its apparatus: tests, fuzzers, benchmarks and verification.

Lines that are blank or hold a comment only do not count, nor do documents, data and stored interfaces. sloccount
and cloc cannot tell the two apart, and count comments of CMake and shell in their own ways."""
import pathlib
import re
import subprocess

PRODUCT = ("include/", "src/", "datacnv/", "mask/", "providers/", "tools/", "python/", "postgresql/", "gdb/",
           "examples/", "cmake/", "debian/", "scripts/demo", "CMakeLists.txt")
APPARATUS = ("tests/", "fuzz/", "bench/", "verify/", "abi/", "scripts/", ".ci/", "docs/reference/")
CODE = (".c", ".h", ".cpp", ".hpp", ".inc", ".py", ".cmake", ".sh", ".sql", "CMakeLists.txt")
COMMENT = re.compile(r"\s*(#(?!\s*(include|define|if|el|end|undef|error|pragma))|//|/?\*|--\s)")


def lines(path: pathlib.Path) -> int:
    text = path.read_text(encoding="utf-8", errors="replace")
    if not (path.name.endswith(CODE) or text.startswith("#!")):
        return 0
    return sum(1 for line in text.splitlines() if line.strip() and not COMMENT.match(line))


def main() -> None:
    counts = {"product": 0, "apparatus": 0}
    for name in subprocess.check_output(["git", "ls-files"], text=True).splitlines():
        kind = "product" if name.startswith(PRODUCT) else "apparatus" if name.startswith(APPARATUS) else None
        if kind and pathlib.Path(name).is_file():
            counts[kind] += lines(pathlib.Path(name))
    print(f"product {counts['product']}, apparatus {counts['apparatus']}, "
          f"ratio {counts['apparatus'] / counts['product']:.2f}")


if __name__ == "__main__":
    main()
