// AGE: formats with parts of one digit, month names and times, lists of formats, and their faults.
#include <chrono>
#include <set>

#include "masked_value.h"
#include "providers/date_format.h"

namespace {

using DateFormatsTest = MaskedValueTest;
using provider::DateFormat;
using provider::DateText;

TEST_F(DateFormatsTest, ReadsAndWritesEveryFormat) {
    const struct {
        const char* format;
        const char* value;
        const char* masked;  // a day later
    } cases[] = {
        {"M/D/YYYY", "1/9/2023", "1/10/2023"},
        {"M/D/YYYY", "9/30/2023", "10/1/2023"},
        {"M/D/YYYY", "01/09/2023", "1/10/2023"},
        {"M/D/YYYY", "12/31/2023", "1/1/2024"},
        {"m/d/yyyy", "2/28/2024", "2/29/2024"},
        {"D.M.YYYY", "31.1.2023", "1.2.2023"},
        {"MM/D/YYYY", "02/9/2023", "02/10/2023"},
        {"YYYY-M-DD", "2023-9-30", "2023-10-01"},
        {"YYYYM.DD", "20239.30", "202310.01"},
        {"YYYY年M月D日", "2023年9月30日", "2023年10月1日"},
        {"DD MON YYYY", "31 Jan 2023", "01 Feb 2023"},
        {"DD MON YYYY", "31 JAN 2023", "01 FEB 2023"},
        {"DD MON YYYY", "31 jan 2023", "01 feb 2023"},
        {"DD MON YYYY", "31 jAN 2023", "01 Feb 2023"},
        {"dd-mon-yyyy", "31-MAY-2023", "01-JUN-2023"},
        {"D MON YYYY", "30 Sep 2023", "1 Oct 2023"},
        {"D MON YYYY", "05 Sep 2023", "6 Sep 2023"},
        {"MON DD, YYYY", "Dec 31, 2023", "Jan 01, 2024"},
        {"MONTH D, YYYY", "January 31, 2023", "February 1, 2023"},
        {"MONTH D, YYYY", "AUGUST 31, 2023", "SEPTEMBER 1, 2023"},
        {"MONTH D, YYYY", "may 31, 2023", "june 1, 2023"},
        {"D. MONTH YYYY", "31. December 0999", "1. January 1000"},
        {"MONTHDD,YYYY", "April30,2023", "May01,2023"},
        {"DMONYYYY", "30Apr2023", "1May2023"},
    };
    for (const auto& c : cases) {
        rule("AGE, method=move, days=1, \"format=" + std::string(c.format) + "\"");
        EXPECT_EQ(c.masked, mask(c.value)) << c.format << " " << c.value;
    }
}

TEST_F(DateFormatsTest, ReadsEveryMonthInEveryCase) {
    using namespace std::chrono;
    const char* const names[] = {"January",   "February", "March",    "April",
                                 "May",       "June",     "July",     "August",
                                 "September", "October",  "November", "December"};
    const auto styled = [](std::string name, int style) {
        for (size_t i = 0; i < name.size(); ++i) {
            if (style == 1) name[i] = static_cast<char>(toportwupper(name[i]));
            if (style == 2) name[i] = static_cast<char>(toportwlower(name[i]));
        }
        return name;
    };
    for (int i = 0; i < 12; ++i) {
        for (const int style : {0, 1, 2}) {
            const std::string from = styled(names[i], style);
            const std::string to = styled(names[(i + 5) % 12], style);
            const std::string year = i + 5 < 12 ? "1999" : "2000";
            rule("AGE, method=move, months=5, format=D MONTH YYYY");
            EXPECT_EQ("7 " + to + " " + year, mask("7 " + from + " 1999"));
            rule("AGE, method=move, months=5, format=D MON YYYY");
            EXPECT_EQ("7 " + to.substr(0, 3) + " " + year,
                      mask("7 " + from.substr(0, 3) + " 1999"));
        }
    }
}

TEST_F(DateFormatsTest, KeepsATimeAfterTheDate) {
    for (const char* time :
         {"T00:00", " 00:00", " 23:59", "T23:59:59", " 12:30:00.5", "T12:30:00.123456789",
          " 01:00 AM", " 12:59PM", " 11:00:00 pm", " 01:02:03.4 Am", "T10:00Z", "T10:00:00Z",
          "T10:00:00.25Z", "T10:00+00:00", " 10:00:00-23:59", "T10:00:00.5+05:30",
          " 01:00 PM+01:00", " 01:00AMZ"}) {
        rule("AGE, method=move, days=1");
        EXPECT_EQ("2023-03-01" + std::string(time), mask("2023-02-28" + std::string(time)));
        rule("AGE, method=move, days=1, \"format=M/D/YYYY|MONTH D, YYYY\"");
        EXPECT_EQ("10/1/2023" + std::string(time), mask("9/30/2023" + std::string(time)));
        rule("AGE, method=move, days=1, \"format=MONTH D, YYYY\"");
        EXPECT_EQ("May 1, 2023" + std::string(time), mask("April 30, 2023" + std::string(time)));
    }
}

TEST_F(DateFormatsTest, RefusesWhatIsNotATime) {
    const struct {
        const char* time;
        int position;  // of the first character that does not fit, in the time
    } cases[] = {
        {" ", 2},
        {"T", 2},
        {"  10:00", 2},
        {"t10:00", 1},
        {"_10:00", 1},
        {"10:00", 1},
        {" 1:00", 3},
        {" 10", 4},
        {" 10:", 5},
        {" 10:0", 6},
        {" 10:00:", 8},
        {" 10:00:1", 9},
        {" 24:00", 2},
        {" 10:60", 5},
        {" 10:00:60", 8},
        {" 10:00:00.", 11},
        {" 10:00.5", 7},
        {" 10:00:00,5", 10},
        {" 10:00:00.1234567890", 20},
        {" 00:30 AM", 2},
        {" 13:00 PM", 2},
        {" 10:00  AM", 7},
        {" 10:00 A", 7},
        {" 10:00 XM", 7},
        {" 10:00z", 7},
        {" 10:00 Z", 7},
        {" 10:00ZZ", 8},
        {" 10:00+", 8},
        {" 10:00+1:00", 9},
        {" 10:00+24:00", 8},
        {" 10:00+10:60", 11},
        {" 10:00+1000", 10},
        {" 10:00 +10:00", 7},
        {" 10:00 AM ", 10},
        {" 10:00 x", 7},
        {" 10:00:00:00", 10},
    };
    rule("AGE, method=move, days=1");
    for (const auto& c : cases) {
        const std::string value = "2023-02-28" + std::string(c.time);
        EXPECT_EQ("error 1 SRCFORMAT=YYYY-MM-DD CHAR_POS=" + std::to_string(10 + c.position) +
                      " SRCLEN=" + std::to_string(value.size()),
                  mask(value))
            << value;
    }
}

TEST_F(DateFormatsTest, TriesFormatsInTheirOrder) {
    rule("AGE, method=move, days=1, format=YYYY-MM-DD|M/D/YYYY|D MON YYYY");
    EXPECT_EQ("2023-03-01", mask("2023-02-28"));
    EXPECT_EQ("3/1/2023", mask("2/28/2023"));
    EXPECT_EQ("1 MAR 2023", mask("28 FEB 2023"));
    const std::string formats = "SRCFORMAT=YYYY-MM-DD|M/D/YYYY|D MON YYYY";
    EXPECT_EQ("error 1 " + formats + " CHAR_POS=4 SRCLEN=11", mask("28 FEV 2023"));
    EXPECT_EQ("error 2 SRCFORMAT=M/D/YYYY SRCDST=Source", mask("2/29/2023"));
    EXPECT_EQ("", mask(""));

    // The first format in which the date exists.
    rule("AGE, method=move, days=1, format=M/D/YYYY|D/M/YYYY");
    EXPECT_EQ("1/3/2023", mask("1/2/2023"));
    EXPECT_EQ("14/2/2023", mask("13/2/2023"));
    EXPECT_EQ("error 2 SRCFORMAT=M/D/YYYY SRCDST=Source", mask("13/13/2023"));
    rule("AGE, method=move, days=1, format=D/M/YYYY|M/D/YYYY");
    EXPECT_EQ("2/2/2023", mask("1/2/2023"));
}

TEST_F(DateFormatsTest, ReportsWhereAFormatEnds) {
    const struct {
        const char* format;
        const char* value;
        int position;
    } cases[] = {
        {"M/D/YYYY", "/1/2023", 1},        {"M/D/YYYY", "123/1/2023", 3},
        {"M/D/YYYY", "1/x/2023", 3},       {"M/D/YYYY", "1/1/23", 7},
        {"M/D/YYYY", "1/1/20233", 9},      {"D MON YYYY", "1 Foo 2023", 3},
        {"D MON YYYY", "1 Ja 2023", 3},    {"D MON YYYY", "1 June 2023", 6},
        {"D MONTH YYYY", "1 Jun 2023", 3}, {"D MONTH YYYY", "1 June", 7},
    };
    for (const auto& c : cases) {
        rule("AGE, method=move, days=1, format=" + std::string(c.format));
        EXPECT_EQ("error 1 SRCFORMAT=" + std::string(c.format) +
                      " CHAR_POS=" + std::to_string(c.position) +
                      " SRCLEN=" + std::to_string(std::string(c.value).size()),
                  mask(c.value));
    }
}

TEST_F(DateFormatsTest, RefusesGarbledAndAmbiguousFormats) {
    for (const char* format : {"YYYY",
                               "YYYY-MM",
                               "M/D",
                               "D/M/YY",
                               "D MON YY",
                               "YYYY-M-M",
                               "D/D/YYYY",
                               "MM/M/D/YYYY",
                               "MON/M/D/YYYY",
                               "MON MONTH D YYYY",
                               "MDYYYY",
                               "DMYYYY",
                               "YYYYMD",
                               "D1/M/YYYY",
                               "M0/D/YYYY",
                               "DD MMM YYYY",
                               "D MMMM YYYY",
                               "YYYYY-M-D",
                               "YYYY-M-DDD",
                               "D de MON YYYY",
                               "D MONDAY YYYY",
                               "M/D/YYYY HH:MI",
                               "M/D/YYYYZ",
                               "|",
                               "YYYY-MM-DD|",
                               "|YYYY-MM-DD",
                               "YYYY-MM-DD||M/D/YYYY",
                               "YYYY-MM-DD|M/D",
                               "M/D|YYYY-MM-DD",
                               "%d.%m.%Y"}) {
        EXPECT_EQ("4 PARMKEY=FORMAT PARMVALUE=" + std::string(format),
                  ruleError("AGE, method=move, days=1, \"format=" + std::string(format) + "\""));
    }
}

// Formats with YYYY, MM and DD could have any other characters before there were other parts.
TEST_F(DateFormatsTest, KeepsTheMeaningOfFormatsOfTwoDigitParts) {
    const struct {
        const char* format;
        const char* value;
        const char* masked;
    } cases[] = {
        {"den DD.MM.YYYY", "den 31.12.2023", "den 01.01.2024"},
        {"DEN DD.MM.YYYY", "den 31.12.2023", "den 01.01.2024"},
        {"comma DD,MM,YYYY", "Comma 31,12,2023", "Comma 01,01,2024"},
        {"YYYY|MM|DD", "2023|12|31", "2024|01|01"},
        {"DDMMYYYYD1M", "31122023D1M", "01012024D1M"},
        {"YYYYMMDD", "20231231", "20240101"},
        {"1YYYY2MM3DD4", "120232123314", "120242013014"},
    };
    for (const auto& c : cases) {
        rule("AGE, method=move, days=1, \"format=" + std::string(c.format) + "\"");
        EXPECT_EQ(c.masked, mask(c.value)) << c.format;
    }
}

TEST_F(DateFormatsTest, KeepsToTheRoomOfTheTarget) {
    const std::string spaces(7995, '.');
    rule("AGE, method=move, days=1, format=" + spaces + "D.M.YYYY");
    EXPECT_EQ("error 100 SRCLEN=8003 EXPSRCLEN=8000", mask(spaces + "9.9.2023"));
}

// The first of the common formats in which a narrow text is a date.
std::string commonFormatOf(std::string_view value) {
    for (const std::string_view text : provider::kCommonDateFormats) {
        const auto format = DateFormat::parse(text::toWide(text));
        EXPECT_TRUE(format) << text;
        DateText read = {};
        if (format->read(value, read) == 0 && provider::exists(read.date)) return std::string(text);
    }
    return "";
}

TEST_F(DateFormatsTest, EveryCommonFormatIsFoundInADate) {
    const struct {
        const char* value;
        const char* format;
    } cases[] = {
        {"2024-02-29", "YYYY-MM-DD"},
        {"2024-02-29T10:00:00Z", "YYYY-MM-DD"},
        {"2024/02/29", "YYYY/MM/DD"},
        {"2024.02.29", "YYYY.MM.DD"},
        {"20240229", "YYYYMMDD"},
        {"29.02.2024", "DD.MM.YYYY"},
        {"29.2.2024 10:00", "D.M.YYYY"},
        {"02/03/2024", "MM/DD/YYYY"},
        {"2/29/2024", "M/D/YYYY"},
        {"29/02/2024", "DD/MM/YYYY"},
        {"29/2/2024", "D/M/YYYY"},
        {"29-02-2024", "DD-MM-YYYY"},
        {"02-29-2024", "MM-DD-YYYY"},
        {"29 Feb 2024", "DD MON YYYY"},
        {"9 FEB 2024", "D MON YYYY"},
        {"29-Feb-2024", "DD-MON-YYYY"},
        {"29 February 2024", "DD MONTH YYYY"},
        {"9 February 2024", "D MONTH YYYY"},
        {"Feb 29, 2024", "MON D, YYYY"},
        {"February 29, 2024", "MONTH D, YYYY"},
        {"2023-02-29", ""},
        {"29 M\u00E4rz 2024", ""},
        {"2024-02-29 \u00A010:00", ""},
        {"", ""},
    };
    std::set<std::string> found;
    for (const auto& c : cases) {
        EXPECT_EQ(c.format, commonFormatOf(c.value)) << c.value;
        found.insert(c.format);
    }
    EXPECT_EQ(std::size(provider::kCommonDateFormats) + 1, found.size());
}

}  // namespace
