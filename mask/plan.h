// Which rule each column gets.
#pragma once

#include <string>
#include <vector>

#include "rules.h"

namespace mask {

// The rule of each column, or nullptr for a column that is kept because it is not listed. `unnamed`
// columns have no names of their own. Throws MaskError with every rule that fits no column, every
// column with two rules, and, unless `keepUnlisted`, every column without a rule.
std::vector<const Rule*> planColumns(const Rules& rules, const std::vector<std::string>& names,
                                     bool keepUnlisted, bool unnamed);

// The index of the column that an operand names (`BIRTH`, `"Birth"` or `@3`), or names.size() when
// there is none, or more than one.
size_t findColumn(const std::vector<std::string>& names, const std::string& name);

}  // namespace mask
