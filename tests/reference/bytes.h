// Order of bytes and bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace reference {

template <class Unit>
constexpr Unit swapped(Unit value) {
    Unit result = 0;
    for (std::size_t i = 0; i < sizeof(Unit); ++i) {
        result = static_cast<Unit>(result << 8 | (value >> 8 * i & 0xFF));
    }
    return result;
}

// Swaps unit by unit, for uint16_t and uint32_t; the count is tested before the unit. Returns
// `units`.
template <class Unit>
Unit* swapUnits(Unit* units, int64_t bytes);

void flipBits(uint8_t* target, const uint8_t* source, std::size_t count);

}  // namespace reference
