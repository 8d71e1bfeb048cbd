#!/usr/bin/env python3
"""Changes the library in small ways and checks that its tests notice each change."""

import argparse
import os
import re
import subprocess
import sys
from pathlib import Path

from explained import read_explained
from library import Library
from mutants import MutantsOfUnit, mutants_of
from programs import Program, find_programs
from trial import Trial
from verdict import complaints, figure, outdated, uncovered, untested

ROOT = Path(__file__).resolve().parents[2]
FOLDER = ROOT / "build/verify/mutation"
EXPLAINED = Path(__file__).with_name("equivalent.txt")


def options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--all", action="store_true", help="every mutant, not only a share")
    parser.add_argument("--file", action="append", help="this file alone: src/text/case.cpp")
    parser.add_argument("--only", metavar="ID", action="append", help="this mutant alone")
    parser.add_argument("--list", action="store_true", help="print the mutants, try none")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    return parser.parse_args()


def predefined() -> frozenset[str]:
    """The compiler's own macros, as far as the sources ask for them."""
    listed = subprocess.run(["g++", "-m32", "-msse2", "-dM", "-E", "-x", "c++", "/dev/null"],
                            check=True, capture_output=True, text=True).stdout  # fmt: skip
    return frozenset(re.findall(r"^#define (\w+)", listed, re.MULTILINE))


def build_tests(programs: list[Program], build: Path, jobs: int) -> None:
    subprocess.run(["cmake", "--preset", "release", "-B", build, "-DKORV_BUILD_TESTS=ON",
                    "-DKORV_BUILD_MASK=OFF"], cwd=ROOT, check=True, stdout=2)  # fmt: skip
    names = [program.name for program in programs]
    subprocess.run(["cmake", "--build", build, "-j", str(jobs), "--target", *names],
                   check=True, stdout=2)  # fmt: skip


def exported() -> list[str]:
    lines = (ROOT / "src/exports.txt").read_text()
    return re.findall(r"^(?:function|data) (\w+)", lines, re.MULTILINE)


def narrowed(units: list[MutantsOfUnit], chosen: argparse.Namespace) -> list[MutantsOfUnit]:
    """What the options leave."""
    files = chosen.file or {unit.file for unit in units}
    found = []
    for unit in units:
        wanted = [m for m in unit.mutants if not chosen.only or m.id in chosen.only]
        if unit.file in files and (wanted or not chosen.only):
            found.append(MutantsOfUnit(unit.file, unit.name, unit.is_function, wanted))
    return found


def main() -> int:
    chosen = options()
    if chosen.list:
        units = narrowed(mutants_of(ROOT, predefined()), chosen)
        print(*(mutant for unit in units for mutant in unit.mutants), sep="\n\n")
        return 0

    programs = find_programs(ROOT, FOLDER / "build")
    build_tests(programs, FOLDER / "build", chosen.jobs)
    library = Library(ROOT, FOLDER / "build", FOLDER / "work", chosen.jobs)
    for program in programs:
        program.measure(library.work, FOLDER / "report.json")

    units = mutants_of(library.work, predefined())
    explained = read_explained(EXPLAINED)
    trial = Trial(library, programs, set(explained), chosen.all or bool(chosen.only))
    results = trial.run(narrowed(units, chosen), chosen.jobs)
    found = complaints(results, explained)
    found += outdated(units, explained) + uncovered(units, exported())
    found += [] if chosen.only else untested(results)
    line, enough = figure(results)
    print(*found, line, sep="\n")
    return 0 if enough and not found else 1


if __name__ == "__main__":
    sys.exit(main())
