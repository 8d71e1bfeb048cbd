// Dates in stated formats, and a time that may follow them.
//
// A format has a year, a month and a day, once each, between other characters:
//     YYYY           four digits
//     MM, DD         two digits
//     M, D           one or two digits; written without a leading zero
//     MON, MONTH     Jan or January; written in the letter case that was read
// Formats and dates are compared without regard to case. After the date there may be a time, which
// is not part of the format: T or a blank; HH:MM, HH:MM:SS or HH:MM:SS.fraction; then AM or PM,
// which a blank may precede; then Z, +HH:MM or -HH:MM.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korv/datatypes.h"

namespace provider {

enum class LetterCase : uint8_t { capitalised, upper, lower };

// A part of a format, or one other character.
struct DateElement {
    enum Kind : uint8_t { literal, year, month, monthName, day };
    Kind kind;
    uint8_t width;      // characters; 0 when it varies
    wchar_t character;  // of a literal, in upper case
};

// A date as it was found in a text.
struct DateText {
    OdbcDate date;
    int32_t monthLength;    // characters of the month
    int32_t dayLength;      // characters of the day
    LetterCase letterCase;  // of the month's name
};

class DateFormat {
  public:
    // Parses a format. Returns nothing for a text that is not a date format or in which the ends of
    // the parts would not be certain.
    static std::optional<DateFormat> parse(std::wstring_view text);

    const std::wstring& text() const { return text_; }

    // Reads a text of this format. Returns 0, or the position (from 1) of the first character that
    // does not fit. The date that was found need not exist.
    template <class Char>
    int32_t read(std::basic_string_view<Char> text, DateText& found) const;

    // Writes a date of the years 1 to 9999 in the form of the one that was found in `text`, and
    // then the rest of `text`. `target` must have room for kMostGrowth characters more than `text`
    // has. Returns the end of what was written.
    template <class Char>
    Char* write(const OdbcDate& date, const DateText& found, std::basic_string_view<Char> text,
                Char* target) const;
    static constexpr int32_t kMostGrowth = 7;  // 9 May becomes 10 September

    // Whether all dates have the same length.
    bool hasFixedLength() const;
    // Whether there is only one way to write a date.
    bool hasOneSpelling() const;

  private:
    DateFormat(std::wstring_view text, std::vector<DateElement> elements)
        : text_(text), elements_(std::move(elements)) {}

    std::wstring text_;
    std::vector<DateElement> elements_;
};

// Parses formats that are separated by `|` and are to be tried in order. The result is empty when
// one of them is not a date format.
std::vector<DateFormat> parseDateFormats(std::wstring_view text);

// Whether a date of the years 1 to 9999 exists.
bool exists(const OdbcDate& date);

// Formats to try for a column of unknown dates. Of two formats that fit the same text, the more
// likely one comes first.
inline constexpr std::string_view kCommonDateFormats[] = {
    "YYYY-MM-DD",    "YYYY/MM/DD",   "YYYY.MM.DD",  "YYYYMMDD",      "DD.MM.YYYY",
    "D.M.YYYY",      "MM/DD/YYYY",   "M/D/YYYY",    "DD/MM/YYYY",    "D/M/YYYY",
    "DD-MM-YYYY",    "MM-DD-YYYY",   "DD MON YYYY", "D MON YYYY",    "DD-MON-YYYY",
    "DD MONTH YYYY", "D MONTH YYYY", "MON D, YYYY", "MONTH D, YYYY",
};

}  // namespace provider
