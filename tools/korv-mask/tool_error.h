// The error that ends the program. Its message is complete: it begins with the name of the program,
// or with a position in a file.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tool {

class ToolError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;

    // "file:line:column: message"; lines and columns count from 1, columns in characters.
    ToolError(const std::string& file, uint64_t line, uint64_t column, const std::string& message)
        : std::runtime_error(file + ":" + std::to_string(line) + ":" + std::to_string(column) +
                             ": " + message) {}
};

}  // namespace tool
