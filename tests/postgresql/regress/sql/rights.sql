-- Who may do what: roles, settings, secrets, masked views.
\set VERBOSITY terse
SELECT current_user AS superuser \gset
CREATE ROLE owner LOGIN;
CREATE ROLE masker LOGIN;
CREATE ROLE reader LOGIN;
CREATE ROLE stranger LOGIN;
GRANT CREATE ON SCHEMA public TO owner, reader, stranger;
GRANT USAGE ON SCHEMA korv TO owner, masker;
GRANT EXECUTE ON ALL FUNCTIONS IN SCHEMA korv TO owner, masker;
ALTER ROLE owner SET korv.allowed_secrets = 'other, crm';
ALTER ROLE masker SET korv.allowed_secrets = '*';

-- Nothing is granted to all.
SELECT proname FROM pg_proc WHERE pronamespace IN ('korv'::regnamespace, 'korv_views'::regnamespace)
    AND has_function_privilege('stranger', oid, 'EXECUTE');
SELECT nspname FROM pg_namespace WHERE nspname LIKE 'korv%' AND
    (has_schema_privilege('stranger', oid, 'USAGE') OR has_schema_privilege('owner', oid, 'CREATE'));
SELECT nspname FROM pg_namespace WHERE nspname = 'korv_views'
    AND has_schema_privilege('owner', oid, 'USAGE');
-- All functions have a fixed search_path, except those in C.
SELECT pg_proc.oid::regprocedure FROM pg_proc JOIN pg_language ON pg_language.oid = prolang
WHERE pronamespace IN ('korv'::regnamespace, 'korv_views'::regnamespace) AND lanname <> 'c'
    AND proconfig IS DISTINCT FROM '{"search_path=pg_catalog, pg_temp"}';

-- Settings.
\c - stranger
SET korv.provider_folders = '/tmp';
SET korv.lookup_folders = '/etc';
SET korv.secrets_file = '/etc/passwd';
SET korv.allowed_secrets = '*';
SET korv.anything = 'x';
SHOW korv.secrets_file;
SELECT current_setting('korv.secrets_file');
SELECT count(*) FROM pg_settings WHERE name = 'korv.secrets_file';
ALTER ROLE stranger SET korv.allowed_secrets = '*';
SELECT korv.mask('a', 'KEEP');
SELECT korv.check('pg_class');
SELECT korv_views.mask_column('a', 'KEEP', NULL, 'a');

-- Secrets: the message for one that is not allowed is the one for one that does not exist.
\c - owner
SELECT korv.mask('4556737586899855', 'CCN, secret=crm');
SELECT korv.mask('4556737586899855', 'CCN, secret=payroll');
SELECT korv.mask('4556737586899855', 'CCN, secret=unknown');
\c - masker
SELECT korv.mask('4556737586899855', 'CCN, secret=payroll') = korv.mask('4556737586899855', 'CCN, secret=crm');
-- A rule that is open for one role is checked again for another.
\c - :superuser
CREATE FUNCTION pg_temp.mask(value text) RETURNS text LANGUAGE plpgsql AS
    $$BEGIN RETURN korv.mask(value, 'CCN, secret=payroll'); END$$;
BEGIN;
SELECT length(pg_temp.mask('4556737586899855'));
SET LOCAL ROLE masker;
SELECT length(pg_temp.mask('4556737586899855'));
ROLLBACK;
\c - stranger
CREATE TABLE mine (card text);
SECURITY LABEL FOR korv ON COLUMN mine.card IS 'CCN, secret=crm';
SECURITY LABEL FOR korv ON COLUMN mine.card IS 'CCN, method=transpose, key=1';
SELECT korv.create_masked_view('mine');
DROP TABLE mine;

-- A masked view.
\c - owner
CREATE TABLE customers (id int, card text, "Name" text, born date, note text);
INSERT INTO customers VALUES (1, '4556737586899855', 'Anna', '1992-04-11', 'secret'),
    (2, '4556737586899855', 'Bernd', '1970-10-07', 'secret');
SECURITY LABEL FOR korv ON COLUMN customers.id IS 'KEEP';
SECURITY LABEL FOR korv ON COLUMN customers.card IS 'CCN, secret=crm';
SECURITY LABEL FOR korv ON COLUMN customers."Name" IS 'AFF, secret=crm';
SECURITY LABEL FOR korv ON COLUMN customers.born IS 'AGE, secret=crm, range=-30..30, per=ID';
SECURITY LABEL FOR korv ON COLUMN customers.note IS 'DROP';
SELECT korv.create_masked_view('customers');
SELECT korv.create_masked_view('customers');
GRANT SELECT ON customers_masked TO reader;
SELECT relname, relowner::regrole, reloptions FROM pg_class WHERE relname = 'customers_masked';
SELECT korv.masked_select('customers') AS statement \gset
CREATE TABLE expected AS :statement;
GRANT SELECT ON expected TO reader;
\c - masker
SELECT korv.create_masked_view('customers');
SELECT * FROM customers_masked;

\c - reader
SELECT count(*) FROM (TABLE customers_masked INTERSECT TABLE expected) AS same;
TABLE customers;
-- A function of the reader's sees masked values only, and none that a condition hides.
CREATE FUNCTION pg_temp.spy(value text) RETURNS bool LANGUAGE plpgsql COST 0.0001 AS
    $$BEGIN RAISE NOTICE 'seen: %', value LIKE '%899855'; RETURN true; END$$;
