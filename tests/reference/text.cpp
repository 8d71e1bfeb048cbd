// Case conversion, comparison, and parsing of wide text, step by step.
#include "reference/text.h"

#include <algorithm>
#include <cctype>
#include <cwchar>
#include <cwctype>
#include <vector>

namespace reference {

template <>
char* upper(char* text) {
    for (char* at = text; *at; ++at) {
        *at = static_cast<char>(toupper(static_cast<signed char>(*at)));
    }
    return text;
}

template <>
wchar_t* upper(wchar_t* text) {
    for (wchar_t* at = text; *at; ++at) {
        *at = static_cast<wchar_t>(towupper(static_cast<std::wint_t>(*at)));
    }
    return text;
}

uint32_t lower(wchar_t c) {
    return towlower(static_cast<std::wint_t>(c));
}

int32_t Comparison::ended(wchar_t first, wchar_t second) const {
    if (first == 0 && second == 0) return 0;
    return static_cast<int32_t>(first == 0 ? 0u - pair[1] : pair[0]);
}

int32_t Comparison::compare(const wchar_t* first, const wchar_t* second) {
    while (*first != 0 && *second != 0) {
        pair[0] = lower(*first);
        pair[1] = lower(*second);
        if (pair[0] != pair[1]) return static_cast<int32_t>(pair[0] - pair[1]);
        ++first;
        ++second;
    }
    return ended(*first, *second);
}

int32_t Comparison::compareCounted(const wchar_t* first, const wchar_t* second, int32_t count) {
    while (*first != 0 && *second != 0 && count > 0) {
        pair[0] = lower(*first);
        pair[1] = lower(*second);
        if (pair[0] != pair[1]) return static_cast<int32_t>(pair[0] - pair[1]);
        ++first;
        ++second;
        --count;
    }
    if (count == 0) return 0;
    return ended(*first, *second);
}

int32_t nextElement(const wchar_t* source, wchar_t* output, uint32_t* length, wchar_t delimiter,
                    uint32_t /*ignored*/, uint32_t start) {
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
    if (!quoted) upper(output);
    return source[at] ? static_cast<int32_t>(at + 1) : -1;
}

Element elementOf(const std::wstring& list, wchar_t delimiter, std::size_t start) {
    constexpr wchar_t kUntouched = 0x7FFFFFF0;
    std::vector<wchar_t> output(list.size() + 2, kUntouched);
    uint32_t length = 0;
    const int32_t result = nextElement(list.c_str(), output.data(), &length, delimiter, 0,
                                       static_cast<uint32_t>(start));
    const auto end = std::find(output.begin(), output.end(), kUntouched);
    return {result, std::wstring(output.data(), length), result != -2 && result != -3,
            static_cast<std::size_t>(end - output.begin())};
}

int32_t trim(wchar_t* source, uint32_t* length, const wchar_t* delimiters, wchar_t* work,
             uint8_t mode) {
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

}  // namespace reference
