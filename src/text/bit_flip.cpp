// Reversal of the bit order of bytes.
#include "common/block.h"
#include "korv/text.h"

namespace korv {
namespace {

// Exchanges halves, then quarters, then neighbours; of one byte or of each byte in a block. Shifted
// in wider lanes, a byte takes in bits of its neighbour, which the mask drops.
template <class Bits>
Bits flipped(Bits bits) noexcept {
    bits = (bits & 0x0F0F0F0F) << 4 | (bits >> 4 & 0x0F0F0F0F);
    bits = (bits & 0x33333333) << 2 | (bits >> 2 & 0x33333333);
    return (bits & 0x55555555) << 1 | (bits >> 1 & 0x55555555);
}

// Each target byte is cleared before its source byte is read: where both are the same, zero
// remains.
void flipOneByOne(uint8_t* target, const uint8_t* source, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = 0;
        target[i] = static_cast<uint8_t>(flipped<uint32_t>(source[i]));
    }
}

void flip(uint8_t* target, const uint8_t* source, std::size_t count) noexcept {
    std::size_t i = 0;
    // Where a target byte is a source byte still to be read, only one by one will do.
    const bool intoSource = target >= source && target < source + count;
    if (!intoSource) {
        for (; i + kBlockUnits<uint8_t> <= count; i += kBlockUnits<uint8_t>) {
            const auto block = reinterpret_cast<Block<uint32_t>>(loadBlock(source + i));
            storeBlock(target + i, flipped(block));
        }
    }
    flipOneByOne(target + i, source + i, count - i);
}

}  // namespace
}  // namespace korv

void RTBITFIELD_FLIP(uint8_t* target, const uint8_t* source, uint32_t count) {
    korv::flip(target, source, count);
}
