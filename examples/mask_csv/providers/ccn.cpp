// CCN: card numbers. The issuer prefix stays, the digits behind it are transposed by key, and the
// last digit becomes the check digit again; blanks and hyphens keep their places.
#include "providers/digits.h"
#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::Text;

enum OperandCode : uint16_t { kKey = 1, kShift, kPrefix, kStrict };
constexpr PrvOperand kOperands[] = {
    {"KEY", kKey, PRV_OPERAND_REQUIRED, OPR_VALUE_INTEGER, 0, provider::kLargestKey},
    {"SHIFT", kShift, 0, OPR_VALUE_INTEGER, 1, 9},
    {"PREFIX", kPrefix, 0, OPR_VALUE_INTEGER, 0, 8},
    {"STRICT", kStrict, 0, OPR_VALUE_NONE, 0, 0},
};

enum ErrorCode : uint32_t { kBadCharacter = 1, kTooShort, kTooLong, kBadCheckDigit };
constexpr PrvErrorText kErrors[] = {
    {kBadCharacter, "a character that no card number has"},
    {kTooShort, "too few digits"},
    {kTooLong, "too many digits"},
    {kBadCheckDigit, "the check digit is wrong"},
    MASK_CSV_COMMON_ERRORS,
};

constexpr int32_t kFewestDigits = 12;
constexpr int32_t kMostDigits = 19;

// The digit that makes the sum of the number valid: from its place leftwards every other digit,
// beginning with the nearest, counts double.
template <typename Char>
Char checkDigit(const Char* digits, int32_t count) {
    int32_t sum = 0;
    for (int32_t i = count - 1, weight = 2; i >= 0; --i, weight = 3 - weight) {
        const int32_t product = (digits[i] - '0') * weight;
        sum += product > 9 ? product - 9 : product;
    }
    return static_cast<Char>('0' + (10 - sum % 10) % 10);
}

class Ccn {
  public:
    explicit Ccn(const provider::Operands& operands)
        : key_(operands.number(kKey, 0)),
          shift_(static_cast<int16_t>(operands.number(kShift, 3))),
          prefix_(operands.number(kPrefix, 6)),
          strict_(operands.has(kStrict)) {}

    template <typename Char>
    void mask(Text<Char>& text) const {
        Char digits[kMostDigits];
        int32_t count = 0;
        for (int32_t i = 0; i < text.length; ++i) {
            const Char c = text.data[i];
            if (provider::isDigit(c)) {
                if (count < kMostDigits) digits[count] = c;
                ++count;
            } else if (c != ' ' && c != '-') {
                throw Error(kBadCharacter,
                            {{KORV_TOKID_CHAR_POS, i + 1}, {KORV_TOKID_SRCLEN, text.length}});
            }
        }
        if (count < kFewestDigits) {
            throw Error(kTooShort,
                        {{KORV_TOKID_SRCLEN, count}, {KORV_TOKID_EXPSRCLEN, kFewestDigits}});
        }
        if (count > kMostDigits) {
            throw Error(kTooLong,
                        {{KORV_TOKID_SRCLEN, count}, {KORV_TOKID_EXPSRCLEN, kMostDigits}});
        }
        const int32_t last = count - 1;
        if (strict_ && digits[last] != checkDigit(digits, last)) {
            throw Error(kBadCheckDigit, {{KORV_TOKID_CHAR_POS, text.length}});
        }
        provider::maskDigits(digits + prefix_, last - prefix_, key_, shift_);
        digits[last] = checkDigit(digits, last);

        const Char* digit = digits;
        for (Char& c : text) {
            if (provider::isDigit(c)) c = *digit++;
        }
    }

  private:
    int32_t key_;
    int16_t shift_;
    int32_t prefix_;
    bool strict_;
};

}  // namespace

MASK_CSV_PROVIDER("CCN", Ccn, kOperands, kErrors)
