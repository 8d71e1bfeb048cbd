// Digit counts of integers.
#include <array>
#include <bit>
#include <limits>
#include <type_traits>

#include "korv/datatypes.h"

namespace korv {
namespace {

// 10^0 and up, as far as they fit.
template <class Unsigned>
constexpr auto kPowersOfTen = [] {
    std::array<Unsigned, std::numeric_limits<Unsigned>::digits10 + 1> powers{};
    Unsigned power = 1;
    for (Unsigned& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

// A number of b bits has floor(b * log10(2)) digits, or one more: 1233 / 4096 is log10(2), closely
// enough up to 64 bits. Zero has none.
template <class Integer>
uint32_t digits(Integer value) noexcept {
    using Magnitude = std::make_unsigned_t<Integer>;
    auto magnitude = static_cast<Magnitude>(value);
    if (value < 0) magnitude = 0 - magnitude;
    const auto least = static_cast<uint32_t>(std::bit_width(magnitude)) * 1233 >> 12;
    return least + (magnitude >= kPowersOfTen<Magnitude>[least]);
}

}  // namespace
}  // namespace korv

int32_t KORVGetIntDigitCount(int32_t value, uint32_t* counter) {
    *counter += korv::digits(value);
    return KORV_SUCCESS;
}

int32_t KORVGetLongLongDigitCount(int64_t value, uint32_t* counter) {
    *counter += korv::digits(value);
    return KORV_SUCCESS;
}
