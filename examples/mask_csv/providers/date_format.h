// Dates in a stated format: the parts YYYY, MM and DD, each once, between other characters.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "providers/provider_support.h"

namespace provider {

inline int32_t readDigits(const char* text, int16_t count, int32_t* value) {
    return PXNumToLong(text, count, count, value);
}
inline int32_t readDigits(const wchar_t* text, int16_t count, int32_t* value) {
    return PXNumToLongW(text, count, count, value);
}
inline void writeDigits(int32_t value, int16_t count, char* text) {
    PXLongToNum(value, count, text);
}
// The wide twin ends its field with a terminator; what stands behind the field has to stay.
inline void writeDigits(int32_t value, int16_t count, wchar_t* text) {
    const wchar_t behind = text[count];
    PXLongToNumW(value, count, text);
    text[count] = behind;
}

class DateFormat {
  public:
    // Empty when `format` lacks a part or has it twice.
    static std::optional<DateFormat> parse(const std::wstring& format) {
        DateFormat result;
        result.format_ = format;
        const auto place = [&](std::wstring_view part, size_t& at) {
            at = format.find(part);
            return at != std::wstring::npos && format.find(part, at + 1) == std::wstring::npos;
        };
        if (!place(L"YYYY", result.year_) || !place(L"MM", result.month_) ||
            !place(L"DD", result.day_)) {
            return std::nullopt;
        }
        return result;
    }

    const std::wstring& text() const { return format_; }

    // Reads a date; the position (from 1) of the first character that does not fit, or 0.
    template <typename Char>
    int32_t read(const Text<Char>& text, OdbcTimestamp& date) const {
        for (size_t i = 0; i < format_.size(); ++i) {
            const bool digit = isPart(i);
            if (i >= static_cast<size_t>(text.length) ||
                (digit ? !isDigit(text.data[i]) : text.data[i] != static_cast<Char>(format_[i]))) {
                return static_cast<int32_t>(i) + 1;
            }
        }
        if (static_cast<size_t>(text.length) != format_.size()) {
            return static_cast<int32_t>(format_.size()) + 1;
        }
        int32_t year = 0;
        int32_t month = 0;
        int32_t day = 0;
        readDigits(text.data + year_, 4, &year);
        readDigits(text.data + month_, 2, &month);
        readDigits(text.data + day_, 2, &day);
        date = {};
        date.year = static_cast<int16_t>(year);
        date.month = static_cast<uint16_t>(month);
        date.day = static_cast<uint16_t>(day);
        return 0;
    }

    // Writes a date of the years 1 to 9999 over one of the same format.
    template <typename Char>
    void write(const OdbcTimestamp& date, Text<Char>& text) const {
        writeDigits(date.year, 4, text.data + year_);
        writeDigits(date.month, 2, text.data + month_);
        writeDigits(date.day, 2, text.data + day_);
    }

  private:
    bool isPart(size_t i) const {
        return (i >= year_ && i < year_ + 4) || (i >= month_ && i < month_ + 2) ||
               (i >= day_ && i < day_ + 2);
    }

    std::wstring format_;
    size_t year_ = 0;
    size_t month_ = 0;
    size_t day_ = 0;
};

}  // namespace provider
