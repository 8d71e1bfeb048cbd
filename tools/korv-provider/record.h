// Lines with which the helper reports to korv-provider: fields between tabs, with escapes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kit {

using Record = std::vector<std::string>;

// Without its newline. Tabs, newlines, other control characters and backslashes are escaped.
std::string toLine(const Record& record);
Record fromLine(std::string_view line);

// The lines of a text. What follows the last newline is no line.
std::vector<Record> recordsIn(std::string_view text);

}  // namespace kit
