// Sybase day numbers and ODBC dates.
//
// Days are counted in cycles of 400 years, years from March, so that the leap day is the last of
// its year and five months from March on have 153 days. The casts below to 16 bits are the widths
// of the intermediate values: they decide what days outside the years 1 to 9999 give.
#include "korv/datatypes.h"

namespace korv {
namespace {

// 1900-01-01 in the count that begins with 1 March of the year 0.
constexpr int32_t epoch = 693902;
constexpr int32_t daysOf400Years = 146097;
constexpr int32_t daysOf4Years = 1461;

OdbcDate dateOf(int32_t dayNumber) noexcept {
    // Wraps for days near the ends of 32 bits.
    const auto quarters = static_cast<int32_t>(4 * (static_cast<uint32_t>(dayNumber) + epoch) - 1);
    const auto century = static_cast<int16_t>(quarters / daysOf400Years);
    const auto dayOfCentury = static_cast<uint16_t>((quarters - daysOf400Years * century) / 4);

    const int32_t u = 4 * dayOfCentury + 3;
    const int32_t yearOfCentury = u / daysOf4Years;
    const int32_t dayOfYear = (static_cast<uint16_t>(u - daysOf4Years * yearOfCentury) + 4) / 4;

    const int32_t v = 5 * dayOfYear - 3;
    const int32_t month = v / 153;  // 0 is March
    const int32_t day = (v - 153 * month + 5) / 5;

    const bool nextYear = month > 9;
    return {static_cast<int16_t>(100 * century + yearOfCentury + nextYear),
            static_cast<uint16_t>(nextYear ? month - 9 : month + 3), static_cast<uint16_t>(day)};
}

int32_t dayNumberOf(const OdbcDate& date) noexcept {
    const bool nextYear = date.month <= 2;
    const int32_t month = nextYear ? date.month + 9 : date.month - 3;
    const auto year = static_cast<int16_t>(date.year - nextYear);
    const int32_t century = year / 100;
    const int32_t yearOfCentury = year - 100 * century;
    return daysOf400Years * century / 4 + daysOf4Years * yearOfCentury / 4 + (153 * month + 2) / 5 +
           date.day - epoch;
}

}  // namespace
}  // namespace korv

void KORVIntSYBToODBC(const int32_t* day, OdbcDate* date) {
    *date = korv::dateOf(*day);
}

void KORVIntODBCToSYB(const OdbcDate* date, int32_t* day) {
    *day = korv::dayNumberOf(*date);
}
