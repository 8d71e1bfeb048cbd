"""What the program tells about itself: --help, --version and --list-providers."""
import os
import re

from command import BROKEN_PROVIDERS, PROVIDERS, ROOT, CommandTest, main, read

NAMES = ("AFF", "AGE", "CCN", "EML", "HASH", "LKP", "NID")


class InformationTest(CommandTest):
    def shown(self, *arguments):
        result = self.run_program(*arguments)
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        return result.stdout.decode()

    def test_help_names_every_option(self):
        shown = self.shown("--help")
        for option in ("--rules", "--output", "--report", "--summary", "--jobs", "--check",
                       "--diff", "--show-clear", "--keep-unlisted", "--max-errors",
                       "--delimiter", "--encoding", "--no-header", "--null",
                       "--suggest", "--html", "--providers",
                       "--list-providers", "--verify-providers", "--version", "--progress",
                       "--secrets", "--strict", "--unmask", "--new-secret"):
            self.assertRegex(shown, rf"(?m)(^|\s|,){option}\b", option)

    def test_help_explains_the_rules_and_lists_the_providers(self):
        """Fault 7: the help did not say what a rule looks like."""
        shown = self.shown("--help")
        self.assertRegex(shown, r"(?m)^\s*\w+ += CCN, secret=\w+")
        for name in NAMES + ("KEEP", "DROP", "NULL", "CONST", "on-error", "unique", "scope",
                             "method", "KORV_SECRET_NAME"):
            self.assertRegex(shown, rf"\b{name}\b", name)

    def test_help_fits_a_terminal(self):
        for line in self.shown("--help").splitlines():
            self.assertLessEqual(len(line), 100, line)

    def test_version(self):
        header = read(os.path.join(ROOT, "include/korv/base.h")).decode()
        version = re.findall(r"#define KORV_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header)
        self.assertIn("korv-mask " + ".".join(version) + "\n", self.shown("--version") + "\n")

    def test_list_of_providers(self):
        shown = self.shown("--list-providers")
        for name in NAMES:
            self.assertRegex(shown, rf"(?m)^\W*{name}\b", name)
        for operand in ("key", "seed", "format", "domain", "country", "method"):
            self.assertRegex(shown, rf"(?i)\b{operand}\b")
        for name, methods in (
                ("AFF", "secret=NAME[, method=ff1] or method=shuffle|reverse|number"),
                ("AGE", "secret=NAME[, method=range] or method=move"),
                ("CCN", "secret=NAME[, method=ff1] or method=transpose"),
                ("EML", "secret=NAME[, method=pseudonym|ff1] or method=transpose"),
                ("HASH", "secret=NAME[, method=pick] or method=seed"),
                ("LKP", "file=FILE"),
                ("NID", "secret=NAME[, method=ff1] or method=transpose")):
            self.assertRegex(shown, rf"(?m)^{name}  {re.escape(methods)}(, |$)")

    def test_list_of_providers_of_other_folders(self):
        folder = os.path.join(BROKEN_PROVIDERS, "first")
        shown = self.shown("--list-providers", "--providers", folder)
        self.assertRegex(shown, r"(?m)^\W*WHICH\b")
        self.assertNotRegex(shown, r"(?m)^\W*CCN\b")
        shown = self.shown("--list-providers", "--providers", folder, "--providers", PROVIDERS)
        self.assertRegex(shown, r"(?m)^\W*WHICH\b")
        self.assertRegex(shown, r"(?m)^\W*CCN\b")


main()
