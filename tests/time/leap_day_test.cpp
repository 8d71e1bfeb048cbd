// The repair of February days that a change of year made invalid.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "korv/time.h"
#include "support/fenced.h"

namespace {

bool isLeap(int year) {
    if (year % 4 == 0 && year % 100 != 0) return true;
    return year % 400 == 0;
}

// The day after the repair; every other member must stay.
uint16_t fixed(int16_t year, uint16_t month, uint16_t day) {
    OdbcTimestamp stamp = {year, month, day, 0x1234, 0x5678, 0x9ABC, 0xDEADBEEF};
    OdbcTimestamp before = stamp;
    FixLeapYearDay(&stamp);
    before.day = stamp.day;
    EXPECT_EQ(0, std::memcmp(&before, &stamp, sizeof stamp)) << year << '-' << month << '-' << day;
    return stamp.day;
}

TEST(LeapDay, KnownDates) {
    EXPECT_EQ(28, fixed(2023, 2, 29));
    EXPECT_EQ(28, fixed(1900, 2, 29));
    EXPECT_EQ(29, fixed(2000, 2, 29));
    EXPECT_EQ(29, fixed(2024, 2, 29));
    EXPECT_EQ(30, fixed(2024, 2, 30));
    EXPECT_EQ(31, fixed(2024, 2, 31));
    EXPECT_EQ(28, fixed(2023, 2, 30));
    EXPECT_EQ(28, fixed(2023, 2, 31));
    EXPECT_EQ(28, fixed(2023, 2, 28));
    EXPECT_EQ(1, fixed(2023, 2, 1));
    EXPECT_EQ(0, fixed(2023, 2, 0));
    EXPECT_EQ(29, fixed(2023, 1, 29));
    EXPECT_EQ(31, fixed(2023, 3, 31));
}

TEST(LeapDay, EveryYear) {
    for (int year = INT16_MIN; year <= INT16_MAX; ++year) {
        for (const uint16_t day : {27, 28, 29, 30, 0x7FFF, 0x8000, 0xFFFF}) {
            const uint16_t expected = isLeap(year) || day <= 28 ? day : 28;
            ASSERT_EQ(expected, fixed(static_cast<int16_t>(year), 2, day)) << year;
        }
    }
}

TEST(LeapDay, EveryMonthAndEveryDay) {
    for (uint32_t month = 0; month <= 0xFFFF; ++month) {
        const uint16_t expected = month == 2 ? 28 : 31;
        ASSERT_EQ(expected, fixed(2023, static_cast<uint16_t>(month), 31)) << month;
    }
    for (uint32_t day = 0; day <= 0xFFFF; ++day) {
        const uint16_t asIs = static_cast<uint16_t>(day);
        ASSERT_EQ(day > 28 ? 28 : asIs, fixed(2023, 2, asIs));
        ASSERT_EQ(asIs, fixed(2024, 2, asIs));
        ASSERT_EQ(asIs, fixed(2023, 4, asIs));
    }
}

TEST(LeapDay, OnlyItsRecordIsTouched) {
    for (const auto fence :
         {Fenced<OdbcTimestamp>::Fence::behind, Fenced<OdbcTimestamp>::Fence::before}) {
        Fenced<OdbcTimestamp> stamp(1, fence);
        stamp[0] = {2023, 2, 29, 1, 2, 3, 4};
        FixLeapYearDay(stamp.data());
        EXPECT_EQ(28, stamp[0].day);
        EXPECT_TRUE(stamp.intact());
    }
}

}  // namespace
