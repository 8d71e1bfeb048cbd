// LKP: replacement by a lookup file with lines of the form "value = replacement". The file is
// sorted once; values are looked up without regard to case.
#include <deque>

#include "providers/provider_support.h"
#include "providers/text_lines.h"
#include "text/utf8_text.h"

namespace {

using provider::Error;
using provider::Replacement;
using provider::Text;

enum OperandCode : uint16_t { kFile = 1, kDefault };
constexpr PrvOperand kOperands[] = {
    {"FILE", kFile, PRV_OPERAND_REQUIRED | PRV_OPERAND_PATH, OPR_VALUE_NARROW, 0, 0},
    {"DEFAULT", kDefault, 0, OPR_VALUE_WIDE, 0, 0},
};

enum ErrorCode : uint32_t { kNotFound = 1, kBadLine, kTwice };
constexpr PrvErrorText kErrors[] = {
    {kNotFound, "not in the lookup file"},
    {kBadLine, "a line that is not of the form value = replacement"},
    {kTwice, "a value that stands in the lookup file twice"},
    MASK_CSV_COMMON_ERRORS,
};

struct Pair {
    std::wstring value;
    Replacement replacement;
    int32_t line;
};

int32_t compare(const void* first, const void* second, void*) {
    return StringWCaseCompare((*static_cast<const Pair* const*>(first))->value.c_str(),
                              (*static_cast<const Pair* const*>(second))->value.c_str());
}

class Lkp {
  public:
    explicit Lkp(const provider::Operands& operands) {
        const std::wstring path = operands.wide(kFile);
        for (const provider::Line& line : provider::readLines(path)) add(path, line);
        KorvQSort(sorted_.data(), static_cast<uint32_t>(sorted_.size()), sizeof(void*), compare,
                  nullptr, 1);
        for (size_t i = 1; i < sorted_.size(); ++i) {
            if (compare(&sorted_[i - 1], &sorted_[i], nullptr) == 0) {
                throw Error(kTwice, {{KORV_TOKID_PATH, path},
                                     {KORV_TOKID_ROW_COUNT,
                                      std::max(sorted_[i - 1]->line, sorted_[i]->line)}});
            }
        }
        if (operands.has(kDefault)) default_.emplace_back(operands.wide(kDefault));
    }

    template <typename Char>
    void mask(Text<Char>& text) const {
        provider::WideBuffer buffer;
        const Replacement* replacement = find(provider::widen(text, buffer));
        if (replacement == nullptr) throw Error(kNotFound, {{KORV_TOKID_SRCLEN, text.length}});
        replacement->putInto(text);
    }

  private:
    void add(const std::wstring& path, const provider::Line& line) {
        std::string value(line.text.size() + 2, '\0');
        const bool split = GetKeyValue(line.text.c_str(), value.data(),
                                       static_cast<int32_t>(line.text.size()), nullptr, '=') == 0;
        std::string key = line.text.substr(0, line.text.find('='));
        key.erase(key.find_last_not_of(' ') + 1);
        key.erase(0, key.find_first_not_of(' '));
        if (!split || key.empty()) {
            throw Error(kBadLine, {{KORV_TOKID_PATH, path}, {KORV_TOKID_ROW_COUNT, line.number}});
        }
        pairs_.push_back(
            {text::toWide(key), Replacement(text::toWide(value.c_str())), line.number});
        sorted_.push_back(&pairs_.back());
    }

    const Replacement* find(const wchar_t* value) const {
        size_t low = 0;
        size_t high = sorted_.size();
        while (low < high) {
            const size_t middle = (low + high) / 2;
            const int32_t order = StringWCaseCompare(value, sorted_[middle]->value.c_str());
            if (order == 0) return &sorted_[middle]->replacement;
            if (order < 0) {
                high = middle;
            } else {
                low = middle + 1;
            }
        }
        return default_.empty() ? nullptr : &default_.front();
    }

    std::deque<Pair> pairs_;  // addresses stay
    std::vector<const Pair*> sorted_;
    std::vector<Replacement> default_;  // at most one
};

}  // namespace

MASK_CSV_PROVIDER("LKP", Lkp, kOperands, kErrors)
