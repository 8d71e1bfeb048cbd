#!/usr/bin/env python3
"""Two builds of the program, of different word sizes, give the same output, report and summary byte
for byte.

    word_sizes_test.py PROGRAM OTHER_PROGRAM
"""
import io
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAMS = sys.argv[1:3]
HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "..", "examples", "data")
sys.path.insert(0, DATA)
import make_customers  # noqa: E402

ROWS = 32000  # 5 MB, a dozen chunks
# Every provider, several of its methods, and every action and policy.
RULES = ("""\
"First Name" = HASH, method=seed, seed=autumn, file=first_names.txt
LAST_NAME = AFF, method=reverse, type=wide
EMAIL = EML, method=transpose, key=4711, prefix=1, domain=masked.example
PHONE = NID, method=transpose, key=5, on-error=null
BIRTH_DATE = AGE, method=move, years=-1, days=45, limit=400
CARD = CCN, method=transpose, key=17
NATIONAL_ID = NID, method=transpose, key=29, country=us, on-error=drop-row
CITY = LKP, file=cities.txt
ACCOUNT = AFF, method=number, on-error=const, value=-
SIGNUP = AGE, method=move, months=1, format=DD.MM.YYYY
NOTE = COL, method=shuffle
ID = KEEP
""", r"""
"First Name" = AFF, method=shuffle
LAST_NAME = HASH, method=seed, seed=winter, "list=Müller;Ørsted;佐藤"
EMAIL = EML, method=transpose, key=1, case=keep
PHONE = NID, method=transpose, key=123456789, shift=9, unchanged=error
BIRTH_DATE = AGE, method=move, months=-7
CARD = CCN, method=transpose, key=999999999, shift=9, prefix=0, strict
NATIONAL_ID = DROP
CITY = LKP, file=cities.txt, default=Ålesund
ACCOUNT = CCN, method=transpose, key=0
SIGNUP = NULL
NOTE = CONST, "value=a \"b\", c"
ID = NID, method=transpose, key=7
""")
SECRETS = "demo = " + "5a" * 32 + "\n"


def customers():
    file = io.StringIO()
    make_customers.write(make_customers.many_records(ROWS), file)
    return file.getvalue().encode()


class WordSizesTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="korv-mask_")
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ("cities.txt", "first_names.txt"):
            shutil.copy(os.path.join(DATA, name), self.folder)

    def write(self, name, contents):
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(contents if isinstance(contents, bytes) else contents.encode())

    def take(self, name):
        """The contents of a file of the run, which is removed."""
        path = os.path.join(self.folder, name)
        if not os.path.exists(path):
            return None
        with open(path, "rb") as file:
            contents = file.read()
        os.remove(path)
        return contents

    def run_one(self, program, *arguments):
        result = subprocess.run(
            [program, "-r", "rules.txt", "in.csv", "-o", "out.csv", "--report", "report",
             "--summary", "summary", "--html", "page", *arguments], cwd=self.folder,
            capture_output=True, check=False)
        return {"status": result.returncode, "stdout": result.stdout, "messages": result.stderr,
                **{name: self.take(name) for name in ("out.csv", "report", "summary", "page")}}

    def assert_same(self, *arguments, expect=1):
        one, other = (self.run_one(program, *arguments) for program in PROGRAMS)
        self.assertEqual(expect, one["status"], one["messages"])
        for name, contents in one.items():
            # Not assertEqual, which would show megabytes.
            self.assertTrue(contents == other[name], name)
        return one

    def test_they_are_of_different_word_sizes(self):
        classes = set()
        for program in PROGRAMS:
            with open(program, "rb") as file:
                classes.add(file.read(5)[4])
        self.assertEqual({1, 2}, classes)

    def test_the_demos_records(self):
        with open(os.path.join(DATA, "customers.csv"), "rb") as file:
            self.write("in.csv", file.read())
        with open(os.path.join(HERE, "disguises.txt"), "rb") as file:
            self.write("rules.txt", file.read())
        run = self.assert_same("--keep-unlisted")
        self.assertIn(b"row 17, column CARD", run["report"])

    def test_methods_with_a_secret(self):
        self.write("in.csv", customers())
        with open(os.path.join(DATA, "rules.txt"), "rb") as file:
            self.write("rules.txt", file.read().replace(b"SEGMENT     = KEEP\n", b""))
        self.write("secrets.txt", SECRETS)
        os.chmod(os.path.join(self.folder, "secrets.txt"), 0o600)
        arguments = ("--secrets", "secrets.txt")
        if any(b"libcrypto" in self.run_one(program, *arguments)["messages"]
               for program in PROGRAMS):
            self.skipTest("one of the programs is built without libcrypto")
        run = self.assert_same(*arguments)
        self.assertGreater(run["report"].count(b"\n"), 300)

    def test_many_records(self):
        self.write("in.csv", customers())
        for rules in RULES:
            self.write("rules.txt", rules)
            for jobs in ("1", "4"):
                run = self.assert_same("--jobs", jobs)
                self.assertGreater(len(run["out.csv"]), 2000000)
                self.assertGreater(run["report"].count(b"\n"), 300)

    def test_other_forms_of_the_input(self):
        rows = customers()[:500000].rpartition(b"\n1")[0] + b"\n"
        self.write("rules.txt", RULES[0])
        for contents, arguments in ((rows.decode().encode("utf-16"), ()),
                                    (rows.replace(b"\n", b"\r\n"), ("--null", "VIP")),
                                    (rows.decode().encode("cp1252", "replace"),
                                     ("--encoding", "1252"))):
            self.write("in.csv", contents)
            self.assert_same(*arguments)

    def test_runs_that_end_early(self):
        self.write("in.csv", customers() + b"x\n")
        self.write("rules.txt", RULES[0])
        self.assert_same(expect=2)
        self.assert_same("--max-errors", "100", expect=2)

    def test_what_they_say_before_a_run(self):
        self.write("in.csv", customers()[:100000].rpartition(b"\n1")[0] + b"\n")
        self.write("rules.txt", RULES[0])
        for arguments in (("--check",), ("--diff", "200"), ("--suggest",)):
            outputs = {subprocess.run([program, "-r", "rules.txt", "in.csv", *arguments],
                                      cwd=self.folder, capture_output=True, check=False).stdout
                       for program in PROGRAMS}
            self.assertEqual(1, len(outputs), arguments)


unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
