// AFF: the characters of a value in another order, or the digits of a number reversed.
#include <algorithm>

#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::Text;

enum OperandCode : uint16_t { kMethod = 1 };
constexpr PrvOperand kOperands[] = {{"METHOD", kMethod, 0, OPR_VALUE_WIDE, 0, 0}};

enum ErrorCode : uint32_t { kUnchanged = 1, kUnknownMethod, kNotNumber, kNumberTooLong };
constexpr PrvErrorText kErrors[] = {
    {kUnchanged, "the value would stay as it is"},
    {kUnknownMethod, "the method must be shuffle, reverse or number"},
    {kNotNumber, "a character that is not a digit"},
    {kNumberTooLong, "the number has too many digits"},
    KORV_COMMON_ERRORS,
};

constexpr int32_t kMostDigits = 18;

// The digits reversed as a number, without the zeros at its end, and filled up with zeros before
// it.
template <typename Char>
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
        "AFF",
        "AFF, method=reverse",
        "AFF, method=number",
    };

    explicit Aff(const provider::Operands& operands) {
        if (!operands.has(kMethod)) return;
        const std::wstring name = operands.wide(kMethod);
        if (provider::isWord(name, L"SHUFFLE")) {
            method_ = Method::shuffle;
        } else if (provider::isWord(name, L"REVERSE")) {
            method_ = Method::reverse;
        } else if (provider::isWord(name, L"NUMBER")) {
            method_ = Method::number;
        } else {
            throw Error(kUnknownMethod, {{KORV_TOKID_METHOD, name}});
        }
    }

    template <typename Char>
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

    // Zeros at the end of a number are lost, and what is left may be the same backwards.
    uint32_t promises() const {
        return method_ == Method::number
                   ? PRV_PROMISE_LENGTH_KEPT
                   : PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT;
    }

  private:
    enum class Method { shuffle, reverse, number };
    Method method_ = Method::shuffle;
};

}  // namespace

KORV_PROVIDER("AFF", Aff, kOperands, kErrors)
