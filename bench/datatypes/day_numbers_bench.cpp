// Day numbers to dates and back, from 1900 to 2099.
#include "korv/datatypes.h"
#include "peers/peers.h"
#include "peers/system.h"
#include "reference/counts.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

constexpr int32_t kLastDay = 73048;

std::vector<OdbcDate> datesOf(const std::vector<int32_t>& days) {
    std::vector<OdbcDate> dates(days.size());
    for (std::size_t i = 0; i < days.size(); ++i) dates[i] = reference::dateOf(days[i]);
    return dates;
}

}  // namespace

void addDayNumbers() {
    const auto& days = forever(randomNumbers<int32_t>(kManyInputs, 0, kLastDay));
    const auto& dates = forever(datesOf(days));
    auto& date = forever(OdbcDate{});
    auto& day = forever(int32_t{});
    Row("KORVIntSYBToODBC", "1900 to 2099", kManyInputs)
        .observe([&](std::size_t) { return bytesOf(date); })
        .with("ours", [&](std::size_t i) { KORVIntSYBToODBC(&days[i], &date); })
        .with("literal", [&](std::size_t i) { date = reference::dateOf(days[i]); })
        .with("std::chrono", [&](std::size_t i) { peerDayToDate(&days[i], &date); })
        .with("gmtime_r", [&](std::size_t i) { peers::dayToDate(days[i], date); });
    Row("KORVIntODBCToSYB", "1900 to 2099", kManyInputs)
        .observe([&](std::size_t) { return bytesOf(day); })
        .with("ours", [&](std::size_t i) { KORVIntODBCToSYB(&dates[i], &day); })
        .with("literal", [&](std::size_t i) { day = reference::dayOf(dates[i]); })
        .with("std::chrono", [&](std::size_t i) { peerDateToDay(&dates[i], &day); })
        .with("timegm", [&](std::size_t i) { day = peers::dateToDay(dates[i]); });
}

}  // namespace bench
