// EML: e-mail addresses. The user part is masked after a prefix that stays, the domain stays or is
// replaced, and the case of letters is normalised.
#include <optional>

#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::Replacement;
using provider::Text;

enum OperandCode : uint16_t { kKey = 1, kPrefix, kDomain, kCase };
constexpr PrvOperand kOperands[] = {
    {"KEY", kKey, PRV_OPERAND_REQUIRED, OPR_VALUE_INTEGER, 0, 999999999},
    {"PREFIX", kPrefix, 0, OPR_VALUE_INTEGER, 0, 64},
    {"DOMAIN", kDomain, 0, OPR_VALUE_NARROW, 0, 0},
    {"CASE", kCase, 0, OPR_VALUE_NARROW, 0, 0},
};

enum ErrorCode : uint32_t { kNoAt = 1, kTwoAts, kNoUser, kNoDomain, kShortUser, kBadOperand };
constexpr PrvErrorText kErrors[] = {
    {kNoAt, "the address has no @"},
    {kTwoAts, "the address has more than one @"},
    {kNoUser, "nothing before the @"},
    {kNoDomain, "nothing after the @"},
    {kShortUser, "the user part has nothing to mask after the prefix that is kept"},
    {kBadOperand, "the operand cannot have this value"},
    KORV_COMMON_ERRORS,
};

enum class Case { lower, upper, keep };

Case caseOf(const provider::Operands& operands) {
    if (!operands.has(kCase)) return Case::lower;
    const std::wstring name = operands.wide(kCase);
    if (provider::isWord(name, L"LOWER")) return Case::lower;
    if (provider::isWord(name, L"UPPER")) return Case::upper;
    if (provider::isWord(name, L"KEEP")) return Case::keep;
    throw Error(kBadOperand, {{KORV_TOKID_PARMKEY, L"CASE"}, {KORV_TOKID_PARMVALUE, name}});
}

// How the characters of one position change.
struct Step {
    Step(uint32_t key, int32_t position)
        : any(provider::mix(key, static_cast<uint32_t>(position))),
          digit(static_cast<uint8_t>(1 + any % 9)),
          letter(static_cast<uint8_t>(1 + any % 25)) {}

    uint32_t any;
    uint8_t digit;
    uint8_t letter;
};

class Eml {
  public:
    static constexpr const char* kSampleRules[] = {
        "EML, key=4711",
        "EML, key=4711, prefix=1, domain=masked.example",
        "EML, key=5, case=keep",
    };

    explicit Eml(const provider::Operands& operands)
        : key_(static_cast<uint32_t>(operands.number(kKey, 0))),
          prefix_(operands.number(kPrefix, 0)),
          case_(caseOf(operands)) {
        if (operands.has(kDomain)) domain_.emplace(domainOf(operands));
        for (int32_t i = 0; i < kKnownSteps; ++i) {
            const Step step(key_, i);
            for (int32_t c = 0; c < 128; ++c) ascii_[i][c] = other(static_cast<char>(c), step);
        }
    }

    template <typename Char>
    void mask(Text<Char>& text) const {
        const int32_t user = userLength(text);
        if (user <= prefix_) {
            throw Error(kShortUser,
                        {{KORV_TOKID_USERPRFX_LEN, prefix_}, {KORV_TOKID_SRCLEN, user}});
        }
        // This comes first, so that an address has the same result in any case.
        if (case_ == Case::lower) provider::lower(text);
        if (case_ == Case::upper) provider::upper(text);
        for (int32_t i = prefix_; i < user; ++i) {
            const auto c = static_cast<uint32_t>(text.data[i]);
            text.data[i] = i < kKnownSteps && c < 128 ? static_cast<Char>(ascii_[i][c])
                                                      : other(text.data[i], Step(key_, i));
        }
        if (domain_) text.replaceFrom(user + 1, domain_->of(text));
    }

    // Another domain may make the result longer than a value may be.
    uint32_t promises() const {
        return domain_ ? 0 : PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT;
    }

  private:
    static constexpr int32_t kKnownSteps = 64;

    std::wstring domainOf(const provider::Operands& operands) const {
        std::wstring domain = operands.wide(kDomain);
        for (const wchar_t c : domain) {
            if (c <= ' ' || c > '~' || c == '@') {
                throw Error(kBadOperand,
                            {{KORV_TOKID_PARMKEY, L"DOMAIN"}, {KORV_TOKID_PARMVALUE, domain}});
            }
        }
        if (case_ == Case::lower) KORV_StrToWLower(domain.data());
        if (case_ == Case::upper) KORV_StrToWUpper(domain.data());
        return domain;
    }

    template <typename Char>
    static int32_t userLength(const Text<Char>& text) {
        const std::basic_string_view<Char> address = text.view();
        const size_t at = address.find('@');
        if (at == address.npos) throw Error(kNoAt, {{KORV_TOKID_SRCLEN, text.length}});
        const size_t another = address.find('@', at + 1);
        if (another != address.npos) {
            throw Error(kTwoAts, {{KORV_TOKID_CHAR_POS, static_cast<int32_t>(another) + 1}});
        }
        if (at == 0) throw Error(kNoUser, {{KORV_TOKID_USERPRFX_LEN, 0}});
        if (at + 1 == address.size()) throw Error(kNoDomain, {{KORV_TOKID_DOMAIN_LEN, 0}});
        return static_cast<int32_t>(at);
    }

    // Letters become letters and digits digits; any other ASCII character, such as a dot, stays.
    template <typename Char>
    Char other(Char c, const Step& step) const {
        if (provider::isLetter(c)) return rotate<Char>(c >= 'a' ? 'a' : 'A', 26, c, step.letter);
        if (provider::isDigit(c)) return rotate<Char>('0', 10, c, step.digit);
        if (static_cast<int32_t>(c) < 0x80) return c;
        const Char first = case_ == Case::upper ? 'A' : 'a';
        return static_cast<Char>(first + (static_cast<uint32_t>(c) + step.any) % 26);
    }

    // Moves a character forward, by less than `count`, in a circle of `count` characters.
    template <typename Char>
    static Char rotate(Char first, int32_t count, Char c, int32_t distance) {
        const int32_t moved = c - first + distance;
        return static_cast<Char>(first + (moved < count ? moved : moved - count));
    }

    uint32_t key_;
    int32_t prefix_;
    Case case_;
    std::optional<Replacement> domain_;
    char ascii_[kKnownSteps][128];  // what the characters of the first positions become
};

}  // namespace

KORV_PROVIDER("EML", Eml, kOperands, kErrors)
