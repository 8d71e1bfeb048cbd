// NID: identity numbers. Every run of digits is transposed by key; letters and separators stay
// where they are. With a country the number of digits is checked.
#include "providers/digits.h"
#include "providers/provider_support.h"

namespace {

using provider::Error;
using provider::Text;

enum OperandCode : uint16_t { kKey = 1, kShift, kCountry };
constexpr PrvOperand kOperands[] = {
    {"KEY", kKey, PRV_OPERAND_REQUIRED, OPR_VALUE_INTEGER, 0, provider::kLargestKey},
    {"SHIFT", kShift, 0, OPR_VALUE_INTEGER, 1, 9},
    {"COUNTRY", kCountry, 0, OPR_VALUE_WIDE, 0, 0},
};

enum ErrorCode : uint32_t { kNoDigit = 1, kWrongCount, kUnknownCountry };
constexpr PrvErrorText kErrors[] = {
    {kNoDigit, "the value has no digit"},
    {kWrongCount, "the country's numbers have another number of digits"},
    {kUnknownCountry, "the country is unknown"},
    KORV_COMMON_ERRORS,
};

struct Country {
    const wchar_t* name;
    int32_t digits;
};
constexpr Country kCountries[] = {{Nid_FR, 15}, {Nid_ES, 8}, {Nid_IT, 7},
                                  {Nid_UK, 6},  {Nid_US, 9}, {Nid_CA, 9}};

class Nid {
  public:
    static constexpr const char* kSampleRules[] = {
        "NID, key=29",
        "NID, key=29, shift=7",
        "NID, key=5, country=us",
    };

    explicit Nid(const provider::Operands& operands)
        : digits_(operands.number(kKey, 0), static_cast<int16_t>(operands.number(kShift, 3))) {
        if (!operands.has(kCountry)) return;
        const std::wstring name = operands.wide(kCountry);
        for (const Country& country : kCountries) {
            if (provider::isWord(name, country.name)) country_ = &country;
        }
        if (country_ == nullptr) throw Error(kUnknownCountry, {{KORV_TOKID_COUNTRY, name}});
    }

    template <typename Char>
    void mask(Text<Char>& text) const {
        int32_t count = 0;
        for (const Char c : text) count += provider::isDigit(c) ? 1 : 0;
        if (count == 0) throw Error(kNoDigit, {{KORV_TOKID_SRCLEN, text.length}});
        if (country_ != nullptr && count != country_->digits) {
            throw Error(kWrongCount, {{KORV_TOKID_COUNTRY, country_->name},
                                      {KORV_TOKID_SRCLEN, count},
                                      {KORV_TOKID_EXPSRCLEN, country_->digits}});
        }
        for (Char* p = text.begin(); p != text.end();) {
            Char* const run = p;
            while (p != text.end() && provider::isDigit(*p)) ++p;
            if (p == run) {
                ++p;
            } else {
                digits_.mask(run, static_cast<int32_t>(p - run));
            }
        }
    }

    // Different runs of four and more digits may have the same result, see Ccn.
    static constexpr uint32_t promises() {
        return PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT;
    }

  private:
    provider::DigitMasking digits_;
    const Country* country_ = nullptr;
};

}  // namespace

KORV_PROVIDER("NID", Nid, kOperands, kErrors)
