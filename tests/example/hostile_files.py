"""Runs over rows that are read and written in several pieces, to another file and in place."""
import os
import re

from command import DATA, read
from hostile import OLD, RULES, HostileTest


class FileTest(HostileTest):
    TARGETS = ("out.csv", "in.csv")

    def setUp(self):
        super().setUp()
        header, rows = read(os.path.join(DATA, "customers.csv")).split(b"\n", 1)
        self.rows = header + b"\n" + rows * 9
        self.masked_rows = self.run_program("-r", RULES, stdin=self.rows).stdout
        self.assertEqual(self.rows.count(b"\n"), self.masked_rows.count(b"\n"))

    def prepare(self, target):
        """The input, and an old output, which may be the input itself."""
        self.write("in.csv", self.rows)
        self.before = self.rows if target == "in.csv" else OLD
        if target != "in.csv":
            self.write(target, OLD)

    def mask(self, nth, does, target, **options):
        self.prepare(target)
        return self.run_failing("file_calls", nth, "-r", RULES, "in.csv", "-o", target, "--report",
                                "report", does=does, **options)

    def mask_undisturbed(self, target, **options):
        result = self.mask("", "", target, **options)
        self.assertEqual(1, self.check_all_or_nothing(result, target))
        return result

    def all_or_nothing(self, target):
        """The target is as it was, or complete; which of both. Another input is as it was."""
        if target != "in.csv":
            self.assertEqual(self.rows, read(self.path("in.csv")))
        contents = read(self.path(target))
        self.assertIn(contents, (self.before, self.masked_rows))
        return contents == self.masked_rows

    def check_all_or_nothing(self, result, target):
        """Which of both goes with the exit status, which is returned, and with a message."""
        self.assertEqual(b"", result.stdout)
        if self.all_or_nothing(target):
            self.assertEqual((1, b""), (result.returncode, result.stderr))
        else:
            self.assertEqual(2, result.returncode)
            self.assertRegex(result.stderr, rb"\A[^\n]+\n(.+\n)*\Z")
        return result.returncode

    def temporaries(self):
        return sorted(set(os.listdir(self.folder)) - {"in.csv", "out.csv", "report"})

    def check_no_temporary(self):
        self.assertEqual([], self.temporaries())

    def take_temporaries_away(self):
        """How many there are, of which each can be known by its name."""
        names = self.temporaries()
        for name in names:
            self.assertTrue(re.fullmatch(r"(in|out)\.csv\.\w{6}\.tmp", name), name)
            os.remove(self.path(name))
        return len(names)
