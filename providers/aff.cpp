// AFF: any text, whose form is kept.
//   ff1              digits and letters are encrypted together; the rest stays
//   shuffle, reverse the characters in another order; disguises
//   number           the digits of a number reversed; a disguise
#include <algorithm>
#include <array>
#include <optional>

#include "providers/numerals.h"
#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::NumeralRange;
using provider::Text;

constexpr PrvMethod kMethods[] = {
    {"ff1", PRV_METHOD_KEYED}, {"shuffle", 0}, {"reverse", 0}, {"number", 0}};

constexpr std::array<PrvOperand, 0> kOperands = {};

// Code 2 was that of an unknown method.
enum ErrorCode : uint32_t {
    kUnchanged = 1,
    kNotNumber = 3,
    kNumberTooLong,
    kBadCharacter,
    kNothingToMask
};
constexpr PrvErrorText kErrors[] = {
    {kUnchanged, "the value would stay as it is"},
    {kNotNumber, "a character that is not a digit"},
    {kNumberTooLong, "the number has too many digits"},
    {kBadCharacter, "a letter or digit that is not ASCII"},
    {kNothingToMask, "the value has no letter and no digit"},
    KORV_COMMON_ERRORS,
};

constexpr int32_t kMostDigits = 18;

// The digits reversed as a number, without the zeros at its end, and filled up with zeros before
// it.
template <class Char>
void reverseNumber(Text<Char>& text) {
    if (text.length > kMostDigits) {
        throw Error(kNumberTooLong,
                    {{KORV_TOKID_SRCLEN, text.length}, {KORV_TOKID_EXPSRCLEN, kMostDigits}});
    }
    uint64_t number = 0;
    for (int32_t i = 0; i < text.length; ++i) {
        if (!provider::isDigit(text.data[i])) {
            throw Error(kNotNumber,
                        {{KORV_TOKID_CHAR_POS, i + 1}, {KORV_TOKID_SRCLEN, text.length}});
        }
        number = number * 10 + static_cast<uint64_t>(text.data[i] - '0');
    }
    KORVReverseNum(&number);
    uint32_t digits = 0;
    KORVGetLongLongDigitCount(static_cast<int64_t>(number), &digits);
    std::fill(text.begin(), text.end(), static_cast<Char>('0'));
    for (Char* p = text.end(); digits > 0; --digits) {
        *--p = static_cast<Char>('0' + number % 10);
        number /= 10;
    }
}

class Aff {
  public:
    static constexpr const char* kSampleRules[] = {
        "AFF, secret=test",
        "AFF, method=shuffle",
        "AFF, method=reverse",
        "AFF, method=number",
    };

    explicit Aff(const provider::Operands& operands)
        : method_(operands.isMethod("reverse")  ? Method::reverse
                  : operands.isMethod("number") ? Method::number
                                                : Method::shuffle) {
        if (operands.isMethod("ff1")) permutation_.emplace(provider::keyOf(operands));
    }

    template <class Char>
    void mask(Text<Char>& text) const {
        switch (method_) {
            case Method::shuffle: {
                const int32_t half = text.length / 2;
                std::swap_ranges(text.data, text.data + half, text.data + half);
                break;
            }
            case Method::reverse:
                std::reverse(text.begin(), text.end());
                break;
            case Method::number:
                reverseNumber(text);
                break;
        }
        // A single character, or a palindrome.
        if (std::equal(text.begin(), text.end(), text.source)) {
            throw Error(kUnchanged, {{KORV_TOKID_SRCLEN, text.length}});
        }
    }

    const crypto::Permutation* permutation() const {
        return permutation_ ? &*permutation_ : nullptr;
    }

    template <class Char>
    void prepare(Text<Char>& text, crypto::Permuted& number) const {
        const NumeralRange<Char> range(text.begin(), text.end(), true);
        const Char* const foreign = range.findForeign();
        if (foreign != text.end()) {
            throw Error(kBadCharacter,
                        {{KORV_TOKID_CHAR_POS, static_cast<int32_t>(foreign - text.begin()) + 1},
                         {KORV_TOKID_SRCLEN, text.length}});
        }
        range.read(number);
        range.appendPattern(number.tweak);
        if (number.tweak.empty()) throw Error(kNothingToMask, {{KORV_TOKID_SRCLEN, text.length}});
    }

    template <class Char>
    void finish(Text<Char>& text, crypto::Permuted& number) const {
        NumeralRange<Char>(text.begin(), text.end(), true).write(number);
    }

    // Zeros at the end of a number are lost, and what is left may be the same backwards.
    uint32_t promises() const {
        if (permutation_) {
            return PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT |
                   PRV_PROMISE_REVERSIBLE;
        }
        return method_ == Method::number
                   ? PRV_PROMISE_LENGTH_KEPT
                   : PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT;
    }

  private:
    enum class Method { shuffle, reverse, number };
    Method method_;
    std::optional<crypto::Permutation> permutation_;
};

}  // namespace

KORV_PROVIDER("AFF", provider::Permuting<Aff>, kMethods, kOperands, kErrors)
