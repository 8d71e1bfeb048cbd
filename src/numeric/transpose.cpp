// Digit transposition: a keyed shift of every digit, then a keyed transposition in groups of four.
#include <cstring>

#include "korv/numeric.h"
#include "numeric/transposition_table.h"

namespace korv {
namespace {

constexpr int maxLength = 12;

// A number under work: zero-filled behind its digits, so that whatever position a permutation names
// holds something.
template <class Char>
using Digits = Char[maxLength + 1];

// Moves each digit forward by shift + its position; returns the sum of the resulting digits. At
// least one character is processed.
template <class Char>
int32_t shiftOnce(Digits<Char>& digits, int32_t shift) noexcept {
    int32_t sum = 0;
    int i = 0;
    do {
        // Unsigned, because a wide character may be any 32-bit number.
        const auto moved = static_cast<int32_t>(static_cast<uint32_t>(digits[i]) - '0' +
                                                static_cast<uint32_t>(shift + i));
        const int32_t remainder = moved % 10;
        sum += remainder;
        digits[i] = static_cast<Char>('0' + remainder);
    } while (digits[++i] != 0);
    return sum;
}

// Shifts until the digits no longer add up to 0; false when they always will. After the first pass
// a remainder takes at most 9 passes to settle on one sign, and from then on it comes back after
// 10: a sum that is 0 for 20 passes stays 0.
template <class Char>
bool shiftDigits(Digits<Char>& digits, int32_t shift) noexcept {
    for (int pass = 0; pass < 20; ++pass) {
        if (shiftOnce(digits, shift) != 0) return true;
    }
    return false;
}

template <class Char>
int32_t transpose(const Char* input, Char* output, int16_t length, int32_t key,
                  int16_t shift) noexcept {
    if (length > maxLength || length < 0) return KORV_FAILURE;
    if (length == 0) return KORV_SUCCESS;
    Digits<Char> digits{};
    std::memcpy(digits, input, static_cast<std::size_t>(length) * sizeof(Char));
    if (shift != 0 && !shiftDigits(digits, shift)) return KORV_FAILURE;

    constexpr int rows = std::size(permutations);
    const int row = key % rows;
    const auto& permutation = permutations[row < 0 ? row + rows : row];
    for (int k = 0; digits[k] != 0; ++k) {
        const int group = k / groupSize * groupSize;
        output[k] = digits[group + permutation[k % groupSize] - 1];
    }
    return KORV_SUCCESS;
}

}  // namespace
}  // namespace korv

int32_t PXTransposeNum(const char* input, char* output, int16_t length, int32_t key,
                       int16_t shift) {
    return korv::transpose(input, output, length, key, shift);
}

int32_t PXTransposeNumW(const wchar_t* input, wchar_t* output, int16_t length, int32_t key,
                        int16_t shift) {
    return korv::transpose(input, output, length, key, shift);
}
