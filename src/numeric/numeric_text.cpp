// Fixed-width numeric text: integers to digit fields and back, in both widths.
#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>

#include "korv/numeric.h"

// 256 blanks; the literals bring the terminators.
#define BLANKS_64(quote)                                                          \
    quote("                ") quote("                ") quote("                ") \
        quote("                ")
#define NARROW(text) text
#define WIDE(text) L##text
const char PXSpaces[] = BLANKS_64(NARROW) BLANKS_64(NARROW) BLANKS_64(NARROW) BLANKS_64(NARROW);
const wchar_t PXSpacesW[] = BLANKS_64(WIDE) BLANKS_64(WIDE) BLANKS_64(WIDE) BLANKS_64(WIDE);
static_assert(sizeof PXSpaces == 257 && sizeof PXSpacesW == 1028);

namespace korv {
namespace {

// Writes `width` digits; true when the value has no more than these. The remainders of a negative
// value are negative, which gives its digits the codes 0x27 to 0x30.
template <class Char>
bool writeDigits(int32_t value, int16_t width, Char* field) noexcept {
    for (int16_t i = width; i > 0; --i) {
        field[i - 1] = static_cast<Char>('0' + value % 10);
        value /= 10;
    }
    return value == 0;
}

template <class Char>
int32_t writeField(int32_t value, int16_t width, Char* field, bool terminated) noexcept {
    const bool fits = writeDigits(value, width, field);
    if (terminated && width >= 0) field[width] = 0;
    return fits ? KORV_SUCCESS : KORV_FAILURE;
}

// The table's terminator takes part in the comparison. Narrow tails are compared as they are; wide
// ones like text, which ends where tail and table both do.
bool isBlankTail(const char* tail, std::size_t length) noexcept {
    return length <= std::size(PXSpaces) && std::memcmp(tail, PXSpaces, length) == 0;
}
bool isBlankTail(const wchar_t* tail, std::size_t length) noexcept {
    return std::wcsncmp(tail, PXSpacesW, std::min(length, std::size(PXSpacesW))) == 0;
}

template <class Char>
int32_t readField(const Char* field, int16_t digits, int16_t width, int32_t& value) noexcept {
    uint32_t sum = 0;
    int32_t at = 0;
    for (; at < digits; ++at) {
        const auto digit = static_cast<uint32_t>(field[at]) - '0';
        if (digit > 9) return KORV_FAILURE;
        sum = sum * 10 + digit;
    }
    if (width > at && !isBlankTail(field + at, static_cast<std::size_t>(width - at))) {
        return KORV_FAILURE;
    }
    value = static_cast<int32_t>(sum);
    return KORV_SUCCESS;
}

}  // namespace
}  // namespace korv

int32_t PXLongToNum(int32_t value, int16_t width, char* field) {
    return korv::writeField(value, width, field, false);
}

int32_t PXIntToNum(int32_t value, int16_t width, char* field) {
    return korv::writeField(value, width, field, true);
}

int32_t PXLongToNumW(int32_t value, int16_t width, wchar_t* field) {
    return korv::writeField(value, width, field, true);
}

int32_t PXIntToNumW(int32_t value, int16_t width, wchar_t* field) {
    return korv::writeField(value, width, field, true);
}

int32_t PXNumToLong(const char* field, int16_t digits, int16_t width, int32_t* value) {
    return korv::readField(field, digits, width, *value);
}

int32_t KORVCharNumToInt(const char* field, int16_t digits, int16_t width, int32_t* value) {
    return korv::readField(field, digits, width, *value);
}

int32_t PXNumToLongW(const wchar_t* field, int16_t digits, int16_t width, int32_t* value) {
    return korv::readField(field, digits, width, *value);
}
