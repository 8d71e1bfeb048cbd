// The engine's rules against a plain reader and a plain assignment to columns: which texts are
// accepted, what is read, and which rule each column gets.
#include "rules.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "mask_error.h"
#include "plan.h"
#include "support/expect.h"
#include "support/input.h"
#include "support/locales.h"
#include "support/plain_plan.h"
#include "support/plain_rules.h"

namespace {

using fuzz::Malformed;
using mask::ColumnMatch;
using mask::Rule;

bool same(const Rule& a, const Rule& b) {
    const auto sameOperand = [](const mask::RuleOperand& x, const mask::RuleOperand& y) {
        return x.key == y.key && x.value == y.value && x.hasValue == y.hasValue &&
               x.position == y.position;
    };
    if (a.action != "CONST" && !std::equal(a.operands.begin(), a.operands.end(), b.operands.begin(),
                                           b.operands.end(), sameOperand)) {
        return false;
    }
    return a.line == b.line && a.column == b.column && fuzz::sameColumns(a, b) &&
           a.action == b.action && a.wide == b.wide && a.onError == b.onError &&
           a.unchangedFails == b.unchangedFails && a.constant == b.constant;
}

void checkPlan(const mask::Rules& rules, const std::vector<std::string>& columns, bool keepUnlisted,
               bool unnamed) {
    const uint32_t flags = static_cast<uint32_t>(keepUnlisted) * KORV_MASK_KEEP_UNLISTED +
                           static_cast<uint32_t>(unnamed) * KORV_MASK_UNNAMED_COLUMNS;
    std::vector<const Rule*> expected;
    bool accepted = true;
    try {
        expected = fuzz::planPlainly(rules.rules, columns, keepUnlisted, unnamed);
    } catch (const Malformed&) {
        accepted = false;
    }
    try {
        mask::Faults faults;
        const auto plan = mask::planColumns(rules, columns, flags, faults);
        faults.raise();
        FUZZ_EXPECT(plan == expected);
        FUZZ_EXPECT(accepted);
    } catch (const mask::MaskError& error) {
        FUZZ_EXPECT(!accepted);
        FUZZ_EXPECT(error.faults[0].message.starts_with(rules.file));
    }
}

void checkOperand(const std::vector<std::string>& columns, const std::string& operand) {
    Rule rule;
    rule.column = operand;
    rule.number = mask::columnNumber(operand);
    if (rule.number > 0) {
        rule.match = ColumnMatch::number;
    } else if (operand.size() > 1 && operand.starts_with('"') && operand.ends_with('"')) {
        rule.match = ColumnMatch::literal;
        rule.column = operand.substr(1, operand.size() - 2);
    }
    std::size_t found = columns.size();
    std::size_t count = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!fuzz::names(rule, columns[i], i, false)) continue;
        found = i;
        ++count;
    }
    FUZZ_EXPECT(mask::findColumn(columns, operand) == (count == 1 ? found : columns.size()));
}

// A header of the names in the rules, with and without one of them twice.
void checkColumns(const mask::Rules& rules) {
    std::vector<std::string> columns;
    for (const Rule& rule : rules.rules) columns.push_back(rule.column);
    for (int repeated = 0; repeated < 2; ++repeated) {
        for (const bool keepUnlisted : {false, true}) {
            checkPlan(rules, columns, keepUnlisted, false);
            checkPlan(rules, columns, keepUnlisted, true);
        }
        for (const Rule& rule : rules.rules) {
            checkOperand(columns, rule.column);
            checkOperand(columns, '"' + rule.column + '"');
        }
        columns.push_back(fuzz::upperCased(columns[columns.size() / 2]));
    }
}

// A file in memory with a name.
class RulesFile {
  public:
    RulesFile() : descriptor_(memfd_create("rules", MFD_CLOEXEC)) { FUZZ_EXPECT(descriptor_ >= 0); }

    const std::string& hold(const std::string& text) {
        FUZZ_EXPECT(ftruncate(descriptor_, 0) == 0);
        const auto size = static_cast<ssize_t>(text.size());
        FUZZ_EXPECT(pwrite(descriptor_, text.data(), text.size(), 0) == size);
        return name_;
    }

  private:
    int descriptor_;
    std::string name_ = "/proc/self/fd/" + std::to_string(descriptor_);
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static RulesFile file;
    fuzz::Input input(data, size);
    fuzz::chooseLocale(input);
    std::string text;
    while (!input.empty()) text += static_cast<char>(input.byte());
    std::vector<Rule> expected;
    bool accepted = true;
    try {
        expected = fuzz::readPlainly(text);
    } catch (const Malformed&) {
        accepted = false;
    }
    try {
        const mask::Rules rules = mask::readRules(file.hold(text));
        FUZZ_EXPECT(accepted);
        FUZZ_EXPECT(std::equal(rules.rules.begin(), rules.rules.end(), expected.begin(),
                               expected.end(), same));
        checkColumns(rules);
    } catch (const mask::MaskError& error) {
        FUZZ_EXPECT(!accepted);
        for (const mask::Fault& fault : error.faults) {
            FUZZ_EXPECT(fault.message.starts_with("/proc/self/fd/"));
        }
    }
    return 0;
}
