// Random values from a generator and a clock that this program defines in place of the system's:
// which calls are made to them, and when.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <vector>

#include "korv/numeric.h"

namespace {

int drawn = 0;  // what the generator gives
int draws = 0;  // how often it was asked
std::vector<unsigned> seeds;
std::time_t now = 0;

}  // namespace

extern "C" {

int rand() noexcept {
    ++draws;
    return drawn;
}
void srand(unsigned seed) noexcept {
    seeds.push_back(seed);
}
std::time_t time(std::time_t* result) noexcept {
    if (result) *result = now;
    return now;
}
}

namespace {

class GeneratorTest : public testing::Test {
  protected:
    void SetUp() override {
        drawn = 0;
        draws = 0;
        seeds.clear();
        now = 1717200000;
    }
};

TEST_F(GeneratorTest, OnlyAFlagOfExactly1SeedsWithTheTime) {
    for (int flag = 0; flag < 256; ++flag) {
        seeds.clear();
        KORVRandomValue(10, static_cast<uint8_t>(flag));
        ASSERT_EQ(flag == 1 ? std::vector<unsigned>{1717200000u} : std::vector<unsigned>{}, seeds)
            << flag;
    }
    EXPECT_EQ(256, draws) << "one draw a value";
}

TEST_F(GeneratorTest, EveryCallWithFlag1SeedsAgain) {
    KORVRandomValue(10, 1);
    now = 5;
    KORVRandomValue(10, 1);
    KORVRandomValue(10, 0);
    EXPECT_EQ((std::vector<unsigned>{1717200000u, 5u}), seeds);
}

TEST_F(GeneratorTest, ATimeBeyond32BitsIsCut) {
    now = static_cast<std::time_t>(0x123456789);
    KORVRandomValue(10, 1);
    EXPECT_EQ(std::vector<unsigned>{0x23456789u}, seeds);
}

TEST_F(GeneratorTest, ADrawIsMadePositiveAndReducedToTheRange) {
    struct {
        int drawn;
        int32_t range, value;
    } const cases[] = {{7, 5, 2},
                       {-7, 5, 2},
                       {7, -5, 2},
                       {-7, -5, 2},
                       {0, 5, 0},
                       {5, 5, 0},
                       {-5, 5, 0},
                       {4, 5, 4},
                       {123, 1, 0},
                       {-123, 1, 0},
                       {123, INT32_MIN, 123},
                       {INT32_MAX, 10, 7},
                       {-INT32_MAX, 10, 7},
                       {INT32_MAX, INT32_MAX, 0},
                       {7, 0, 0}};
    for (const auto& c : cases) {
        drawn = c.drawn;
        EXPECT_EQ(c.value, KORVRandomValue(c.range, 0)) << c.drawn << " in " << c.range;
    }
}

}  // namespace
