"""Every deliberately defective provider is found by the test that is named for its defect, at the
level of that test; and the provider without a defect is found sound.

Further arguments: the lowest and the highest level."""
import concurrent.futures
import os
import re
import shutil
import sys

from command import BROKEN, SOUND, KitTest, check, defects, level_of, main

LOWEST, HIGHEST = (int(argument) for argument in sys.argv[4:6])


def has_secrets():
    """Whether rules with a secret can be tested: the helper needs libcrypto."""
    result = check(SOUND, "--level", 3, "--only", "rule-opens", "--rule",
                   "BROKEN_NONE, secret=test, key=17")
    return "libcrypto" not in result.out


def bits():
    with open(SOUND, "rb") as file:
        return {1: 32, 2: 64}[file.read(5)[4]]


class MutantsTest(KitTest):
    def arguments(self, defect, traits):
        name = f"BROKEN_{defect.upper()}"
        if "keyed" in traits:
            return ["--rule", f"{name}, secret=test, key=17"]
        if "golden" in traits:
            vectors = os.path.join(self.folder, "vectors.txt")
            rules = [f"{name}, method=plain, key=17"]
            self.assert_status(0, check(SOUND, "--level", 1, "--record", vectors, "--rule",
                                        rules[0].replace(name, "BROKEN_NONE")))
            with open(vectors, encoding="utf-8", newline="") as file:
                text = file.read()
            self.write("vectors.txt", text.replace("BROKEN_NONE", name))
            return ["--rule", rules[0], "--replay", vectors]
        return []

    def test_each_defect_is_found_by_its_test(self):
        keyed = has_secrets()
        wanted = []
        for title, defect, traits in defects():
            if not LOWEST <= level_of(title) <= HIGHEST:
                continue
            if ("32" in traits and bits() != 32) or ("keyed" in traits and not keyed):
                print(f"left out: {title}: {defect}", flush=True)
                continue
            wanted.append((title, defect, self.arguments(defect, traits)))
        self.assertGreater(len(wanted), 5)

        def run_one(job):
            title, defect, arguments = job
            module = os.path.join(BROKEN, f"broken_{defect}.so")
            return check(module, "--level", level_of(title), "--only", f"^{re.escape(title)}$",
                         "--jobs", 1, *arguments)

        found = 0
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for (title, defect, _), result in zip(wanted, pool.map(run_one, wanted)):
                with self.subTest(defect=defect):
                    self.assert_status(1, result)
                    self.assertIn(f"broken_{defect}.so: {title}: ", result.out)
                    found += 1
        print(f"count: {found} defects found", flush=True)

    def test_the_provider_without_a_defect_is_sound(self):
        rules = ["BROKEN_NONE, method=plain, key=17",
                 "BROKEN_NONE, method=plain, key=5, text=abc, per=ID, strict"]
        if has_secrets():
            rules.append("BROKEN_NONE, secret=test, key=9999")
        vectors = os.path.join(self.folder, "vectors.txt")
        arguments = [part for rule in rules for part in ("--rule", rule)]
        self.assert_status(0, check(SOUND, "--level", 1, "--record", vectors, *arguments))
        result = check(SOUND, "--level", HIGHEST, "--replay", vectors, *arguments)
        self.assert_status(0, result)
        self.assertRegex(result.out, rf"with {len(rules)} rules, 0 findings, 0 not run\n\Z")

    def test_the_tests_of_a_file_need_no_name(self):
        # The same module under another name is found by the test of the name alone.
        other = os.path.join(self.folder, "other.so")
        shutil.copy(SOUND, other)
        result = check(other, "--level", 2)
        self.assert_status(1, result)
        self.assertEqual([": 2.3 provider-name: "],
                         re.findall(r": \d+\.\d+ [a-z-]+: ", result.out))


main()
