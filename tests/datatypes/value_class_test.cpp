// KORV_IsZeroOrZeroLength: the processing class of every code, and the copy to the target.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "datatypes/value_records.h"
#include "reference/source_values.h"

namespace {

using reference::expectedClass;

class ValueClassTest : public testing::Test {
  protected:
    ValueClassTest() {
        std::memset(&context_, 0x33, sizeof context_);
        std::memset(&field_, 0x44, sizeof field_);
        std::memset(&other_, 0x44, sizeof other_);
        context_.blkCode = 0;
        context_.fieldRefs.fieldDef = &field_;
        // The block's first field is another one: the reference decides.
        context_.fieldDefs = &other_;
        other_.dataType = ODBC_DATE;
        field_.dataType = CHAR;
        value_.reset(0, nullptr);
        result_.reset(0, nullptr);
    }
    int32_t classify() {
        CtrlBlkI before;
        std::memcpy(&before, &context_, sizeof before);
        const int32_t result = KORV_IsZeroOrZeroLength(&context_, value_.get(), result_.get());
        EXPECT_EQ(0, std::memcmp(&before, &context_, sizeof before));
        return result;
    }

    CtrlBlkI context_;
    FieldDefI field_;
    FieldDefI other_;
    FencedRecord value_;
    FencedRecord result_;
};

TEST_F(ValueClassTest, EveryCodeHasItsClass) {
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        field_.dataType = static_cast<int16_t>(code);
        for (FencedRecord* record : {&value_, &result_}) {
            record->reset(3, nullptr);
            (*record)->nullIndicator = 1;
            record->keep();
        }
        ASSERT_EQ(expectedClass(code), classify()) << code;
        ASSERT_EQ(expectedClass(code), value_->processingClass) << code;
        ASSERT_TRUE(value_.changedOnly(&ValueRecord::processingClass)) << code;
        ASSERT_EQ(0, result_->secondFlag) << code;
        ASSERT_TRUE(result_.changedOnly(&ValueRecord::secondFlag)) << code;
    }
}

TEST_F(ValueClassTest, AnyCopyFlagButZeroCopies) {
    const char data[4] = {'a', 'b', 'c', 'd'};
    for (int flag = 0; flag < 256; ++flag) {
        char target[4] = {'-', '-', '-', '-'};
        context_.blkCode = static_cast<uint8_t>(flag);
        value_.reset(4, data);
        value_->capacity = 3;
        value_->copiedLength = 99;
        value_->target = target;
        ASSERT_EQ(KORV_CLASS_TEXT, classify());
        ASSERT_EQ(flag ? 3 : 99, value_->copiedLength) << flag;
        ASSERT_EQ(flag ? "abc-" : "----", std::string(target, 4)) << flag;
    }
}

TEST_F(ValueClassTest, TheSmallerLengthIsStoredAndANegativeOneCopiesNothing) {
    struct {
        int32_t capacity, length, copied;
    } const cases[] = {{10, 5, 5},
                       {5, 10, 5},
                       {5, 5, 5},
                       {0, 5, 0},
                       {5, 0, 0},
                       {0, 0, 0},
                       {INT32_MAX, 7, 7},
                       {7, INT32_MAX, 7},
                       {5, -1, -1},
                       {-1, 5, -1},
                       {-7, -3, -7},
                       {-3, -7, -7},
                       {INT32_MIN, 5, INT32_MIN},
                       {5, INT32_MIN, INT32_MIN}};
    context_.blkCode = 1;
    for (const auto& c : cases) {
        const std::size_t bytes = static_cast<std::size_t>(std::max(c.copied, 0));
        Fenced<char> data(bytes);
        Fenced<char> target(bytes);
        std::fill_n(data.data(), bytes, 'd');
        value_.reset(c.length, data.data());
        value_->capacity = c.capacity;
        value_->target = target.data();
        value_.keep();
        EXPECT_EQ(KORV_CLASS_TEXT, classify());
        EXPECT_EQ(c.copied, value_->copiedLength) << c.capacity << ' ' << c.length;
        EXPECT_EQ(std::string(bytes, 'd'), std::string(target.data(), bytes));
        EXPECT_TRUE(target.intact() && data.intact());
        EXPECT_EQ(c.length, value_->length);
        EXPECT_EQ(c.capacity, value_->capacity);
    }
}

TEST_F(ValueClassTest, NothingIsCopiedBetweenEmptyBuffers) {
    context_.blkCode = 1;
    value_.reset(0, nullptr);
    value_->capacity = 0;
    value_->target = nullptr;
    EXPECT_EQ(KORV_CLASS_TEXT, classify());
    EXPECT_EQ(0, value_->copiedLength);
}

TEST_F(ValueClassTest, TheCopyDependsNeitherOnTheClassNorOnTheNullIndicator) {
    const char data[] = "xyz";
    context_.blkCode = 1;
    for (int code : {0, int{ODBC_DATE}, int{INTEGER}, -5, 101}) {
        char target[4] = "---";
        field_.dataType = static_cast<int16_t>(code);
        value_.reset(3, data);
        value_->nullIndicator = 1;
        value_->capacity = 3;
        value_->target = target;
        EXPECT_EQ(expectedClass(code), classify());
        EXPECT_STREQ("xyz", target) << code;
    }
}

TEST_F(ValueClassTest, CopiesAtEveryLengthAndAlignment) {
    std::vector<char> data(128), target(128), expected(128);
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 7 + 1);
    context_.blkCode = 1;
    for (std::size_t length = 0; length <= 70; ++length) {
        for (std::size_t from = 0; from < 16; ++from) {
            for (std::size_t to = 0; to < 16; ++to) {
                std::fill(target.begin(), target.end(), '\xEE');
                expected = target;
                for (std::size_t i = 0; i < length; ++i) expected[to + i] = data[from + i];
                value_.reset(static_cast<int32_t>(length), data.data() + from);
                value_->capacity = 70;
                value_->target = target.data() + to;
                ASSERT_EQ(KORV_CLASS_TEXT, classify());
                ASSERT_EQ(expected, target) << length << ' ' << from << ' ' << to;
            }
        }
    }
}

TEST_F(ValueClassTest, CopiesBetweenUnreadablePages) {
    context_.blkCode = 1;
    using Fence = Fenced<char>::Fence;
    for (Fence fence : {Fence::behind, Fence::before}) {
        for (std::size_t length = 0; length <= 70; ++length) {
            Fenced<char> data(length, fence);
            Fenced<char> target(length, fence);
            for (std::size_t i = 0; i < length; ++i) data[i] = static_cast<char>('a' + i % 26);
            value_.reset(70, data.data());
            value_->capacity = static_cast<int32_t>(length);
            value_->target = target.data();
            ASSERT_EQ(KORV_CLASS_TEXT, classify());
            ASSERT_EQ(std::string(data.data(), length), std::string(target.data(), length));
            ASSERT_TRUE(target.intact());
        }
    }
}

TEST_F(ValueClassTest, OneRecordMayBeValueAndResult) {
    value_.reset(0, nullptr);
    EXPECT_EQ(KORV_CLASS_TEXT, KORV_IsZeroOrZeroLength(&context_, value_.get(), value_.get()));
    EXPECT_EQ(KORV_CLASS_TEXT, value_->processingClass);
    EXPECT_EQ(0, value_->secondFlag);
}

}  // namespace
