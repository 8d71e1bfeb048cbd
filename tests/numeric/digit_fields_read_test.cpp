// Digit fields to integers: the three readers against a literal reading of digits and blank tail.
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

constexpr int32_t kUntouched = 0x5A5AA5A5;

struct NumToLong {
    using Char = char;
    static constexpr bool wide = false;
    static constexpr auto& read = PXNumToLong;
};
struct CharNumToInt {
    using Char = char;
    static constexpr bool wide = false;
    static constexpr auto& read = KORVCharNumToInt;
};
struct NumToLongW {
    using Char = wchar_t;
    static constexpr bool wide = true;
    static constexpr auto& read = PXNumToLongW;
};

using reference::readField;

template <class Reader>
class DigitFieldsReadTest : public testing::Test {
  protected:
    using Char = typename Reader::Char;
    using Text = std::basic_string<Char>;

    static Text text(const std::string& narrow) { return Text(narrow.begin(), narrow.end()); }

    // Reads from a copy of the field that ends at an unreadable page.
    void compare(const Text& field, int digits, int width) {
        auto& copy = fields_[field.size()];
        if (!copy) copy = std::make_unique<Fenced<Char>>(field.size());
        std::copy(field.begin(), field.end(), copy->data());
        compareAt(copy->data(), digits, width);
    }
    void compareAt(const Char* field, int digits, int width) {
        int32_t expected = kUntouched;
        const bool isNumber = readField(field, digits, width, expected);
        EXPECT_EQ(isNumber ? 0 : -1, read(field, digits, width)) << digits << " of " << width;
        ASSERT_EQ(expected, value_[0]) << digits << " of " << width;
    }
    int32_t read(const Char* field, int digits, int width) {
        value_[0] = kUntouched;
        return Reader::read(field, static_cast<int16_t>(digits), static_cast<int16_t>(width),
                            value_.data());
    }
    int32_t value() { return value_[0]; }
    void TearDown() override {
        EXPECT_TRUE(value_.intact());
        for (const auto& [size, field] : fields_) EXPECT_TRUE(field->intact()) << size;
    }

  private:
    Fenced<int32_t> value_{std::size_t{1}, Fenced<int32_t>::Fence::behind};
    std::map<std::size_t, std::unique_ptr<Fenced<Char>>> fields_;
};
using Readers = testing::Types<NumToLong, CharNumToInt, NumToLongW>;
TYPED_TEST_SUITE(DigitFieldsReadTest, Readers, );

TYPED_TEST(DigitFieldsReadTest, KnownFields) {
    struct {
        const char* field;
        int digits, width, status;
        int32_t value;
    } const cases[] = {
        {"0042  ", 4, 6, 0, 42},
        {"42    ", 4, 6, -1, kUntouched},
        {"  0042", 4, 6, -1, kUntouched},
        {"0042 x", 4, 6, -1, kUntouched},
        {"   ", 0, 3, 0, 0},
        {"  x", 0, 3, -1, kUntouched},
        {"", 0, 0, 0, 0},
        {"12x", 2, 2, 0, 12},
        {"1234", 4, 2, 0, 1234},
        {"1234", 4, -5, 0, 1234},
        {"2147483647", 10, 10, 0, INT32_MAX},
        {"2147483648", 10, 10, 0, INT32_MIN},
        {"4294967295", 10, 10, 0, -1},
        {"4294967296", 10, 10, 0, 0},
        {"4294967338 ", 10, 11, 0, 42},
        {"-1", 2, 2, -1, kUntouched},
        {"+1", 2, 2, -1, kUntouched},
        {"1.5", 3, 3, -1, kUntouched},
    };
    for (const auto& c : cases) {
        const auto field = this->text(c.field);
        EXPECT_EQ(c.status, this->read(field.data(), c.digits, c.width)) << c.field;
        EXPECT_EQ(c.value, this->value()) << c.field;
        this->compare(field, c.digits, c.width);
    }
}

