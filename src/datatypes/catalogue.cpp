// The catalogue's rows, and the questions about a type alone.
#include "datatypes/catalogue.h"

#include <iterator>

namespace korv {
namespace {

using enum Family;

constexpr DataType gKORV_DataTypes[] = {
    {0, "0", unknown, 0, 0, 0},
    {CHAR, "CHAR", fixedText, 1, 0, 0},
    {VARCHAR, "VARCHAR", variableText, 1, 0, 0},
    {VARCHAR_SZ, "VARCHAR_SZ", terminatedText, 1, 0, 0},
    {WCHAR, "WCHAR", fixedText, 4, 0, 0},
    {WVARCHAR, "WVARCHAR", variableText, 4, 0, 0},
    {WVARCHAR_SZ, "WVARCHAR_SZ", terminatedText, 4, 0, 0},
    {LONG_LONG, "LONG_LONG", number, 0, 8, 21},
    {U_LONG_LONG, "U_LONG_LONG", number, 0, 8, 21},
    {INTEGER, "INTEGER", number, 0, 4, 11},
    {U_INTEGER, "U_INTEGER", number, 0, 4, 11},
    {11, "11", unknown, 0, 0, 0},
    {12, "12", unknown, 0, 0, 0},
    {DECIMAL_PACKED, "DECIMAL_PACKED", opaqueNumber, 0, 16, 42},
    {ODBC_DATE, "ODBC_DATE", moment, 0, 12, 50},
    {ODBC_TIME, "ODBC_TIME", moment, 0, 12, 50},
    {ODBC_TIMESTAMP, "ODBC_TIMESTAMP", moment, 0, 20, 50},
    {DATETIME_SZ, "DATETIME_SZ", terminatedText, 1, 50, 50},
    {DATETIME_WSZ, "DATETIME_WSZ", terminatedText, 4, 200, 50},
    {DOUBLE, "DOUBLE", number, 0, 8, 32},
    {FLOAT, "FLOAT", number, 0, 4, 32},
    {SMALLINT, "SMALLINT", number, 0, 2, 6},
    {USMALLINT, "USMALLINT", number, 0, 2, 6},
    {TINYINT, "TINYINT", number, 0, 1, 4},
    {UTINYINT, "UTINYINT", number, 0, 1, 4},
    {DATETIME_CHAR, "DATETIME_CHAR", fixedText, 1, 50, 50},
    {DATETIME_VARCHAR, "DATETIME_VARCHAR", variableText, 1, 50, 50},
    {DATETIME_WCHAR, "DATETIME_WCHAR", fixedText, 4, 200, 50},
    {DATETIME_WVARCHAR, "DATETIME_WVARCHAR", variableText, 4, 200, 50},
};

constexpr int16_t sKORV_DataTypesSize = std::size(gKORV_DataTypes);
static_assert(sKORV_DataTypesSize == 29);

consteval bool rowsStandAtTheirCodes() {
    for (int32_t code = 0; code < sKORV_DataTypesSize; ++code) {
        if (gKORV_DataTypes[code].code != code) return false;
    }
    return true;
}
static_assert(rowsStandAtTheirCodes());

// The one type beyond the catalogue's range; it has no name.
constexpr DataType kDataType101 = {DATATYPE_101, nullptr, opaqueNumber, 0, 50, 51};

int32_t valueBytes(const FieldDefI& field, uint32_t& bytes) noexcept {
    const DataType& type = dataType(field.dataType);
    if (type.family == unknown) return KORV_TYPE_UNKNOWN;
    bytes = type.bytes ? type.bytes : field.length * type.unit;
    return KORV_SUCCESS;
}

int32_t textLength(const FieldDefI& field, uint32_t& length) noexcept {
    const DataType& type = dataType(field.dataType);
    if (type.family == unknown) return KORV_TYPE_UNKNOWN;
    if (!type.textLength) return KORV_TYPE_VARIABLE;
    length = type.textLength;
    return isText(type) ? KORV_TYPE_DATETIME : KORV_SUCCESS;
}

// KORV_SUCCESS for a text of such units.
int32_t checkUnit(int16_t code, std::size_t unit) noexcept {
    return dataType(code).unit == unit ? KORV_SUCCESS : KORV_FAILURE;
}

}  // namespace

const DataType& dataType(int16_t code) noexcept {
    if (code == DATATYPE_101) return kDataType101;
    const bool listed = code >= 0 && code < sKORV_DataTypesSize;
    return gKORV_DataTypes[listed ? code : 0];
}

}  // namespace korv

int32_t GetDataTypeBytes(const FieldDefI* field, uint32_t* bytes) {
    if (!field) return KORV_TYPE_NO_FIELD;
    return korv::valueBytes(*field, *bytes);
}

int32_t GetDataTypeLengths(const FieldDefI* field, uint32_t* length) {
    return korv::textLength(*field, *length);
}

const char* KORVGetDataTypeName(int16_t code) {
    if (code <= 0 || code >= korv::sKORV_DataTypesSize) return nullptr;
    return korv::gKORV_DataTypes[code].name;
}

int32_t KORV_IsCharacterDatatype(int16_t code) {
    return korv::checkUnit(code, sizeof(char));
}

int32_t KORV_IsWideCharacterDatatype(int16_t code) {
    return korv::checkUnit(code, sizeof(wchar_t));
}
