// Day numbers by the calendar of std::chrono.
#include <chrono>

#include "peers/peers.h"

namespace {

using namespace std::chrono;

constexpr sys_days kFirstDay = year{1900} / January / 1;

}  // namespace

void peerDayToDate(const int32_t* day, OdbcDate* date) {
    const year_month_day calendar{kFirstDay + days{*day}};
    date->year = static_cast<int16_t>(static_cast<int>(calendar.year()));
    date->month = static_cast<uint16_t>(static_cast<unsigned>(calendar.month()));
    date->day = static_cast<uint16_t>(static_cast<unsigned>(calendar.day()));
}

void peerDateToDay(const OdbcDate* date, int32_t* day) {
    const year_month_day calendar{year{date->year}, month{date->month},
                                  std::chrono::day{date->day}};
    *day = static_cast<int32_t>((sys_days{calendar} - kFirstDay).count());
}
