// Fixed-width numeric text: integers to digit fields and back, in both widths.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <cwchar>
#include <iterator>

#include "common/block.h"
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

// Copies a few bytes: 8 of them in one move where there is SSE2, 32-bit code would make two.
template <std::size_t bytes>
void copyFixed(void* to, const void* from) noexcept {
#ifdef __SSE2__
    if constexpr (bytes == 8) {
        _mm_storel_epi64(static_cast<__m128i*>(to),
                         _mm_loadl_epi64(static_cast<const __m128i*>(from)));
        return;
    }
#endif
    std::memcpy(to, from, bytes);
}

// The characters of 00 to 99, in either width.
template <class Char>
struct DigitPair {
    Char characters[2];
};
template <class Char>
constexpr auto kDigitPairs = [] {
    std::array<DigitPair<Char>, 100> table{};
    for (int i = 0; i < 100; ++i) {
        table[i] = {static_cast<Char>('0' + i / 10), static_cast<Char>('0' + i % 10)};
    }
    return table;
}();

// Writes the `width` low-order digits, two at a time; true when the value has no more than these.
template <class Char>
bool writeDigits(uint32_t value, int32_t width, Char* field) noexcept {
    for (; width >= 2; width -= 2) {
        copyFixed<2 * sizeof(Char)>(field + width - 2, &kDigitPairs<Char>[value % 100]);
        value /= 100;
    }
    if (width > 0) {
        field[0] = static_cast<Char>('0' + value % 10);
        value /= 10;
    }
    return value == 0;
}

// The digits of a negative value lie as far below '0' as those of its magnitude lie above.
template <class Char>
void reflectDigits(int32_t width, Char* field) noexcept {
    for (int32_t i = 0; i < width; ++i) field[i] = static_cast<Char>(2 * '0' - field[i]);
}

template <bool terminated, class Char>
int32_t writeField(int32_t value, int16_t width, Char* field) noexcept {
    const auto bits = static_cast<uint32_t>(value);
    const bool fits = writeDigits(value < 0 ? 0 - bits : bits, width, field);
    if (value < 0) reflectDigits(width, field);
    if (terminated && width >= 0) field[width] = 0;
    return fits ? KORV_SUCCESS : KORV_FAILURE;
}

// The table's terminator takes part in the comparison: narrow tails are compared as they are, so
// that a zero after 256 blanks is equal to it.
bool isBlankTail(const char* tail, std::size_t length) noexcept {
    return length <= std::size(PXSpaces) && std::memcmp(tail, PXSpaces, length) == 0;
}

// Whether `length` characters are blanks. Blocks that are read lie within the length and on one
// page, the one of a character that has to be read.
bool isBlank(const wchar_t* text, std::size_t length) noexcept {
    constexpr int32_t blank = L' ';
    constexpr std::size_t one = kBlockUnits<wchar_t>;
    constexpr std::size_t four = 4 * one;
    const auto isBlankBlock = [&](std::size_t at) { return loadBlock(text + at) == blank; };
    while (length > 0) {
        if (length >= four && isOnOnePage<four * sizeof(wchar_t)>(text)) {
            if (!allLanes(isBlankBlock(0) & isBlankBlock(one) & isBlankBlock(2 * one) &
                          isBlankBlock(3 * one))) {
                return false;
            }
            text += four;
            length -= four;
        } else {
            if (*text != blank) return false;
            ++text;
            --length;
        }
    }
    return true;
}

// Wide tails are compared like text, which ends where tail and table both do.
bool isBlankTail(const wchar_t* tail, std::size_t length) noexcept {
    constexpr std::size_t blanks = std::size(PXSpacesW) - 1;
    return isBlank(tail, std::min(length, blanks)) && (length <= blanks || tail[blanks] == 0);
}

// Stores the number when the tail is blank. A call of its own, so that a field without a tail is
// read without any.
template <class Char>
[[gnu::noinline]] int32_t acceptBlankTail(const Char* tail, std::size_t length, uint32_t number,
                                          int32_t& value) noexcept {
    if (!isBlankTail(tail, length)) return KORV_FAILURE;
    value = static_cast<int32_t>(number);
    return KORV_SUCCESS;
}

// Appends a digit to a number; false when the character is none.
template <class Char>
bool appendDigit(Char character, uint32_t& number) noexcept {
    const auto digit = static_cast<uint32_t>(character) - '0';
    number = number * 10 + digit;
    return digit <= 9;
}

