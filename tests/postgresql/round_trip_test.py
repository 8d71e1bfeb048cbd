"""Tables that COPY masks are those that korv-mask writes, byte for byte, and join as before."""
import re
import sys

from server import KORV_MASK, ROOT, ServerTest, main

EXAMPLE = ROOT / "examples/joins"
sys.path.insert(0, str(EXAMPLE))
import make_tables  # noqa: E402

TABLES = {
    "customers": '"IDENTITY" text, "NAME" varchar(60), "EMAIL" text, "BORN" date',
    "orders": '"ORDER_NO" int, "IDENTITY" char(9), "EMAIL" text, "ORDERED" date',
    "payments": '"PAYMENT_NO" int, "ORDER_NO" int8, "IDENTITY" text, "PAID" date',
}
DIGITS = """regexp_replace({0}."IDENTITY", '\\D', '', 'g')"""
JOINS = (("customers", "orders", DIGITS), ("customers", "payments", DIGITS),
         ("orders", "payments", DIGITS), ("orders", "payments", '{0}."ORDER_NO"'),
         ("customers", "orders", 'lower({0}."EMAIL")'))


def rows_of(table):
    return f'(SELECT *, row_number() OVER (ORDER BY ctid) AS row FROM {table}) AS {table}'


class RoundTripTest(ServerTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for database in ("clear", "masked"):
            cls.server.psql(f"CREATE DATABASE {database}")
        cls.server.psql("CREATE EXTENSION korv", database="clear")

    def create(self, database, contents):
        """Creates the tables with the contents of CSV files."""
        for name, columns in TABLES.items():
            path = self.server.write(f"{database}.{name}.csv", contents[name].decode())
            self.server.psql(f"DROP TABLE IF EXISTS {name} CASCADE; CREATE TABLE {name} ({columns});"
                             f"COPY {name} FROM '{path}' (FORMAT csv, HEADER)", database=database)

    def label(self):
        """The rules of the example, as labels."""
        for name in TABLES:
            for line in (EXAMPLE / f"{name}.txt").read_text(encoding="utf-8").splitlines():
                if not line.startswith("#"):
                    column, rule = re.split(r"\s*=\s*", line, maxsplit=1)
                    self.server.psql(
                        f"""SECURITY LABEL FOR korv ON COLUMN {name}."{column}" IS '{rule}'""",
                        database="clear")

    def masked_by_copy(self, name):
        statement = self.server.psql(f"SELECT korv.masked_select('{name}')", database="clear")
        return self.server.psql(f"COPY ({statement.decode()}) TO STDOUT (FORMAT csv, HEADER)",
                                database="clear")

    def masked_by_program(self, name):
        output = self.server.folder / f"program.{name}.csv"
        self.server.run(KORV_MASK, self.server.folder / f"clear.{name}.csv", "--rules",
                        EXAMPLE / f"{name}.txt", "--secrets", self.server.secrets, "--output", output)
        return output.read_bytes()

    def joined(self, database):
        results = []
        for left, right, key in JOINS:
            results.append(self.server.lines(
                f"SELECT {left}.row, {right}.row FROM {rows_of(left)} JOIN {rows_of(right)} "
                f"ON {key.format(left)} = {key.format(right)} ORDER BY 1, 2", database=database))
        results.append(self.server.lines(
            'SELECT "PAID" - "ORDERED" FROM orders JOIN payments USING ("ORDER_NO") '
            'ORDER BY orders.ctid, payments.ctid', database=database))
        return results

    def test_the_example_comes_back_equal_to_the_program_and_joins_as_before(self):
        for rows in (make_tables.ROWS, 5000):
            for name, contents in make_tables.tables(rows).items():
                make_tables.write(name, contents, self.server.folder)
            self.create("clear", {name: (self.server.folder / f"{name}.csv").read_bytes()
                                  for name in TABLES})
            self.label()
            masked = {name: self.masked_by_copy(name) for name in TABLES}
            for name in TABLES:
                self.assertEqual(self.masked_by_program(name), masked[name])
                self.assertNotEqual((self.server.folder / f"{name}.csv").read_bytes(), masked[name])
            self.create("masked", masked)
            before, after = self.joined("clear"), self.joined("masked")
            for pairs in before:
                self.assertGreater(len(pairs), rows // 2)
            self.assertEqual(before, after)

    def test_labels_and_views_are_dumped_and_restored(self):
        self.server.psql("""
            CREATE TABLE cards (card text, note text);
            INSERT INTO cards VALUES ('4556737586899855', 'x');
            SECURITY LABEL FOR korv ON COLUMN cards.card IS 'CCN, secret=crm';
            SECURITY LABEL FOR korv ON COLUMN cards.note IS 'DROP';
            SELECT korv.create_masked_view('cards')""", database="clear")
        expected = self.server.psql("TABLE cards_masked", database="clear")
        dump = self.server.run("pg_dump", "-d", "clear", "-t", "cards*", "-e", "korv")
        self.server.psql("CREATE DATABASE restored")
        self.server.psql(dump, database="restored")
        self.assertEqual(expected, self.server.psql("TABLE cards_masked", database="restored"))
        self.assertEqual(["card|CCN, secret=crm|", "note|DROP|"], self.server.lines(
            "SELECT column_name, rule, problem FROM korv.check('cards')", database="restored"))


main()
