// FNV-1a, 64 bits, by Glenn Fowler, Landon Curt Noll and Kiem-Phong Vo, over the four bytes of each
// character, the lowest byte first.
#pragma once

#include <cstdint>

namespace provider {

inline constexpr uint64_t kFnvStart = 0xCBF29CE484222325u;
inline constexpr uint64_t kFnvPrime = 0x100000001B3u;

constexpr uint64_t fnv(uint64_t state, uint32_t character) {
    // Of a character below 256 the other bytes are 0: four multiplications by the prime are one by
    // its fourth power.
    if (character < 0x100)
        return (state ^ character) * (kFnvPrime * kFnvPrime * kFnvPrime * kFnvPrime);
    for (int shift = 0; shift < 32; shift += 8) {
        state = (state ^ (character >> shift & 0xFF)) * kFnvPrime;
    }
    return state;
}

}  // namespace provider
