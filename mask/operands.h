// The operands of a rule as records of a service definition.
#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "korv/korv.hpp"
#include "korv/provider.h"
#include "rules.h"

namespace mask {

// The operand of the rule that names a column of the same row, or nullptr.
const RuleOperand* relatedColumn(const Rule& rule, const PrvEntry& provider);

// What the provider says of an operand; nullptr when it does not know it.
const PrvOperand* describeOperand(const PrvEntry& provider, std::string_view key);

class OperandList {
  public:
    // Checks the rule's operands against what the provider takes and fills a record for each.
    // Throws MaskError with the operand's position.
    OperandList(const Rules& rules, const Rule& rule, const PrvEntry& provider);

    OprDefI* first() { return records_.empty() ? nullptr : records_.front().get(); }
    // The files that operands name.
    const std::vector<std::string>& files() const { return files_; }

  private:
    void add(const Rules& rules, const Rule& rule, const RuleOperand& operand,
             const PrvOperand& description);

    std::list<korv::OperandWithTexts> records_;  // addresses stay
    std::vector<std::string> files_;
};

}  // namespace mask
