"""Which files are written and replaced: names of one file, links, owners, temporary files."""
import os
import stat

from command import CommandTest, main

ROWS = "CITY\nBerlin\n"
RULES = "CITY = LKP, file=cities.txt\n"
CITIES = "berlin = Hamburg\n"
MASKED = b"CITY\nHamburg\n"
WRITTEN = ("-o", "--report", "--summary", "--html")


class OutputFilesTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.given = {"in.csv": ROWS, "rules.txt": RULES, "cities.txt": CITIES}
        for name, contents in self.given.items():
            self.write(name, contents)

    def run_demo(self, *arguments):
        return self.run_program("-r", "rules.txt", "in.csv", *arguments)

    def assert_refused(self, *arguments):
        """A message, status 2, and the folder is as it was."""
        before = {name: os.readlink(self.path(name)) if os.path.islink(self.path(name)) else None
                  for name in os.listdir(self.folder)}
        result = self.run_demo(*arguments)
        self.assertEqual((2, b""), (result.returncode, result.stdout), arguments)
        self.assertRegex(result.stderr, rb"\Akorv-mask: [^\n]+\n\Z")
        self.assertEqual(sorted(before), sorted(os.listdir(self.folder)), arguments)
        for name, target in before.items():
            if target is not None:
                self.assertEqual(target, os.readlink(self.path(name)))
        for name, contents in self.given.items():
            self.assertEqual(contents.encode(), self.contents(name))
        return result

    def test_one_file_for_two_purposes_when_it_does_not_exist(self):
        """Fault 2: the report was lost where both had different spellings of one name."""
        os.mkdir(self.path("folder"))
        os.symlink("folder", self.path("same"))
        os.symlink("to.csv", self.path("link.csv"))
        spellings = (("o.csv", "o.csv"), ("o.csv", "./o.csv"), ("o.csv", self.path("o.csv")),
                     ("folder/o.csv", "same/o.csv"), ("folder/../o.csv", "o.csv"),
                     ("link.csv", "to.csv"), ("to.csv", "link.csv"), ("./link.csv", "link.csv"))
        for first, second in spellings:
            for i, one in enumerate(WRITTEN):
                for other in WRITTEN[i + 1:]:
                    with self.subTest(one=(one, first), other=(other, second)):
                        self.assert_refused(one, first, other, second)
                        self.assertEqual([], os.listdir(self.path("folder")))

    def test_one_file_for_two_purposes_when_it_exists(self):
        self.given["o.csv"] = "old\n"
        self.write("o.csv", "old\n")
        os.link(self.path("o.csv"), self.path("hard.csv"))
        os.symlink("o.csv", self.path("link.csv"))
        for second in ("o.csv", "./o.csv", "hard.csv", "link.csv"):
            for i, one in enumerate(WRITTEN):
                for other in WRITTEN[i + 1:]:
                    with self.subTest(one=one, other=(other, second)):
                        self.assert_refused(one, "o.csv", other, second)

    def test_files_that_are_read_are_not_replaced(self):
        """Fault 2: a lookup file that was named as report or output was overwritten."""
        for name in ("rules.txt", "cities.txt", "in.csv"):
            os.link(self.path(name), self.path("hard." + name))
            os.symlink(name, self.path("link." + name))
            for spelling in (name, "./" + name, "hard." + name, "link." + name):
                for option in WRITTEN:
                    # The output may replace the input, but not a file with hard links.
                    if (option, name) != ("-o", "in.csv"):
                        with self.subTest(option=option, name=spelling):
                            result = self.assert_refused(option, spelling)
                            self.assertIn(spelling.encode(), result.stderr)
            os.remove(self.path("hard." + name))

    def test_a_list_is_a_file_that_is_read(self):
        self.write("names.txt", "Anna\nBernd\n")
        self.given["names.txt"] = "Anna\nBernd\n"
        self.given["rules.txt"] = "CITY = HASH, method=seed, seed=autumn, file=names.txt\n"
        self.write("rules.txt", self.given["rules.txt"])
        for option in WRITTEN:
            self.assert_refused(option, "names.txt")

    def test_different_files_are_different(self):
        os.mkdir(self.path("folder"))
        result = self.run_demo("-o", "o.csv", "--report", "folder/o.csv", "--summary", "o.json",
                               "--html", "folder/o.json")
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        self.assertEqual((MASKED, b""), (self.contents("o.csv"), self.contents("folder/o.csv")))

    def test_a_dangling_link_stays_and_leads_to_the_output(self):
        """Fault 5: the link was replaced."""
        os.mkdir(self.path("folder"))
        for link, target, file in (("link.csv", "new.csv", "new.csv"),
                                   ("over.csv", "folder/new.csv", "folder/new.csv"),
                                   ("folder/up.csv", "../up.csv", "up.csv"),
                                   ("first.csv", "second.csv", "third.csv"),
                                   ("full.csv", self.path("full_target.csv"), "full_target.csv")):
            if link == "first.csv":
                os.symlink("third.csv", self.path("second.csv"))
            os.symlink(target, self.path(link))
            result = self.run_demo("-o", link)
            self.assertEqual((0, b""), (result.returncode, result.stderr))
            self.assertEqual(target, os.readlink(self.path(link)))
            self.assertEqual(MASKED, self.contents(file))
            self.assertFalse(os.path.islink(self.path(file)))
            self.assert_no_temporary()

    def test_links_that_lead_nowhere(self):
        os.symlink("none/new.csv", self.path("link.csv"))
        os.symlink("round.csv", self.path("round.csv"))
        for link in ("link.csv", "round.csv"):
            result = self.assert_refused("-o", link)
            self.assertIn(link.encode(), result.stderr)

    def test_a_link_to_the_input_stays(self):
        os.symlink("in.csv", self.path("link.csv"))
        self.assertEqual(0, self.run_demo("-o", "link.csv").returncode)
        self.assertTrue(os.path.islink(self.path("link.csv")))
        self.assertEqual(MASKED, self.contents("in.csv"))

    def test_an_input_with_several_hard_links_is_not_masked_in_place(self):
        """Fault 5: the other name kept the clear values."""
        os.link(self.path("in.csv"), self.path("hard.csv"))
        for name in ("in.csv", "hard.csv", "./in.csv"):
            result = self.assert_refused("-o", name)
            self.assertIn(b"link", result.stderr)
        os.remove(self.path("hard.csv"))
        self.assertEqual(0, self.run_demo("-o", "in.csv").returncode)
        self.assertEqual(MASKED, self.contents("in.csv"))

    def test_another_output_with_several_hard_links_is_replaced(self):
        self.write("o.csv", "old\n")
        os.link(self.path("o.csv"), self.path("hard.csv"))
        self.assertEqual(0, self.run_demo("-o", "o.csv").returncode)
        self.assertEqual((MASKED, b"old\n"), (self.contents("o.csv"), self.contents("hard.csv")))

    def test_owner_and_mode_are_kept(self):
        """Fault 5: the masked file belonged to the user who ran the program."""
        other = 65534 if os.geteuid() == 0 else os.geteuid()
        for output in ("o.csv", "in.csv"):
            self.write(output, ROWS)
            os.chmod(self.path(output), 0o640)
            os.chown(self.path(output), other, other if other == 65534 else os.getegid())
            before = os.stat(self.path(output))
            self.assertEqual(0, self.run_demo("-o", output, "--report", "report").returncode)
            after = os.stat(self.path(output))
            self.assertNotEqual(before.st_ino, after.st_ino)
            self.assertEqual((before.st_uid, before.st_gid, before.st_mode),
                             (after.st_uid, after.st_gid, after.st_mode))
            self.assertEqual(MASKED, self.contents(output))

    def test_a_new_file_follows_the_umask(self):
        for umask, mode in ((0o022, 0o644), (0o077, 0o600), (0o002, 0o664)):
            result = self.run_program("-r", "rules.txt", "in.csv", "-o", "o.csv", "--summary", "s",
                                      "--html", "h", "--report", "r", umask=umask)
            self.assertEqual(0, result.returncode)
            for name in ("o.csv", "s", "h", "r"):
                self.assertEqual(mode, stat.S_IMODE(os.stat(self.path(name)).st_mode), name)
                os.remove(self.path(name))

    def test_a_temporary_file_is_not_readable_for_more_people_than_the_output(self):
        self.write("o.csv", "old\n")
        os.chmod(self.path("o.csv"), 0o600)
        self.run_program("-r", "rules.txt", "in.csv", "-o", "o.csv", umask=0)
        self.assertEqual(0o600, stat.S_IMODE(os.stat(self.path("o.csv")).st_mode))

    def test_devices_and_pipes_are_written_directly(self):
        os.mkfifo(self.path("pipe"))
        reader = os.open(self.path("pipe"), os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        self.assertEqual(0, self.run_demo("-o", "pipe", "--report", "/dev/null").returncode)
        self.assertEqual(MASKED, os.read(reader, 1000))
        self.assertTrue(stat.S_ISFIFO(os.stat(self.path("pipe")).st_mode))
        self.assertEqual(0, self.run_demo("-o", "/dev/null").returncode)
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    def test_other_temporary_files_are_left_alone(self):
        self.write("o.csv.abcdef.tmp", "of another run\n")
        self.assertEqual(0, self.run_demo("-o", "o.csv").returncode)
        self.assertEqual(b"of another run\n", self.contents("o.csv.abcdef.tmp"))


main()
