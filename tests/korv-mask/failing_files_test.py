"""Every call of a run to a file fails, or does half of its work: the target has all or nothing."""
import json

from command import STEP, main, read
from hostile import OLD, count
from hostile_files import JOBS, FileTest


class FailingFilesTest(FileTest):
    def each(self, does, target, suffix="", function=None, jobs="1"):
        """The results of the runs in which the calls went wrong in turn."""
        calls = self.mask_undisturbed(target, function=function, jobs=jobs).calls
        self.assertGreater(calls, 0)
        numbers = self.cases(calls, jobs)
        for nth in numbers:
            with self.subTest(does=does, target=target, call=nth, function=function, jobs=jobs):
                yield self.mask_file(f"{nth}{suffix}", does, target, function=function, jobs=jobs)
        count(len(numbers), "failing file calls")

    def test_one_call_fails(self):
        for target in self.TARGETS:
            for jobs in JOBS:
                for result in self.each("error", target, jobs=jobs):
                    self.check_all_or_nothing(result, target)
                    self.check_no_temporary()

    def test_calls_without_which_there_is_no_result(self):
        for function in ("read", "mkostemps64", "write", "fsync", "rename"):
            for jobs in JOBS:
                for result in self.each("error", "out.csv", function=function, jobs=jobs):
                    self.assertEqual(2, self.check_all_or_nothing(result, "out.csv"))

    def test_all_calls_fail_from_one_on(self):
        for target in self.TARGETS:
            for jobs in JOBS:
                for result in self.each("error", target, "+", jobs=jobs):
                    # Standard error has failed as well.
                    self.check_all_or_nothing(result, target, hears=bool(result.stderr))
                    self.assertLessEqual(self.take_temporaries_away(), 1)

    def test_reads_and_writes_that_do_half_or_are_interrupted(self):
        for target in self.TARGETS:
            for function in ("read", "write"):
                for does in ("part", "again"):
                    for jobs in JOBS:
                        for result in self.each(does, target, function=function, jobs=jobs):
                            self.assertEqual(1, self.check_all_or_nothing(result, target))
                            self.check_no_temporary()

    def test_the_summary_is_the_old_one_or_complete(self):
        arguments = ("--summary", "summary")
        calls = self.mask_undisturbed("out.csv", *arguments).calls
        for nth in range(1, calls + 1, STEP):
            with self.subTest(call=nth):
                self.write("summary", OLD)
                result = self.mask_file(str(nth), "error", "out.csv", *arguments)
                self.check_all_or_nothing(result, "out.csv")
                self.check_no_temporary()
                summary = read(self.path("summary"))
                if summary == OLD:
                    self.assertEqual(2, result.returncode)
                else:
                    self.assertEqual(1, summary.count(b"\n"), summary)
                    self.assertEqual(result.returncode, json.loads(summary)["status"])


main()
