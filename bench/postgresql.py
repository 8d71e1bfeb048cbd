"""Times COPY of masked columns in PostgreSQL: against pgcrypto's hmac() of the same columns, and with
parallel workers against without. All in one run, on a server of its own.

Usage: bench/postgresql.py BUILD-FOLDER [ROWS]"""
import os
import pathlib
import re
import statistics
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/postgresql"))
from server import Server  # noqa: E402

ROWS = int(sys.argv[2]) if len(sys.argv) > 2 else 1_000_000
RUNS = 5
RULES = {"card": "CCN, secret=crm", "email": "EML, secret=crm", "phone": "NID, secret=crm",
         "name": "AFF, secret=crm", "born": "AGE, secret=crm, range=-30..30, per=CARD"}
TABLES = {"texts": ("card", "email", "phone", "name"), "with_date": ("card", "email", "phone", "born")}
HMAC = "hmac({0}::text, 'a key of 32 bytes for the peer..', 'sha256')"


def prepare(server):
    server.psql(f"""
        CREATE EXTENSION korv; CREATE EXTENSION pgcrypto;
        CREATE TABLE people AS SELECT (4000000000000000 + i::int8 * 7919)::text AS card,
            'anna.adler' || i || '@mail.example' AS email, '+49 30 ' || 1000000 + i AS phone,
            'Anna Adler ' || i AS name, date '1940-01-01' + i % 25000 AS born
            FROM generate_series(1, {ROWS}) AS i""")
    for table, columns in TABLES.items():
        labels = "".join(f"SECURITY LABEL FOR korv ON COLUMN {table}.{column} IS '{RULES[column]}';"
                         for column in columns)
        server.psql(f"CREATE TABLE {table} AS SELECT {', '.join(columns)} FROM people; {labels}"
                    f"VACUUM ANALYZE {table}")
    server.psql("DROP TABLE people; CHECKPOINT")


def statements(server):
    """What is timed, by name: the number of workers and a query."""
    masked = {table: server.psql(f"SELECT korv.masked_select('{table}')").decode().strip()
              for table in TABLES}
    found = {"clear": (0, "TABLE texts")}
    for table, columns in TABLES.items():
        hmacs = ", ".join(HMAC.format(column) for column in columns)
        found[f"{table}, masked"] = (0, masked[table])
        found[f"{table}, hmac"] = (0, f"SELECT {hmacs} FROM {table}")
    found["texts, masked, 2 workers"] = (2, masked["texts"])
    found["10 rows, masked"] = (0, masked["texts"] + " LIMIT 10")
    return found


def seconds(server, workers, query):
    printed = server.psql(f"SET max_parallel_workers_per_gather = {workers};\n\\timing on\n"
                          f"COPY ({query}) TO '/dev/null'").decode()
    return float(re.search(r"Time: ([\d.]+) ms", printed).group(1)) / 1000


def main():
    server = Server("shared_buffers = '1GB'", "checkpoint_timeout = '1h'", "max_wal_size = '8GB'")
    prepare(server)
    queries = statements(server)
    plan = server.psql("SET max_parallel_workers_per_gather = 2; EXPLAIN "
                       + queries["texts, masked, 2 workers"][1]).decode()
    if "Workers Planned: 2" not in plan:
        raise SystemExit(f"the planner uses no two workers:\n{plan}")
    times = {name: [] for name in queries}
    for _ in range(RUNS):
        for name, query in queries.items():
            times[name].append(seconds(server, *query))
    server.stop()
    median = {name: statistics.median(values) for name, values in times.items()}
    print(f"{ROWS:,} rows, median of {RUNS} runs, load average {os.getloadavg()[0]:.1f}, "
          f"{os.cpu_count()} cores\n")
    for name, value in median.items():
        print(f"{name:28} {value:8.3f} s   {min(times[name]):8.3f} at best")
    print(f"\n{'':46} {'times as fast':>13}  goal")
    for name, peer, goal in (("texts, masked", "texts, hmac", 1),
                             ("with_date, masked", "with_date, hmac", 1),
                             ("texts, masked, 2 workers", "texts, masked", 1.3)):
        print(f"{name + ' : ' + peer:46} {median[peer] / median[name]:13.2f}  {goal}")


main()
