// Blocks of 16 bytes that are worked on at once: one SSE2 register, or whatever else the processor
// has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace korv {

// Wide characters are lanes of int32_t: not every compiler compares lanes of wchar_t.
template <class Unit>
struct BlockOf {
    typedef std::conditional_t<std::is_same_v<Unit, wchar_t>, int32_t, Unit> type
        __attribute__((vector_size(16)));
    static constexpr std::size_t units = 16 / sizeof(Unit);
};
template <class Unit>
using Block = typename BlockOf<Unit>::type;

template <class Unit>
constexpr std::size_t kBlockUnits = BlockOf<Unit>::units;

// The address need not be aligned.
template <class Unit>
Block<Unit> loadBlock(const Unit* from) noexcept {
    Block<Unit> block;
    std::memcpy(&block, from, sizeof block);
    return block;
}

template <class Unit, class Vector>
void storeBlock(Unit* to, const Vector& block) noexcept {
    static_assert(sizeof block == 16);
    std::memcpy(to, &block, sizeof block);
}

template <std::size_t bytes = 16>
bool isAligned(const void* address) noexcept {
    return reinterpret_cast<uintptr_t>(address) % bytes == 0;
}

// Whether a few bytes can be read at once without a fault although the first alone is known to be
// there.
template <std::size_t bytes>
bool isOnOnePage(const void* address) noexcept {
    constexpr std::size_t page = 4096;
    return reinterpret_cast<uintptr_t>(address) % page <= page - bytes;
}

// Whether a comparison holds in any lane, or in all. "Equal in all" is one step less than "unequal
// in any".
#ifdef __SSE2__
template <class Vector>
int laneMask(const Vector& lanes) noexcept {
    static_assert(sizeof lanes == 16);
    return _mm_movemask_epi8(reinterpret_cast<const __m128i&>(lanes));
}
template <class Vector>
bool anyLane(const Vector& lanes) noexcept {
    return laneMask(lanes) != 0;
}
template <class Vector>
bool allLanes(const Vector& lanes) noexcept {
    return laneMask(lanes) == 0xFFFF;
}
#else
template <class Vector>
bool anyLane(const Vector& lanes) noexcept {
    static_assert(sizeof lanes == 16);
    uint32_t words[4];
    std::memcpy(words, &lanes, sizeof words);
    return (words[0] | words[1] | words[2] | words[3]) != 0;
}
template <class Vector>
bool allLanes(const Vector& lanes) noexcept {
    return !anyLane(~lanes);
}
#endif

}  // namespace korv
