// Classification of characters, under a locale of its own so that the process's does not matter.
#include "shape.h"

#include <clocale>
#include <cwctype>

#include "text/utf8_text.h"

namespace tool {

namespace {

struct Character {
    char32_t code;  // kInvalid for a byte that is not UTF-8
    size_t bytes;
};

constexpr char32_t kInvalid = WEOF;  // it belongs to no class

// The character at `at`, which is before the end.
Character characterAt(std::string_view text, size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80) return {lead, 1};
    const size_t bytes = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const std::string_view sequence = text.substr(at, bytes);
    if (sequence.size() < bytes ||
        text::validUtf8Length(sequence.data(), sequence.size()) != bytes) {
        return {kInvalid, 1};
    }
    char32_t code = lead & (0x7Fu >> bytes);
    for (const char next : sequence.substr(1)) code = code << 6 | (next & 0x3F);
    return {code, bytes};
}

// Calls action(character, its bytes) until it returns false.
template <class Action>
void forEachCharacter(std::string_view text, Action action) {
    for (size_t at = 0; at < text.size();) {
        const Character character = characterAt(text, at);
        if (!action(character.code, text.substr(at, character.bytes))) return;
        at += character.bytes;
    }
}

void appendUtf8(std::string& text, char32_t code) {
    const auto byte = [&](char32_t bits) { text += static_cast<char>(bits); };
    const auto tail = [&](int shift) { byte(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) return byte(code);
    if (code < 0x800) {
        byte(0xC0 | code >> 6);
    } else if (code < 0x10000) {
        byte(0xE0 | code >> 12);
        tail(6);
    } else {
        byte(0xF0 | code >> 18);
        tail(12);
        tail(6);
    }
    tail(0);
}

// Null where the system lacks it; then letters beyond ASCII are not told apart.
locale_t utf8Locale() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

char classOf(char32_t code) {
    if (code >= '0' && code <= '9') return '9';
    if (code >= 'A' && code <= 'Z') return 'A';
    if (code >= 'a' && code <= 'z') return 'a';
    if (code >= 0x20 && code < 0x7F) return static_cast<char>(code);
    const locale_t locale = utf8Locale();
    if (locale == nullptr) return '?';
    const auto wide = static_cast<wint_t>(code);
    if (iswupper_l(wide, locale) != 0) return 'A';
    return iswalpha_l(wide, locale) != 0 ? 'a' : '?';
}

bool isSafe(char32_t code) {
    const auto within = [&](char32_t first, char32_t last) {
        return code >= first && code <= last;
    };
    return code != kInvalid && !within(0, 0x1F) && !within(0x7F, 0x9F) && code != 0xAD &&
           code != 0x61C &&                                       // soft hyphen, Arabic letter mark
           !within(0x200B, 0x200F) && !within(0x2028, 0x202E) &&  // zero width, lines, directions
           !within(0x2060, 0x206F) && code != 0xFEFF && !within(0xFFF9, 0xFFFB) &&
           !within(0xE0000, 0xE0FFF);  // tags
}

constexpr std::string_view kCut = "...";

}  // namespace

std::string shapeOf(std::string_view text) {
    std::string shape;
    forEachCharacter(text, [&](char32_t code, std::string_view) {
        if (shape.size() == kLongestShape) {
            shape += kCut;
            return false;
        }
        shape += classOf(code);
        return true;
    });
    return shape;
}

std::string printable(std::string_view text, size_t most, std::string_view replacement) {
    std::string result;
    size_t count = 0;
    forEachCharacter(text, [&](char32_t code, std::string_view bytes) {
        if (count++ == most) {
            result += kCut;
            return false;
        }
        result += isSafe(code) ? bytes : replacement;
        return true;
    });
    return result;
}

std::string upperCase(std::string_view text) {
    const locale_t locale = utf8Locale();
    std::string result;
    forEachCharacter(text, [&](char32_t code, std::string_view bytes) {
        if (code == kInvalid || locale == nullptr) {
            result += bytes;
        } else {
            appendUtf8(result, towupper_l(static_cast<wint_t>(code), locale));
        }
        return true;
    });
    return result;
}

size_t characterCount(std::string_view text) {
    size_t count = 0;
    forEachCharacter(text, [&](char32_t, std::string_view) {
        ++count;
        return true;
    });
    return count;
}

}  // namespace tool
