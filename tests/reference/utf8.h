// UTF-8: what is well-formed, by table, and texts one character at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace reference {

struct Utf8Row {
    int first, last;  // of the lead byte
    int length;
    int secondFirst, secondLast;
};

// The well-formed byte sequences, as the Unicode standard tabulates them.
inline constexpr Utf8Row kWellFormed[] = {
    {0x00, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

// The character that the bytes are, or -1 when they are not exactly one.
inline int32_t character(const uint8_t* bytes, int length) {
    for (const Utf8Row& row : kWellFormed) {
        if (bytes[0] < row.first || bytes[0] > row.last) continue;
        if (length != row.length) return -1;
        if (length == 1) return bytes[0];
        if (bytes[1] < row.secondFirst || bytes[1] > row.secondLast) return -1;
        int32_t c = length == 2 ? bytes[0] % 32 : length == 3 ? bytes[0] % 16 : bytes[0] % 8;
        for (int i = 1; i < length; ++i) {
            if (bytes[i] / 64 != 2) return -1;
            c = c * 64 + bytes[i] % 64;
        }
        return c;
    }
    return -1;
}

// The code points of UTF-8; false where it is malformed.
inline bool decodeUtf8(const std::string& bytes, std::wstring& text) {
    for (std::size_t at = 0; at < bytes.size();) {
        const auto* from = reinterpret_cast<const uint8_t*>(bytes.data()) + at;
        int length = 1;
        int32_t c = character(from, length);
        while (c < 0 && length < 4 && at + static_cast<std::size_t>(length) < bytes.size()) {
            c = character(from, ++length);
        }
        if (c < 0) return false;
        text += static_cast<wchar_t>(c);
        at += static_cast<std::size_t>(length);
    }
    return true;
}

inline void appendUtf8(std::string& text, uint32_t c) {
    const auto put = [&](uint32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
    }
    if (c >= 0x800) put(0x80 | (c >> 6 & 0x3F));
    if (c >= 0x80) put(0x80 | (c & 0x3F));
}

}  // namespace reference
