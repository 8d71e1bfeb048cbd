// Digit counts, day numbers and dates, against the slow way and a calendar.
#include <cstdlib>

#include "korv/korv.h"
#include "reference/counts.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;

template <class Integer>
void digits(Input& input, int32_t (*count)(Integer, uint32_t*)) {
    const auto value = input.number<Integer>();
    const auto start = input.number<uint32_t>();
    Block<uint32_t> counter(1);
    counter[0] = start;
    FUZZ_EXPECT(count(value, counter.data()) == 0);
    uint32_t expected = start;
    reference::countDigits(value, &expected);
    FUZZ_EXPECT(counter[0] == expected);
}

bool isLeap(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysOf(int year, int month) {
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap(year) ? 29 : days[month - 1];
}

void dayNumber(Input& input) {
    const bool anyDay = input.choice(4) == 3;
    const auto drawn = input.number<int32_t>();
    const int32_t number = anyDay ? drawn : drawn % 4000000;
    Block<OdbcDate> date(1);
    KORVIntSYBToODBC(&number, date.data());
    const OdbcDate expected = reference::dateOf(number);
    FUZZ_EXPECT(date[0].year == expected.year && date[0].month == expected.month &&
                date[0].day == expected.day);
    if (number < -693595 || number > 2958463) return;
    FUZZ_EXPECT(date[0].year >= 1 && date[0].year <= 9999);
    FUZZ_EXPECT(date[0].month >= 1 && date[0].month <= 12);
    FUZZ_EXPECT(date[0].day >= 1 && date[0].day <= daysOf(date[0].year, date[0].month));
    int32_t back = ~number;
    KORVIntODBCToSYB(date.data(), &back);
    FUZZ_EXPECT(back == number);
}

void date(Input& input) {
    const bool anyDate = input.choice(4) == 3;
    OdbcDate date;
    date.year = input.number<int16_t>();
    date.month = input.number<uint16_t>() % (anyDate ? 0x10000 : 14);
    date.day = input.number<uint16_t>() % (anyDate ? 0x10000 : 33);
    int32_t number = 0;
    KORVIntODBCToSYB(&date, &number);
    FUZZ_EXPECT(number == reference::dayOf(date));
}

OdbcTimestamp timestamp(Input& input) {
    OdbcTimestamp moment{};
    moment.year = input.number<int16_t>();
    moment.month = input.number<uint16_t>();
    moment.day = input.number<uint16_t>();
    moment.hour = input.number<uint16_t>();
    moment.minute = input.number<uint16_t>();
    moment.second = input.number<uint16_t>();
    moment.fraction = input.number<uint32_t>();
    return moment;
}

// Seconds since 0000-03-01 in UTC; the calendar goes on where months, days and so on run over.
int64_t secondsOf(const OdbcTimestamp& moment) {
    const int64_t months = int64_t{moment.year} * 12 + moment.month - 1 - 2 + 400000 * 12;
    const int64_t year = months / 12, month = months % 12;
    const int64_t days =
        365 * year + year / 4 - year / 100 + year / 400 + (153 * month + 2) / 5 + moment.day;
    return ((days * 24 + moment.hour) * 60 + moment.minute) * 60 + moment.second;
}

// In the time zone of the process, which is UTC here.
void difference(Input& input) {
    static const int zone = setenv("TZ", "UTC0", 1);
    FUZZ_EXPECT(zone == 0);
    const OdbcTimestamp first = timestamp(input), second = timestamp(input);
    const int64_t seconds = secondsOf(second) - secondsOf(first);
    FUZZ_EXPECT(KORVGetDiffDays(&first, &second) == seconds / 86400);
    FUZZ_EXPECT(KORVGetDiffDays(&second, &first) == -seconds / 86400);
    FUZZ_EXPECT(KORVGetDiffDays(nullptr, nullptr) == 0);
}

void february(Input& input) {
    OdbcTimestamp moment = timestamp(input);
    const OdbcTimestamp before = moment;
    FixLeapYearDay(&moment);
    const bool clamped = before.month == 2 && before.day > 28 && !isLeap(before.year);
    FUZZ_EXPECT(moment.day == (clamped ? 28 : before.day));
    moment.day = before.day;
    FUZZ_EXPECT(secondsOf(moment) == secondsOf(before) && moment.fraction == before.fraction);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.choice(6)) {
        case 0:
            digits<int32_t>(input, KORVGetIntDigitCount);
            break;
        case 1:
            digits<int64_t>(input, KORVGetLongLongDigitCount);
            break;
        case 2:
            dayNumber(input);
            break;
        case 3:
            date(input);
            break;
        case 4:
            difference(input);
            break;
        default:
            february(input);
    }
    return 0;
}
