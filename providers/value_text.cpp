// Conversions of values, and the mixing of keys.
#include "providers/value_text.h"

#include <utility>

#include "providers/provider_support.h"
#include "text/utf8_text.h"

namespace provider {

namespace {

template <class Step>
auto converted(Step step) {
    try {
        return step();
    } catch (const text::ConversionError&) {
        throw Error(kNotConverted, {});
    }
}

}  // namespace

std::wstring toWide(std::string_view utf8) {
    if (text::isPlainAscii(utf8.data(), utf8.size())) return {utf8.begin(), utf8.end()};
    return converted([utf8] { return text::toWide(utf8); });
}

std::string toUtf8(std::wstring_view wide) {
    return converted([wide] { return text::toUtf8(wide); });
}

Replacement::Replacement(std::wstring text) : narrow(toUtf8(text)), wide(std::move(text)) {}

Replacement::Replacement(std::string text) : narrow(std::move(text)), wide(toWide(narrow)) {}

uint32_t mix(uint32_t key, uint32_t position) {
    uint64_t x = (static_cast<uint64_t>(key) << 32 | position) + 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return static_cast<uint32_t>((x ^ (x >> 31)) >> 1) & 0x7FFFFFFF;
}

}  // namespace provider
