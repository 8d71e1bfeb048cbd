"""Collects what gcov counted in builds as a gcovr tracefile, every template instance for itself.

gcovr's own reading of gcov leaves out the branches of templates with several instances, and takes
the best of them for the lines. Here an instance in a build is one function: its branches are listed
beside those of the others, and a line has run when it has run in each.
"""

import argparse
import collections
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
MEASURED = ("src", "datacnv")

# A function of one object in one build: readable name, symbol, object, build.
Function = tuple[str, str, str, str]
# Its lines: number to [count, branch counts].
Lines = dict[int, list]


def gcov(build: pathlib.Path, folder: str) -> list[tuple[str, dict]]:
    """What gcov tells of a shared object: pairs of an object file, run or not, and a source."""
    notes = sorted((build / folder).rglob("*.gcno"))
    if not notes:
        sys.exit(f"{build / folder} holds no build with KORV_COVERAGE")
    command = ["gcov", "--json-format", "--branch-probabilities", "--stdout", *map(str, notes)]
    output = subprocess.run(command, check=True, capture_output=True, text=True, cwd=build).stdout
    objects = map(json.loads, output.splitlines())
    return [(each["data_file"], source) for each in objects for source in each["files"]]


def add(total: Lines, line: dict) -> None:
    """Adds the counts of a line: inline functions are in several objects, but run in one."""
    branches = [branch["count"] for branch in line["branches"]]
    number = line["line_number"]
    count, known = total.setdefault(number, [0, [0] * len(branches)])
    if len(known) != len(branches):
        sys.exit(f"line {number} differs from object to object: {line}")
    total[number] = [count + line["count"], [a + b for a, b in zip(known, branches)]]


def collect(builds: list[pathlib.Path]) -> dict[str, dict[Function, Lines]]:
    """Source file to function to lines."""
    files: dict = collections.defaultdict(lambda: collections.defaultdict(dict))
    for build in builds:
        for folder in MEASURED:
            for object_file, source in gcov(build, folder):
                path = (build / source["file"]).resolve()
                if not any(path.is_relative_to(ROOT / measured) for measured in MEASURED):
                    continue
                names = {function["name"]: function["demangled_name"]
                         for function in source["functions"]}
                functions = files[str(path.relative_to(ROOT))]
                for line in source["lines"]:
                    # Without a name: what was inlined here or there, all in one line of gcov's.
                    symbol = line.get("function_name", object_file)
                    function = (names.get(symbol, symbol), symbol, folder, build.name)
                    add(functions[function], line)
    return files


def merged(functions: dict[Function, Lines]) -> list[dict]:
    """The lines of a file as gcovr wants them."""
    lines: dict = collections.defaultdict(list)
    for function in sorted(functions):
        for number, entry in functions[function].items():
            lines[number].append(entry)
    return [{
        "line_number": number,
        "count": min(count for count, _ in entries),
        "branches": [{"count": count, "fallthrough": False, "throw": False}
                     for _, branches in entries for count in branches],
        "gcovr/noncode": False,
        "gcovr/excluded": False,
    } for number, entries in sorted(lines.items())]


def missing(files: dict[str, dict[Function, Lines]]) -> list[str]:
    """What did not run, one sentence for each line of a function."""
    found = []
    for path, functions in files.items():
        for (name, _, folder, build), lines in functions.items():
            where = f"{name} in {folder} of {build}"
            for number, (count, branches) in lines.items():
                untaken = [i for i, taken in enumerate(branches) if not taken]
                if not count:
                    found.append(f"{path}:{number}: never run: {where}")
                elif untaken:
                    found.append(f"{path}:{number}: branches {untaken} of {len(branches)} "
                                 f"never taken: {where}")
    return sorted(found)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("builds", type=pathlib.Path, nargs="+")
    options = parser.parse_args()
    files = collect([build.resolve() for build in options.builds])
    options.output.write_text(json.dumps({
        "gcovr/format_version": "0.3",
        "files": [{"file": path, "lines": merged(functions), "functions": []}
                  for path, functions in sorted(files.items())],
    }))
    print(*missing(files), sep="\n")


if __name__ == "__main__":
    main()
