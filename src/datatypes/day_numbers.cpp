// Sybase day numbers and ODBC dates.
//
// Days are counted in cycles of 400 years, years from March, so that the leap day is the last of
// its year and five months from March on have 153 days. The ordinary days and dates are converted
// by Euclidean affine functions (C. Neri and L. Schneider, Euclidean affine functions and their
// application to calendar algorithms, 2023).
#include "korv/datatypes.h"

namespace korv {
namespace {

// 1900-01-01 in the count that begins with 1 March of the year 0 as day 1.
constexpr int32_t kEpoch = 693902;
constexpr int32_t kDaysOf400Years = 146097;
constexpr int32_t kDaysOf4Years = 1461;

// The date of any day. The casts to 16 bits are the widths of the intermediate values: they decide
// what days far outside the years 1 to 9999 give.
OdbcDate dateOfAnyDay(int32_t dayNumber) noexcept {
    // Wraps for days near the ends of 32 bits.
    const auto quarters = static_cast<int32_t>(4 * (static_cast<uint32_t>(dayNumber) + kEpoch) - 1);
    const auto century = static_cast<int16_t>(quarters / kDaysOf400Years);
    const auto dayOfCentury = static_cast<uint16_t>((quarters - kDaysOf400Years * century) / 4);

    const int32_t u = 4 * dayOfCentury + 3;
    const int32_t yearOfCentury = u / kDaysOf4Years;
    const int32_t dayOfYear = (u - kDaysOf4Years * yearOfCentury + 4) / 4;

    const int32_t v = 5 * dayOfYear - 3;
    const int32_t month = v / 153;  // 0 is March
    const int32_t day = (v - 153 * month + 5) / 5;

    const bool nextYear = month > 9;
    return {static_cast<int16_t>(100 * century + yearOfCentury + nextYear),
            static_cast<uint16_t>(nextYear ? month - 9 : month + 3), static_cast<uint16_t>(day)};
}

// The years that 16 bits hold, as whole cycles.
constexpr uint32_t kOrdinaryDays = 81 * kDaysOf400Years;

// The same for the years 0 to 32400, where nothing is negative and nothing wraps. Quotient and
// remainder come from one multiplication each. 2939745 / 2^32 stands for 1 / 1461, exact for u
// below 28825529; u is at most 146099. 2141 / 2^16 stands for 5 / 153, exact for days of the year
// below 734; there are 366.
OdbcDate dateOfOrdinaryDay(uint32_t day) noexcept {
    const uint32_t quarters = 4 * day + 3;
    const uint32_t century = quarters / kDaysOf400Years;
    const uint32_t u = (quarters - kDaysOf400Years * century) | 3;
    const uint64_t years = uint64_t{2939745} * u;
    const auto yearOfCentury = static_cast<uint32_t>(years >> 32);
    const uint32_t dayOfYear = static_cast<uint32_t>(years) / 2939745 / 4;
    const uint32_t months = 2141 * dayOfYear + 197913;  // 3 is March
    const bool nextYear = dayOfYear >= 306;
    return {static_cast<int16_t>(100 * century + yearOfCentury + nextYear),
            static_cast<uint16_t>((months >> 16) - (nextYear ? 12 : 0)),
            static_cast<uint16_t>((months & 0xFFFF) / 2141 + 1)};
}

int32_t dayOfAnyDate(const OdbcDate& date) noexcept {
    const bool nextYear = date.month <= 2;
    const int32_t month = nextYear ? date.month + 9 : date.month - 3;
    const auto year = static_cast<int16_t>(date.year - nextYear);
    const int32_t century = year / 100;
    const int32_t yearOfCentury = year - 100 * century;
    return kDaysOf400Years * century / 4 + kDaysOf4Years * yearOfCentury / 4 +
           (153 * month + 2) / 5 + date.day - kEpoch;
}

// The same for months up to 12 of years from 1 on: 146097 / 4 is 25 * 1461 - 3 / 4, so that the
// days of centuries and years share a product. 979 / 32 stands for 153 / 5, exact for months up to
// 33; they are 3 to 14, or 12 when the month is 0.
int32_t dayOfOrdinaryDate(const OdbcDate& date) noexcept {
    const uint32_t nextYear = date.month <= 2;
    const uint32_t month = date.month + 12 * nextYear;  // 3 is March
    const uint32_t year = static_cast<uint16_t>(date.year) - nextYear;
    const uint32_t century = year / 100;
    const uint32_t days =
        kDaysOf4Years * year / 4 - century + century / 4 + (979 * month - 2919) / 32;
    return static_cast<int32_t>(days + date.day - kEpoch);
}

}  // namespace
}  // namespace korv

void KORVIntSYBToODBC(const int32_t* day, OdbcDate* date) {
    const uint32_t ordinary = static_cast<uint32_t>(*day) + korv::kEpoch - 1;
    *date = ordinary < korv::kOrdinaryDays ? korv::dateOfOrdinaryDay(ordinary)
                                           : korv::dateOfAnyDay(*day);
}

void KORVIntODBCToSYB(const OdbcDate* date, int32_t* day) {
    const bool ordinary = date->year > 0 && date->month <= 12;
    *day = ordinary ? korv::dayOfOrdinaryDate(*date) : korv::dayOfAnyDate(*date);
}
