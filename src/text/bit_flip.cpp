// Reversal of the bit order of bytes.
#include "korv/text.h"

namespace korv {
namespace {

uint8_t flipped(uint8_t byte) noexcept {
    const auto swapHalves = [](unsigned bits, unsigned mask, unsigned distance) {
        return (bits & mask) << distance | (bits >> distance & mask);
    };
    return static_cast<uint8_t>(
        swapHalves(swapHalves(swapHalves(byte, 0x0F, 4), 0x33, 2), 0x55, 1));
}

}  // namespace
}  // namespace korv

void RTBITFIELD_FLIP(uint8_t* target, const uint8_t* source, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        // Cleared before the source is read: where both are the same byte, zero is what remains.
        target[i] = 0;
        target[i] = korv::flipped(source[i]);
    }
}
