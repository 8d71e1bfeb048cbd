// Transposition of digits, narrow and wide, against a literal reference that finds out about
// endless repetition by remembering every state of the number.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "korv/numeric.h"
#include "reference/numeric.h"
#include "support/fenced.h"

namespace {

using reference::kPermutations;

struct Narrow {
    using Char = char;
    static constexpr auto& transpose = PXTransposeNum;
};
struct Wide {
    using Char = wchar_t;
    static constexpr auto& transpose = PXTransposeNumW;
};

template <class Width>
class TransposeTest : public testing::Test {
  protected:
    using Char = typename Width::Char;
    using Text = std::basic_string<Char>;

    static Text text(const std::string& narrow) { return Text(narrow.begin(), narrow.end()); }

    // A plain call that shows two characters more than the number has.
    static std::string call(const std::string& number, int32_t key, int16_t shift,
                            int32_t status = 0) {
        const Text input = text(number);
        Text output(number.size() + 2, Char{'~'});
        EXPECT_EQ(status, Width::transpose(input.data(), output.data(),
                                           static_cast<int16_t>(number.size()), key, shift))
            << number << " key " << key << " shift " << shift;
        return std::string(output.begin(), output.end());
    }

    // Both into a buffer of its own and in place, each of exactly the number's length.
    void compare(const Text& input, int32_t key, int shift) {
        Text expected(input.size(), Char{'~'});
        Text inPlace = input;
        const auto size = static_cast<int16_t>(input.size());
        const int32_t status = reference::transpose(input.data(), expected.data(), size, key,
                                                    static_cast<int16_t>(shift));
        reference::transpose(input.data(), inPlace.data(), size, key, static_cast<int16_t>(shift));
        Fenced<Char>& from = inputs_[input.size()];
        Fenced<Char>& to = outputs_[input.size()];
        std::copy(input.begin(), input.end(), from.data());
        std::fill_n(to.data(), to.size(), Char{'~'});
        const int16_t length = static_cast<int16_t>(input.size());
        ASSERT_EQ(status, Width::transpose(from.data(), to.data(), length, key,
                                           static_cast<int16_t>(shift)))
            << name(input) << " key " << key << " shift " << shift;
        ASSERT_TRUE(expected == Text(to.data(), to.size()))
            << name(input) << " key " << key << " shift " << shift;
        ASSERT_TRUE(input == Text(from.data(), from.size())) << "input changed";
        ASSERT_EQ(status, Width::transpose(from.data(), from.data(), length, key,
                                           static_cast<int16_t>(shift)));
        ASSERT_TRUE(inPlace == Text(from.data(), from.size()))
            << name(input) << " key " << key << " shift " << shift << " in place";
    }
    void TearDown() override {
        for (std::size_t i = 0; i < 13; ++i) {
            EXPECT_TRUE(inputs_[i].intact() && outputs_[i].intact()) << i;
        }
    }

