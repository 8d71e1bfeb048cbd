// GetSrcBufLen: what each data type makes of the length of a value's buffer, and nothing else of
// the record.
#include <gtest/gtest.h>

#include <string>

#include "datatypes/value_records.h"
#include "reference/source_values.h"

namespace {

using reference::LengthRow;
using reference::lengthRow;
using reference::Rule;

constexpr int32_t kLengths[] = {INT32_MIN, -65537, -65536, -65535, -32768, -1,
                                0,         1,      12,     99,     65536,  INT32_MAX};

TEST(SrcBufLenTest, EveryCodeFollowsItsRule) {
    // The same bytes are a prefix of 0x0105, a narrow text of 12 and a wide text of 3 characters.
    Fenced<wchar_t> data{0x01010105, 0x01010101, 0x01010101, 0};
    FencedRecord value;
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        const LengthRow row = lengthRow(code);
        for (int32_t length : kLengths) {
            const bool reads =
                length <= 0 && (row.rule == Rule::prefix || row.rule == Rule::narrowText ||
                                row.rule == Rule::wideText);
            // Where the data need not be read there are none.
            value.reset(length, reads ? data.data() : nullptr);
            int32_t expected = length;
            if (row.rule == Rule::constant) expected = row.bytes;
            if (reads && row.rule == Rule::narrowText) expected = 13;
            if (reads && row.rule == Rule::wideText) expected = 16;
            if (reads && row.rule == Rule::prefix) {
                const uint32_t high = static_cast<uint32_t>(length) & 0xFFFF0000u;
                expected = static_cast<int32_t>((high | 0x0105u) + 2);
            }
            ASSERT_EQ(row.rule == Rule::none ? -1 : 0,
                      GetSrcBufLen(value.get(), static_cast<int16_t>(code)))
                << code;
            ASSERT_EQ(expected, value->length) << code << " length " << length;
            ASSERT_TRUE(value.changedOnly(&ValueRecord::length)) << code;
        }
    }
}

TEST(SrcBufLenTest, ThePrefixReplacesTheLow16BitsOnly) {
    struct {
        int32_t length;
        uint16_t prefix;
        int32_t expected;
    } const cases[] = {
        {0, 5, 7},           {12, 5, 12},          {0, 0, 2},
        {0, 0x7FFF, 32769},  {0, 0x8000, 32770},   {0, 0xFFFD, 65535},
        {0, 0xFFFE, 65536},  {0, 0xFFFF, 65537},   {-1, 5, -65529},
        {-1, 0xFFFD, -1},    {-1, 0xFFFE, 0},      {-1, 0xFFFF, 1},
        {-65536, 5, -65529}, {-65537, 5, -131065}, {INT32_MIN, 5, INT32_MIN + 7},
    };
    for (int16_t code : {VARCHAR, WVARCHAR, DATETIME_VARCHAR, DATETIME_WVARCHAR}) {
        for (const auto& c : cases) {
            for (std::size_t before = 0; before < 4; ++before) {
                // The prefix ends the page or starts at any address in front of its end.
                Fenced<char> data(2 + before);
                std::memcpy(data.data(), &c.prefix, 2);
                FencedRecord value;
                value.reset(c.length, data.data());
                EXPECT_EQ(0, GetSrcBufLen(value.get(), code));
                EXPECT_EQ(c.expected, value->length)
                    << code << " length " << c.length << " prefix " << c.prefix;
            }
        }
    }
}

TEST(SrcBufLenTest, NarrowTextCountsItsTerminator) {
    FencedRecord value;
    for (std::size_t length = 0; length <= 70; ++length) {
        for (std::size_t offset = 0; offset < 16; ++offset) {
            Fenced<char> data(std::string_view(std::string(offset + length, '\xFE')));
            if (offset) data[offset - 1] = 0;
            for (int16_t code : {VARCHAR_SZ, DATETIME_SZ}) {
                value.reset(offset % 2 ? 0 : -1, data.data() + offset);
                ASSERT_EQ(0, GetSrcBufLen(value.get(), code));
                ASSERT_EQ(static_cast<int32_t>(length + 1), value->length) << "offset " << offset;
            }
        }
    }
}

TEST(SrcBufLenTest, WideTextCountsItsTerminator) {
    FencedRecord value;
    for (std::size_t length = 0; length <= 70; ++length) {
        for (std::size_t offset = 0; offset < 4; ++offset) {
            // Characters with zeros among their bytes.
            Fenced<wchar_t> data(std::wstring_view(std::wstring(offset + length, L'\x100')));
            if (offset) data[offset - 1] = 0;
            for (int16_t code : {WVARCHAR_SZ, DATETIME_WSZ}) {
                value.reset(offset % 2 ? 0 : -1, data.data() + offset);
                ASSERT_EQ(0, GetSrcBufLen(value.get(), code));
                ASSERT_EQ(static_cast<int32_t>(4 * length + 4), value->length);
            }
        }
    }
}

TEST(SrcBufLenTest, TextLengthsAreCutToSigned16Bits) {
    struct {
        std::size_t length;
        int32_t cut;
    } const cases[] = {{32766, 32766}, {32767, 32767}, {32768, -32768}, {32769, -32767},
                       {65534, -2},    {65535, -1},    {65536, 0},      {65537, 1},
                       {98303, 32767}, {98304, -32768}};
    FencedRecord value;
    for (const auto& c : cases) {
        Fenced<char> narrow(std::string_view(std::string(c.length, 'x')));
        Fenced<wchar_t> wide(std::wstring_view(std::wstring(c.length, L'x')));
        for (int16_t code : {VARCHAR_SZ, DATETIME_SZ}) {
            value.reset(0, narrow.data());
            EXPECT_EQ(0, GetSrcBufLen(value.get(), code));
            EXPECT_EQ(c.cut + 1, value->length) << c.length;
        }
        for (int16_t code : {WVARCHAR_SZ, DATETIME_WSZ}) {
            value.reset(0, wide.data());
            EXPECT_EQ(0, GetSrcBufLen(value.get(), code));
            EXPECT_EQ(c.cut * 4 + 4, value->length) << c.length;
        }
    }
}

TEST(SrcBufLenTest, ANullValueIsMeasuredLikeAnyOther) {
    Fenced<char> text(std::string_view("abc"));
    FencedRecord value;
    value.reset(0, text.data());
    value->nullIndicator = 1;
    EXPECT_EQ(0, GetSrcBufLen(value.get(), VARCHAR_SZ));
    EXPECT_EQ(4, value->length);
}

}  // namespace
