// Which rule each column gets.
#pragma once

#include <string>
#include <vector>

#include "mask_error.h"
#include "rules.h"

namespace mask {

// The rule of each column, or nullptr for a column without a rule. `unnamed` columns have no names
// of their own. Faults are every rule that fits no column, every column with two rules, and, unless
// columns without a rule are kept, these columns. Of `flags` the ones about columns count.
std::vector<const Rule*> planColumns(const Rules& rules, const std::vector<std::string>& names,
                                     uint32_t flags, Faults& faults);

// The index of the column that an operand names (`BIRTH`, `"Birth"` or `@3`), or names.size() if
// no column or more than one has that name.
size_t findColumn(const std::vector<std::string>& names, const std::string& name);

}  // namespace mask
