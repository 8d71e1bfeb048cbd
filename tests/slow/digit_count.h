// Digits of a number, by division.
#pragma once

#include <cstdint>

namespace slow {

template <class T>
uint32_t countByDivision(T value) {
    uint32_t digits = 0;
    for (; value != 0; value /= 10) ++digits;
    return digits;
}

}  // namespace slow
