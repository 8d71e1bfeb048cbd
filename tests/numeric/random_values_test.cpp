// Random values are those of the system library's generator, reduced to the range.
#include <gtest/gtest.h>

#include <cstdlib>

#include "korv/numeric.h"

namespace {

TEST(RandomValuesTest, FollowTheSystemGenerator) {
    for (int32_t range : {1, 2, 3, 10, 1000, 65536, INT32_MAX, -1, -7, -1000, INT32_MIN}) {
        for (uint8_t flag : {0, 2, 255}) {
            int expected[20];
            std::srand(4711);
            for (int& value : expected) value = std::rand() % range;
            std::srand(4711);
            for (int value : expected) {
                ASSERT_EQ(value, KORVRandomValue(range, flag)) << range << " flag " << int{flag};
            }
        }
    }
}

TEST(RandomValuesTest, StayInTheRange) {
    for (int32_t range : {1, 2, 7, 100, -5}) {
        for (int i = 0; i < 2000; ++i) {
            const int32_t value = KORVRandomValue(range, i == 0);
            ASSERT_GE(value, 0);
            ASSERT_LT(value, std::abs(range));
        }
    }
}

TEST(RandomValuesTest, ARangeOf0Gives0) {
    for (uint8_t flag : {0, 1, 2}) EXPECT_EQ(0, KORVRandomValue(0, flag));
}

}  // namespace
