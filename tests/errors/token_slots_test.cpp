// Which slot a token takes, which identifiers are tokens, and what a failed capture leaves.
#include <climits>

#include "errors/chain.h"
#include "support/fenced.h"

namespace {

class TokenSlots : public ChainTest {
  protected:
    std::int32_t capture(std::int32_t number, std::uint32_t tokenId) {
        return TokenCaptureEAB(anchor, &number, INTEGER, tokenId, 0);
    }
};

TEST_F(TokenSlots, AreTakenInOrder) {
    ErrorRecord* const record = open(5);
    for (std::uint32_t i = 0; i < 5; ++i) {
        ASSERT_EQ(0, capture(static_cast<std::int32_t>(i) + 10, i + 1));
        for (std::uint32_t j = 0; j < 5; ++j) {
            EXPECT_EQ(j <= i ? j + 1 : 0, slotOf(record, j).tokenId);
            if (j > i) {
                EXPECT_EQ(nullptr, slotOf(record, j).text);
            }
        }
    }
    EXPECT_STREQ(L"10", slotOf(record, 0).text);
    EXPECT_STREQ(L"14", slotOf(record, 4).text);
}

TEST_F(TokenSlots, OfTheNewestRecordAreTaken) {
    ErrorRecord* const first = open(2);
    ErrorRecord* const second = open(2);
    ASSERT_EQ(0, capture(1, KORV_TOKID_YEAR));
    EXPECT_EQ(0u, slotOf(first, 0).tokenId);
    EXPECT_EQ(static_cast<std::uint32_t>(KORV_TOKID_YEAR), slotOf(second, 0).tokenId);
}

TEST_F(TokenSlots, ThatAreUnusedInBetweenAreTakenFirst) {
    ErrorRecord* const record = open(4);
    for (const std::size_t used : {0u, 2u, 3u}) slotOf(record, used).tokenId = KORV_TOKID_MASK;
    ASSERT_EQ(0, capture(5, KORV_TOKID_YEAR));
    EXPECT_STREQ(L"5", slotOf(record, 1).text);
    EXPECT_EQ(nullptr, slotOf(record, 2).text);
}

TEST_F(TokenSlots, AcceptEveryIdentifierOfTheCatalogue) {
    ErrorRecord* const record = open(1);
    for (std::uint32_t id = 0; id <= 90; ++id) {
        slotOf(record, 0) = {};
        ASSERT_EQ(0, capture(1, id)) << id;
        EXPECT_EQ(id, slotOf(record, 0).tokenId);
        freeText(slotOf(record, 0));
    }
}

TEST_F(TokenSlots, RefuseIdentifiersOutsideTheCatalogue) {
    ErrorRecord* const record = open(1);
    const ErrorAnchor before = *anchor;
    CtrlBlkI block{};
    block.errorAnchor = anchor;
    heap::failAt(0);
    for (const std::uint32_t id :
         {91u, 92u, 128u, 256u, 346u, 65536u, 0x7FFFFFFFu, 0x80000000u, 0x8000005Au, 0xFFFFFFFFu}) {
        EXPECT_EQ(KORV_TOKEN_BAD_ID, capture(1, id)) << id;
        EXPECT_EQ(KORV_TOKEN_BAD_ID, TokenCaptureEAB(anchor, nullptr, INTEGER, id, 0)) << id;
        EXPECT_EQ(KORV_TOKEN_BAD_ID, TokenCapture(&block, nullptr, INTEGER, id, 0)) << id;
        EXPECT_EQ(KORV_TOKEN_BAD_ID, TokenCapture(nullptr, nullptr, INTEGER, id, 0))
            << "before the block is read";
    }
    EXPECT_EQ(0u, heap::allocations());
    EXPECT_EQ(0u, slotOf(record, 0).tokenId);
    EXPECT_EQ(before.currentSize, anchor->currentSize);
    EXPECT_EQ(before.largestSize, anchor->largestSize);
}

TEST_F(TokenSlots, NeedAnAnchorBeforeAnythingElse) {
    const CtrlBlkI without{};
    for (const std::uint32_t id : {0u, 1u, 90u, 91u, 0xFFFFFFFFu}) {
        EXPECT_EQ(KORV_FAILURE, TokenCaptureEAB(nullptr, L"x", WVARCHAR_SZ, id, 0)) << id;
    }
    EXPECT_EQ(KORV_FAILURE, TokenCapture(&without, L"x", WVARCHAR_SZ, 90, 0));
    EXPECT_EQ(KORV_TOKEN_BAD_ID, TokenCapture(&without, L"x", WVARCHAR_SZ, 91, 0));
}

TEST_F(TokenSlots, AreReachedThroughTheBlock) {
    CtrlBlkI block{};
    block.errorAnchor = anchor;
    ErrorRecord* const record = open(2);
    ASSERT_EQ(0, TokenCapture(&block, "abc", CHAR, KORV_TOKID_PARMKEY, 2));
    EXPECT_EQ(54u, slotOf(record, 0).tokenId);
    EXPECT_STREQ(L"ab", slotOf(record, 0).text);
    EXPECT_EQ(openedBytes(2) + 12, anchor->currentSize);
    EXPECT_EQ(KORV_TOKEN_BAD_TYPE, TokenCapture(&block, "abc", DOUBLE, KORV_TOKID_CODEPAGE, 2));
    EXPECT_EQ(90u, slotOf(record, 1).tokenId);
}

// Identifier 0 marks an unused slot: the next token goes there, and the text is not freed.
TEST_F(TokenSlots, UnderIdentifierZeroStayUnused) {
    ErrorRecord* const record = open(2);
    ASSERT_EQ(0, capture(111, 0));
    wchar_t* const text = slotOf(record, 0).text;
    EXPECT_EQ(0u, slotOf(record, 0).tokenId);
    EXPECT_STREQ(L"111", text);
    ASSERT_EQ(0, capture(222, KORV_TOKID_YEAR));
    EXPECT_EQ(static_cast<std::uint32_t>(KORV_TOKID_YEAR), slotOf(record, 0).tokenId);
    EXPECT_STREQ(L"222", slotOf(record, 0).text);
    EXPECT_STREQ(L"111", text);
    EXPECT_NE(0u, heap::sizeOf(text));
    std::free(text);
    EXPECT_EQ(openedBytes(2) + 2 * 16, anchor->currentSize);
}

TEST_F(TokenSlots, AcceptOneTokenMoreThanTheirNumber) {
    for (const std::int16_t count : {0, 1, 2, 3, 10}) {
        const auto spare = static_cast<std::size_t>(count);
        ErrorRecord* const record = open(count);
        for (std::size_t i = 0; i <= spare; ++i) {
            ASSERT_EQ(0, capture(static_cast<std::int32_t>(i) + 1, KORV_TOKID_KEY)) << count;
        }
        EXPECT_EQ(std::to_wstring(spare + 1), slotOf(record, spare).text);
        EXPECT_EQ(static_cast<std::uint32_t>(KORV_TOKID_KEY), slotOf(record, spare).tokenId);

        // Each further token replaces it, and the text replaced is not released.
        wchar_t* const replaced = slotOf(record, spare).text;
        ASSERT_EQ(0, capture(77, KORV_TOKID_RADIX));
        EXPECT_EQ(static_cast<std::uint32_t>(KORV_TOKID_RADIX), slotOf(record, spare).tokenId);
        EXPECT_STREQ(L"77", slotOf(record, spare).text);
        EXPECT_NE(0u, heap::sizeOf(replaced));
        EXPECT_EQ(std::to_wstring(spare + 1), replaced);
        std::free(replaced);
        freeText(slotOf(record, spare));
    }
}

TEST_F(TokenSlots, OfANegativeNumberTakeNothing) {
    for (const std::int16_t count : {-1, -2, -32768}) {
        ErrorRecord* const record = open(count);
        const ErrorAnchor before = *anchor;
        heap::failAt(0);
        EXPECT_EQ(KORV_TOKEN_NO_SLOT, capture(1, KORV_TOKID_YEAR)) << count;
        EXPECT_EQ(KORV_TOKEN_NO_SLOT, TokenCaptureEAB(anchor, nullptr, INTEGER, 0, 0)) << count;
        EXPECT_EQ(KORV_TOKEN_NO_SLOT, TokenCaptureEAB(anchor, &before, DOUBLE, 90, 0)) << count;
        EXPECT_EQ(KORV_TOKEN_BAD_ID, capture(1, 91)) << "the identifier is tested first";
        EXPECT_EQ(0u, heap::allocations());
        EXPECT_EQ(0u, slotOf(record, 0).tokenId);
        EXPECT_EQ(nullptr, slotOf(record, 0).text);
        EXPECT_EQ(before.currentSize, anchor->currentSize);
        EXPECT_EQ(before.largestSize, anchor->largestSize);
    }
}

TEST_F(TokenSlots, AreUsedUpByFailedCaptures) {
    ErrorRecord* const record = open(4);
    const std::int32_t number = 7;
    EXPECT_EQ(KORV_TOKEN_BAD_TYPE, TokenCaptureEAB(anchor, &number, DOUBLE, 11, 0));
    EXPECT_EQ(KORV_FAILURE, TokenCaptureEAB(anchor, nullptr, INTEGER, 12, 0));
    heap::failAt(1);
    EXPECT_EQ(KORV_FAILURE, TokenCaptureEAB(anchor, &number, INTEGER, 13, 0));
    heap::failAt(0);
    EXPECT_EQ(openedBytes(4), anchor->currentSize);
    EXPECT_EQ(openedBytes(4), anchor->largestSize);
    EXPECT_EQ(0, TokenCaptureEAB(anchor, &number, INTEGER, 14, 0));
    for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(11 + i, slotOf(record, i).tokenId);
    for (std::uint32_t i = 0; i < 3; ++i) EXPECT_EQ(nullptr, slotOf(record, i).text);
    EXPECT_STREQ(L"7", slotOf(record, 3).text);
}

// The text of a token that is replaced in vain is gone from the slot, and is not freed.
TEST_F(TokenSlots, AreEmptiedByFailedCaptures) {
    ErrorRecord* const record = open(1);
    const std::int32_t number = 7;
    struct Case {
        const void* value;
        std::int16_t dataType;
        unsigned failing;
        std::int32_t status;
    };
    for (const Case& c :
         {Case{&number, DOUBLE, 0, 3}, Case{nullptr, DOUBLE, 0, -1}, Case{&number, INTEGER, 1, -1},
          Case{nullptr, CHAR, 1, -1}, Case{&number, ODBC_DATE, 1, -1}}) {
        slotOf(record, 0) = {};
        ASSERT_EQ(0, capture(1, 0));
        wchar_t* const replaced = slotOf(record, 0).text;
        heap::failAt(c.failing);
        EXPECT_EQ(c.status, TokenCaptureEAB(anchor, c.value, c.dataType, 33, 0));
        heap::failAt(0);
        EXPECT_EQ(33u, slotOf(record, 0).tokenId);
        EXPECT_EQ(nullptr, slotOf(record, 0).text);
        EXPECT_NE(0u, heap::sizeOf(replaced));
        std::free(replaced);
    }
}

}  // namespace
