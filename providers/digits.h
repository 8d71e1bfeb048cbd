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

// Masks runs of digits by a key.
//
// The library's transposition is fully defined for 4, 8 and 12 digits. A longer run is transposed
// in pieces of these lengths; when fewer than four digits are left, its last four are transposed
// once more. A run of fewer than four digits is permuted and shifted here.
class DigitMasking {
  public:
    // `shift` is 1 to 9.
    DigitMasking(int32_t key, int16_t shift) : key_(key), shift_(shift) {
        for (int32_t count = 1; count < 4; ++count) PXGetPermutation(key, count, orders_[count]);
    }

    // Masks `count` digits in place.
    template <class Char>
    void mask(Char* digits, int32_t count) const {
        int32_t done = 0;
        while (count - done >= 4) {
            const auto piece = static_cast<int16_t>(std::min(12, (count - done) / 4 * 4));
            transpose(digits + done, piece, key_, shift_);
            done += piece;
        }
        if (done == count) return;
        if (count >= 4) {
            transpose(digits + count - 4, 4, key_ + 1, shift_);
            return;
        }
        Char permuted[3];
        for (int32_t i = 0; i < count; ++i) {
            const Char digit = digits[orders_[count][i] - 1];
            permuted[i] = static_cast<Char>('0' + (digit - '0' + shift_ + i) % 10);
        }
        std::copy(permuted, permuted + count, digits);
    }

  private:
    int32_t key_;
    int16_t shift_;
    int16_t orders_[4][3] = {};  // of runs of 1 to 3 digits
};

}  // namespace provider
