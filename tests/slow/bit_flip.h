// Bytes with their bits in reverse order.
#pragma once

#include <cstddef>
#include <cstdint>

namespace slow {

inline void flipBits(uint8_t* target, const uint8_t* source, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = 0;
        for (unsigned bit = 0; bit < 8; ++bit) {
            if (source[i] & (0x80u >> bit)) {
                target[i] = static_cast<uint8_t>(target[i] | 1u << bit);
            }
        }
    }
}

}  // namespace slow