// Reads a field of any kind, character by character.
template <class Char>
[[gnu::always_inline]] inline int32_t readField(const Char* field, int32_t digits, int32_t width,
                                                int32_t& value) noexcept {
    // A negative count reads no digit, and makes the tail longer than the field.
    if (digits < 0) [[unlikely]] {
        width -= digits;
        digits = 0;
    }
    uint32_t number = 0;
    int32_t at = 0;
    for (; at < digits; ++at) {
        if (!appendDigit(field[at], number)) return KORV_FAILURE;
    }
    if (width > at) {
        return acceptBlankTail(field + at, static_cast<std::size_t>(width - at), number, value);
    }
    value = static_cast<int32_t>(number);
    return KORV_SUCCESS;
}

// The number of four narrow digits: neighbours are joined to two numbers below 100, then to one. A
// bit of `faults` under kFaultBits is set when a character is no digit.
constexpr uint32_t kFaultBits = 0xF0F0F0F0;
uint32_t fourDigits(const char* characters, uint32_t& faults) noexcept {
    uint32_t lanes;
    std::memcpy(&lanes, characters, sizeof lanes);
    lanes ^= 0x30303030;
    faults |= lanes | (lanes + 0x06060606);
    lanes = (lanes * 10 + (lanes >> 8)) & 0x00FF00FF;
    return lanes * (100 << 16 | 1) >> 16;
}
static_assert(std::endian::native == std::endian::little);

// Copies for the usual counts are worth it only where their loops are unrolled.
#ifdef __OPTIMIZE__
#define KORV_COPIED [[gnu::always_inline]]
#else
#define KORV_COPIED
#endif

// Reads a field of 0 to 12 digits on one page: nothing but its digits is read, and all faults are
// tested at once.
KORV_COPIED inline int32_t readDigits(const char* field, uint32_t count, int32_t& value) noexcept {
    uint32_t number = 0;
    uint32_t faults = 0;
#pragma GCC unroll 3
    for (uint32_t single = count % 4; single > 0; --single) {
        const auto digit = static_cast<uint32_t>(*field++) - '0';
        number = number * 10 + digit;
        faults |= digit | (digit + 6);
    }
#pragma GCC unroll 3
    for (uint32_t fours = count / 4; fours > 0; --fours, field += 4) {
        number = number * 10000 + fourDigits(field, faults);
    }
    if (faults & kFaultBits) return KORV_FAILURE;
    value = static_cast<int32_t>(number);
    return KORV_SUCCESS;
}

// Whether `count` digits are the whole field and can be read together.
template <int16_t count>
bool isFieldOf(const char* field, int16_t digits, int16_t width) noexcept {
    return digits == count && width <= count && isOnOnePage<count>(field);
}

[[gnu::noinline]] int32_t readUnusualField(const char* field, int32_t digits, int32_t width,
                                           int32_t& value) noexcept {
    return readField(field, digits, width, value);
}

}  // namespace
}  // namespace korv

int32_t PXLongToNum(int32_t value, int16_t width, char* field) {
    return korv::writeField<false>(value, width, field);
}

int32_t PXIntToNum(int32_t value, int16_t width, char* field) {
    return korv::writeField<true>(value, width, field);
}

int32_t PXLongToNumW(int32_t value, int16_t width, wchar_t* field) {
    return korv::writeField<true>(value, width, field);
}

int32_t PXIntToNumW(int32_t value, int16_t width, wchar_t* field) {
    return korv::writeField<true>(value, width, field);
}

int32_t PXNumToLong(const char* field, int16_t digits, int16_t width, int32_t* value) {
    // Without loops the usual counts take two thirds of the time.
    using namespace korv;
    if (isFieldOf<4>(field, digits, width)) return readDigits(field, 4, *value);
    if (isFieldOf<8>(field, digits, width)) return readDigits(field, 8, *value);
    if (isFieldOf<9>(field, digits, width)) return readDigits(field, 9, *value);
    if (digits >= 0 && digits <= 12 && width <= digits && isOnOnePage<12>(field)) {
        return readDigits(field, static_cast<uint32_t>(digits), *value);
    }
    return readUnusualField(field, digits, width, *value);
}

int32_t KORVCharNumToInt(const char* field, int16_t digits, int16_t width, int32_t* value) {
    return PXNumToLong(field, digits, width, value);
}

int32_t PXNumToLongW(const wchar_t* field, int16_t digits, int16_t width, int32_t* value) {
    return korv::readField(field, digits, width, *value);
}
