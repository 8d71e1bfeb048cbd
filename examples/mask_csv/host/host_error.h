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

// A request that the library or a conversion has refused, with its status.
class RequestError : public std::runtime_error {
  public:
    explicit RequestError(int32_t code)
        : std::runtime_error("the request failed with status " + std::to_string(code)),
          status(code) {}

    int32_t status;
};

}  // namespace host
