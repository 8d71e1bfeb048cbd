// AGE: dates moved.
//   range  by a number of days in a range, drawn by a keyed hash of the date or of another column
//   move   by years, months and days; a disguise. Years and months come first, with the day cut to
//          the length of the new month; days are counted through day numbers.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "providers/crypto/bytes.h"
#include "providers/crypto/keyed_hash.h"
#include "providers/date_format.h"
#include "providers/provider_support.h"

namespace {

using provider::DateFormat;
using provider::DateText;
using provider::Error;
using provider::Text;

constexpr int32_t kMostDays = 3650000;

constexpr PrvMethod kMethods[] = {{"range", PRV_METHOD_KEYED}, {"move", 0}};

enum OperandCode : uint16_t { kDays = 1, kMonths, kYears, kFormat, kLimit, kRange, kPer };
constexpr PrvOperand kOperands[] = {
    {"DAYS", kDays, 0, OPR_VALUE_INTEGER, -kMostDays, kMostDays},
    {"MONTHS", kMonths, 0, OPR_VALUE_INTEGER, -120000, 120000},
    {"YEARS", kYears, 0, OPR_VALUE_INTEGER, -10000, 10000},
    {"FORMAT", kFormat, 0, OPR_VALUE_WIDE, 0, 0},
    {"LIMIT", kLimit, PRV_OPERAND_CHECK, OPR_VALUE_INTEGER, 1, kMostDays},
    {"RANGE", kRange, 0, OPR_VALUE_NARROW, 0, 0},
    {"PER", kPer, PRV_OPERAND_COLUMN, OPR_VALUE_NARROW, 0, 0},
};

enum ErrorCode : uint32_t {
    kBadText = 1,
    kNoSuchDate,
    kOutOfRange,
    kBadFormat,
    kNotAged,
    kTooFar,
    kBadRange,
    kNoRelated
};
constexpr PrvErrorText kErrors[] = {
    {kBadText, "the value does not have the date format"},
    {kNoSuchDate, "the date does not exist"},
    {kOutOfRange, "the year would be outside 1 to 9999"},
    {kBadFormat, "a date format needs YYYY, one of MM, M, MON and MONTH, and one of DD and D"},
    {kNotAged, "at least one of the operands must be given and must not be 0"},
    {kTooFar, "the date would move further than the limit allows"},
    {kBadRange, "a range of days has the form A..B, with A not above B"},
    {kNoRelated, "the column of the operand PER is empty in this row"},
    KORV_COMMON_ERRORS,
};

class Age {
  public:
    static constexpr const char* kSampleRules[] = {
        "AGE, secret=test, range=-30..30",
        "AGE, secret=test, range=0..365, format=DD.MM.YYYY",
        "AGE, method=move, days=45",
        "AGE, method=move, years=-1, days=45, limit=400",
        "AGE, method=move, months=1, format=YYYY-MM-DD|DD.MM.YYYY|M/D/YYYY|D MON YYYY",
    };

    explicit Age(const provider::Operands& operands)
        : days_(operands.number(kDays, 0)),
          months_(operands.number(kMonths, 0) + operands.number(kYears, 0) * 12),
          limit_(operands.number(kLimit, 0)),
          formatText_(operands.has(kFormat) ? operands.wide(kFormat) : L"YYYY-MM-DD"),
          formats_(provider::parseDateFormats(formatText_)) {
        if (formats_.empty()) {
            throw Error(kBadFormat,
                        {{KORV_TOKID_PARMKEY, L"FORMAT"}, {KORV_TOKID_PARMVALUE, formatText_}});
        }
        if (operands.isMethod("range")) {
            operands.refuse(kDays, L"DAYS");
            operands.refuse(kMonths, L"MONTHS");
            operands.refuse(kYears, L"YEARS");
            operands.refuse(kLimit, L"LIMIT");
            operands.require(kRange, L"RANGE");
            range_ = rangeOf(operands.wide(kRange));
            isPerColumn_ = operands.has(kPer);
            hash_.emplace(provider::keyOf(operands));
            return;
        }
        operands.refuse(kRange, L"RANGE");
        operands.refuse(kPer, L"PER");
        if (days_ == 0 && months_ == 0) {
            throw Error(kNotAged, {{KORV_TOKID_OPERAND_LIST, L"DAYS, MONTHS, YEARS"}});
        }
    }

    template <class Char>
    void mask(Text<Char>& text, provider::Related related) const {
        const std::basic_string_view<Char> source(text.source, static_cast<size_t>(text.length));
        DateText found = {};
        const DateFormat& format = findFormat(source, found);
        if (!format.hasFixedLength()) text.requireRoom(source.size() + DateFormat::kMostGrowth);
        const OdbcDate aged =
            hash_ ? moved(found.date, drawn(found.date, related)) : age(found.date);
        const Char* const end = format.write(aged, found, source, text.data);
        text.length = static_cast<int32_t>(end - text.data);
        text.data[text.length] = 0;
    }

