// Case conversion in place, and of single ASCII letters.
#include <cstring>
#include <cwchar>

#include "korv/text.h"
#include "text/letter_case.h"

namespace korv {
namespace {

// So many characters are converted one by one before a text is measured: for a short one, that and
// working in blocks costs more than it saves.
constexpr std::size_t kShortText = 16;

// A byte indexes the locale's table as a signed char; the low byte of the entry is kept.
template <class Case>
void convertText(char* text) noexcept {
    const int32_t* table = currentTable<Case>();
    const auto convertOne = [table](char& c) {
        c = static_cast<char>(table[static_cast<signed char>(c)]);
    };
    for (const char* end = text + kShortText; text != end; ++text) {
        if (!*text) return;
        convertOne(*text);
    }
    char* const end = text + std::strlen(text);
    if (isAsciiTable<Case>(table, -kTableOrigin)) {
        constexpr std::size_t stride = kBlockUnits<signed char>;
        static_assert(kShortText >= stride);
        const auto convertBlock = [](char* at) {
            const auto* block = reinterpret_cast<const signed char*>(at);
            storeBlock(at, convertAscii<Case, signed char>(loadBlock(block)));
        };
        for (; end - text >= static_cast<std::ptrdiff_t>(stride); text += stride) {
            convertBlock(text);
        }
        // Converted characters stay what they are.
        if (text != end) convertBlock(end - stride);
    } else {
        for (; text != end; ++text) convertOne(*text);
    }
}

// Converts `length` characters.
template <class Case>
void convertCounted(wchar_t* text, std::size_t length, const WideCase<Case>& letterCase) noexcept {
    std::size_t i = 0;
    const auto convertUpTo = [&](std::size_t end) {
        for (; i < end; ++i) text[i] = letterCase.convert(text[i]);
    };
    // Four blocks for one question.
    constexpr std::size_t one = kBlockUnits<wchar_t>;
    const bool ascii = length >= 4 * one && letterCase.isAsciiLocale();
    while (length - i >= 4 * one) {
        Block<wchar_t> blocks[4];
#pragma GCC unroll 4
        for (std::size_t k = 0; k < 4; ++k) blocks[k] = loadBlock(text + i + k * one);
        if (ascii && isAscii(blocks[0] | blocks[1] | blocks[2] | blocks[3])) {
#pragma GCC unroll 4
            for (std::size_t k = 0; k < 4; ++k) {
                storeBlock(text + i + k * one, convertAscii<Case, int32_t>(blocks[k]));
            }
            i += 4 * one;
        } else {
            convertUpTo(i + 4 * one);
        }
    }
    convertUpTo(length);
}

template <class Case>
void convertText(wchar_t* text) noexcept {
    const WideCase<Case> letterCase;
    for (const wchar_t* end = text + kShortText; text != end; ++text) {
        if (!*text) return;
        *text = letterCase.convert(*text);
    }
    convertCounted(text, std::wcslen(text), letterCase);
}

}  // namespace

void upperCase(wchar_t* text, std::size_t length) noexcept {
    convertCounted(text, length, WideCase<Upper>());
}

}  // namespace korv

char* KORV_StrToUpper(char* text) {
    korv::convertText<korv::Upper>(text);
    return text;
}

char* KORV_StrToLower(char* text) {
    korv::convertText<korv::Lower>(text);
    return text;
}

wchar_t* KORV_StrToWUpper(wchar_t* text) {
    korv::convertText<korv::Upper>(text);
    return text;
}

wchar_t* KORV_StrToWLower(wchar_t* text) {
    korv::convertText<korv::Lower>(text);
    return text;
}

int32_t toportwupper(int32_t code) {
    return code >= 'a' && code <= 'z' ? code & ~korv::kCaseBit : code;
}

int32_t toportwlower(int32_t code) {
    return code >= 'A' && code <= 'Z' ? code | korv::kCaseBit : code;
}
