"""Whether the results are good enough, and the report."""

from dataclasses import dataclass, field

from explained import Key
from mutants import Mutant, MutantsOfUnit

# Per cent of all that is tried; the rest may be explained.
AT_LEAST = 90.0


@dataclass
class Result:
    """What became of a unit's mutants."""

    unit: MutantsOfUnit
    caught: list[Mutant] = field(default_factory=list)
    survived: list[Mutant] = field(default_factory=list)
    explained: list[Mutant] = field(default_factory=list)  # survived, and change nothing
    not_counted: int = 0

    @property
    def counted(self) -> int:
        return len(self.caught) + len(self.survived)

    @property
    def tried(self) -> int:
        return self.counted + len(self.explained)

    def __str__(self) -> str:
        return (f"{self.unit.file}: {self.unit.name}: {len(self.caught)} of {self.counted} caught, "
                f"{len(self.explained)} explained, {self.not_counted} not counted")  # fmt: skip


def complaints(results: list[Result], explained: dict[Key, str]) -> list[str]:
    """Everything that makes the results not good enough, but the share that was caught."""
    found = [
        f"survived, and nothing explains it: {mutant}"
        for result in results
        for mutant in result.survived
    ]
    found += [
        f"explained in equivalent.txt, but caught: {mutant}"
        for result in results
        for mutant in result.caught
        if mutant.key in explained
    ]
    return found


def untested(results: list[Result]) -> list[str]:
    return [f"not one mutant of this function was tried: {result.unit.file}: {result.unit.name}"
            for result in results if result.unit.is_function and not result.tried]  # fmt: skip


def outdated(units: list[MutantsOfUnit], explained: dict[Key, str]) -> list[str]:
    known = {mutant.key for unit in units for mutant in unit.mutants}
    return ["in equivalent.txt, but no mutant any more: " + "\n".join(key)
            for key in explained if key not in known]  # fmt: skip


def uncovered(units: list[MutantsOfUnit], exports: list[str]) -> list[str]:
    names = {unit.name for unit in units}
    return [f"exported, but not in the sources: {name}" for name in exports if name not in names]


def figure(results: list[Result]) -> tuple[str, bool]:
    """The line to end with, and whether the share is large enough."""
    caught = sum(len(result.caught) for result in results)
    counted = sum(result.counted for result in results)
    explained = sum(len(result.explained) for result in results)
    share = 100 * caught / max(counted, 1)
    line = f"figure: {caught} of {counted} mutants caught ({share:.1f} %), "
    line += f"{explained} others explained: they change nothing"
    return line, counted > 0 and 100 * caught >= AT_LEAST * (counted + explained)
