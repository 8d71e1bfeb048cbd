"""Providers that break their interface: what the program makes of each, and what it leaves."""
import os
import shutil
import signal

from command import BROKEN_PROVIDERS, PROVIDERS, CommandTest, main

FOLDERS = ("--providers", BROKEN_PROVIDERS, "--providers", PROVIDERS)
# The values in the middle have the fault. The third is handed on as wide text.
VALUES = ["good 1", "Anna Blume", "Zoë Blume", "good 2"]

# Values with these faults fail; all others pass as they are.
BAD_RESULTS = {"beyond", "capacity", "elsewhere", "length", "negative", "no_record", "no_result",
               "surrogate", "target", "zero", "batch_elsewhere", "batch_length", "batch_target",
               "batch_utf8"}
# Only narrow text can be cut off within a character, and only wide text has units of several bytes.
OF_ONE_FORM = {"utf8": 2, "units": 3}
# These come to light when the program looks for them.
HIDDEN = {"changing", "source", "batch_changing", "batch_source"}
OVERRUNS = {"overrun", "overrun_64", "overrun_error", "overrun_null", "batch_overrun",
            "batch_overrun_left"}
# Results that are right in spite of a fault beside them.
HARMLESS = {"locale", "promises", "batch_left", "batch_returns"}
OF_RESULTS = BAD_RESULTS | set(OF_ONE_FORM) | HIDDEN | OVERRUNS | HARMLESS
OTHERS = {"crash", "batch_error", "batch_no_result"}


def modules():
    return {name[len("broken_"):-len(".so")] for name in os.listdir(BROKEN_PROVIDERS)
            if name.startswith("broken_") and name.endswith(".so")}


