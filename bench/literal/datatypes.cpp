// Digit counts and day numbers, step by step.
#include "literal/literal.h"

int32_t literalGetIntDigitCount(int32_t value, uint32_t* counter) {
    if (value < 0) value = -value;
    while (value != 0) {
        ++*counter;
        value /= 10;
    }
    return 0;
}

int32_t literalGetLongLongDigitCount(int64_t value, uint32_t* counter) {
    if (value < 0) value = -value;
    while (value != 0) {
        ++*counter;
        value /= 10;
    }
    return 0;
}

void literalIntSYBToODBC(const int32_t* day, OdbcDate* date) {
    const int32_t j = *day + 693902;
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
    date->day = static_cast<uint16_t>((d + 5) / 5);
    const auto year = static_cast<int16_t>(100 * century + y);
    if (month <= 9) {
        date->month = static_cast<uint16_t>(month + 3);
        date->year = year;
    } else {
        date->month = static_cast<uint16_t>(month - 9);
        date->year = static_cast<int16_t>(year + 1);
    }
}

void literalIntODBCToSYB(const OdbcDate* date, int32_t* day) {
    int32_t month;
    int16_t year = date->year;
    if (date->month > 2) {
        month = date->month - 3;
    } else {
        month = date->month + 9;
        year = static_cast<int16_t>(year - 1);
    }
    const auto century = static_cast<int16_t>(year / 100);
    const auto rest = static_cast<int16_t>(year - 100 * century);
    *day = 146097 * century / 4 + 1461 * rest / 4 + (153 * month + 2) / 5 + date->day - 693902;
}
