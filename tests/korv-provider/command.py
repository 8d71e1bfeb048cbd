"""What the tests of korv-provider share: runs of the program.

Arguments: the program, the root of the sources, the build folder; then what the test takes."""
import json
import os
import subprocess
import sys
import tempfile
import types
import unittest

PROGRAM, ROOT, BUILD = sys.argv[1:4]
LIBRARIES = os.path.join(BUILD, "lib")
BROKEN = os.path.join(LIBRARIES, "kit-providers")
SOUND = os.path.join(BROKEN, "broken_none.so")
HERE = os.path.dirname(os.path.abspath(__file__))
# A busy machine is slow. This ends a program that hangs.
TIMEOUT = 1800


def defects():
    """The lines of defects.txt: title of the test, defect, and what is special about it."""
    found = []
    with open(os.path.join(HERE, "defects.txt"), encoding="ascii") as file:
        for line in file:
            if line[0].isdigit():
                title, _, rest = line.partition(": ")
                found.append((title, rest.split()[0], set(rest.split()[1:])))
    return found


def level_of(title):
    return int(title.partition(".")[0])


def run(*arguments, **options):
    """Runs the program. The result has status, out, err, and with --json the document."""
    done = subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True,
                          check=False, timeout=TIMEOUT, **options)
    result = types.SimpleNamespace(status=done.returncode, out=done.stdout, err=done.stderr,
                                   document=None)
    if "--json" in arguments and done.stdout:
        result.document = json.loads(done.stdout)
    return result


def check(module, *arguments, **options):
    return run("check", module, *arguments, **options)


class KitTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="korv-provider_")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, contents):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(contents if isinstance(contents, bytes) else contents.encode())
        return path

    def assert_status(self, status, result):
        self.assertEqual(status, result.status, result.out + result.err)


def main():
    unittest.main(argv=[sys.argv[0]], verbosity=2)
