// KORVGetSourceDataLen: the length in characters by data type; the value record is only read.
#include <gtest/gtest.h>

#include <string>

#include "datatypes/value_records.h"

namespace {

constexpr int32_t kUntouched = 0x5A5AA5A5;

class SourceDataLenTest : public testing::Test {
  protected:
    // The length that is stored; the status must be 0 and the records stay as they are.
    int32_t measure(int code) {
        std::memset(field_.data(), 0x66, sizeof(FieldDefI));
        field_[0].dataType = static_cast<int16_t>(code);
        FieldDefI before;
        std::memcpy(&before, field_.data(), sizeof before);
        length_[0] = kUntouched;
        value_.keep();
        EXPECT_EQ(0, KORVGetSourceDataLen(value_.get(), field_.data(), length_.data())) << code;
        EXPECT_TRUE(value_.unchanged()) << code;
        EXPECT_EQ(0, std::memcmp(&before, field_.data(), sizeof before)) << code;
        return length_[0];
    }
    int32_t measure(int code, int32_t length, const void* data) {
        value_.reset(length, data);
        return measure(code);
    }
    void TearDown() override { EXPECT_TRUE(field_.intact() && length_.intact()); }

    FencedRecord value_;
    Fenced<FieldDefI> field_{std::size_t{1}, Fenced<FieldDefI>::Fence::behind};
    Fenced<int32_t> length_{std::size_t{1}, Fenced<int32_t>::Fence::behind};
};

TEST_F(SourceDataLenTest, ANullValueHasLengthMinus1WhateverItsType) {
    const char text[] = "abc";
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        ASSERT_EQ(-1, measure(code, 3, nullptr)) << code;
        value_.reset(3, text);
        value_->nullIndicator = 1;
        ASSERT_EQ(-1, measure(code)) << code;
    }
}

TEST_F(SourceDataLenTest, OnlyAnIndicatorOf1MakesAValueNull) {
    const char text[] = "abc";
    for (int indicator = 0; indicator < 256; ++indicator) {
        value_.reset(77, text);
        value_->nullIndicator = static_cast<uint8_t>(indicator);
        ASSERT_EQ(indicator == 1 ? -1 : 77, measure(CHAR)) << indicator;
        ASSERT_EQ(indicator == 1 ? -1 : 3, measure(VARCHAR_SZ)) << indicator;
    }
}

TEST_F(SourceDataLenTest, FixedTextHasTheLengthOfItsValue) {
    Fenced<char> data(0);  // nothing of it may be read
    for (int32_t length : {INT32_MIN, -9, -5, -4, -3, -1, 0, 1, 3, 4, 5, 7, 8, 70000, INT32_MAX}) {
        for (int code : {CHAR, DATETIME_CHAR}) {
            EXPECT_EQ(length, measure(code, length, data.data())) << code;
        }
        for (int code : {WCHAR, DATETIME_WCHAR}) {
            EXPECT_EQ(length / 4, measure(code, length, data.data())) << code << ' ' << length;
        }
    }
    EXPECT_EQ(0, measure(WCHAR, -3, data.data()));
    EXPECT_EQ(-1, measure(WCHAR, -5, data.data()));
}

TEST_F(SourceDataLenTest, EveryPrefixIsReadAsSigned) {
    Fenced<char> even(2);
    Fenced<char> odd(3);
    for (int prefix = INT16_MIN; prefix <= INT16_MAX; ++prefix) {
        const int16_t stored = static_cast<int16_t>(prefix);
        std::memcpy(even.data(), &stored, 2);
        std::memcpy(odd.data(), &stored, 2);
        for (const void* data : {even.data(), odd.data()}) {
            ASSERT_EQ(prefix, measure(VARCHAR, 99, data));
            ASSERT_EQ(prefix, measure(DATETIME_VARCHAR, -1, data));
            ASSERT_EQ(prefix / 4, measure(WVARCHAR, 99, data)) << prefix;
            ASSERT_EQ(prefix / 4, measure(DATETIME_WVARCHAR, -1, data)) << prefix;
        }
    }
    const int16_t twelve = 12;
    EXPECT_EQ(3, measure(WVARCHAR, 0, &twelve));
}

TEST_F(SourceDataLenTest, TerminatedTextIsMeasuredAtEveryLength) {
    for (std::size_t length = 0; length <= 70; ++length) {
        for (std::size_t offset = 0; offset < 16; ++offset) {
            Fenced<char> narrow(std::string_view(std::string(offset + length, '\x80')));
            if (offset) narrow[offset - 1] = 0;
            for (int code : {VARCHAR_SZ, DATETIME_SZ}) {
                ASSERT_EQ(static_cast<int32_t>(length), measure(code, 5, narrow.data() + offset));
            }
            if (offset > 3) continue;
            Fenced<wchar_t> wide(std::wstring_view(std::wstring(offset + length, L'\x10000')));
            if (offset) wide[offset - 1] = 0;
            for (int code : {WVARCHAR_SZ, DATETIME_WSZ}) {
                ASSERT_EQ(static_cast<int32_t>(length), measure(code, 5, wide.data() + offset));
            }
        }
    }
}

TEST_F(SourceDataLenTest, TheLengthOfTerminatedTextIsNotCut) {
    for (std::size_t length : {32767u, 32768u, 65535u, 65536u, 70001u}) {
        Fenced<char> narrow(std::string_view(std::string(length, 'x')));
        Fenced<wchar_t> wide(std::wstring_view(std::wstring(length, L'x')));
        EXPECT_EQ(static_cast<int32_t>(length), measure(VARCHAR_SZ, 0, narrow.data()));
        EXPECT_EQ(static_cast<int32_t>(length), measure(WVARCHAR_SZ, 0, wide.data()));
    }
}

TEST_F(SourceDataLenTest, OtherTypesHaveTheirTextLength) {
    struct {
        int code;
        int32_t length;
    } const rows[] = {{LONG_LONG, 21}, {U_LONG_LONG, 21},    {INTEGER, 11},
                      {U_INTEGER, 11}, {DECIMAL_PACKED, 42}, {ODBC_DATE, 50},
                      {ODBC_TIME, 50}, {ODBC_TIMESTAMP, 50}, {DOUBLE, 32},
                      {FLOAT, 32},     {SMALLINT, 6},        {USMALLINT, 6},
                      {TINYINT, 4},    {UTINYINT, 4},        {101, 51}};
    Fenced<char> data(0);  // nothing of it may be read
    for (const auto& row : rows) EXPECT_EQ(row.length, measure(row.code, 9, data.data()));
}

TEST_F(SourceDataLenTest, AnUnknownTypeLeavesTheLengthAlone) {
    Fenced<char> data(0);
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        const bool known = (code >= 1 && code <= 10) || (code >= 13 && code <= 28) || code == 101;
        if (known) continue;
        ASSERT_EQ(kUntouched, measure(code, 9, data.data())) << code;
    }
}

}  // namespace
