// A permutation of 1 to n from a key.
#include <algorithm>
#include <numeric>

#include "korv/numeric.h"

namespace korv {
namespace {

constexpr int32_t poolSize = 16;

// The same key is reduced modulo each count that remains; it is not divided between the steps.
void permute(int32_t key, int32_t count, int16_t* output) noexcept {
    if (count < 1 || count > poolSize) return;
    int16_t pool[poolSize];
    std::iota(pool, pool + count, int16_t{1});
    for (int32_t left = count; left > 0; --left) {
        const int32_t remainder = key % left;
        const int32_t drawn = remainder < 0 ? remainder + left : remainder;
        *output++ = pool[drawn];
        std::copy(pool + drawn + 1, pool + left, pool + drawn);
    }
}

}  // namespace
}  // namespace korv

void PXGetPermutation(int32_t key, int32_t count, int16_t* output) {
    korv::permute(key, count, output);
}
