// The operands of a rule as records of a service definition.
#pragma once

#include <list>
#include <string>

#include "host/rules.h"
#include "korv/korv.h"
#include "provider.h"

namespace host {

class OperandList {
  public:
    // Checks the rule's operands against what the provider takes and fills a record for each.
    // Throws HostError with the operand's position.
    OperandList(const Rules& rules, const Rule& rule, const PrvEntry& provider);
    OperandList(const OperandList&) = delete;
    OperandList& operator=(const OperandList&) = delete;

    OprDefI* first() { return records_.empty() ? nullptr : &records_.front(); }

  private:
    // Owns the texts that CopyParamsStruct made.
    struct Record : OprDefI {
        Record() : OprDefI{} {}
        ~Record();
        Record(const Record&) = delete;
        Record& operator=(const Record&) = delete;
    };

    void add(const Rules& rules, const Rule& rule, const RuleOperand& operand,
             const PrvOperand& description);

    std::list<Record> records_;  // addresses stay
};

}  // namespace host
