"""What is installed where: by component, below DESTDIR, and with other folders."""
import pathlib
import shutil

from installation import BITS, BUILD, ENGINE, LINKED, SOURCE, VERSION, InstallationTest, cached, main

TARGETS = ("targets", "targets-" + (cached("CMAKE_BUILD_TYPE") or "release").lower())
LIBRARIES = ("korv-support", "korv-datacnv")


def packages(*libraries):
    """The files by which pkg-config and CMake find the libraries."""
    return {f"pkgconfig/{library}.pc" for library in libraries} | {
        f"cmake/korv-support/{library}-{name}.cmake"
        for library in libraries for name in TARGETS} | {
        f"cmake/korv-support/{name}.cmake"
        for name in ("korv-support-config", "korv-support-config-version", "korv_add_provider",
                     "korv_add_provider_check")}


HEADERS = {f"include/korv/{path.name}" for path in (SOURCE / "include/korv").iterdir()}
TEMPLATES = ("provider_template", "provider_template_cpp")
DOCUMENTS = {"README.md", "CHANGELOG.md", "CONTRIBUTING.md", "SECURITY.md", "postgresql/README.md",
             "python/README.md", "tools/korv-mask/README.md"} | {
    f"docs/{path.relative_to(SOURCE / 'docs')}" for path in (SOURCE / "docs").rglob("*")
    if path.is_file() and "reference" not in path.parts} | {
    f"examples/{name}/{path.name}" for name in TEMPLATES
    for path in (SOURCE / "examples" / name).iterdir()} | {
    "examples/mask_column/mask_column.c"}
DATA = {"customers.csv", "rules.txt", "cities.txt", "first_names.txt"}
PROVIDERS = {path.name for path in (BUILD / "lib/korv-providers").glob("*.so")}


def below(folder, names):
    return {f"{folder}/{name}" for name in names}


def for_gdb(libraries):
    """gdb looks for what belongs to an object beside it."""
    return below(libraries, {"libKORVSupport.so.21-gdb.py", "korv_lines.py", "korv_values.py"})


def development():
    return {"lib/libKORVSupport.so", "lib/libkorvmask.so"} | below(
        "lib", packages(*LIBRARIES, "korv-mask")) | HEADERS | for_gdb("lib") | {
        "share/korv-support/valgrind.supp"}


class ComponentsTest(InstallationTest):
    def installed(self, component):
        self.install(component)
        files = self.files(self.prefix)
        shutil.rmtree(self.prefix)
        return files

    def test_each_holds_its_files(self):
        self.assertEqual({"lib/libKORVSupport.so.21"}, self.installed("runtime"))
        self.assertEqual({"lib/libKORVDataCnvLib.so"}, self.installed("datacnv"))
        self.assertEqual({"lib/libkorvmask.so.1"}, self.installed("engine"))
        self.assertEqual({"bin/korv-mask", "share/man/man1/korv-mask.1", "bin/korv-provider",
                          "share/man/man1/korv-provider.1",
                          f"lib/korv/korv-provider-run{BITS}",
                          "share/doc/korv-support/korv-mask.md"}
                         | below("lib/korv-providers", PROVIDERS)
                         | below("share/doc/korv-support/examples/data", DATA),
                         self.installed("mask"))
        self.assertEqual(development(), self.installed("development"))
        self.assertEqual(below("share/doc/korv-support", DOCUMENTS),
                         self.installed("documentation"))

    def test_nothing_is_outside_them(self):
        self.install(*ENGINE, "documentation")
        by_component = self.files(self.prefix)
        shutil.rmtree(self.prefix)
        self.run_command("cmake", "--install", BUILD, "--prefix", self.prefix)
        self.assertEqual(by_component, self.files(self.prefix))

    def test_links(self):
        self.install(*LINKED)
        link = self.prefix / "lib/libKORVSupport.so"
        self.assertEqual("libKORVSupport.so.21", str(link.readlink()))
        self.assertFalse(link.resolve().is_symlink())

    def test_package_version(self):
        self.install(*LINKED)
        for name in (*LIBRARIES, "korv-mask"):
            self.assertEqual([VERSION], self.pkg_config(self.prefix / "lib/pkgconfig",
                                                        "--modversion", name))

    def test_destdir(self):
        destdir = self.folder / "destdir"
        self.install(*LINKED, DESTDIR=destdir)
        prefix = cached("CMAKE_INSTALL_PREFIX")
        libraries = destdir / prefix.lstrip("/") / "lib"
        program = self.build_by_pkg_config(libraries / "pkgconfig", *LIBRARIES)
        self.check_use(program, LD_LIBRARY_PATH=libraries)
        self.assertEqual(development()
                         | {"lib/libKORVSupport.so.21", "lib/libKORVDataCnvLib.so"},
                         self.files(libraries.parent))