SELECT id FROM customers_masked WHERE id = 1 AND pg_temp.spy(card);
-- The functions cannot be named, whatever names them.
SELECT korv.mask('4556737586899855', 'CCN, secret=crm');
SELECT korv_views.mask_column('4556737586899855', 'CCN, secret=crm', NULL, 'card');
SET search_path = korv_views, korv, public;
SELECT mask_column('4556737586899855', 'CCN, secret=crm', NULL, 'card');
RESET search_path;
CREATE FUNCTION mine(value text) RETURNS text LANGUAGE sql AS
    $$SELECT korv_views.mask_column(value, 'CCN, secret=crm', NULL, 'card')$$;
CREATE FUNCTION mine(value text) RETURNS text LANGUAGE sql
    BEGIN ATOMIC SELECT korv_views.mask_column(value, 'CCN, secret=crm', NULL, 'card'); END;
CREATE FUNCTION mine(text, text, text, text) RETURNS text LANGUAGE c AS '$libdir/korv', 'korv_mask_in_view';
CREATE VIEW mine AS SELECT korv_views.mask_column('4556', 'CCN, secret=crm', NULL, 'card');
CREATE OPERATOR ## (FUNCTION = korv_views.mask_column, LEFTARG = text, RIGHTARG = text);
CREATE AGGREGATE mine(text, text, text) (SFUNC = korv_views.mask_column, STYPE = text);
CREATE CAST (text AS int4) WITH FUNCTION korv_views.mask_column(text, text, text, text);
CREATE TABLE mine (card text DEFAULT korv_views.mask_column('4556', 'CCN, secret=crm', NULL, 'card'));
CREATE TABLE mine (card text);
CREATE TRIGGER mine BEFORE INSERT ON mine FOR EACH ROW EXECUTE FUNCTION korv_views.mask_column();
CREATE INDEX ON mine (korv_views.mask_column(card, 'CCN, secret=crm', NULL, 'card'));
CREATE POLICY mine ON mine USING (korv_views.mask_column(card, 'KEEP', NULL, 'card') IS NULL);
SELECT 'korv_views.mask_column(text,text,text,text)'::regprocedure;
GRANT USAGE ON SCHEMA korv_views TO reader;
ALTER FUNCTION korv_views.mask_column RENAME TO mine;
INSERT INTO customers_masked (id) VALUES (3);
UPDATE customers_masked SET id = 3;
CREATE OR REPLACE VIEW customers_masked AS SELECT 1;
DROP TABLE mine;

-- Roles that may use every schema, and roles that were granted this one by mistake.
\c - :superuser
GRANT pg_read_all_data TO stranger;
GRANT pg_write_all_data TO masker;
GRANT USAGE ON SCHEMA korv_views TO reader;
\c - stranger
SELECT korv_views.mask_column('4556737586899855', 'CCN, secret=crm', NULL, 'card');
SET search_path = korv_views;
SELECT mask_column('4556737586899855', 'CCN, secret=crm', NULL, 'card');
RESET search_path;
CREATE TEMP VIEW mine AS SELECT korv_views.mask_column('4556', 'CCN, secret=crm', NULL, 'card');
SELECT count(*) FROM customers_masked;
\c - masker
CREATE TEMP TABLE mine (card text DEFAULT korv_views.mask_column('4556', 'KEEP', NULL, 'card'));
SELECT korv_views.mask_column('4556737586899855', 'CCN, secret=crm', NULL, 'card');
\c - reader
DO $$BEGIN PERFORM korv_views.mask_column('4556', 'KEEP', NULL, 'card'); END$$;
SELECT count(*) FROM customers_masked;
\c - :superuser
REVOKE pg_read_all_data FROM stranger;
REVOKE pg_write_all_data FROM masker;
REVOKE USAGE ON SCHEMA korv_views FROM reader;

-- The owner of the view has not got the right to name the function either.
\c - owner
SELECT pg_get_viewdef('customers_masked') AS definition \gset
CREATE OR REPLACE VIEW customers_masked AS :definition
CREATE VIEW other_masked AS :definition
-- The secret is checked for the role that creates a view, also if another role has set the label.
\c - :superuser
SECURITY LABEL FOR korv ON COLUMN customers."Name" IS 'AFF, secret=payroll';
\c - owner
DROP VIEW customers_masked;
SELECT column_name, problem FROM korv.check('customers') WHERE problem IS NOT NULL;
SELECT korv.create_masked_view('customers');
SELECT korv.masked_select('customers');
SELECT to_regclass('customers_masked');
\c - :superuser
REVOKE CREATE ON SCHEMA public FROM owner;
SECURITY LABEL FOR korv ON COLUMN customers."Name" IS 'AFF, secret=crm';
\c - owner
SELECT korv.create_masked_view('customers');
-- A superuser may create it, and it belongs to the owner of the table all the same.
\c - :superuser
SELECT korv.create_masked_view('customers');
SELECT relowner::regrole FROM pg_class WHERE relname = 'customers_masked';
SELECT current_user = :'superuser' AS same_user, current_setting('search_path');

DROP VIEW customers_masked;
DROP TABLE customers, expected;
DROP OWNED BY owner, masker, reader, stranger;
DROP ROLE owner, masker, reader, stranger;
