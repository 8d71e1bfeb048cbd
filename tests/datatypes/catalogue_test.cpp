// The catalogue of data types: each of the 65536 codes against the table below, through all
// questions that can be asked about a code.
#include <gtest/gtest.h>

#include <cstring>

#include "korv/datatypes.h"
#include "reference/catalogue.h"
#include "support/fenced.h"

namespace {

using reference::catalogueRow;
using reference::CatalogueRow;
using reference::kCatalogue;
using reference::kUntouched;

// A field definition and a result, both ending at unreadable pages.
class CatalogueTest : public testing::Test {
  protected:
    using Question = int32_t (*)(const FieldDefI*, uint32_t*);

    int32_t ask(Question question, int code, uint32_t fieldLength) {
        std::memset(field_.data(), 0x77, sizeof(FieldDefI));
        field_[0].dataType = static_cast<int16_t>(code);
        field_[0].length = fieldLength;
        FieldDefI before;
        std::memcpy(&before, field_.data(), sizeof before);
        result_[0] = kUntouched;
        const int32_t status = question(field_.data(), result_.data());
        EXPECT_EQ(0, std::memcmp(&before, field_.data(), sizeof before)) << "field changed";
        return status;
    }
    uint32_t result() { return result_[0]; }
    void TearDown() override { EXPECT_TRUE(field_.intact() && result_.intact()); }

  private:
    Fenced<FieldDefI> field_{std::size_t{1}, Fenced<FieldDefI>::Fence::behind};
    Fenced<uint32_t> result_{std::size_t{1}, Fenced<uint32_t>::Fence::behind};
};

TEST_F(CatalogueTest, EveryCodeHasItsBytesOrStatus49) {
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        const CatalogueRow* row = catalogueRow(code);
        const int32_t status = ask(GetDataTypeBytes, code, 10);
        ASSERT_EQ(row ? KORV_SUCCESS : KORV_TYPE_UNKNOWN, status) << code;
        ASSERT_EQ(!row                ? kUntouched
                  : row->perCharacter ? row->perCharacter * 10
                                      : row->bytes,
                  result())
            << code;
    }
}

TEST_F(CatalogueTest, OnlyTextBytesFollowTheFieldLength) {
    for (uint32_t length : {0u, 1u, 7u, 65536u, 0x3FFFFFFFu, 0x40000001u, 0xFFFFFFFFu}) {
        for (const CatalogueRow& row : kCatalogue) {
            ASSERT_EQ(0, ask(GetDataTypeBytes, row.code, length)) << row.code;
            ASSERT_EQ(row.perCharacter ? row.perCharacter * length : row.bytes, result())
                << row.code << " length " << length;
        }
    }
}

TEST_F(CatalogueTest, BytesOfAnEmptyFieldAre48) {
    Fenced<uint32_t> bytes{kUntouched};
    EXPECT_EQ(KORV_TYPE_NO_FIELD, GetDataTypeBytes(nullptr, bytes.data()));
    EXPECT_EQ(kUntouched, bytes[0]);
    EXPECT_EQ(KORV_TYPE_NO_FIELD, GetDataTypeBytes(nullptr, nullptr));
}

TEST_F(CatalogueTest, EveryCodeHasItsTextLengthAndStatus) {
    for (uint32_t fieldLength : {0u, 10u, 0xFFFFFFFFu}) {
        for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
            const CatalogueRow* row = catalogueRow(code);
            ASSERT_EQ(row ? row->lengthStatus : KORV_TYPE_UNKNOWN,
                      ask(GetDataTypeLengths, code, fieldLength))
                << code;
            ASSERT_EQ(row ? row->textLength : kUntouched, result()) << code;
        }
    }
}

TEST(CatalogueNameTest, EveryCodeHasItsNameOrNone) {
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        const CatalogueRow* row = catalogueRow(code);
        const char* expected = row ? row->name : nullptr;
        if (code == 11) expected = "11";
        if (code == 12) expected = "12";
        ASSERT_STREQ(expected, KORVGetDataTypeName(static_cast<int16_t>(code))) << code;
    }
}

TEST(CataloguePredicateTest, ZeroMeansYesForNarrowText) {
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        const CatalogueRow* row = catalogueRow(code);
        ASSERT_EQ(row && row->narrow ? 0 : -1, KORV_IsCharacterDatatype(static_cast<int16_t>(code)))
            << code;
    }
}

TEST(CataloguePredicateTest, ZeroMeansYesForWideText) {
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        const CatalogueRow* row = catalogueRow(code);
        ASSERT_EQ(row && row->wide ? 0 : -1,
                  KORV_IsWideCharacterDatatype(static_cast<int16_t>(code)))
            << code;
    }
}

TEST(CatalogueCodesTest, TheNumbersAreFixed) {
    const char* const names[] = {"CHAR",
                                 "VARCHAR",
                                 "VARCHAR_SZ",
                                 "WCHAR",
                                 "WVARCHAR",
                                 "WVARCHAR_SZ",
                                 "LONG_LONG",
                                 "U_LONG_LONG",
                                 "INTEGER",
                                 "U_INTEGER",
                                 "11",
                                 "12",
                                 "DECIMAL_PACKED",
                                 "ODBC_DATE",
                                 "ODBC_TIME",
                                 "ODBC_TIMESTAMP",
                                 "DATETIME_SZ",
                                 "DATETIME_WSZ",
                                 "DOUBLE",
                                 "FLOAT",
                                 "SMALLINT",
                                 "USMALLINT",
                                 "TINYINT",
                                 "UTINYINT",
                                 "DATETIME_CHAR",
                                 "DATETIME_VARCHAR",
                                 "DATETIME_WCHAR",
                                 "DATETIME_WVARCHAR"};
    int16_t code = 0;
    for (const char* name : names) EXPECT_STREQ(name, KORVGetDataTypeName(++code));
    EXPECT_EQ(28, code);
    EXPECT_EQ(101, DATATYPE_101);
}

}  // namespace
