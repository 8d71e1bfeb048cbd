// The value of a key, separator, value text, one character at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace reference {

struct Value {
    int32_t result;
    std::string text;
    uint32_t copied = 0;
};

inline Value keyValue(const std::string& source, int32_t maxCount, char separator) {
    std::size_t at = 0;
    while (at < source.size() && source[at] != separator) ++at;
    if (separator == 0 || at == source.size()) return {-1, ""};
    ++at;
    while (at < source.size() && source[at] == ' ') ++at;
    if (at == source.size()) return {-1, ""};
    std::string text;
    int32_t count = 0;
    do {
        text += source[at++];
        ++count;
    } while (at < source.size() && count < maxCount);
    const auto copied = static_cast<uint32_t>(text.size());
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return {0, text, copied};
}

}  // namespace reference
