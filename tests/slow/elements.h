// Elements of a delimited list, one character at a time.
#pragma once

#include <wctype.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace slow {

struct Element {
    int32_t result;
    std::wstring text;  // what the output holds, the terminator not counted
    bool terminated = false;
    std::size_t written = 0;  // characters of the output that may have been written
};

// Step by step, one character at a time.
inline Element nextElement(const std::wstring& list, wchar_t delimiter, std::size_t at) {
    while (at < list.size() && list[at] == L' ') ++at;
    if (at == list.size()) return {-2, L""};
    std::wstring text;
    bool quoted = false, inside = false, closed = false, escape = false;
    if (list[at] == L'"') {
        quoted = inside = true;
        text += list[at++];
    }
    bool delimited = false;
    for (; at < list.size(); ++at) {
        const wchar_t c = list[at];
        if (c == delimiter && !inside) {
            delimited = true;
            break;
        }
        if (c == L'"' && !escape) {
            if (!inside) return {-3, text, false, text.size()};
            text += c;
            inside = false;
            closed = true;
        } else if (c == L'\\' && !escape) {
            escape = true;
        } else {
            escape = false;
            if (!closed) text += c;
        }
    }
    const std::size_t written = text.size() + 1;
    if (!closed) {
        while (!text.empty() && text.back() == L' ') text.pop_back();
    }
    if (!quoted) {
        for (wchar_t& c : text) c = static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
    }
    return {delimited ? static_cast<int32_t>(at) + 1 : -1, text, true, written};
}

}  // namespace slow
