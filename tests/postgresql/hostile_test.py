"""Hostile rules, failing values and broken providers: no backend ends that has not been told to, and
nothing shows a value."""
import random
import re

from server import BUILD, Failed, ServerTest, main

VALUE = "4556737586899855"
HOSTILE_RULES = [
    "", " ", ",", "=", "\"", "\\", "#", "*", "?", "@1", "CCN", "CCN,", "CCN, secret", "CCN, secret=",
    "CCN, secret==crm", "CCN, secret=crm, secret=crm", "CCN, secret=crm, secret=payroll",
    "CCN, secret=../secrets", "CCN, secret=" + "a" * 65, "CCN, secret=" + "0f" * 32,
    "CCN, secret=CRM", "CCN, secret=crm\x01", "CCN, secret=crm\n", "CCN\r\nX = KEEP", "\x1b[31mCCN",
    "X = KEEP", "KEEP = KEEP", "KEEP, value=x", "KEEP KEEP", "CONST", "CONST, value", "DROP, x=1",
    "NULL, on-error=null", "../CCN", "/bin/sh", "libkorvprv_ccn.so", "ccn/../ccn", "C" * 1000,
    "CCN, method=transpose, key=9999999999999999999", "CCN, method=transpose, key=-1",
    "CCN, method=transpose", "CCN, method=nothing, secret=crm", "CCN, secret=crm, prefix=999999999",
    "CCN, secret=crm, type=narrow", "CCN, secret=crm, scope=\"", "CCN, secret=crm, unknown=1",
    "CCN, secret=crm, on-error=const", "CCN, secret=crm, on-error=x",
    "EML, secret=crm, length=999999999", "EML, secret=crm, domain=@", "AGE, secret=crm",
    "AGE, secret=crm, range=1..", "AGE, secret=crm, range=-999999999..999999999",
    "AGE, secret=crm, range=-9..9, per=", "AGE, secret=crm, range=-9..9, format=YYYY",
    "AGE, method=move, days=999999999", "HASH, secret=crm", "HASH, secret=crm, list=",
    "HASH, secret=crm, list=" + ";" * 10000, "HASH, secret=crm, file=/etc/shadow",
    "HASH, secret=crm, file=/proc/self/environ", "HASH, secret=crm, file=/dev/zero",
    "HASH, secret=crm, file=../secrets.txt", "HASH, secret=crm, file=link",
    "HASH, secret=crm, file=fifo", "HASH, secret=crm, file=.", "HASH, secret=crm, file=",
    "LKP, file=bad.txt", "LKP", "LKP, file=" + "../" * 5000 + "etc/passwd",
    "%s%n%p", "$$", "';DROP TABLE t;--", "CCN, secret=crm, scope=%n%n", "\u202eCCN", "Ⅽ, secret=crm",
    "x" * 1_000_000, "CCN, secret=crm, scope=" + "x" * 1_000_000, "KEEP" + ", a=b" * 200_000,
    "CCN, secret=crm" + ", strict" * 100_000, "\"" * 1_000_000, "CONST, value=" + "x" * 1_000_000,
]
STATES = r"  (KV00[1-4]|42\w{3}|53200|54000|22\w{3}): "
# Whatever these do to a text, it is not a value of the table.
OVERRUNS = ("overrun", "overrun_64", "overrun_error", "overrun_null", "batch_overrun",
            "batch_overrun_left")


def literal(text):
    return "'" + text.replace("'", "''") + "'"


