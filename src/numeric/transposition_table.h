// The permutations of digit transposition.
#pragma once

#include <cstdint>
#include <iterator>

namespace korv {

constexpr int groupSize = 4;

// The 23 permutations of four positions other than the identity, in the order of their keys. Entry
// k names the position, from 1, whose digit goes to position k.
constexpr uint8_t permutations[][groupSize] = {
    {1, 2, 4, 3}, {4, 3, 1, 2}, {3, 4, 1, 2}, {2, 1, 4, 3}, {4, 2, 1, 3}, {1, 4, 3, 2},
    {2, 4, 1, 3}, {3, 1, 4, 2}, {2, 3, 1, 4}, {1, 4, 2, 3}, {4, 1, 3, 2}, {3, 4, 2, 1},
    {3, 2, 1, 4}, {1, 3, 2, 4}, {4, 2, 3, 1}, {2, 4, 3, 1}, {1, 3, 4, 2}, {2, 1, 3, 4},
    {3, 1, 2, 4}, {4, 3, 2, 1}, {4, 1, 2, 3}, {3, 2, 4, 1}, {2, 3, 4, 1},
};
constexpr int32_t permutationCount = std::size(permutations);
static_assert(permutationCount == 23);

// The permutation that a key chooses; a negative key by its remainder plus 23.
inline const uint8_t (&permutationFor(int32_t key) noexcept)[groupSize] {
    const int32_t row = key % permutationCount;
    return permutations[row < 0 ? row + permutationCount : row];
}

}  // namespace korv
