// The shape of a text: what it looks like, without what it says.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tool {

// Characters of a shape, before "..." stands for the rest.
inline constexpr size_t kLongestShape = 40;

// The text with its characters replaced: A for a capital letter, a for any other letter, 9 for a
// digit. ASCII punctuation and blanks stay. All else, invalid UTF-8 included, becomes ?. The shape
// of a shape is that shape.
std::string shapeOf(std::string_view text);

// What texts of unknown origin are shown with: control characters, characters that change the
// direction or the place of others, and bytes that are not UTF-8 become `replacement`. A text of
// more than `most` characters is cut, and ends with "...".
std::string printable(std::string_view text, size_t most = std::string_view::npos,
                      std::string_view replacement = "?");

// Number of characters of UTF-8 text; an invalid byte counts as one.
size_t characterCount(std::string_view text);

// The upper-case form of UTF-8 text in every language, whatever the locale is.
std::string upperCase(std::string_view text);

}  // namespace tool
