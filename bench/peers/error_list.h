// Error records as a list of wide texts, which is compiled into its users' own code.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace bench::peers {

struct Error {
    uint32_t firstCode;
    uint32_t secondCode;
    std::vector<std::wstring> tokens;
};

class ErrorList {
  public:
    void open(uint32_t firstCode, uint32_t secondCode, std::size_t tokens) {
        errors_.push_back({firstCode, secondCode, {}});
        errors_.back().tokens.reserve(tokens);
    }

    void add(std::string_view text) { tokens().emplace_back(text.begin(), text.end()); }
    void add(std::wstring_view text) { tokens().emplace_back(text); }
    void add(int32_t number) { tokens().push_back(std::to_wstring(number)); }

  private:
    std::vector<std::wstring>& tokens() { return errors_.back().tokens; }

    std::list<Error> errors_;
};

}  // namespace bench::peers
