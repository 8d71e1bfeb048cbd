"""Secrets of the program: files, variables and new ones; what is said about them, and that the bytes
of a secret are nowhere to be seen."""
import base64
import os
import re
import subprocess
import time
import unittest

from command import (BROKEN_PROVIDERS, PROGRAM, PROVIDERS, TIMEOUT, CommandTest, has_secrets,
                     main)

SECRET = bytes(range(0xA0, 0xC0))
HEX = SECRET.hex()
BASE64 = base64.b64encode(SECRET).decode()
# Of the same secret, by HKDF.
FINGERPRINT = "4a366234"
ROWS = "NAME,NO\nJohn Smith,12345\nAnna,987-654\n"
RULES = "NAME = AFF, secret=crm\nNO = NID, secret=crm\n"
# Forms in which a secret could be shown.
FORMS = (HEX, HEX.upper(), BASE64, HEX[:16], HEX[-16:], BASE64[:12], SECRET.decode("latin-1"))


class SecretsTest(CommandTest):
    def setUp(self):
        super().setUp()
        if not has_secrets():
            self.skipTest("the program is built without libcrypto")

    def run_with(self, *arguments, **variables):
        """A run over the rows, with variables of the environment."""
        return self.run_program("-r", "rules.txt", "in.csv", *arguments,
                                env={**os.environ, **variables})

    def prepare(self, rules=RULES, rows=ROWS):
        self.write("rules.txt", rules)
        self.write("in.csv", rows)

    def assert_refused(self, message, *arguments, **variables):
        result = self.run_with(*arguments, **variables)
        self.assertEqual((2, b""), (result.returncode, result.stdout), result.stderr)
        text = result.stderr.decode()
        self.assertIn(message, text)
        self.assertRegex(text, r"\A((korv-mask: |rules\.txt:\d+:\d+: )[^\n]+\n)+\Z")
        self.assert_hidden(text)

    def assert_hidden(self, *texts):
        for text in texts:
            for form in FORMS:
                self.assertNotIn(form, text)


class FilesTest(SecretsTest):
    def test_hexadecimal_digits_and_base64_are_the_same(self):
        outs = set()
        for contents in (f"crm = {HEX}\n", f"# mine\r\n\r\n crm={HEX.upper()} \r\n",
                         f"crm = {BASE64}", f"other = {'00' * 16}\ncrm = {BASE64}\n"):
            secrets = self.write_secrets(contents)
            outs.add(self.mask(ROWS, RULES, "--secrets", secrets, expect=0).out)
        self.assertEqual(1, len(outs))
        out = outs.pop()
        self.assertRegex(out, rb"\ANAME,NO\n[A-Z][a-z]{3} [A-Z][a-z]{4},\d{5}\n[A-Z][a-z]{3},"
                              rb"\d{3}-\d{3}\n\Z")
        self.assertNotEqual(ROWS.encode(), out)
        secrets = self.write_secrets(f"crm = {'00' * 32}\n")
        self.assertNotEqual(out, self.mask(ROWS, RULES, "--secrets", secrets, expect=0).out)

    def test_files_that_are_refused(self):
        self.prepare()
        name = "a line has the form name = value"
        length = "the secret crm must be 16 to 64 bytes"
        for contents, place, message in (
                (HEX, ":1: ", name), (f"0{HEX[1:]} = crm", ":1: ", name), (f"Crm = {HEX}", ":1: ", name),
                (f"\n\ncrm {HEX}", ":3: ", name), ("crm = ", ":1: ", length),
                (f"crm = {HEX[:30]}", ":1: ", length), (f"crm = {HEX * 3}", ":1: ", length),
                (f"crm = {HEX[:-1]}", ":1: ", length), (f"crm = {BASE64[:-1]}", ":1: ", length),
                (f"crm = {HEX}\ncrm = {BASE64}", ":2: ", "the secret crm is given twice"),
                ("", "", "there is no secret crm"), (f"# crm = {HEX}", "", "no secret crm")):
            with self.subTest(contents=contents):
                self.write_secrets(contents)
                where = f"secrets.txt{place}" if place else ""
                self.assert_refused(where + message, "--secrets", "secrets.txt")

    def test_a_secret_in_the_place_of_its_name_is_not_shown(self):
        """Its hexadecimal digits may look like a name."""
        self.write_secrets(f"crm = {HEX}\n")
        for value in (HEX, BASE64):
            self.prepare(f"NAME = AFF, secret={value}\nNO = KEEP\n")
            self.assert_refused("the secret itself belongs into a file", "--secrets", "secrets.txt")
        self.prepare()
        for value in (HEX, BASE64):
            self.write_secrets(f"{value} = crm\n")
            self.assert_refused("secrets.txt:1: a line has the form name = value", "--secrets",
                                "secrets.txt")

    def test_nobody_else_may_have_access(self):
        self.prepare()
        self.write_secrets(f"crm = {HEX}\n")
        for mode in (0o640, 0o604, 0o620, 0o644):
            os.chmod(self.path("secrets.txt"), mode)
            self.assert_refused("secrets.txt: other users have access", "--secrets", "secrets.txt")
        os.chmod(self.path("secrets.txt"), 0o400)
        self.assertEqual(0, self.run_with("--secrets", "secrets.txt").returncode)

    def test_links_and_other_kinds_of_files(self):
        self.prepare()
        self.write_secrets(f"crm = {HEX}\n")
        os.symlink("secrets.txt", self.path("link"))
        self.assertEqual(0, self.run_with("--secrets", "link").returncode)
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("fifo"), 0o600)
        for name in ("folder", "fifo", "/dev/null"):
            self.assert_refused(f"{name}: secrets are read from a regular file", "--secrets", name)
        self.assert_refused("none: cannot open the secrets: No such file or directory",
                            "--secrets", "none")

    def test_the_file_is_not_overwritten(self):
        self.prepare()
        secrets = self.write_secrets(f"crm = {HEX}\n")
        os.symlink("secrets.txt", self.path("link"))
        for option in ("-o", "--report", "--summary", "--html"):
            for name in ("secrets.txt", "link", secrets):
                result = self.run_with("--secrets", "secrets.txt", option, name)
                self.assertEqual(2, result.returncode, option)
                self.assertEqual(f"crm = {HEX}\n".encode(), self.contents("secrets.txt"))


