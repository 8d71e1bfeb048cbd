// A plain reader of the engine's rules: one character at a time, one exception for all faults.
#pragma once

#include <wctype.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "reference/utf8.h"
#include "rules.h"

namespace fuzz {

using mask::ColumnMatch;
using mask::Rule;

struct Malformed {};

inline void require(bool condition) {
    if (!condition) throw Malformed();
}

inline std::wstring upperCased(std::wstring text) {
    for (wchar_t& c : text) c = static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
    return text;
}

inline std::wstring toWide(const std::string& text) {
    std::wstring wide;
    require(reference::decodeUtf8(text, wide));
    return wide;
}

inline std::string toUtf8(const std::wstring& wide) {
    std::string text;
    for (const wchar_t c : wide) reference::appendUtf8(text, static_cast<uint32_t>(c));
    return text;
}

inline std::string upperCased(const std::string& text) {
    return toUtf8(upperCased(toWide(text)));
}

inline bool isBlank(wchar_t c) {
    return c == L' ' || c == L'\t';
}

inline std::wstring withoutEnds(std::wstring text) {
    while (!text.empty() && isBlank(text.back())) text.pop_back();
    while (!text.empty() && isBlank(text.front())) text.erase(0, 1);
    return text;
}

// One line, character by character.
class Line {
  public:
    explicit Line(const std::string& bytes) : text_(toWide(bytes)) {
        require(text_.find(L'\0') == text_.npos);
    }

    Rule rule() {
        Rule rule;
        require(next(L'='));
        require(delimited_);
        rule.column = toUtf8(element_);
        rule.match = quoted_                                          ? ColumnMatch::literal
                     : element_[0] == L'@'                            ? ColumnMatch::number
                     : element_.find_first_of(L"*?") != element_.npos ? ColumnMatch::pattern
                                                                      : ColumnMatch::name;
        if (rule.match == ColumnMatch::number) {
            require(element_.size() > 1);
            for (const wchar_t c : element_.substr(1)) {
                require(c >= L'0' && c <= L'9');
                rule.number = rule.number * 10 + static_cast<uint32_t>(c - L'0');
                require(rule.number <= 1000000);
            }
            require(rule.number > 0);
        }
        require(next(L','));
        rule.action = upperCased(toUtf8(element_));
        require(rule.action != "?");
        while (next(L',')) addOperand(rule);
        require(!delimited_);
        if (rule.action == "KEEP" || rule.action == "DROP" || rule.action == "NULL") {
            require(rule.operands.empty());
        } else if (rule.action == "CONST") {
            require(rule.operands.size() == 1);
            takeConstant(rule);
        } else {
            takeOwnOperands(rule);
        }
        return rule;
    }

  private:
    void addOperand(Rule& rule) {
        const std::size_t separator = element_.find(L'=');
        const bool hasValue = separator != element_.npos;
        const std::string key = toUtf8(upperCased(withoutEnds(element_.substr(0, separator))));
        const std::string value =
            hasValue ? toUtf8(withoutEnds(element_.substr(separator + 1))) : "";
        require(!key.empty() && places_.emplace(key, rule.operands.size()).second);
        require(!hasValue || !value.empty() || (key == "VALUE" && quoted_));
        rule.operands.push_back({key, value, hasValue, start_});
    }

    void takeConstant(Rule& rule) {
        require(places_.count("VALUE") == 1 && rule.operands[places_["VALUE"]].hasValue);
        rule.constant = rule.operands[places_["VALUE"]].value;
        rule.operands[places_["VALUE"]].key.clear();
    }

    // Leaves those of the provider.
    void takeOwnOperands(Rule& rule) {
        const std::map<std::string, mask::OnError> policies = {{"EMPTY", mask::OnError::empty},
                                                               {"NULL", mask::OnError::null},
                                                               {"CONST", mask::OnError::constant},
                                                               {"DROP-ROW", mask::OnError::dropRow},
                                                               {"ABORT", mask::OnError::abort}};
        for (mask::RuleOperand& operand : rule.operands) {
            const std::string word = upperCased(operand.value);
            if (operand.key == "TYPE") {
                require(word == "WIDE" || word == "AUTO");
                rule.wide = word == "WIDE";
            } else if (operand.key == "UNCHANGED") {
                require(word == "ERROR");
                rule.unchangedFails = true;
            } else if (operand.key == "ON-ERROR") {
                require(policies.count(word) == 1);
                rule.onError = policies.at(word);
            } else {
                continue;
            }
            operand.key.clear();
        }
        if (rule.onError == mask::OnError::constant) takeConstant(rule);
        std::erase_if(rule.operands, [](const auto& operand) { return operand.key.empty(); });
        for (const auto& operand : rule.operands) {
            require(!operand.hasValue || !operand.value.empty());
        }
    }

    // Takes the next element; false where only blanks are left.
    bool next(wchar_t delimiter) {
        while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
        if (at_ >= text_.size()) return false;
        start_ = static_cast<uint32_t>(at_ + 1);
        element_.clear();
        quoted_ = text_[at_] == L'"';
        if (quoted_) ++at_;
        bool closed = false, escaped = false;
        for (; at_ < text_.size() && (text_[at_] != delimiter || (quoted_ && !closed)); ++at_) {
            const wchar_t c = text_[at_];
            require(!closed || isBlank(c));
            if (c == L'"' && !escaped) {
                require(quoted_);
                closed = true;
            } else if (c == L'\\' && !escaped) {
                escaped = true;
            } else if (!closed) {
                escaped = false;
                element_ += c;
            }
        }
        require(quoted_ == closed);
        while (!quoted_ && !element_.empty() && isBlank(element_.back())) element_.pop_back();
        require(!element_.empty());
        delimited_ = at_++ < text_.size();
        return true;
    }

    std::wstring text_;
    std::size_t at_ = 0;
    std::wstring element_;
    uint32_t start_ = 0;
    bool quoted_ = false, delimited_ = false;
    std::map<std::string, std::size_t> places_;  // of the operands, by key
};

// Whether rules name the same columns.
inline bool sameColumns(const Rule& a, const Rule& b) {
    if (a.match != b.match) return false;
    if (a.match == ColumnMatch::number) return a.number == b.number;
    if (a.match == ColumnMatch::literal) return a.column == b.column;
    return upperCased(a.column) == upperCased(b.column);
}

inline std::vector<Rule> readPlainly(const std::string& text) {
    std::vector<Rule> rules;
    std::istringstream lines(text.substr(text.starts_with("\xEF\xBB\xBF") ? 3 : 0));
    std::string bytes;
    for (uint32_t number = 1; std::getline(lines, bytes); ++number) {
        if (bytes.ends_with('\r')) bytes.pop_back();
        Line line(bytes);
        const std::size_t first = bytes.find_first_not_of(" \t");
        if (first == bytes.npos || bytes[first] == '#') continue;
        Rule rule = line.rule();
        rule.line = number;
        for (const Rule& other : rules) require(!sameColumns(rule, other));
        rules.push_back(rule);
    }
    require(!rules.empty());
    return rules;
}

}  // namespace fuzz
