"""Masks the table of make_vectors.py through the adapters: Python, DuckDB, PostgreSQL and Spark.

    adapters.py BUILD-FOLDER [ADAPTER...]

The results are those of the C interface: the same texts, error codes and tokens. The build folder is that of
the preset native64, with mask_table. The package korv must be installed with what the adapters need, and the
server of PostgreSQL."""
import os
import pathlib
import re
import shutil
import sys
import tempfile

import korv
import make_vectors
import pyarrow
import pyarrow.parquet
import routes

BUILD = pathlib.Path(sys.argv[1]).resolve()
HERE = pathlib.Path(__file__).resolve().parent
FOLDER = pathlib.Path(tempfile.mkdtemp(prefix="korv_vectors_"))
RULES, SECRETS = FOLDER / "rules.txt", FOLDER / "secrets.txt"
RULE_OF = {name: rule for name, rule, _ in make_vectors.columns()}
MASKED = [name for name, rule in RULE_OF.items() if rule.partition(",")[0] not in ("KEEP", "NULL", "CONST")]


def clear_table():
    _, *rows = routes.read_table(FOLDER / "table.csv")
    return pyarrow.table({name: pyarrow.array(column, pyarrow.string())
                          for name, column in zip(RULE_OF, zip(*rows))})


def related_of(name):
    return "ID" if "per=ID" in RULE_OF[name] else None


def transposed(columns):
    return [list(row) for row in zip(*columns)]


def python():
    """A table at a time, as Arrow."""
    errors = []
    masked = korv.Masker(RULES, SECRETS).mask_table(clear_table(), errors=errors, first_row=1)
    return (transposed(column.to_pylist() for column in masked.columns),
            [(error.row, error.column, error.message) for error in errors])


def python_lists():
    """A column and a rule at a time, as lists."""
    clear, columns, faults = clear_table().to_pydict(), [], []
    for name, rule in RULE_OF.items():
        errors, related = [], related_of(name)
        columns.append(korv.mask(clear[name], rule, SECRETS, related and clear[related], errors=errors,
                                 files=[FOLDER]))
        faults += [(error.row + 1, name, error.message) for error in errors]
    return transposed(columns), faults


def duckdb():
    """The function of a column; it is called again for each value that fails, to see why."""
    import duckdb as database
    import korv.duckdb as adapter

    connection = database.connect()
    connection.register("clear", clear_table())
    adapter.register(connection, SECRETS, name="masked_or_null", errors="null", files=[FOLDER])
    adapter.register(connection, SECRETS, name="masked", files=[FOLDER])
    columns, faults = [], []
    for name, rule in RULE_OF.items():
        rule = rule.replace("'", "''")
        related = related_of(name)
        arguments = f"{name}, '{rule}'" + (f", {related}" if related else "")
        selected = f"{name}, masked_or_null({arguments}), {related or 'NULL'}"
        column = connection.sql(f"SELECT {selected} FROM clear").fetchall()
        columns.append([masked for _, masked, _ in column])
        for row, (value, masked, other) in enumerate(column, 1):
            if value is None or masked is not None or name not in MASKED:
                continue
            try:
                call = f"SELECT masked(?, '{rule}'" + (", ?)" if related else ")")
                connection.execute(call, [value, other] if related else [value]).fetchall()
            except database.Error as error:
                faults.append((row, name, re.search(r"a value failed: (.*)", str(error))[1]))
    return transposed(columns), faults


