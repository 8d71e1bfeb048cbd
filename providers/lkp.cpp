// LKP: replacement by a lookup file with lines of the form "value = replacement". Values are looked
// up without regard to case.
#include <array>
#include <memory>
#include <optional>

#include "providers/lookup_table.h"
#include "providers/provider_support.h"
#include "providers/shared_table.h"

namespace {

using provider::Error;
using provider::LookupTable;
using provider::Replacement;
using provider::Text;

constexpr std::array<PrvMethod, 0> kMethods = {};

enum OperandCode : uint16_t { kFile = 1, kDefault };
constexpr PrvOperand kOperands[] = {
    {"FILE", kFile, PRV_OPERAND_REQUIRED | PRV_OPERAND_PATH, OPR_VALUE_NARROW, 0, 0},
    {"DEFAULT", kDefault, 0, OPR_VALUE_WIDE, 0, 0},
};

constexpr uint32_t kNotFound = 1;
constexpr PrvErrorText kErrors[] = {
    {kNotFound, "the value is not in the lookup file"},
    {LookupTable::kBadLine, "a line does not have the form value = replacement"},
    {LookupTable::kTwice, "a value is in the lookup file twice"},
    KORV_COMMON_ERRORS,
};

// It has no sample rules: each rule needs a file.
class Lkp {
  public:
    explicit Lkp(const provider::Operands& operands)
        : table_(provider::sharedTable<LookupTable>(operands.wide(kFile))) {
        if (operands.has(kDefault)) default_.emplace(operands.wide(kDefault));
    }

    template <class Char>
    void mask(Text<Char>& text) const {
        provider::lower(text);
        const Replacement* replacement = table_->find(text.view());
        if (replacement == nullptr && default_) replacement = &*default_;
        if (replacement == nullptr) throw Error(kNotFound, {{KORV_TOKID_SRCLEN, text.length}});
        text.replaceFrom(0, replacement->of(text));
    }

  private:
    std::shared_ptr<const LookupTable> table_;
    std::optional<Replacement> default_;
};

}  // namespace

KORV_PROVIDER("LKP", Lkp, kMethods, kOperands, kErrors)
