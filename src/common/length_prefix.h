// The length in front of variable text.
#pragma once

#include <cstdint>
#include <cstring>

namespace korv {

// Signed, and not necessarily aligned.
inline int16_t lengthPrefix(const void* value) noexcept {
    int16_t length;
    std::memcpy(&length, value, sizeof length);
    return length;
}

}  // namespace korv
