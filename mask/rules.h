// The rules: which column is masked by which provider, with which operands.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mask {

struct RuleOperand {
    std::string key;    // in capitals
    std::string value;  // as written, without blanks at its ends; empty for a key alone
    bool hasValue;
    uint32_t position;  // character in its line, from 1
};

// How a rule names its columns.
enum class ColumnMatch {
    name,     // ADDRESS: without regard to case
    literal,  // "Address": as it is written
    number,   // @3: the third column
    pattern   // ADDR*: * stands for any characters, ? for one; without regard to case
};

enum class OnError { empty, null, constant, dropRow, abort };

struct Rule {
    uint32_t line = 0;
    std::string column;  // as written, without quotes
    ColumnMatch match = ColumnMatch::name;
    uint32_t number = 0;  // of ColumnMatch::number, from 1
    std::string action;   // KEEP, DROP, NULL, CONST or a provider, in capitals
    uint32_t actionPosition = 0;
    std::vector<RuleOperand> operands;  // the provider's

    // Operands of every rule.
    bool wide = false;  // type=wide: values are handed on as wide text only
    OnError onError = OnError::empty;
    bool unchangedFails = false;
    std::string constant;  // value= of CONST, or of on-error=const; may be empty
};

struct Rules {
    std::string file;    // in messages
    std::string folder;  // where relative file names begin: empty, or with a slash at its end
    std::vector<Rule> rules;
    bool confinesFiles = false;  // files that rules name must be in fileFolders
    std::vector<std::string> fileFolders;

    // Throws MaskError with the status KORV_MASK_BAD_RULES.
    [[noreturn]] void fail(const Rule& rule, uint32_t position, const std::string& message) const;
};

// Parses the text of a rules file. Letters are put in capitals in the thread's locale, which must
// be C.UTF-8 so that the same rules mean the same everywhere. `file` is its path: the name in
// messages, and where relative file names begin. Throws MaskError with everything that is wrong in
// it.
Rules parseRules(std::string_view text, const std::string& file);

// Parses one rule without its column, `CCN, secret=crm`. It becomes the rule of the only column,
// which has this name.
Rules parseOneRule(std::string_view text, const std::string& file,
                   const std::string& column = "@1");

// Reads a rules file, or throws MaskError.
Rules readRules(const std::string& file);

const char* nameOf(OnError policy);

// Takes an operand out of the rule's.
std::optional<RuleOperand> takeOperand(Rule& rule, std::string_view key);

// The number of a column that is written as @3; 0 for everything else.
uint32_t columnNumber(std::string_view name);

// A column name in the form in which names are compared without regard to case.
std::wstring normalName(std::string_view name);

// A name as messages show it: long ones are cut, and control characters are replaced.
std::string shown(std::string_view name);

}  // namespace mask
