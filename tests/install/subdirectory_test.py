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
        self.assertFalse(self.prefix.exists())


main()
