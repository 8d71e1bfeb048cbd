"""Every call of the companion library fails: that one alone, and that one and all behind it."""
from command import main
from hostile import STEP, count
from hostile_sample import SampleTest, sample


class FailingCompanionTest(SampleTest):
    def fail_each(self, suffix):
        """Fails each call in turn; the results of the runs that have masked their rows."""
        calls = self.mask_undisturbed("conversions")
        self.assertGreater(calls, 100)
        failed = []
        for nth in range(1, calls + 1, STEP):
            with self.subTest(call=nth):
                result = self.mask("conversions", f"{nth}{suffix}")
                if self.check(result):
                    failed.append(self.check_masked(result))
        self.assertEqual(calls, self.mask("conversions", f"{calls + 1}{suffix}").calls)
        count(calls // STEP, "failing conversions")
        return failed

    def test_one_call_fails(self):
        failed = self.fail_each("")
        # Each call that a value needs costs that value, and no other.
        self.assertGreater(sum(len(values) for values in failed) * STEP, 10)
        self.assertEqual({0, 1}, {len(values) for values in failed})

    def test_all_calls_fail_from_one_on(self):
        failed = self.fail_each("+")
        # At the latest the conversions of a wide column.
        self.assertGreater(max(len(values) for values in failed), 4)

    def test_conversions_of_the_input_fail(self):
        self.write("in.csv", sample().decode().encode("utf-16"))
        arguments = ("-r", self.write("rules.txt", "CARD = CCN, key=17\n"), "in.csv")
        whole = self.run_failing("conversions", "", *arguments)
        self.assertEqual(1, whole.returncode)
        ended = 0
        for nth in range(1, whole.calls + 1):
            result = self.run_failing("conversions", str(nth), *arguments)
            self.assertIn(result.returncode, (1, 2))
            self.assertNotEqual(b"", result.stderr)
            ended += b"in.csv:1:1: the input cannot be converted " in result.stderr
        self.assertEqual(2, ended)
        count(whole.calls, "failing conversions")


main()
