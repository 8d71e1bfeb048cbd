// Digit counts of integers against the plain division loop.
#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "korv/datatypes.h"
#include "reference/counts.h"
#include "support/fenced.h"

namespace {

template <class T, class Count>
void compare(Count count, T value, Fenced<uint32_t>& counter) {
    for (uint32_t start : {0u, 7u, 0xFFFFFFFFu}) {
        counter[0] = start;
        ASSERT_EQ(0, count(value, counter.data()));
        uint32_t expected = start;
        reference::countDigits(value, &expected);
        ASSERT_EQ(expected, counter[0]) << value;
    }
}

// Powers of `base` with their neighbours, in both signs.
template <class T, class Count>
void compareAround(Count count, uint64_t base, Fenced<uint32_t>& counter) {
    const uint64_t limit = static_cast<uint64_t>(std::numeric_limits<T>::max());
    for (uint64_t power = 1;; power *= base) {
        for (int64_t step = -12; step <= 12; ++step) {
            const uint64_t near = power + static_cast<uint64_t>(step);
            if (near > limit) continue;
            compare<T>(count, static_cast<T>(near), counter);
            compare<T>(count, static_cast<T>(-static_cast<T>(near)), counter);
        }
        if (power > limit / base) break;
    }
}

TEST(DigitCountTest, KnownCounts) {
    uint32_t counter = 42;
    EXPECT_EQ(0, KORVGetIntDigitCount(0, &counter));
    EXPECT_EQ(0, KORVGetLongLongDigitCount(0, &counter));
    EXPECT_EQ(42u, counter);
    EXPECT_EQ(0, KORVGetIntDigitCount(-120, &counter));
    EXPECT_EQ(45u, counter);
    counter = 0;
    EXPECT_EQ(0, KORVGetIntDigitCount(INT32_MIN, &counter));
    EXPECT_EQ(10u, counter);
    counter = 0;
    EXPECT_EQ(0, KORVGetLongLongDigitCount(INT64_MIN, &counter));
    EXPECT_EQ(19u, counter);
    counter = 0;
    EXPECT_EQ(0, KORVGetLongLongDigitCount(INT64_MAX, &counter));
    EXPECT_EQ(19u, counter);
}

TEST(DigitCountTest, PowersAndTheirNeighbours) {
    Fenced<uint32_t> counter(1);
    for (uint64_t base : {10u, 2u}) {
        compareAround<int32_t>(KORVGetIntDigitCount, base, counter);
        compareAround<int64_t>(KORVGetLongLongDigitCount, base, counter);
    }
    for (int32_t value : {INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1}) {
        compare<int32_t>(KORVGetIntDigitCount, value, counter);
    }
    for (int64_t value : {INT64_MIN, INT64_MIN + 1, INT64_MAX, INT64_MAX - 1, int64_t{INT32_MIN},
                          int64_t{UINT32_MAX}}) {
        compare<int64_t>(KORVGetLongLongDigitCount, value, counter);
    }
    EXPECT_TRUE(counter.intact());
}

TEST(DigitCountTest, SmallValues) {
    Fenced<uint32_t> counter(1);
    for (int32_t value = -110000; value <= 110000; ++value) {
        compare<int32_t>(KORVGetIntDigitCount, value, counter);
        compare<int64_t>(KORVGetLongLongDigitCount, value, counter);
    }
}

TEST(DigitCountTest, RandomValuesOfEveryMagnitude) {
    Fenced<uint32_t> counter(1);
    std::mt19937_64 random(20240601);
    for (int i = 0; i < 300000; ++i) {
        const uint64_t bits = random();
        compare<int32_t>(KORVGetIntDigitCount,
                         static_cast<int32_t>(static_cast<uint32_t>(bits)) >> (bits >> 59),
                         counter);
        compare<int64_t>(KORVGetLongLongDigitCount, static_cast<int64_t>(random()) >> (bits >> 58),
                         counter);
    }
    EXPECT_TRUE(counter.intact());
}

}  // namespace
