"""Prints the Debian packages that objects need, with the least versions that their symbols ask for.

Usage: needs.py SHARED-OBJECT=DEPENDENCY... OBJECT...
The dependencies are those of shared objects that are not the system's.
"""
import re
import subprocess
import sys

SYSTEM = {"libc.so.6": "libc6", "libm.so.6": "libc6", "ld-linux.so.2": "libc6",
          "libgcc_s.so.1": "libgcc-s1", "libcrypto.so.3": "libssl3", "libstdc++.so.6": "libstdc++6"}


def output(*command: str) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def releases(package: str) -> dict[str, str]:
    """The package's release that brought each symbol version, as the installed package lists it."""
    machine = output("dpkg", "--print-architecture").strip()
    path = output("dpkg-query", "--control-path", f"{package}:{machine}", "symbols").strip()
    with open(path, encoding="ascii") as lines:
        return dict(re.findall(r"^ (\w[\w.]*)@\1 (\S+)$", lines.read(), re.M))


def release(package: str, version: str) -> str:
    """libc6 and libgcc-s1 call symbol versions as they call their releases."""
    if re.match(r"(GLIBC|GCC)_[0-9.]+$", version):
        return version.split("_")[1]
    return releases(package)[version]


def ordered(version: str) -> list[int]:
    return [int(number) for number in re.findall(r"\d+", version)]


def needs(path: str) -> dict[str, set[str]]:
    """The symbol versions that the object needs of each shared object."""
    names = re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-dW", path))
    versions: dict[str, set[str]] = {name: set() for name in names}
    name = ""
    for line in output("readelf", "-VW", path).splitlines():
        if match := re.search(r"Version: 1  File: (\S+)", line):
            name = match.group(1)
        elif match := re.search(r"Name: (\S+)  Flags", line):
            # Versions that are needed follow the name of a file; versions that are defined do not.
            if name:
                versions[name].add(match.group(1))
    return versions


def main() -> None:
    own = dict(word.split("=", 1) for word in sys.argv[1:] if "=" in word)
    packages = SYSTEM | own
    least: dict[str, str] = {}
    for path in sys.argv[1 + len(own):]:
        for name, versions in needs(path).items():
            package = packages[name]
            found = [release(package, version) for version in versions]
            least[package] = max([*found, least.get(package, "")], key=ordered)
    if not least:
        sys.exit("no object, or one that needs nothing")
    print(", ".join(f"{package} (>= {version})" if version else package
                    for package, version in sorted(least.items())))


main()
