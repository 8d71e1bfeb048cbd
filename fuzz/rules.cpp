// The rules reader of the example against a plain one: which files it accepts, and what it reads.
#include "host/rules.h"

#include <sys/mman.h>
#include <unistd.h>
#include <wctype.h>

#include <algorithm>
#include <sstream>

#include "host/host_error.h"
#include "slow/utf8.h"
#include "support/expect.h"
#include "support/input.h"
#include "support/locales.h"

namespace {

struct Malformed {};

void require(bool condition) {
    if (!condition) throw Malformed();
}

std::wstring upperCased(std::wstring text) {
    for (wchar_t& c : text) c = static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
    return text;
}

std::string toUtf8(const std::wstring& wide) {
    std::string text;
    for (const wchar_t c : wide) slow::appendUtf8(text, static_cast<uint32_t>(c));
    return text;
}

std::wstring withoutEnds(const std::wstring& text) {
    const std::size_t first = text.find_first_not_of(L' ');
    return first == text.npos ? L"" : text.substr(first, text.find_last_not_of(L' ') + 1 - first);
}

// One line, character by character.
class Line {
  public:
    explicit Line(const std::string& bytes) {
        require(slow::decodeUtf8(bytes, text_) && text_.find(L'\0') == text_.npos);
        std::replace(text_.begin(), text_.end(), L'\t', L' ');
    }

    host::Rule rule() {
        host::Rule rule{};
        require(next(L'='));
        require(delimited_);
        rule.column = toUtf8(element_);
        rule.quotedColumn = quoted_;
        require(next(L','));
        rule.provider = toUtf8(element_);
        while (next(L',')) addOperand(rule);
        require(!delimited_);
        return rule;
    }

  private:
    // An operand of the rule, or the host's own.
    void addOperand(host::Rule& rule) {
        const std::size_t separator = element_.find(L'=');
        std::wstring key = upperCased(element_.substr(0, separator));
        std::erase(key, L' ');
        std::wstring value;
        if (separator != element_.npos) {
            value = withoutEnds(element_.substr(separator + 1));
            require(!value.empty());
        }
        require(!key.empty() && std::find(keys_.begin(), keys_.end(), key) == keys_.end());
        keys_.push_back(key);
        if (key == L"TYPE") {
            const std::wstring type = upperCased(value);
            require(type == L"WIDE" || type == L"AUTO");
            rule.wide = type == L"WIDE";
        } else {
            rule.operands.push_back({toUtf8(key), toUtf8(value), !value.empty(), 0});
        }
    }

    // Takes the next element; false where only spaces are left.
    bool next(wchar_t delimiter) {
        while (at_ < text_.size() && text_[at_] == L' ') ++at_;
        if (at_ >= text_.size()) return false;
        element_.clear();
        quoted_ = text_[at_] == L'"';
        if (quoted_) ++at_;
        bool closed = false, escaped = false;
        for (; at_ < text_.size() && (text_[at_] != delimiter || (quoted_ && !closed)); ++at_) {
            const wchar_t c = text_[at_];
            require(!closed || c == L' ');
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
        if (!quoted_)
            element_ = upperCased(element_.substr(0, element_.find_last_not_of(L' ') + 1));
        require(!element_.empty());
        delimited_ = at_++ < text_.size();
        return true;
    }

    std::wstring text_;
    std::size_t at_ = 0;
    std::wstring element_;
    bool quoted_ = false, delimited_ = false;
    std::vector<std::wstring> keys_;
};

// Whether rules name the same column.
bool sameColumn(const host::Rule& a, const host::Rule& b) {
    return a.column == b.column && a.quotedColumn == b.quotedColumn;
}

std::vector<host::Rule> readPlainly(const std::string& text) {
    std::vector<host::Rule> rules;
    std::istringstream lines(text.substr(text.starts_with("\xEF\xBB\xBF") ? 3 : 0));
    std::string line;
    for (uint64_t number = 1; std::getline(lines, line); ++number) {
        if (line.ends_with('\r')) line.pop_back();
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == line.npos || line[first] == '#') continue;
        host::Rule rule = Line(line).rule();
        rule.line = number;
        for (const host::Rule& other : rules) require(!sameColumn(rule, other));
        rules.push_back(rule);
    }
    require(!rules.empty());
    return rules;
}

bool same(const host::Rule& a, const host::Rule& b) {
    const auto sameOperand = [](const host::RuleOperand& x, const host::RuleOperand& y) {
        return x.key == y.key && x.value == y.value && x.hasValue == y.hasValue;
    };
    return a.line == b.line && sameColumn(a, b) && a.provider == b.provider && a.wide == b.wide &&
           std::equal(a.operands.begin(), a.operands.end(), b.operands.begin(), b.operands.end(),
                      sameOperand);
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
    std::vector<host::Rule> expected;
    bool accepted = true;
    try {
        expected = readPlainly(text);
    } catch (const Malformed&) {
        accepted = false;
    }
    try {
        const host::Rules rules = host::readRules(file.hold(text));
        FUZZ_EXPECT(accepted);
        FUZZ_EXPECT(std::equal(rules.rules.begin(), rules.rules.end(), expected.begin(),
                               expected.end(), same));
        for (const host::Rule& rule : rules.rules) {
            FUZZ_EXPECT(host::namesColumn(rule, rule.column));
        }
    } catch (const host::HostError& error) {
        FUZZ_EXPECT(!accepted);
        FUZZ_EXPECT(std::string(error.what()).starts_with("/proc/self/fd/"));
    }
    return 0;
}