class VariablesTest(SecretsTest):
    def test_a_variable_gives_what_the_file_gives(self):
        secrets = self.write_secrets(f"crm = {HEX}\n")
        expected = self.mask(ROWS, RULES, "--secrets", secrets, expect=0).out
        for value in (HEX, BASE64):
            result = self.run_with(KORV_SECRET_CRM=value)
            self.assertEqual((0, expected, b""), (result.returncode, result.stdout, result.stderr))
        rules = "NAME = AFF, secret=crm_2\nNO = NID, secret=crm\n"
        self.write("rules.txt", rules)
        result = self.run_with("--secrets", "secrets.txt", KORV_SECRET_CRM_2=HEX)
        self.assertEqual((0, expected), (result.returncode, result.stdout))

    def test_a_name_is_given_once(self):
        self.prepare()
        self.write_secrets(f"crm = {HEX}\n")
        self.assert_refused("the secret crm is given twice", "--secrets", "secrets.txt",
                            KORV_SECRET_CRM=HEX)

    def test_variables_that_are_refused(self):
        self.prepare()
        for name in ("KORV_SECRET_crm", "KORV_SECRET_Crm", "KORV_SECRET_", "KORV_SECRET_1A",
                     "KORV_SECRET_A-B", "KORV_SECRET_Ä", "KORV_SECRET_" + "A" * 65):
            self.assert_refused("KORV_SECRET_ needs the name of a secret in capitals",
                                **{name: HEX})
        for value in ("", "x", HEX[:30], HEX * 3, HEX + "\n", " " + HEX, "crm = " + HEX,
                      BASE64[:-1]):
            self.assert_refused("KORV_SECRET_CRM: a secret must be 16 to 64 bytes",
                                KORV_SECRET_CRM=value)
        # Other variables are no secrets.
        self.assert_refused("there is no secret crm", KORV_SECRETCRM=HEX, KORV_SECRETS_CRM=HEX)

    def test_a_variable_that_no_rule_needs_does_no_harm(self):
        self.prepare("* = KEEP\n")
        result = self.run_with(KORV_SECRET_CRM=HEX)
        self.assertEqual((0, ROWS.encode()), (result.returncode, result.stdout))

    def test_a_provider_does_not_find_it(self):
        self.prepare("NAME = KEYED, secret=crm, variable=KORV_SECRET_CRM\n"
                     "NO = KEYED, secret=crm, variable=HOME\n",
                     "NAME,NO\nenvironment,environment\n")
        result = self.run_with("--providers", BROKEN_PROVIDERS, "--jobs", "3", HOME="/",
                               KORV_SECRET_CRM=HEX)
        self.assertEqual((0, b"NAME,NO\ngone,found\n"), (result.returncode, result.stdout))

    def test_it_is_overwritten_in_the_process(self):
        """Also for those who may look at the memory that the process began with."""
        self.prepare("NAME = AFF, secret=crm\n")
        # It waits for its input.
        with subprocess.Popen([PROGRAM, "-r", "rules.txt"], cwd=self.folder, stdin=subprocess.PIPE,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              env={**os.environ, "KORV_SECRET_CRM": HEX, "MARK": "x"}) as process:
            end = time.monotonic() + TIMEOUT
            environment = HEX.encode()
            while HEX.encode() in environment and time.monotonic() < end:
                time.sleep(0.01)
                try:
                    with open(f"/proc/{process.pid}/environ", "rb") as file:
                        environment = file.read()
                except PermissionError:
                    environment = b"MARK=x"  # even better
            process.kill()
        self.assertIn(b"MARK=x", environment)
        self.assertNotIn(HEX.encode(), environment)


