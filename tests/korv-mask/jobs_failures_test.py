"""Failures with several workers: what ends a run, and where, does not depend on their number."""
import re

from command import main
from jobs import CHUNK, JobsTest

ROW = "x,4111111111111111\n"
SHORT = "x,4111\n"
RULES = "A = KEEP\nB = CCN, method=transpose, key=17"
MANY = 2 * CHUNK // len(ROW)  # rows of two chunks


class FailuresTest(JobsTest):
    def test_a_malformed_row_of_a_late_chunk(self):
        for row, position, words in (("x,y,z\n", 5, "3 fields"), ('x,"y"z\n', 6, "after a closing"),
                                     ("x,y\r!\n", 4, "carriage return")):
            run = self.assert_same("A,B\n" + ROW * MANY + row + ROW * MANY, RULES, expect=2)
            self.assertRegex(run.messages, rf"\Ain\.csv:{MANY + 2}:{position}: .*{words}")
            self.assertIsNone(run.out)
            self.assertEqual(2, run.summary["status"])

    def test_the_first_malformed_row_is_the_one_that_is_named(self):
        rows = "A,B\n" + ROW * MANY + "x\n" + ROW * MANY + "y\n" + "x,y,z\n" * 10
        run = self.assert_same(rows, RULES, expect=2)
        self.assertRegex(run.messages, rf"\Ain\.csv:{MANY + 2}:1: .*1 field ")

    def test_lines_count_those_inside_of_quotes(self):
        rows = "A,B\n" + '"a\nb\nc",4111111111111111\n' * MANY + "x\n"
        run = self.assert_same(rows, RULES, expect=2)
        self.assertRegex(run.messages, rf"\Ain\.csv:{3 * MANY + 2}:1: ")
        rows = "A,B\n" + '"a\nb\nc",4111111111111111\n' * MANY + SHORT
        run = self.assert_same(rows, RULES, expect=1)
        self.assertRegex(run.report, rf"\Ain\.csv:{3 * MANY + 2}: row {MANY + 1}, column B: ")

    def test_failures_that_a_malformed_row_follows(self):
        run = self.assert_same("A,B\n" + (ROW * 5000 + SHORT) * 20 + "x\n" + SHORT * 20, RULES,
                               expect=2)
        self.assertEqual(20, len(self.lines_of_values(run.report)))
        self.assertEqual({"2": 20}, run.summary["columns"][1]["failed"])

    def test_most_failures_are_counted_in_the_order_of_rows(self):
        # One failure in each of several chunks, then many.
        rows = "A,B\n" + (SHORT + ROW * MANY) * 3 + SHORT * 10
        self.assert_same(rows, RULES, "--max-errors", "13", expect=1)
        for most in ("2", "3", "12"):
            run = self.assert_same(rows, RULES, "--max-errors", most, expect=2)
            self.assertIsNone(run.out)
            self.assertEqual(2, run.summary["status"])

    def test_the_first_failure_that_ends_the_run_is_the_one_that_is_named(self):
        rows = "A,B\n" + ROW * MANY + SHORT + ROW * MANY + "x,4111I1111111111\n" + SHORT
        run = self.assert_same(rows, RULES + ", on-error=abort", expect=2)
        said = run.messages + run.report
        self.assertRegex(said, rf"in\.csv:{MANY + 2}: row {MANY + 1}, column B")
        self.assertNotRegex(said, rf"row {2 * MANY + 2}, ")
        self.assertIsNone(run.out)

    def test_rows_that_are_left_out(self):
        run = self.assert_same("A,B\n" + (ROW * 1000 + SHORT * 3) * 70, RULES +
                               ", on-error=drop-row", expect=1)
        self.assertEqual((70 * 1003, 70 * 1000), (run.summary["rows_in"], run.summary["rows_out"]))
        self.assertEqual(70 * 1000 + 1, run.out.count(b"\n"))

    def test_the_report_stops_at_ten_thousand_lines_and_says_how_many_it_left_out(self):
        rows = "A,B\n" + (ROW + SHORT) * 12345
        run = self.assert_same(rows * 1, RULES, expect=1)
        values = self.lines_of_values(run.report)
        self.assertEqual(10000, len(values))
        self.assertTrue(values[-1].startswith("in.csv:20001: row 20000, column B: "), values[-1])
        rest = run.report.splitlines()[10000:]
        self.assertEqual(1, len([line for line in rest if re.search(r"\b2,?345\b", line)]), rest)
        self.assertEqual({"2": 12345}, run.summary["columns"][1]["failed"])

    def test_ten_thousand_lines_are_not_too_many(self):
        run = self.mask("A,B\n" + SHORT * 10000, RULES, expect=1)
        self.assertEqual(10000, len(self.lines_of_values(run.report)))
        self.assertLessEqual(len(run.report.splitlines()), 10001)


main()
