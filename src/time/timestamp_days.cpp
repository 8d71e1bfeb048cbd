// Whole days between timestamps, and the repair of February days.
#include <ctime>

#include "korv/time.h"

namespace korv {
namespace {

// The moment of a record read as local standard time; of no record, the current one.
std::time_t moment(const OdbcTimestamp* timestamp) noexcept {
    if (!timestamp) return std::time(nullptr);
    std::tm local{};
    local.tm_year = timestamp->year - 1900;
    local.tm_mon = timestamp->month - 1;
    local.tm_mday = timestamp->day;
    local.tm_hour = timestamp->hour;
    local.tm_min = timestamp->minute;
    local.tm_sec = timestamp->second;
    return std::mktime(&local);
}

bool isLeapYear(int16_t year) noexcept {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

}  // namespace
}  // namespace korv

int32_t KORVGetDiffDays(const OdbcTimestamp* first, const OdbcTimestamp* second) {
    if (!first && !second) return 0;
    const double seconds = std::difftime(korv::moment(second), korv::moment(first));
    return static_cast<int32_t>(seconds / 60 / 60 / 24);
}

void FixLeapYearDay(OdbcTimestamp* timestamp) {
    if (timestamp->month == 2 && timestamp->day > 28 && !korv::isLeapYear(timestamp->year)) {
        timestamp->day = 28;
    }
}
