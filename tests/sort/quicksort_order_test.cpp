// What callers of the sort see: order, direction, context, and calls that have nothing to do.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>

#include "korv/sort.h"
#include "sort/arrays.h"
#include "support/fenced.h"

namespace {

struct Calls {
    uint32_t width = 4;
    unsigned made = 0;
};

int32_t compareCounting(const void* first, const void* second, void* context) {
    auto& calls = *static_cast<Calls*>(context);
    ++calls.made;
    return compareKeys(static_cast<const unsigned char*>(first),
                       static_cast<const unsigned char*>(second), calls.width);
}

int32_t compareLetters(const void* first, const void* second, void*) {
    return *static_cast<const char*>(first) - *static_cast<const char*>(second);
}

TEST(Quicksort, TooFewElementsOrNoWidthMakeNoComparison) {
    Calls calls;
    char array[] = "ba";
    KorvQSort(array, 0, 1, compareCounting, &calls, 1);
    KorvQSort(array, 1, 1, compareCounting, &calls, 1);
    KorvQSort(array, 2, 0, compareCounting, &calls, 1);
    KorvQSort(array, 1000, 0, compareCounting, &calls, 0);
    KorvQSort(nullptr, 0, 1, compareCounting, &calls, 1);
    EXPECT_EQ(0u, calls.made);
    EXPECT_STREQ("ba", array);
}

TEST(Quicksort, DirectionIsAscendingForAnyFlagButZero) {
    for (int flag = 0; flag < 256; ++flag) {
        std::string text = "the quick brown fox";
        std::string expected = text;
        std::sort(expected.begin(), expected.end());
        if (flag == 0) std::reverse(expected.begin(), expected.end());
        KorvQSort(text.data(), static_cast<uint32_t>(text.size()), 1, compareLetters, nullptr,
                  static_cast<uint8_t>(flag));
        EXPECT_EQ(expected, text) << flag;
    }
}

// Up to eight elements are sorted by selection: n * (n - 1) / 2 comparisons, whatever their order.
TEST(Quicksort, EightElementsAreSortedBySelectionNineAreParted) {
    std::mt19937 random(1);
    for (uint32_t count = 2; count <= 8; ++count) {
        Calls calls;
        Bytes array = makeArray(Shape::sorted, count, 4, random);
        KorvQSort(array.data(), count, 4, compareCounting, &calls, 1);
        EXPECT_EQ(count * (count - 1) / 2, calls.made) << count;
    }
    // Nine equal ones: both scans pass over them all once, and nothing is left to sort.
    Calls calls;
    Bytes array = makeArray(Shape::equal, 9, 4, random);
    KorvQSort(array.data(), 9, 4, compareCounting, &calls, 1);
    EXPECT_EQ(16u, calls.made);
}

TEST(Quicksort, ContextReachesEveryComparison) {
    int something = 0;
    void* const contexts[] = {nullptr, &something, reinterpret_cast<void*>(~uintptr_t{0})};
    static void* expected;
    static unsigned calls, others;
    for (void* context : contexts) {
        expected = context;
        calls = others = 0;
        std::mt19937 random(2);
        Bytes array = makeArray(Shape::random, 200, 4, random);
        KorvQSort(
            array.data(), 200, 4,
            [](const void* x, const void* y, void* given) -> int32_t {
                ++calls;
                others += given != expected;
                return std::memcmp(x, y, 4);
            },
            context, 1);
        EXPECT_GT(calls, 200u);
        EXPECT_EQ(0u, others);
    }
}

// Selection moves the first of the greatest elements to the end, so equal ones change places.
TEST(Quicksort, EqualElementsMayChangePlaces) {
    std::string text = "1a1b0c";
    KorvQSort(text.data(), 3, 2, compareLetters, nullptr, 1);
    EXPECT_EQ("0c1b1a", text);
}

TEST(Quicksort, SortsInBothDirectionsAtEveryCountWidthAndPlace) {
    std::mt19937 random(3);
    for (uint32_t count = 0; count <= 300; ++count) {
        const uint32_t width = count % 66 + 1;
        for (const Shape shape : kAllShapes) {
            const uint8_t ascending = random() & 1;
            const Bytes array = makeArray(shape, count, width, random);
            const bool behind = random() & 1;
            Fenced<unsigned char> fenced(array.size(), behind
                                                           ? Fenced<unsigned char>::Fence::behind
                                                           : Fenced<unsigned char>::Fence::before);
            std::copy(array.begin(), array.end(), fenced.data());
            Calls calls{width};
            KorvQSort(fenced.data(), count, width, compareCounting, &calls, ascending);
            const Bytes sorted(fenced.data(), fenced.data() + array.size());
            for (std::size_t at = width; at < sorted.size(); at += width) {
                const int32_t order = compareKeys(&sorted[at - width], &sorted[at], width);
                ASSERT_TRUE(ascending ? order <= 0 : order >= 0) << count << " x " << width;
            }
            ASSERT_EQ(contents(array, width), contents(sorted, width)) << count << " x " << width;
            ASSERT_TRUE(fenced.intact());
        }
    }
}

TEST(Quicksort, SortsInSeveralThreadsAtOnce) {
    std::thread threads[4];
    for (unsigned seed = 0; seed < 4; ++seed) {
        threads[seed] = std::thread([seed] {
            std::mt19937 random(seed);
            for (int round = 0; round < 20; ++round) {
                const Bytes array = makeArray(Shape::random, 500, 12, random);
                Bytes sorted = array;
                Calls calls{12};
                KorvQSort(sorted.data(), 500, 12, compareCounting, &calls, 1);
                EXPECT_EQ(contents(array, 12), contents(sorted, 12));
                for (std::size_t at = 12; at < sorted.size(); at += 12) {
                    ASSERT_LE(compareKeys(&sorted[at - 12], &sorted[at], 12), 0);
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

// A comparison may sort another array by the same function.
TEST(Quicksort, MayBeCalledFromAComparison) {
    std::string text = "hgfedcbaponmlkji";
    KorvQSort(
        text.data(), static_cast<uint32_t>(text.size()), 1,
        [](const void* x, const void* y, void*) -> int32_t {
            std::string inner = "321";
            KorvQSort(inner.data(), 3, 1, compareLetters, nullptr, 1);
            EXPECT_EQ("123", inner);
            return compareLetters(x, y, nullptr);
        },
        nullptr, 1);
    EXPECT_EQ("abcdefghijklmnop", text);
}

}  // namespace
