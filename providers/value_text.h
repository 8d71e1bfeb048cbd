// Values as text, narrow or wide, and what replaces them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "korv/text.h"
#include "providers/provider_error.h"
#include "text/utf8_text.h"

namespace provider {

// The longest value in characters; the library counts terminated text in 16 bits.
inline constexpr int32_t kLongestValue = 8000;

// A value in its target buffer: `length` characters with a terminator, in room for `capacity`.
template <typename Char>
struct Text {
    Char* data;
    int32_t length;
    int32_t capacity;    // without the terminator
    const Char* source;  // the clear value, of `length` characters at first

    Char* begin() { return data; }
    Char* end() { return data + length; }
    std::basic_string_view<Char> view() const { return {data, static_cast<size_t>(length)}; }

    // Throws Error when a text of `count` characters would not fit.
    void requireRoom(size_t count) const {
        if (count > static_cast<size_t>(capacity)) {
            throw Error(kResultTooLong, {{KORV_TOKID_BUF_EXPECTED_LEN, static_cast<int32_t>(count)},
                                         {KORV_TOKID_BUFFER_SIZE, capacity}});
        }
    }
    // Replaces the characters from `first` on.
    void replaceFrom(int32_t first, std::basic_string_view<Char> tail) {
        requireRoom(static_cast<size_t>(first) + tail.size());
        Char* const last = std::copy(tail.begin(), tail.end(), data + first);
        *last = 0;
        length = static_cast<int32_t>(last - data);
    }
};

// UTF-8 text as wide text. Throws text::ConversionError.
std::wstring widen(const std::string& utf8);

// A text that replaces values or parts of them, in both widths; the narrow one is UTF-8.
struct Replacement {
    explicit Replacement(std::wstring text);
    explicit Replacement(std::string text);
    std::string_view of(const Text<char>&) const { return narrow; }
    std::wstring_view of(const Text<wchar_t>&) const { return wide; }

    std::string narrow;
    std::wstring wide;
};

// A text as UTF-8: itself, or converted to `work`. Throws text::ConversionError.
inline std::string_view utf8Of(std::string_view text, std::string&) {
    return text;
}
inline std::string_view utf8Of(std::wstring_view wide, std::string& work) {
    work = text::toUtf8(wide);
    return work;
}

// ASCII classes, the same in both widths.
constexpr bool isDigit(int32_t c) {
    return c >= '0' && c <= '9';
}
constexpr bool isLetter(int32_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
constexpr int32_t upperAscii(int32_t c) {
    return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
}
constexpr int32_t lowerAscii(int32_t c) {
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

// Convert the letters of a value. Narrow values are ASCII.
inline void lower(Text<char>& text) {
    for (char& c : text) c = static_cast<char>(lowerAscii(c));
}
inline void lower(Text<wchar_t>& text) {
    KORV_StrToWLower(text.data);
}
inline void upper(Text<char>& text) {
    for (char& c : text) c = static_cast<char>(upperAscii(c));
}
inline void upper(Text<wchar_t>& text) {
    KORV_StrToWUpper(text.data);
}

}  // namespace provider
