"""Runs the SQL scripts of regress/ by pg_regress."""
import os
import pathlib

from server import USER, Failed, ServerTest, main, pg_config

HERE = pathlib.Path(__file__).resolve().parent
SCRIPTS = ("mask", "labels", "rights")


class RegressTest(ServerTest):
    def test_scripts(self):
        server = self.server
        output = server.make_folder("regress")
        (server.lookups / "cities.txt").write_text("Berlin = Bonn\n", encoding="utf-8")
        pg_regress = f"{pg_config('pkglibdir')}/pgxs/src/test/regress/pg_regress"
        server.psql("CREATE DATABASE contrib_regression")
        try:
            print(server.run(pg_regress, "--use-existing", "--dbname=contrib_regression",
                             f"--host={server.folder}", f"--user={USER}", f"--bindir={server.bin}",
                             f"--inputdir={HERE}/regress", f"--outputdir={output}", *SCRIPTS))
        except Failed:
            differences = output / "regression.diffs"
            if differences.exists():
                print(differences.read_text(encoding="utf-8"))
                results = os.environ.get("KORV_REGRESS_RESULTS")
                for script in SCRIPTS if results else ():
                    text = (output / f"results/{script}.out").read_text(encoding="utf-8")
                    pathlib.Path(results, f"{script}.out").write_text(text, encoding="utf-8")
            raise


main()
