// The calculation of day numbers and dates step by step, with its 16-bit intermediates.
#pragma once

#include <cstdint>

#include "korv/datatypes.h"

namespace slow {

inline int32_t wrap(int64_t value) {
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

inline OdbcDate dateByTheSteps(int32_t number) {
    const int32_t j = wrap(int64_t{number} + 693902);
    const int32_t t = wrap(int64_t{4} * j - 1);
    const int16_t q = static_cast<int16_t>(t / 146097);
    uint16_t d = static_cast<uint16_t>((t - 146097 * q) / 4);
    const int32_t u = 4 * d + 3;
    const int32_t y = u / 1461;
    d = static_cast<uint16_t>(u - 1461 * y);
    d = static_cast<uint16_t>((d + 4) / 4);
    const int32_t v = 5 * d - 3;
    const uint16_t m = static_cast<uint16_t>(v / 153);
    d = static_cast<uint16_t>(v - 153 * m);
    OdbcDate date;
    date.day = static_cast<uint16_t>((d + 5) / 5);
    date.year = static_cast<int16_t>(100 * q + y);
    if (m <= 9) {
        date.month = static_cast<uint16_t>(m + 3);
    } else {
        date.month = static_cast<uint16_t>(m - 9);
        date.year = static_cast<int16_t>(date.year + 1);
    }
    return date;
}

inline int32_t numberByTheSteps(const OdbcDate& date) {
    int16_t year = date.year;
    int32_t m;
    if (date.month > 2) {
        m = date.month - 3;
    } else {
        m = date.month + 9;
        year = static_cast<int16_t>(year - 1);
    }
    const int16_t q = static_cast<int16_t>(year / 100);
    const int16_t ya = static_cast<int16_t>(year - 100 * q);
    return 146097 * q / 4 + 1461 * ya / 4 + (153 * m + 2) / 5 + date.day - 693902;
}

}  // namespace slow
