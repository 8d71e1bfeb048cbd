// Digit counts of integers.
#include <type_traits>

#include "korv/datatypes.h"

namespace korv {
namespace {

template <class Integer>
uint32_t digits(Integer value) noexcept {
    using Magnitude = std::make_unsigned_t<Integer>;
    auto rest = static_cast<Magnitude>(value);
    if (value < 0) rest = 0 - rest;
    uint32_t count = 0;
    for (; rest != 0; rest /= 10) ++count;
    return count;
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
