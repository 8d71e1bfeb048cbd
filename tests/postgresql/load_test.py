"""Many values: memory stays as it is, and parallel workers give the same results."""
import re

from server import ServerTest, main

RULES = {"card": "CCN, secret=crm", "mail": "EML, secret=crm", "phone": "NID, secret=crm",
         "name": "AFF, secret=crm"}
MILLION = 1_000_000
GROWTH = 2048  # KiB; one byte for each of 9 million values would be 8,800


class LoadTest(ServerTest):
    def memory(self, script):
        """The largest memory of a session in KiB, at each `MEMORY` of a script."""
        show = "\\! grep VmHWM /proc/$PID/status"
        shown = self.server.psql("SELECT pg_backend_pid() AS pid \\gset\n\\setenv PID :pid\n"
                                 + script.replace("MEMORY", show)).decode()
        return [int(number) for number in re.findall(r"VmHWM:\s*(\d+) kB", shown)]

    def test_memory_does_not_grow_over_ten_million_values(self):
        masks = ", ".join(f"count(korv.mask(CASE WHEN i % 1000 = 0 THEN '-' ELSE {value} END, '{rule}'))"
                          for value, rule in (("(4000000000000000 + i)::text", RULES["card"]),
                                              ("'a.b' || i || '@mail.example'", RULES["mail"]),
                                              ("'Anna ' || i", RULES["name"])))
        # The compiler for expressions would be loaded in between.
        before, after = self.memory(f"""SET korv.on_error = 'null'; SET jit = off;
            SET work_mem = '64kB';
            SELECT {masks} FROM generate_series(1, {MILLION // 3}) AS i;
            MEMORY
            SELECT {masks} FROM generate_series(1, {10 * MILLION // 3}) AS i;
            MEMORY\n""")
        self.assertLess(after - before, GROWTH)

    def test_memory_does_not_grow_over_rules_and_errors(self):
        script = """
            DO $$BEGIN FOR i IN 1..%d LOOP
                BEGIN PERFORM korv.mask('a', 'CCN, secret=crm, scope=s' || i);
                EXCEPTION WHEN OTHERS THEN END;
                BEGIN PERFORM korv.mask('a', 'CCN, secret=crm, prefix=' || i);
                EXCEPTION WHEN OTHERS THEN END;
                PERFORM korv.mask('Anna', 'AFF, secret=crm, scope=s' || i);
            END LOOP; END$$;
            MEMORY"""
        before, after = self.memory(script % 1000 + script % 10000 + "\n")
        self.assertLess(after - before, GROWTH)

    def test_parallel_workers_give_the_same(self):
        self.server.psql(f"""
            CREATE TABLE many AS SELECT i AS id, (4000000000000000 + i * 7919)::text AS card,
                'a.b' || i || '@mail.example' AS mail, '+49 30 ' || 1000000 + i AS phone,
                'Anna ' || i AS name FROM generate_series(1, 100000) AS i;
            ANALYZE many;
            SECURITY LABEL FOR korv ON COLUMN many.id IS 'KEEP';
            {''.join(f"SECURITY LABEL FOR korv ON COLUMN many.{column} IS '{rule}';"
                     for column, rule in RULES.items())}
            SELECT korv.create_masked_view('many');
            CREATE ROLE reader LOGIN; GRANT SELECT ON many_masked TO reader""")
        statement = self.server.psql("SELECT korv.masked_select('many')").decode()
        parallel = "SET parallel_setup_cost = 0; SET parallel_tuple_cost = 0; "
        serial = "SET max_parallel_workers_per_gather = 0; "
        for query, user in ((statement, "postgres"), ("TABLE many_masked", "reader")):
            user = self.server.environment["PGUSER"] if user == "postgres" else user
            plan = self.server.psql(f"{parallel} EXPLAIN (ANALYZE, VERBOSE) {query}",
                                    user=user).decode()
            # The workers mask: the functions are in the output of what is below Gather.
            self.assertRegex(plan, r"Workers Launched: [1-9]")
            self.assertRegex(plan, r"Gather(?s:.*)->  Parallel Seq Scan(?s:.*)mask_column")
            order = f"SELECT * FROM ({query}) AS masked ORDER BY id"
            self.assertEqual(self.server.psql(serial + order, user=user),
                             self.server.psql(parallel + order, user=user))
        self.server.psql("UPDATE many SET card = '1' WHERE id = 77777")
        message = self.assert_fails("KV002", parallel + statement)
        self.assertIn("too few digits", message)


main()