TYPED_TEST(DigitFieldsReadTest, EveryCharacterAtEveryPlaceOfEveryShape) {
    using Char = typename TypeParam::Char;
    std::vector<Char> codes;
    for (int code = 0; code < 256; ++code) codes.push_back(static_cast<Char>(code));
    if (TypeParam::wide) {
        for (uint32_t code : {0x100u, 0x120u, 0x130u, 0x139u, 0x2030u, 0x10020u, 0x10030u, 0x660u,
                              0xFF10u, 0x20000000u, 0x30000000u, 0x80000020u, 0x80000030u,
                              0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFFu, 0xFFFFFF30u}) {
            codes.push_back(static_cast<Char>(code));
        }
    }
    std::mt19937 random(1234);
    for (int digits = 0; digits <= 20; ++digits) {
        for (int width = 0; width <= 20; ++width) {
            const std::size_t size = static_cast<std::size_t>(std::max(digits, width));
            std::basic_string<Char> field(size, Char{' '});
            for (int i = 0; i < digits; ++i) {
                field[static_cast<std::size_t>(i)] = static_cast<Char>('0' + random() % 10);
            }
            this->compare(field, digits, width);
            for (std::size_t at = 0; at < size; ++at) {
                const Char good = field[at];
                for (Char code : codes) {
                    field[at] = code;
                    this->compare(field, digits, width);
                }
                field[at] = good;
            }
        }
    }
}

TYPED_TEST(DigitFieldsReadTest, RandomNumbersWrapAt32Bits) {
    using Char = typename TypeParam::Char;
    std::mt19937 random(77);
    for (int i = 0; i < 200000; ++i) {
        const int digits = i % 21;
        const int width = static_cast<int>(random() % 21);
        const std::size_t size = static_cast<std::size_t>(std::max(digits, width));
        std::basic_string<Char> field(size, Char{' '});
        for (int k = 0; k < digits; ++k) {
            field[static_cast<std::size_t>(k)] = static_cast<Char>('0' + random() % 10);
        }
        this->compare(field, digits, width);
    }
}

TYPED_TEST(DigitFieldsReadTest, LongRunsOfDigits) {
    using Char = typename TypeParam::Char;
    std::mt19937 random(78);
    for (std::size_t digits : {21u, 31u, 32u, 33u, 64u, 65u, 70u, 300u, 32766u, 32767u}) {
        std::basic_string<Char> field;
        while (field.size() < digits) field.push_back(static_cast<Char>('0' + random() % 10));
        this->compare(field, static_cast<int>(digits), 0);
        this->compare(field, static_cast<int>(digits), static_cast<int>(digits));
        field.back() = ':';
        this->compare(field, static_cast<int>(digits), static_cast<int>(digits));
    }
}

TYPED_TEST(DigitFieldsReadTest, EveryTailUpToTheTableAndBeyond) {
    using Char = typename TypeParam::Char;
    for (std::size_t tail = 0; tail <= 260; ++tail) {
        for (std::size_t digits : {0u, 1u, 5u}) {
            auto field = std::basic_string<Char>(digits, Char{'7'}) +
                         std::basic_string<Char>(tail, Char{' '});
            const int width = static_cast<int>(field.size());
            const int count = static_cast<int>(digits);
            this->compare(field, count, width);
            for (std::size_t wrong = digits; wrong < field.size(); ++wrong) {
                for (Char code : {0, 0x1F, 0x21, 0x30, 0xA0}) {
                    field[wrong] = code;
                    this->compare(field, count, width);
                }
                field[wrong] = ' ';
            }
        }
    }
}

TYPED_TEST(DigitFieldsReadTest, A257thTailCharacterMustBeZeroAndNarrowTailsEndThere) {
    using Char = typename TypeParam::Char;
    auto field = this->text("42") + std::basic_string<Char>(256, Char{' '});
    EXPECT_EQ(0, this->read(field.data(), 2, 258));
    for (int behind = 0; behind < 300; ++behind) {
        const int width = static_cast<int>(field.size());
        if (behind > 0) {
            // A zero and then anything at all: `behind` characters more than the table's blanks.
            const bool accepted = behind == 1 || TypeParam::wide;
            EXPECT_EQ(accepted ? 0 : -1, this->read(field.data(), 2, width)) << behind;
            EXPECT_EQ(accepted ? 42 : kUntouched, this->value()) << behind;
            this->compare(field, 2, width);
        }
        field.push_back(behind == 0 ? Char{0} : behind % 2 ? Char{0} : Char{'x'});
    }
    std::basic_string<Char> blanks(400, Char{' '});
    EXPECT_EQ(0, this->read(blanks.data(), 0, 256));
    EXPECT_EQ(KORV_FAILURE, this->read(blanks.data(), 0, 257));
    EXPECT_EQ(KORV_FAILURE, this->read(blanks.data(), 0, 400));
}

TYPED_TEST(DigitFieldsReadTest, ANegativeDigitCountMakesTheBlankTailLonger) {
    for (int digits : {-1, -2, -3, -20, -240, -32768}) {
        for (int width = -5; width <= 20; ++width) {
            const std::size_t size = static_cast<std::size_t>(std::clamp(width - digits, 0, 300));
            auto field = this->text(std::string(size, ' '));
            this->compare(field, digits, width);
            for (std::size_t at = 0; at < size; ++at) {
                field[at] = '1';
                this->compare(field, digits, width);
                field[at] = ' ';
            }
        }
    }
}

