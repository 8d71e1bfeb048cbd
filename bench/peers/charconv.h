// Digit fields by <charconv>, which is compiled into its users' own code.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>

namespace bench::peers {

inline bool writeDigits(int32_t value, int16_t width, char* field) {
    char digits[11];
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    const auto length = static_cast<int16_t>(end - digits);
    if (length > width) return false;
    std::memset(field, '0', static_cast<std::size_t>(width - length));
    std::memcpy(field + (width - length), digits, static_cast<std::size_t>(length));
    return true;
}

inline bool writeDigits(int32_t value, int16_t width, wchar_t* field) {
    char digits[11];
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    const auto length = static_cast<int16_t>(end - digits);
    if (length > width) return false;
    wchar_t* at = std::fill_n(field, width - length, L'0');
    at = std::transform(static_cast<const char*>(digits), end, at,
                        [](char digit) { return static_cast<wchar_t>(digit); });
    *at = 0;
    return true;
}

inline bool readDigits(const char* field, int16_t digits, int32_t& value) {
    const auto [end, error] = std::from_chars(field, field + digits, value);
    return error == std::errc{} && end == field + digits;
}

template <class Number>
uint32_t digitCount(Number value) {
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return static_cast<uint32_t>(end - digits) - (value < 0);
}

inline uint64_t reverseDigits(uint64_t value) {
    std::string digits = std::to_string(value);
    std::reverse(digits.begin(), digits.end());
    uint64_t reversed = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), reversed);
    return reversed;
}

}  // namespace bench::peers
