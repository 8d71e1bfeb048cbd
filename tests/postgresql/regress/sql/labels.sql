-- Labels of columns, korv.check and korv.masked_select.
\set VERBOSITY terse
CREATE DOMAIN card AS varchar(19) CHECK (VALUE <> '');
CREATE DOMAIN "old card" AS card;
CREATE TYPE mood AS ENUM ('good', 'bad');
CREATE TABLE people (
    id int8 GENERATED ALWAYS AS IDENTITY,
    gone text,
    "Card ""No""" "old card",
    mail varchar(60),
    born date,
    seen timestamptz,
    at timestamp,
    code char(6),
    amount numeric(12, 2),
    key uuid,
    mood mood,
    tags text[],
    weight float8,
    twice text GENERATED ALWAYS AS (lower(mail)) STORED,
    note "char");
ALTER TABLE people DROP COLUMN gone;

-- All columns without a label are named together.
SECURITY LABEL FOR korv ON COLUMN people.id IS 'NID, secret=crm, integer=int8';
SELECT * FROM korv.check('people');
SELECT korv.masked_select('people');
SELECT korv.create_masked_view('people');

-- Labels that are refused.
SECURITY LABEL FOR korv ON COLUMN people.mail IS 'EML';
SECURITY LABEL FOR korv ON COLUMN people.mail IS '';
SECURITY LABEL FOR korv ON COLUMN people.mail IS 'EML, secret=unknown';
SECURITY LABEL FOR korv ON COLUMN people.born IS 'AGE, secret=crm, range=-9..9, per=NOBODY';
SECURITY LABEL FOR korv ON COLUMN people.born IS 'AGE, secret=crm, range=-9..9, per=WEIGHT';
SECURITY LABEL FOR korv ON COLUMN people.mood IS 'HASH, secret=crm, list=good;bad';
SECURITY LABEL FOR korv ON COLUMN people.tags IS 'CONST, value={}';
SECURITY LABEL FOR korv ON COLUMN people.weight IS 'NID, secret=crm';
SECURITY LABEL FOR korv ON COLUMN people.note IS 'AFF, secret=crm';
SECURITY LABEL FOR korv ON TABLE people IS 'KEEP';
SECURITY LABEL FOR korv ON SCHEMA public IS 'KEEP';
SECURITY LABEL FOR korv ON ROLE pg_monitor IS 'KEEP';
CREATE VIEW ids AS SELECT id FROM people;
SECURITY LABEL FOR korv ON COLUMN ids.id IS 'KEEP';
DROP VIEW ids;

SECURITY LABEL FOR korv ON COLUMN people."Card ""No""" IS 'CCN, secret=crm';
SECURITY LABEL FOR korv ON COLUMN people.mail IS 'EML, secret=crm, scope=a''b\c';
SECURITY LABEL FOR korv ON COLUMN people.born IS 'AGE, secret=crm, range=-9..9, per=SEEN';
SECURITY LABEL FOR korv ON COLUMN people.seen IS 'AGE, secret=crm, range=-9..9, per=BORN';
SECURITY LABEL FOR korv ON COLUMN people.at IS 'AGE, method=move, days=1';
SECURITY LABEL FOR korv ON COLUMN people.code IS 'AFF, secret=crm';
SECURITY LABEL FOR korv ON COLUMN people.amount IS 'CONST, value=0.5';
SECURITY LABEL FOR korv ON COLUMN people.key IS 'CONST, value=00000000-0000-0000-0000-000000000000';
SECURITY LABEL FOR korv ON COLUMN people.mood IS 'NULL';
SECURITY LABEL FOR korv ON COLUMN people.tags IS 'NULL';
SECURITY LABEL FOR korv ON COLUMN people.weight IS 'KEEP';
SECURITY LABEL FOR korv ON COLUMN people.twice IS 'DROP';
SECURITY LABEL FOR korv ON COLUMN people.note IS 'KEEP';
SELECT column_name, rule, action, method, secret, length(fingerprint) AS fingerprint, protection,
    related, type, problem FROM korv.check('people');

