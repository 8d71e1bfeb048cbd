"""What the tests of the program share: runs of korv-mask, and a folder for its files.

Arguments: the program, the root of the sources, the folder of the build's libraries, a step for
tests that go through many cases; then names of single tests, if not all are to run."""
import atexit
import functools
import json
import os
import shutil
import subprocess
import sys
import tempfile
import types
import unittest

PROGRAM, ROOT, LIBRARIES = sys.argv[1:4]
STEP = int(sys.argv[4])  # 1 where every case is to run, 2 where every other is enough, ...
DATA = os.path.join(ROOT, "examples", "data")
HERE = os.path.dirname(os.path.abspath(__file__))
PROVIDERS = os.path.join(LIBRARIES, "korv-providers")
BROKEN_PROVIDERS = os.path.join(LIBRARIES, "broken-providers")
# A run of the program's own tests takes seconds at most; this ends one that hangs.
TIMEOUT = 300

sys.path.insert(0, DATA)  # make_customers


def read(path):
    with open(path, "rb") as file:
        return file.read()


@functools.cache
def demo_rules():
    """The path of rules for the demo's records that need no secret, beside the files they name."""
    folder = tempfile.mkdtemp(prefix="korv-mask_")
    atexit.register(shutil.rmtree, folder)
    for name in ("cities.txt", "first_names.txt"):
        shutil.copy(os.path.join(DATA, name), folder)
    return shutil.copy(os.path.join(HERE, "disguises.txt"), folder)


@functools.cache
def has_secrets():
    """Whether rules with a secret work: they need libcrypto."""
    with tempfile.TemporaryDirectory(prefix="korv-mask_") as folder:
        with open(os.path.join(folder, "rules.txt"), "wb") as file:
            file.write(b"A = AFF, secret=test\n")
        result = subprocess.run([PROGRAM, "-r", "rules.txt", "--check"], input=b"A\n", cwd=folder,
                                capture_output=True, check=False, timeout=TIMEOUT)
    return b"libcrypto" not in result.stderr


class CommandTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="korv-mask_")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, contents):
        with open(self.path(name), "wb") as file:
            file.write(contents if isinstance(contents, bytes) else contents.encode())
        return self.path(name)

    def write_secrets(self, contents, name="secrets.txt"):
        """Writes a secrets file. Skips the test where the program has no cryptography."""
        path = self.write(name, contents)
        os.chmod(path, 0o600)
        if not has_secrets():
            self.skipTest("the program is built without libcrypto")
        return path

    def contents(self, name):
        """The contents of a file, or None if it does not exist."""
        return read(self.path(name)) if os.path.exists(self.path(name)) else None

    def run_program(self, *arguments, stdin=b"", **options):
        return subprocess.run([PROGRAM, *arguments], input=stdin, capture_output=True,
                              cwd=self.folder, check=False, timeout=TIMEOUT, **options)

    def mask(self, rows, rules, *arguments, expect=None):
        """Masks rows to out.csv, with a report and a summary. Returns the exit status, what has
        been written (None for a file that is not there), and the messages."""
        self.write("in.csv", rows)
        self.write("rules.txt", rules)
        for name in ("out.csv", "report.txt", "summary.json"):
            if os.path.lexists(self.path(name)):
                os.remove(self.path(name))
        result = self.run_program("-r", "rules.txt", "in.csv", "-o", "out.csv", "--report",
                                  "report.txt", "--summary", "summary.json", *arguments)
        run = types.SimpleNamespace(
            status=result.returncode, stdout=result.stdout, messages=result.stderr.decode(),
            out=self.contents("out.csv"), report=(self.contents("report.txt") or b"").decode(),
            raw_summary=self.contents("summary.json"))
        run.summary = json.loads(run.raw_summary) if run.raw_summary else None
        if expect is not None:
            self.assertEqual(expect, run.status, run.messages)
        return run

    def assert_masked(self, expected, rows, rules, *arguments):
        """All values are masked, and this is the output."""
        run = self.mask(rows, rules, *arguments, expect=0)
        self.assertEqual("", run.messages)
        self.assertEqual(expected if isinstance(expected, bytes) else expected.encode(), run.out)
        return run

    def assert_not_run(self, message, rows, rules, *arguments):
        """The run ends before its first row: a message with this pattern, and no file."""
        run = self.mask(rows, rules, *arguments, expect=2)
        self.assertRegex(run.messages, message)
        self.assertEqual((None, None), (run.out, run.raw_summary))
        self.assert_no_temporary()
        return run

    def assert_only_counted(self, messages, failed=None):
        """Messages of a run in which values failed, with the report elsewhere: how many failed, and
        nothing about single values."""
        if isinstance(messages, bytes):
            messages = messages.decode()
        self.assertRegex(messages, r"\A(korv-mask: [^\n]+\n)+\Z")
        count = r"\d+" if failed is None else str(failed)
        self.assertRegex(messages, rf"korv-mask: .+: {count} of \d+ values in \d+ rows? failed")
        self.assertNotRegex(messages, r"row \d+, column")

    def assert_no_temporary(self):
        self.assertEqual([], [name for name in os.listdir(self.folder) if name.endswith(".tmp")])

    def lines_of_values(self, report):
        return [line for line in report.splitlines() if ": row " in line]


def main():
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]], verbosity=2)
