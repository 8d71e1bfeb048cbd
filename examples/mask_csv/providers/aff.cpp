// AFF: the characters of a value in another order, or the digits of a number reversed.
#include <cwchar>

#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::Text;

enum OperandCode : uint16_t { kMethod = 1 };
constexpr PrvOperand kOperands[] = {{"METHOD", kMethod, 0, OPR_VALUE_WIDE, 0, 0}};

enum ErrorCode : uint32_t { kUnchanged = 1, kUnknownMethod, kNotNumber, kNumberTooLong };
constexpr PrvErrorText kErrors[] = {
    {kUnchanged, "the value would come out as it is"},
    {kUnknownMethod, "the method is shuffle, reverse or number"},
    {kNotNumber, "not a number"},
    {kNumberTooLong, "a number of too many digits"},
    MASK_CSV_COMMON_ERRORS,
};

constexpr int32_t kMostDigits = 18;

void reverse(Text<char>& text) {
    KORVRevString(text.data, text.length);
}
void reverse(Text<wchar_t>& text) {
    KORVRevStringW(text.data);
}

// The library exchanges the halves of wide text only.
void shuffle(Text<wchar_t>& text) {
    KORVShuffle(text.data);
}
void shuffle(Text<char>& text) {
    provider::WideBuffer buffer;
    provider::widen(text, buffer);
    KORVShuffle(buffer.characters);
    std::copy(buffer.characters, buffer.characters + text.length, text.data);
}

// The digits reversed as a number, without the zeros at its end, and filled up with zeros in front.
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
    explicit Aff(const provider::Operands& operands) {
        if (!operands.has(kMethod)) return;
        const std::wstring name = operands.wide(kMethod);
        if (StringWCaseCompare(name.c_str(), L"SHUFFLE") == 0) {
            method_ = Method::shuffle;
        } else if (StringWCaseCompare(name.c_str(), L"REVERSE") == 0) {
            method_ = Method::reverse;
        } else if (StringWCaseCompare(name.c_str(), L"NUMBER") == 0) {
            method_ = Method::number;
        } else {
            throw Error(kUnknownMethod, {{KORV_TOKID_METHOD, name}});
        }
    }

    template <typename Char>
    void mask(Text<Char>& text) const {
        switch (method_) {
            case Method::shuffle:
                shuffle(text);
                break;
            case Method::reverse:
                reverse(text);
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

  private:
    enum class Method { shuffle, reverse, number };
    Method method_ = Method::shuffle;
};

}  // namespace

MASK_CSV_PROVIDER("AFF", Aff, kOperands, kErrors)
