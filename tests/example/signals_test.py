"""Signals at every call of a run to a file: the target holds all or nothing, and the next run works."""
import signal

from command import main
from hostile import count
from hostile_files import FileTest

ENDING = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGQUIT, signal.SIGPIPE)


def ignore(number):
    return lambda: signal.signal(number, signal.SIG_IGN)


class SignalsTest(FileTest):
    def each(self, number, target):
        """The results of the runs that got the signal, before and after each call."""
        calls = self.mask_undisturbed(target).calls
        self.assertGreater(calls, 15)
        for nth in range(1, calls + 1):
            for when in ("before", "after"):
                with self.subTest(signal=number, target=target, call=nth, when=when):
                    result = self.mask(str(nth), f"{when}={int(number)}", target)
                    self.assertEqual(-number, result.returncode)
                    yield self.all_or_nothing(target)
        count(calls * 2, "interrupted runs")

    def test_a_signal_takes_the_temporary_file_away(self):
        for target in self.TARGETS:
            untouched = 0
            for masked in self.each(signal.SIGTERM, target):
                untouched += not masked
                self.check_no_temporary()
            self.assertGreater(untouched, 30)

    def test_so_do_the_others(self):
        writing = self.mask_undisturbed("out.csv", function="write").calls
        for number in ENDING:
            result = self.mask(str(writing), f"before={int(number)}", "out.csv", function="write")
            self.assertEqual(-number, result.returncode)
            self.check_no_temporary()
        count(len(ENDING), "interrupted runs")

    def test_a_killed_run_leaves_no_more_than_a_temporary_file(self):
        for target in self.TARGETS:
            left = 0
            for _ in self.each(signal.SIGKILL, target):
                names = self.temporaries()
                # It is in nobody's way.
                self.mask_undisturbed(target)
                self.assertEqual(names, self.temporaries())
                self.assertLessEqual(len(names), 1)
                left += self.take_temporaries_away()
            self.assertGreater(left, 10)

    def test_signals_that_are_ignored_stay_ignored(self):
        calls = self.mask_undisturbed("out.csv").calls
        for number in (signal.SIGHUP, signal.SIGINT):
            for nth in range(1, calls + 1):
                result = self.mask(str(nth), f"before={int(number)}", "out.csv",
                                   preexec_fn=ignore(number))
                self.assertEqual(1, self.check_all_or_nothing(result, "out.csv"))


main()
