"""Compares a built object with what is promised for it: exported symbols, SONAME, needed libraries, the
newest versions of libc and of the C++ run-time library that it needs, and safe segments.

dpkg-gensymbols compares symbols, too, but only in a Debian package."""

import argparse
import re
import subprocess
import sys


def readelf(*arguments):
    return subprocess.run(["readelf", "-W", *arguments], check=True, capture_output=True,
                          text=True, env={"LC_ALL": "C", "PATH": "/usr/bin:/bin"}).stdout


def promised(path):
    """The export list as {name: (kind, bytes of a data object)}."""
    symbols = {}
    with open(path, encoding="ascii") as lines:
        for line in lines:
            words = line.split("#")[0].split()
            if not words:
                continue
            if words[0] == "function" and len(words) == 2:
                symbols[words[1]] = ("FUNC", None)
            elif words[0] == "data" and len(words) == 3:
                symbols[words[1]] = ("OBJECT", int(words[2]))
            else:
                sys.exit(f"{path}: cannot read: {line}")
    return symbols


def exported(path):
    symbols = {}
    for line in readelf("--dyn-syms", path).splitlines():
        words = line.split()
        # Number, value, size, kind, binding, visibility, section, name
        if len(words) < 8 or not words[0].rstrip(":").isdigit() or words[6] == "UND":
            continue
        kind, size, name = words[3], int(words[2], 0), words[7]
        symbols[name] = (kind, size if kind == "OBJECT" else None)
    return symbols


def numbers(version):
    return tuple(int(part) for part in version.split("."))


def faults_of_versions(path, prefix, newest):
    """What is wrong with the symbol versions of this prefix that the object needs."""
    needs = {numbers(version) for version in re.findall(rf"\bName: {prefix}_([\d.]+)",
                                                        readelf("-V", path))}
    if not needs:
        return [f"needs no version of {prefix}"]
    return [f"needs {prefix}_{'.'.join(map(str, version))}"
            for version in sorted(needs) if version > numbers(newest)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("object")
    parser.add_argument("--exports")
    parser.add_argument("--soname")
    parser.add_argument("--needed", nargs="*", default=[], help="libraries that must be needed")
    parser.add_argument("--allowed", nargs="*", default=[], help="further ones that may be")
    parser.add_argument("--libc", help="the newest version of libc whose symbols may be needed")
    parser.add_argument("--libstdcxx", help="the same for libstdc++, such as 3.4.30")
    options = parser.parse_args()
    faults = []

    if options.exports:
        wanted, found = promised(options.exports), exported(options.object)
        for name in sorted(wanted.keys() | found.keys()):
            if wanted.get(name) != found.get(name):
                faults.append(f"{name}: promised {wanted.get(name)}, exported {found.get(name)}")
        if not wanted:
            faults.append("nothing is promised")

    dynamic = readelf("-d", options.object)
    soname = re.findall(r"\(SONAME\).*\[(.*)\]", dynamic)
    if soname != ([options.soname] if options.soname else []):
        faults.append(f"SONAME is {soname}")
    needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic))
    for name in sorted(needed - set(options.needed) - set(options.allowed)):
        faults.append(f"needs {name}")
    for name in sorted(set(options.needed) - needed):
        faults.append(f"does not need {name}")
    for prefix, newest in (("GLIBC", options.libc), ("GLIBCXX", options.libstdcxx)):
        if newest:
            faults += faults_of_versions(options.object, prefix, newest)
    if "TEXTREL" in dynamic:
        faults.append("has relocations in its text")

    stack = re.findall(r"GNU_STACK\s+(?:0x[0-9a-f]+\s+){5}([RWE ]+?)\s+0x", readelf("-l", options.object))
    if stack != ["RW"]:
        faults.append(f"stack segment is {stack}")

    for fault in faults:
        print(f"{options.object}: {fault}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
