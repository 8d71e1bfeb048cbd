"""Runs over rows that are read and written in several pieces, to another file and in place."""
import os
import re

from command import DATA, STEP, read
from hostile import OLD, RULES, HostileTest

JOBS = ("1", "4")
CHUNK = 512 * 1024


def arguments_of(*arguments, jobs="1"):
    return ("-r", RULES, "--keep-unlisted", "--jobs", jobs, *arguments)


class FileTest(HostileTest):
    TARGETS = ("out.csv", "in.csv")

    def setUp(self):
        super().setUp()
        header, rows = read(os.path.join(DATA, "customers.csv")).split(b"\n", 1)
        self.rows = header + b"\n" + rows * (3 * CHUNK // len(rows))
        self.masked_rows = self.run_program(*arguments_of(), stdin=self.rows).stdout
        self.assertEqual(self.rows.count(b"\n"), self.masked_rows.count(b"\n"))
        self.assertGreater(len(self.masked_rows), 2 * CHUNK)

    def prepare(self, target):
        """The input, and an old output, which may be the input itself."""
        self.write("in.csv", self.rows)
        self.before = self.rows if target == "in.csv" else OLD
        if target != "in.csv":
            self.write(target, OLD)

    def mask_file(self, nth, does, target, *arguments, jobs="1", **options):
        self.prepare(target)
        return self.run_failing(
            "file_calls", nth, *arguments_of("in.csv", "-o", target, "--report", "report",
                                             *arguments, jobs=jobs), does=does, **options)

    def mask_undisturbed(self, target, *arguments, **options):
        result = self.mask_file("", "", target, *arguments, **options)
        self.assertEqual(1, self.check_all_or_nothing(result, target))
        return result

    @staticmethod
    def cases(calls, jobs):
        """The calls that are to go wrong: fewer with several workers, whose calls are the same."""
        return range(1, calls + 1, STEP if jobs == "1" else 3 * STEP)

    def all_or_nothing(self, target):
        """The target is as it was, or complete; which of both. Another input is as it was."""
        if target != "in.csv":
            self.assertEqual(self.rows, read(self.path("in.csv")))
        contents = read(self.path(target))
        # Not assertIn, which would show megabytes.
        self.assertTrue(contents in (self.before, self.masked_rows), f"{len(contents)} bytes")
        return contents == self.masked_rows

    def check_all_or_nothing(self, result, target, hears=True):
        """Which of both goes with the exit status, which is returned, and with a message, where
        standard error can have one."""
        self.assertEqual(b"", result.stdout)
        masked = self.all_or_nothing(target)
        self.assertEqual(1 if masked else 2, result.returncode, result.stderr)
        if not hears:
            self.assertEqual(b"", result.stderr)
        elif masked:
            self.assert_only_counted(result.stderr)
        else:
            self.assertRegex(result.stderr, rb"\A([^\n]+\n)+\Z")
        return result.returncode

    def temporaries(self):
        return sorted(set(os.listdir(self.folder)) - {"in.csv", "out.csv", "report", "summary"})

    def check_no_temporary(self):
        names = self.temporaries()
        for name in names:  # so that it does not fail the next case as well
            os.remove(self.path(name))
        self.assertEqual([], names)

    def take_temporaries_away(self):
        """How many there are, of which each can be known by its name."""
        names = self.temporaries()
        for name in names:
            self.assertTrue(re.fullmatch(r"(in\.csv|out\.csv|summary)\.\w{6}\.tmp", name), name)
            os.remove(self.path(name))
        return len(names)
