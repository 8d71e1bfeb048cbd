"""What the tests of several workers share: runs that must give the same for each number of them."""
import io

import make_customers
from command import CommandTest

CHUNK = 512 * 1024
JOBS = ("2", "3", "8")


def customers(count):
    file = io.StringIO()
    make_customers.write(make_customers.many_records(count), file)
    return file.getvalue().encode()


class JobsTest(CommandTest):
    def assert_same(self, rows, rules, *arguments, expect):
        """The run of one worker, after the runs of more have given the same."""
        one = self.mask(rows, rules, *arguments, "--jobs", "1", expect=expect)
        for jobs in JOBS:
            more = self.mask(rows, rules, *arguments, "--jobs", jobs, expect=expect)
            for name in ("out", "report", "raw_summary", "messages"):
                # Not assertEqual, which would show megabytes.
                self.assertTrue(getattr(one, name) == getattr(more, name), f"{name}, {jobs} jobs")
        self.assert_no_temporary()
        return one
