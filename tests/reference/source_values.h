// What each data type makes of the length of a buffer, and how its values are processed.
#pragma once

#include <cstdint>

#include "korv/datatypes.h"

namespace reference {

enum class Rule { none, kept, prefix, narrowText, wideText, constant };

struct LengthRow {
    int16_t code;
    Rule rule;
    int32_t bytes;
};

inline constexpr LengthRow kLengthRows[] = {
    {CHAR, Rule::kept, 0},
    {VARCHAR, Rule::prefix, 0},
    {VARCHAR_SZ, Rule::narrowText, 0},
    {WCHAR, Rule::kept, 0},
    {WVARCHAR, Rule::prefix, 0},
    {WVARCHAR_SZ, Rule::wideText, 0},
    {LONG_LONG, Rule::constant, 8},
    {U_LONG_LONG, Rule::constant, 8},
    {INTEGER, Rule::constant, 4},
    {U_INTEGER, Rule::constant, 4},
    {DECIMAL_PACKED, Rule::kept, 0},
    {ODBC_DATE, Rule::constant, 12},
    {ODBC_TIME, Rule::constant, 12},
    {ODBC_TIMESTAMP, Rule::constant, 20},
    {DATETIME_SZ, Rule::narrowText, 0},
    {DATETIME_WSZ, Rule::wideText, 0},
    {DOUBLE, Rule::constant, 8},
    {FLOAT, Rule::constant, 4},
    {SMALLINT, Rule::constant, 2},
    {USMALLINT, Rule::constant, 2},
    {TINYINT, Rule::constant, 1},
    {UTINYINT, Rule::constant, 1},
    {DATETIME_CHAR, Rule::kept, 0},
    {DATETIME_VARCHAR, Rule::prefix, 0},
    {DATETIME_WCHAR, Rule::kept, 0},
    {DATETIME_WVARCHAR, Rule::prefix, 0},
    {101, Rule::kept, 0},
};

inline LengthRow lengthRow(int code) {
    for (const LengthRow& row : kLengthRows) {
        if (row.code == code) return row;
    }
    return {static_cast<int16_t>(code), Rule::none, 0};
}

inline int32_t expectedClass(int code) {
    switch (code) {
        case CHAR:
        case VARCHAR:
        case VARCHAR_SZ:
        case WCHAR:
        case WVARCHAR:
        case WVARCHAR_SZ:
        case DATETIME_SZ:
        case DATETIME_WSZ:
        case DATETIME_CHAR:
        case DATETIME_VARCHAR:
        case DATETIME_WCHAR:
        case DATETIME_WVARCHAR:
            return KORV_CLASS_TEXT;
        case LONG_LONG:
        case U_LONG_LONG:
        case INTEGER:
        case U_INTEGER:
        case DECIMAL_PACKED:
        case DOUBLE:
        case FLOAT:
        case SMALLINT:
        case USMALLINT:
        case TINYINT:
        case UTINYINT:
        case 101:
            return KORV_CLASS_NUMBER;
        default:
            return -1;
    }
}

}  // namespace reference