INSERT INTO people ("Card ""No""", mail, born, seen, at, code, amount, key, mood, tags, weight, note)
VALUES ('4556737586899855', 'Anna.Adler@mail.example', '1992-04-11', '2024-02-29 14:30:00.125+00',
        '2024-02-29 14:30', 'ab12', 12.34, 'a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11', 'good', '{a,b}',
        1.5, 'x'),
    (NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL);
SELECT korv.masked_select('people') AS statement \gset
SELECT * FROM (:statement) AS masked ORDER BY id \gx
CREATE TABLE masked AS :statement;
SELECT attname, format_type(atttypid, atttypmod) FROM pg_attribute
WHERE attrelid = 'masked'::regclass AND attnum > 0 ORDER BY attnum;

-- The result does not depend on settings of the session.
SET DateStyle = 'SQL, DMY';
SET TimeZone = 'Pacific/Auckland';
SET standard_conforming_strings = off;
SET quote_all_identifiers = on;
SET extra_float_digits = -15;
SELECT korv.masked_select('people') AS statement \gset
CREATE TABLE again AS :statement;
RESET ALL;
SELECT count(*) AS same FROM masked JOIN again ON masked::text = again::text;

-- Dates beyond what can be masked fail rather than pass.
SELECT korv.masked_select('people') AS statement \gset
UPDATE people SET born = '0044-03-15 BC', seen = 'infinity' WHERE born IS NOT NULL;
:statement;
SET korv.on_error = 'null';
SELECT count(*), count(born), count(seen) FROM (:statement) AS masked;
RESET korv.on_error;

-- A value is never cut to the length of its column.
CREATE TABLE short (code varchar(3));
INSERT INTO short VALUES ('abc');
SECURITY LABEL FOR korv ON COLUMN short.code IS 'CONST, value=longer';
SELECT korv.masked_select('short') AS statement \gset
:statement;

-- Labels that do not fit any more are found, all at once, and nothing is masked.
ALTER TABLE people RENAME seen TO last_seen;
ALTER TABLE people ALTER amount TYPE float8;
SELECT column_name, problem FROM korv.check('people') WHERE problem IS NOT NULL;
\set VERBOSITY default
SELECT korv.masked_select('people');
\set VERBOSITY terse
SELECT korv.create_masked_view('people');
ALTER TABLE people ADD seen text, ADD "SEEN" text;
SELECT column_name, problem FROM korv.check('people');
SECURITY LABEL FOR korv ON COLUMN people.seen IS 'DROP';
SECURITY LABEL FOR korv ON COLUMN people."SEEN" IS 'DROP';
SELECT column_name, problem FROM korv.check('people') WHERE problem IS NOT NULL;

-- A label is removed by NULL, and one of another kind is kept apart.
SECURITY LABEL FOR korv ON COLUMN people.id IS NULL;
SELECT count(*) FROM korv.check('people');

-- Partitions are read through their table.
CREATE TABLE events (id int, card text) PARTITION BY RANGE (id);
CREATE TABLE events_1 PARTITION OF events FOR VALUES FROM (0) TO (10);
CREATE TABLE events_2 PARTITION OF events FOR VALUES FROM (10) TO (20);
INSERT INTO events SELECT i, '4556737586899855' FROM generate_series(0, 19) AS i;
SECURITY LABEL FOR korv ON COLUMN events.id IS 'KEEP';
SECURITY LABEL FOR korv ON COLUMN events.card IS 'CCN, secret=crm';
SELECT korv.masked_select('events') AS statement \gset
SELECT count(*), count(DISTINCT card) FROM (:statement) AS masked;
SELECT korv.masked_select('events_1');
DROP TABLE people, masked, again, short, events;
DROP DOMAIN "old card", card;
DROP TYPE mood;
