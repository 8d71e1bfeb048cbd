// The catalogue of data types as a table of its own.
#pragma once

#include <cstdint>

#include "korv/datatypes.h"

namespace reference {

inline constexpr uint32_t kUntouched = 0xABCDEF01;

struct CatalogueRow {
    int16_t code;
    const char* name;       // null: the catalogue has none
    uint32_t perCharacter;  // bytes for each character of the field length, or 0
    uint32_t bytes;         // constant bytes where perCharacter is 0
    int32_t lengthStatus;
    uint32_t textLength;
    bool narrow;
    bool wide;
};

inline constexpr CatalogueRow kCatalogue[] = {
    {CHAR, "CHAR", 1, 0, KORV_TYPE_VARIABLE, kUntouched, true, false},
    {VARCHAR, "VARCHAR", 1, 0, KORV_TYPE_VARIABLE, kUntouched, true, false},
    {VARCHAR_SZ, "VARCHAR_SZ", 1, 0, KORV_TYPE_VARIABLE, kUntouched, true, false},
    {WCHAR, "WCHAR", 4, 0, KORV_TYPE_VARIABLE, kUntouched, false, true},
    {WVARCHAR, "WVARCHAR", 4, 0, KORV_TYPE_VARIABLE, kUntouched, false, true},
    {WVARCHAR_SZ, "WVARCHAR_SZ", 4, 0, KORV_TYPE_VARIABLE, kUntouched, false, true},
    {LONG_LONG, "LONG_LONG", 0, 8, 0, 21, false, false},
    {U_LONG_LONG, "U_LONG_LONG", 0, 8, 0, 21, false, false},
    {INTEGER, "INTEGER", 0, 4, 0, 11, false, false},
    {U_INTEGER, "U_INTEGER", 0, 4, 0, 11, false, false},
    {DECIMAL_PACKED, "DECIMAL_PACKED", 0, 16, 0, 42, false, false},
    {ODBC_DATE, "ODBC_DATE", 0, 12, 0, 50, false, false},
    {ODBC_TIME, "ODBC_TIME", 0, 12, 0, 50, false, false},
    {ODBC_TIMESTAMP, "ODBC_TIMESTAMP", 0, 20, 0, 50, false, false},
    {DATETIME_SZ, "DATETIME_SZ", 0, 50, KORV_TYPE_DATETIME, 50, true, false},
    {DATETIME_WSZ, "DATETIME_WSZ", 0, 200, KORV_TYPE_DATETIME, 50, false, true},
    {DOUBLE, "DOUBLE", 0, 8, 0, 32, false, false},
    {FLOAT, "FLOAT", 0, 4, 0, 32, false, false},
    {SMALLINT, "SMALLINT", 0, 2, 0, 6, false, false},
    {USMALLINT, "USMALLINT", 0, 2, 0, 6, false, false},
    {TINYINT, "TINYINT", 0, 1, 0, 4, false, false},
    {UTINYINT, "UTINYINT", 0, 1, 0, 4, false, false},
    {DATETIME_CHAR, "DATETIME_CHAR", 0, 50, KORV_TYPE_DATETIME, 50, true, false},
    {DATETIME_VARCHAR, "DATETIME_VARCHAR", 0, 50, KORV_TYPE_DATETIME, 50, true, false},
    {DATETIME_WCHAR, "DATETIME_WCHAR", 0, 200, KORV_TYPE_DATETIME, 50, false, true},
    {DATETIME_WVARCHAR, "DATETIME_WVARCHAR", 0, 200, KORV_TYPE_DATETIME, 50, false, true},
    {101, nullptr, 0, 50, 0, 51, false, false},
};

inline const CatalogueRow* catalogueRow(int code) {
    for (const CatalogueRow& row : kCatalogue) {
        if (row.code == code) return &row;
    }
    return nullptr;
}

}  // namespace reference
