// EML: e-mail addresses. The user part is masked behind a prefix that stays, the domain stays or is
// replaced, and the case of letters is normalised.
#include "providers/provider_support.h"

namespace {

using provider::Error;
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
    {kNoAt, "no @ in it"},
    {kTwoAts, "more than one @ in it"},
    {kNoUser, "nothing before the @"},
    {kNoDomain, "nothing behind the @"},
    {kShortUser, "nothing left to mask behind the kept prefix of the user part"},
    {kBadOperand, "no such value of the operand"},
    MASK_CSV_COMMON_ERRORS,
};

enum class Case { lower, upper, keep };

void lower(char* text) {
    KORV_StrToLower(text);
}
void lower(wchar_t* text) {
    KORV_StrToWLower(text);
}
void upper(char* text) {
    KORV_StrToUpper(text);
}
void upper(wchar_t* text) {
    KORV_StrToWUpper(text);
}

class Eml {
  public:
    explicit Eml(const provider::Operands& operands)
        : key_(static_cast<uint32_t>(operands.number(kKey, 0))),
          prefix_(operands.number(kPrefix, 0)),
          domain_(operands.wide(kDomain)) {
        for (const wchar_t c : domain_) {
            if (c <= ' ' || c > '~' || c == '@') {
                throw Error(kBadOperand,
                            {{KORV_TOKID_PARMKEY, L"DOMAIN"}, {KORV_TOKID_PARMVALUE, domain_}});
            }
        }
        std::string name = operands.has(kCase) ? operands.narrow(kCase) : "LOWER";
        KORV_StrToUpper(name.data());
        if (name == "LOWER") {
            case_ = Case::lower;
        } else if (name == "UPPER") {
            case_ = Case::upper;
        } else if (name == "KEEP") {
            case_ = Case::keep;
        } else {
            throw Error(kBadOperand, {{KORV_TOKID_PARMKEY, L"CASE"},
                                      {KORV_TOKID_PARMVALUE, operands.wide(kCase)}});
        }
        if (case_ == Case::lower) lower(domain_.data());
        if (case_ == Case::upper) upper(domain_.data());
    }

    template <typename Char>
    void mask(Text<Char>& text) const {
        const int32_t user = userLength(text);
        if (user <= prefix_) {
            throw Error(kShortUser,
                        {{KORV_TOKID_USERPRFX_LEN, prefix_}, {KORV_TOKID_SRCLEN, user}});
        }
        // Before the user part is masked, so that the same address in any case gives the same.
        if (case_ == Case::lower) lower(text.data);
        if (case_ == Case::upper) upper(text.data);
        for (int32_t i = prefix_; i < user; ++i) text.data[i] = other(text.data[i], i);
        if (!domain_.empty()) replaceDomain(text, user + 1);
    }

  private:
    template <typename Char>
    static int32_t userLength(Text<Char>& text) {
        int32_t at = -1;
        for (int32_t i = 0; i < text.length; ++i) {
            if (text.data[i] != '@') continue;
            if (at >= 0) throw Error(kTwoAts, {{KORV_TOKID_CHAR_POS, i + 1}});
            at = i;
        }
        if (at < 0) throw Error(kNoAt, {{KORV_TOKID_SRCLEN, text.length}});
        if (at == 0) throw Error(kNoUser, {{KORV_TOKID_USERPRFX_LEN, 0}});
        if (at + 1 == text.length) throw Error(kNoDomain, {{KORV_TOKID_DOMAIN_LEN, 0}});
        return at;
    }

    // Letters become letters and digits digits; what is neither and ASCII, such as a dot, stays.
    template <typename Char>
    Char other(Char c, int32_t position) const {
        const uint32_t step = provider::mix(key_, static_cast<uint32_t>(position));
        if (provider::isDigit(c)) return static_cast<Char>('0' + (c - '0' + 1 + step % 9) % 10);
        if (provider::isLetter(c)) {
            const Char first = c >= 'a' ? 'a' : 'A';
            return static_cast<Char>(first + (c - first + 1 + step % 25) % 26);
        }
        if (static_cast<int32_t>(c) < 0x80) return c;
        const Char first = case_ == Case::upper ? 'A' : 'a';
        return static_cast<Char>(first + (static_cast<uint32_t>(c) + step) % 26);
    }

    template <typename Char>
    void replaceDomain(Text<Char>& text, int32_t domain) const {
        std::basic_string<Char> address(text.data, static_cast<size_t>(domain));
        for (const wchar_t c : domain_) address += static_cast<Char>(c);
        text.assign(std::basic_string_view<Char>(address));
    }

    uint32_t key_;
    int32_t prefix_;
    std::wstring domain_;
    Case case_;
};

}  // namespace

MASK_CSV_PROVIDER("EML", Eml, kOperands, kErrors)
