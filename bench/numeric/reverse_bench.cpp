// The decimal digits of a 64-bit number, reversed.
#include "korv/numeric.h"
#include "peers/charconv.h"
#include "reference/numeric.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {

void addReverse() {
    // Of at most 19 digits, so that the number read back fits 64 bits.
    constexpr uint64_t limit = 9'999'999'999'999'999'999U;
    const auto& numbers = forever(randomNumbers<uint64_t>(kManyInputs, 0, limit));
    auto& value = forever(uint64_t{});
    Row("KORVReverseNum", "64 bits", kManyInputs)
        .observe([&](std::size_t) { return bytesOf(value); })
        .with("ours",
              [&](std::size_t i) {
                  value = numbers[i];
                  KORVReverseNum(&value);
              })
        .with("literal",
              [&](std::size_t i) {
                  value = numbers[i];
                  reference::reverse(&value);
              })
        .with("std::to_string, reversed, read back",
              [&](std::size_t i) { value = peers::reverseDigits(numbers[i]); });
}

}  // namespace bench
