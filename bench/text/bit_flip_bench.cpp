// The bits of 256 bytes, reversed.
#include <array>

#include "korv/text.h"
#include "peers/peers.h"
#include "reference/bytes.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {

void addBitFlip() {
    constexpr uint32_t count = 256;
    constexpr std::size_t inputs = 64;
    const auto& words = forever(randomNumbers<uint32_t>(inputs * count / 4, 0, UINT32_MAX));
    const auto source = [&](std::size_t i) {
        return reinterpret_cast<const uint8_t*>(words.data()) + i * count;
    };
    auto& target = forever(std::array<uint8_t, count>{});
    Row("RTBITFIELD_FLIP", "256 bytes", inputs)
        .observe([&](std::size_t) { return bytesOf(target); })
        .with("ours",
              [&, source](std::size_t i) { RTBITFIELD_FLIP(target.data(), source(i), count); })
        .with("literal",
              [&, source](std::size_t i) { reference::flipBits(target.data(), source(i), count); })
        .with("table of 256 bytes",
              [&, source](std::size_t i) { peerFlipBits(target.data(), source(i), count); });
}

}  // namespace bench
