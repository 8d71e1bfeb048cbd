"""Every call of the companion library fails: that one alone, and that one and all after it."""
from command import STEP, main
from hostile import count
from hostile_sample import SampleTest, sample


class FailingCompanionTest(SampleTest):
    def fail_each(self, suffix, jobs):
        """Fails each call in turn; how many runs have masked their rows all the same."""
        calls = self.mask_undisturbed("conversions", jobs=jobs)
        self.assertGreater(calls, 10)
        numbers = range(1, calls + 1, STEP)
        masked = 0
        for nth in numbers:
            with self.subTest(call=nth, jobs=jobs):
                masked += self.check(self.mask_sample("conversions", f"{nth}{suffix}", jobs=jobs))
        if jobs == "1":
            result = self.mask_sample("conversions", f"{calls + 1}{suffix}")
            self.assertEqual(calls, result.calls)
            self.assertEqual(set(), self.check_masked(result))
        count(len(numbers), "failing conversions")
        return masked

    def test_one_call_fails(self):
        for jobs in ("1", "2"):
            self.fail_each("", jobs)

    def test_all_calls_fail_from_one_on(self):
        for jobs in ("1", "2"):
            self.fail_each("+", jobs)

    def test_conversions_of_the_input_fail(self):
        rules = self.write("rules.txt", "CARD = CCN, method=transpose, key=17\n")
        for contents, encoding in ((sample().decode().encode("utf-16"), ()),
                                   (sample().decode().encode("latin-1", "replace"),
                                    ("--encoding", "ISO-8859-1"))):
            self.write("in.csv", contents)
            arguments = ("-r", rules, "--keep-unlisted", "--jobs", "1", *encoding, "in.csv")
            whole = self.run_failing("conversions", "", *arguments)
            self.assertEqual(1, whole.returncode)
            ended = 0
            for nth in range(1, whole.calls + 1):
                result = self.run_failing("conversions", str(nth), *arguments)
                self.assertIn(result.returncode, (1, 2))
                self.assertNotEqual(b"", result.stderr)
                ended += b"in.csv:1:1: " in result.stderr
            self.assertGreater(ended, 0)
            count(whole.calls, "failing conversions")


main()
