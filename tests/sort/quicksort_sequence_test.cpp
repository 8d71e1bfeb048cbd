// The sort makes the comparisons that a plain transcription of it makes: the same elements at the
// same places in the same order, and the same moves between them.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "korv/sort.h"
#include "reference/quicksort.h"
#include "sort/arrays.h"
#include "support/fenced.h"

namespace {

using reference::Recorder;

using Order = std::function<int32_t(const unsigned char*, const unsigned char*)>;

// Sorts `array` both ways: the library's copy ends `shift` bytes before an unreadable page. Returns
// the sorted array.
Bytes expectSameSequence(const Bytes& array, uint32_t width, uint8_t ascending,
                         const std::function<Order()>& makeOrder, std::size_t shift = 0) {
    const auto count = static_cast<uint32_t>(array.size() / width);
    Bytes plain = array;
    Recorder expected{plain.data(), width, makeOrder(), {}};
    reference::quicksort(plain.data(), count, width, Recorder::compare, &expected, ascending);

    Fenced<unsigned char> fenced(array.size() + shift);
    std::copy(array.begin(), array.end(), fenced.data());
    Recorder made{fenced.data(), width, makeOrder(), {}};
    KorvQSort(fenced.data(), count, width, Recorder::compare, &made, ascending);

    const std::string what = std::to_string(count) + " elements of " + std::to_string(width) +
                             (ascending ? " bytes, ascending" : " bytes, descending");
    EXPECT_EQ(expected.made.size(), made.made.size()) << what;
    EXPECT_TRUE(expected.made == made.made) << what;
    EXPECT_TRUE(std::equal(plain.begin(), plain.end(), fenced.data())) << what;
    EXPECT_TRUE(fenced.intact()) << what;
    for (std::size_t i = 0; i < shift; ++i) {
        EXPECT_EQ(fenced.canary, static_cast<char>(fenced[array.size() + i])) << what;
    }
    EXPECT_EQ(contents(array, width), contents(plain, width));
    return plain;
}

std::function<Order()> byKey(uint32_t width) {
    return [width] {
        return [width](const unsigned char* x, const unsigned char* y) {
            return compareKeys(x, y, width);
        };
    };
}

TEST(QuicksortSequence, EveryShortCountInEveryShape) {
    std::mt19937 random(1);
    for (uint32_t count = 0; count <= 70; ++count) {
        for (const Shape shape : kAllShapes) {
            for (const uint32_t width : {1u, 4u, 6u, 8u, 16u}) {
                const Bytes array = makeArray(shape, count, width, random);
                for (const uint8_t ascending : {0, 1}) {
                    expectSameSequence(array, width, ascending, byKey(width));
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST(QuicksortSequence, EveryWidthAtEveryAlignment) {
    std::mt19937 random(2);
    std::vector<uint32_t> widths{48, 63, 64, 65, 100, 300};
    for (uint32_t width = 1; width <= 40; ++width) widths.push_back(width);
    for (const uint32_t width : widths) {
        for (std::size_t shift = 0; shift < 16; ++shift) {
            const auto count = static_cast<uint32_t>(2 + random() % 60);
            const Shape shape = kAllShapes[random() % std::size(kAllShapes)];
            expectSameSequence(makeArray(shape, count, width, random), width,
                               static_cast<uint8_t>(shift & 1), byKey(width), shift);
            if (HasFailure()) return;
        }
    }
}

TEST(QuicksortSequence, CountsUpToThreeHundred) {
    std::mt19937 random(3);
    for (uint32_t count = 71; count <= 300; ++count) {
        for (const Shape shape : {Shape::random, Shape::fewDistinct, Shape::organPipe}) {
            const uint32_t width = 1 + random() % 12;
            expectSameSequence(makeArray(shape, count, width, random), width,
                               static_cast<uint8_t>(random() & 1), byKey(width));
            if (HasFailure()) return;
        }
    }
}

TEST(QuicksortSequence, Thousands) {
    std::mt19937 random(4);
    for (const Shape shape : {Shape::sorted, Shape::reversed, Shape::random, Shape::fewDistinct}) {
        for (const uint32_t width : {2u, 8u}) {
            expectSameSequence(makeArray(shape, 4001, width, random), width, 1, byKey(width));
            if (HasFailure()) return;
        }
    }
}

// Every order of few elements that differ, around the count from which partitions are made.
TEST(QuicksortSequence, EveryPermutationOfFewElements) {
    for (uint32_t count = 2; count <= 6; ++count) {
        Bytes array(count);
        for (uint32_t i = 0; i < count; ++i) array[i] = static_cast<unsigned char>(i);
        do {
            expectSameSequence(array, 1, 1, byKey(1));
            expectSameSequence(array, 1, 0, byKey(1));
            if (HasFailure()) return;
        } while (std::next_permutation(array.begin(), array.end()));
    }
    std::mt19937 random(5);
    for (uint32_t count = 7; count <= 12; ++count) {
        Bytes array(count);
        for (int round = 0; round < 600; ++round) {
            for (uint32_t i = 0; i < count; ++i) array[i] = static_cast<unsigned char>(i / 2);
            std::shuffle(array.begin(), array.end(), random);
            expectSameSequence(array, 1, static_cast<uint8_t>(round & 1), byKey(1));
            if (HasFailure()) return;
        }
    }
}

// A comparison that contradicts itself ends all the same, with the elements it began with.
TEST(QuicksortSequence, InconsistentComparisons) {
    std::mt19937 random(6);
    const auto always = [](int32_t answer) {
        return [answer] {
            return [answer](const unsigned char*, const unsigned char*) { return answer; };
        };
    };
    const auto drawn = [] {
        return [answers = std::mt19937(7)](const unsigned char*, const unsigned char*) mutable {
            return static_cast<int32_t>(answers() % 3) - 1;
        };
    };
    for (uint32_t count = 0; count <= 150; ++count) {
        const uint32_t width = 1 + random() % 9;
        const Bytes array = makeArray(Shape::random, count, width, random);
        for (const uint8_t ascending : {0, 1}) {
            expectSameSequence(array, width, ascending, always(1));
            expectSameSequence(array, width, ascending, always(-1));
            expectSameSequence(array, width, ascending, always(0));
            expectSameSequence(array, width, ascending, drawn);
            if (HasFailure()) return;
        }
    }
}

// Only the sign of an answer counts.
TEST(QuicksortSequence, AnswersOfAnySize) {
    std::mt19937 random(8);
    for (const int32_t size : {1, 0x100, 0x10000, INT32_MAX}) {
        const Bytes array = makeArray(Shape::random, 60, 4, random);
        const Bytes sorted = expectSameSequence(array, 4, 1, [size] {
            return [size](const unsigned char* x, const unsigned char* y) {
                const int32_t order = compareKeys(x, y, 4);
                return order > 0 ? size : order < 0 ? -size - 1 : 0;
            };
        });
        for (std::size_t at = 4; at < sorted.size(); at += 4) {
            EXPECT_LE(compareKeys(&sorted[at - 4], &sorted[at], 4), 0);
        }
    }
}

// Partitions that wait are as many as the base-2 logarithm of the count at most.
TEST(QuicksortSequence, AHundredThousandElements) {
    std::mt19937 random(9);
    const uint32_t count = 100000;
    Bytes plain = makeArray(Shape::random, count, 4, random), sorted = plain;
    const KorvCompare compare = [](const void* x, const void* y, void*) -> int32_t {
        return std::memcmp(x, y, 4);
    };
    EXPECT_LE(reference::quicksort(plain.data(), count, 4, compare, nullptr, 1), 17);
    KorvQSort(sorted.data(), count, 4, compare, nullptr, 1);
    EXPECT_TRUE(plain == sorted);
    for (std::size_t at = 4; at < sorted.size(); at += 4) {
        ASSERT_LE(std::memcmp(&sorted[at - 4], &sorted[at], 4), 0);
    }
}

}  // namespace
