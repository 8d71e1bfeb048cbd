"""The program korv-provider: options, exit statuses, output, and modules that misbehave."""
import os
import re
import shutil
import subprocess

from command import BROKEN, LIBRARIES, PROGRAM, ROOT, SOUND, KitTest, check, defects, main, run

RULE = "BROKEN_NONE, method=plain, key=17"


class InformationTest(KitTest):
    def test_the_list_has_every_test_with_its_level_and_purpose(self):
        result = run("check", "--list")
        self.assert_status(0, result)
        lines = result.out.splitlines()
        self.assertGreaterEqual(len(lines), 40)
        titles = []
        for line in lines:
            match = re.match(r"((\d+)\.(\d+) [a-z0-9-]+) +level +(\d+), [a-z ]+: \S.{10,}", line)
            self.assertIsNotNone(match, line)
            self.assertEqual(match.group(2), match.group(4))
            titles.append(match.group(1))
        self.assertEqual(len(titles), len(set(titles)))
        # Every test has a defect that it finds.
        self.assertEqual(set(titles), {title for title, _, _ in defects()})

    def test_the_page_of_rules_has_every_number(self):
        page = os.path.join(ROOT, "docs", "guides", "provider_rules.md")
        with open(page, encoding="utf-8") as file:
            text = file.read()
        for line in run("check", "--list").out.splitlines():
            title = " ".join(line.split()[:2])
            self.assertIn(f"**{title}**", text)

    def test_the_manual_names_every_option(self):
        with open(os.path.join(ROOT, "tools/korv-provider/korv-provider.1"),
                  encoding="utf-8") as file:
            manual = file.read().replace("\\-", "-")
        for command in ("check", "inspect"):
            options = set(re.findall(r"--[a-z][a-z-]+", run(command, "--help").out))
            self.assertGreater(len(options), 2)
            self.assertEqual(set(), options - set(re.findall(r"--[a-z][a-z-]+", manual)))

    def test_inspect(self):
        result = run("inspect", SOUND)
        self.assert_status(0, result)
        for part in ("KorvProviderEntry", "BROKEN_NONE", "key KEY", "minimum 1; maximum 9999",
                     "required", "a forbidden character", "one-to-one", "libKORVSupport.so.21",
                     "Executable stack      no", "with a secret"):
            self.assertIn(part, result.out)

    def test_inspect_as_json(self):
        result = run("inspect", SOUND, "--json")
        self.assert_status(0, result)
        document = result.document
        self.assertEqual(["KorvProviderEntry"], document["file"]["exports"])
        self.assertIn(document["file"]["wordSize"], (32, 64))
        self.assertFalse(document["file"]["executableStack"])
        self.assertEqual([["BROKEN_NONE", "3"]], [[provider["name"], provider["interfaceVersion"]]
                                                  for provider in document["provider"]])
        self.assertEqual(["KEY", "TEXT", "PER", "STRICT"],
                         [operand["key"] for operand in document["operands"]])
        self.assertEqual(6, len(document["errors"]))
        self.assertEqual("one-to-one, length kept, format kept, reversible",
                         document["sampleRules"][0]["promises"])

    def test_inspect_survives_modules_that_crash_or_have_no_tables(self):
        for defect in ("entry_null", "missing_symbol", "refuses_rule", "version_99"):
            result = run("inspect", os.path.join(BROKEN, f"broken_{defect}.so"))
            self.assertIn(result.status, (0, 1))
            self.assertIn("Word size", result.out)