class NewSecretTest(CommandTest):
    def new(self, name):
        result = self.run_program("--new-secret", name)
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        return result.stdout.decode()

    def test_the_line(self):
        for name in ("crm", "a", "a_1", "x" * 64):
            self.assertRegex(self.new(name), rf"\A{name} = [0-9a-f]{{64}}\n\Z")

    def test_each_is_another(self):
        lines = {self.new("crm") for _ in range(20)}
        self.assertEqual(20, len(lines))
        # Nor are their digits alike: fair ones reach this less than once in 10**9 runs.
        counts = [sum(line[6 + place] == digit for line in lines)
                  for place in range(64) for digit in "0123456789abcdef"]
        self.assertLess(max(counts), 14)

    def test_it_is_good_for_use(self):
        secrets = self.write_secrets(self.new("crm") + self.new("other"))
        run = self.mask(ROWS, RULES, "--secrets", secrets, expect=0)
        self.assertNotEqual(ROWS.encode(), run.out)

    def test_names_that_are_refused(self):
        for name in ("Crm", "1a", "a-b", "a b", "ä", "_a", "x" * 65, "a=b"):
            result = self.run_program("--new-secret", name)
            self.assertEqual((2, b""), (result.returncode, result.stdout), name)
            self.assertRegex(result.stderr, rb"\Akorv-mask: --new-secret: [^\n]+\n\Z")

    def test_a_full_disk_is_said(self):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([PROGRAM, "--new-secret", "crm"], stdout=full,
                                    stderr=subprocess.PIPE, check=False)
        self.assertEqual((2, b"korv-mask: cannot write to standard output\n"),
                         (result.returncode, result.stderr))


