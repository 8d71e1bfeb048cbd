-- korv.mask and korv.mask_column: values, rules and failures.
CREATE EXTENSION korv;
\set VERBOSITY terse

SELECT korv.mask('4556737586899855', 'CCN, secret=crm');
SELECT korv.mask('4556737586899855', 'ccn , secret = crm') = korv.mask('4556737586899855', 'CCN, secret=crm');
SELECT korv.mask('4556737586899855', 'CCN, secret=payroll') = korv.mask('4556737586899855', 'CCN, secret=crm');
SELECT korv.mask('Zoë', 'CONST, value=Größe'), korv.mask('a', 'KEEP'), korv.mask('a', 'NULL') IS NULL;
SELECT korv.mask(NULL, 'CCN, secret=crm') IS NULL, korv.mask('', 'CCN, secret=crm') = '';
SELECT korv.mask('2024-02-29', 'AGE, secret=crm, range=-30..30, per=ID', '17')
     = korv.mask('2024-02-29', 'AGE, secret=crm, range=-30..30, per=ID', '18') AS same_move;
-- More rules at one place than are kept open.
SELECT count(DISTINCT masked), count(*) FROM (
    SELECT korv.mask('Anna Adler', 'AFF, secret=crm, scope=s' || i % 20) AS masked
    FROM generate_series(1, 2000) AS i) AS many;

-- Rules that are refused.
SELECT korv.mask('a', NULL);
SELECT korv.mask_column('a', 'KEEP', NULL, NULL);
SELECT korv.mask('a', '');
SELECT korv.mask('a', 'DROP');
SELECT korv.mask('a', E'KEEP\nB = KEEP');
SELECT korv.mask('a', 'CARD = CCN, secret=crm');
SELECT korv.mask('a', 'CCN, secret=unknown');
SELECT korv.mask('a', 'CCN, secret=crm, prefix=9');
\echo :LAST_ERROR_SQLSTATE
\set VERBOSITY sqlstate
SELECT korv.mask('a', 'NOTHING');
\set VERBOSITY terse

-- Values that fail.
SELECT korv.mask('4556', 'CCN, secret=crm');
\echo :LAST_ERROR_SQLSTATE
\set VERBOSITY default
SELECT korv.mask_column('4556 x', 'CCN, secret=crm', NULL, 'Card "No"');
SELECT korv.mask('2024-02-29', 'AGE, secret=crm, range=-30..30, per=ID');
\set VERBOSITY terse
-- What the rule says about failures does not matter here.
SELECT korv.mask('4556', 'CCN, secret=crm, on-error=const, value=clear');
SELECT korv.mask('4556', 'CCN, secret=crm, on-error=abort');
SELECT korv.mask('4556', 'CCN, secret=crm, on-error=drop-row');
SET korv.on_error = 'null';
SELECT korv.mask('4556', 'CCN, secret=crm') IS NULL,
    korv.mask('4556', 'CCN, secret=crm, on-error=abort') IS NULL,
    korv.mask('4556', 'CCN, secret=crm, on-error=const, value=x') IS NULL;
SET korv.on_error = 'empty';
RESET korv.on_error;

-- Files that rules name.
SELECT korv.mask('a', 'LKP, file=/etc/passwd');
SELECT korv.mask('a', 'LKP, file=../secrets.txt');
SELECT korv.mask('Berlin', 'LKP, file=cities.txt');
SET korv.lookup_folders = '';
SELECT korv.mask('Berlin', 'LKP, file=cities.txt');
SELECT korv.mask('a', 'LKP, file=/etc/passwd');
SET korv.lookup_folders = 'here';
SET korv.secrets_file = 'here';
RESET korv.lookup_folders;
-- A file that does not exist.
SET korv.secrets_file = '/nowhere';
SELECT korv.mask('a', 'AFF, secret=crm');
RESET korv.secrets_file;

-- In other encodings.
CREATE DATABASE latin1 ENCODING 'LATIN1' LC_COLLATE 'C' LC_CTYPE 'C' TEMPLATE template0;
CREATE DATABASE win1252 ENCODING 'WIN1252' LC_COLLATE 'C' LC_CTYPE 'C' TEMPLATE template0;
CREATE DATABASE ascii ENCODING 'SQL_ASCII' LC_COLLATE 'C' LC_CTYPE 'C' TEMPLATE template0;
\c latin1
CREATE EXTENSION korv;
SET client_encoding = 'UTF8';
SELECT korv.mask('x', 'CONST, value=Größe'), length(korv.mask('x', 'CONST, value=Größe'));
SELECT korv.mask('Größe', 'CONST, value=€');
SELECT korv.mask('x', 'HASH, method=seed, seed=autumn, list=Größe;Größe'), korv.mask('é', 'KEEP');
SELECT korv.mask('é', 'AFF, secret=crm');
\c win1252
CREATE EXTENSION korv;
\set VERBOSITY terse
SET client_encoding = 'UTF8';
SELECT korv.mask('x', 'CONST, value=€');
-- A character that has no Unicode character. It is not shown.
SELECT korv.mask('abc' || chr(129), 'AFF, secret=crm');
\c ascii
CREATE EXTENSION korv;
\set VERBOSITY terse
SELECT korv.mask(E'abc\xe9', 'AFF, secret=crm');
SELECT korv.mask('abc', 'AFF, secret=crm');
\c contrib_regression
DROP DATABASE latin1;
DROP DATABASE win1252;
DROP DATABASE ascii;
