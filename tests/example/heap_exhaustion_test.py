"""Every allocation of a run fails: that one alone, and that one and all behind it."""
from command import main
from hostile import count
from hostile_sample import SampleTest


class HeapExhaustionTest(SampleTest):
    def fail_each(self, suffix):
        """Fails each allocation in turn; how many runs have masked their rows all the same."""
        allocations = self.mask_undisturbed("heap")
        self.assertGreater(allocations, 1000)
        masked = 0
        for nth in range(1, allocations + 1):
            with self.subTest(allocation=nth):
                masked += self.check(self.mask("heap", f"{nth}{suffix}"))
        # The last one is the last.
        result = self.mask("heap", f"{allocations + 1}{suffix}")
        self.assertEqual(allocations, result.calls)
        self.assertEqual(set(), self.check_masked(result))
        count(allocations, "failing allocations")
        return masked

    def test_one_allocation_fails(self):
        self.assertGreater(self.fail_each(""), 100)

    def test_all_allocations_fail_from_one_on(self):
        self.assertEqual(0, self.fail_each("+"))


main()