class ReportsTest(SecretsTest):
    """What is said about secrets and methods."""
    MIXED = ("NAME = AFF, secret=crm\nNO = NID, method=transpose, key=3\nMAIL = DROP\n"
             "CITY = LKP, file=cities.txt\nDAY = AGE, secret=crm, scope=days, range=1..9\n")
    MIXED_ROWS = "NAME,NO,MAIL,CITY,DAY\nJohn,12,x@y,Berlin,2020-01-01\nAnna,-,,,none\n"

    def mask_mixed(self, *arguments):
        self.write("cities.txt", "berlin = Hamburg\n")
        secrets = self.write_secrets(f"crm = {HEX}\n")
        return self.mask(self.MIXED_ROWS, self.MIXED, "--secrets", secrets, *arguments, expect=1)

    def test_summary(self):
        run = self.mask_mixed()
        self.assertEqual(
            [{"method": "ff1", "secret": "crm", "fingerprint": FINGERPRINT},
             {"method": "transpose", "disguise": True}, {}, {},
             {"method": "range", "secret": "crm", "fingerprint": FINGERPRINT}],
            [{name: column[name] for name in ("method", "disguise", "secret", "fingerprint")
              if name in column} for column in run.summary["columns"]])

    def test_page(self):
        self.mask_mixed("--html", "page.html")
        page = self.contents("page.html").decode()
        for text in (f"AFF, method ff1, secret crm {FINGERPRINT}",
                     "NID, method transpose, a disguise"):
            self.assertIn(text, page)

    def test_no_secret_anywhere(self):
        for arguments in ((), ("--jobs", "1"), ("--jobs", "4")):
            run = self.mask_mixed("--html", "page.html", "--progress", "always", *arguments)
            texts = [run.report, run.messages, run.raw_summary.decode(), run.out.decode(),
                     self.contents("page.html").decode("latin-1"), run.stdout.decode()]
            for option in (("--check",), ("--diff", "9"), ("--diff", "9", "--show-clear"),
                           ("--suggest",), ("--list-providers",), ("--help",)):
                result = self.run_with("--secrets", "secrets.txt", *option)
                texts.append((result.stdout + result.stderr).decode())
            self.assert_hidden(*texts)

    def check(self, rules, *arguments, secrets=f"crm = {HEX}\nweb = {'11' * 16}\n"):
        """The warnings of --check, and the lines about columns."""
        names = re.findall(r"(?m)^(\w+) =", rules)
        self.write("rules.txt", rules)
        self.write("in.csv", ",".join(names) + "\n")
        self.write_secrets(secrets)
        result = self.run_with("--secrets", "secrets.txt", "--check", *arguments)
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        lines = result.stdout.decode().splitlines()
        warnings = [line for line in lines if line.startswith("warning: ")]
        self.assertEqual(warnings, lines[len(names):])
        return warnings, lines[:len(names)]

    def test_check_names_methods_and_secrets(self):
        warnings, lines = self.check("A = CCN, secret=crm\nB = LKP, file=rules.txt\nC = KEEP\n")
        self.assertEqual([], warnings)
        self.assertRegex(lines[0], rf"\A1  A: masked by CCN, method ff1, secret crm {FINGERPRINT} ")
        self.assertRegex(lines[1], r"\A2  B: masked by LKP \(")
        self.assertRegex(lines[2], r"\A3  C: kept in clear \(")

    def test_check_warns_of_disguises(self):
        warnings, lines = self.check("A = CCN, method=transpose, key=1\nB = NID, secret=crm\n"
                                     "C = COL, method=reverse\n")
        self.assertEqual(
            [f"warning: column {column}, method {method}, is a disguise, which can be undone "
             "without a secret" for column, method in (("A: CCN", "transpose"),
                                                       ("C: COL", "reverse"))], warnings)
        self.assertIn("method transpose, a disguise", lines[0])

    def test_check_warns_of_different_operands(self):
        for rules in ("A = NID, secret=crm\nB = NID, secret=crm, prefix=1\n",
                      "A = EML, secret=crm\nB = EML, secret=crm, method=ff1\n",
                      "A = AGE, secret=crm, range=1..2\nB = AGE, secret=crm, range=1..3\n",
                      "A = NID, secret=crm, scope=x, letters\nB = NID, secret=crm, scope=x\n"):
            warnings, _ = self.check(rules)
            provider = rules.split()[2].strip(",")
            self.assertEqual(
                [f"warning: columns A and B share the secret crm and the provider {provider} and "
                 "differ in operands: equal values are masked differently"], warnings)

    def test_check_does_not_warn_without_need(self):
        for rules in ("A = NID, secret=crm\nB = NID, secret=crm\n",
                      "A = NID, secret=crm, country=us\nB = NID, secret=crm\n"
                      "C = NID, secret=crm, country=uk\n",
                      "A = CCN, secret=crm, strict\nB = CCN, secret=crm\n",
                      "A = NID, secret=crm, scope=x\nB = NID, secret=crm, prefix=1\n",
                      "A = NID, secret=crm\nB = NID, secret=web, prefix=1\n",
                      "A = NID, secret=crm, prefix=1\nB = CCN, secret=crm, prefix=2\n",
                      "A = NID, secret=crm, prefix=1, last=2\n"
                      "B = NID, secret=crm, last=2, prefix=1\n",
                      "A = NID, secret=crm, on-error=null, unique\nB = NID, secret=crm\n",
                      "A = COL, secret=crm\nB = AFF, secret=crm\n"):
            self.assertEqual([], self.check(rules)[0], rules)


