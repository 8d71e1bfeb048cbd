// What the conversions of Unicode units hand to the companion library, and what they make of its
// answers. This program has the companion's two functions in itself.
#include <cstdint>

#include <gtest/gtest.h>

#include "korv/datacnv.h"
#include "korv/text.h"

namespace {

struct {
    // The script.
    int32_t status = 0;
    bool counts = true;  // whether the count is written
    uint32_t count = 0;
    // What came.
    int calls = 0;
    const void* source = nullptr;
    int32_t sourceUnits = 0;
    void* target = nullptr;
    int32_t targetUnits = 0;
    uint32_t countBefore = 0;
    bool from16 = false;
} companion;

int32_t answer(const void* source, int32_t sourceUnits, void* target, int32_t targetUnits,
               uint32_t* count, bool from16) {
    ++companion.calls;
    companion.source = source;
    companion.sourceUnits = sourceUnits;
    companion.target = target;
    companion.targetUnits = targetUnits;
    companion.countBefore = *count;
    companion.from16 = from16;
    if (companion.counts) *count = companion.count;
    return companion.status;
}

uint16_t units16[4];
wchar_t units32[4];

class Companion : public testing::Test {
  protected:
    void SetUp() override { companion = {}; }
};

}  // namespace

extern "C" {
KORV_API int32_t Convert16To32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                               int32_t targetUnits, uint32_t* count) {
    return answer(source, sourceUnits, target, targetUnits, count, true);
}
KORV_API int32_t Convert32To16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                               int32_t targetUnits, uint32_t* count) {
    return answer(source, sourceUnits, target, targetUnits, count, false);
}
}

namespace {

// Halves and quarters of signed sizes are truncated toward zero.
TEST_F(Companion, GetsTheUnitsOfSignedSizes) {
    const struct {
        int32_t bytes, halves, quarters;
    } rows[] = {{0, 0, 0},
                {1, 0, 0},
                {2, 1, 0},
                {3, 1, 0},
                {4, 2, 1},
                {7, 3, 1},
                {8, 4, 2},
                {-1, 0, 0},
                {-2, -1, 0},
                {-3, -1, 0},
                {-4, -2, -1},
                {-7, -3, -1},
                {INT32_MAX, 0x3FFFFFFF, 0x1FFFFFFF},
                {INT32_MIN, -0x40000000, -0x20000000},
                {INT32_MIN + 1, -0x3FFFFFFF, -0x1FFFFFFF}};
    uint32_t count = 0;
    for (const auto& row : rows) {
        EXPECT_EQ(0, KORV_Utf16ToUtf32(units16, row.bytes, units32, 16, &count));
        EXPECT_EQ(row.halves, companion.sourceUnits) << row.bytes;
        EXPECT_EQ(4, companion.targetUnits);
        EXPECT_EQ(0, KORV_Utf16ToUtf32(units16, 8, units32, row.bytes, &count));
        EXPECT_EQ(4, companion.sourceUnits);
        EXPECT_EQ(row.quarters, companion.targetUnits) << row.bytes;
        EXPECT_EQ(0, KORV_Utf32ToUtf16(units32, row.bytes, units16, 8, &count));
        EXPECT_EQ(row.quarters, companion.sourceUnits) << row.bytes;
        EXPECT_EQ(4, companion.targetUnits);
    }
}

// The size of a UTF-16 target alone is unsigned.
TEST_F(Companion, GetsTheUnitsOfAnUnsignedTargetSize) {
    const struct {
        uint32_t bytes;
        int32_t units;
    } rows[] = {{0, 0},
                {1, 0},
                {2, 1},
                {7, 3},
                {0x7FFFFFFF, 0x3FFFFFFF},
                {0x80000000, 0x40000000},
                {0x80000001, 0x40000000},
                {0xFFFFFFFE, 0x7FFFFFFF},
                {0xFFFFFFFF, 0x7FFFFFFF}};
    uint32_t count = 0;
    for (const auto& row : rows) {
        EXPECT_EQ(0, KORV_Utf32ToUtf16(units32, 16, units16, row.bytes, &count));
        EXPECT_EQ(row.units, companion.targetUnits) << row.bytes;
    }
}

TEST_F(Companion, GetsTheBuffersAndACountOfZero) {
    uint32_t count = 77;
    EXPECT_EQ(0, KORV_Utf16ToUtf32(units16, 8, units32, 16, &count));
    EXPECT_EQ(1, companion.calls);
    EXPECT_TRUE(companion.from16);
    EXPECT_EQ(units16, companion.source);
    EXPECT_EQ(units32, companion.target);
    EXPECT_EQ(0u, companion.countBefore);

    companion = {};
    count = 77;
    EXPECT_EQ(0, KORV_Utf32ToUtf16(units32, 16, units16, 8, &count));
    EXPECT_EQ(1, companion.calls);
    EXPECT_FALSE(companion.from16);
    EXPECT_EQ(units32, companion.source);
    EXPECT_EQ(units16, companion.target);
    EXPECT_EQ(0u, companion.countBefore);
}

TEST_F(Companion, ReportsItsCountUnchanged) {
    for (const uint32_t reported : {0u, 1u, 5u, 0x80000000u, 0xFFFFFFFFu}) {
        companion.count = reported;
        uint32_t count = 77;
        EXPECT_EQ(0, KORV_Utf16ToUtf32(units16, 8, units32, 16, &count));
        EXPECT_EQ(reported, count);
        count = 77;
        EXPECT_EQ(0, KORV_Utf32ToUtf16(units32, 16, units16, 8, &count));
        EXPECT_EQ(reported, count);
    }
}

TEST_F(Companion, ThatCountsNothingYieldsZero) {
    companion.counts = false;
    uint32_t count = 77;
    EXPECT_EQ(0, KORV_Utf16ToUtf32(units16, 8, units32, 16, &count));
    EXPECT_EQ(0u, count);
    count = 77;
    EXPECT_EQ(0, KORV_Utf32ToUtf16(units32, 16, units16, 8, &count));
    EXPECT_EQ(0u, count);
}

TEST_F(Companion, StatusIsPassedOnAndTheCountLeftAlone) {
    companion.count = 5;
    for (const int32_t status : {-1, 1, 107, 202, INT32_MIN, INT32_MAX}) {
        companion.status = status;
        uint32_t count = 77;
        EXPECT_EQ(status, KORV_Utf16ToUtf32(units16, 8, units32, 16, &count));
        EXPECT_EQ(77u, count);
        EXPECT_EQ(status, KORV_Utf32ToUtf16(units32, 16, units16, 8, &count));
        EXPECT_EQ(77u, count);
    }
}

}  // namespace
