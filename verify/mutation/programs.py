"""The test programs, run against a library in some folder."""

import json
import os
import re
import signal
import subprocess
import threading
from dataclasses import dataclass, field
from pathlib import Path

# No test is about the library where it is not named here or in its own module.
MODULES = ("ctrlblk", "errors", "datatypes", "numeric", "text", "time", "sort", "interface")
QUICK_SECONDS = 0.1
GIGABYTE = 1 << 30


@dataclass
class Part:
    """Some tests of a program: those that are over at once run first, the others after them."""

    filter: str
    seconds: int = 600  # of processor time
    bytes: int = 4 * GIGABYTE


@dataclass
class Program:
    name: str
    module: str
    path: Path
    parts: list[Part] = field(default_factory=lambda: [Part("*")])

    def run(self, part: Part, library: Path, extra: tuple[str, ...] = ()) -> "Outcome":
        command = ["prlimit", f"--cpu={part.seconds}", f"--as={part.bytes}", "--core=0", "--",
                   str(self.path), "--gtest_brief=1", "--gtest_fail_fast",
                   f"--gtest_filter={part.filter}", *extra]  # fmt: skip
        # The companion library lies with the programs that the build made.
        folders = f"{library}:{self.path.parents[1] / 'lib'}"
        environment = dict(os.environ, LD_LIBRARY_PATH=folders)
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   start_new_session=True)  # fmt: skip
        # Processor time has its own limit; this one is for a program that waits.
        timer = threading.Timer(10 * part.seconds, os.killpg, (process.pid, signal.SIGKILL))
        timer.start()
        _, status, usage = os.wait4(process.pid, 0)
        timer.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        return Outcome(process.returncode, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024)

    def measure(self, library: Path, report: Path) -> None:
        """Splits the tests and sets the limits, from what the unchanged library takes."""
        outcome = self.run(Part("*"), library, (f"--gtest_output=json:{report}",))
        if outcome.status != 0:
            raise SystemExit(f"{self.name} fails with the unchanged library")
        suites = json.loads(report.read_text())["testsuites"]
        slow = [
            f"{test['classname']}.{test['name']}"
            for suite in suites
            for test in suite["testsuite"]
            if float(test["time"].rstrip("s")) > QUICK_SECONDS
        ]
        self.parts = []
        for tests in ["-" + ":".join(slow), ":".join(slow)] if slow else ["*"]:
            outcome = self.run(Part(tests), library)
            seconds = 2 + int(4 * outcome.seconds)
            self.parts.append(Part(tests, seconds, GIGABYTE + 4 * outcome.bytes))


@dataclass
class Outcome:
    status: int
    seconds: float
    bytes: int


def find_programs(root: Path, build: Path) -> list[Program]:
    """The programs that tests/MODULE/CMakeLists.txt adds."""
    found = []
    for module in MODULES:
        lists = (root / "tests" / module / "CMakeLists.txt").read_text()
        for name in re.findall(r"korv_test\((\w+)", lists):
            found.append(Program(name, module, build / "bin" / name))
    return found


def catcher(programs: list[Program], file: str, library: Path) -> str:
    """The program that fails with a library, or an empty text.

    The quick tests of the file's module come first, then its slow ones, then the quick ones of
    the other modules, which may call it. What is common is everybody's own.
    """
    module = file.split("/")[1]
    own = [p for p in programs if module in (p.module, "common")]
    others = [p for p in programs if p not in own]
    runs = [(p, part) for slow in (False, True) for p in own for part in p.parts[slow : slow + 1]]
    runs += [(p, p.parts[0]) for p in others]
    for program, part in runs:
        if program.run(part, library).status != 0:
            return program.name
    return ""
