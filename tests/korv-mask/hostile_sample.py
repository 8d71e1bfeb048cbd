"""Runs over a small sample: which values they mask, which they report, and what they leave."""
import csv
import io
import json
import os
import re

from command import DATA, read
from hostile import OLD, RULES, HostileTest


def sample():
    """Four rows that every rule masks, with quotes and letters beyond ASCII; a card too short."""
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

    def mask_sample(self, what, nth, jobs="1", **options):
        """Masks the sample over an old output and an old summary."""
        self.write("out.csv", OLD)
        self.write("report", b"")
        self.write("summary", OLD)
        return self.run_failing(what, nth, "-r", "rules.txt", "--keep-unlisted", "--jobs", jobs,
                                "in.csv", "-o", "out.csv", "--report", "report", "--summary",
                                "summary", **options)

    def mask_undisturbed(self, what, **options):
        """The number of calls; keeps the masked file and the report to compare with."""
        result = self.mask_sample(what, "", **options)
        self.assertEqual((1, b""), (result.returncode, result.stdout))
        self.masked = read(self.target)
        self.report = read(self.path("report"))
        # A run that is refused keeps a few blocks more: the system's for messages about errors, and
        # those of a module that could not be loaded.
        self.blocks = {1: result.blocks, 2: result.blocks + 16}
        return result.calls

    def check_files(self, status):
        """The input is as it was, there is no file beside those of the run, and the summary is the
        old one or that of this run."""
        self.assertEqual(sample(), read(self.source))
        self.assertEqual(sorted([*self.given, "out.csv", "report", "summary"]),
                         sorted(os.listdir(self.folder)))
        summary = read(self.path("summary"))
        if status == 1 or summary != OLD:
            self.assertEqual(status, json.loads(summary)["status"])

    def check_not_run(self, result):
        """The run has ended early: a message, and the old output."""
        self.assertEqual((2, b""), (result.returncode, result.stdout))
        self.assertRegex(result.stderr, rb"\A([^\n]+\n)+\Z")
        self.assertEqual(OLD, read(self.target))
        self.check_files(2)

    def check_masked(self, result):
        """All fields are as in the undisturbed run, or empty and in the report."""
        self.assertEqual((1, b""), (result.returncode, result.stdout))
        report = read(self.path("report"))
        rows = table(read(self.target))
        expected = table(self.masked)
        self.assertEqual([len(row) for row in expected], [len(row) for row in rows])
        failed = reported(report)
        self.assertLessEqual(reported(self.report), failed)
        for number, (row, undisturbed) in enumerate(zip(rows, expected)):
            for column, value, other in zip(expected[0], row, undisturbed):
                self.assertEqual("" if (number, column) in failed else other, value)
        self.assert_only_counted(result.stderr, len(failed))
        self.check_files(1)
        return failed - reported(self.report)

    def check(self, result):
        """Either of both, and nothing leaked; whether the run has masked its rows."""
        if result.blocks is not None:
            self.assertLessEqual(result.blocks, self.blocks[result.returncode])
        if result.returncode == 2:
            self.check_not_run(result)
            return False
        self.check_masked(result)
        return True
