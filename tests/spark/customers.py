"""A table of customers of any length, the rules for it, and a secret."""
import secrets

import duckdb

RULES = """
ID    = KEEP
CARD  = CCN, secret=crm
EMAIL = EML, secret=crm
NAME  = AFF, secret=crm, on-error=null
BIRTH = AGE, secret=crm, range=-30..30, per=ID
NOTE  = DROP
"""
MASKED = ["CARD", "EMAIL", "NAME", "BIRTH"]
# Every 1009th name has a letter that AFF does not mask, and every 997th card is missing.
QUERY = """
select i as ID,
       if(i % 997 = 0, null, format('4{:015d}', (i * 7919000021) % 1000000000000000)) as CARD,
       'user' || i % 700001 || '@mail' || i % 89 || '.example' as EMAIL,
       if(i % 1009 = 0, 'Zoë ', 'Ann ') || chr(65 + (i % 26)::int) || 'elm' || i % 5003 as NAME,
       date '1940-01-01' + (i * 37 % 25000)::int as BIRTH,
       'called on day ' || i % 365 as NOTE
from range(ROWS) as numbers(i)
"""


def write_customers(path, rows):
    """As Parquet, in row groups that Spark can read as partitions of their own."""
    query = QUERY.replace("ROWS", str(rows))
    duckdb.sql(f"copy ({query}) to '{path}' (format parquet, row_group_size 50000)")


def write_secrets(path):
    """Writes a secrets file that only its owner may read, and returns the secret."""
    path.touch(mode=0o600)
    value = secrets.token_bytes(32)
    path.write_text(f"crm = {value.hex()}\n")
    return value
