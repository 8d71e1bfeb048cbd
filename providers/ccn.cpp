// CCN: card numbers. The issuer prefix stays, blanks and hyphens keep their places.
//   ff1        the digits between prefix and last digits are encrypted, and one of them is set so
//              that the check sum stays right or wrong as it was
//   transpose  the digits after the prefix are transposed by key, and the last digit becomes the
//              check digit of the new number; a disguise
#include <optional>

#include "providers/digits.h"
#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::Text;

constexpr PrvMethod kMethods[] = {{"ff1", PRV_METHOD_KEYED}, {"transpose", 0}};

enum OperandCode : uint16_t { kKey = 1, kShift, kPrefix, kStrict, kLast };
constexpr PrvOperand kOperands[] = {
    {"KEY", kKey, 0, OPR_VALUE_INTEGER, 0, provider::kLargestKey},
    {"SHIFT", kShift, 0, OPR_VALUE_INTEGER, 1, 9},
    {"PREFIX", kPrefix, 0, OPR_VALUE_INTEGER, 0, 8},
    {"STRICT", kStrict, PRV_OPERAND_CHECK, OPR_VALUE_NONE, 0, 0},
    {"LAST", kLast, 0, OPR_VALUE_INTEGER, 0, 4},
};

enum ErrorCode : uint32_t { kBadCharacter = 1, kTooShort, kTooLong, kBadCheckDigit, kNothingFree };
constexpr PrvErrorText kErrors[] = {
    {kBadCharacter, "a character that is not a digit, a blank or a hyphen"},
    {kTooShort, "too few digits"},
    {kTooLong, "too many digits"},
    {kBadCheckDigit, "the check digit is wrong"},
    {kNothingFree, "no digit is left to be masked"},
    KORV_COMMON_ERRORS,
};

constexpr int32_t kFewestDigits = 12;
constexpr int32_t kMostDigits = 19;

// The digits of a card number.
template <class Char>
struct Digits {
    Char digits[kMostDigits];
    int32_t count;

    std::string_view narrow(int32_t from, int32_t to, char* target) const {
        for (int32_t i = from; i < to; ++i) *target++ = static_cast<char>(digits[i]);
        return {target - (to - from), static_cast<size_t>(to - from)};
    }
    void writeTo(Text<Char>& text) const {
        const Char* digit = digits;
        for (Char& c : text) {
            if (provider::isDigit(c)) c = *digit++;
        }
    }
};

// What a digit adds to the check sum, by its place counted from the right: every other one counts
// double, and the digits of a product are added up.
int32_t weighted(int32_t digit, int32_t placeFromRight) {
    constexpr int8_t kDoubled[] = {0, 2, 4, 6, 8, 1, 3, 5, 7, 9};
    return placeFromRight % 2 == 0 ? digit : kDoubled[digit];
}

template <class Char>
int32_t checkSum(const Digits<Char>& number) {
    int32_t sum = 0;
    for (int32_t i = 0; i < number.count; ++i) {
        sum += weighted(number.digits[i] - '0', number.count - 1 - i);
    }
    return sum % 10;
}

// Sets the digit with which the check sum is as wanted. There is exactly one.
template <class Char>
void setCheckSum(Digits<Char>& number, int32_t place, int32_t wanted) {
    number.digits[place] = '0';
    const int32_t missing = (wanted + 10 - checkSum(number)) % 10;
    int32_t digit = 0;
    while (weighted(digit, number.count - 1 - place) != missing) ++digit;
    number.digits[place] = static_cast<Char>('0' + digit);
}

class Ccn {
  public:
    static constexpr const char* kSampleRules[] = {
        "CCN, secret=test",
        "CCN, secret=test, prefix=4, last=4",
        "CCN, method=transpose, key=17",
        "CCN, method=transpose, key=17, prefix=0, shift=5",
        "CCN, method=transpose, key=4711, strict",
    };

