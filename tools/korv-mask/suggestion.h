// The option --suggest: what columns seem to hold, and rules to start from.
#pragma once

#include <array>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "header_words.h"
#include "providers/date_format.h"

namespace tool {

struct Suggestion {
    std::string rule;    // what follows "COLUMN = ", with ? for what only a person can know
    std::string reason;  // in words and counts, without any value
};

// What the values of a column have in common. Its memory does not depend on their number.
class ColumnGuess {
  public:
    // An empty name stands for a column without one.
    explicit ColumnGuess(std::string name) : name_(std::move(name)) {}

    // An empty value stands for NULL, too.
    void add(std::string_view value);

    const std::string& name() const { return name_; }
    Suggestion suggestion() const;

  private:
    void addDate(std::string_view value);
    void addLayout(std::string_view value, const std::string& shape);

    bool isNamed(const HeaderWords& words) const;
    bool areMost(uint64_t count) const;
    std::string share(uint64_t count) const;
    size_t bestDateFormat() const;

    Suggestion dates() const;
    bool haveIdentityLayout(uint64_t& sameLayout) const;
    Suggestion unknown() const;

    std::string name_;
    uint64_t values_ = 0;
    uint64_t empty_ = 0;
    uint64_t cards_ = 0;
    uint64_t eMails_ = 0;
    uint64_t telephones_ = 0;
    uint64_t internationalTelephones_ = 0;
    uint64_t numbers_ = 0;  // with enough digits for an identity number
    uint64_t words_ = 0;
    std::array<uint64_t, std::size(provider::kCommonDateFormats)> dates_ = {};
    std::unordered_map<std::string, uint64_t> layouts_;
    uint64_t sampled_ = 0;
    std::unordered_set<size_t> different_;  // hashes of the sampled values
};

// A rules file. A column whose name is not unique, or cannot be written, is named by its number.
std::string suggestRules(const std::vector<ColumnGuess>& columns, const std::string& inputName);

}  // namespace tool
