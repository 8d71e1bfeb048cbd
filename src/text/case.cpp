// Case conversion in place, and of single ASCII letters.
#include <cstring>
#include <cwchar>

#include "korv/text.h"
#include "text/letter_case.h"

namespace korv {
namespace {

// From this length on, asking whether blocks will do costs less than they save.
constexpr std::size_t longText = 64;

// A byte indexes the locale's table as a signed char; the low byte of the entry is kept.
template <class Case>
char* convertText(char* text) noexcept {
    const int32_t* table = Case::table();
    const std::size_t length = std::strlen(text);
    std::size_t i = 0;
    if (length >= longText && isAsciiTable<Case>(table, -tableOrigin)) {
        for (; length - i >= blockUnits<signed char>; i += blockUnits<signed char>) {
            const auto* block = reinterpret_cast<const signed char*>(text + i);
            storeBlock(text + i, convertAscii<Case, signed char>(loadBlock(block)));
        }
    }
    for (; i < length; ++i) {
        text[i] = static_cast<char>(table[static_cast<signed char>(text[i])]);
    }
    return text;
}

template <class Case>
void convertText(wchar_t* text, std::size_t length) noexcept {
    const WideCase<Case> letterCase;
    std::size_t i = 0;
    const auto convertUpTo = [&](std::size_t end) {
        for (; i < end; ++i) text[i] = letterCase.convert(text[i]);
    };
    while (length - i >= blockUnits<wchar_t>) {
        const Block<wchar_t> block = loadBlock(text + i);
        if (letterCase.isAscii(block)) {
            storeBlock(text + i, convertAscii<Case, wchar_t>(block));
            i += blockUnits<wchar_t>;
        } else {
            convertUpTo(i + blockUnits<wchar_t>);
        }
    }
    convertUpTo(length);
}

}  // namespace

void upperCase(wchar_t* text, std::size_t length) noexcept {
    convertText<Upper>(text, length);
}

}  // namespace korv

char* KORV_StrToUpper(char* text) {
    return korv::convertText<korv::Upper>(text);
}

char* KORV_StrToLower(char* text) {
    return korv::convertText<korv::Lower>(text);
}

wchar_t* KORV_StrToWUpper(wchar_t* text) {
    korv::convertText<korv::Upper>(text, std::wcslen(text));
    return text;
}

wchar_t* KORV_StrToWLower(wchar_t* text) {
    korv::convertText<korv::Lower>(text, std::wcslen(text));
    return text;
}

int32_t toportwupper(int32_t code) {
    return code >= 'a' && code <= 'z' ? code & ~korv::caseBit : code;
}

int32_t toportwlower(int32_t code) {
    return code >= 'A' && code <= 'Z' ? code | korv::caseBit : code;
}
