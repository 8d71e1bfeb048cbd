"""Builds the library with one changed file."""

import json
import re
import shlex
import shutil
import subprocess
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from contextlib import contextmanager
from pathlib import Path

from mutants import Mutant

TARGET = "libKORVSupport.so.21"
# What a mutant does is left to what the stack holds when the compiler sees one of these.
UNDEFINED = (
    "-Werror=uninitialized",
    "-Werror=maybe-uninitialized",
    "-Werror=array-bounds",
    "-Werror=aggressive-loop-optimizations",
)


def run(command: list[str], folder: Path) -> bool:
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True)
    return done.returncode == 0


class Library:
    """The unchanged sources, kept apart from whoever edits them meanwhile, and their objects."""

    def __init__(self, root: Path, build: Path, work: Path, jobs: int) -> None:
        self.root, self.build, self.work = root, build, work
        shutil.rmtree(work, ignore_errors=True)
        shutil.copytree(root / "src", work / "src")
        entries = json.loads((build / "compile_commands.json").read_text())
        self.commands = {
            Path(entry["file"]).relative_to(root).as_posix(): shlex.split(entry["command"])
            for entry in entries
            if Path(entry["file"]).is_relative_to(root / "src")
        }
        self.link_command = self.find_link_command()
        self.includes = {path: self.included(path) for path in self.commands}
        with ThreadPoolExecutor(jobs) as pool:
            if not all(pool.map(lambda file: self.compile(file, work), self.commands)):
                raise SystemExit("the unchanged library does not compile")
        if not self.link(work, set()):
            raise SystemExit("the unchanged library does not link")
        self.unchanged = (work / TARGET).read_bytes()

    def find_link_command(self) -> list[str]:
        listed = subprocess.run(["ninja", "-t", "commands", f"lib/{TARGET}"], cwd=self.build,
                                check=True, capture_output=True, text=True).stdout  # fmt: skip
        (line,) = (line for line in listed.splitlines() if f"-o lib/{TARGET}" in line)
        words = shlex.split(line)
        begin = next(at for at, word in enumerate(words) if word not in (":", "&&"))
        return words[begin : words.index("&&", begin) if "&&" in words[begin:] else None]

    def included(self, file: str) -> set[str]:
        """The headers of src/ that a source reads, itself included."""
        found, waiting = set(), [file]
        while waiting:
            at = waiting.pop()
            if at in found or not (self.work / at).exists():
                continue
            found.add(at)
            names = re.findall(r'^#include "(.+)"', (self.work / at).read_text(), re.MULTILINE)
            waiting += [f"src/{name}" for name in names]
        return found

    def object_of(self, file: str, folder: Path) -> Path:
        return folder / (file.replace("/", "-") + ".o")

    def compile(self, file: str, folder: Path, warnings: tuple[str, ...] = ("-w",)) -> bool:
        """Compiles a source of folder/src."""
        include = f"-I{self.root}/src"
        words = [word.replace(include, f"-I{folder}/src") for word in self.commands[file]]
        words[words.index("-o") + 1] = str(self.object_of(file, folder))
        words[words.index("-c") + 1] = str(folder / file)
        return run([*words, *warnings], self.build)

    def link(self, folder: Path, changed: set[str]) -> bool:
        """Links the objects of the changed files from `folder`, the others unchanged."""
        words = []
        for word in self.link_command:
            if match := re.fullmatch(r"src/CMakeFiles/korv-support\.dir/(.+\.cpp)\.o", word):
                file = f"src/{match[1]}"
                word = str(self.object_of(file, folder if file in changed else self.work))
            words.append(word)
        words[words.index("-o") + 1] = str(folder / TARGET)
        # Neither symbols nor an identifier: like that, equal code gives equal files.
        return run([*words, "-s", "-Wl,--build-id=none"], self.build)


class Bench:
    """One worker's place: its copy of the sources, in which one file at a time is changed."""

    def __init__(self, original: Library, number: int) -> None:
        self.original = original
        self.folder = original.work / f"worker-{number}"
        shutil.copytree(original.work / "src", self.folder / "src")

    @contextmanager
    def changed(self, mutant: Mutant) -> Iterator[list[str]]:
        """The sources that read the changed file, as long as it is changed."""
        path = self.folder / mutant.file
        source = path.read_text()
        path.write_text(mutant.apply(source))
        try:
            yield [file for file, read in self.original.includes.items() if mutant.file in read]
        finally:
            path.write_text(source)

    def build(self, mutant: Mutant) -> bytes | None:
        """The changed library, also left in the folder; None when it does not compile."""
        with self.changed(mutant) as files:
            if not all(self.original.compile(file, self.folder) for file in files):
                return None
            if not self.original.link(self.folder, set(files)):
                return None
        return (self.folder / TARGET).read_bytes()

    def is_undefined(self, mutant: Mutant) -> bool:
        """Whether the compiler sees that the change leads outside an array or to no value."""
        with self.changed(mutant) as files:
            return not all(self.original.compile(file, self.folder, UNDEFINED) for file in files)
