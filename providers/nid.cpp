// NID: identity numbers. Separators stay where they are. With a country the number of digits is
// checked.
//   ff1        all digits are encrypted together; with letters, those too; or as an integer
//   transpose  every run of digits is transposed by key; a disguise
#include <algorithm>
#include <optional>

#include "providers/digits.h"
#include "providers/numerals.h"
#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::NumeralRange;
using provider::Text;

constexpr PrvMethod kMethods[] = {{"ff1", PRV_METHOD_KEYED}, {"transpose", 0}};

enum OperandCode : uint16_t { kKey = 1, kShift, kCountry, kPrefix, kLast, kLetters, kInteger };
constexpr PrvOperand kOperands[] = {
    {"KEY", kKey, 0, OPR_VALUE_INTEGER, 0, provider::kLargestKey},
    {"SHIFT", kShift, 0, OPR_VALUE_INTEGER, 1, 9},
    {"COUNTRY", kCountry, PRV_OPERAND_CHECK, OPR_VALUE_WIDE, 0, 0},
    {"PREFIX", kPrefix, 0, OPR_VALUE_INTEGER, 0, 8},
    {"LAST", kLast, 0, OPR_VALUE_INTEGER, 0, 4},
    {"LETTERS", kLetters, 0, OPR_VALUE_NONE, 0, 0},
    {"INTEGER", kInteger, PRV_OPERAND_OPTIONAL_VALUE, OPR_VALUE_NARROW, 0, 0},
};

enum ErrorCode : uint32_t {
    kNoDigit = 1,
    kWrongCount,
    kUnknownCountry,
    kBadCharacter,
    kNothingFree,
    kNotInteger,
    kOutOfRange,
    kUnknownType
};
constexpr PrvErrorText kErrors[] = {
    {kNoDigit, "the value has no digit"},
    {kWrongCount, "the country's numbers have another number of digits"},
    {kUnknownCountry, "the country is unknown"},
    {kBadCharacter, "a letter, which is masked with the operand LETTERS only and must be ASCII"},
    {kNothingFree, "nothing is left to be masked"},
    {kNotInteger, "the value is not an integer without leading zeros"},
    {kOutOfRange, "the integer is outside the range of its type"},
    {kUnknownType, "the type of an integer is int4 or int8"},
    KORV_COMMON_ERRORS,
};

struct Country {
    const wchar_t* name;
    int32_t digits;
};
constexpr Country kCountries[] = {{Nid_FR, 15}, {Nid_ES, 8}, {Nid_IT, 7},
                                  {Nid_UK, 6},  {Nid_US, 9}, {Nid_CA, 9}};

// The bounds of integers with `digits` digits: 0 to 9, 10 to 99, and so on.
struct IntegerRange {
    uint64_t low;
    uint64_t high;  // included
};

class Nid {
  public:
    static constexpr const char* kSampleRules[] = {
        "NID, secret=test",
        "NID, secret=test, prefix=1, last=2, letters",
        "NID, secret=test, integer",
        "NID, method=transpose, key=29",
        "NID, method=transpose, key=29, shift=7",
        "NID, method=transpose, key=5, country=us",
    };

    explicit Nid(const provider::Operands& operands)
        : transposition_(operands.number(kKey, 0),
                         static_cast<int16_t>(operands.number(kShift, 3))),
          prefix_(operands.number(kPrefix, 0)),
          last_(operands.number(kLast, 0)),
          letters_(operands.has(kLetters)),
          integer_(operands.has(kInteger)) {
        if (operands.isMethod("ff1")) {
            operands.refuse(kKey, L"KEY");
            operands.refuse(kShift, L"SHIFT");
            permutation_.emplace(provider::keyOf(operands));
        } else {
            operands.require(kKey, L"KEY");
            operands.refuse(kPrefix, L"PREFIX");
            operands.refuse(kLast, L"LAST");
            operands.refuse(kLetters, L"LETTERS");
            operands.refuse(kInteger, L"INTEGER");
        }
        if (integer_) {
            operands.refuse(kPrefix, L"PREFIX");
            operands.refuse(kLast, L"LAST");
            operands.refuse(kLetters, L"LETTERS");
            operands.refuse(kCountry, L"COUNTRY");
            setType(operands.wide(kInteger));
        }
        if (operands.has(kCountry)) setCountry(operands.wide(kCountry));
    }

    template <class Char>
    void mask(Text<Char>& text) const {
        checkDigits(text);
        for (Char* p = text.begin(); p != text.end();) {
            Char* const run = p;
            while (p != text.end() && provider::isDigit(*p)) ++p;
            if (p == run) {
                ++p;
            } else {
                transposition_.mask(run, static_cast<int32_t>(p - run));
            }
        }
    }

    const crypto::Permutation* permutation() const {
        return permutation_ ? &*permutation_ : nullptr;
    }

    template <class Char>
    void prepare(Text<Char>& text, crypto::Permuted& number) const {
        if (integer_) return prepareInteger(text, number);
        NumeralRange<Char> range(text.begin(), text.end(), letters_);
        const Char* const foreign = range.findForeign();
        if (foreign != text.end()) {
            throw Error(kBadCharacter,
                        {{KORV_TOKID_CHAR_POS, static_cast<int32_t>(foreign - text.begin()) + 1},
                         {KORV_TOKID_SRCLEN, text.length}});
        }
        if (letters_) {
            checkCountry(text);
        } else {
            checkDigits(text);
        }
        const int32_t count = range.count();
        if (count <= prefix_ + last_) {
            throw Error(kNothingFree,
                        {{KORV_TOKID_SRCLEN, count}, {KORV_TOKID_EXPSRCLEN, prefix_ + last_ + 1}});
        }
        range.narrow(prefix_, last_, number.tweak);
        if (letters_) {
            number.tweak += '/';
            range.appendPattern(number.tweak);
        }
        range.read(number);
    }

