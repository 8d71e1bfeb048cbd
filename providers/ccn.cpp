// CCN: card numbers. The issuer prefix stays, the digits after it are transposed by key, and the
// last digit becomes the check digit of the new number. Blanks and hyphens keep their places.
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
    {kBadCharacter, "a character that is not a digit, a blank or a hyphen"},
    {kTooShort, "too few digits"},
    {kTooLong, "too many digits"},
    {kBadCheckDigit, "the check digit is wrong"},
    KORV_COMMON_ERRORS,
};

constexpr int32_t kFewestDigits = 12;
constexpr int32_t kMostDigits = 19;

// The digit that makes the sum of the number valid. Of the digits before it every other one counts
// double, beginning with the last one; the digits of a product are added up.
template <typename Char>
Char checkDigit(const Char* digits, int32_t count) {
    constexpr int8_t kDoubled[] = {0, 2, 4, 6, 8, 1, 3, 5, 7, 9};
    int32_t sum = 0;
    for (int32_t i = count - 1; i >= 0; i -= 2) sum += kDoubled[digits[i] - '0'];
    for (int32_t i = count - 2; i >= 0; i -= 2) sum += digits[i] - '0';
    return static_cast<Char>('0' + (10 - sum % 10) % 10);
}

class Ccn {
  public:
    static constexpr const char* kSampleRules[] = {
        "CCN, key=17",
        "CCN, key=17, prefix=0, shift=5",
        "CCN, key=4711, strict",
    };

    explicit Ccn(const provider::Operands& operands)
        : digits_(operands.number(kKey, 0), static_cast<int16_t>(operands.number(kShift, 3))),
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
        digits_.mask(digits + prefix_, last - prefix_);
        digits[last] = checkDigit(digits, last);

        const Char* digit = digits;
        for (Char& c : text) {
            if (provider::isDigit(c)) c = *digit++;
        }
    }

    // Different numbers may have the same result: the library's transposition never gives zeros
    // only, and a wrong check digit is not kept.
    static constexpr uint32_t promises() {
        return PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT;
    }

  private:
    provider::DigitMasking digits_;
    int32_t prefix_;
    bool strict_;
};

}  // namespace

KORV_PROVIDER("CCN", Ccn, kOperands, kErrors)
