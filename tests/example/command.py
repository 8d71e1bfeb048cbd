"""What the command tests share: running mask_csv, and a folder for its files."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv[1]
ROOT = sys.argv[2]
DATA = os.path.join(ROOT, "examples", "mask_csv", "data")
HERE = os.path.dirname(os.path.abspath(__file__))


def read(path):
    with open(path, "rb") as file:
        return file.read()


class CommandTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="mask_csv_")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, contents):
        with open(self.path(name), "wb") as file:
            file.write(contents if isinstance(contents, bytes) else contents.encode())
        return self.path(name)

    def run_program(self, *arguments, stdin=b"", **options):
        return subprocess.run([PROGRAM, *arguments], input=stdin, capture_output=True,
                              cwd=self.folder, check=False, timeout=60, **options)


def main():
    unittest.main(argv=[sys.argv[0]], verbosity=2)
