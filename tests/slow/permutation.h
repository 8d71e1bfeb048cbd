// A permutation drawn from a shrinking pool.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace slow {

inline std::vector<int16_t> drawn(int32_t key, int32_t count) {
    std::vector<int16_t> pool;
    for (int32_t i = 1; i <= count; ++i) pool.push_back(static_cast<int16_t>(i));
    std::vector<int16_t> result;
    while (!pool.empty()) {
        const int64_t size = static_cast<int64_t>(pool.size());
        const int64_t remainder = (key % size + size) % size;
        result.push_back(pool[static_cast<std::size_t>(remainder)]);
        pool.erase(pool.begin() + static_cast<std::ptrdiff_t>(remainder));
    }
    return result;
}

}  // namespace slow
