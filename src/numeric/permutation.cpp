// A permutation of 1 to n from a key.
#include "korv/numeric.h"

namespace korv {
namespace {

// The remainder of a key, 0 or above, by a count that the compiler knows: it divides by
// multiplying.
template <int32_t count>
int32_t reduce(int32_t key) noexcept {
    const int32_t remainder = key % count;
    return remainder < 0 ? remainder + count : remainder;
}

// What is left of the pool, one number less 1 in 4 bits, the first one lowest.
constexpr uint64_t kFullPool = 0xFEDCBA9876543210u;

// Draws the number at `index` and closes the gap.
int16_t draw(uint64_t& pool, int32_t index) noexcept {
    const uint64_t from = pool >> 4 * index;
    const uint64_t before = (uint64_t{1} << 4 * index) - 1;
    pool = (pool & before) | (pool >> 4 & ~before);
    return static_cast<int16_t>((from & 0xF) + 1);
}

// The same key is reduced modulo each count that remains; it is not divided between the steps.
void permute(int32_t key, int32_t count, int16_t* output) noexcept {
    uint64_t pool = kFullPool;
    switch (count) {
        // clang-format off
        case 16: *output++ = draw(pool, reduce<16>(key)); [[fallthrough]];
        case 15: *output++ = draw(pool, reduce<15>(key)); [[fallthrough]];
        case 14: *output++ = draw(pool, reduce<14>(key)); [[fallthrough]];
        case 13: *output++ = draw(pool, reduce<13>(key)); [[fallthrough]];
        case 12: *output++ = draw(pool, reduce<12>(key)); [[fallthrough]];
        case 11: *output++ = draw(pool, reduce<11>(key)); [[fallthrough]];
        case 10: *output++ = draw(pool, reduce<10>(key)); [[fallthrough]];
        case 9: *output++ = draw(pool, reduce<9>(key)); [[fallthrough]];
        case 8: *output++ = draw(pool, reduce<8>(key)); [[fallthrough]];
        case 7: *output++ = draw(pool, reduce<7>(key)); [[fallthrough]];
        case 6: *output++ = draw(pool, reduce<6>(key)); [[fallthrough]];
        case 5: *output++ = draw(pool, reduce<5>(key)); [[fallthrough]];
        case 4: *output++ = draw(pool, reduce<4>(key)); [[fallthrough]];
        case 3: *output++ = draw(pool, reduce<3>(key)); [[fallthrough]];
        case 2: *output++ = draw(pool, reduce<2>(key)); [[fallthrough]];
        case 1: *output = draw(pool, 0);
            // clang-format on
    }
}

}  // namespace
}  // namespace korv

void PXGetPermutation(int32_t key, int32_t count, int16_t* output) {
    korv::permute(key, count, output);
}