    explicit Ccn(const provider::Operands& operands)
        : transposition_(operands.number(kKey, 0),
                         static_cast<int16_t>(operands.number(kShift, 3))),
          prefix_(operands.number(kPrefix, 6)),
          last_(operands.number(kLast, 0)),
          strict_(operands.has(kStrict)) {
        if (operands.isMethod("ff1")) {
            operands.refuse(kKey, L"KEY");
            operands.refuse(kShift, L"SHIFT");
            permutation_.emplace(provider::keyOf(operands));
        } else {
            operands.require(kKey, L"KEY");
            operands.refuse(kLast, L"LAST");
        }
    }

    template <class Char>
    void mask(Text<Char>& text) const {
        Digits<Char> number = read(text);
        const int32_t last = number.count - 1;
        transposition_.mask(number.digits + prefix_, last - prefix_);
        setCheckSum(number, last, 0);
        number.writeTo(text);
    }

    const crypto::Permutation* permutation() const {
        return permutation_ ? &*permutation_ : nullptr;
    }

    template <class Char>
    void prepare(Text<Char>& text, crypto::Permuted& number) const {
        const Digits<Char> card = read(text);
        const int32_t end = card.count - last_;
        const int32_t encrypted = end - 1 - prefix_;
        if (encrypted < 1) {
            throw Error(kNothingFree, {{KORV_TOKID_SRCLEN, card.count},
                                       {KORV_TOKID_EXPSRCLEN, prefix_ + last_ + 2}});
        }
        for (int32_t i = prefix_; i < end - 1; ++i) {
            number.append(static_cast<uint32_t>(card.digits[i] - '0'), 10);
        }
        number.powerOfTen = static_cast<uint32_t>(encrypted);
        char kept[kMostDigits];
        number.tweak += card.narrow(0, prefix_, kept);
        number.tweak += '/';
        number.tweak += card.narrow(end, card.count, kept);
    }

    template <class Char>
    void finish(Text<Char>& text, crypto::Permuted& number) const {
        Digits<Char> card = read(text);
        const int32_t sum = checkSum(card);
        const int32_t place = card.count - last_ - 1;
        for (int32_t i = place - 1; i >= prefix_; --i) {
            card.digits[i] = static_cast<Char>('0' + number.takeLast(10));
        }
        setCheckSum(card, place, sum);
        card.writeTo(text);
    }

    // Different numbers may be transposed to the same one: the library's transposition never gives
    // zeros only, and a wrong check digit is not kept.
    uint32_t promises() const {
        return PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT |
               (permutation_ ? PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_REVERSIBLE : 0);
    }

  private:
    template <class Char>
    Digits<Char> read(const Text<Char>& text) const {
        Digits<Char> number;
        number.count = 0;
        for (int32_t i = 0; i < text.length; ++i) {
            const Char c = text.data[i];
            if (provider::isDigit(c)) {
                if (number.count < kMostDigits) number.digits[number.count] = c;
                ++number.count;
            } else if (c != ' ' && c != '-') {
                throw Error(kBadCharacter,
                            {{KORV_TOKID_CHAR_POS, i + 1}, {KORV_TOKID_SRCLEN, text.length}});
            }
        }
        if (number.count < kFewestDigits) {
            throw Error(kTooShort,
                        {{KORV_TOKID_SRCLEN, number.count}, {KORV_TOKID_EXPSRCLEN, kFewestDigits}});
        }
        if (number.count > kMostDigits) {
            throw Error(kTooLong,
                        {{KORV_TOKID_SRCLEN, number.count}, {KORV_TOKID_EXPSRCLEN, kMostDigits}});
        }
        if (strict_ && checkSum(number) != 0) {
            throw Error(kBadCheckDigit, {{KORV_TOKID_CHAR_POS, text.length}});
        }
        return number;
    }

    provider::DigitMasking transposition_;
    std::optional<crypto::Permutation> permutation_;
    int32_t prefix_;
    int32_t last_;
    bool strict_;
};

}  // namespace

KORV_PROVIDER("CCN", provider::Permuting<Ccn>, kMethods, kOperands, kErrors)