class StatusTest(KitTest):
    def test_what_cannot_be_run(self):
        for arguments, message in (
                (["check"], "FILE"), ([], "subcommand"), (["check", SOUND, "--level", "11"], "level"),
                (["check", SOUND, "--odd"], "--odd"),
                (["check", "/no/such/module.so"], "No such file"),
                (["check", SOUND, "--only", "("], "regular expression"),
                (["check", SOUND, "--only", "nothing-like-it"], "no test"),
                (["check", SOUND, "--values", "/no/such/file"], "No such file"),
                (["check", SOUND, "--replay", "/no/such/file"], "No such file"),
                (["check", SOUND, "--level", "1", "--record", "/no/such/folder/file"],
                 "No such file"),
                (["inspect", "/no/such/module.so"], "No such file")):
            result = run(*arguments)
            self.assert_status(2, result)
            self.assertIn(message, result.err)
            self.assertEqual("", result.out)

    def test_a_file_that_is_no_provider_is_a_finding(self):
        with open(SOUND, "rb") as file:
            sound = file.read()
        for contents in (b"", b"hello\n", sound[:3000], sound[:100], b"\x7fELF" + bytes(60)):
            path = self.write("module.so", contents)
            result = check(path)
            self.assert_status(1, result)
            self.assertRegex(result.out, r"module\.so: 1\.\d+ [a-z-]+: .+\n")
        result = check(os.path.join(LIBRARIES, "libKORVSupport.so.21"), "--level", 1)
        self.assert_status(1, result)
        self.assertIn("1.3 entry-only: it does not export KorvProviderEntry", result.out)

    def test_changed_modules_crash_nothing(self):
        with open(SOUND, "rb") as file:
            sound = file.read()
        for at in range(16, 1024, 61):
            path = self.write("broken_none.so", sound[:at] + b"\xff" + sound[at + 1:])
            self.assertIn(check(path, "--level", 1, "--skip", "reloading").status, (0, 1, 2))

    def test_without_a_helper_of_the_word_size(self):
        alone = os.path.join(self.folder, "bin")
        os.mkdir(alone)
        program = shutil.copy(PROGRAM, alone)
        environment = dict(os.environ, LD_LIBRARY_PATH=LIBRARIES)
        result = subprocess.run([program, "check", SOUND], capture_output=True, text=True,
                                check=False, env=environment)
        self.assertEqual(2, result.returncode)
        self.assertRegex(result.stderr, r"no helper korv-provider-run\d\d; install the \d\d-bit")
        # The helper of the build, named by an option.
        bits = run("inspect", SOUND, "--json").document["file"]["wordSize"]
        helper = os.path.join(os.path.dirname(PROGRAM), f"korv-provider-run{bits}")
        result = subprocess.run([program, "check", SOUND, "--level", "1", "--helper", helper],
                                capture_output=True, text=True, check=False, env=environment)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)

    def test_the_helper_alone_says_who_starts_it(self):
        for bits in (32, 64):
            helper = os.path.join(os.path.dirname(PROGRAM), f"korv-provider-run{bits}")
            if os.path.exists(helper):
                result = subprocess.run([helper, SOUND], capture_output=True, text=True,
                                        check=False, stdin=subprocess.DEVNULL)
                self.assertEqual(2, result.returncode)
                self.assertIn("started by korv-provider", result.stderr)


