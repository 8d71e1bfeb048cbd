"""Runs over a small sample: which values they have masked, which they report, and what they leave."""
import csv
import io
import os
import re

from command import DATA, read
from hostile import OLD, RULES, HostileTest


def sample():
    """Four rows that every rule masks, with quotes and letters beyond ASCII, and a card too short."""
    lines = read(os.path.join(DATA, "customers.csv")).split(b"\n")
    return b"\n".join(lines[:5] + [lines[20]]) + b"\n"


def table(contents):
    return list(csv.reader(io.StringIO(contents.decode())))


def reported(report):
    """The values that a report names, as row and column."""
    return {(int(row), column) for row, column in
            re.findall(r": row (\d+), column ([^:]+): ", report.decode())}


class SampleTest(HostileTest):
    def setUp(self):
        super().setUp()
        self.source = self.write("in.csv", sample())
        self.write("rules.txt", read(RULES))
        self.write("cities.txt", read(os.path.join(DATA, "cities.txt")))
        # Reading the last line takes memory, too, and a list without it would give other names.
        names = read(os.path.join(DATA, "first_names.txt"))
        self.write("first_names.txt", names + b"Li" * 100 + b"\n")
        self.given = sorted(os.listdir(self.folder))
        self.target = self.path("out.csv")

    def mask(self, what, nth, **options):
        """Masks the sample over an old output."""
        self.write("out.csv", OLD)
        self.write("report", b"")
        return self.run_failing(what, nth, "-r", "rules.txt", "in.csv", "-o", "out.csv", "--report",
                                "report", **options)

    def mask_undisturbed(self, what, **options):
        """The number of calls; keeps the masked file and the report to compare with."""
        result = self.mask(what, "", **options)
        self.assertEqual((1, b"", b""), (result.returncode, result.stdout, result.stderr))
        self.masked = read(self.target)
        self.report = read(self.path("report"))
        self.blocks = result.blocks
        return result.calls

    def check_files(self):
        """The input is as it was, and there is no file beside those of the run."""
        self.assertEqual(sample(), read(self.source))
        self.assertEqual(sorted([*self.given, "out.csv", "report"]),
                         sorted(os.listdir(self.folder)))

    def check_not_run(self, result):
        """The run has ended early: a message, and the old output."""
        self.assertEqual((2, b""), (result.returncode, result.stdout))
        self.assertRegex(result.stderr, rb"\A[^\n]+\n(.+\n)*\Z")
        self.assertEqual(OLD, read(self.target))
        self.check_files()

    def check_masked(self, result):
        """All fields are as in the undisturbed run, or empty and in the report, which counts them."""
        self.assertEqual((1, b"", b""), (result.returncode, result.stdout, result.stderr))
        report = read(self.path("report"))
        rows = table(read(self.target))
        expected = table(self.masked)
        self.assertEqual([len(row) for row in expected], [len(row) for row in rows])
        failed = reported(report)
        self.assertLessEqual(reported(self.report), failed)
        for number, (row, undisturbed) in enumerate(zip(rows, expected)):
            for column, value, other in zip(expected[0], row, undisturbed):
                self.assertEqual("" if (number, column) in failed else other, value)
        self.assertRegex(report, rb": %d of 55 values in 5 rows failed and were left empty\n\Z"
                         % len(failed))
        self.check_files()
        return failed - reported(self.report)

    def check(self, result):
        """Either of both, and nothing leaked; whether the run has masked its rows."""
        if result.blocks is not None:
            self.assertLessEqual(result.blocks, self.blocks)
        if result.returncode == 2:
            self.check_not_run(result)
            return False
        self.check_masked(result)
        return True