class BrokenProvidersTest(CommandTest):
    def mask_with(self, defect, *arguments, values=VALUES, expect=None):
        rows = "ID,A\n" + "".join(f"{i},{value}\n" for i, value in enumerate(values, 1))
        return self.mask(rows, f"ID = KEEP\nA = BROKEN_{defect.upper()}\n", *FOLDERS, *arguments,
                         expect=expect)

    def fields(self, run):
        return [line.partition(",")[2] for line in run.out.decode().splitlines()[1:]]

    def assert_failed(self, run, rows, defect):
        """The values of these rows have failed, are left empty, and are reported."""
        self.assertEqual(["" if row in rows else value for row, value in enumerate(VALUES, 1)],
                         self.fields(run))
        lines = self.lines_of_values(run.report)
        self.assertEqual(len(rows), len(lines))
        for row, line in zip(rows, lines):
            self.assertTrue(line.startswith(f"in.csv:{row + 1}: row {row}, column A: "), line)
            self.assertIn(f"BROKEN_{defect.upper()}", line)
        for value in VALUES:
            self.assertNotIn(value, run.report + run.messages)
        self.assert_only_counted(run.messages, len(rows))
        self.assertEqual(len(rows), sum(run.summary["columns"][1]["failed"].values()))

    def assert_no_output(self, run):
        self.assertIsNone(run.out)
        self.assert_no_temporary()

    def test_every_module_is_tried(self):
        self.assertLessEqual(OF_RESULTS | OTHERS, modules())
        self.assertGreater(len(modules() - OF_RESULTS - OTHERS), 10)

    def test_results_that_cannot_be_cost_the_value(self):
        for defect in sorted(BAD_RESULTS | set(OF_ONE_FORM)):
            for jobs in ("1", "2"):
                with self.subTest(defect=defect, jobs=jobs):
                    run = self.mask_with(defect, "--jobs", jobs, expect=1)
                    if defect in OF_ONE_FORM:
                        row = OF_ONE_FORM[defect]
                        self.assertEqual("", self.fields(run)[row - 1])
                        self.assertEqual([f"in.csv:{row + 1}: row {row}, column A"], [
                            line[:line.index(": provider BROKEN")]
                            for line in self.lines_of_values(run.report)])
                    else:
                        self.assert_failed(run, [2, 3], defect)

    def test_a_length_that_cannot_be_is_told(self):
        for defect in ("length", "negative"):
            report = self.mask_with(defect, expect=1).report
            self.assertRegex(report, rf"BROKEN_{defect.upper()} returned a length of -?\d+\b.*")
        self.assertRegex(self.mask_with("length").report, r"length of (\d+) for a capacity of \d+")

    def test_faults_without_a_bad_result_do_not_matter(self):
        for defect in sorted(HARMLESS):
            with self.subTest(defect=defect):
                run = self.mask_with(defect, expect=0)
                self.assertEqual(VALUES, self.fields(run))

    def test_an_error_or_no_result_in_a_batch_never_lets_a_clear_value_pass(self):
        for defect in ("batch_error", "batch_no_result"):
            run = self.mask_with(defect)
            self.assertIn(run.status, (0, 1))
            if run.status == 1 or defect == "batch_no_result":
                self.assertEqual(["good 1", "", "", "good 2"], self.fields(run))

    def test_hidden_faults_are_found_when_providers_are_verified(self):
        for defect in sorted(HIDDEN):
            with self.subTest(defect=defect):
                self.mask_with(defect, expect=0)
                run = self.mask_with(defect, "--verify-providers", expect=1)
                self.assert_failed(run, [2, 3], defect)

    def test_good_providers_pass_when_they_are_verified(self):
        self.assert_masked("A,B\nba,4111115467961474\n",
                           "A,B\nab,4111111111111111\n",
                           "A = AFF, method=shuffle\nB = CCN, method=transpose, key=17",
                           "--verify-providers")

    def test_an_overrun_ends_the_run(self):
        for defect in sorted(OVERRUNS):
            for jobs in ("1", "2"):
                with self.subTest(defect=defect, jobs=jobs):
                    run = self.mask_with(defect, "--jobs", jobs, expect=2)
                    self.assertRegex(run.messages, rf"BROKEN_{defect.upper()}")
                    self.assert_no_output(run)
                    for value in VALUES:
                        self.assertNotIn(value, run.report + run.messages)

    def test_an_overrun_in_a_late_chunk_ends_the_run(self):
        for jobs in ("1", "4"):
            run = self.mask_with("overrun", "--jobs", jobs, values=["good"] * 200000 + ["bad"],
                                 expect=2)
            self.assert_no_output(run)

    def test_a_crash_leaves_neither_output_nor_temporary_file(self):
        for jobs in ("1", "4"):
            for values in (VALUES, ["good"] * 300000 + ["bad"]):
                self.write("in.csv", "A\n" + "\n".join(values) + "\n")
                self.write("rules.txt", "A = BROKEN_CRASH\n")
                for output in ("new.csv", "out.csv", "in.csv"):
                    self.write("out.csv", "old\n")
                    before = self.contents("in.csv")
                    result = self.run_program(
                        "-r", "rules.txt", "in.csv", "-o", output, "--summary", "summary",
                        "--report", "report", "--html", "page", "--jobs", jobs, *FOLDERS)
                    self.assertEqual(-signal.SIGSEGV, result.returncode)
                    for name, contents in (("out.csv", b"old\n"), ("in.csv", before),
                                           ("new.csv", None), ("summary", None), ("page", None)):
                        self.assertTrue(contents == self.contents(name), name)
                    self.assert_no_temporary()

    def test_providers_that_are_refused(self):
        for defect in sorted(modules() - OF_RESULTS - OTHERS):
            with self.subTest(defect=defect):
                run = self.mask_with(defect, expect=2)
                self.assertRegex(run.messages, r"\Arules\.txt:2:5: .+\n\Z")
                self.assertIn(f"BROKEN_{defect.upper()}", run.messages.upper())
                self.assertIsNone(run.raw_summary)
                self.assert_no_output(run)
                self.write("rules.txt", f"ID = KEEP\nA = BROKEN_{defect.upper()}\n")
                check = self.run_program("-r", "rules.txt", "in.csv", "--check", *FOLDERS)
                self.assertEqual(2, check.returncode)

    def test_a_module_that_others_may_write_is_refused(self):
        for mode in (0o777, 0o757, 0o646):
            shutil.copy(os.path.join(BROKEN_PROVIDERS, "copy.so"), self.path("copy.so"))
            os.chmod(self.path("copy.so"), mode)
            run = self.assert_not_run(r"rules\.txt:1:5: .*copy\.so", "A\nx\n", "A = COPY",
                                      "--providers", self.folder)
            self.assertIn("writ", run.messages)
        os.chmod(self.path("copy.so"), 0o755)
        self.assert_masked("A\nx\n", "A\nx\n", "A = COPY", "--providers", self.folder)

    def test_folders_are_searched_in_order(self):
        first, second, third = (os.path.join(BROKEN_PROVIDERS, name)
                                for name in ("first", "second", "third"))
        for folders, expected in (((first, second), "first"), ((second, first), "second"),
                                  ((third, first), "third"), ((self.folder, second), "second")):
            arguments = [part for folder in folders for part in ("--providers", folder)]
            self.assert_masked(f"A\n{expected}\n", "A\nx\n", "A = WHICH", *arguments)

    def test_a_module_of_any_name_and_of_version_1(self):
        self.assert_masked("A,B\nba,cd\n", "A,B\nab,cd\n", "A = VERSION1\nB = COPY", *FOLDERS)


main()
