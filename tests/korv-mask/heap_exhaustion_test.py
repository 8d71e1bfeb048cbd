"""Every allocation of a run fails: that one alone, and that one and all after it."""
from command import STEP, main
from hostile import count
from hostile_sample import SampleTest


class HeapExhaustionTest(SampleTest):
    def fail_each(self, suffix, jobs="1", step=STEP):
        """Fails each allocation in turn; how many runs have masked their rows all the same."""
        allocations = self.mask_undisturbed("heap", jobs=jobs)
        self.assertGreater(allocations, 100)
        numbers = range(1, allocations + 1, step)
        masked = 0
        for nth in numbers:
            with self.subTest(allocation=nth, jobs=jobs):
                result = self.mask_sample("heap", f"{nth}{suffix}", jobs=jobs)
                # Threads end in an order of their own, and so do blocks of the run-time library.
                if jobs != "1":
                    result.blocks = None
                masked += self.check(result)
        if jobs == "1":
            # The last one is the last.
            result = self.mask_sample("heap", f"{allocations + 1}{suffix}")
            self.assertEqual(allocations, result.calls)
            self.assertEqual(set(), self.check_masked(result))
        count(len(numbers), "failing allocations")
        return masked

    def test_one_allocation_fails(self):
        self.fail_each("")

    def test_all_allocations_fail_from_one_on(self):
        # The first ones are needed by every run.
        self.assertLess(self.fail_each("+"), 100)

    def test_allocations_fail_with_several_workers(self):
        for suffix in ("", "+"):
            self.fail_each(suffix, jobs="2", step=7 * STEP)


main()