def postgresql():
    """Rules as labels, and COPY of the masked SELECT; each value that fails alone, to see why."""
    sys.path.insert(0, str(HERE.parent / "postgresql"))
    from server import Server

    server = Server("korv.on_error = 'null'")
    for name, contents in (("secrets.txt", SECRETS.read_text()), ("table.csv", (FOLDER / "table.csv").read_text())):
        server.write(name, contents)
    shutil.copy(FOLDER / "cities.txt", server.lookups)
    os.chmod(server.lookups / "cities.txt", 0o644)
    columns = ", ".join(f'"{name}" text' for name in RULE_OF)
    names = ", ".join(f'"{name}"' for name in RULE_OF)
    labels = "".join(f"SECURITY LABEL FOR korv ON COLUMN clear.\"{name}\" IS '{rule}';\n"
                     for name, rule in [*RULE_OF.items(), ("row", "KEEP")])
    select = server.lines(f"CREATE EXTENSION korv; CREATE TABLE clear ({columns}, row bigserial);"
                          f"COPY clear ({names}) FROM '{server.folder}/table.csv' (FORMAT csv, HEADER);"
                          f"{labels} SELECT korv.masked_select('clear');")[-1]
    (FOLDER / "postgresql.csv").write_bytes(server.psql(f"COPY ({select} ORDER BY row) TO STDOUT (FORMAT csv)"))
    calls = ",".join(f"""('{name}', '{RULE_OF[name]}', '"{related_of(name) or name}"')""" for name in MASKED)
    faults = server.lines(f"""
        SET korv.on_error = 'error';
        CREATE TABLE fault (row bigint, name text, message text);
        DO $$
        DECLARE call record; value record; found text;
        BEGIN
            FOR call IN SELECT * FROM (VALUES {calls}) AS call (name, rule, related) LOOP
                FOR value IN EXECUTE format('SELECT row, %I AS clear, %s AS other FROM clear',
                                            call.name, call.related) LOOP
                    BEGIN
                        PERFORM korv.mask_column(value.clear, call.rule, value.other, call.name);
                    EXCEPTION WHEN SQLSTATE 'KV002' THEN
                        GET STACKED DIAGNOSTICS found = MESSAGE_TEXT;
                        INSERT INTO fault VALUES (value.row, call.name, found);
                    END;
                END LOOP;
            END LOOP;
        END
        $$;
        SELECT row || E'\\t' || name || E'\\t' || message FROM fault;""")
    server.stop()
    return ([row[:-1] for row in routes.read_table(FOLDER / "postgresql.csv")],
            [(int(row), name, message.removeprefix(f'column "{name}": '))
             for row, name, message in (line.split("\t") for line in faults)])


def spark():
    """A DataFrame of several partitions, whose rows have a number."""
    import korv.spark as adapter
    from pyspark.sql import SparkSession

    os.environ["PYSPARK_PYTHON"] = sys.executable
    session = SparkSession.builder.master("local[2]").config("spark.ui.enabled", "false").getOrCreate()
    clear = clear_table()
    numbered = clear.append_column("ROW", pyarrow.array(range(1, len(clear) + 1)))
    path = str(FOLDER / "table.parquet")
    pyarrow.parquet.write_table(numbered, path)
    table = session.read.parquet(path).repartition(7)
    masked = adapter.mask(table, RULES, SECRETS, on_error="rule", keep_unlisted=True).orderBy("ROW").collect()
    errors = adapter.errors(table, RULES, SECRETS, id_columns=["ROW"], keep_unlisted=True).collect()
    session.stop()
    return [list(row)[:-1] for row in masked], [(row["ROW"], row["column"], row["message"]) for row in errors]


# Adapters; the ones in the second list make NULL of a value that fails, whatever its rule says.
ADAPTERS = {adapter.__name__: adapter for adapter in (python, python_lists, duckdb, postgresql, spark)}
NULL_FOR_FAILED = ("duckdb", "postgresql")


def first_faults(faults):
    """The first message of each value that fails. A rule alone does not know the column's name."""
    first = {}
    for row, name, message in faults:
        first.setdefault((row, name), re.sub(r"KORV_TOKID_COLNAME=\S+", "KORV_TOKID_COLNAME=*", message))
    return first


def differences(name, expected, result):
    """What a result has that the C interface has not. NULL and the empty text are one in a CSV file."""
    (rows, faults), (other_rows, other_faults) = expected, result
    if len(rows) != len(other_rows):
        yield f"{len(other_rows)} rows instead of {len(rows)}"
    if faults != other_faults:
        yield f"faults differ, for example {sorted(set(faults.items()) ^ set(other_faults.items()))[:4]}"
    for number, (row, other) in enumerate(zip(rows, other_rows), 1):
        for column, text, other_text in zip(RULE_OF, row, other):
            if name in NULL_FOR_FAILED and (number, column) in faults:
                text = None
            if (text or None) != (other_text or None):
                yield f"row {number}, column {column}: {other_text!r} instead of {text!r}"


def main():
    chosen = sys.argv[2:] or list(ADAPTERS)
    make_vectors.write(FOLDER)
    rows, faults = routes.c_call(FOLDER, BUILD / "bin/mask_table")
    expected = rows, first_faults((row, column, message) for row, column, _, message in faults)
    wrong = 0
    try:
        for name in chosen:
            other_rows, other_faults = ADAPTERS[name]()
            found = list(differences(name, expected, (other_rows, first_faults(other_faults))))
            wrong += len(found)
            print(f"{name}: {len(rows) * len(RULE_OF)} values, {len(expected[1])} of them fail, "
                  f"{len(found)} differences", *found[:10], sep="\n    ")
    finally:
        shutil.rmtree(FOLDER)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
