"""The installed korv-provider certifies a module that is built with the installed CMake package."""
from installation import CONSUMERS, ENGINE, SOURCE, InstallationTest, main

TEMPLATE = SOURCE / "examples/provider_template"


class ProviderCheckTest(InstallationTest):
    def build(self, prefix):
        self.configure(CONSUMERS / "provider_check", "build", f"-DCMAKE_PREFIX_PATH={prefix}",
                       f"-DTEMPLATE={TEMPLATE}")
        self.run_command("cmake", "--build", self.folder / "build")

    def check(self, prefix):
        self.build(prefix)
        passed = self.run_command("ctest", "--test-dir", self.folder / "build", "--verbose",
                                  "--tests-regex", "^korv-provider.korvprv_dswap$")
        self.assertIn("DSWAP: level 2, ", passed)
        self.assertIn(" 0 findings, 0 not run", passed)
        # The second rule is refused: one argument, although it has a semicolon.
        failed = self.run_command("ctest", "--test-dir", self.folder / "build", "--verbose",
                                  "--tests-regex", "^korv-provider.korvprv_again$", fails=True)
        self.assertIn("3.1 rule-opens: ", failed)
        self.assertIn("with the rule 'DSWAP, at=1;2'", failed)
        self.assertIn("with 2 rules", failed)

    def test_it_certifies_by_ctest(self):
        self.install(*ENGINE)
        self.check(self.prefix)

    def test_it_does_so_in_a_moved_tree(self):
        self.install(*ENGINE)
        moved = self.folder / "moved"
        self.prefix.rename(moved)
        self.check(moved)

    def test_without_the_program_the_function_says_so(self):
        self.install("runtime", "datacnv", "development")
        message = self.configure(CONSUMERS / "provider_check", "build",
                                 f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DTEMPLATE={TEMPLATE}",
                                 fails=True)
        self.assertIn("needs korv-provider: install the component mask", message)


main()
