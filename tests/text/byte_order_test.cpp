// Byte order: single values, strings of units up to a terminator or a count, the platform.
#include <bit>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "korv/text.h"
#include "reference/bytes.h"
#include "text/places.h"

namespace {

using reference::swapped;
using reference::swapUnits;

template <class Unit>
struct Swaps;
template <>
struct Swaps<uint16_t> {
    static constexpr auto whole = SwapBytes_2;
    static constexpr auto counted = SwapnBytes_2;
};
template <>
struct Swaps<uint32_t> {
    static constexpr auto whole = SwapBytes_4;
    static constexpr auto counted = SwapnBytes_4;
};

template <class Unit>
class SwapStrings : public testing::Test {
  protected:
    std::mt19937 random{8};

    // Units that are not zero; many have zero bytes.
    std::vector<Unit> draw(std::size_t length) {
        std::vector<Unit> units(length);
        for (Unit& unit : units) {
            do {
                unit = static_cast<Unit>(random() >> 8 * (random() % 4) << 8 * (random() % 4));
            } while (unit == 0);
        }
        return units;
    }
};
using Units = testing::Types<uint16_t, uint32_t>;
TYPED_TEST_SUITE(SwapStrings, Units);

TYPED_TEST(SwapStrings, TheWholeStringIsSwappedAtEveryLengthAndPlace) {
    for (const std::size_t length : everyLength()) {
        std::vector<TypeParam> units = this->draw(length);
        units.push_back(0);
        std::vector<TypeParam> expected = units;
        swapUnits(expected.data(), INT64_MAX);
        atEveryPlace<TypeParam>(units.size(), [&](TypeParam* place) {
            std::copy(units.begin(), units.end(), place);
            ASSERT_EQ(place, Swaps<TypeParam>::whole(place));
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), place)) << length;
        });
    }
}

TYPED_TEST(SwapStrings, NothingBehindTheTerminatorIsSwapped) {
    for (const std::size_t length : everyLength()) {
        std::vector<TypeParam> units = this->draw(length + 1 + 20);
        units[length] = 0;
        std::vector<TypeParam> expected = units;
        swapUnits(expected.data(), INT64_MAX);
        std::vector<TypeParam> whole = units;
        Swaps<TypeParam>::whole(whole.data());
        ASSERT_EQ(expected, whole);
        std::vector<TypeParam> counted = units;
        const auto bytes = static_cast<int32_t>(units.size() * sizeof(TypeParam));
        ASSERT_EQ(counted.data(), Swaps<TypeParam>::counted(counted.data(), bytes));
        ASSERT_EQ(expected, counted);
    }
}

TYPED_TEST(SwapStrings, AnyNumberOfZerosEndsTheString) {
    for (std::size_t length = 0; length <= 20; ++length) {
        for (std::size_t zeros = 1; zeros <= 40; ++zeros) {
            std::vector<TypeParam> units = this->draw(length + zeros + 20);
            std::fill_n(units.begin() + static_cast<std::ptrdiff_t>(length), zeros, TypeParam{0});
            std::vector<TypeParam> expected = units;
            swapUnits(expected.data(), INT64_MAX);
            Swaps<TypeParam>::counted(units.data(),
                                      static_cast<int32_t>(units.size() * sizeof(TypeParam)));
            ASSERT_EQ(expected, units) << length << ' ' << zeros;
        }
    }
}

// The count may end where nothing can be read any more: no terminator is needed there.
TYPED_TEST(SwapStrings, ACountEndsBeforeAnUnreadablePage) {
    constexpr auto size = static_cast<int32_t>(sizeof(TypeParam));
    for (int32_t length = 1; length <= 70; ++length) {
        const std::vector<TypeParam> units = this->draw(static_cast<std::size_t>(length));
        for (int32_t bytes = length * size - size + 1; bytes <= length * size; ++bytes) {
            std::vector<TypeParam> expected = units;
            swapUnits(expected.data(), bytes);
            atEveryPlace<TypeParam>(units.size(), [&](TypeParam* place) {
                std::copy(units.begin(), units.end(), place);
                ASSERT_EQ(place, Swaps<TypeParam>::counted(place, bytes));
                ASSERT_TRUE(std::equal(expected.begin(), expected.end(), place)) << bytes;
            });
        }
    }
}

