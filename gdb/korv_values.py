"""What gdb shows of korv's values: texts, data by type, and the names of types and tokens."""
import struct
from collections.abc import Iterable
from typing import Optional, Union

import gdb

LIMIT = 200  # characters of a text, records of a list
QUOTED = '"\\'  # characters that a backslash makes part of a text

TYPES = dict(enumerate(
    "CHAR VARCHAR VARCHAR_SZ WCHAR WVARCHAR WVARCHAR_SZ LONG_LONG U_LONG_LONG INTEGER U_INTEGER - "
    "- DECIMAL_PACKED ODBC_DATE ODBC_TIME ODBC_TIMESTAMP DATETIME_SZ DATETIME_WSZ DOUBLE FLOAT "
    "SMALLINT USMALLINT TINYINT UTINYINT DATETIME_CHAR DATETIME_VARCHAR DATETIME_WCHAR "
    "DATETIME_WVARCHAR".split(), start=1))
TYPES[101] = "DATATYPE_101"

# By the code of the type: the bytes of a character, the form of a number or record, plain bytes.
FIXED_TEXT = {1: 1, 4: 4, 25: 1, 27: 4}
VARIABLE_TEXT = {2: 1, 5: 4, 26: 1, 28: 4}
TERMINATED_TEXT = {3: 1, 6: 4, 17: 1, 18: 4}
NUMBERS = {7: "<q", 8: "<Q", 9: "<i", 10: "<I", 19: "<d", 20: "<f", 21: "<h", 22: "<H", 23: "<b",
           24: "<B"}
MOMENTS = {14: "<h2H", 15: "<h5H", 16: "<h5H"}
OPAQUE = {13: 16, 101: 50}

TOKENS = dict(enumerate(
    "DATATYPE PROVIDER METHOD COLNAME SRCDATA ROW_COUNT ROWS_LIST COLINDEX ROWDEFINE_COUNT MASK "
    "YEAR MONTH DAY WEEK CENTURY DSTDATA SRC_DATATYPE DST_DATATYPE SRCFORMAT OPERAND_LIST "
    "OPERAND_COUNT COL_LIST COL_COUNT SRC_COLTYPE SRC_COLLIST FLAG INFO_REQUEST BUFFER_SIZE "
    "LIB_NAME PROC_NAME ENV_VARIABLE ENV_VALUE TRIMCHAR SEED SRCLEN EXPSRCLEN COUNTRY SEP "
    "NAME1_COLINDEX NAME2_COLINDEX USERPRFX_LEN DOMAIN_LEN HASHSEED_LEN TIMESTAMP SRCDST PATH "
    "SQLSTATE SQLCODE SQLMESSAGE BUF_EXPECTED_LEN ERR_CODE CHAR_POS PARMVALUE PARMKEY - ERR_FILE "
    "TRC_FILE MAX_TRC_FILE_NUM ICU_DIR ICU_CNV_NAME ICU_CODEPAGE ICU_NEAREST_CODEPAGE "
    "ICU_MB_MINBYTES ICU_MB_MAXBYTES ICU_MB_TYPE ICU_MB_AorE ICU_DBMSCODE ICU_ALIAS SP_FILE "
    "ERRMSG MSG_ID MSG_SRC MSG_TEXT MSG_BODY ALGO SERVICE_TOKEN ORA_CHARSET ORA_NCHARSET "
    "TABLENAME PARMVALUE_SUBTYPE COLLEN KEY KEY_SIZE TWEAKS_LEN RADIX ITERATIONS STATE_BYTES "
    "UNICODE_CODEPOINT SUBSTR CODEPAGE".split(), start=1))
for names in TYPES, TOKENS:
    for gap in [number for number, name in names.items() if name == "-"]:
        del names[gap]


def type_name(code: int) -> str:
    return TYPES.get(code, f"<type {code}>")


def token_name(number: int) -> str:
    return f"KORV_TOKID_{TOKENS[number]}" if number in TOKENS else f"<token {number}>"


# ---- Memory --------------------------------------------------------------------------------------

def peek(address: int, size: int) -> bytes:
    return bytes(gdb.selected_inferior().read_memory(address, size))


def unreadable(address: int) -> str:
    return f"<cannot read {address:#x}>"


def dump(address: int, size: int) -> str:
    try:
        return peek(address, size).hex(" ") if size > 0 else "no bytes"
    except gdb.MemoryError:
        return unreadable(address)


# ---- Texts ---------------------------------------------------------------------------------------

