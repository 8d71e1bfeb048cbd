// DSWAP, a provider to start from: it swaps the two digits of each pair of neighbours, so 123-45
// becomes 213-54. In a run with an odd number of digits the last digit stays.
//
// The operand AT=n leaves the first n characters unchanged.
#include <korv/provider.hpp>

#include <array>
#include <utility>

namespace {

using korv::provider::Error;
using korv::provider::isDigit;
using korv::provider::Operands;
using korv::provider::Text;

// 1. The operands that a rule may have: here one, a number.
enum OperandCode : std::uint16_t { kAt = 1 };
constexpr PrvOperand kOperands[] = {{"AT", kAt, 0, OPR_VALUE_INTEGER, 0, 1000}};

// 2. The errors, with their texts for reports; the last line adds those that any provider may have.
enum ErrorCode : std::uint32_t { kNoPair = 1 };
constexpr PrvErrorText kErrors[] = {
    {kNoPair, "no two neighbouring digits"},
    KORV_COMMON_ERRORS,
};

// 3. The methods: there is one way to mask, and it has no secret.
constexpr std::array<PrvMethod, 0> kMethods;

class Dswap {
  public:
    // 4. Rules to try the provider with.
    static constexpr const char* kSampleRules[] = {"DSWAP", "DSWAP, at=2"};

    // 5. Called once for each rule.
    explicit Dswap(const Operands& operands) : at_(operands.number(kAt, 0)) {}

    // 6. Called for each value, which is changed in place. It is compiled for narrow and for wide
    // text. The value itself must not appear in an error.
    template <class Char>
    void mask(Text<Char>& text) const {
        bool found = false;
        for (std::int32_t i = at_; i + 1 < text.length; ++i) {
            if (!isDigit(text.data[i]) || !isDigit(text.data[i + 1])) continue;
            std::swap(text.data[i], text.data[i + 1]);
            ++i;
            found = true;
        }
        if (!found) throw Error(kNoPair, {{KORV_TOKID_SRCLEN, text.length}});
    }

    // 7. Swapping twice restores the value.
    template <class Char>
    void unmask(Text<Char>& text) const {
        mask(text);
    }
    std::uint32_t promises() const {
        return PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT |
               PRV_PROMISE_REVERSIBLE;
    }

  private:
    std::int32_t at_;
};

}  // namespace

// 8. The only name that the module exports.
KORV_PROVIDER("DSWAP", Dswap, kMethods, kOperands, kErrors)
