// Reads the parts of a date and of a time from a text, one after the other.
#pragma once

#include <algorithm>
#include <cwctype>
#include <iterator>
#include <string_view>

#include "providers/date_format.h"
#include "providers/value_text.h"

namespace provider {

inline constexpr std::string_view kMonthNames[] = {"JANUARY",   "FEBRUARY", "MARCH",    "APRIL",
                                                   "MAY",       "JUNE",     "JULY",     "AUGUST",
                                                   "SEPTEMBER", "OCTOBER",  "NOVEMBER", "DECEMBER"};

// The first `width` letters of a month's name, or all of them for a width of 0.
inline std::string_view monthName(int32_t month, uint8_t width) {
    const std::string_view name = kMonthNames[month - 1];
    return width == 0 ? name : name.substr(0, width);
}

inline wint_t upperCase(wchar_t c) {
    const auto code = static_cast<wint_t>(c);
    return code < 0x80 ? static_cast<wint_t>(upperAscii(c)) : std::towupper(code);
}
// A byte above 127 is a part of a character. WEOF differs from each character of a format.
inline wint_t upperCase(char c) {
    return static_cast<unsigned char>(c) < 0x80 ? static_cast<wint_t>(upperAscii(c)) : WEOF;
}

// Each function returns false when the text does not fit; position() is then the index of the first
// character that does not.
template <class Char>
class DateReader {
  public:
    explicit DateReader(std::basic_string_view<Char> text) : text_(text) {}

    size_t position() const { return at_; }

    // Skips a character, which is given in upper case, in either case.
    bool skip(wchar_t c) {
        if (at_ == text_.size() || upperCase(text_[at_]) != static_cast<wint_t>(c)) return false;
        ++at_;
        return true;
    }

    // Reads a number of `width` digits, or of one or two for a width of 0.
    bool readNumber(uint8_t width, int32_t& number) {
        const size_t fewest = width == 0 ? 1 : width;
        const size_t most = width == 0 ? 2 : width;
        const size_t first = at_;
        number = 0;
        while (at_ - first < most && at_ < text_.size() && isDigit(text_[at_])) {
            number = number * 10 + static_cast<int32_t>(text_[at_++] - '0');
        }
        return at_ - first >= fewest;
    }

    // Reads the name of a month, see monthName.
    bool readMonth(uint8_t width, int32_t& month, LetterCase& letterCase) {
        const size_t first = at_;
        for (month = 1; month <= static_cast<int32_t>(std::size(kMonthNames)); ++month) {
            const std::string_view name = monthName(month, width);
            size_t letters = 0;
            while (letters < name.size() && skip(name[letters])) ++letters;
            if (letters == name.size()) {
                letterCase = letterCaseOf(text_.substr(first, letters));
                return true;
            }
            at_ = first;
        }
        return false;
    }

    // Skips the rest of the text, which is empty or a time.
    bool skipTime() {
        if (at_ == text_.size()) return true;
        if (text_[at_] != 'T' && text_[at_] != ' ') return false;
        ++at_;
        const size_t hours = at_;
        if (!skipTwoDigits(0, 23) || !skip(':') || !skipTwoDigits(0, 59)) return false;
        if (skip(':')) {
            if (!skipTwoDigits(0, 59)) return false;
            if (skip('.') && !skipFraction()) return false;
        }
        if (skipHalfOfDay()) {
            const size_t end = at_;
            at_ = hours;
            if (!skipTwoDigits(1, 12)) return false;
            at_ = end;
        }
        return skipZone() && at_ == text_.size();
    }

  private:
    static LetterCase letterCaseOf(std::basic_string_view<Char> name) {
        const auto isUpper = [](Char c) { return c < 'a'; };
        const auto count = static_cast<size_t>(std::count_if(name.begin(), name.end(), isUpper));
        return count == 0             ? LetterCase::lower
               : count == name.size() ? LetterCase::upper
                                      : LetterCase::capitalised;
    }

    bool skipTwoDigits(int32_t least, int32_t most) {
        const size_t first = at_;
        int32_t number = 0;
        if (!readNumber(2, number)) return false;
        if (number >= least && number <= most) return true;
        at_ = first;
        return false;
    }

    bool skipFraction() {
        constexpr size_t kMostDigits = 9;
        const size_t first = at_;
        while (at_ - first < kMostDigits && at_ < text_.size() && isDigit(text_[at_])) ++at_;
        return at_ > first;
    }

    // AM or PM, after at most one blank; false and nothing skipped when there is neither.
    bool skipHalfOfDay() {
        const size_t first = at_;
        skip(' ');
        if ((skip('A') || skip('P')) && skip('M')) return true;
        at_ = first;
        return false;
    }

    // Z, +HH:MM, -HH:MM or nothing.
    bool skipZone() {
        if (!skip('+') && !skip('-')) {
            if (at_ < text_.size() && text_[at_] == 'Z') ++at_;
            return true;
        }
        return skipTwoDigits(0, 23) && skip(':') && skipTwoDigits(0, 59);
    }

    std::basic_string_view<Char> text_;
    size_t at_ = 0;
};

}  // namespace provider
