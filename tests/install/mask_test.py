"""The installed engine, program and providers work together, also in a moved tree, and with consumers
and provider modules that are built against them."""
import pathlib
import re

from installation import (BITS, BUILD, CC, CONSUMERS, ENGINE, FLAGS, LINKED, SOURCE,
                          InstallationTest, main)

TEMPLATES = [SOURCE / "examples" / name for name in ("provider_template", "provider_template_cpp")]
HAS_LIBCRYPTO = "KORV_LIBCRYPTO_LINKS:INTERNAL=1" in (BUILD / "CMakeCache.txt").read_text()


class ProgramTest(InstallationTest):
    def setUp(self):
        super().setUp()
        self.install("runtime", "datacnv", "engine", "mask")

    def check_demo(self, prefix):
        data = prefix / "share/doc/korv-support/examples/data"
        rules = (SOURCE / "tests/korv-mask/disguises.txt").read_text(encoding="utf-8")
        (self.folder / "disguises.txt").write_text(rules.replace("file=", f"file={data}/"),
                                                   encoding="utf-8")
        # Exit status 1: some of the demo's values cannot be masked, on purpose.
        self.run_command(prefix / "bin/korv-mask", "--rules", "disguises.txt",
                         data / "customers.csv", "--output", "out.csv", "--report", "report.txt",
                         status=1)
        stored = SOURCE / "tests/korv-mask/customers.masked.csv"
        self.assertEqual(stored.read_bytes(), (self.folder / "out.csv").read_bytes())

        secrets = self.folder / "secrets.txt"
        secrets.touch(0o600)
        secrets.write_text(self.run_command(prefix / "bin/korv-mask", "--new-secret", "demo"))
        if HAS_LIBCRYPTO:
            self.run_command(prefix / "bin/korv-mask", "--rules", data / "rules.txt", "--secrets",
                             secrets, data / "customers.csv", "--output", "strong.csv",
                             "--report", "report.txt", status=1)
            self.assertEqual(16 + 1, (self.folder / "report.txt").read_text().count("\n"))

    def test_it_masks_the_installed_records(self):
        self.check_demo(self.prefix)

    def test_it_does_so_in_a_moved_tree(self):
        moved = self.folder / "moved"
        self.prefix.rename(moved)
        self.check_demo(moved)

    def test_all_providers_are_installed(self):
        names = re.search(r"set\(provider_names ([a-z ]+)\)",
                          (SOURCE / "providers/CMakeLists.txt").read_text()).group(1)
        self.assertEqual({f"libkorvprv_{name}.so" for name in names.split()},
                         self.files(self.prefix / "lib/korv-providers"))

    def test_no_search_path_has_the_current_folder(self):
        """An empty entry is the current folder: anyone who can write there could replace a library."""
        checked = 0
        for root in (BUILD, self.prefix):
            for file in [*(root / "bin").glob("korv-*"), *root.glob("lib/korv-providers/*.so"),
                         *root.glob("lib/korv/*"), *root.glob("lib/libKORVSupport.so.*[0-9]"),
                         *root.glob("lib/libkorvmask.so.*[0-9]")]:
                shown = self.run_command("readelf", "-d", file)
                for path in re.findall(r"\(R(?:UN)?PATH\).*\[(.*)\]", shown):
                    checked += 1
                    self.assertTrue(all(entry.startswith(("/", "$ORIGIN")) for entry in path.split(":")),
                                    f"{file}: {path}")
        self.assertGreater(checked, 18)

    def test_its_manual_names_every_option(self):
        shown = self.run_command(self.prefix / "bin/korv-mask", "--help")
        options = set(re.findall(r"--[a-z][a-z-]+", shown))
        self.assertGreater(len(options), 4)
        manual = (self.prefix / "share/man/man1/korv-mask.1").read_text().replace("\\-", "-")
        self.assertEqual(set(), options - set(re.findall(r"--[a-z][a-z-]+", manual)))


class ConsumersTest(InstallationTest):
    def setUp(self):
        super().setUp()
        self.install(*ENGINE)

    def check_use(self, program, **environment):
        self.assertEqual(f"2 values masked by CCN, changed, pointers of {BITS // 8} bytes\n",
                         self.run_command(program, **environment))

    def build_by_pkg_config(self, folder, *packages):
        program = self.folder / "use"
        words = self.pkg_config(folder, "--cflags", "--libs", *packages)
        self.run_command(CC, *FLAGS, "-std=c99", "-Wall", "-Wextra", "-Werror",
                         CONSUMERS / "mask.c", *words, "-o", program)
        return program

    def check_both_routes(self, prefix):
        lib = prefix / "lib"
        [folder] = self.pkg_config(lib / "pkgconfig", "--variable=libdir", "korv-mask")
        self.assertEqual(lib, pathlib.Path(folder).resolve())
        self.check_use(self.build_by_pkg_config(lib / "pkgconfig", "korv-mask"),
                       LD_LIBRARY_PATH=lib)
        self.check_use(self.build_by_find_package("build", f"-DCMAKE_PREFIX_PATH={prefix}",
                                                  consumer="mask"))

    def test_c(self):
        self.check_both_routes(self.prefix)

    def test_c_in_a_moved_tree(self):
        moved = self.folder / "elsewhere"
        self.prefix.rename(moved)
        self.check_both_routes(moved)

    def test_providers_from_the_templates(self):
        (self.folder / "rules.txt").write_text("PHONE = DSWAP, at=1\n")
        (self.folder / "clear.csv").write_text("PHONE\n123-45\n\nä89\n1x2\n")
        for template in TEMPLATES:
            build = self.folder / template.name
            self.configure(template, template.name, f"-DCMAKE_PREFIX_PATH={self.prefix}")
            self.run_command("cmake", "--build", build)
            self.run_command(self.prefix / "bin/korv-mask", "--providers", build, "--rules", "rules.txt",
                             "clear.csv", "--output", "masked.csv", "--report", "report.txt", status=1)
            masked = (self.folder / "masked.csv").read_text(encoding="utf-8").replace('""', "")
            self.assertEqual("PHONE\n132-54\n\nä98\n\n", masked)
            self.assertIn("DSWAP error 1, no two neighbouring digits: KORV_TOKID_COLNAME=PHONE "
                          "KORV_TOKID_SRCLEN=3", (self.folder / "report.txt").read_text())
            exported = self.run_command("nm", "-D", "--defined-only", build / "libkorvprv_dswap.so")
            self.assertEqual(["KorvProviderEntry"], [line.split()[-1] for line in exported.splitlines()])


class WithoutTheEngineTest(InstallationTest):
    def test_find_package_says_so_when_it_is_asked_for(self):
        self.install(*LINKED)
        message = self.configure(CONSUMERS / "mask", "build",
                                 f"-DCMAKE_PREFIX_PATH={self.prefix}", fails=True)
        self.assertIn("has no masking engine libkorvmask.so.1", " ".join(message.split()))

    def test_find_package_names_a_component_that_there_is_not(self):
        self.install(*LINKED)
        (self.folder / "asks").mkdir()
        (self.folder / "asks/CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.21)\nproject(asks C)\n"
            "find_package(korv-support REQUIRED COMPONENTS providers)\n")
        message = self.configure(self.folder / "asks", "build",
                                 f"-DCMAKE_PREFIX_PATH={self.prefix}", fails=True)
        self.assertIn("no component providers; the only one is mask", " ".join(message.split()))

    def test_find_package_finds_the_other_libraries(self):
        self.install(*LINKED)
        self.check_use(self.build_by_find_package("build", f"-DCMAKE_PREFIX_PATH={self.prefix}"))


main()
