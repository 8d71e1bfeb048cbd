// The files that rules name, such as lookup files.
#pragma once

#include <string>

#include "rules.h"

namespace mask {

// The path of the file that an operand names. Throws MaskError when the rules may name files in
// certain folders only, and it is in none of them.
std::string findRuleFile(const Rules& rules, const Rule& rule, const RuleOperand& operand);

}  // namespace mask
