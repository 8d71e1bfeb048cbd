"""Readers that go away, full disks, limits, and standard streams that are closed."""
import os
import resource
import signal
import subprocess

from command import PROGRAM, main, read
from hostile import RULES
from hostile_files import FileTest

MASK = (PROGRAM, "-r", RULES)


def limit(size):
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


def without(*streams):
    return lambda: [os.close(stream) for stream in streams]


class LostStreamsTest(FileTest):
    def start(self, *arguments, **options):
        self.prepare("out.csv")
        return subprocess.Popen([*MASK, "in.csv", *arguments], cwd=self.folder, **options)

    def finish(self, process):
        """The exit status, and what standard error has received."""
        _, messages = process.communicate(timeout=60)
        self.check_no_temporary()
        return process.returncode, messages

    def head(self, **options):
        """Reads the first line of standard output and no more."""
        process = self.start("--report", "report", stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                             **options)
        self.assertTrue(process.stdout.readline().startswith(b"ID,"))
        process.stdout.close()
        process.stdout = None
        return self.finish(process)

    def test_the_reader_of_the_output_goes_away(self):
        self.assertEqual((-signal.SIGPIPE, b""), self.head())
        ignored = self.head(preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_IGN))
        self.assertEqual((2, b"standard output: Broken pipe\n"), ignored)

    def test_the_reader_of_the_report_goes_away(self):
        for ignored, status in ((False, -signal.SIGPIPE), (True, 2)):
            reading, writing = os.pipe()
            os.close(reading)
            process = self.start("-o", "out.csv", stderr=writing, preexec_fn=lambda: signal.signal(
                signal.SIGPIPE, signal.SIG_IGN if ignored else signal.SIG_DFL))
            os.close(writing)
            self.assertEqual((status, None), self.finish(process))
            self.assertFalse(self.all_or_nothing("out.csv"))

    def test_full_disks(self):
        with open("/dev/full", "wb") as full:
            process = self.start("--report", "report", stdout=full, stderr=subprocess.PIPE)
            self.assertEqual((2, b"standard output: No space left on device\n"),
                             self.finish(process))
            process = self.start("-o", "out.csv", stderr=full)
            self.assertEqual((2, None), self.finish(process))
            self.assertFalse(self.all_or_nothing("out.csv"))
        # Both a report of many lines and one that is written at the end.
        for rows in (self.rows, b"".join(self.rows.splitlines(True)[:25])):
            result = self.run_program("-r", RULES, "-o", "out.csv", "--report", "/dev/full",
                                      stdin=rows)
            self.assertEqual((2, b"/dev/full: No space left on device\n"),
                             (result.returncode, result.stderr))
            self.assertFalse(self.all_or_nothing("out.csv"))

    def test_files_that_reach_the_limit(self):
        size = len(self.masked_rows)
        for bytes_allowed in (0, 1, 4096, 131071, 131072, 131073, size - 1):
            for target in self.TARGETS:
                self.prepare(target)
                result = self.run_program("-r", RULES, "in.csv", "-o", target, "--report",
                                          "/dev/null", preexec_fn=limit(bytes_allowed))
                self.assertEqual((2, f"{target}: File too large\n".encode()),
                                 (result.returncode, result.stderr))
                self.assertFalse(self.all_or_nothing(target))
                self.check_no_temporary()
        result = self.run_program("-r", RULES, "in.csv", "-o", "out.csv", "--report", "/dev/null",
                                  preexec_fn=limit(size))
        self.assertEqual(1, result.returncode)
        for bytes_allowed in (0, 4096, 8193):
            result = self.run_program("-r", RULES, "in.csv", "-o", "/dev/null", "--report", "report",
                                      preexec_fn=limit(bytes_allowed))
            self.assertEqual((2, b"report: File too large\n"), (result.returncode, result.stderr))

    def test_closed_streams_are_not_mistaken_for_files(self):
        for streams in ((0,), (1,), (2,), (0, 1), (0, 2), (1, 2), (0, 1, 2)):
            for target in self.TARGETS:
                self.prepare(target)
                result = self.run_program("-r", RULES, "in.csv", "-o", target, "--report", "report",
                                          preexec_fn=without(*streams))
                self.assertEqual(1, self.check_all_or_nothing(result, target))
                self.assertTrue(read(self.path("report")).endswith(b"were left empty\n"))

    def test_the_output_does_not_take_the_place_of_a_closed_stream(self):
        for stream, status, messages in ((1, 1, b"were left empty\n"), (2, 2, b"")):
            self.prepare("out.csv")
            result = self.run_program("-r", RULES, "-o", "out.csv", stdin=self.rows,
                                      preexec_fn=without(stream))
            self.assertEqual(status, result.returncode)
            self.assertTrue(result.stderr.endswith(messages), result.stderr)
            self.assertEqual(status == 1, self.all_or_nothing("out.csv"))
            self.check_no_temporary()

    def test_closed_streams_cannot_be_used(self):
        self.prepare("out.csv")
        for stream, arguments, message in (
                (0, ("-",), b"standard input: Bad file descriptor\n"),
                (1, ("in.csv", "--report", "report"), b"standard output: Bad file descriptor\n"),
                (2, ("in.csv", "-o", "out.csv"), b"")):
            result = self.run_program("-r", RULES, *arguments, preexec_fn=without(stream))
            self.assertEqual((2, message), (result.returncode, result.stderr))
        self.assertFalse(self.all_or_nothing("out.csv"))
        self.check_no_temporary()


main()
