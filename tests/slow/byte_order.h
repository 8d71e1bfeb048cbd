// Units with their bytes in reverse order.
#pragma once

#include <cstddef>
#include <cstdint>

namespace slow {

template <class Unit>
Unit swapped(Unit value) {
    Unit result = 0;
    for (std::size_t i = 0; i < sizeof(Unit); ++i) {
        result = static_cast<Unit>(result << 8 | (value >> 8 * i & 0xFF));
    }
    return result;
}

// One unit at a time, the count tested before the unit.
template <class Unit>
void swapUnits(Unit* units, int64_t bytes) {
    int64_t done = 0;
    for (std::size_t i = 0; done < bytes && units[i] != 0; ++i) {
        units[i] = swapped(units[i]);
        done += sizeof(Unit);
    }
}

}  // namespace slow
