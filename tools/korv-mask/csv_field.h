// The text of CSV fields, with quotes taken off and put on.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include "row_parser.h"

namespace tool {

// These write to a std::string or a TextBuffer.

// Appends the text of the field, without its quotes.
template <class Target>
void appendUnquoted(const CsvField& field, Target& target) {
    const char* from = field.raw + field.quoted;
    const char* const end = field.raw + field.length - field.quoted;
    // The text up to and including the first quote of each pair.
    while (field.doubled) {
        const auto* quote =
            static_cast<const char*>(std::memchr(from, '"', static_cast<size_t>(end - from)));
        if (quote == nullptr) break;
        target.append(from, static_cast<size_t>(quote + 1 - from));
        from = quote + 2;
    }
    target.append(from, static_cast<size_t>(end - from));
}

// Returns the text of the field, without its quotes. It lies in the chunk, or in `work` when
// quotes in it were doubled.
std::string_view unquoted(const CsvField& field, std::string& work);

// Whether the text cannot be a field without quotes.
bool needsQuotes(std::string_view text, char delimiter);

// Appends a field with this text, in quotes when it must be or when `quote` is set.
template <class Target>
void appendField(Target& target, std::string_view text, bool quote, char delimiter) {
    if (!quote && !needsQuotes(text, delimiter)) {
        target.append(text);
        return;
    }
    target.push_back('"');
    for (;;) {
        const size_t at = text.find('"');
        target.append(text.substr(0, at));
        if (at == std::string_view::npos) break;
        target.append("\"\"", 2);
        text.remove_prefix(at + 1);
    }
    target.push_back('"');
}
// The most characters that appendField adds for texts of `length` characters in `count` fields.
inline size_t longestFields(size_t length, size_t count) {
    return 2 * (length + count);
}

}  // namespace tool
