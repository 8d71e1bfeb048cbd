"""Memory does not grow with the input, however long it is and whatever is wrong with it."""
import os
import select
import subprocess
import sys

from command import DATA, PROGRAM, CommandTest, demo_rules, main, read

LIMIT = 64 * 1024  # KiB, for two workers
RULES = ("-r", demo_rules(), "--keep-unlisted", "--jobs", "2")
# A small program between, whose own size does not count.
MEASURE = """
import resource, subprocess, sys
status = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL).returncode
print(status, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
"""
HEADER, ROWS = read(os.path.join(DATA, "customers.csv")).split(b"\n", 1)


class MemoryTest(CommandTest):
    def peak(self, status, *command):
        """Runs a command; the largest resident size in KiB."""
        result = subprocess.run([sys.executable, "-c", MEASURE, *command], cwd=self.folder,
                                stdin=subprocess.DEVNULL, capture_output=True, check=True)
        self.messages = result.stderr
        ended, peak = result.stdout.split()
        self.assertEqual(status, int(ended), self.messages[:2000])
        return int(peak)

    def repeat_customers(self, times):
        path = self.write("in.csv", HEADER + b"\n")
        with open(path, "ab") as file:
            for _ in range(times):
                file.write(ROWS)
        return path

    def assert_peak_does_not_follow(self, *rules):
        peaks = []
        for times in (200, 1000):
            path = self.repeat_customers(times)
            peaks.append(self.peak(1, PROGRAM, *rules, path, "-o", "out.csv", "--report", "report",
                                   "--summary", "summary", "--html", "page.html"))
        self.assertLess(max(peaks), LIMIT)
        self.assertLess(peaks[1], peaks[0] + 4096)

    def test_peak_does_not_follow_the_input(self):
        self.assert_peak_does_not_follow(*RULES)

    def test_peak_does_not_follow_the_input_with_a_secret(self):
        secrets = self.write_secrets("demo = " + "01" * 32 + "\n")
        self.assert_peak_does_not_follow("-r", os.path.join(DATA, "rules.txt"), "--secrets",
                                         secrets, "--jobs", "2")

    def test_peak_does_not_follow_a_stream(self):
        # The program is the shell's only child of any size.
        path = self.repeat_customers(1000)
        script = 'cat "$1" | { shift; "$@"; }'
        self.assertLess(self.peak(1, "sh", "-c", script, "sh", path, PROGRAM, *RULES, "-o",
                                  "out.csv", "--report", "/dev/null"), LIMIT)

    def test_a_reader_that_stops_stops_the_program(self):
        with subprocess.Popen([PROGRAM, *RULES, "--report", "/dev/null"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as process:
            stream = process.stdin.fileno()
            os.write(stream, HEADER + b"\n")
            os.set_blocking(stream, False)
            taken = 0
            # Until nothing has been read for a second, or far more than the program may hold.
            while taken < 4 * LIMIT * 1024 and select.select([], [stream], [], 1)[1]:
                start = taken % len(ROWS)
                taken += os.write(stream, ROWS[start:start + 65536])
            process.kill()
            process.stdin.close()
        self.assertLess(taken, LIMIT * 1024)

    def test_many_failures_do_not_pile_up(self):
        rules = self.write("rules.txt", "CARD = CCN, method=transpose, key=1\n"
                                        "NAME = AFF, method=shuffle\n")
        peaks = []
        for count in (200000, 1000000):
            path = self.write("in.csv", b"CARD,NAME\n" + b"4111,xy\n" * count)
            peaks.append(self.peak(1, PROGRAM, "-r", rules, "--jobs", "2", path, "-o", "out.csv",
                                   "--report", "report"))
        # Every second value of a chunk has an error record here.
        self.assertLess(max(peaks), 4 * LIMIT)
        self.assertLess(peaks[1], 1.25 * peaks[0])

    def test_an_endless_row_does_not_take_all_memory(self):
        rules = self.write("rules.txt", "ID = AFF, method=shuffle\n")
        for row in (b'"' + b"x\n" * 40000000, b"x" * 80000000):
            path = self.write("in.csv", b"ID\n" + row)
            self.assertLess(self.peak(2, PROGRAM, "-r", rules, "--jobs", "2", path), LIMIT)
            self.assertRegex(self.messages, rb"in\.csv:2:1: .*8388608 bytes")


main()
