// Whole days between moments, by the system's calendar, in every zone.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "korv/time.h"
#include "support/fenced.h"
#include "time/test_clock.h"

namespace {

time_t moment(const OdbcTimestamp* stamp) {
    if (!stamp) return time(nullptr);
    tm fields;
    std::memset(&fields, 0, sizeof fields);
    fields.tm_year = stamp->year - 1900;
    fields.tm_mon = stamp->month - 1;
    fields.tm_mday = stamp->day;
    fields.tm_hour = stamp->hour;
    fields.tm_min = stamp->minute;
    fields.tm_sec = stamp->second;
    return mktime(&fields);
}

int32_t diffDays(const OdbcTimestamp* first, const OdbcTimestamp* second) {
    if (!first && !second) return 0;
    double days = difftime(moment(second), moment(first));
    days /= 60;
    days /= 60;
    days /= 24;
    return static_cast<int32_t>(days);
}

class DiffDays : public testing::Test {
  protected:
    void SetUp() override { setZone("UTC0"); }
    void TearDown() override {
        test_clock::release();
        setZone("UTC0");
    }
};

OdbcTimestamp at(int16_t year, uint16_t month, uint16_t day, uint16_t hour = 0, uint16_t minute = 0,
                 uint16_t second = 0) {
    return {year, month, day, hour, minute, second, 0};
}

TEST_F(DiffDays, KnownSpans) {
    const struct {
        OdbcTimestamp first, second;
        int32_t days;
    } rows[] = {
        {at(2024, 2, 28), at(2024, 3, 1), 2},
        {at(2023, 2, 28), at(2023, 3, 1), 1},
        {at(2024, 1, 1), at(2024, 1, 1, 23, 59, 59), 0},
        {at(2024, 1, 1), at(2024, 1, 2), 1},
        {at(2024, 1, 1), at(2024, 1, 2, 21, 36), 1},  // 1.9 days
        {at(2024, 1, 1), at(2024, 1, 2, 23, 59, 59), 1},
        {at(2024, 1, 1), at(2024, 1, 3), 2},
        {at(2024, 1, 1, 12), at(2024, 1, 2, 11, 59), 0},
        {at(1900, 1, 1), at(2024, 1, 1), 45290},
        {at(1970, 1, 1), at(2038, 1, 19, 3, 14, 7), 24855},
        {at(1970, 1, 1), at(2038, 1, 20, 3, 14, 8), 24856},
        {at(-32768, 1, 1), at(32767, 12, 31), 23936531},
        {at(2024, 13, 1), at(2025, 1, 1), 0},
        {at(2024, 0, 1), at(2023, 12, 1), 0},
        {at(2023, 2, 31), at(2023, 3, 3), 0},
        {at(2024, 1, 0), at(2023, 12, 31), 0},
        {at(2024, 1, 1, 24), at(2024, 1, 2), 0},
        {at(2024, 1, 1, 0, 1440), at(2024, 1, 2), 0},
        {at(2024, 1, 1, 0, 0, 43200), at(2024, 1, 2), 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.days, KORVGetDiffDays(&row.first, &row.second))
            << row.second.year << '-' << row.second.month << '-' << row.second.day;
        EXPECT_EQ(-row.days, KORVGetDiffDays(&row.second, &row.first));
    }
}

TEST_F(DiffDays, FractionsAreIgnored) {
    const OdbcTimestamp first = {2024, 1, 1, 0, 0, 0, 0xFFFFFFFF};
    const OdbcTimestamp second = {2024, 1, 2, 0, 0, 0, 0};
    EXPECT_EQ(1, KORVGetDiffDays(&first, &second));
    EXPECT_EQ(-1, KORVGetDiffDays(&second, &first));
}

TEST_F(DiffDays, BothEmptyGiveZeroWithoutALookAtTheClock) {
    test_clock::stopAt(1709644029);
    EXPECT_EQ(0, KORVGetDiffDays(nullptr, nullptr));
    EXPECT_EQ(0u, test_clock::readings());
}

TEST_F(DiffDays, EmptyArgumentStandsForNow) {
    test_clock::stopAt(1709644029);  // 2024-03-05 13:07:09
    const OdbcTimestamp same = at(2024, 3, 5, 13, 7, 9), later = at(2024, 3, 6, 13, 7, 9),
                        almost = at(2024, 3, 6, 13, 7, 8), earlier = at(2024, 3, 4, 13, 7, 9),
                        hardly = at(2024, 3, 4, 13, 7, 10);
    EXPECT_EQ(0, KORVGetDiffDays(nullptr, &same));
    EXPECT_EQ(1u, test_clock::readings());
    EXPECT_EQ(1, KORVGetDiffDays(nullptr, &later));
    EXPECT_EQ(0, KORVGetDiffDays(nullptr, &almost));
    EXPECT_EQ(-1, KORVGetDiffDays(nullptr, &earlier));
    EXPECT_EQ(0, KORVGetDiffDays(nullptr, &hardly));
    EXPECT_EQ(-1, KORVGetDiffDays(&later, nullptr));
    EXPECT_EQ(0, KORVGetDiffDays(&almost, nullptr));
    EXPECT_EQ(1, KORVGetDiffDays(&earlier, nullptr));
    EXPECT_EQ(0, KORVGetDiffDays(&hardly, nullptr));
}

// Now is the real moment, while a record is read as standard time even in summer.
TEST_F(DiffDays, RecordsAreReadAsStandardTime) {
    setZone(kCentralEurope);
    const OdbcTimestamp winter = at(2024, 3, 30, 12), summer = at(2024, 3, 31, 12);
    EXPECT_EQ(1, KORVGetDiffDays(&winter, &summer));
    const OdbcTimestamp summerDay = at(2024, 7, 2, 11), noon = at(2024, 7, 2, 10, 59, 59);
    test_clock::stopAt(1719828000);  // 2024-07-01 12:00 on the clocks there, 11:00 standard time
    EXPECT_EQ(1, KORVGetDiffDays(nullptr, &summerDay));
    EXPECT_EQ(0, KORVGetDiffDays(nullptr, &noon));
}

TEST_F(DiffDays, RunningClockIsRead) {
    OdbcTimestamp today;
    KORVGetCurLocalTimeTS(&today, 0);
    OdbcTimestamp past = today, future = today;
    past.year = static_cast<int16_t>(past.year - 400);  // the calendar repeats after 146097 days
    future.year = static_cast<int16_t>(future.year + 400);
    EXPECT_EQ(0, KORVGetDiffDays(&today, nullptr));
    EXPECT_EQ(146097, KORVGetDiffDays(&past, nullptr));
    EXPECT_LE(146096, KORVGetDiffDays(nullptr, &future));
    EXPECT_GE(146097, KORVGetDiffDays(nullptr, &future));
}

TEST_F(DiffDays, ZoneIsReadAgainByEveryCall) {
    test_clock::stopAt(1709644029);  // 2024-03-05 13:07:09 UTC
    const OdbcTimestamp record = at(2024, 3, 6, 13, 7, 9);
    const struct {
        const char* zone;
        int32_t days;
    } rows[] = {{"UTC0", 1}, {"ABC-1", 0}, {"ABC1", 1}, {"UTC0", 1}, {"BBB-14", 0}, {"AAA24", 2}};
    for (const auto& row : rows) {
        setZone(row.zone);
        EXPECT_EQ(row.days, KORVGetDiffDays(nullptr, &record)) << row.zone;
    }
}

// Records of every kind against the slow way, with the zone set anew for each.
TEST_F(DiffDays, AgreesWithTheSystemsCalendarInEveryZone) {
    std::vector<OdbcTimestamp> stamps;
    for (const int16_t year : {-32768, -1, 0, 1, 1582, 1900, 1901, 1969, 1970, 2024, 2037, 2038,
                               2039, 2106, 9999, 32767}) {
        stamps.push_back(at(year, 1, 1));
        stamps.push_back(at(year, 2, 29, 23, 59, 59));
        stamps.push_back(at(year, 7, 4, 2, 30));
        stamps.push_back(at(year, 12, 31, 23));
    }
    for (const uint16_t day : {30, 31}) {
        for (const uint16_t hour : {0, 1, 2, 3}) stamps.push_back(at(2024, 3, day, hour, 30));
    }
    stamps.push_back(at(2024, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF));
    stamps.push_back(at(32767, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF));
    stamps.push_back(at(-32768, 0, 0));
    test_clock::stopAt(1719828000);
    std::mt19937 random(1);
    for (const char* zone : kAllZones) {
        for (const OdbcTimestamp& first : stamps) {
            const OdbcTimestamp& second = stamps[random() % stamps.size()];
            setZone("QQQ7");
            tzset();
            setZone(zone);
            const int32_t days = KORVGetDiffDays(&first, &second);
            const int32_t sinceThen = KORVGetDiffDays(&first, nullptr);
            const int32_t untilThen = KORVGetDiffDays(nullptr, &first);
            ASSERT_EQ(diffDays(&first, &second), days)
                << zone << ' ' << first.year << '-' << first.month << '-' << first.day << " to "
                << second.year << '-' << second.month << '-' << second.day;
            ASSERT_EQ(diffDays(&first, nullptr), sinceThen);
            ASSERT_EQ(diffDays(nullptr, &first), untilThen);
        }
    }
}

TEST_F(DiffDays, AgreesWithTheSystemsCalendarOnRandomRecords) {
    std::mt19937 random(2);
    const auto draw = [&] {
        return at(static_cast<int16_t>(1890 + random() % 250), 1 + random() % 12, 1 + random() % 31,
                  random() % 24, random() % 60, random() % 60);
    };
    for (const char* zone : kAllZones) {
        setZone(zone);
        for (int i = 0; i < 1500; ++i) {
            const OdbcTimestamp first = draw(), second = draw();
            ASSERT_EQ(diffDays(&first, &second), KORVGetDiffDays(&first, &second)) << zone;
        }
    }
}

TEST_F(DiffDays, OnlyReadsItsRecords) {
    Fenced<OdbcTimestamp> first{at(2024, 2, 28)}, second{at(2024, 3, 1)};
    EXPECT_EQ(2, KORVGetDiffDays(first.data(), second.data()));
    EXPECT_EQ(28, first[0].day);
    EXPECT_EQ(3, second[0].month);
    EXPECT_TRUE(first.intact());
    EXPECT_TRUE(second.intact());
}

}  // namespace
