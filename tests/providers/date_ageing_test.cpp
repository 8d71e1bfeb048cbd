// AGE: every day of leap and common years against the standard library's calendar, and every error.
#include <chrono>
#include <ctime>

#include "masked_value.h"

static int mktimeCalls = 0;

// Takes the place of the system's in the libraries and modules of this program.
extern "C" time_t mktime(tm*) noexcept {
    ++mktimeCalls;
    return -1;
}

namespace {

using namespace std::chrono;

using DateAgeingTest = MaskedValueTest;

std::string iso(const year_month_day& date) {
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}

// Months first, the day cut to the new month, then days.
year_month_day aged(year_month_day date, int addMonths, int addDays) {
    date += months(addMonths);
    if (!date.ok()) date = year_month_day(date.year() / date.month() / last);
    return year_month_day(sys_days(date) + days(addDays));
}

TEST_F(DateAgeingTest, AgreesWithTheCalendar) {
    const struct {
        const char* operands;
        int months;
        int days;
    } cases[] = {{"days=1", 0, 1},
                 {"days=-400", 0, -400},
                 {"months=1", 1, 0},
                 {"months=-13", -13, 0},
                 {"years=1", 12, 0},
                 {"years=-4", -48, 0},
                 {"years=100", 1200, 0},
                 {"years=1, months=1, days=1", 13, 1},
                 {"months=12, days=-1", 12, -1}};
    for (const auto& c : cases) {
        rule("AGE, method=move, " + std::string(c.operands));
        for (const int first : {1899, 1999, 2023}) {
            const sys_days begin = sys_days(year(first) / January / 1);
            for (sys_days day = begin; day < begin + days(3 * 366); day += days(1)) {
                ASSERT_EQ(iso(aged(year_month_day(day), c.months, c.days)),
                          mask(iso(year_month_day(day))))
                    << c.operands << " " << iso(year_month_day(day));
            }
        }
    }
}

TEST_F(DateAgeingTest, FollowsAStatedFormatInBothWidths) {
    rule("AGE, method=move, days=1, format=DD.MM.YYYY");
    EXPECT_EQ("01.03.2023", mask("28.02.2023"));
    rule("AGE, method=move, days=1, format=DD.MM.YYYY, type=wide");
    EXPECT_EQ("01.03.2023", mask("28.02.2023"));
    rule("AGE, method=move, years=1, \"format=YYYYMMDD\", type=wide");
    EXPECT_EQ("20250228", mask("20240229"));
    rule("AGE, method=move, months=1, \"format=MM/DD, YYYY\"");
    EXPECT_EQ("02/29, 2024", mask("01/31, 2024"));
    rule("AGE, method=move, months=1, format=YYYY年MM月DD日");
    EXPECT_EQ("2024年02月29日", mask("2024年01月31日"));
}

TEST_F(DateAgeingTest, ReportsWhatIsNotADate) {
    rule("AGE, method=move, days=1");
    const std::string format = " SRCFORMAT=YYYY-MM-DD";
    EXPECT_EQ("error 1" + format + " CHAR_POS=5 SRCLEN=10", mask("2024/01/01"));
    EXPECT_EQ("error 1" + format + " CHAR_POS=1 SRCLEN=10", mask("x024-01-01"));
    EXPECT_EQ("error 1" + format + " CHAR_POS=10 SRCLEN=9", mask("2024-01-1"));
    EXPECT_EQ("error 1" + format + " CHAR_POS=11 SRCLEN=11", mask("2024-01-011"));
    EXPECT_EQ("error 1" + format + " CHAR_POS=4 SRCLEN=10", mask("202é-01-01"));
    for (const char* date : {"2023-02-29", "1900-02-29", "2024-02-30", "2024-04-31", "2024-13-01",
                             "2024-00-01", "2024-01-00", "2024-01-32", "0000-01-01"}) {
        EXPECT_EQ("error 2" + format + " SRCDST=Source", mask(date)) << date;
    }
    EXPECT_EQ("2000-03-01", mask("2000-02-29"));
    EXPECT_EQ("", mask(""));
}

TEST_F(DateAgeingTest, StaysWithinTheYears1To9999) {
    rule("AGE, method=move, days=1");
    EXPECT_EQ("9999-12-31", mask("9999-12-30"));
    EXPECT_EQ("error 3 SRCDST=Aged", mask("9999-12-31"));
    rule("AGE, method=move, days=-1");
    EXPECT_EQ("0001-01-01", mask("0001-01-02"));
    EXPECT_EQ("error 3 SRCDST=Aged", mask("0001-01-01"));
    rule("AGE, method=move, years=1");
    EXPECT_EQ("error 3 SRCDST=Aged", mask("9999-01-01"));
    rule("AGE, method=move, years=-10000");
    EXPECT_EQ("error 3 SRCDST=Aged", mask("2024-01-01"));
}

TEST_F(DateAgeingTest, TheLimitCountsDays) {
    rule("AGE, method=move, months=1, limit=30");
    EXPECT_EQ("2023-03-10", mask("2023-02-10"));
    EXPECT_EQ("2023-05-10", mask("2023-04-10"));
    EXPECT_EQ("error 6 SRCDST=Aged PARMKEY=LIMIT PARMVALUE=30", mask("2023-01-10"));
    rule("AGE, method=move, months=-1, limit=30");
    EXPECT_EQ("error 6 SRCDST=Aged PARMKEY=LIMIT PARMVALUE=30", mask("2023-04-10"));
    EXPECT_EQ("2023-04-10", mask("2023-05-10"));
}

TEST_F(DateAgeingTest, TheLimitLooksUpNoTimeZone) {
    const OdbcTimestamp noon = {2023, 7, 2, 12, 0, 0, 0};
    KORVGetDiffDays(&noon, &noon);
    ASSERT_EQ(2, mktimeCalls);
    mktimeCalls = 0;
    rule("AGE, method=move, days=365, limit=365");
    EXPECT_EQ("1900-12-31", mask("1899-12-31"));
    EXPECT_EQ("2024-07-01", mask("2023-07-02"));
    EXPECT_EQ("9999-12-31", mask("9998-12-31"));
    rule("AGE, method=move, days=-365, limit=364");
    EXPECT_EQ("error 6 SRCDST=Aged PARMKEY=LIMIT PARMVALUE=364", mask("2024-07-01"));
    EXPECT_EQ("error 6 SRCDST=Aged PARMKEY=LIMIT PARMVALUE=364", mask("0002-01-01"));
    EXPECT_EQ(0, mktimeCalls);
}

TEST_F(DateAgeingTest, RefusesBadRules) {
    EXPECT_EQ("5 OPERAND_LIST=DAYS, MONTHS, YEARS", ruleError("AGE, method=move"));
    EXPECT_EQ("5 OPERAND_LIST=DAYS, MONTHS, YEARS",
              ruleError("AGE, method=move, years=1, months=-12"));
    for (const char* format : {"YYYY-MM", "DD.MM.YY", "YYYY-MM-MM-DD", "YYYYYMMDD"}) {
        EXPECT_EQ("4 PARMKEY=FORMAT PARMVALUE=" + std::string(format),
                  ruleError("AGE, method=move, days=1, format=" + std::string(format)));
    }
}

}  // namespace
