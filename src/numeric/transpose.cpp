// Digit transposition: a keyed shift of every digit, then a keyed transposition in groups of four.
#include <algorithm>
#include <bit>
#include <cstring>

#include "common/block.h"
#include "korv/numeric.h"
#include "numeric/transposition_table.h"

namespace korv {
namespace {

// The lanes of four blocks as bytes; a lane that is no byte becomes 0 or 255, whichever is nearer.
Block<uint8_t> narrowToBytes(const Block<int32_t> (&blocks)[4]) noexcept {
#ifdef __SSE2__
    const auto words = [&](int i) {
        return _mm_packs_epi32(reinterpret_cast<__m128i>(blocks[i]),
                               reinterpret_cast<__m128i>(blocks[i + 1]));
    };
    return reinterpret_cast<Block<uint8_t>>(_mm_packus_epi16(words(0), words(2)));
#else
    Block<uint8_t> bytes;
    for (int i = 0; i < 16; ++i) {
        const int32_t lane = blocks[i / 4][i % 4];
        bytes[i] = static_cast<uint8_t>(lane < 0 ? 0 : lane > 255 ? 255 : lane);
    }
    return bytes;
#endif
}

constexpr int kMaxLength = 12;

// A number that is being transposed, zero-filled after its digits, so that every position that a
// permutation names holds a value.
template <class Char>
using Digits = Char[kMaxLength + kGroupSize];

// ---- Any characters and any shift ----

// Moves each character forward by shift + its position; returns the sum of the resulting digits. At
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
bool shiftUntilNonZero(Digits<Char>& digits, int32_t shift) noexcept {
    for (int pass = 0; pass < 20; ++pass) {
        if (shiftOnce(digits, shift) != 0) return true;
    }
    return false;
}

template <class Char>
[[gnu::noinline]] int32_t transposeAny(const Char* input, Char* output, int length, int32_t key,
                                       int32_t shift) noexcept {
    Digits<Char> digits{};
    std::copy(input, input + length, digits);
    if (shift != 0 && length != 0 && !shiftUntilNonZero(digits, shift)) return KORV_FAILURE;
    const auto& permutation = permutationFor(key);
    for (int k = 0; k < length && digits[k] != 0; ++k) {
        const int group = k / kGroupSize * kGroupSize;
        output[k] = digits[group + permutation[k % kGroupSize] - 1];
    }
    return KORV_SUCCESS;
}

// ---- Whole groups of decimal digits, and a shift forward ----

// The groups of a number, four digits in each 32-bit lane, the first in the lowest byte. Lanes
// without a group hold the digit 0.
using Groups = Block<uint32_t>;
using Bytes = Block<uint8_t>;
constexpr Bytes kPositions = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr uint32_t kFourZeros = 0x30303030;
static_assert(std::endian::native == std::endian::little);

Groups load(const char* digits, int length) noexcept {
    const auto group = [=](int at) {
        uint32_t bytes = kFourZeros;
        if (at < length) std::memcpy(&bytes, digits + at, sizeof bytes);
        return bytes;
    };
    return Groups{group(0), group(4), group(8), kFourZeros};
}

// A character that is no byte becomes 0 or 255, which are no digits either.
Groups load(const wchar_t* digits, int length) noexcept {
    const auto group = [=](int at) {
        return at < length ? loadBlock(digits + at) : Block<int32_t>{'0', '0', '0', '0'};
    };
    return reinterpret_cast<Groups>(narrowToBytes({group(0), group(4), group(8), group(12)}));
}

void store(char* digits, int length, Groups groups) noexcept {
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
        const uint32_t group = groups[i];
        if (kGroupSize * i < length) std::memcpy(digits + kGroupSize * i, &group, sizeof group);
    }
}

void store(wchar_t* digits, int length, Groups groups) noexcept {
    const Bytes zero{};
    const auto bytes = reinterpret_cast<Bytes>(groups);
    const auto low = reinterpret_cast<Block<uint16_t>>(__builtin_shufflevector(
        bytes, zero, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    const auto high = reinterpret_cast<Block<uint16_t>>(__builtin_shufflevector(
        bytes, zero, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
    const Block<uint16_t> none{};
    storeBlock(digits, __builtin_shufflevector(low, none, 0, 8, 1, 9, 2, 10, 3, 11));
    if (length > 4)
        storeBlock(digits + 4, __builtin_shufflevector(low, none, 4, 12, 5, 13, 6, 14, 7, 15));
    if (length > 8)
        storeBlock(digits + 8, __builtin_shufflevector(high, none, 0, 8, 1, 9, 2, 10, 3, 11));
}

Bytes modTen(Bytes bytes) noexcept {
    return bytes - (reinterpret_cast<Bytes>(bytes > 9) & 10);
}

// False when a character is no digit or all digits become 0: that is left to the literal steps.
[[gnu::always_inline]] inline bool shiftGroups(Groups& groups, int length, int32_t shift) noexcept {
    const Bytes digits = reinterpret_cast<Bytes>(groups ^ kFourZeros);
    const auto start = static_cast<uint8_t>(shift % 10);
    // At most 9 + 9 + 11, so twice 10 is enough to take off.
    const Bytes moved = modTen(modTen(digits + kPositions + start));
    const auto inside = reinterpret_cast<Bytes>(kPositions < static_cast<uint8_t>(length));
    groups = reinterpret_cast<Groups>(moved) + kFourZeros;
    return !anyLane(digits > 9) && anyLane((moved & inside) != 0);
}

[[gnu::always_inline]] inline Groups permuteGroups(Groups groups, int32_t key) noexcept {
    Groups result{};
    const auto& permutation = permutationFor(key);
#pragma GCC unroll 4
    for (int k = 0; k < kGroupSize; ++k) {
        result |= (groups >> 8 * (permutation[k] - 1) & 0xFF) << 8 * k;
    }
    return result;
}

template <class Char>
int32_t transpose(const Char* input, Char* output, int16_t length, int32_t key,
                  int16_t shift) noexcept {
    if (length > kMaxLength || length < 0) return KORV_FAILURE;
    if (shift <= 0 || length == 0 || length % kGroupSize != 0) {
        return transposeAny(input, output, length, key, shift);
    }
    Groups groups = load(input, length);
    if (!shiftGroups(groups, length, shift)) {
        return transposeAny(input, output, length, key, shift);
    }
    store(output, length, permuteGroups(groups, key));
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
