// Case conversion, comparison and parsing, step by step.
#include <cctype>
#include <cwchar>
#include <cwctype>

#include "literal/literal.h"

namespace {

wchar_t pair[2];

}  // namespace

char* literalStrToUpper(char* text) {
    for (char* at = text; *at; ++at) {
        *at = static_cast<char>(toupper(static_cast<signed char>(*at)));
    }
    return text;
}

wchar_t* literalStrToWUpper(wchar_t* text) {
    for (wchar_t* at = text; *at; ++at) {
        *at = static_cast<wchar_t>(towupper(static_cast<std::wint_t>(*at)));
    }
    return text;
}

int32_t literalStringWCaseCompare(const wchar_t* first, const wchar_t* second) {
    while (*first && *second) {
        pair[0] = static_cast<wchar_t>(towlower(static_cast<std::wint_t>(*first)));
        pair[1] = static_cast<wchar_t>(towlower(static_cast<std::wint_t>(*second)));
        if (pair[0] != pair[1]) return pair[0] - pair[1];
        ++first;
        ++second;
    }
    if (!*first && !*second) return 0;
    if (!*first) return -pair[1];
    return pair[0];
}

int32_t literalGetNextElement(const wchar_t* source, wchar_t* output, uint32_t* length,
                              wchar_t delimiter, uint32_t /*ignored*/, uint32_t start) {
    *length = 0;
    uint32_t at = start;
    while (source[at] == L' ') ++at;
    if (!source[at]) return -2;
    const bool quoted = source[at] == L'"';
    if (quoted) output[(*length)++] = source[at++];
    bool inside = quoted;
    bool closed = false;
    bool escaped = false;
    while (source[at] && (inside || source[at] != delimiter)) {
        const wchar_t character = source[at];
        if (character == L'"' && !escaped) {
            if (!inside) return -3;
            output[(*length)++] = character;
            inside = false;
            closed = true;
        } else if (character == L'\\' && !escaped) {
            escaped = true;
        } else {
            escaped = false;
            if (!closed) output[(*length)++] = character;
        }
        ++at;
    }
    if (!closed) {
        while (*length > 0 && output[*length - 1] == L' ') --*length;
    }
    output[*length] = 0;
    if (!quoted) literalStrToWUpper(output);
    return source[at] ? static_cast<int32_t>(at + 1) : -1;
}

int32_t literalTrimSourceW(wchar_t* source, uint32_t* length, const wchar_t* delimiters,
                           wchar_t* work, uint8_t mode) {
    if (!source) return -1;
    *work = 0;
    wchar_t* state = nullptr;
    for (wchar_t* piece = std::wcstok(source, delimiters, &state); piece;
         piece = std::wcstok(nullptr, delimiters, &state)) {
        std::wcscat(work, piece);
    }
    if (mode == 1) {
        *length = static_cast<uint32_t>(std::wcslen(work));
        std::wcscpy(source, work);
    }
    return 0;
}
