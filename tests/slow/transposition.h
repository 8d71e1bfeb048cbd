// Transposition of digits, with endless repetition found by remembering every state of the number.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace slow {

inline constexpr int kPermutations[23][4] = {
    {1, 2, 4, 3}, {4, 3, 1, 2}, {3, 4, 1, 2}, {2, 1, 4, 3}, {4, 2, 1, 3}, {1, 4, 3, 2},
    {2, 4, 1, 3}, {3, 1, 4, 2}, {2, 3, 1, 4}, {1, 4, 2, 3}, {4, 1, 3, 2}, {3, 4, 2, 1},
    {3, 2, 1, 4}, {1, 3, 2, 4}, {4, 2, 3, 1}, {2, 4, 3, 1}, {1, 3, 4, 2}, {2, 1, 3, 4},
    {3, 1, 2, 4}, {4, 3, 2, 1}, {4, 1, 2, 3}, {3, 2, 4, 1}, {2, 3, 4, 1}};

inline int32_t wrapped(int64_t value) {
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

// What the output holds afterwards, given what it held before; false when nothing may be written
// and the status is -1.
template <class Char>
bool transposed(const std::basic_string<Char>& input, std::basic_string<Char>& output, int32_t key,
                int shift) {
    if (input.size() > 12) return false;
    if (input.empty()) return true;
    using Work = std::array<Char, 13>;
    Work work{};
    for (std::size_t i = 0; i < input.size(); ++i) work[i] = input[i];
    if (shift != 0) {
        std::vector<Work> seen;
        int sum;
        do {
            sum = 0;
            std::size_t i = 0;
            do {
                const int32_t t = wrapped(int64_t{work[i]} - 0x30 + shift + static_cast<int>(i));
                sum += t % 10;
                work[i] = static_cast<Char>(0x30 + t % 10);
                ++i;
            } while (work[i] != 0);
            if (sum == 0 && std::find(seen.begin(), seen.end(), work) != seen.end()) return false;
            seen.push_back(work);
        } while (sum == 0);
    }
    int row = key % 23;
    if (row < 0) row += 23;
    for (std::size_t k = 0; work[k] != 0; ++k) {
        output[k] = work[k / 4 * 4 + static_cast<std::size_t>(kPermutations[row][k % 4]) - 1];
    }
    return true;
}

}  // namespace slow
