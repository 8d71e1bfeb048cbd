// AGE: dates moved by years, months and days. Years and months come first, with the day cut to the
// length of the new month; days are counted through day numbers.
#include "providers/date_format.h"
#include "providers/provider_support.h"

namespace {

using provider::DateFormat;
using provider::Error;
using provider::Text;

constexpr int32_t kMostDays = 3650000;

enum OperandCode : uint16_t { kDays = 1, kMonths, kYears, kFormat, kLimit };
constexpr PrvOperand kOperands[] = {
    {"DAYS", kDays, 0, OPR_VALUE_INTEGER, -kMostDays, kMostDays},
    {"MONTHS", kMonths, 0, OPR_VALUE_INTEGER, -120000, 120000},
    {"YEARS", kYears, 0, OPR_VALUE_INTEGER, -10000, 10000},
    {"FORMAT", kFormat, 0, OPR_VALUE_WIDE, 0, 0},
    {"LIMIT", kLimit, 0, OPR_VALUE_INTEGER, 1, kMostDays},
};

enum ErrorCode : uint32_t { kBadText = 1, kNoSuchDate, kOutOfRange, kBadFormat, kNotAged, kTooFar };
constexpr PrvErrorText kErrors[] = {
    {kBadText, "not of the date format"},
    {kNoSuchDate, "no such date"},
    {kOutOfRange, "a year outside 1 to 9999"},
    {kBadFormat, "a date format needs YYYY, MM and DD once each"},
    {kNotAged, "one of the operands must be given and not 0"},
    {kTooFar, "further from the source than the limit allows"},
    MASK_CSV_COMMON_ERRORS,
};

constexpr uint16_t kLongestOfMonth[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Cuts a day that the month does not have.
void cutDay(OdbcTimestamp& date) {
    date.day = std::min(date.day, kLongestOfMonth[date.month - 1]);
    FixLeapYearDay(&date);
}

bool exists(const OdbcTimestamp& date) {
    if (date.year < 1 || date.month < 1 || date.month > 12 || date.day < 1) return false;
    OdbcTimestamp cut = date;
    cutDay(cut);
    return cut.day == date.day;
}

class Age {
  public:
    explicit Age(const provider::Operands& operands)
        : days_(operands.number(kDays, 0)),
          months_(operands.number(kMonths, 0) + operands.number(kYears, 0) * 12),
          limit_(operands.number(kLimit, 0)),
          format_(formatOf(operands)) {
        if (days_ == 0 && months_ == 0) {
            throw Error(kNotAged, {{KORV_TOKID_OPERAND_LIST, L"DAYS, MONTHS, YEARS"}});
        }
    }

    template <typename Char>
    void mask(Text<Char>& text) const {
        OdbcTimestamp source = {};
        const int32_t misfit = format_.read(text, source);
        if (misfit != 0) {
            throw Error(kBadText, {{KORV_TOKID_SRCFORMAT, format_.text()},
                                   {KORV_TOKID_CHAR_POS, misfit},
                                   {KORV_TOKID_SRCLEN, text.length}});
        }
        if (!exists(source)) {
            throw Error(kNoSuchDate, {{KORV_TOKID_SRCFORMAT, format_.text()},
                                      {KORV_TOKID_SRCDST, Location_SourceValue}});
        }
        const OdbcTimestamp aged = age(source);
        // The difference is taken at noon, so that a zone's irregularities do not cost a day.
        if (limit_ != 0 && std::abs(daysBetween(source, aged)) > limit_) {
            throw Error(kTooFar, {{KORV_TOKID_SRCDST, Location_AgedValue},
                                  {KORV_TOKID_PARMKEY, L"LIMIT"},
                                  {KORV_TOKID_PARMVALUE, limit_}});
        }
        format_.write(aged, text);
    }

  private:
    static DateFormat formatOf(const provider::Operands& operands) {
        const std::wstring text = operands.has(kFormat) ? operands.wide(kFormat) : L"YYYY-MM-DD";
        const std::optional<DateFormat> format = DateFormat::parse(text);
        if (!format) {
            throw Error(kBadFormat,
                        {{KORV_TOKID_PARMKEY, L"FORMAT"}, {KORV_TOKID_PARMVALUE, text}});
        }
        return *format;
    }

    static void checkYear(int32_t year) {
        if (year < 1 || year > 9999) {
            throw Error(kOutOfRange, {{KORV_TOKID_SRCDST, Location_AgedValue}});
        }
    }

    static int32_t daysBetween(OdbcTimestamp first, OdbcTimestamp second) {
        first.hour = second.hour = 12;
        return KORVGetDiffDays(&first, &second);
    }

    OdbcTimestamp age(OdbcTimestamp date) const {
        const int32_t month = date.year * 12 + date.month - 1 + months_;
        checkYear(month < 12 ? 0 : month / 12);
        date.year = static_cast<int16_t>(month / 12);
        date.month = static_cast<uint16_t>(month % 12 + 1);
        cutDay(date);

        OdbcDate day = {date.year, date.month, date.day};
        int32_t number = 0;
        KORVIntODBCToSYB(&day, &number);
        number += days_;
        if (number < kFirstDay || number > kLastDay) checkYear(0);
        KORVIntSYBToODBC(&number, &day);
        date.year = day.year;
        date.month = day.month;
        date.day = day.day;
        return date;
    }

    // 0001-01-01 and 9999-12-31.
    static constexpr int32_t kFirstDay = -693595;
    static constexpr int32_t kLastDay = 2958463;

    int32_t days_;
    int32_t months_;
    int32_t limit_;
    DateFormat format_;
};

}  // namespace

MASK_CSV_PROVIDER("AGE", Age, kOperands, kErrors)