class FoldersTest(InstallationTest):
    """A second build folder for other places, with the objects of the first."""

    def configure_with(self, **folders):
        build = self.folder / "other"
        options = [f"-D{name}={value}" for name, value in folders.items()]
        self.configure(SOURCE, "other", "-DKORV_BUILD_TESTS=OFF", "-DKORV_BUILD_MASK=OFF",
                       f"-DCMAKE_INSTALL_PREFIX={self.prefix}", *options)
        shutil.copytree(BUILD / "lib", build / "lib", symlinks=True, dirs_exist_ok=True,
                        ignore=shutil.ignore_patterns("*.a", "korv-providers"))
        return build

    def check_consumers(self, libraries, *package):
        for name in LIBRARIES:
            [folder] = self.pkg_config(libraries / "pkgconfig", "--variable=libdir", name)
            self.assertEqual(libraries, pathlib.Path(folder).resolve())
        program = self.build_by_pkg_config(libraries / "pkgconfig", *LIBRARIES)
        self.check_use(program, LD_LIBRARY_PATH=libraries)
        self.check_use(self.build_by_find_package("build", *package))

    def test_relative_ones_move_with_the_prefix(self):
        build = self.configure_with(CMAKE_INSTALL_LIBDIR="lib/some-linux",
                                    CMAKE_INSTALL_INCLUDEDIR="include/of/korv")
        self.install(*LINKED, build=build)
        self.assertTrue((self.prefix / "include/of/korv/korv/korv.h").exists())
        moved = self.folder / "moved"
        self.prefix.rename(moved)
        libraries = moved / "lib/some-linux"
        self.check_consumers(libraries, f"-Dkorv-support_DIR={libraries}/cmake/korv-support")

    def test_relative_prefix(self):
        self.run_command("cmake", "--install", BUILD, "--prefix", "stage", "--component", "development")
        self.assertEqual(development(), self.files(self.prefix))

    def test_prefix_of_the_system(self):
        build = self.configure_with(CMAKE_INSTALL_PREFIX="/usr", CMAKE_INSTALL_LIBDIR="lib/some-linux")
        destdir = self.folder / "destdir"
        self.run_command("cmake", "--install", build, "--component", "development", DESTDIR=destdir)
        files = self.files(destdir / "usr")
        self.assertLessEqual(below("share/gdb/auto-load", for_gdb("usr/lib/some-linux")), files)
        for library in LIBRARIES:
            text = (destdir / f"usr/lib/some-linux/pkgconfig/{library}.pc").read_text()
            self.assertIn("prefix=/usr\n", text)
            self.assertNotIn("..", text)

    def test_absolute_library_folder(self):
        libraries = self.folder / "libraries"
        build = self.configure_with(CMAKE_INSTALL_LIBDIR=libraries)
        self.install(*LINKED, build=build)
        self.assertEqual(below("include/korv", {name.split("/")[-1] for name in HEADERS})
                         | {"share/korv-support/valgrind.supp"}, self.files(self.prefix))
        gdb = {path.removeprefix("lib/") for path in for_gdb("lib")}
        self.assertEqual(packages(*LIBRARIES) | gdb | {"libKORVSupport.so.21", "libKORVSupport.so",
                                                       "libKORVDataCnvLib.so"}, self.files(libraries))
        self.check_consumers(libraries, f"-Dkorv-support_DIR={libraries}/cmake/korv-support")


main()
