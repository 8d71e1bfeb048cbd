"""Every call of a run to a file fails, or does half of its work: the target holds all or nothing."""
from command import main
from hostile import count
from hostile_files import FileTest


class FailingFilesTest(FileTest):
    def each(self, does, target, suffix="", function=None):
        """The results of the runs in which the calls went wrong in turn."""
        calls = self.mask_undisturbed(target, function=function).calls
        self.assertGreater(calls, 0)
        for nth in range(1, calls + 1):
            with self.subTest(does=does, target=target, call=nth, function=function):
                yield self.mask(f"{nth}{suffix}", does, target, function=function)
        count(calls, "failing file calls")

    def test_one_call_fails(self):
        for target in self.TARGETS:
            for result in self.each("error", target):
                self.check_all_or_nothing(result, target)
                self.check_no_temporary()

    def test_calls_without_which_there_is_no_result(self):
        for function in ("open64", "fopen64", "read", "mkostemps64", "write", "fsync", "rename"):
            for result in self.each("error", "out.csv", function=function):
                self.assertEqual(2, self.check_all_or_nothing(result, "out.csv"))

    def test_all_calls_fail_from_one_on(self):
        for target in self.TARGETS:
            for result in self.each("error", target, "+"):
                self.check_all_or_nothing(result, target)
                self.assertLessEqual(self.take_temporaries_away(), 1)

    def test_reads_and_writes_that_do_half_or_are_interrupted(self):
        for target in self.TARGETS:
            for function in ("read", "write"):
                for does in ("part", "again"):
                    for result in self.each(does, target, function=function):
                        self.assertEqual(1, self.check_all_or_nothing(result, target))
                        self.check_no_temporary()


main()