    template <class Char>
    void finish(Text<Char>& text, crypto::Permuted& number) const {
        if (integer_) return finishInteger(text, number);
        NumeralRange<Char> range(text.begin(), text.end(), letters_);
        std::string kept;
        range.narrow(prefix_, last_, kept);
        range.write(number);
    }

    // Different runs of four and more digits may be transposed to the same one, see Ccn.
    uint32_t promises() const {
        return PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT |
               (permutation_ ? PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_REVERSIBLE : 0);
    }

  private:
    void setCountry(const std::wstring& name) {
        for (const Country& country : kCountries) {
            if (provider::isWord(name, country.name)) country_ = &country;
        }
        if (country_ == nullptr) throw Error(kUnknownCountry, {{KORV_TOKID_COUNTRY, name}});
    }

    void setType(const std::wstring& name) {
        if (name.empty()) return;
        if (provider::isWord(name, L"INT4")) {
            largest_ = INT32_MAX;
        } else if (provider::isWord(name, L"INT8")) {
            largest_ = INT64_MAX;
        } else {
            throw Error(kUnknownType, {{KORV_TOKID_DATATYPE, name}});
        }
    }

    template <class Char>
    void checkDigits(Text<Char>& text) const {
        if (std::none_of(text.begin(), text.end(), provider::isDigit)) {
            throw Error(kNoDigit, {{KORV_TOKID_SRCLEN, text.length}});
        }
        checkCountry(text);
    }

    template <class Char>
    void checkCountry(Text<Char>& text) const {
        if (country_ == nullptr) return;
        const auto count =
            static_cast<int32_t>(std::count_if(text.begin(), text.end(), provider::isDigit));
        if (count != country_->digits) {
            throw Error(kWrongCount, {{KORV_TOKID_COUNTRY, country_->name},
                                      {KORV_TOKID_SRCLEN, count},
                                      {KORV_TOKID_EXPSRCLEN, country_->digits}});
        }
    }

    // The digits of an integer: after its sign.
    template <class Char>
    static Char* digitsOf(Text<Char>& text) {
        return text.begin() + (*text.begin() == '-' ? 1 : 0);
    }

    // The number of the value within the range of its sign and its count of digits.
    template <class Char>
    void prepareInteger(Text<Char>& text, crypto::Permuted& number) const {
        Char* const digits = digitsOf(text);
        const auto count = static_cast<int32_t>(text.end() - digits);
        const bool isNegative = digits != text.begin();
        if (count == 0 || !std::all_of(digits, text.end(), provider::isDigit) ||
            (*digits == '0' && (count > 1 || isNegative))) {
            throw Error(kNotInteger, {{KORV_TOKID_SRCLEN, text.length}});
        }
        number.tweak = isNegative ? '-' : '+';
        if (count == 1) {
            number.append(static_cast<uint32_t>(*digits - '0') - (isNegative ? 1 : 0),
                          isNegative ? 9 : 10);
            number.powerOfTen = isNegative ? 0 : 1;
            return;
        }
        if (largest_ != 0) {
            const uint64_t value = checkedValue(digits, count, isNegative);
            const IntegerRange range = rangeOf(count, isNegative);
            number.number = value - range.low;
            number.size = range.high - range.low + 1;
            return;
        }
        number.append(static_cast<uint32_t>(*digits - '1'), 9);
        for (const Char* p = digits + 1; p != text.end(); ++p) {
            number.append(static_cast<uint32_t>(*p - '0'), 10);
        }
    }

    template <class Char>
    void finishInteger(Text<Char>& text, crypto::Permuted& number) const {
        Char* const digits = digitsOf(text);
        const auto count = static_cast<int32_t>(text.end() - digits);
        const bool isNegative = digits != text.begin();
        if (count == 1 && isNegative) {
            *digits = static_cast<Char>('1' + number.takeLast(9));
            return;
        }
        if (count > 1 && largest_ != 0) number.number += rangeOf(count, isNegative).low;
        for (Char* p = text.end(); p != digits;) {
            --p;
            const bool isFirst = p == digits && count > 1 && largest_ == 0;
            *p = static_cast<Char>(isFirst ? '1' + number.takeLast(9) : '0' + number.takeLast(10));
        }
    }

    uint64_t largest(bool isNegative) const { return largest_ + (isNegative ? 1 : 0); }

    // Of integers with at least two digits.
    IntegerRange rangeOf(int32_t count, bool isNegative) const {
        uint64_t low = 1;
        for (int32_t i = 1; i < count; ++i) low *= 10;
        const uint64_t most = largest(isNegative);
        return {low, most / 10 < low ? most : low * 10 - 1};
    }

    template <class Char>
    uint64_t checkedValue(const Char* digits, int32_t count, bool isNegative) const {
        uint64_t value = 0;
        for (int32_t i = 0; i < count; ++i) {
            const auto digit = static_cast<uint64_t>(digits[i] - '0');
            if (value > (largest(isNegative) - digit) / 10) {
                throw Error(kOutOfRange, {{KORV_TOKID_SRCLEN, count}});
            }
            value = value * 10 + digit;
        }
        return value;
    }

    provider::DigitMasking transposition_;
    std::optional<crypto::Permutation> permutation_;
    int32_t prefix_;
    int32_t last_;
    bool letters_;
    bool integer_;
    uint64_t largest_ = 0;  // of the integers' type, or 0
    const Country* country_ = nullptr;
};

}  // namespace

KORV_PROVIDER("NID", provider::Permuting<Nid>, kMethods, kOperands, kErrors)
