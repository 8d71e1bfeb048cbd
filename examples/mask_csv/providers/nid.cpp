// NID: identity numbers. Every run of digits is transposed by key; letters and separators keep
// their places, so that the layout stays. With a country the number of digits is checked.
#include "providers/digits.h"
#include "providers/provider_support.h"
#include "text/utf8_text.h"

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
    {kNoDigit, "no digit in it"},
    {kWrongCount, "not the number of digits that the country's numbers have"},
    {kUnknownCountry, "no such country"},
    MASK_CSV_COMMON_ERRORS,
};

struct Country {
    const wchar_t* name;
    int32_t digits;
};
constexpr Country kCountries[] = {{Nid_FR, 15}, {Nid_ES, 8}, {Nid_IT, 7},
                                  {Nid_UK, 6},  {Nid_US, 9}, {Nid_CA, 9}};

class Nid {
  public:
    explicit Nid(const provider::Operands& operands)
        : key_(operands.number(kKey, 0)), shift_(static_cast<int16_t>(operands.number(kShift, 3))) {
        if (!operands.has(kCountry)) return;
        const std::wstring name = operands.wide(kCountry);
        for (const Country& country : kCountries) {
            if (StringWCaseCompare(name.c_str(), country.name) == 0) country_ = &country;
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
                provider::maskDigits(run, static_cast<int32_t>(p - run), key_, shift_);
            }
        }
    }

  private:
    int32_t key_;
    int16_t shift_;
    const Country* country_ = nullptr;
};

}  // namespace

MASK_CSV_PROVIDER("NID", Nid, kOperands, kErrors)
