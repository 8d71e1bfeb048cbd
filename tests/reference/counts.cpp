// Counts of digits, and day numbers, step by step.
#include "reference/counts.h"

namespace reference {

template <class T>
int32_t countDigits(T value, uint32_t* counter) {
    for (; value != 0; value /= 10) ++*counter;
    return 0;
}
template int32_t countDigits(int32_t, uint32_t*);
template int32_t countDigits(int64_t, uint32_t*);

OdbcDate dateOf(int32_t day) {
    const int32_t j = day + 693902;
    const int32_t t = 4 * j - 1;
    const auto century = static_cast<int16_t>(t / 146097);
    auto d = static_cast<uint16_t>((t - 146097 * century) / 4);
    const int32_t u = 4 * d + 3;
    const int32_t y = u / 1461;
    d = static_cast<uint16_t>(u - 1461 * y);
    d = static_cast<uint16_t>((d + 4) / 4);
    const int32_t v = 5 * d - 3;
    const auto month = static_cast<uint16_t>(v / 153);
    d = static_cast<uint16_t>(v - 153 * month);
    OdbcDate date;
    date.day = static_cast<uint16_t>((d + 5) / 5);
    date.year = static_cast<int16_t>(100 * century + y);
    if (month <= 9) {
        date.month = static_cast<uint16_t>(month + 3);
    } else {
        date.month = static_cast<uint16_t>(month - 9);
        date.year = static_cast<int16_t>(date.year + 1);
    }
    return date;
}

int32_t dayOf(const OdbcDate& date) {
    int32_t month;
    int16_t year = date.year;
    if (date.month > 2) {
        month = date.month - 3;
    } else {
        month = date.month + 9;
        year = static_cast<int16_t>(year - 1);
    }
    const auto century = static_cast<int16_t>(year / 100);
    const auto rest = static_cast<int16_t>(year - 100 * century);
    return 146097 * century / 4 + 1461 * rest / 4 + (153 * month + 2) / 5 + date.day - 693902;
}

}  // namespace reference