TYPED_TEST(DigitFieldsReadTest, NothingIsReadBehindTheFirstCharacterThatIsNoDigit) {
    for (std::size_t before = 0; before < 20; ++before) {
        const auto field = this->text(std::string(before, '1') + 'x');
        for (int digits : {static_cast<int>(field.size()), 20, 70, 32767}) {
            Fenced<typename TypeParam::Char> copy(field, false);
            EXPECT_EQ(KORV_FAILURE, this->read(copy.data(), digits, digits));
            EXPECT_EQ(kUntouched, this->value());
        }
    }
}

TYPED_TEST(DigitFieldsReadTest, FieldsLieOnTwoPages) {
    using Char = typename TypeParam::Char;
    constexpr std::size_t kPage = 4096 / sizeof(Char);
    Fenced<Char> pages(2 * kPage);
    for (int digits = 1; digits <= 13; ++digits) {
        for (std::size_t before = 0; before <= 13; ++before) {
            Char* const field = pages.data() + kPage - before;
            std::fill_n(field, digits, Char{'7'});
            this->compareAt(field, digits, digits);
            for (int at = 0; at < digits; ++at) {
                field[at] = 'x';
                this->compareAt(field, digits, digits);
                field[at] = '7';
            }
        }
    }
}

// A memory checker sees each byte outside these blocks.
TYPED_TEST(DigitFieldsReadTest, AFieldMayEndWithItsBlock) {
    using Char = typename TypeParam::Char;
    for (int digits = 0; digits <= 13; ++digits) {
        for (int width = digits; width <= digits + 40; ++width) {
            const auto block = std::make_unique<Char[]>(static_cast<std::size_t>(width));
            std::fill_n(block.get(), digits, Char{'7'});
            std::fill_n(block.get() + digits, width - digits, Char{' '});
            this->compareAt(block.get(), digits, width);
        }
    }
}

TYPED_TEST(DigitFieldsReadTest, EveryShapeAtEveryAlignment) {
    using Char = typename TypeParam::Char;
    for (std::size_t offset = 0; offset < 16; ++offset) {
        for (int digits = 0; digits <= 20; ++digits) {
            for (int tail = 0; tail <= 50; ++tail) {
                // Neighbours that would be accepted if they were read.
                auto field = this->text(std::string(offset, '9')) +
                             std::basic_string<Char>(static_cast<std::size_t>(digits), Char{'1'}) +
                             std::basic_string<Char>(static_cast<std::size_t>(tail), Char{' '}) +
                             this->text("xxxxxxxxxxxxxxxxxxxx");
                this->compareAt(field.data() + offset, digits, digits + tail);
                field[offset + static_cast<std::size_t>(digits + tail)] = ' ';
                this->compareAt(field.data() + offset, digits, digits + tail + 2);
            }
        }
    }
}

TEST(DigitFieldsReadWideTest, ATerminatorBehind256BlanksEndsTheFieldWhateverTheWidth) {
    // The text ends at an unreadable page, long before its width.
    Fenced<wchar_t> field(std::wstring_view(L"0042" + std::wstring(256, L' ')));
    for (int16_t width : {261, 262, 300, 1000, 32767}) {
        int32_t value = kUntouched;
        EXPECT_EQ(0, PXNumToLongW(field.data(), 4, width, &value)) << width;
        EXPECT_EQ(42, value);
    }
    for (std::size_t blanks : {0u, 1u, 7u, 254u, 255u}) {
        Fenced<wchar_t> shorter(std::wstring_view(L"0042" + std::wstring(blanks, L' ')));
        for (int16_t width : {300, 32767}) {
            int32_t value = kUntouched;
            EXPECT_EQ(KORV_FAILURE, PXNumToLongW(shorter.data(), 4, width, &value)) << blanks;
            EXPECT_EQ(kUntouched, value);
        }
    }
}

TEST(BlankTablesTest, Hold256BlanksAndATerminator) {
    EXPECT_EQ(std::string_view(std::string(256, ' ')), std::string_view(PXSpaces, 256));
    EXPECT_EQ(0, PXSpaces[256]);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(L' ', PXSpacesW[i]) << i;
    EXPECT_EQ(0, PXSpacesW[256]);
    EXPECT_EQ(257u, sizeof PXSpaces);
    EXPECT_EQ(257u * 4, sizeof PXSpacesW);
}

}  // namespace
