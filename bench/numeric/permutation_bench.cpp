// A permutation of 12 positions from a key.
#include <array>

#include "korv/numeric.h"
#include "reference/numeric.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {

void addPermutation() {
    constexpr int32_t count = 12;
    const auto& keys = forever(randomNumbers<int32_t>(kManyInputs, 0, INT32_MAX));
    auto& output = forever(std::array<int16_t, count>{});
    Row("PXGetPermutation", "n = 12", kManyInputs)
        .observe([&](std::size_t) { return bytesOf(output); })
        .with("ours", [&](std::size_t i) { PXGetPermutation(keys[i], count, output.data()); })
        .with("literal", [&](std::size_t i) { reference::permute(keys[i], count, output.data()); });
}

}  // namespace bench
