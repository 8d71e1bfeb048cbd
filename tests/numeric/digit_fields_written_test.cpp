// Integers to digit fields: all four writers against the literal division loop, and nothing written
// outside the field.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "korv/numeric.h"
#include "reference/numeric.h"
#include "support/fenced.h"

namespace {

struct LongToNum {
    using Char = char;
    static constexpr bool terminated = false;
    static constexpr auto& write = PXLongToNum;
};
struct IntToNum {
    using Char = char;
    static constexpr bool terminated = true;
    static constexpr auto& write = PXIntToNum;
};
struct LongToNumW {
    using Char = wchar_t;
    static constexpr bool terminated = true;
    static constexpr auto& write = PXLongToNumW;
};
struct IntToNumW {
    using Char = wchar_t;
    static constexpr bool terminated = true;
    static constexpr auto& write = PXIntToNumW;
};

std::vector<int32_t> edgeValues() {
    std::vector<int32_t> values = {INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1};
    for (int64_t base : {2, 10}) {
        for (int64_t power = 1; power <= INT32_MAX; power *= base) {
            for (int64_t near = power - 3; near <= power + 3; ++near) {
                if (near > INT32_MAX) continue;
                values.push_back(static_cast<int32_t>(near));
                values.push_back(static_cast<int32_t>(-near));
            }
        }
    }
    for (int32_t repeated = 0; repeated < 111111111; repeated = repeated * 10 + 1) {
        for (int32_t digit = 1; digit <= 9; ++digit) {
            values.push_back(repeated * digit);
            values.push_back(-repeated * digit);
        }
    }
    return values;
}

template <class Writer>
class DigitFieldsWrittenTest : public testing::Test {
  protected:
    using Char = typename Writer::Char;
    using Text = std::basic_string<Char>;

    // Writes the value into a buffer of exactly the size that the writer needs.
    void compare(int32_t value, int width) {
        Fenced<Char>& field = fieldOf(width);
        std::fill_n(field.data(), field.size(), Char{0x5C});
        Text expected(static_cast<std::size_t>(width), Char{});
        const int32_t rest = reference::writeField(value, width, expected.data());
        if (Writer::terminated) expected.push_back(0);
        ASSERT_EQ(rest == 0 ? 0 : -1,
                  Writer::write(value, static_cast<int16_t>(width), field.data()))
            << value << " in " << width;
        ASSERT_TRUE(expected == Text(field.data(), field.size())) << value << " in " << width;
    }
    void TearDown() override {
        for (const auto& [width, field] : fields_) EXPECT_TRUE(field->intact()) << width;
    }

