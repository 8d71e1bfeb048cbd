// Numbers as bytes, the most significant one first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace crypto {

inline void storeBig(uint64_t number, uint8_t* bytes, size_t count) {
    for (; count > 0; number >>= 8) bytes[--count] = static_cast<uint8_t>(number);
}

inline uint64_t loadBig(const uint8_t* bytes, size_t count) {
    uint64_t number = 0;
    for (size_t i = 0; i < count; ++i) number = number << 8 | bytes[i];
    return number;
}

// floor(fraction * count / 2^64): a pick among `count` for a fraction of 64 bits.
inline uint32_t pick(uint64_t fraction, uint32_t count) {
    const uint64_t low = (fraction & 0xFFFFFFFFu) * count >> 32;
    return static_cast<uint32_t>(((fraction >> 32) * count + low) >> 32);
}

}  // namespace crypto
