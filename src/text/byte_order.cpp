// Byte order: swaps of values and of strings of 16-bit and 32-bit units.
#include <bit>
#include <cstdint>

#include "common/block.h"
#include "korv/text.h"

namespace korv {
namespace {

uint16_t swapped(uint16_t value) noexcept {
    return __builtin_bswap16(value);
}
uint32_t swapped(uint32_t value) noexcept {
    return __builtin_bswap32(value);
}
Block<uint16_t> swapped(Block<uint16_t> block) noexcept {
    return block << 8 | block >> 8;
}
Block<uint32_t> swapped(Block<uint32_t> block) noexcept {
    const auto pairs =
        reinterpret_cast<Block<uint32_t>>(swapped(reinterpret_cast<Block<uint16_t>>(block)));
    return pairs << 16 | pairs >> 16;
}

// Swaps one by one while `left` lasts, to a zero unit (false), or until a unit is aligned, if asked
// for.
template <class Unit>
bool swapOneByOne(Unit*& units, std::size_t& left, bool toAligned) noexcept {
    for (; left > 0 && !(toAligned && isAligned(units)); --left, ++units) {
        if (*units == 0) return false;
        *units = swapped(*units);
    }
    return true;
}

// Swaps up to `left` units, or to a zero unit. A unit is read only when none before it is zero, but
// for aligned blocks, which lie within the count and never reach into another page.
template <class Unit>
void swapUnits(Unit* units, std::size_t left) noexcept {
    if (!swapOneByOne(units, left, true)) return;
    for (; left >= kBlockUnits<Unit>; left -= kBlockUnits<Unit>, units += kBlockUnits<Unit>) {
        const Block<Unit> block = loadBlock(units);
        if (anyLane(block == 0)) break;
        storeBlock(units, swapped(block));
    }
    swapOneByOne(units, left, false);
}

template <class Unit>
Unit* swapString(Unit* units) noexcept {
    for (Unit* at = units; *at; ++at) *at = swapped(*at);
    return units;
}

// A unit that the byte count cuts through is swapped as a whole.
template <class Unit>
Unit* swapCounted(Unit* units, int32_t bytes) noexcept {
    if (bytes > 0)
        swapUnits(units, (static_cast<std::size_t>(bytes) + sizeof(Unit) - 1) / sizeof(Unit));
    return units;
}

}  // namespace
}  // namespace korv

uint32_t RTENDIAN_SWAP_UINT(uint32_t value) {
    return korv::swapped(value);
}

uint16_t RTENDIAN_SWAP_USHORT(uint16_t value) {
    return korv::swapped(value);
}

uint16_t* SwapBytes_2(uint16_t* units) {
    return korv::swapString(units);
}

uint32_t* SwapBytes_4(uint32_t* units) {
    return korv::swapString(units);
}

uint16_t* SwapnBytes_2(uint16_t* units, int32_t bytes) {
    return korv::swapCounted(units, bytes);
}

uint32_t* SwapnBytes_4(uint32_t* units, int32_t bytes) {
    return korv::swapCounted(units, bytes);
}

int32_t KORV_IsPlatformBigEndian(void) {
    return std::endian::native == std::endian::big;
}
