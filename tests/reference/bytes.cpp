// Order of bytes and bits, step by step.
#include "reference/bytes.h"

namespace reference {

template <class Unit>
Unit* swapUnits(Unit* units, int64_t bytes) {
    Unit* unit = units;
    for (int64_t done = 0; done < bytes && *unit; done += sizeof(Unit), ++unit) {
        *unit = swapped(*unit);
    }
    return units;
}
template uint16_t* swapUnits(uint16_t*, int64_t);
template uint32_t* swapUnits(uint32_t*, int64_t);

void flipBits(uint8_t* target, const uint8_t* source, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = 0;
        if (source[i] & 0x80) target[i] |= 0x01;
        if (source[i] & 0x40) target[i] |= 0x02;
        if (source[i] & 0x20) target[i] |= 0x04;
        if (source[i] & 0x10) target[i] |= 0x08;
        if (source[i] & 0x08) target[i] |= 0x10;
        if (source[i] & 0x04) target[i] |= 0x20;
        if (source[i] & 0x02) target[i] |= 0x40;
        if (source[i] & 0x01) target[i] |= 0x80;
    }
}

}  // namespace reference
