// Values for the capture of tokens, of any type and with any length, and what a capture makes of
// them.
#pragma once

#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <string>
#include <vector>

#include "korv/errors.h"
#include "reference/catalogue.h"
#include "support/input.h"

namespace fuzz {

// A value to capture, and what is to come of it.
struct TokenValue {
    std::vector<char> bytes;
    uint32_t length = 0;  // the argument
    int32_t status = KORV_SUCCESS;
    std::wstring text;
    uint32_t accounted = 0;  // characters
};

// Their bytes can be counted by a length prefix.
constexpr std::size_t kMostCharacters = 4000;

template <class T>
std::vector<char> bytesOf(const T* values, std::size_t count) {
    const auto* bytes = reinterpret_cast<const char*>(values);
    return {bytes, bytes + count * sizeof(T)};
}

// Puts a length prefix in front, which may promise less than no text.
inline void addPrefix(Input& input, TokenValue& value, uint32_t unit) {
    auto prefix = static_cast<int16_t>(value.bytes.size());
    if (input.choice(8) == 7) {
        prefix = static_cast<int16_t>(-1 - static_cast<int>(input.choice(8)));
        value.text.clear();
        value.accounted = static_cast<uint32_t>(prefix / static_cast<int32_t>(unit));
        // So many characters take nearly all memory; one less than none takes nothing.
        if (static_cast<int32_t>(value.accounted) < -1) value.status = KORV_FAILURE;
    }
    const std::vector<char> front = bytesOf(&prefix, 1);
    value.bytes.insert(value.bytes.begin(), front.begin(), front.end());
}

inline TokenValue textValue(Input& input, int16_t type, bool wide) {
    TokenValue value;
    const bool fixed =
        type == CHAR || type == DATETIME_CHAR || type == WCHAR || type == DATETIME_WCHAR;
    const bool terminated =
        type == VARCHAR_SZ || type == DATETIME_SZ || type == WVARCHAR_SZ || type == DATETIME_WSZ;
    if (wide) {
        value.text = input.text<wchar_t>().substr(0, kMostCharacters);
        value.bytes = bytesOf(value.text.c_str(), value.text.size() + terminated);
    } else {
        const std::string text = input.text<char>().substr(0, kMostCharacters);
        for (const char c : text) value.text += static_cast<wchar_t>(static_cast<uint8_t>(c));
        value.bytes = bytesOf(text.c_str(), text.size() + terminated);
    }
    value.accounted = static_cast<uint32_t>(value.text.size());
    if (fixed) {
        // A partial character at the end is left out.
        if (wide) value.bytes.resize(value.bytes.size() + input.choice(4));
        value.length = static_cast<uint32_t>(value.bytes.size());
    } else if (!terminated) {
        addPrefix(input, value, wide ? 4 : 1);
    }
    return value;
}

template <class Integer>
TokenValue integerValue(Input& input) {
    const auto number = input.number<Integer>();
    TokenValue value;
    value.bytes = bytesOf(&number, 1);
    const std::string digits = std::to_string(number);
    value.text.assign(digits.begin(), digits.end());
    value.accounted = number == 0 ? 0 : static_cast<uint32_t>(digits.size());
    return value;
}

inline TokenValue momentValue(Input& input, int16_t type) {
    uint16_t numbers[10] = {};
    for (int i = 0; i < 6; ++i) numbers[i] = input.number<uint16_t>();
    const auto year = static_cast<int16_t>(numbers[0]);
    wchar_t text[64];
    const int length = std::swprintf(text, std::size(text), L"%s%04d-%02u-%02u %02u:%02u:%02u",
                                     year < 0 ? "-" : "", std::abs(int{year}), numbers[1],
                                     numbers[2], numbers[3], numbers[4], numbers[5]);
    TokenValue value;
    value.bytes = bytesOf(numbers, type == ODBC_TIMESTAMP ? 10 : 6);
    value.text.assign(text, static_cast<std::size_t>(length));
    value.accounted = static_cast<uint32_t>(length);
    return value;
}

inline TokenValue tokenValue(Input& input, int16_t type) {
    const reference::CatalogueRow* row = reference::catalogueRow(type);
    if (row && (row->narrow || row->wide)) return textValue(input, type, row->wide);
    switch (type) {
        case INTEGER:
            return integerValue<int32_t>(input);
        case U_INTEGER:
            return integerValue<uint32_t>(input);
        case SMALLINT:
            return integerValue<int16_t>(input);
        case USMALLINT:
            return integerValue<uint16_t>(input);
        case ODBC_DATE:
        case ODBC_TIME:
        case ODBC_TIMESTAMP:
            return momentValue(input, type);
        default:
            TokenValue none;
            none.status = KORV_TOKEN_BAD_TYPE;
            return none;
    }
}

}  // namespace fuzz
