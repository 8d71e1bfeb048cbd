// Texts that replace values, in both widths, and conversions between these.
#pragma once

#include <string>
#include <string_view>

#include "korv/provider.hpp"

namespace provider {

using namespace korv::provider;

// These throw Error for what has no form in the other width.
std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view wide);

// A text that replaces values or parts of them; the narrow one is UTF-8.
struct Replacement {
    explicit Replacement(std::wstring text);
    explicit Replacement(std::string text);
    std::string_view of(const Text<char>&) const { return narrow; }
    std::wstring_view of(const Text<wchar_t>&) const { return wide; }

    std::string narrow;
    std::wstring wide;
};

// A text as UTF-8: itself, or converted to `work`. Throws Error.
inline std::string_view utf8Of(std::string_view text, std::string&) {
    return text;
}
inline std::string_view utf8Of(std::wstring_view wide, std::string& work) {
    work = toUtf8(wide);
    return work;
}

}  // namespace provider
