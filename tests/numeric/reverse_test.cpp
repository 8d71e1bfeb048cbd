// Reversal of byte runs, wide texts and decimal digits.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "korv/numeric.h"
#include "support/fenced.h"

namespace {

using Fence = Fenced<char>::Fence;

// Bytes that are all different for the first 256, with a zero among them.
char byteAt(std::size_t i) {
    return static_cast<char>(i * 37 + 200);
}

TEST(ReverseBytesTest, EveryLengthAtEveryAlignment) {
    for (std::size_t offset = 0; offset < 32; ++offset) {
        for (std::size_t length = 0; length <= 140; ++length) {
            std::string run(240, '\0');
            for (std::size_t i = 0; i < run.size(); ++i) run[i] = byteAt(i);
            std::string expected = run;
            for (std::size_t i = 0; i < length; ++i) {
                expected[offset + i] = run[offset + length - 1 - i];
            }
            char* const start = run.data() + offset;
            ASSERT_EQ(start, KORVRevString(start, static_cast<int32_t>(length)));
            ASSERT_EQ(expected, run) << length << " at " << offset;
        }
    }
}

TEST(ReverseBytesTest, BetweenUnreadablePages) {
    for (Fence fence : {Fence::behind, Fence::before}) {
        for (std::size_t length : {0,  1,  2,  3,  4,  7,  8,  9,   15,  16,   17,   31,   32,   33,
                                   47, 48, 49, 63, 64, 65, 70, 255, 256, 4095, 4096, 4097, 10001}) {
            Fenced<char> run(length, fence);
            for (std::size_t i = 0; i < length; ++i) run[i] = byteAt(i);
            ASSERT_EQ(run.data(), KORVRevString(run.data(), static_cast<int32_t>(length)));
            for (std::size_t i = 0; i < length; ++i) ASSERT_EQ(byteAt(length - 1 - i), run[i]);
            ASSERT_TRUE(run.intact()) << length;
        }
    }
}

TEST(ReverseBytesTest, ZerosMoveLikeOtherBytes) {
    char run[] = {'a', 0, 'b', 'c', 0, 0};
    EXPECT_EQ(run, KORVRevString(run, 6));
    EXPECT_EQ(0, std::memcmp(run, "\0\0cb\0a", 6));
}

TEST(ReverseBytesTest, ALengthBelow2ChangesNothing) {
    for (int32_t length : {1, 0, -1, -2, -3, -70, INT32_MIN}) {
        std::string run = "0123456789abcdefghijklmnop";
        EXPECT_EQ(run.data() + 13, KORVRevString(run.data() + 13, length));
        EXPECT_EQ("0123456789abcdefghijklmnop", run) << length;
    }
}

TEST(ReverseWideTextTest, EveryLengthAtEveryAlignment) {
    for (std::size_t offset = 0; offset < 16; ++offset) {
        for (std::size_t length = 0; length <= 70; ++length) {
            std::wstring text(120, L'\0');
            for (std::size_t i = 0; i < text.size(); ++i) {
                text[i] = static_cast<wchar_t>(0x01000100u * (i + 1));
            }
            text[offset + length] = 0;
            std::wstring expected = text;
            for (std::size_t i = 0; i < length; ++i) {
                expected[offset + i] = text[offset + length - 1 - i];
            }
            ASSERT_EQ(0, KORVRevStringW(text.data() + offset));
            ASSERT_TRUE(expected == text) << length << " at " << offset;
        }
    }
}

TEST(ReverseWideTextTest, BetweenUnreadablePages) {
    for (auto fence : {Fenced<wchar_t>::Fence::behind, Fenced<wchar_t>::Fence::before}) {
        for (std::size_t length = 0; length <= 1100; length += length < 70 ? 1 : 103) {
            Fenced<wchar_t> text(length + 1, fence);
            for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<wchar_t>(i + 1);
            text[length] = 0;
            ASSERT_EQ(0, KORVRevStringW(text.data()));
            for (std::size_t i = 0; i < length; ++i) {
                ASSERT_EQ(static_cast<wchar_t>(length - i), text[i]) << length;
            }
            ASSERT_EQ(L'\0', text[length]);
            ASSERT_TRUE(text.intact()) << length;
        }
    }
}

uint64_t reversedByDivision(uint64_t value) {
    uint64_t result = 0;
    while (value != 0) {
        result = result * 10 + value % 10;
        value /= 10;
    }
    return result;
}

uint64_t reversed(uint64_t value) {
    EXPECT_EQ(0, KORVReverseNum(&value));
    return value;
}

TEST(ReverseNumberTest, KnownNumbers) {
    EXPECT_EQ(0u, reversed(0));
    EXPECT_EQ(5u, reversed(5));
    EXPECT_EQ(21u, reversed(1200));
    EXPECT_EQ(1553255926290448385u, reversed(10000000000000000002u));
    EXPECT_EQ(9876543210123456789u, reversed(9876543210123456789u));
    EXPECT_EQ(5161u, reversed(1615000000000000000u));
}

TEST(ReverseNumberTest, SmallNumbers) {
    for (uint64_t value = 0; value <= 200000; ++value) {
        ASSERT_EQ(reversedByDivision(value), reversed(value)) << value;
    }
}

TEST(ReverseNumberTest, PowersAndTheirNeighbours) {
    for (uint64_t base : {2u, 10u}) {
        for (uint64_t power = 1;; power *= base) {
            for (uint64_t step = 0; step <= 24; ++step) {
                const uint64_t value = power + step - 12;  // wraps below the first powers
                ASSERT_EQ(reversedByDivision(value), reversed(value)) << value;
            }
            for (uint64_t digit = 2; digit <= 9 && power <= UINT64_MAX / digit; ++digit) {
                ASSERT_EQ(reversedByDivision(power * digit), reversed(power * digit));
            }
            if (power > UINT64_MAX / base) break;
        }
    }
}

TEST(ReverseNumberTest, RandomNumbersOfEveryMagnitude) {
    Fenced<uint64_t> value(1);
    std::mt19937_64 random(19);
    for (int i = 0; i < 500000; ++i) {
        const uint64_t number = random() >> (i % 64);
        value[0] = number;
        ASSERT_EQ(0, KORVReverseNum(value.data()));
        ASSERT_EQ(reversedByDivision(number), value[0]) << number;
    }
    EXPECT_TRUE(value.intact());
}

}  // namespace
