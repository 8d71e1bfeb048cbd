// The rules: which column is masked by which provider, with which operands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct RuleOperand {
    std::string key;    // upper case
    std::string value;  // empty for a key alone
    bool hasValue;
    uint64_t position;  // column of the operand in its line, from 1
};

struct Rule {
    uint64_t line;
    std::string column;  // upper case unless it was quoted; without quotes
    bool quotedColumn;
    std::string provider;
    uint64_t providerPosition;
    std::vector<RuleOperand> operands;
    bool wide = false;  // type=wide: values are handed on as wide text only
};

struct Rules {
    std::string file;
    std::vector<Rule> rules;

    [[noreturn]] void fail(const Rule& rule, uint64_t position, const std::string& message) const;
};

// Reads a rules file, or throws HostError with the position of everything that is wrong in it.
Rules readRules(const std::string& path);

// Whether the rule means the column of this name.
bool namesColumn(const Rule& rule, std::string_view headerName);

}  // namespace host