class HostileTest(ServerTest):
    settings = (f"korv.provider_folders = '{BUILD}/lib/broken-providers, "
                f"{BUILD}/lib/korv-providers'", "log_min_messages = debug1")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        lookups = cls.server.lookups
        (lookups / "link").symlink_to(cls.server.secrets)
        cls.server.run("/usr/bin/mkfifo", lookups / "fifo")
        (lookups / "bad.txt").write_bytes(b"no separator\n\xff\xfe = \x00\n")
        cls.server.psql(f"CREATE TABLE t (v text, other text); INSERT INTO t VALUES ('{VALUE}', 'b')")

    def session(self, statements, **options):
        """What psql writes for statements of which any may fail, in one session that must not end."""
        script = "\n".join(("SELECT pg_backend_pid();", *statements, "SELECT pg_backend_pid();"))
        done = self.server.psql(script, keep_errors=True, **options)
        pids = [line for line in done.splitlines() if re.fullmatch(r"\d+", line)]
        self.assertEqual(2, len(pids), done[-2000:])
        self.assertEqual(pids[0], pids[1])
        return done

    def assert_no_crash(self):
        log = self.server.log.read_text(encoding="utf-8", errors="replace")
        self.assertNotRegex(log, "terminated by signal|PANIC")
        self.assertNotIn(VALUE, re.sub(r"INSERT INTO t.*", "", log))

    def test_a_session_survives_every_rule(self):
        rng = random.Random(1)
        rules = list(HOSTILE_RULES)
        good = "AGE, secret=crm, range=-30..30, per=ID, format=YYYY-MM-DD, scope=\"a, b\""
        for _ in range(300):
            place = rng.randrange(len(good))
            rules.append(good[:place] + chr(rng.choice((*range(1, 128), 0xE9, 0x20AC, 0x1F600)))
                         + good[place + rng.randrange(2):])
        for rule in rules:
            text = literal(rule)
            with self.subTest(rule=rule[:60]):
                done = self.session((
                    "SET korv.on_error = 'error';", f"SELECT 'r:' || korv.mask(v, {text}) FROM t;",
                    f"SELECT 'r:' || korv.mask(v, {text}, 'x') FROM t;",
                    f"SECURITY LABEL FOR korv ON COLUMN t.v IS {text};",
                    "SELECT problem FROM korv.check('t');", "SELECT korv.masked_select('t');"))
                for line in done.splitlines():
                    if "ERROR:" in line:
                        self.assertRegex(line, STATES)
                if not re.match("KEEP$|CONST", rule):
                    self.assertNotIn(VALUE, re.sub(r"LINE \d+:.*", "", done))
                self.assertNotIn("root:", done)
        self.assert_no_crash()

    def test_every_rule_that_is_refused_as_a_value_is_refused_as_a_label(self):
        for rule in ("CCN", "CCN, secret=crm\n", "X = KEEP", "HASH, secret=crm, file=/etc/shadow"):
            self.assert_fails("KV001", f"SELECT korv.mask('a', {literal(rule)})")
            self.assert_fails("KV001", f"SECURITY LABEL FOR korv ON COLUMN t.v IS {literal(rule)}")

    def test_long_values(self):
        done = self.session((
            "SELECT 'length ' || length(korv.mask(repeat('x', 20000000), 'KEEP'));",
            "SELECT korv.mask(repeat('1', 20000000), 'CCN, secret=crm');",
            "SELECT korv.mask(repeat('1', 200000000), 'AFF, secret=crm');"))
        self.assertIn("length 20000000", done)
        self.assertEqual(2, len(re.findall(r"ERROR:  KV002: ", done)))
        self.assert_no_crash()

    def test_a_session_survives_broken_providers(self):
        names = sorted(path.stem for path in (BUILD / "lib/broken-providers").glob("*.so"))
        self.assertGreater(len(names), 40)
        for name in names:
            defect = name.removeprefix("broken_")
            if defect in OVERRUNS or defect == "crash":
                continue
            with self.subTest(name=name):
                self.session(f"SET korv.on_error = '{on_error}'; "
                             f"SELECT length(korv.mask(v, '{name}, method=x')), "
                             f"length(korv.mask(v, '{name}')) FROM "
                             "(VALUES ('good 1'), ('Anna Blume'), ('Zoë Blume'), ('good 2')) AS t (v);"
                             for on_error in ("error", "null"))
        self.assert_no_crash()

    def test_a_provider_that_fails_costs_the_value(self):
        for defect in ("length", "target", "no_result", "surrogate", "zero", "no_record"):
            message = self.assert_fails("KV002", "SELECT korv.mask(v, 'BROKEN_" + defect + "') FROM "
                                        "(VALUES ('good'), ('Anna Blume')) AS t (v)")
            self.assertNotIn("Anna Blume", message.replace("('Anna Blume')", ""))
        self.assert_fails("KV003", "SELECT korv.mask('a', 'BROKEN_NO_SYMBOL')")

    def test_an_overrun_ends_the_session_and_not_the_server(self):
        start = self.server.psql("SELECT pg_postmaster_start_time()")
        for defect in OVERRUNS:
            with self.subTest(defect=defect):
                with self.assertRaises(Failed) as raised:
                    self.server.psql(f"SELECT korv.mask(v, 'BROKEN_{defect}') FROM "
                                     "(VALUES ('good'), ('Anna Blume'), ('Zoë Blume')) AS t (v)")
                self.assertRegex(str(raised.exception), r"FATAL:  KV003: .*wrote past")
        self.assertEqual(start, self.server.psql("SELECT pg_postmaster_start_time()"))
        self.assert_no_crash()


main()
