// The parser of the rules, built on the library's parsing helpers.
#include "host/rules.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "host/faults.h"
#include "host/host_error.h"
#include "korv/korv.h"
#include "text/utf8_text.h"

namespace host {

namespace {

// One line of the rules, taken apart element by element.
class LineParser {
  public:
    LineParser(const std::string& file, uint64_t line, const std::string& text)
        : file_(file), line_(line) {
        const size_t valid = text::validUtf8Length(text.data(), text.size());
        if (valid != text.size() || text.find('\0') != std::string::npos) {
            failAt(std::min(valid, text.find('\0')) + 1, "the rule is not UTF-8 text");
        }
        text_ = text::toWide(text);
        // The element parser skips spaces only.
        std::replace(text_.begin(), text_.end(), L'\t', L' ');
    }

    struct Element {
        std::wstring text;  // without quotes
        bool quoted;
        bool delimited;     // a delimiter follows, not the end of the line
        uint64_t position;  // from 1
    };

    // The next element; false when there is none.
    bool next(wchar_t delimiter, Element& element) {
        if (atEnd_) return false;
        const size_t first = std::min(text_.find_first_not_of(L' ', start_), text_.size());
        std::wstring output(text_.size() + 1, L'\0');
        uint32_t length = 0;
        const int32_t end = KORV_GetNextElement(text_.c_str(), output.data(), &length, delimiter, 0,
                                                static_cast<uint32_t>(start_));
        element.position = first + 1;
        if (end == -3) failAt(element.position, "a quote where none may stand");
        if (end == -2) {
            atEnd_ = true;
            return false;
        }
        output.resize(length);
        element.delimited = end != -1;
        element.quoted = text_[first] == L'"';
        const size_t limit = element.delimited ? static_cast<size_t>(end) - 1 : text_.size();
        if (element.quoted) {
            // The parser drops what stands between the closing quote and the delimiter.
            const size_t last = text_.find_last_not_of(L' ', limit - 1);
            size_t escapes = 0;
            while (last > first + escapes && text_[last - escapes - 1] == L'\\') ++escapes;
            if (last == first || text_[last] != L'"' || escapes % 2 != 0) {
                failAt(first + 1, "a quote that is not closed at the end of its element");
            }
            output = output.substr(1, output.size() - 2);
        }
        if (output.empty()) failAt(element.position, "an empty element");
        element.text = output;
        atEnd_ = !element.delimited;
        start_ = limit + 1;
        return true;
    }

    [[noreturn]] void failAt(uint64_t position, const std::string& message) const {
        throw HostError(file_, line_, position, message);
    }
    // Where an element was expected and the line has ended.
    uint64_t endPosition() const { return text_.size() + 1; }

  private:
    const std::string& file_;
    uint64_t line_;
    std::wstring text_;
    size_t start_ = 0;
    bool atEnd_ = false;
};

std::wstring withoutBlanks(std::wstring text) {
    std::wstring work(text.size() + 1, L'\0');
    uint32_t length = 0;
    TrimSourceW(text.data(), &length, L" ", work.data(), 1);
    text.resize(length);
    return text;
}

RuleOperand parseOperand(const LineParser& parser, const LineParser::Element& element) {
    RuleOperand operand{"", "", false, element.position};
    const size_t separator = element.text.find(L'=');
    std::wstring key = withoutBlanks(element.text.substr(0, separator));
    KORV_StrToWUpper(key.data());
    operand.key = text::toUtf8(key);
    if (operand.key.empty()) parser.failAt(element.position, "an operand without a name");
    if (separator == std::wstring::npos) return operand;

    const std::string narrow = text::toUtf8(element.text);
    std::string value(narrow.size() + 2, '\0');
    if (GetKeyValue(narrow.c_str(), value.data(), static_cast<int32_t>(narrow.size()), nullptr,
                    '=') != 0) {
        parser.failAt(element.position, "operand " + operand.key + " has no value");
    }
    value.resize(std::strlen(value.c_str()));
    operand.value = std::move(value);
    operand.hasValue = true;
    return operand;
}

Rule parseRule(const std::string& file, uint64_t line, const std::string& text) {
    LineParser parser(file, line, text);
    LineParser::Element element;
    if (!parser.next(L'=', element) || !element.delimited) {
        parser.failAt(parser.endPosition(),
                      "a rule has the form COLUMN = PROVIDER, operand=value, ...");
    }
    Rule rule{line, text::toUtf8(element.text), element.quoted, "", 0, {}};
    if (!parser.next(L',', element)) {
        parser.failAt(parser.endPosition(), "the provider is missing");
    }
    rule.provider = text::toUtf8(element.text);
    rule.providerPosition = element.position;
    while (parser.next(L',', element)) {
        RuleOperand operand = parseOperand(parser, element);
        for (const RuleOperand& other : rule.operands) {
            if (other.key == operand.key) {
                parser.failAt(element.position, "operand " + operand.key + " stands twice");
            }
        }
        rule.operands.push_back(std::move(operand));
    }
    if (element.delimited) parser.failAt(parser.endPosition(), "an operand is missing");

    // The type is the host's own operand; providers do not see it.
    for (auto operand = rule.operands.begin(); operand != rule.operands.end(); ++operand) {
        if (operand->key != "TYPE") continue;
        KORV_StrToUpper(operand->value.data());
        rule.wide = operand->value == "WIDE";
        if (!rule.wide && operand->value != "AUTO") {
            parser.failAt(operand->position, "the type is auto or wide");
        }
        rule.operands.erase(operand);
        break;
    }
    return rule;
}

void addRule(Rules& rules, Rule rule) {
    for (const Rule& other : rules.rules) {
        if (other.column == rule.column && other.quotedColumn == rule.quotedColumn) {
            rules.fail(rule, 1,
                       "column " + rule.column + " has a rule on line " +
                           std::to_string(other.line) + " already");
        }
    }
    rules.rules.push_back(std::move(rule));
}

}  // namespace

void Rules::fail(const Rule& rule, uint64_t position, const std::string& message) const {
    throw HostError(file, rule.line, position, message);
}

Rules readRules(const std::string& path) {
    std::ifstream input(path, std::ios::binary);
    if (!input) throw HostError(path + ": cannot be read");
    Rules rules{path, {}};
    std::string line;
    uint64_t number = 0;
    Faults faults;
    while (std::getline(input, line)) {
        ++number;
        if (number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#') continue;
        faults.collect([&] { addRule(rules, parseRule(path, number, line)); });
    }
    if (input.bad()) throw HostError(path + ": cannot be read");
    faults.raise();
    if (rules.rules.empty()) throw HostError(path + ": no rule in it");
    return rules;
}

bool namesColumn(const Rule& rule, std::string_view headerName) {
    if (rule.quotedColumn) return rule.column == headerName;
    std::wstring name = text::toWide(headerName);
    NormalizeColName(name.data(), static_cast<int32_t>(name.size()));
    return rule.column == text::toUtf8(name);
}

}  // namespace host