TYPED_TEST(SwapStrings, EveryCountWithEveryLength) {
    for (std::size_t length = 0; length <= 40; ++length) {
        std::vector<TypeParam> units = this->draw(length);
        units.push_back(0);
        const auto most = static_cast<int32_t>((length + 3) * sizeof(TypeParam));
        Fenced<TypeParam> room(units.size());
        for (int32_t bytes = -5; bytes <= most; ++bytes) {
            std::vector<TypeParam> expected = units;
            swapUnits(expected.data(), bytes);
            std::copy(units.begin(), units.end(), room.data());
            Swaps<TypeParam>::counted(room.data(), bytes);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), room.data()))
                << length << " units, " << bytes << " bytes";
        }
        for (const int32_t bytes : {INT32_MAX, INT32_MAX - 1, INT32_MAX - 3, INT32_MIN}) {
            std::vector<TypeParam> expected = units;
            swapUnits(expected.data(), bytes);
            std::copy(units.begin(), units.end(), room.data());
            Swaps<TypeParam>::counted(room.data(), bytes);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), room.data())) << bytes;
        }
        EXPECT_TRUE(room.intact());
    }
}

// A memory checker sees each byte outside these blocks. The address sanitizer also reports the rest
// of an aligned block of 16 bytes, which the library reads.
#ifndef __SANITIZE_ADDRESS__
TYPED_TEST(SwapStrings, AStringMayEndWithItsBlockBeforeTheCount) {
    for (std::size_t length = 0; length <= 40; ++length) {
        const auto block = std::make_unique<TypeParam[]>(length + 1);
        std::fill_n(block.get(), length, TypeParam{1});
        Swaps<TypeParam>::counted(block.get(), 1000);
        for (std::size_t i = 0; i < length; ++i) {
            EXPECT_EQ(TypeParam{1} << 8 * (sizeof(TypeParam) - 1), block[i])
                << i << " of " << length;
        }
        EXPECT_EQ(0u, block[length]) << length;
    }
}
#endif

TYPED_TEST(SwapStrings, ACountOfNothingReadsNothing) {
    Fenced<TypeParam> nothing(0);
    for (const int32_t bytes : {0, -1, INT32_MIN}) {
        EXPECT_EQ(nothing.data(), Swaps<TypeParam>::counted(nothing.data(), bytes));
    }
    EXPECT_TRUE(nothing.intact());
}

TEST(ByteOrder, KnownStrings) {
    uint16_t whole[] = {0x0041, 0x0042, 0x0000};
    SwapBytes_2(whole);
    EXPECT_EQ(0x4100, whole[0]);
    EXPECT_EQ(0x4200, whole[1]);
    EXPECT_EQ(0, whole[2]);
    const struct {
        int32_t bytes;
        uint16_t first, second;
    } rows[] = {{2, 0x4100, 0x0042}, {3, 0x4100, 0x4200}, {10, 0x4100, 0x4200}, {0, 0x41, 0x42}};
    for (const auto& row : rows) {
        uint16_t units[] = {0x0041, 0x0042, 0x0000};
        SwapnBytes_2(units, row.bytes);
        EXPECT_EQ(row.first, units[0]) << row.bytes;
        EXPECT_EQ(row.second, units[1]) << row.bytes;
        EXPECT_EQ(0, units[2]);
    }
    uint32_t wide[] = {0x11223344, 1, 0};
    SwapBytes_4(wide);
    EXPECT_EQ(0x44332211u, wide[0]);
    EXPECT_EQ(0x01000000u, wide[1]);
}

TEST(ByteOrder, SingleValues) {
    EXPECT_EQ(0x44332211u, RTENDIAN_SWAP_UINT(0x11223344u));
    EXPECT_EQ(0x3412, RTENDIAN_SWAP_USHORT(0x1234));
    for (uint32_t value = 0; value <= 0xFFFF; ++value) {
        const auto unit = static_cast<uint16_t>(value);
        ASSERT_EQ(swapped(unit), RTENDIAN_SWAP_USHORT(unit));
    }
    std::mt19937 random(9);
    for (int i = 0; i < 100000; ++i) {
        const uint32_t value = random();
        ASSERT_EQ(swapped(value), RTENDIAN_SWAP_UINT(value));
    }
    for (int bit = 0; bit < 32; ++bit) {
        const uint32_t value = uint32_t{1} << bit;
        EXPECT_EQ(swapped(value), RTENDIAN_SWAP_UINT(value));
        EXPECT_EQ(swapped(~value), RTENDIAN_SWAP_UINT(~value));
    }
}

TEST(ByteOrder, PlatformIsTold) {
    EXPECT_EQ(std::endian::native == std::endian::big ? 1 : 0, KORV_IsPlatformBigEndian());
}

}  // namespace
