"""Consumers build against the installed libraries by every route, and use them."""
import pathlib

from installation import BITS, CC, CONSUMERS, FLAGS, LINKED, VERSION, InstallationTest, main

BOTH = ("korv-support", "korv-datacnv")


class ConsumersTest(InstallationTest):
    def setUp(self):
        super().setUp()
        self.install(*LINKED)
        self.lib = self.prefix / "lib"

    def test_c_by_pkg_config(self):
        for name in BOTH:
            [folder] = self.pkg_config(self.lib / "pkgconfig", "--variable=libdir", name)
            self.assertEqual(self.lib, pathlib.Path(folder).resolve())
        program = self.build_by_pkg_config(self.lib / "pkgconfig", *BOTH)
        self.check_use(program, LD_LIBRARY_PATH=self.lib)

    def test_cxx_by_find_package(self):
        self.check_use(self.build_by_find_package("build", f"-DCMAKE_PREFIX_PATH={self.prefix}"))

    def test_moved_tree(self):
        moved = self.folder / "elsewhere" / "korv"
        moved.parent.mkdir()
        self.prefix.rename(moved)
        program = self.build_by_pkg_config(moved / "lib/pkgconfig", *BOTH)
        self.check_use(program, LD_LIBRARY_PATH=moved / "lib")
        self.check_use(self.build_by_find_package("build", f"-DCMAKE_PREFIX_PATH={moved}"))

    def test_c_that_links_the_support_library_alone(self):
        program = self.build_by_pkg_config(self.lib / "pkgconfig", "korv-support")
        self.check_use(program, LD_LIBRARY_PATH=self.lib)

    def build_loader(self):
        program = self.folder / "load"
        cflags = self.pkg_config(self.lib / "pkgconfig", "--cflags", "korv-support")
        self.run_command(CC, *FLAGS, CONSUMERS / "load.c", *cflags, "-ldl", "-o", program)
        return program

    def test_c_by_dlopen_with_the_companion_beside_the_library(self):
        self.assertEqual("status 0, U+1F600\n",
                         self.run_command(self.build_loader(), self.lib / "libKORVSupport.so.21"))

    def test_another_companion_comes_first_where_the_path_names_it(self):
        names = [line.split()[1] for line in self.exports("datacnv") if line.startswith("function")]
        self.assertGreater(len(names), 10)
        source = self.folder / "theirs.c"
        source.write_text("".join(f"int {name}(void) {{ return 77; }}\n" for name in names))
        theirs = self.folder / "framework"
        theirs.mkdir()
        self.run_command(CC, *FLAGS, "-shared", "-fPIC", source,
                         "-Wl,-soname,libKORVDataCnvLib.so", "-o", theirs / "libKORVDataCnvLib.so")
        self.assertEqual("status 77, U+0\n",
                         self.run_command(self.build_loader(), self.lib / "libKORVSupport.so.21",
                                          LD_LIBRARY_PATH=theirs))


    def test_find_package_refuses_another_major_version(self):
        message = self.configure(CONSUMERS / "find_package", "build", "-DWANTED=2.0",
                                 f"-DCMAKE_PREFIX_PATH={self.prefix}", fails=True)
        self.assertIn('compatible with requested version "2.0"', " ".join(message.split()))


class WithoutTheStandInTest(InstallationTest):
    def test_find_package_says_so(self):
        self.install("runtime", "development")
        message = self.configure(CONSUMERS / "find_package", "build",
                                 f"-DCMAKE_PREFIX_PATH={self.prefix}", fails=True)
        self.assertIn("has no companion library libKORVDataCnvLib.so", " ".join(message.split()))

    def test_find_package_takes_the_companion_that_is_named(self):
        self.install(*LINKED)
        theirs = self.folder / "framework"
        theirs.mkdir()
        (self.prefix / "lib/libKORVDataCnvLib.so").rename(theirs / "libKORVDataCnvLib.so")
        program = self.build_by_find_package(
            "build", f"-DCMAKE_PREFIX_PATH={self.prefix}",
            f"-DKORV_DATACNV_LIBRARY={theirs}/libKORVDataCnvLib.so")
        self.check_use(program, LD_LIBRARY_PATH=theirs)


class OtherWordSizeTest(InstallationTest):
    def setUp(self):
        super().setUp()
        self.install(*LINKED)
        self.other = "-m64" if BITS == 32 else "-m32"

    def test_find_package_refuses_it(self):
        message = self.configure(CONSUMERS / "find_package", "build",
                                 f"-DCMAKE_PREFIX_PATH={self.prefix}", flags=self.other, fails=True)
        self.assertIn(f"version: {VERSION} ({BITS}bit)", " ".join(message.split()))

    def test_headers_refuse_it_by_the_flags_of_pkg_config(self):
        cflags = self.pkg_config(self.prefix / "lib/pkgconfig", "--cflags", "korv-support")
        message = self.run_command(CC, self.other, "-c", CONSUMERS / "use.c", *cflags, fails=True)
        self.assertIn("made for the other word size", message)

    def test_headers_alone_do_not(self):
        self.run_command(CC, self.other, "-c", CONSUMERS / "use.c", "-I", self.prefix / "include")


main()
