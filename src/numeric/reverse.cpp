// Reversal of texts and numbers, and the exchange of a text's halves.
#include <algorithm>
#include <cwchar>

#include "korv/numeric.h"

namespace korv {
namespace {

// Wraps when the reversed number needs more than 64 bits.
uint64_t reversedDigits(uint64_t value) noexcept {
    uint64_t result = 0;
    for (; value != 0; value /= 10) result = result * 10 + value % 10;
    return result;
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