def shown(codes: Iterable[int], marks: str = "") -> str:
    """Characters as text: what the terminal cannot show as its number, `marks` with a backslash."""
    charset = gdb.host_charset() if hasattr(gdb, "host_charset") else "ascii"

    def one(code: int) -> str:
        # Undecodable bytes have come in as these surrogates.
        if 0xDC80 <= code <= 0xDCFF:
            return f"\\x{code - 0xDC00:02x}"
        try:
            chr(code).encode(charset)
        except (ValueError, OverflowError):  # UnicodeEncodeError is a ValueError
            return f"\\x{{{code:x}}}"
        if not chr(code).isprintable():
            return f"\\x{code:02x}"
        return "\\" + chr(code) if chr(code) in marks else chr(code)

    return "".join(map(one, codes))


def characters(address: int, unit: int, count: Optional[int]) -> tuple[list[int], str]:
    """A text of `count` characters, or up to its terminator, and what else is to be said of it."""
    data = b""
    remark = ""
    while count is None or len(data) < count * unit:
        if len(data) == LIMIT * unit:
            remark = "..."
            break
        # One at a time: after the last one there may be no memory.
        try:
            character = peek(address + len(data), unit)
        except gdb.MemoryError:
            remark = unreadable(address + len(data))
            break
        if count is None and not any(character):
            break
        data += character
    if unit == 1:
        return list(map(ord, data.decode("utf-8", "surrogateescape"))), remark
    return list(struct.unpack(f"<{len(data) // 4}I", data)), remark


def text_at(pointer: gdb.Value, unit: int) -> str:
    """A zero-terminated text of a record, in the form of the language."""
    if not int(pointer):
        return "<no text>"
    text, remark = characters(int(pointer), unit, None)
    quoted = ("L" if unit == 4 else "") + '"' + shown(text, QUOTED) + '"'
    return remark if not text and remark else quoted + remark


# ---- Data by its type ----------------------------------------------------------------------------

def date_text(year: int, month: int, day: int) -> str:
    return f"{'-' if year < 0 else ''}{abs(year):04}-{month:02}-{day:02}"


def timestamp_text(year: int, month: int, day: int, hour: int, minute: int, second: int) -> str:
    return f"{date_text(year, month, day)} {hour:02}:{minute:02}:{second:02}"


def decoded(data: int, length: int, code: int) -> Union[str, int, float]:
    """The data of a value record of the given length: a number, or text."""
    unit = {**FIXED_TEXT, **VARIABLE_TEXT, **TERMINATED_TEXT}.get(code)
    if unit:
        count = None
        if code in FIXED_TEXT:
            count = length // unit
        elif code in VARIABLE_TEXT:
            length = struct.unpack("<h", peek(data, 2))[0]
            count = length // unit
            data += 2
        if count is not None and count < 0:
            return f"<length {length}>"
        text, remark = characters(data, unit, count)
        return shown(text) + remark
    if code in NUMBERS:
        form = NUMBERS[code]
        return struct.unpack(form, peek(data, struct.calcsize(form)))[0]
    if code in MOMENTS:
        form = MOMENTS[code]
        numbers = struct.unpack(form, peek(data, struct.calcsize(form)))
        return date_text(*numbers) if len(numbers) == 3 else timestamp_text(*numbers)
    if code in OPAQUE:
        return dump(data, OPAQUE[code])
    return type_name(code)


def target(value: gdb.Value) -> gdb.Value:
    return value.dereference() if value.type.strip_typedefs().code == gdb.TYPE_CODE_PTR else value


def members(any_type: gdb.Type) -> set[str]:
    """The names of a record's members; other types have none."""
    record_type = any_type.strip_typedefs()
    is_record = record_type.code == gdb.TYPE_CODE_STRUCT
    return {field.name for field in record_type.fields()} if is_record else set()


class ValueFunction(gdb.Function):
    """$korv_value(RECORD, TYPE): the data of a ValueRecord as TYPE. That is a data type code, a
    field definition, or a control block whose first reference names the field. Pointers will do."""

    def __init__(self) -> None:
        super().__init__("korv_value")

    def invoke(self, *arguments: gdb.Value) -> Union[str, int, float]:
        try:
            record, kind = map(target, arguments)
            data, length = int(record["data"]), int(record["length"])
            if "fieldRefs" in members(kind.type):
                kind = kind["fieldRefs"]["fieldDef"].dereference()
            code = int(kind["dataType"] if "dataType" in members(kind.type) else kind)
            null = int(record["nullIndicator"]) == 1 or not data
            return "<null>" if null else decoded(data, length, code)
        except gdb.MemoryError as error:
            return f"<{error}>"
        except (gdb.error, TypeError, ValueError) as error:
            raise gdb.GdbError("use: $korv_value(VALUE RECORD, TYPE OR FIELD)") from error


ValueFunction()