class CheckTest(KitTest):
    def test_levels_and_patterns_choose_tests(self):
        def numbers(*arguments):
            document = check(SOUND, "--json", "--rule", RULE, *arguments).document
            return [test["number"] for test in document["tests"]]

        self.assertEqual({"1"}, {number.split(".")[0] for number in numbers("--level", 1)})
        self.assertEqual({"1", "2"}, {number.split(".")[0] for number in numbers("--level", 2)})
        self.assertEqual(["4.6", "4.7"], numbers("--level", 4, "--only", "target-(exact|short)"))
        self.assertNotIn("1.9", numbers("--level", 1, "--skip", "^1.9 "))

    def test_json(self):
        path = os.path.join(BROKEN, "broken_other_name.so")
        result = check(path, "--json", "--level", 2)
        self.assert_status(1, result)
        document = result.document
        self.assertEqual(path, document["module"])
        self.assertEqual(1, document["status"])
        found = [test for test in document["tests"] if test["verdict"] == "found"]
        self.assertEqual(["provider-name", "sample-rules"], [test["name"] for test in found])
        self.assertEqual(document["findings"], sum(len(test["findings"]) for test in found))

    def test_sample_rules_are_used_when_no_rule_is_given(self):
        result = check(SOUND, "--json", "--only", "rule-opens")
        self.assertEqual([RULE, "BROKEN_NONE, method=plain, key=5, text=abc, per=ID, strict"],
                         result.document["rules"])

    def test_a_rule_that_is_refused_is_found(self):
        for rule in ("BROKEN_NONE, method=plain", "BROKEN_NONE", "AFF, method=reverse", ",",
                     "BROKEN_NONE, method=plain, key=17, odd=1"):
            result = check(SOUND, "--level", 4, "--only", "rule-opens|null", "--rule", rule)
            self.assert_status(1, result)
            self.assertIn(": 3.1 rule-opens: ", result.out)
            # Without that test, nothing was tested.
            self.assert_status(2, check(SOUND, "--level", 4, "--only", "null", "--rule", rule))

    def test_a_crash_names_the_rule_and_the_value(self):
        result = check(os.path.join(BROKEN, "broken_one_character.so"), "--level", 4, "--only",
                       "one-character")
        self.assertRegex(result.out, r"4\.3 one-character: it crashed with the signal SIGSEGV while "
                                     r"masking the character .*, with the rule 'BROKEN_ONE_CHAR")

    def test_a_hang_is_ended_at_the_time_limit(self):
        result = check(os.path.join(BROKEN, "broken_slow_value.so"), "--level", 10, "--only",
                       "10.5", "--timeout", 1, "--rule",
                       "BROKEN_SLOW_VALUE, method=plain, key=17")
        self.assert_status(1, result)
        self.assertIn("it was ended at the time limit while masking", result.out)

    def test_values_of_a_file_are_named_by_their_line(self):
        values = self.write("values.txt", "Sesame 1\n\nvalue#2\r\n")
        result = check(os.path.join(BROKEN, "broken_result_beyond.so"), "--level", 4, "--only",
                       "result-valid", "--values", self.write("v.txt", "Zx-Qy\nOpenX\n"))
        self.assertIn("with line 1 of the file of values", result.out)
        for secret in ("Zx-Qy", "OpenX"):
            self.assertNotIn(secret, result.out + result.err)
        self.assert_status(0, check(SOUND, "--level", 4, "--only", "values-accepted", "--values",
                                    values))

    def test_values_that_are_no_text_are_refused(self):
        values = self.write("values.txt", b"\xff\xfe\n")
        result = check(SOUND, "--level", 4, "--only", "ascii", "--values", values)
        self.assertIn(result.status, (1, 2))
        self.assertIn("is not UTF-8 text", result.out + result.err)

    def test_vectors(self):
        vectors = os.path.join(self.folder, "vectors.txt")
        self.assert_status(0, check(SOUND, "--level", 1, "--record", vectors, "--rule", RULE))
        with open(vectors, encoding="utf-8") as file:
            text = file.read()
        self.assertGreater(text.count("\n"), 100)
        result = check(SOUND, "--level", 9, "--only", "^9", "--replay", vectors, "--rule", RULE)
        self.assert_status(0, result)
        changed = self.write("changed.txt", text.replace("\tmasked 5", "\tmasked 6"))
        result = check(SOUND, "--level", 9, "--only", "^9", "--replay", changed, "--rule", RULE)
        self.assert_status(1, result)
        self.assertRegex(result.out, r"9\.2 vectors-replayed: the result is not the recorded one, "
                                     r"with the value in line \d+ of the vectors")
        result = check(SOUND, "--level", 9, "--only", "^9", "--replay", vectors, "--rule",
                       "BROKEN_NONE, method=plain, key=18")
        self.assert_status(1, result)

    def test_a_seed_repeats_a_finding(self):
        module = os.path.join(BROKEN, "broken_unmask_crash.so")
        arguments = ("--level", 10, "--only", "fuzz-unmask", "--seed", 77, "--rule",
                     "BROKEN_UNMASK_CRASH, method=plain, key=17")
        first, second = (check(module, *arguments) for _ in range(2))
        self.assert_status(1, first)
        self.assertIn("of --seed 77", first.out)
        self.assertEqual(first.out, second.out)

    def test_without_rules_it_says_so(self):
        lookup = os.path.join(LIBRARIES, "korv-providers", "libkorvprv_lkp.so")
        result = check(lookup, "--level", 3, "--skip", "safe-search-path")
        self.assert_status(0, result)
        self.assertIn("no rule was tested: the module has no sample rules; give --rule", result.out)


main()
