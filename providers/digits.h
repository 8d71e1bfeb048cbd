// Keyed masking of a run of digits of any length, in both widths.
#pragma once

#include <algorithm>
#include <cstdint>

#include "korv/korv.h"

namespace provider {

inline int32_t transpose(char* digits, int16_t count, int32_t key, int16_t shift) {
    return PXTransposeNum(digits, digits, count, key, shift);
}
inline int32_t transpose(wchar_t* digits, int16_t count, int32_t key, int16_t shift) {
    return PXTransposeNumW(digits, digits, count, key, shift);
}

inline constexpr int32_t kLargestKey = 999999999;

// Masks `count` digits in place. `shift` is 1 to 9.
//
// The library's transposition is fully defined for 4, 8 and 12 digits. A longer run is transposed
// in pieces of these lengths; when fewer than four digits are left, its last four are transposed
// once more. A run of fewer than four digits is permuted and shifted here.
template <typename Char>
void maskDigits(Char* digits, int32_t count, int32_t key, int16_t shift) {
    int32_t done = 0;
    while (count - done >= 4) {
        const auto piece = static_cast<int16_t>(std::min(12, (count - done) / 4 * 4));
        transpose(digits + done, piece, key, shift);
        done += piece;
    }
    if (done == count) return;
    if (count >= 4) {
        transpose(digits + count - 4, 4, key + 1, shift);
        return;
    }
    int16_t order[3];
    Char permuted[3];
    PXGetPermutation(key, count, order);
    for (int32_t i = 0; i < count; ++i) {
        permuted[i] = static_cast<Char>('0' + (digits[order[i] - 1] - '0' + shift + i) % 10);
    }
    std::copy(permuted, permuted + count, digits);
}

}  // namespace provider
