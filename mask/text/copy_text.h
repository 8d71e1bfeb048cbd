// Copies texts of a few characters without a call.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace text {

// The ranges do not overlap.
inline void copyText(char* to, const char* from, size_t length) {
    // Two copies of a fixed size, which overlap, take any length from the size to twice the size.
    const auto copyEnds = [&](auto size) {
        std::memcpy(to, from, size());
        std::memcpy(to + length - size(), from + length - size(), size());
    };
    if (length > 32) {
        std::memcpy(to, from, length);
    } else if (length >= 16) {
        copyEnds(std::integral_constant<size_t, 16>());
    } else if (length >= 8) {
        copyEnds(std::integral_constant<size_t, 8>());
    } else if (length >= 4) {
        copyEnds(std::integral_constant<size_t, 4>());
    } else if (length > 0) {
        to[0] = from[0];
        to[length / 2] = from[length / 2];
        to[length - 1] = from[length - 1];
    }
}

}  // namespace text
