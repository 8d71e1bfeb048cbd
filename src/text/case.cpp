// Case conversion in place, and of single ASCII letters.
#include <cctype>
#include <cwctype>

#include "korv/text.h"

namespace korv {
namespace {

// A byte reaches the system's function as a signed char; the low byte of the answer is kept.
template <int (*Convert)(int)>
char* convertText(char* text) noexcept {
    for (char* at = text; *at; ++at) {
        *at = static_cast<char>(Convert(static_cast<signed char>(*at)));
    }
    return text;
}

template <std::wint_t (*Convert)(std::wint_t)>
wchar_t* convertText(wchar_t* text) noexcept {
    for (wchar_t* at = text; *at; ++at) {
        *at = static_cast<wchar_t>(Convert(static_cast<std::wint_t>(*at)));
    }
    return text;
}

constexpr int32_t caseBit = 0x20;

}  // namespace
}  // namespace korv

char* KORV_StrToUpper(char* text) {
    return korv::convertText<toupper>(text);
}

char* KORV_StrToLower(char* text) {
    return korv::convertText<tolower>(text);
}

wchar_t* KORV_StrToWUpper(wchar_t* text) {
    return korv::convertText<towupper>(text);
}

wchar_t* KORV_StrToWLower(wchar_t* text) {
    return korv::convertText<towlower>(text);
}

int32_t toportwupper(int32_t code) {
    return code >= 'a' && code <= 'z' ? code & ~korv::caseBit : code;
}

int32_t toportwlower(int32_t code) {
    return code >= 'A' && code <= 'Z' ? code | korv::caseBit : code;
}
