// The parser of the rules.
#include "rules.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cwctype>
#include <memory>
#include <span>
#include <system_error>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "korv/text.h"
#include "mask_error.h"
#include "rule_line.h"
#include "text/utf8_text.h"

namespace mask {

namespace {

constexpr size_t kMostBytes = size_t{16} << 20;
constexpr uint32_t kMostColumns = 1000000;
constexpr size_t kMostShown = 60;

// In the order of OnError.
constexpr const char* kOnErrorNames[] = {"empty", "null", "const", "drop-row", "abort"};

std::wstring capitals(std::wstring text) {
    KORV_StrToWUpper(text.data());
    return text;
}

void setColumn(const RuleLine& line, const RuleLine::Element& element, Rule& rule) {
    rule.column = text::toUtf8(element.text);
    if (element.quoted) {
        rule.match = ColumnMatch::literal;
    } else if (rule.column[0] == '@') {
        rule.match = ColumnMatch::number;
        rule.number = columnNumber(rule.column);
        if (rule.number == 0) {
            line.fail(element.position,
                      "column numbers are @1 to @" + std::to_string(kMostColumns) +
                          "; put a name that begins with @ between double quotes");
        }
    } else if (rule.column.find_first_of("*?") != std::string::npos) {
        rule.match = ColumnMatch::pattern;
    }
}

RuleOperand parseOperand(const RuleLine& line, const RuleLine::Element& element) {
    const size_t separator = element.text.find(L'=');
    const std::wstring key = capitals(withoutBlanks(element.text.substr(0, separator)));
    RuleOperand operand{text::toUtf8(key), "", separator != std::wstring::npos, element.position};
    if (key.empty()) line.fail(element.position, "an operand has no name");
    if (operand.hasValue) {
        operand.value = text::toUtf8(withoutBlanks(element.text.substr(separator + 1)));
        // The text of CONST may be empty, but only on purpose: "value=" between double quotes.
        if (operand.value.empty() && !(element.quoted && operand.key == "VALUE")) {
            line.fail(element.position, "operand " + shown(operand.key) + " has no value");
        }
    }
    return operand;
}

// The index of an operand's value in a list of words.
size_t choose(const RuleLine& line, const RuleOperand& operand,
              std::span<const char* const> words) {
    const std::wstring value = normalName(operand.value);
    std::string allowed;
    for (size_t i = 0; i < words.size(); ++i) {
        if (value == normalName(words[i])) return i;
        if (i > 0) allowed += i + 1 < words.size() ? ", " : " or ";
        allowed += words[i];
    }
    line.fail(operand.position, "operand " + operand.key + " must be " + allowed);
}

void takeConstant(const RuleLine& line, Rule& rule, uint32_t position, const std::string& what) {
    std::optional<RuleOperand> value = takeOperand(rule, "VALUE");
    if (!value || !value->hasValue) line.fail(position, what + " needs the operand value=TEXT");
    rule.constant = std::move(value->value);
}

// The operands that every provider's rule may have.
void takeOwnOperands(const RuleLine& line, Rule& rule) {
    static constexpr const char* kTypes[] = {"auto", "wide"};
    static constexpr const char* kUnchanged[] = {"error"};
    if (const auto type = takeOperand(rule, "TYPE")) rule.wide = choose(line, *type, kTypes) == 1;
    if (const auto unchanged = takeOperand(rule, "UNCHANGED")) {
        choose(line, *unchanged, kUnchanged);
        rule.unchangedFails = true;
    }
    if (const auto policy = takeOperand(rule, "ON-ERROR")) {
        rule.onError = static_cast<OnError>(choose(line, *policy, kOnErrorNames));
        if (rule.onError == OnError::constant) {
            takeConstant(line, rule, policy->position, "on-error=const");
        }
    }
    for (const RuleOperand& operand : rule.operands) {
        if (operand.hasValue && operand.value.empty()) {
            line.fail(operand.position, "operand " + shown(operand.key) + " has no value");
        }
    }
}

void checkAction(const RuleLine& line, Rule& rule) {
    if (rule.action == "?") {
        line.fail(rule.actionPosition, "decide what happens to column " + shown(rule.column) +
                                           ": replace ? by a provider, KEEP or DROP");
    }
    if (rule.action == "CONST") {
        takeConstant(line, rule, rule.actionPosition, rule.action);
    } else if (rule.action != "KEEP" && rule.action != "DROP" && rule.action != "NULL") {
        takeOwnOperands(line, rule);
        return;
    }
    if (!rule.operands.empty()) {
        line.fail(rule.operands[0].position,
                  rule.action + " does not take the operand " + shown(rule.operands[0].key));
    }
}

// What follows the column in a rule.
void parseAction(RuleLine& line, Rule& rule) {
    rule.line = line.number();
    RuleLine::Element element;
    if (!line.next(L',', "the action", element)) {
        line.fail(line.endPosition(), "the action is missing: write a provider, KEEP or DROP");
    }
    rule.action = text::toUtf8(capitals(element.text));
    rule.actionPosition = element.position;
    std::unordered_set<std::string> keys;
    while (line.next(L',', "the operand", element)) {
        RuleOperand operand = parseOperand(line, element);
        if (!keys.insert(operand.key).second) {
            line.fail(element.position, "operand " + shown(operand.key) + " is given twice");
        }
        rule.operands.push_back(std::move(operand));
    }
    if (element.delimited) line.fail(line.endPosition(), "an operand is missing after the comma");
    checkAction(line, rule);
}

Rule parseRule(RuleLine& line) {
    Rule rule;
    RuleLine::Element element;
    if (!line.next(L'=', "the column name", element) || !element.delimited) {
        line.fail(line.endPosition(), "a rule has the form COLUMN = ACTION, operand=value, ...");
    }
    setColumn(line, element, rule);
    parseAction(line, rule);
    return rule;
}

// What a rule names, equal for rules that name the same.
std::wstring columnKey(const Rule& rule) {
    const std::wstring kind = std::to_wstring(static_cast<int>(rule.match)) + L' ';
    if (rule.match == ColumnMatch::number) return kind + std::to_wstring(rule.number);
    if (rule.match == ColumnMatch::literal) return kind + text::toWide(rule.column);
    return kind + normalName(rule.column);
}

[[noreturn]] void failFile(const std::string& file, const std::string& message) {
    throw MaskError(KORV_MASK_BAD_RULES, file + ": " + message);
}

Rules emptyRules(std::string_view text, const std::string& file) {
    if (text.size() > kMostBytes) failFile(file, "the rules are larger than 16 MiB");
    Rules rules;
    rules.file = file;
    rules.folder = file.substr(0, file.rfind('/') + 1);
    return rules;
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

void Rules::fail(const Rule& rule, uint32_t position, const std::string& message) const {
    throw MaskError(KORV_MASK_BAD_RULES, file, rule.line, position, message);
}

Rules parseRules(std::string_view text, const std::string& file) {
    Rules rules = emptyRules(text, file);
    std::unordered_map<std::wstring, uint32_t> lines;  // of the rules, by what they name
    Faults faults;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    for (uint32_t number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view content = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (content.ends_with('\r')) content.remove_suffix(1);
        faults.collect([&] {
            RuleLine line(rules.file, number, content);
            if (!line.hasRule()) return;
            Rule rule = parseRule(line);
            const auto [first, isNew] = lines.try_emplace(columnKey(rule), number);
            if (!isNew) {
                line.fail(1, "column " + shown(rule.column) + " has a rule on line " +
                                 std::to_string(first->second) + " already");
            }
            rules.rules.push_back(std::move(rule));
        });
    }
    faults.raise();
    if (rules.rules.empty()) failFile(file, "there is no rule in it");
    return rules;
}

Rules parseOneRule(std::string_view text, const std::string& file, const std::string& column) {
    Rules rules = emptyRules(text, file);
    RuleLine line(rules.file, 1, text);
    const size_t end = text.find_first_of("\r\n");
    if (end != std::string_view::npos) {
        line.fail(static_cast<uint32_t>(text::toWide(text.substr(0, end)).size() + 1),
                  "a rule has one line");
    }
    Rule rule;
    rule.column = column;
    rule.match = ColumnMatch::number;
    rule.number = 1;
    parseAction(line, rule);
    rules.rules.push_back(std::move(rule));
    return rules;
}

Rules readRules(const std::string& file) {
    const std::unique_ptr<std::FILE, CloseFile> input(std::fopen(file.c_str(), "rbe"));
    if (!input) failFile(file, "cannot open: " + std::generic_category().message(errno));
    // One byte more than allowed shows that the file is too large.
    std::string text;
    char block[65536];
    while (text.size() <= kMostBytes) {
        const size_t count = std::fread(block, 1, sizeof block, input.get());
        if (count == 0) break;
        text.append(block, count);
    }
    if (std::ferror(input.get()) != 0) {
        failFile(file, "cannot read: " + std::generic_category().message(errno));
    }
    return parseRules(text, file);
}

std::optional<RuleOperand> takeOperand(Rule& rule, std::string_view key) {
    const auto found = std::find_if(rule.operands.begin(), rule.operands.end(),
                                    [&](const RuleOperand& operand) { return operand.key == key; });
    if (found == rule.operands.end()) return std::nullopt;
    RuleOperand operand = std::move(*found);
    rule.operands.erase(found);
    return operand;
}

const char* nameOf(OnError policy) {
    return kOnErrorNames[static_cast<size_t>(policy)];
}

uint32_t columnNumber(std::string_view name) {
    if (!name.starts_with('@')) return 0;
    const char* const end = name.data() + name.size();
    uint32_t number = 0;
    const auto [stop, error] = std::from_chars(name.data() + 1, end, number);
    return error == std::errc() && stop == end && number <= kMostColumns ? number : 0;
}

std::wstring normalName(std::string_view name) {
    return capitals(text::toWide(name));
}

std::string shown(std::string_view name) {
    std::wstring text = text::toWide(name);
    if (text.size() > kMostShown) text.replace(kMostShown, std::wstring::npos, L"...");
    for (wchar_t& c : text) {
        if (std::iswcntrl(static_cast<wint_t>(c)) != 0) c = L'?';
    }
    return text::toUtf8(text);
}

}  // namespace mask
