"""Readers that go away, full disks, limits, and standard streams that are closed."""
import functools
import os
import resource
import signal
import subprocess

from command import PROGRAM, TIMEOUT, main, read
from hostile_files import CHUNK, JOBS, FileTest, arguments_of


def limit(size):
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


def without(*streams):
    return lambda: [os.close(stream) for stream in streams]


class LostStreamsTest(FileTest):
    def start(self, *arguments, jobs, **options):
        self.prepare("out.csv")
        return subprocess.Popen([PROGRAM, *arguments_of("in.csv", *arguments, jobs=jobs)],
                                cwd=self.folder, **options)

    def finish(self, process):
        """The exit status, and what standard error has received."""
        _, messages = process.communicate(timeout=TIMEOUT)
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

    def assert_ended(self, message, result):
        """Exit status 2, and one of the messages says this."""
        self.assertEqual(2, result.returncode, result.stderr)
        self.assertIn(f"korv-mask: {message}\n", result.stderr.decode())
        self.check_no_temporary()

    def test_the_reader_of_the_output_goes_away(self):
        for jobs in JOBS:
            self.assertEqual((-signal.SIGPIPE, b""), self.head(jobs=jobs))
            ignored = self.head(jobs=jobs, preexec_fn=lambda: signal.signal(signal.SIGPIPE,
                                                                            signal.SIG_IGN))
            self.assertEqual((2, b"korv-mask: standard output: Broken pipe\n"), ignored)

    def test_the_reader_of_the_report_goes_away(self):
        for jobs in JOBS:
            for action, status in ((signal.SIG_DFL, -signal.SIGPIPE), (signal.SIG_IGN, 2)):
                reading, writing = os.pipe()
                os.close(reading)
                process = self.start("-o", "out.csv", jobs=jobs, stderr=writing,
                                     preexec_fn=functools.partial(signal.signal, signal.SIGPIPE, action))
                os.close(writing)
                self.assertEqual((status, None), self.finish(process))
                self.assertFalse(self.all_or_nothing("out.csv"))

    def test_standard_output_or_error_on_a_full_disk(self):
        for jobs in JOBS:
            with open("/dev/full", "wb") as full:
                process = self.start("--report", "report", jobs=jobs, stdout=full,
                                     stderr=subprocess.PIPE)
                self.assertEqual((2, b"korv-mask: standard output: No space left on device\n"),
                                 self.finish(process))
                process = self.start("-o", "out.csv", jobs=jobs, stderr=full)
                self.assertEqual((2, None), self.finish(process))
                self.assertFalse(self.all_or_nothing("out.csv"))

    def test_report_summary_or_page_on_a_full_disk(self):
        # Both a report of many lines and one that is written at the end.
        for rows in (self.rows, b"".join(self.rows.splitlines(True)[:25])):
            for option in ("--report", "--summary", "--html"):
                for jobs in JOBS:
                    with self.subTest(option=option, jobs=jobs, size=len(rows)):
                        self.prepare("out.csv")
                        result = self.run_program(*arguments_of("-o", "out.csv", option,
                                                                "/dev/full", jobs=jobs), stdin=rows)
                        self.assert_ended("/dev/full: No space left on device", result)
                        self.assertFalse(self.all_or_nothing("out.csv"))

    def test_files_that_reach_the_limit(self):
        size = len(self.masked_rows)
        for bytes_allowed in (0, 1, 4096, CHUNK - 1, CHUNK, CHUNK + 1, size - 1):
            for target in self.TARGETS:
                for jobs in JOBS:
                    self.prepare(target)
                    result = self.run_program(
                        *arguments_of("in.csv", "-o", target, "--report", "/dev/null", jobs=jobs),
                        preexec_fn=limit(bytes_allowed))
                    self.assert_ended(f"{target}: File too large", result)
                    self.assertFalse(self.all_or_nothing(target))
        result = self.run_program(*arguments_of("in.csv", "-o", "out.csv", "--report", "/dev/null"),
                                  preexec_fn=limit(size))
        self.assertEqual(1, result.returncode, result.stderr)
        for bytes_allowed in (0, 4096, 8193):
            result = self.run_program(
                *arguments_of("in.csv", "-o", "/dev/null", "--report", "report", jobs="4"),
                preexec_fn=limit(bytes_allowed))
            self.assert_ended("report: File too large", result)

    def test_a_disk_that_fills_up(self):
        disk = self.path("disk")
        os.mkdir(disk)
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=1m", "none", disk],
                                 capture_output=True, check=False)
        if mounted.returncode != 0:
            self.skipTest("no file system can be mounted")
        self.addCleanup(subprocess.run, ["umount", disk], check=True)
        for jobs in JOBS:
            self.prepare("out.csv")
            self.write("disk/out.csv", b"old\n")
            result = self.run_program(*arguments_of("in.csv", "-o", "disk/out.csv", "--report",
                                                    "report", jobs=jobs))
            self.assertEqual(2, result.returncode, result.stderr)
            self.assertIn(b"korv-mask: disk/out.csv: No space left on device\n", result.stderr)
            self.assertEqual((["out.csv"], b"old\n"),
                             (os.listdir(disk), read(self.path("disk/out.csv"))))

    def test_closed_streams_are_not_mistaken_for_files(self):
        for streams in ((0,), (1,), (2,), (0, 1), (0, 2), (1, 2), (0, 1, 2)):
            for target in self.TARGETS:
                for jobs in JOBS:
                    with self.subTest(streams=streams, target=target, jobs=jobs):
                        self.prepare(target)
                        result = self.run_program(
                            *arguments_of("in.csv", "-o", target, "--report", "report", "--summary",
                                          "summary", jobs=jobs), preexec_fn=without(*streams))
                        status = self.check_all_or_nothing(result, target, hears=2 not in streams)
                        if 2 not in streams:
                            self.assertEqual(1, status)
                        self.assertIn(b": row 17, column CARD: ", read(self.path("report")))

    def test_the_output_does_not_take_the_place_of_a_closed_stream(self):
        for jobs in JOBS:
            for stream, status, messages in ((1, 1, b": row 17, column CARD: "), (2, 2, b"")):
                self.prepare("out.csv")
                result = self.run_program(*arguments_of("-o", "out.csv", jobs=jobs),
                                          stdin=self.rows, preexec_fn=without(stream))
                self.assertEqual(status, result.returncode)
                self.assertIn(messages, result.stderr)
                self.assertEqual(status == 1, self.all_or_nothing("out.csv"))
                self.check_no_temporary()

    def test_closed_streams_cannot_be_used(self):
        self.prepare("out.csv")
        for jobs in JOBS:
            for stream, arguments, message in (
                    (0, ("-",), b"korv-mask: standard input: Bad file descriptor\n"),
                    (1, ("in.csv", "--report", "report"),
                     b"korv-mask: standard output: Bad file descriptor\n"),
                    (2, ("in.csv", "-o", "out.csv"), b"")):
                result = self.run_program(*arguments_of(*arguments, jobs=jobs),
                                          preexec_fn=without(stream))
                self.assertEqual((2, message), (result.returncode, result.stderr))
            self.assertFalse(self.all_or_nothing("out.csv"))
            self.check_no_temporary()


main()
