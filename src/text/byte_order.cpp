// Byte order: swaps of values and of strings of 16-bit and 32-bit units.
#include <bit>

#include "korv/text.h"

namespace korv {
namespace {

uint16_t swapped(uint16_t value) noexcept {
    return __builtin_bswap16(value);
}
uint32_t swapped(uint32_t value) noexcept {
    return __builtin_bswap32(value);
}

template <class Unit>
Unit* swapString(Unit* units) noexcept {
    for (Unit* at = units; *at; ++at) *at = swapped(*at);
    return units;
}

// A unit that the byte count cuts through is swapped as a whole. The count is looked at first: a
// unit behind it is not read.
template <class Unit>
Unit* swapCounted(Unit* units, int32_t bytes) noexcept {
    if (bytes <= 0) return units;
    const std::size_t count = (static_cast<std::size_t>(bytes) + sizeof(Unit) - 1) / sizeof(Unit);
    for (std::size_t i = 0; i < count && units[i]; ++i) units[i] = swapped(units[i]);
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
