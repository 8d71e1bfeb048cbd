// Reversal of texts and numbers, and the exchange of a text's halves.
#include <algorithm>
#include <cwchar>

#include "korv/numeric.h"

namespace korv {
namespace {

constexpr uint32_t kEightDigits = 100'000'000;

// Appends the reversed digits of `value` to `number`, at least `digits` of them.
uint64_t appendReversed(uint64_t number, uint32_t value, int digits) noexcept {
    uint32_t reversed = 0;
    uint64_t scale = 1;
    for (; value != 0 || digits > 0; value /= 10, --digits) {
        reversed = reversed * 10 + value % 10;
        scale *= 10;
    }
    return number * scale + reversed;
}

// Eight digits at a time: a 64-bit division is the slow thing on 32 bits. Wraps when the result
// needs more than 64 bits, as it would digit by digit.
uint64_t reversedDigits(uint64_t value) noexcept {
    uint64_t result = 0;
    while (value >= kEightDigits) {
        result = appendReversed(result, static_cast<uint32_t>(value % kEightDigits), 8);
        value /= kEightDigits;
    }
    return appendReversed(result, static_cast<uint32_t>(value), 0);
}

}  // namespace
}  // namespace korv

char* KORVRevString(char* buffer, int32_t length) {
    if (length > 1) std::reverse(buffer, buffer + length);
    return buffer;
}

int32_t KORVRevStringW(wchar_t* text) {
    std::reverse(text, text + std::wcslen(text));
    return KORV_SUCCESS;
}

int32_t KORVReverseNum(uint64_t* value) {
    *value = korv::reversedDigits(*value);
    return KORV_SUCCESS;
}

int32_t KORVShuffle(wchar_t* text) {
    const std::size_t half = std::wcslen(text) / 2;
    std::swap_ranges(text, text + half, text + half);
    return KORV_SUCCESS;
}
