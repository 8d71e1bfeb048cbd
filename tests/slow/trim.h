// Texts without the characters of a set.
#pragma once

#include <cwchar>
#include <string>
#include <vector>

namespace slow {

// The system's tokeniser says how the source is cut.
inline std::vector<wchar_t> cut(std::vector<wchar_t> source, const wchar_t* delimiters,
                                std::wstring& collected) {
    wchar_t* state = nullptr;
    for (wchar_t* piece = std::wcstok(source.data(), delimiters, &state); piece;
         piece = std::wcstok(nullptr, delimiters, &state)) {
        collected += piece;
    }
    return source;
}

}  // namespace slow
