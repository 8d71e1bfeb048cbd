// Byte swaps and bit flips as one writes them without a library.
#include <array>

#include "peers/peers.h"

namespace {

constexpr std::array<uint8_t, 256> kFlipped = [] {
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            if (byte & (1U << bit)) table[byte] |= static_cast<uint8_t>(0x80U >> bit);
        }
    }
    return table;
}();

}  // namespace

void peerSwapUnits(uint32_t* units, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) units[i] = __builtin_bswap32(units[i]);
}

void peerFlipBits(uint8_t* target, const uint8_t* source, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) target[i] = kFlipped[source[i]];
}
