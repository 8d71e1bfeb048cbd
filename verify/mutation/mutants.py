"""All mutants of a source tree, each with a name that survives changes elsewhere in its file."""

import hashlib
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

from operators import changes
from tokens import tokenize
from units import find_units


@dataclass(frozen=True)
class Mutant:
    file: str  # as in "src/text/case.cpp"
    unit: str
    kind: str
    before: str  # the lines that it changes, on one line
    after: str
    number: int  # from 1, where the same change fits more than once in the unit
    begin: int
    end: int
    text: str

    @property
    def place(self) -> str:
        return f"{self.file}: {self.unit}" + (f" ({self.number})" if self.number > 1 else "")

    @property
    def key(self) -> tuple[str, str, str]:
        return self.place, self.before, self.after

    @property
    def id(self) -> str:
        return hashlib.sha1("\n".join(self.key).encode()).hexdigest()[:8]

    def apply(self, source: str) -> str:
        return source[: self.begin] + self.text + source[self.end :]

    def __str__(self) -> str:
        return f"[{self.id}] {self.place}\n- {self.before}\n+ {self.after}"


@dataclass(frozen=True)
class MutantsOfUnit:
    """A function or a definition of data with all that can be tried on it, in the order in which
    it is tried: that of the hashes, which mixes kinds and lines."""

    file: str
    name: str
    is_function: bool
    mutants: list[Mutant]


def mutants_of(root: Path, macros: frozenset[str]) -> list[MutantsOfUnit]:
    """The mutants of every source and header below root/src."""
    found = []
    for path in sorted((root / "src").rglob("*")):
        if path.suffix in (".cpp", ".h"):
            found += mutants_of_file(path.relative_to(root).as_posix(), path.read_text(), macros)
    return found


def mutants_of_file(file: str, source: str, macros: frozenset[str]) -> list[MutantsOfUnit]:
    tokens = tokenize(source, macros)
    names: Counter[str] = Counter()
    found = []
    for unit in find_units(tokens):
        names[unit.name] += 1
        # Overloads and specialisations, in their order.
        name = unit.name + (f"#{names[unit.name]}" if names[unit.name] > 1 else "")
        seen: Counter[tuple[str, str]] = Counter()
        mutants = []
        for change in changes(source, tokens, unit.first, unit.last):
            first = source.rfind("\n", 0, change.begin) + 1
            last = source.find("\n", change.end)
            before = source[first:last]
            after = source[first : change.begin] + change.text + source[change.end : last]
            lines = " ".join(before.split()), " ".join(after.split())
            seen[lines] += 1
            mutants.append(Mutant(file, name, change.kind, *lines, seen[lines],
                                  change.begin, change.end, change.text))  # fmt: skip
        mutants.sort(key=lambda mutant: mutant.id)
        found.append(MutantsOfUnit(file, name, unit.is_function, mutants))
    return found
