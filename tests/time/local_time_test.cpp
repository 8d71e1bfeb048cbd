// The current local time as text and as a timestamp, in every zone and at every buffer size.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "korv/time.h"
#include "support/fenced.h"
#include "text/locales.h"
#include "time/test_clock.h"

namespace {

// 2024-03-05 13:07:09 UTC.
constexpr time_t kMarch2024 = 1709644029;

constexpr time_t kMoments[] = {
    0,          -1,         kMarch2024, 1711846799,  1711846800,  // summer begins in Europe
    1729990799, 1729990800, 1730611799, 1730613600,               // and ends there and in America
    1709251199, 1709164800, 1704067199, 1704067200,               // February and New Year 2024
    2147483647, 2147483648, 4102444800, -2208988800, -2147483649, 1583020799, 32503680000,
};

class LocalTime : public testing::Test {
  protected:
    void TearDown() override {
        test_clock::release();
        setZone("UTC0");
    }

    // The system's answer, which also makes it take notice of the zone.
    static tm localNow() {
        const time_t now = time(nullptr);
        return *localtime(&now);
    }
};

TEST_F(LocalTime, KnownText) {
    test_clock::stopAt(kMarch2024);
    const struct {
        const char *zone, *text;
    } rows[] = {{"UTC0", "05/Mar/2024 13:07:09"},
                {kCentralEurope, "05/Mar/2024 14:07:09"},
                {kNewYork, "05/Mar/2024 08:07:09"},
                {"NPT-5:45", "05/Mar/2024 18:52:09"},
                {"BBB-14", "06/Mar/2024 03:07:09"}};
    // The zone is changed between calls; nothing but the call itself takes notice.
    for (const auto& row : rows) {
        setZone(row.zone);
        char buffer[21];
        EXPECT_EQ(buffer, KORVGetLocalTime(buffer, sizeof buffer));
        EXPECT_STREQ(row.text, buffer) << row.zone;
    }
}

TEST_F(LocalTime, TextOfEveryMonth) {
    const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    setZone("UTC0");
    for (int month = 0; month < 12; ++month) {
        tm date{};
        date.tm_year = 123;
        date.tm_mon = month;
        date.tm_mday = 9;
        test_clock::stopAt(timegm(&date));
        char buffer[64];
        EXPECT_EQ("09/" + std::string(months[month]) + "/2023 00:00:00",
                  KORVGetLocalTime(buffer, sizeof buffer));
    }
}

TEST_F(LocalTime, TextAndTimestampInEveryZone) {
    for (const time_t moment : kMoments) {
        test_clock::stopAt(moment);
        for (const char* zone : kAllZones) {
            SCOPED_TRACE(testing::Message() << zone << ' ' << moment);
            OdbcTimestamp stamp, date;
            char text[32];
            setZone(zone);
            KORVGetCurLocalTimeTS(&stamp, 0);
            setZone("AAA12");
            localNow();
            setZone(zone);
            KORVGetLocalTime(text, sizeof text);
            setZone("AAA12");
            localNow();
            setZone(zone);
            KORVGetCurLocalTimeTS(&date, 1);

            const tm local = localNow();
            char expected[32];
            strftime(expected, sizeof expected, "%d/%b/%Y %H:%M:%S", &local);
            EXPECT_STREQ(expected, text);
            EXPECT_EQ(local.tm_year + 1900, stamp.year);
            EXPECT_EQ(local.tm_mon + 1, stamp.month);
            EXPECT_EQ(local.tm_mday, stamp.day);
            EXPECT_EQ(local.tm_hour, stamp.hour);
            EXPECT_EQ(local.tm_min, stamp.minute);
            EXPECT_EQ(local.tm_sec, stamp.second);
            EXPECT_EQ(0u, stamp.fraction);
            EXPECT_EQ(stamp.year, date.year);
            EXPECT_EQ(stamp.month, date.month);
            EXPECT_EQ(stamp.day, date.day);
            EXPECT_EQ(0, date.hour);
            EXPECT_EQ(0, date.minute);
            EXPECT_EQ(0, date.second);
            EXPECT_EQ(0u, date.fraction);
        }
    }
}

TEST_F(LocalTime, TimestampFillsItsRecordAndNoMore) {
    setZone(kCentralEurope);
    test_clock::stopAt(kMarch2024);
    for (int flag = 0; flag < 256; ++flag) {
        for (const auto fence :
             {Fenced<OdbcTimestamp>::Fence::behind, Fenced<OdbcTimestamp>::Fence::before}) {
            Fenced<OdbcTimestamp> stamp(1, fence);
            KORVGetCurLocalTimeTS(stamp.data(), static_cast<uint8_t>(flag));
            const OdbcTimestamp& now = stamp[0];
            EXPECT_EQ(2024, now.year);
            EXPECT_EQ(3, now.month);
            EXPECT_EQ(5, now.day);
            EXPECT_EQ(flag ? 0 : 14, now.hour) << flag;
            EXPECT_EQ(flag ? 0 : 7, now.minute) << flag;
            EXPECT_EQ(flag ? 0 : 9, now.second) << flag;
            EXPECT_EQ(0u, now.fraction);
            EXPECT_TRUE(stamp.intact());
        }
    }
}

// A buffer that is too small holds what the system's strftime leaves in it.
TEST_F(LocalTime, TextAtEveryCapacity) {
    setZone("UTC0");
    test_clock::stopAt(kMarch2024);
    const tm local = localNow();
    for (std::size_t capacity = 0; capacity <= 30; ++capacity) {
        Fenced<char> buffer(capacity);
        EXPECT_EQ(buffer.data(), KORVGetLocalTime(buffer.data(), static_cast<uint32_t>(capacity)));
        EXPECT_TRUE(buffer.intact()) << capacity;
        char expected[32];
        std::memset(expected, buffer.canary, sizeof expected);
        const std::size_t length = strftime(expected, capacity, "%d/%b/%Y %H:%M:%S", &local);
        EXPECT_EQ(capacity >= 21 ? 20u : 0u, length);
        EXPECT_EQ(std::string(expected, capacity), std::string(buffer.data(), capacity))
            << capacity;
        if (capacity >= 21) {
            EXPECT_STREQ("05/Mar/2024 13:07:09", buffer.data());
        }
    }
}

// Capacities that no buffer has are no reason to write more than the text.
TEST_F(LocalTime, HugeCapacity) {
    setZone("UTC0");
    test_clock::stopAt(kMarch2024);
    for (const uint32_t capacity : {1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        Fenced<char> buffer(21);
        KORVGetLocalTime(buffer.data(), capacity);
        EXPECT_STREQ("05/Mar/2024 13:07:09", buffer.data()) << capacity;
        EXPECT_TRUE(buffer.intact());
    }
}

TEST_F(LocalTime, MonthFollowsTheLocale) {
    setZone("UTC0");
    test_clock::stopAt(kMarch2024);
    const tm local = localNow();
    for (const char* name : locales::kAll) {
        const locales::Global locale(name);
        char expected[64], text[64];
        strftime(expected, sizeof expected, "%d/%b/%Y %H:%M:%S", &local);
        EXPECT_STREQ(expected, KORVGetLocalTime(text, sizeof text)) << name;
    }
    const locales::Global german(locales::kGerman);
    char text[64];
    EXPECT_STREQ("05/M\xE4r/2024 13:07:09", KORVGetLocalTime(text, sizeof text));
}

TEST_F(LocalTime, RunningClockIsRead) {
    setZone(kNewYork);
    OdbcTimestamp stamp;
    char text[32];
    // Once more where a second passed meanwhile.
    time_t now;
    do {
        now = time(nullptr);
        KORVGetCurLocalTimeTS(&stamp, 0);
        KORVGetLocalTime(text, sizeof text);
    } while (time(nullptr) != now);
    const tm local = *localtime(&now);
    char expected[32];
    strftime(expected, sizeof expected, "%d/%b/%Y %H:%M:%S", &local);
    EXPECT_STREQ(expected, text);
    EXPECT_EQ(local.tm_mday, stamp.day);
    EXPECT_EQ(local.tm_hour, stamp.hour);
    EXPECT_EQ(local.tm_min, stamp.minute);
    EXPECT_EQ(local.tm_sec, stamp.second);
}

}  // namespace
