// The permutations of digit transposition.
#pragma once

#include <cstdint>
#include <iterator>

namespace korv {

constexpr int kGroupSize = 4;

// The 23 permutations of four positions other than the identity, in the order of their keys. Entry
// k names the position, from 1, whose digit goes to position k.
constexpr uint8_t kPermutations[][kGroupSize] = {
    {1, 2, 4, 3}, {4, 3, 1, 2}, {3, 4, 1, 2}, {2, 1, 4, 3}, {4, 2, 1, 3}, {1, 4, 3, 2},
    {2, 4, 1, 3}, {3, 1, 4, 2}, {2, 3, 1, 4}, {1, 4, 2, 3}, {4, 1, 3, 2}, {3, 4, 2, 1},
    {3, 2, 1, 4}, {1, 3, 2, 4}, {4, 2, 3, 1}, {2, 4, 3, 1}, {1, 3, 4, 2}, {2, 1, 3, 4},
    {3, 1, 2, 4}, {4, 3, 2, 1}, {4, 1, 2, 3}, {3, 2, 4, 1}, {2, 3, 4, 1},
};
constexpr int32_t kPermutationCount = std::size(kPermutations);
static_assert(kPermutationCount == 23);

// The permutation that a key chooses; a negative key by its remainder plus 23.
inline const uint8_t (&permutationFor(int32_t key) noexcept)[kGroupSize] {
    const int32_t row = key % kPermutationCount;
    return kPermutations[row < 0 ? row + kPermutationCount : row];
}

}  // namespace korv