class FlagsTest(SecretsTest):
    def test_strict(self):
        self.prepare("NAME = AFF, secret=crm\nNO = NID, method=transpose, key=1\n")
        self.write_secrets(f"crm = {HEX}\n")
        self.assert_refused("rules.txt:2:6: method transpose is a disguise, which --strict refuses",
                            "--secrets", "secrets.txt", "--strict")
        self.assertEqual(0, self.run_with("--secrets", "secrets.txt").returncode)
        self.prepare()
        self.assertEqual(0, self.run_with("--secrets", "secrets.txt", "--strict").returncode)

    def test_unique(self):
        secrets = self.write_secrets(f"crm = {HEX}\n")
        rows = "A\nab@c.example\n"
        for rule in ("EML, secret=crm", "EML, secret=crm, method=ff1", "AFF, secret=crm"):
            self.mask(rows, f"A = {rule}, unique\n", "--secrets", secrets, expect=0)
        for rule in ("HASH, secret=crm, list=a;b", "EML, secret=crm, length=13",
                     "EML, method=transpose, key=1", "LKP, file=rules.txt"):
            run = self.mask(rows, f"A = {rule}, unique\n", "--secrets", secrets, expect=2)
            self.assertIn("UNIQUE is demanded", run.messages)

    def test_unmask_gives_the_file_back(self):
        rules = ("NAME = AFF, secret=crm\nNO = NID, secret=crm, prefix=1\nCARD = CCN, secret=crm\n"
                 "MAIL = EML, secret=crm, method=ff1\nID = KEEP\n")
        rows = ("NAME,NO,CARD,MAIL,ID\r\n" +
                'John,12345,"4556-7375-8689-9855",Jo.Doe@X.Example,1\r\n'
                '"Smith, ""Jo""",987-654,,joe@y.example,2\r\n' * 20000)
        secrets = self.write_secrets(f"crm = {HEX}\n")
        masked = self.mask(rows, rules, "--secrets", secrets, expect=0)
        self.assertNotIn(b"John", masked.out)
        for jobs in ("1", "3"):
            clear = self.mask(masked.out, rules, "--secrets", secrets, "--unmask", "--jobs", jobs,
                              expect=0)
            self.assertTrue(rows.encode() == clear.out)
        other = self.write_secrets(f"crm = {'00' * 32}\n")
        wrong = self.mask(masked.out, rules, "--secrets", other, "--unmask", expect=0)
        self.assertNotIn(b"John", wrong.out)

    def test_unmasked_values_are_shown_on_demand_only(self):
        secrets = self.write_secrets(f"crm = {HEX}\n")
        masked = self.mask("NO\n123456789\n", "NO = NID, secret=crm\n", "--secrets", secrets, expect=0)
        self.write("masked.csv", masked.out)
        arguments = ("masked.csv", "-r", "rules.txt", "--secrets", secrets, "--unmask", "--diff", "1")
        refused = self.run_program(*arguments)
        self.assertEqual((2, b""), (refused.returncode, refused.stdout))
        self.assertIn(b"add --show-clear", refused.stderr)
        self.assertIn(b"123456789", self.run_program(*arguments, "--show-clear").stdout)

    def test_unmask_refuses_what_cannot_be_reversed(self):
        self.write("list.txt", "a = b\n")
        secrets = self.write_secrets(f"crm = {HEX}\n")
        for rule in ("HASH, secret=crm, list=a;b", "EML, secret=crm", "AGE, secret=crm, range=1..2",
                     "LKP, file=list.txt", "NID, method=transpose, key=1", "AFF, method=reverse",
                     "DROP", "NULL", "CONST, value=x"):
            run = self.mask("A\n1\n", f"A = {rule}\n", "--secrets", secrets, "--unmask", expect=2)
            self.assertRegex(run.messages, r"\Arules\.txt:1:5: .*cannot be reversed")
            self.assertIsNone(run.out)


class WithoutLibcryptoTest(CommandTest):
    @unittest.skipIf(has_secrets(), "the program is built with libcrypto")
    def test_rules_with_a_secret_are_refused(self):
        self.write("secrets.txt", f"crm = {HEX}\n")
        os.chmod(self.path("secrets.txt"), 0o600)
        self.assert_not_run(r"\Arules\.txt:1:\d+: .*libcrypto", ROWS, RULES, "--secrets",
                            "secrets.txt", "--providers", PROVIDERS)


main()
