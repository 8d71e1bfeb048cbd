// JSON texts.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kit {

// A string of JSON. What is no UTF-8 text is replaced.
std::string jsonString(std::string_view text);
std::string jsonStrings(const std::vector<std::string>& texts);

// An object of members whose values are JSON already.
std::string jsonObject(const std::vector<std::pair<std::string, std::string>>& members);
std::string jsonArray(const std::vector<std::string>& values);

// A line for a terminal: control characters and what is no UTF-8 text are replaced.
std::string printable(std::string_view text);

}  // namespace kit
