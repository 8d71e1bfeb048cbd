"""Memory does not grow with the input, however long it is and whatever is wrong with it."""
import resource
import subprocess
import sys

from command import DATA, PROGRAM, CommandTest, main, read

LIMIT = 48 * 1024 * 1024


class MemoryTest(CommandTest):
    def peak(self, repeats):
        """Masks the demo's records so many times over; the largest resident size in KiB."""
        contents = read(f"{DATA}/customers.csv")
        header, rows = contents.split(b"\n", 1)
        script = ("import resource, subprocess, sys\n"
                  "status = subprocess.run(sys.argv[1:], stderr=subprocess.DEVNULL).returncode\n"
                  "print(status, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)\n")
        path = self.write("in.csv", b"")
        with open(path, "wb") as file:
            file.write(header + b"\n" + rows)
            for _ in range(repeats - 1):
                file.write(rows)
        result = subprocess.run(
            [sys.executable, "-c", script, PROGRAM, "-r", f"{DATA}/rules.txt", path, "-o",
             self.path("out.csv")], capture_output=True, check=True, cwd=self.folder)
        status, peak = result.stdout.split()
        self.assertEqual(b"1", status)
        return int(peak)

    def test_peak_does_not_follow_the_input(self):
        self.assertLess(self.peak(400), self.peak(4) + 512)

    def test_a_long_input_passes_under_a_limit(self):
        rows = read(f"{DATA}/customers.csv").split(b"\n", 1)
        path = self.write("in.csv", rows[0] + b"\n" + rows[1] * 1500)
        result = subprocess.run(
            [PROGRAM, "-r", f"{DATA}/rules.txt", path, "-o", self.path("out.csv"), "--report",
             self.path("report")], capture_output=True, check=False,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (LIMIT, LIMIT)))
        self.assertEqual((1, b""), (result.returncode, result.stderr))

    def test_an_unclosed_quote_does_not_take_all_memory(self):
        path = self.write("in.csv", b'ID\n"' + b"x\n" * 20000000)
        rules = self.write("rules.txt", "ID = AFF\n")
        result = subprocess.run(
            [PROGRAM, "-r", rules, path], capture_output=True, check=False,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (LIMIT, LIMIT)))
        self.assertEqual(2, result.returncode)
        self.assertIn(b":2:1: the row is longer than 8388608 bytes", result.stderr)


main()
