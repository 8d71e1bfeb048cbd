// The state of the process that providers must leave alone, aspect by aspect, as text.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kit {

// An aspect by its name, such as "descriptors", as it is now.
std::string aspectNow(std::string_view name);

// All aspects as they are when it is made.
class ProcessState {
  public:
    ProcessState();
    // The aspects that have changed since, of these names; all when there are none.
    std::vector<std::string> changes(const std::vector<std::string_view>& names = {}) const;

  private:
    std::vector<std::pair<std::string, std::string>> aspects_;
};

std::string readFile(const char* path);

}  // namespace kit
