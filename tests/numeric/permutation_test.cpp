// Permutations from a key: against drawing from a shrinking pool.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "korv/numeric.h"
#include "reference/numeric.h"
#include "support/fenced.h"

namespace {

std::vector<int16_t> permutation(int32_t key, int32_t count) {
    Fenced<int16_t> output(static_cast<std::size_t>(count));
    PXGetPermutation(key, count, output.data());
    EXPECT_TRUE(output.intact()) << key << ' ' << count;
    return std::vector<int16_t>(output.data(), output.data() + output.size());
}

TEST(PermutationTest, KnownPermutations) {
    EXPECT_EQ((std::vector<int16_t>{4, 2, 3, 1}), permutation(7, 4));
    EXPECT_EQ((std::vector<int16_t>{1}), permutation(7, 1));
    EXPECT_EQ((std::vector<int16_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}),
              permutation(0, 16));
    for (int32_t key = 0; key < 10; ++key) {
        EXPECT_EQ(key % 2 ? (std::vector<int16_t>{2, 1}) : (std::vector<int16_t>{1, 2}),
                  permutation(key, 2));
    }
    // -7 leaves remainders of 1 modulo 4, 2 modulo 3 and 1 modulo 2.
    EXPECT_EQ((std::vector<int16_t>{2, 4, 3, 1}), permutation(-7, 4));
}

TEST(PermutationTest, KeysOfEitherSignAndEveryCount) {
    std::vector<int32_t> keys = {INT32_MIN,     INT32_MIN + 1, INT32_MAX,
                                 INT32_MAX - 1, 720720,        -720720};
    for (int32_t key = -150; key <= 150; ++key) keys.push_back(key);
    std::mt19937 random(16);
    for (int i = 0; i < 200; ++i) keys.push_back(static_cast<int32_t>(random()));
    for (int32_t key : keys) {
        for (int32_t count = 1; count <= 16; ++count) {
            const std::vector<int16_t> result = permutation(key, count);
            std::vector<int16_t> expected(result.size());
            reference::permute(key, count, expected.data());
            ASSERT_EQ(expected, result) << key << ' ' << count;
            std::vector<int16_t> sorted = result;
            std::sort(sorted.begin(), sorted.end());
            for (int32_t i = 0; i < count; ++i)
                ASSERT_EQ(i + 1, sorted[static_cast<std::size_t>(i)]);
        }
    }
}

TEST(PermutationTest, ACountOutside1To16WritesNothing) {
    for (int32_t key : {0, 7, -7, INT32_MIN}) {
        for (int32_t count : {0, -1, -16, INT32_MIN, 17, 18, 32, 65537, INT32_MAX}) {
            std::vector<int16_t> output(64, 0x5C5C);
            const std::vector<int16_t> before = output;
            PXGetPermutation(key, count, output.data() + 20);
            EXPECT_EQ(before, output) << key << ' ' << count;
        }
    }
}

}  // namespace
