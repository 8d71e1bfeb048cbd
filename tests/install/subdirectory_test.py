"""A project takes the sources in by add_subdirectory."""
from installation import CONSUMERS, SOURCE, InstallationTest, main


class SubdirectoryTest(InstallationTest):
    def test_the_parent_stays_as_it_was_and_uses_the_libraries(self):
        output = self.configure(CONSUMERS / "subdirectory", "build", f"-DKORV_SOURCE={SOURCE}")
        self.assertNotIn("Warning", output)
        build = self.folder / "build"
        self.run_command("cmake", "--build", build)
        self.check_use(build / "use")
        self.assertEqual({"libKORVSupport.so.21", "libKORVSupport.so", "libKORVDataCnvLib.so",
                          "libKORVSupport.so.21-gdb.py", "korv_lines.py", "korv_values.py"},
                         self.files(build / "korv/lib"))
        self.run_command("cmake", "--install", build, "--prefix", self.prefix)
        self.assertEqual({"share/doc/parent/README.md"}, self.files(self.prefix))

    def test_what_is_installed_leaves_the_files_of_the_parent(self):
        self.configure(CONSUMERS / "subdirectory", "build", f"-DKORV_SOURCE={SOURCE}", "-DKORV_INSTALL=ON")
        self.run_command("cmake", "--build", self.folder / "build")
        self.run_command("cmake", "--install", self.folder / "build", "--prefix", self.prefix)
        documents = self.prefix / "share/doc"
        self.assertEqual((CONSUMERS / "subdirectory/CMakeLists.txt").read_text(),
                         (documents / "parent/README.md").read_text())
        self.assertEqual((SOURCE / "SECURITY.md").read_text(),
                         (documents / "korv-support/SECURITY.md").read_text())


main()
