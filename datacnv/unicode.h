// Unicode characters, and their exact form in UTF-8.
#pragma once

#include <cstdint>
#include <type_traits>

namespace korv::datacnv {

// A wide unit as a number, however wchar_t is signed.
constexpr uint32_t codeOf(wchar_t unit) noexcept {
    return static_cast<std::make_unsigned_t<wchar_t>>(unit);
}

// Whether `c` is a character: surrogates and what lies above U+10FFFF are none.
constexpr bool isCharacter(uint32_t c) noexcept {
    return c <= 0x10FFFF && (c & 0xFFFFF800u) != 0xD800;
}

// Reads the character at `at`, which is before `end`. Returns where the next one begins, or null
// for bytes that are not UTF-8: overlong forms, surrogates and truncated sequences are refused.
inline const uint8_t* decodeUtf8(const uint8_t* at, const uint8_t* end, uint32_t& c) noexcept {
    constexpr uint32_t least[] = {0, 0x80, 0x800, 0x10000};
    const uint32_t lead = *at;
    if (lead < 0x80) {
        c = lead;
        return at + 1;
    }
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || end - at <= more) return nullptr;
    c = lead & (0x3Fu >> more);
    for (int i = 1; i <= more; ++i) {
        if ((at[i] & 0xC0) != 0x80) return nullptr;
        c = c << 6 | (at[i] & 0x3Fu);
    }
    return c >= least[more] && isCharacter(c) ? at + more + 1 : nullptr;
}

// Writes the bytes of the character `c` and returns their number, 1 to 4.
inline uint32_t encodeUtf8(uint32_t c, char (&bytes)[4]) noexcept {
    if (c < 0x80) {
        bytes[0] = static_cast<char>(c);
        return 1;
    }
    const int more = c >= 0x10000 ? 3 : c >= 0x800 ? 2 : 1;
    for (int i = more; i > 0; --i) {
        bytes[i] = static_cast<char>(0x80 | (c & 0x3F));
        c >>= 6;
    }
    bytes[0] = static_cast<char>(0xFF00 >> (more + 1) | c);
    return static_cast<uint32_t>(more) + 1;
}

}  // namespace korv::datacnv
