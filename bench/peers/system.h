// Peers out of the system's own shared libraries, called as directly as the library under test.
#pragma once

#include <iconv.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <cwchar>
#include <cwctype>
#include <locale>

#include "korv/datatypes.h"

namespace bench::peers {

constexpr std::time_t kSecondsPerDay = 86400;
constexpr std::time_t kDaysFrom1900To1970 = 25567;

inline void dayToDate(int32_t day, OdbcDate& date) {
    const std::time_t time = (day - kDaysFrom1900To1970) * kSecondsPerDay;
    std::tm fields;
    gmtime_r(&time, &fields);
    date.year = static_cast<int16_t>(fields.tm_year + 1900);
    date.month = static_cast<uint16_t>(fields.tm_mon + 1);
    date.day = static_cast<uint16_t>(fields.tm_mday);
}

inline int32_t dateToDay(const OdbcDate& date) {
    std::tm fields{};
    fields.tm_year = date.year - 1900;
    fields.tm_mon = date.month - 1;
    fields.tm_mday = date.day;
    return static_cast<int32_t>(timegm(&fields) / kSecondsPerDay + kDaysFrom1900To1970);
}

// The text must end at the digits, or go on with `blanks` blanks.
inline bool readDigits(const wchar_t* field, int digits, const wchar_t* blanks, std::size_t count,
                       int32_t& value) {
    wchar_t* end = nullptr;
    const long number = std::wcstol(field, &end, 10);
    if (end != field + digits || std::wmemcmp(end, blanks, count) != 0) return false;
    value = static_cast<int32_t>(number);
    return true;
}

inline bool readDigits(const wchar_t* field, int digits, int32_t& value) {
    wchar_t* end = nullptr;
    const long number = std::wcstol(field, &end, 10);
    if (end != field + digits) return false;
    value = static_cast<int32_t>(number);
    return true;
}

// The next element of a list, which is cut at its end; nullptr if no element is left.
inline wchar_t* nextElement(wchar_t* list, wchar_t* output, wchar_t** state) {
    const wchar_t* element = std::wcstok(list, L",", state);
    if (!element) return nullptr;
    wchar_t* at = output;
    for (; *element; ++element) {
        *at++ = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(*element)));
    }
    *at = 0;
    return at;
}

// A conversion that is opened once.
class Iconv {
  public:
    Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {}

    // The bytes written.
    std::size_t convert(const void* source, std::size_t bytes, void* target, std::size_t room) {
        auto* in = static_cast<char*>(const_cast<void*>(source));
        auto* out = static_cast<char*>(target);
        const std::size_t before = room;
        iconv(handle_, &in, &bytes, &out, &room);
        return before - room;
    }

  private:
    iconv_t handle_;
};

}  // namespace bench::peers
