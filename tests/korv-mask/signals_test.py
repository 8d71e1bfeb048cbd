"""Signals at every call of a run to a file: the target holds all or nothing, the next run works."""
import signal

from command import STEP, main
from hostile import count
from hostile_files import JOBS, FileTest

ENDING = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGQUIT, signal.SIGPIPE)
# Limits, timers, messages of other programs, and faults of the program or a provider.
OTHERS = (signal.SIGXCPU, signal.SIGALRM, signal.SIGVTALRM, signal.SIGPROF, signal.SIGUSR1,
          signal.SIGUSR2, signal.SIGSEGV, signal.SIGBUS, signal.SIGFPE, signal.SIGILL,
          signal.SIGABRT, signal.SIGSYS, signal.SIGTRAP, signal.SIGIO, signal.SIGPWR)


def ignore(number):
    return lambda: signal.signal(number, signal.SIG_IGN)


class SignalsTest(FileTest):
    def each(self, number, target, jobs):
        """The results of the runs that got the signal, before and after each call."""
        calls = self.mask_undisturbed(target, jobs=jobs).calls
        self.assertGreater(calls, 10)
        for nth in self.cases(calls, jobs):
            for when in ("before", "after"):
                with self.subTest(signal=number, target=target, jobs=jobs, call=nth, when=when):
                    result = self.mask_file(str(nth), f"{when}={int(number)}", target, jobs=jobs)
                    # With several workers the number of calls may differ by a few.
                    if result.calls is None or nth < calls - 4:
                        self.assertEqual(-number, result.returncode)
                        yield self.all_or_nothing(target)
        count(len(self.cases(calls, jobs)) * 2, "interrupted runs")

    def test_a_signal_takes_the_temporary_file_away(self):
        for target in self.TARGETS:
            for jobs in JOBS:
                untouched = 0
                for masked in self.each(signal.SIGTERM, target, jobs):
                    untouched += not masked
                    self.check_no_temporary()
                self.assertGreater(untouched, 5)

    def test_so_do_the_others(self):
        for jobs in JOBS:
            writing = self.mask_undisturbed("out.csv", function="write", jobs=jobs).calls
            for number in ENDING + OTHERS:
                for nth in (1, writing):
                    with self.subTest(signal=number, jobs=jobs, call=nth):
                        result = self.mask_file(str(nth), f"before={int(number)}", "out.csv",
                                                function="write", jobs=jobs)
                        self.assertEqual(-number, result.returncode)
                        self.check_no_temporary()
            count(2 * len(ENDING + OTHERS), "interrupted runs")

    def test_a_killed_run_leaves_no_more_than_a_temporary_file(self):
        for target in self.TARGETS:
            for jobs in JOBS:
                left = 0
                for _ in self.each(signal.SIGKILL, target, jobs):
                    names = self.temporaries()
                    # It does not disturb later runs.
                    self.mask_undisturbed(target, jobs=jobs)
                    self.assertEqual(names, self.temporaries())
                    self.assertLessEqual(len(names), 1)
                    left += self.take_temporaries_away()
                self.assertGreater(left, 2)

    def test_a_killed_run_leaves_the_old_summary_or_the_new_one(self):
        self.mask_undisturbed("out.csv", "--summary", "summary")
        with open(self.path("summary"), "rb") as file:
            new = file.read()
        calls = self.mask_undisturbed("out.csv", "--summary", "summary").calls
        contents = set()
        for nth in range(1, calls + 1, STEP):
            self.write("summary", b"old\n")
            self.mask_file(str(nth), f"before={int(signal.SIGKILL)}", "out.csv", "--summary",
                           "summary")
            with open(self.path("summary"), "rb") as file:
                contents.add(file.read())
            self.assertLessEqual(self.take_temporaries_away(), 2)
        self.assertLessEqual(contents, {b"old\n", new})
        self.assertIn(b"old\n", contents)

    def test_signals_that_are_ignored_stay_ignored(self):
        calls = self.mask_undisturbed("out.csv").calls
        for number in (signal.SIGHUP, signal.SIGINT, signal.SIGUSR1):
            for nth in range(1, calls + 1, STEP):
                result = self.mask_file(str(nth), f"before={int(number)}", "out.csv",
                                        preexec_fn=ignore(number))
                self.assertEqual(1, self.check_all_or_nothing(result, "out.csv"))


main()