  private:
    struct Buffers {
        template <std::size_t... i>
        explicit Buffers(std::index_sequence<i...>) : of{Fenced<Char>(std::size_t{i})...} {}
        Buffers() : Buffers(std::make_index_sequence<13>()) {}
        Fenced<Char>& operator[](std::size_t size) { return of[size]; }
        Fenced<Char> of[13];
    };
    static std::string name(const Text& input) {
        std::string codes;
        for (Char c : input) codes += std::to_string(static_cast<int32_t>(c)) + ' ';
        return codes;
    }
    Buffers inputs_;
    Buffers outputs_;
};
using Widths = testing::Types<Narrow, Wide>;
TYPED_TEST_SUITE(TransposeTest, Widths, );

TYPED_TEST(TransposeTest, KnownNumbers) {
    EXPECT_EQ("143258769210~~", this->call("123456789012", 5, 0));
    EXPECT_EQ("408628640642~~", this->call("123456789012", 5, 3));
    EXPECT_EQ("4312~~", this->call("9876", 1, 1));
    EXPECT_EQ("1243~~", this->call("9876", 0, 1));
}

TYPED_TEST(TransposeTest, EveryRowInEveryGroup) {
    for (int row = 0; row < 23; ++row) {
        std::string expected;
        for (int group = 0; group < 12; group += 4) {
            for (int position : kPermutations[row])
                expected += static_cast<char>('a' + group + position - 1);
            EXPECT_EQ(expected + "~~",
                      this->call(std::string("abcdefghijkl", expected.size()), row, 0));
        }
    }
}

TYPED_TEST(TransposeTest, TheRowIsTheKeyModulo23) {
    for (int32_t key = -200; key <= 200; ++key) {
        const int32_t row = ((key % 23) + 23) % 23;
        ASSERT_EQ(this->call("abcdefghijkl", row, 0), this->call("abcdefghijkl", key, 0)) << key;
    }
    EXPECT_EQ(this->call("abcd", 2147483647 % 23, 0), this->call("abcd", 2147483647, 0));
    EXPECT_EQ(this->call("abcd", 23 - 2147483647 % 23, 0), this->call("abcd", -2147483647, 0));
    EXPECT_EQ(this->call("abcd", 22 - 2147483647 % 23, 0), this->call("abcd", INT32_MIN, 0));
}

TYPED_TEST(TransposeTest, PositionsBehindTheLastDigitAreZero) {
    const std::string zero(1, '\0');
    EXPECT_EQ("12435~~", this->call("12345", 0, 0));
    EXPECT_EQ("4312" + zero + "~~", this->call("12345", 1, 0));
    EXPECT_EQ("4312" + zero + zero + "~~", this->call("123456", 1, 0));
    EXPECT_EQ("4312" + zero + "75~~", this->call("1234567", 1, 0));
    EXPECT_EQ(zero + "~~", this->call("1", 1, 0));
}

TYPED_TEST(TransposeTest, AZeroCodeEndsTheNumberEarly) {
    const std::string number = std::string("12") + '\0' + "4";
    EXPECT_EQ("42~~~~", this->call(number, 4, 0));
    // The first character is shifted even then: 0 - 0x30 + 49 is 1.
    const std::string empty = std::string(1, '\0') + "23";
    EXPECT_EQ("~~~~~", this->call(empty, 12, 0));
    this->compare(this->text(empty), 12, 49);
    this->compare(this->text(std::string(4, '\0')), 0, 49);
    this->compare(this->text(std::string(4, '\0')), 0, 48);
}

TYPED_TEST(TransposeTest, RepetitionThatWouldNeverEndWritesNothing) {
    EXPECT_EQ("~~~~~", this->call("000", 0, -1, -1));
    for (int16_t shift : {10, -10, 20, 100, 32760, -32760}) {
        EXPECT_EQ("~~~", this->call("0", 0, shift, -1)) << shift;
    }
    for (int16_t shift : {1, 9, 11, -1, 32767, -32768}) this->compare(this->text("0"), 0, shift);
}

TYPED_TEST(TransposeTest, LengthsOutsideTheNumberAreRejectedAnd0WritesNothing) {
    const auto input = this->text("1234567890123456");
    for (int shift : {0, 1, -1, 10}) {
        for (int length : {13, 14, 16, 32767, -1, -2, -12, -32768, 0}) {
            auto output = this->text("~~~~~~~~~~~~~~~~");
            const auto before = output;
            EXPECT_EQ(length == 0 ? 0 : -1, TypeParam::transpose(input.data(), output.data(),
                                                                 static_cast<int16_t>(length), 1,
                                                                 static_cast<int16_t>(shift)))
                << length << " shift " << shift;
            EXPECT_TRUE(before == output) << length;
        }
        this->compare({}, 3, shift);
    }
}

TYPED_TEST(TransposeTest, AllNumbersOfUpTo4DigitsInAllShiftsOfOneAndTwoTens) {
    using Char = typename TypeParam::Char;
    int32_t key = 0;
    for (std::size_t length = 1; length <= 4; ++length) {
        std::basic_string<Char> number(length, Char{'0'});
        for (bool more = true; more;) {
            for (int shift = -40; shift <= 40; ++shift) this->compare(number, key++, shift);
            // Counts up to the next number of this length.
            std::size_t at = length;
            while (at > 0 && number[at - 1] == '9') number[--at] = '0';
            more = at > 0;
            if (more) ++number[at - 1];
        }
    }
}

TYPED_TEST(TransposeTest, RandomNumbersOfEveryLength) {
    using Char = typename TypeParam::Char;
    std::mt19937 random(23);
    for (int i = 0; i < 300000; ++i) {
        std::basic_string<Char> number(1 + random() % 12, Char{});
        for (Char& digit : number) digit = static_cast<Char>('0' + random() % 10);
        const int shift =
            i % 2 ? static_cast<int16_t>(random()) : static_cast<int>(random() % 21) - 10;
        this->compare(number, static_cast<int32_t>(random()), shift);
    }
}

TYPED_TEST(TransposeTest, NumbersThatTheFirstPassTurnsIntoZeros) {
    using Char = typename TypeParam::Char;
    for (std::size_t length = 1; length <= 12; ++length) {
        for (int shift = -30; shift <= 30; ++shift) {
            std::basic_string<Char> number(length, Char{});
            for (std::size_t i = 0; i < length; ++i) {
                const int moved = (shift + static_cast<int>(i)) % 10;
                number[i] = static_cast<Char>('0' + (10 - moved) % 10);
            }
            for (int32_t key = 0; key < 23; ++key) this->compare(number, key, shift);
        }
    }
}

TYPED_TEST(TransposeTest, AnyCharacterCountsAsADigit) {
    using Char = typename TypeParam::Char;
    std::mt19937 random(24);
    for (int i = 0; i < 300000; ++i) {
        std::basic_string<Char> number(1 + random() % 12, Char{});
        for (Char& digit : number) {
            // Zeros now and then; in wide numbers all 32 bits.
            const uint32_t code = random() >> (random() % 32);
            digit = static_cast<Char>(code);
        }
        this->compare(number, static_cast<int32_t>(random()), static_cast<int16_t>(random()));
        this->compare(number, i, i % 7 - 3);
    }
}

// The other tests hit a single such character by chance only.
TYPED_TEST(TransposeTest, ASingleCharacterThatIsNoDigitAtEveryPlace) {
    using Char = typename TypeParam::Char;
    std::mt19937 random(25);
    for (std::size_t length = 1; length <= 12; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (int code : {+'/', +':', +'@', +'z', 0x7F, 0xB0, 0xB9, 0xFF}) {
                std::basic_string<Char> number(length, Char{});
                for (Char& digit : number) digit = static_cast<Char>('0' + random() % 10);
                number[place] = static_cast<Char>(code);
                for (int shift = -3; shift <= 12; ++shift) this->compare(number, code, shift);
            }
        }
    }
}

TYPED_TEST(TransposeTest, ANumberAmidOtherDigitsIsReadAndWrittenAlone) {
    using Char = typename TypeParam::Char;
    std::mt19937 random(26);
    for (int i = 0; i < 2000; ++i) {
        const std::size_t length = 1 + random() % 12;
        std::basic_string<Char> record(36, Char{});
        for (Char& digit : record) digit = static_cast<Char>('0' + random() % 10);
        const std::basic_string<Char> number = record.substr(12, length);
        std::basic_string<Char> moved = number;
        if (reference::transpose(number.data(), moved.data(), static_cast<int16_t>(length), i,
                                 static_cast<int16_t>(i % 9)) != 0) {
            continue;
        }
        std::basic_string<Char> expected = record;
        expected.replace(12, length, moved);
        ASSERT_EQ(0, TypeParam::transpose(&record[12], &record[12], static_cast<int16_t>(length), i,
                                          static_cast<int16_t>(i % 9)));
        ASSERT_TRUE(expected == record) << length << " key " << i << " shift " << i % 9;
    }
}

}  // namespace
