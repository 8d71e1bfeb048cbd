"""Changes the support library in one place at a time and runs the tests on it.

    mutation.py MUTATE BUILD-FOLDER [--sample N] [--seed N] [--file src/...]

MUTATE is the program of universalmutator, which makes all mutants of a file. A sample of them is drawn by the
seed. A mutant that does not compile, or to the same instructions, is replaced by another one. The tests of the
file's module have limits of time and memory from a run with the unchanged library."""
import argparse
import fnmatch
import json
import os
import pathlib
import random
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIBRARY = "libKORVSupport.so.21"
MODULES = ("ctrlblk", "datatypes", "errors", "interface", "numeric", "sort", "text", "time")
# A sample of which the tests notice a smaller share fails.
AT_LEAST = 0.8


def quiet(command, folder, **options):
    return subprocess.run(command, cwd=folder, capture_output=True, stdin=subprocess.DEVNULL, check=False, **options)


class Build:
    """The build folder, and what it takes to compile and link one changed file."""

    def __init__(self, folder, work):
        self.folder, self.work = folder, work
        entries = json.loads((folder / "compile_commands.json").read_text())
        self.commands = {pathlib.Path(entry["file"]): shlex.split(entry["command"]) for entry in entries
                         if pathlib.Path(entry["file"]).is_relative_to(ROOT / "src")}
        lines = subprocess.run(["ninja", "-t", "commands", f"lib/{LIBRARY}"], cwd=folder, check=True,
                               capture_output=True, text=True).stdout.splitlines()
        words = shlex.split(next(line for line in lines if f"-o lib/{LIBRARY}" in line))
        begin = next(at for at, word in enumerate(words) if word not in (":", "&&"))
        self.link = words[begin:words.index("&&", begin)] if "&&" in words[begin:] else words[begin:]
        self.readers = {}  # sources by each file of src/ that they read
        for source, command in self.commands.items():
            listed = quiet([*command[:command.index("-o")], "-MM", str(source)], folder, text=True).stdout
            for name in listed.replace("\\\n", " ").split()[1:]:
                self.readers.setdefault((folder / name).resolve(), []).append(source)

    def compile(self, source, tree, target):
        """The instructions of a source of a tree, or None."""
        command = [word.replace(str(ROOT / "src"), str(tree)) for word in self.commands[source]]
        command[command.index("-o") + 1] = str(target)
        if quiet([*command, "-w"], self.folder).returncode != 0:
            return None
        return quiet(["objdump", "-drs", "--no-show-raw-insn", str(target)], self.folder).stdout.split(b"\n", 3)[3]

    def make(self, changed, tree, out):
        """Builds the library of a tree in which one file is changed. False if it does not compile or is the same."""
        link, is_same = list(self.link), True
        for source in self.readers.get(changed, []):
            target = out / (source.stem + ".o")
            code = self.compile(source, tree, target)
            if code is None:
                return False
            name = f"src/CMakeFiles/korv-support.dir/{source.relative_to(ROOT / 'src')}.o"
            is_same &= code == self.compile(source, ROOT / "src", out / "original.o")
            link = [str(target) if word == name else word for word in link]
        link[link.index("-o") + 1] = str(out / LIBRARY)
        return not is_same and quiet(link, self.folder).returncode == 0


class Program:
    """A test program of a module."""

    def __init__(self, path, module):
        self.path, self.module = path, module
        self.seconds, self.bytes = 600, 4 << 30
        usage = self.run(path.parents[1] / "lib")
        if usage is None:
            sys.exit(f"{path.name} fails with the unchanged library")
        self.seconds, self.bytes = 2 + int(4 * (usage.ru_utime + usage.ru_stime)), (1 << 30) + 4096 * usage.ru_maxrss

    def run(self, folder):
        """The resources of a run that has passed, or None."""
        process = subprocess.Popen(
            ["timeout", str(10 * self.seconds), "prlimit", f"--cpu={self.seconds}", f"--as={self.bytes}", "--core=0",
             str(self.path), "--gtest_brief=1", "--gtest_fail_fast"],
            env={**os.environ, "LD_LIBRARY_PATH": f"{folder}:{self.path.parents[1] / 'lib'}"},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = status
        return usage if status == 0 else None


def mutants_of(mutate, file, folder):
    folder.mkdir()
    subprocess.run([mutate, str(file), "cpp", "--noCheck", "--mutantDir", str(folder)], check=True,
                   stdout=subprocess.DEVNULL, cwd=folder)
    return [(file, path) for path in sorted(folder.iterdir()) if ".mutant." in path.name]


def changed_line(file, mutant):
    before, after = file.read_text().splitlines(), mutant.read_text().splitlines()
    at = next((i for i, (old, new) in enumerate(zip(before, after)) if old != new), min(len(before), len(after)) - 1)
    return at + 1, before[at].strip(), after[at].strip() if at < len(after) else ""


def excuses():
    lines = (ROOT / "verify/mutation/equivalent.txt").read_text().splitlines()
    return [line.split("\t") for line in lines if line and not line.startswith("#")]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("mutate", type=pathlib.Path)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--sample", type=int, default=160)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--file")
    options = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="korv_mutation_") as scratch:
        scratch = pathlib.Path(scratch)
        build = Build(options.build.resolve(), scratch)
        programs = [Program(path, module) for module in MODULES
                    for name in re.findall(r"korv_test\((\w+)", (ROOT / f"tests/{module}/CMakeLists.txt").read_text())
                    if (path := build.folder / "bin" / name).exists()]
        files = sorted(file for file in (ROOT / "src").rglob("*") if file.suffix in (".cpp", ".h"))
        if options.file:
            files = [ROOT / options.file]
        mutants = [mutant for number, file in enumerate(files)
                   for mutant in mutants_of(options.mutate.resolve(), file, scratch / f"mutants{number}")]
        drawn = random.Random(options.seed).sample(mutants, len(mutants))

        def try_one(place):
            """The next mutant that counts: (file, line, before, after, whether the tests have noticed it)."""
            out = scratch / f"out{place}"
            while True:
                try:
                    file, mutant = drawn.pop()
                except IndexError:
                    return None
                shutil.rmtree(out, ignore_errors=True)
                shutil.copytree(ROOT / "src", out / "src")
                shutil.copy(mutant, out / "src" / file.relative_to(ROOT / "src"))
                if build.make(file, out / "src", out):
                    break
            module = file.parent.name
            own = [program for program in programs if module in (program.module, "common")]
            is_noticed = any(program.run(out) is None for program in own)
            shutil.rmtree(out)
            line, before, after = changed_line(file, mutant)
            print(f"{'noticed' if is_noticed else 'SURVIVED'} {file.relative_to(ROOT)}:{line}: {before} -> {after}",
                  flush=True)
            return file.relative_to(ROOT), before, is_noticed

        with ThreadPoolExecutor(os.cpu_count()) as pool:
            results = [result for result in pool.map(try_one, range(options.sample)) if result]

    caught = sum(is_noticed for _, _, is_noticed in results)
    equivalent = sum(any(fnmatch.fnmatch(str(file), pattern) and re.search(expression, before)
                         for pattern, expression, _ in excuses())
                     for file, before, is_noticed in results if not is_noticed)
    print(f"figure: caught {caught} of {len(results)} sampled of {len(mutants)}, {equivalent} judged equivalent")
    return 0 if results and caught >= AT_LEAST * (len(results) - equivalent) else 1


if __name__ == "__main__":
    sys.exit(main())
