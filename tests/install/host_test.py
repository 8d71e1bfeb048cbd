"""The example host runs where it is installed and finds its providers, also in a moved tree."""
import re

from installation import SOURCE, InstallationTest, main

DATA = SOURCE / "examples/mask_csv/data"


class HostTest(InstallationTest):
    def setUp(self):
        super().setUp()
        self.install("runtime", "datacnv", "example")

    def check_host(self, prefix):
        texts = prefix / "share/doc/korv-support/examples/mask_csv/data"
        # Exit status 1: some values cannot be masked, as the records intend.
        self.run_command(prefix / "bin/mask_csv", "--rules", texts / "rules.txt",
                         texts / "customers.csv", "--output", "out.csv", "--report", "report.txt",
                         fails=True)
        stored = SOURCE / "tests/example/customers.masked.csv"
        self.assertEqual(stored.read_bytes(), (self.folder / "out.csv").read_bytes())

    def test_it_masks_the_installed_records(self):
        self.check_host(self.prefix)

    def test_it_does_so_in_a_moved_tree(self):
        moved = self.folder / "moved"
        self.prefix.rename(moved)
        self.check_host(moved)

    def test_its_component_holds_all_providers(self):
        names = re.search(r"set\(provider_names ([a-z ]+)\)",
                          (SOURCE / "examples/mask_csv/CMakeLists.txt").read_text()).group(1)
        self.assertEqual({f"libkorvprv_{name}.so" for name in names.split()},
                         self.files(self.prefix / "lib/korv-providers"))

    def test_its_manual_names_every_option(self):
        shown = self.run_command(self.prefix / "bin/mask_csv", "--help")
        options = set(re.findall(r"--[a-z]+", shown))
        self.assertGreater(len(options), 4)
        manual = (self.prefix / "share/man/man1/mask_csv.1").read_text().replace("\\-", "-")
        self.assertEqual(set(), options - set(re.findall(r"--[a-z]+", manual)))


main()
