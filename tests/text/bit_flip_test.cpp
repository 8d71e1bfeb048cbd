// Bits in reverse order, with the target byte cleared before the source byte is read.
#include <cstdint>
#include <random>
#include <vector>

#include "korv/text.h"
#include "reference/bytes.h"
#include "text/places.h"

namespace {

using reference::flipBits;

std::vector<uint8_t> draw(std::size_t count, std::mt19937& random) {
    std::vector<uint8_t> bytes(count);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

TEST(BitFlip, EveryByte) {
    std::vector<uint8_t> source(256), target(256, 0xAA), expected(256);
    for (int i = 0; i < 256; ++i) source[static_cast<std::size_t>(i)] = static_cast<uint8_t>(i);
    flipBits(expected.data(), source.data(), 256);
    RTBITFIELD_FLIP(target.data(), source.data(), 256);
    EXPECT_EQ(expected, target);
    EXPECT_EQ(0x80, target[0x01]);
    EXPECT_EQ(0x03, target[0xC0]);
    EXPECT_EQ(0xFF, target[0xFF]);
    for (int i = 0; i < 256; ++i) {
        uint8_t one = 0xAA;
        RTBITFIELD_FLIP(&one, &source[static_cast<std::size_t>(i)], 1);
        ASSERT_EQ(expected[static_cast<std::size_t>(i)], one);
    }
}

TEST(BitFlip, CountOfZeroTouchesNothing) {
    Fenced<uint8_t> nothing(0);
    RTBITFIELD_FLIP(nothing.data(), nothing.data(), 0);
    EXPECT_TRUE(nothing.intact());
}

TEST(BitFlip, EveryLengthAtEveryPlace) {
    std::mt19937 random(10);
    for (const std::size_t length : everyLength()) {
        const auto count = static_cast<uint32_t>(length);
        const std::vector<uint8_t> bytes = draw(count, random);
        std::vector<uint8_t> expected(count);
        flipBits(expected.data(), bytes.data(), count);
        atEveryPlace<uint8_t>(count, [&](uint8_t* source) {
            std::copy(bytes.begin(), bytes.end(), source);
            Fenced<uint8_t> last(count);
            RTBITFIELD_FLIP(last.data(), source, count);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), last.data())) << count;
            ASSERT_TRUE(last.intact());
            ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), source)) << "source changed";
        });
        Fenced<uint8_t> source(count);
        std::copy(bytes.begin(), bytes.end(), source.data());
        atEveryPlace<uint8_t>(count, [&](uint8_t* target) {
            RTBITFIELD_FLIP(target, source.data(), count);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), target)) << count;
        });
    }
}

TEST(BitFlip, InPlaceYieldsZeros) {
    std::mt19937 random(11);
    for (const std::size_t length : everyLength()) {
        const auto count = static_cast<uint32_t>(length);
        const std::vector<uint8_t> bytes = draw(count, random);
        atEveryPlace<uint8_t>(count, [&](uint8_t* place) {
            std::copy(bytes.begin(), bytes.end(), place);
            RTBITFIELD_FLIP(place, place, count);
            for (uint32_t i = 0; i < count; ++i) ASSERT_EQ(0, place[i]) << i << " of " << count;
        });
    }
}

// Ranges that overlap behave as the bytes one after the other do.
TEST(BitFlip, OverlappingRanges) {
    std::mt19937 random(12);
    constexpr std::size_t margin = 80;
    for (uint32_t count = 0; count <= 70; ++count) {
        for (std::ptrdiff_t shift = -72; shift <= 72; ++shift) {
            const std::vector<uint8_t> bytes = draw(count + 2 * margin, random);
            std::vector<uint8_t> expected = bytes, flipped = bytes;
            flipBits(expected.data() + margin + shift, expected.data() + margin, count);
            RTBITFIELD_FLIP(flipped.data() + margin + shift, flipped.data() + margin, count);
            ASSERT_EQ(expected, flipped) << count << " bytes, target " << shift << " further";
        }
    }
}

TEST(BitFlip, LongOverlappingRanges) {
    std::mt19937 random(13);
    for (std::ptrdiff_t shift = -40; shift <= 40; ++shift) {
        const std::vector<uint8_t> bytes = draw(5000, random);
        std::vector<uint8_t> expected = bytes, flipped = bytes;
        flipBits(expected.data() + 50 + shift, expected.data() + 50, 4900);
        RTBITFIELD_FLIP(flipped.data() + 50 + shift, flipped.data() + 50, 4900);
        ASSERT_EQ(expected, flipped) << shift;
    }
}

}  // namespace
