"""What the tests of hostile surroundings share: runs of korv-mask in which calls fail."""
import os
import subprocess
import tempfile

from command import LIBRARIES, PROGRAM, TIMEOUT, CommandTest, demo_rules, read

RULES = demo_rules()
OLD = b"what was there before\n"

# These tests make thousands of files: rather in memory.
if os.access("/dev/shm", os.W_OK):
    tempfile.tempdir = "/dev/shm"


def count(number, what):
    """Says how many cases a test has had, for verify/stages/hostile."""
    print(f"count: {number} {what}", flush=True)


class HostileTest(CommandTest):
    def run_failing(self, what, nth, *arguments, does="", function=None, **options):
        """Runs the program with an object before it whose calls fail: the nth as text, "" for none.
        Returns the result; with the number of calls, and of the heap's blocks that are left, if the
        program has come to its regular end."""
        total = self.path("total")
        if os.path.exists(total):
            os.remove(total)
        environment = dict(
            os.environ, LD_PRELOAD=os.path.join(LIBRARIES, f"libfailing_{what}.so"), NTH_CALL=nth,
            NTH_CALL_DOES=does, NTH_CALL_TOTAL=total,
            **({"NTH_CALL_OF": function} if function else {}),
            ASAN_OPTIONS=os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0")
        result = subprocess.run([PROGRAM, *arguments], env=environment, capture_output=True,
                                cwd=self.folder, check=False, timeout=TIMEOUT, **options)
        result.calls = result.blocks = None
        if os.path.exists(total):
            result.calls, result.blocks = map(int, read(total).split())
            os.remove(total)
        return result
