// The number of decimal digits of an integer.
#include <limits>

#include "korv/datatypes.h"
#include "peers/charconv.h"
#include "reference/counts.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

template <class Number, class Ours, class Literal>
void count(const char* function, const char* input, Ours ours, Literal literal) {
    using Limits = std::numeric_limits<Number>;
    const auto& values =
        forever(randomNumbers<Number>(kManyInputs, Limits::min() + 1, Limits::max()));
    auto& counter = forever(uint32_t{});
    Row(function, input, kManyInputs)
        .observe([&](std::size_t) { return bytesOf(counter); })
        .with("ours",
              [&, ours](std::size_t i) {
                  counter = 0;
                  ours(values[i], &counter);
              })
        .with("literal",
              [&, literal](std::size_t i) {
                  counter = 0;
                  literal(values[i], &counter);
              })
        .with("std::to_chars length",
              [&](std::size_t i) { counter = peers::digitCount(values[i]); });
}

}  // namespace

void addDigitCount() {
    count<int32_t>("KORVGetIntDigitCount", "32 bits", KORVGetIntDigitCount,
                   reference::countDigits<int32_t>);
    count<int64_t>("KORVGetLongLongDigitCount", "64 bits", KORVGetLongLongDigitCount,
                   reference::countDigits<int64_t>);
}

}  // namespace bench
