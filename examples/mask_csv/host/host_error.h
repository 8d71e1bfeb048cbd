// What ends the program: a message that is complete for the user.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace host {

class HostError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;

    // "file:line:column: message"; lines and columns count from 1, columns in characters.
    HostError(const std::string& file, uint64_t line, uint64_t column, const std::string& message)
        : std::runtime_error(file + ":" + std::to_string(line) + ":" + std::to_string(column) +
                             ": " + message) {}
};

}  // namespace host