  private:
    Fenced<Char>& fieldOf(int width) {
        auto& field = fields_[width];
        if (!field) {
            const std::size_t size = static_cast<std::size_t>(width) + Writer::terminated;
            field = std::make_unique<Fenced<Char>>(size);
        }
        return *field;
    }
    std::map<int, std::unique_ptr<Fenced<Char>>> fields_;
};
using Writers = testing::Types<LongToNum, IntToNum, LongToNumW, IntToNumW>;
TYPED_TEST_SUITE(DigitFieldsWrittenTest, Writers, );

TYPED_TEST(DigitFieldsWrittenTest, KnownFields) {
    struct {
        int32_t value;
        int16_t width;
        const char* field;
        int32_t status;
    } const cases[] = {{42, 5, "00042", 0},
                       {12345, 3, "345", -1},
                       {-5, 3, "00+", 0},
                       {-123, 5, "00/.-", 0},
                       {0, 0, "", 0},
                       {7, 0, "", -1},
                       {-7, 0, "", -1},
                       {0, 4, "0000", 0},
                       {10, 1, "0", -1},
                       {-987654321, 9, "'()*+,-./", 0},
                       {-10, 1, "0", -1},
                       {INT32_MIN, 10, "./,),(-*,(", 0},
                       {INT32_MAX, 10, "2147483647", 0},
                       {INT32_MAX, 9, "147483647", -1}};
    using Char = typename TypeParam::Char;
    for (const auto& c : cases) {
        const std::string narrow = c.field;
        std::basic_string<Char> expected(narrow.begin(), narrow.end());
        expected.push_back(TypeParam::terminated ? Char{0} : Char{0x7E});
        Char field[16];
        std::fill(std::begin(field), std::end(field), Char{0x7E});
        EXPECT_EQ(c.status, TypeParam::write(c.value, c.width, field)) << c.value;
        EXPECT_TRUE(expected == std::basic_string<Char>(field, expected.size()))
            << c.value << " in " << c.width;
        EXPECT_EQ(Char{0x7E}, field[expected.size()]);
    }
}

TYPED_TEST(DigitFieldsWrittenTest, EdgeValuesInEveryWidth) {
    for (int32_t value : edgeValues()) {
        for (int width = 0; width <= 20; ++width) this->compare(value, width);
    }
}

TYPED_TEST(DigitFieldsWrittenTest, SmallValuesInEveryWidth) {
    for (int32_t value = -10100; value <= 10100; ++value) {
        for (int width = 0; width <= 6; ++width) this->compare(value, width);
    }
}

TYPED_TEST(DigitFieldsWrittenTest, RandomValuesOfEveryMagnitude) {
    std::mt19937 random(4201);
    for (int i = 0; i < 1000000; ++i) {
        const int32_t value = static_cast<int32_t>(random()) >> (random() % 32);
        this->compare(value, static_cast<int>(random() % 21));
    }
    for (int i = 0; i < 1000000; ++i) this->compare(static_cast<int32_t>(random()), 9 + i % 3);
}

TYPED_TEST(DigitFieldsWrittenTest, LongFields) {
    for (int width :
         {21, 31, 32, 33, 63, 64, 65, 70, 127, 128, 255, 256, 257, 4096, 32766, 32767}) {
        for (int32_t value : {0, 42, -42, INT32_MAX, INT32_MIN}) this->compare(value, width);
    }
}

TYPED_TEST(DigitFieldsWrittenTest, ANegativeWidthWritesNothing) {
    using Char = typename TypeParam::Char;
    Fenced<Char> none(0);
    std::vector<Char> around(32769 + 16, Char{0x7E});
    const std::vector<Char> before = around;
    for (int16_t width : {-1, -2, -3, -4, -16, -100, -32767, -32768}) {
        EXPECT_EQ(0, TypeParam::write(0, width, none.data()));
        EXPECT_EQ(KORV_FAILURE, TypeParam::write(5, width, none.data()));
        EXPECT_EQ(KORV_FAILURE, TypeParam::write(-5, width, none.data()));
        EXPECT_EQ(KORV_FAILURE, TypeParam::write(5, width, around.data() + 32768));
        EXPECT_TRUE(before == around) << width;
    }
    EXPECT_TRUE(none.intact());
}

TYPED_TEST(DigitFieldsWrittenTest, EveryWidthAtEveryAlignment) {
    using Char = typename TypeParam::Char;
    for (std::size_t offset = 0; offset < 16; ++offset) {
        for (int width = 0; width <= 70; ++width) {
            for (int32_t value : {0, 9, -90, 1234567890, INT32_MIN}) {
                std::basic_string<Char> field(16 + 70 + 17, Char{0x7E});
                std::basic_string<Char> expected = field;
                std::basic_string<Char> digits(static_cast<std::size_t>(width), Char{});
                const int32_t rest = reference::writeField(value, width, digits.data());
                if (TypeParam::terminated) digits.push_back(0);
                expected.replace(offset, digits.size(), digits);
                ASSERT_EQ(rest == 0 ? 0 : -1, TypeParam::write(value, static_cast<int16_t>(width),
                                                               field.data() + offset));
                ASSERT_TRUE(expected == field) << value << " in " << width << " at " << offset;
            }
        }
    }
}

}  // namespace
