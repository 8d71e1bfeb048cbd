"""What SQL scripts cannot try: calls by number, settings given before the extension is loaded, and where
secrets could be seen."""
import base64
import ctypes
import os
import pathlib

from server import SECRETS, Failed, ServerTest, main

CARD = "4556737586899855"


class Argument(ctypes.Structure):
    """PQArgBlock with a pointer."""
    _fields_ = [("len", ctypes.c_int), ("isint", ctypes.c_int), ("ptr", ctypes.c_char_p)]


class RightsTest(ServerTest):
    settings = ("shared_preload_libraries = 'pg_stat_statements'", "log_statement = 'all'",
                "log_min_messages = debug2", "log_error_verbosity = verbose",
                "log_parameter_max_length_on_error = -1", "debug_print_plan = on")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.psql(f"""
            CREATE EXTENSION pg_stat_statements;
            CREATE ROLE owner LOGIN; CREATE ROLE reader LOGIN;
            GRANT CREATE ON SCHEMA public TO owner;
            CREATE TABLE customers (card text);
            INSERT INTO customers SELECT '{CARD}' FROM generate_series(1, 10);
            SECURITY LABEL FOR korv ON COLUMN customers.card IS 'CCN, secret=crm';
            ALTER TABLE customers OWNER TO owner;
            SELECT korv.create_masked_view('customers');
            GRANT SELECT ON customers_masked TO reader;
            CREATE ROLE writer LOGIN; GRANT pg_write_all_data TO writer""")

    def call_by_number(self, user):
        """Calls the function of views by the fast path of the protocol. Returns result and error."""
        number = int(self.server.psql(
            "SELECT oid FROM pg_proc WHERE pronamespace = 'korv_views'::regnamespace"))
        library = ctypes.CDLL("libpq.so.5")
        for name in ("PQconnectdb", "PQfn"):
            getattr(library, name).restype = ctypes.c_void_p
        library.PQerrorMessage.restype = ctypes.c_char_p
        connection = ctypes.c_void_p(library.PQconnectdb(
            f"host={self.server.folder} user={user} dbname=postgres".encode()))
        try:
            texts = (CARD.encode(), b"CCN, secret=crm", b"", b"card")
            arguments = (Argument * 4)(*(Argument(len(text), 0, text) for text in texts))
            result = ctypes.create_string_buffer(100)
            length = ctypes.c_int()
            done = ctypes.c_void_p(library.PQfn(connection, number, result, ctypes.byref(length), 0,
                                                arguments, 4))
            status = library.PQresultStatus(done)
            library.PQclear(done)
            error = library.PQerrorMessage(connection).decode()
        finally:
            library.PQfinish(connection)
        return result.raw[:length.value] if status == 1 else None, error

    def test_nobody_but_superusers_can_call_the_function_of_views_by_its_number(self):
        masked = self.server.psql("SELECT DISTINCT card FROM customers_masked", user="reader").strip()
        result, error = self.call_by_number(self.server.environment["PGUSER"])
        self.assertEqual((masked, ""), (result, error))
        for user in ("reader", "owner", "writer"):
            result, error = self.call_by_number(user)
            self.assertIsNone(result)
            self.assertIn("permission denied for schema korv_views", error)

    def test_settings_from_before_the_extension_is_loaded_do_not_count(self):
        self.server.psql("ALTER SYSTEM SET session_preload_libraries = 'plpgsql'; SELECT pg_reload_conf()")
        try:
            self.server.psql("GRANT USAGE ON SCHEMA korv TO owner;"
                             "GRANT EXECUTE ON ALL FUNCTIONS IN SCHEMA korv TO owner")
            for name, value in (("allowed_secrets", "*"), ("lookup_folders", "/etc")):
                done = self.server.psql(f"SET korv.{name} = '{value}'; SELECT korv.mask('a', 'KEEP'); "
                                        "SHOW korv.allowed_secrets;", user="owner", keep_errors=True)
                self.assertIn("permission denied to set parameter", done)
                self.assertNotIn("\n*", "\n" + done)
            with self.assertRaises(Failed):
                self.server.psql(
                    f"SET korv.allowed_secrets = '*'; SELECT korv.mask('{CARD}', 'CCN, secret=crm')",
                    user="owner")
            self.assert_fails("42501", "ALTER ROLE owner SET korv.allowed_secrets = '*'", user="owner")
        finally:
            self.server.psql("ALTER SYSTEM RESET session_preload_libraries; SELECT pg_reload_conf()")

    def test_options_of_a_connection_do_not_count(self):
        self.server.environment["PGOPTIONS"] = "-c korv.allowed_secrets=*"
        try:
            shown = self.server.psql("SHOW korv.allowed_secrets", user="owner", keep_errors=True)
        finally:
            del self.server.environment["PGOPTIONS"]
        self.assertNotIn("*", shown.splitlines())

    def test_secrets_are_shown_nowhere(self):
        shown = self.server.psql("""
            SET client_min_messages = debug2;
            SELECT count(korv.mask(card, 'CCN, secret=crm')) FROM customers;
            EXPLAIN (ANALYZE, VERBOSE) SELECT korv.mask(card, 'CCN, secret=crm') FROM customers;
            EXPLAIN (ANALYZE, VERBOSE) TABLE customers_masked;
            SELECT * FROM korv.check('customers');
            SELECT korv.masked_select('customers');
            SELECT korv.mask(card, 'CCN, secret=unknown') FROM customers;
            SELECT korv.mask(card || 'x', 'CCN, secret=crm') FROM customers;
            SET korv.secrets_file = '/nowhere';
            SELECT korv.mask(card, 'CCN, secret=crm') FROM customers;
            RESET korv.secrets_file;
            SELECT * FROM pg_stat_statements;
            SELECT * FROM pg_settings;
            SELECT * FROM pg_seclabel""", keep_errors=True)
        self.assertIn("CCN, secret=crm", shown)
        self.assertIn("korv.mask(card, $1)", shown)
        processes = "".join(path.read_bytes().decode(errors="replace") for path in
                            pathlib.Path("/proc").glob("[0-9]*/cmdline") if os.access(path, os.R_OK))
        self.assertIn("postgres", processes)
        log = self.server.log.read_text(encoding="utf-8", errors="replace")
        self.assertIn("STATEMENT:", log)
        for line in SECRETS.splitlines():
            secret = line.split(" = ")[1]
            for form in (secret, secret.upper(), base64.b64encode(bytes.fromhex(secret)).decode()):
                for place in (shown, processes, log):
                    self.assertNotIn(form, place)

    def test_the_path_of_the_secrets_is_for_superusers(self):
        self.server.psql("GRANT USAGE ON SCHEMA korv TO owner;"
                         "GRANT EXECUTE ON ALL FUNCTIONS IN SCHEMA korv TO owner;"
                         "ALTER ROLE owner SET korv.secrets_file = '/nowhere/secrets'")
        try:
            message = self.assert_fails(
                "KV001", "SET client_min_messages = debug5; SELECT korv.mask('a', 'AFF, secret=crm')",
                user="owner")
        finally:
            self.server.psql("ALTER ROLE owner RESET korv.secrets_file")
        self.assertNotIn("nowhere", message)
        self.assertIn("the server's log says why", message)
        self.assertIn("/nowhere/secrets: cannot open the secrets",
                      self.server.log.read_text(encoding="utf-8"))


main()