    uint32_t promises() const {
        const bool fixed = std::all_of(formats_.begin(), formats_.end(),
                                       [](const DateFormat& f) { return f.hasFixedLength(); });
        // Months of different lengths end on the same day.
        const bool oneToOne =
            !hash_ && months_ == 0 && formats_.size() == 1 && formats_[0].hasOneSpelling();
        return (fixed ? PRV_PROMISE_LENGTH_KEPT : 0) | (oneToOne ? PRV_PROMISE_ONE_TO_ONE : 0);
    }

  private:
    // The first format in which the text is a date that exists.
    template <class Char>
    const DateFormat& findFormat(std::basic_string_view<Char> text, DateText& found) const {
        const DateFormat* noSuchDate = nullptr;
        int32_t farthest = 0;
        for (const DateFormat& format : formats_) {
            const int32_t misfit = format.read(text, found);
            if (misfit == 0 && provider::exists(found.date)) return format;
            if (misfit == 0 && noSuchDate == nullptr) noSuchDate = &format;
            farthest = std::max(farthest, misfit);
        }
        if (noSuchDate != nullptr) {
            throw Error(kNoSuchDate, {{KORV_TOKID_SRCFORMAT, noSuchDate->text()},
                                      {KORV_TOKID_SRCDST, Location_SourceValue}});
        }
        throw Error(kBadText, {{KORV_TOKID_SRCFORMAT,
                                formats_.size() == 1 ? formats_[0].text() : formatText_},
                               {KORV_TOKID_CHAR_POS, farthest},
                               {KORV_TOKID_SRCLEN, static_cast<int32_t>(text.size())}});
    }

    static void checkYear(int32_t year) {
        if (year < 1 || year > 9999) {
            throw Error(kOutOfRange, {{KORV_TOKID_SRCDST, Location_AgedValue}});
        }
    }

    static int32_t dayNumber(const OdbcDate& date) {
        int32_t number = 0;
        KORVIntODBCToSYB(&date, &number);
        return number;
    }

    OdbcDate age(const OdbcDate& source) const {
        using namespace std::chrono;
        const int32_t months = source.year * 12 + source.month - 1 + months_;
        checkYear(months < 12 ? 0 : months / 12);
        OdbcDate date = {static_cast<int16_t>(months / 12), static_cast<uint16_t>(months % 12 + 1),
                         source.day};
        if (!provider::exists(date)) {
            const auto lastDay = year(date.year) / month(date.month) / last;
            date.day = static_cast<uint16_t>(static_cast<unsigned>(lastDay.day()));
        }
        date = moved(date, days_);
        if (limit_ != 0 && std::abs(dayNumber(date) - dayNumber(source)) > limit_) {
            throw Error(kTooFar, {{KORV_TOKID_SRCDST, Location_AgedValue},
                                  {KORV_TOKID_PARMKEY, L"LIMIT"},
                                  {KORV_TOKID_PARMVALUE, limit_}});
        }
        return date;
    }

    static OdbcDate moved(OdbcDate date, int32_t days) {
        const int32_t number = dayNumber(date) + days;
        if (number < kFirstDay || number > kLastDay) checkYear(0);
        KORVIntSYBToODBC(&number, &date);
        return date;
    }

    struct Range {
        int32_t low;
        int32_t high;
    };

    static bool parseDays(std::wstring_view text, int32_t& days) {
        const bool isNegative = text.starts_with(L'-');
        if (isNegative || text.starts_with(L'+')) text.remove_prefix(1);
        if (text.empty() || text.size() > 7) return false;
        days = 0;
        for (const wchar_t c : text) {
            if (!provider::isDigit(c)) return false;
            days = days * 10 + (c - '0');
        }
        if (days > kMostDays) return false;
        if (isNegative) days = -days;
        return true;
    }

    static Range rangeOf(const std::wstring& text) {
        Range range = {};
        const size_t dots = text.find(L"..");
        if (dots == std::wstring::npos || !parseDays(text.substr(0, dots), range.low) ||
            !parseDays(text.substr(dots + 2), range.high) || range.low > range.high) {
            throw Error(kBadRange, {{KORV_TOKID_PARMKEY, L"RANGE"}, {KORV_TOKID_PARMVALUE, text}});
        }
        return range;
    }

    // The days by which the date moves, both ends of the range included.
    int32_t drawn(const OdbcDate& date, provider::Related related) const {
        char iso[24];
        provider::Related message = related;
        if (!isPerColumn_) {
            std::snprintf(iso, sizeof iso, "%04d-%02d-%02d", int{date.year}, int{date.month},
                          int{date.day});
            message = iso;
        } else if (related.empty()) {
            throw Error(kNoRelated, {{KORV_TOKID_PARMKEY, L"PER"}});
        }
        const auto count = static_cast<uint32_t>(range_.high - range_.low + 1);
        return range_.low + static_cast<int32_t>(crypto::pick(hash_->fractionOf(message), count));
    }

    // 0001-01-01 and 9999-12-31.
    static constexpr int32_t kFirstDay = -693595;
    static constexpr int32_t kLastDay = 2958463;

    std::optional<crypto::KeyedHash> hash_;  // of the method range
    Range range_ = {};
    bool isPerColumn_ = false;
    int32_t days_;
    int32_t months_;
    int32_t limit_;
    std::wstring formatText_;
    std::vector<DateFormat> formats_;
};

}  // namespace

KORV_PROVIDER("AGE", Age, kMethods, kOperands, kErrors)
