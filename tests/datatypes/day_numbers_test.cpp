// Sybase day numbers and ODBC dates: every day of the years 1 to 9999 against a plain calendar, and
// anything else against the calculation written out step by step with its 16-bit intermediates.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "korv/datatypes.h"
#include "reference/counts.h"
#include "support/fenced.h"

namespace {

bool same(const OdbcDate& a, const OdbcDate& b) {
    return a.year == b.year && a.month == b.month && a.day == b.day;
}

std::string text(const OdbcDate& date) {
    return std::to_string(date.year) + '-' + std::to_string(date.month) + '-' +
           std::to_string(date.day);
}

using reference::dateOf;
using reference::dayOf;

// Both functions with arguments that end at unreadable pages.
class DayNumbersTest : public testing::Test {
  protected:
    OdbcDate toDate(int32_t number) {
        number_[0] = number;
        date_[0] = {-1, 0xFFFF, 0xFFFF};
        KORVIntSYBToODBC(number_.data(), date_.data());
        EXPECT_EQ(number, number_[0]);
        return date_[0];
    }
    int32_t toNumber(OdbcDate date) {
        date_[0] = date;
        number_[0] = 0x5A5A5A5A;
        KORVIntODBCToSYB(date_.data(), number_.data());
        EXPECT_TRUE(same(date, date_[0]));
        return number_[0];
    }
    void compareNumber(int32_t number) {
        const OdbcDate date = toDate(number);
        ASSERT_TRUE(same(dateOf(number), date))
            << number << " gives " << text(date) << ", not " << text(dateOf(number));
    }
    void compareDate(OdbcDate date) { ASSERT_EQ(dayOf(date), toNumber(date)) << text(date); }
    void TearDown() override { EXPECT_TRUE(number_.intact() && date_.intact()); }

  private:
    Fenced<int32_t> number_{std::size_t{1}, Fenced<int32_t>::Fence::behind};
    Fenced<OdbcDate> date_{std::size_t{1}, Fenced<OdbcDate>::Fence::behind};
};

TEST_F(DayNumbersTest, EveryDayOfTheYears1To9999BothWays) {
    static const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int32_t number = -693595;
    for (int year = 1; year <= 9999; ++year) {
        const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        for (int month = 1; month <= 12; ++month) {
            const int length = lengths[month - 1] + (leap && month == 2);
            for (int day = 1; day <= length; ++day, ++number) {
                const OdbcDate date = {static_cast<int16_t>(year), static_cast<uint16_t>(month),
                                       static_cast<uint16_t>(day)};
                ASSERT_TRUE(same(date, toDate(number))) << number << " is " << text(date);
                ASSERT_EQ(number, toNumber(date)) << text(date);
            }
        }
    }
    EXPECT_EQ(2958463 + 1, number);
}

TEST_F(DayNumbersTest, KnownDays) {
    struct {
        int32_t number;
        OdbcDate date;
    } const days[] = {{0, {1900, 1, 1}},        {-1, {1899, 12, 31}},    {58, {1900, 2, 28}},
                      {59, {1900, 3, 1}},       {36524, {2000, 1, 1}},   {36583, {2000, 2, 29}},
                      {-53690, {1753, 1, 1}},   {73048, {2099, 12, 31}}, {-693595, {1, 1, 1}},
                      {2958463, {9999, 12, 31}}};
    for (const auto& day : days) {
        EXPECT_TRUE(same(day.date, toDate(day.number))) << text(day.date);
        EXPECT_EQ(day.number, toNumber(day.date)) << text(day.date);
    }
}

TEST_F(DayNumbersTest, NumbersAroundEveryTurningPoint) {
    // Ends of the 32-bit range, day 0 of the count, and where adding the offset or multiplying
    // wraps.
    for (int64_t middle : {int64_t{INT32_MIN}, int64_t{INT32_MAX}, int64_t{0}, int64_t{-693902},
                           int64_t{INT32_MAX} - 693902, int64_t{536870912} - 693902,
                           int64_t{-536870912} - 693902, int64_t{1073741824} - 693902,
                           int64_t{-1073741824} - 693902, int64_t{-693595}, int64_t{2958463}}) {
        for (int64_t step = -3000; step <= 3000; ++step)
            compareNumber(static_cast<int32_t>(static_cast<uint32_t>(middle + step)));
    }
    // The ends of the 16-bit years.
    for (int64_t year : {-32768, -1, 0, 32767}) {
        const int64_t middle = year * 146097 / 400 - 693902;
        for (int64_t step = -1000; step <= 1000; ++step)
            compareNumber(static_cast<int32_t>(static_cast<uint32_t>(middle + step)));
    }
}

TEST_F(DayNumbersTest, NumbersOfTheWholeRange) {
    for (int64_t number = INT32_MIN; number <= INT32_MAX; number += 1999) {
        compareNumber(static_cast<int32_t>(number));
    }
    std::mt19937 random(19000101);
    for (int i = 0; i < 1000000; ++i) compareNumber(static_cast<int32_t>(random()));
}

TEST_F(DayNumbersTest, ImpossibleDatesGoThroughTheSameSteps) {
    for (int year = INT16_MIN; year <= INT16_MAX; ++year) {
        for (uint16_t month = 0; month <= 14; ++month) {
            for (uint16_t day : {0, 1, 32, 65535}) {
                compareDate({static_cast<int16_t>(year), month, day});
            }
        }
    }
    for (int value = 0; value <= 65535; ++value) {
        const uint16_t any = static_cast<uint16_t>(value);
        for (int16_t year : {INT16_MIN, -101, -1, 0, 1, 1999, 2000, INT16_MAX}) {
            compareDate({year, any, 1});
            compareDate({year, 2, any});
            compareDate({year, any, any});
        }
    }
}

TEST_F(DayNumbersTest, AnyDateRecord) {
    std::mt19937 random(99991231);
    for (int i = 0; i < 1000000; ++i) {
        const uint32_t bits = random();
        compareDate({static_cast<int16_t>(bits), static_cast<uint16_t>(bits >> 16),
                     static_cast<uint16_t>(random())});
    }
}

}  // namespace
