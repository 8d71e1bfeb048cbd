// Opening error records: their layout, the chain, the anchor's counters.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string_view>

#include "errors/chain.h"
#include "support/fenced.h"

namespace {

class ErrorChain : public ChainTest {
  protected:
    void SetUp() override {
        ChainTest::SetUp();
        block.errorAnchor = anchor;
    }

    CtrlBlkI block{};
};

TEST_F(ErrorChain, OpensARecordForEachSlotCount) {
    std::vector<int> counts;
    for (int count = -70; count <= 70; ++count) counts.push_back(count);
    counts.insert(counts.end(), {127, 128, 255, 256, 1000, 32766, 32767, -32767, -32768});
    for (const int count : counts) {
        ErrorAnchor* const own = newAnchor();
        const auto slotCount = static_cast<std::int16_t>(count);
        ASSERT_EQ(0, ErrorCaptureEAB(own, 0xA1B2C3D4, 0x01020304, slotCount)) << count;
        ErrorRecord* const record = own->head;
        ASSERT_EQ(record, own->tail);
        EXPECT_EQ(nullptr, record->next);
        EXPECT_EQ("ECBD", std::string_view(record->header.eyeCatcher, 4));
        EXPECT_EQ(KORV_BLOCK_VERSION, record->header.version);
        EXPECT_EQ(sizeof(ErrorRecord), record->header.length);
        EXPECT_EQ(slotCount, record->tokenSlotCount);
        EXPECT_EQ(0xA1B2C3D4, record->firstCode);
        EXPECT_EQ(0x01020304u, record->secondCode);
        EXPECT_EQ(1u, own->recordCount);
        EXPECT_EQ(openedBytes(slotCount), own->currentSize) << count;
        EXPECT_EQ(openedBytes(slotCount), own->largestSize) << count;

        // All slots and, where there are any, one to spare lie in the block, and all are unused.
        const std::size_t owned = recordBytes(slotCount) + (slotCount > 0 ? sizeof(TokenSlot) : 0);
        ASSERT_LE(owned, heap::sizeOf(record)) << count;
        const std::size_t slots = (owned - offsetof(ErrorRecord, tokenSlots)) / sizeof(TokenSlot);
        for (std::size_t i = 0; i < slots; ++i) {
            ASSERT_EQ(0u, slotOf(record, i).tokenId) << i;
            ASSERT_EQ(nullptr, slotOf(record, i).text) << i;
        }
        EXPECT_EQ(0, TermErrors(own));
    }
}

#if UINTPTR_MAX == UINT32_MAX
TEST_F(ErrorChain, AccountsKnownSizes) {
    struct Case {
        std::int16_t slotCount;
        std::uint32_t size;
    };
    for (const Case& c : {Case{0, 32}, Case{1, 40}, Case{2, 56}, Case{3, 72}, Case{5, 104},
                          Case{10, 184}, Case{-1, 24}, Case{-4, 0}, Case{-5, 0xFFFFFFF8},
                          Case{32767, 524296}, Case{-32768, 0xFFFC0020}}) {
        ErrorAnchor* const own = newAnchor();
        ASSERT_EQ(0, ErrorCaptureEAB(own, 0, 0, c.slotCount));
        EXPECT_EQ(c.size, own->currentSize) << c.slotCount;
        EXPECT_EQ(c.size, own->largestSize) << c.slotCount;
        EXPECT_EQ(0, TermErrors(own));
    }
}
#endif

// Readers of the record find the second code in front of the first.
TEST_F(ErrorChain, StoresTheSecondCodeBeforeTheFirst) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(open(1));
    std::uint32_t words[2];
    std::memcpy(words, bytes + offsetof(ErrorRecord, secondCode), sizeof words);
    EXPECT_EQ(2u, words[0]);
    EXPECT_EQ(1u, words[1]);
}

TEST_F(ErrorChain, AppendsRecordsInOrder) {
    std::vector<ErrorRecord*> opened;
    for (std::uint32_t i = 0; i < 20; ++i) {
        ASSERT_EQ(0, ErrorCaptureEAB(anchor, i, ~i, static_cast<std::int16_t>(i % 4)));
        opened.push_back(anchor->tail);
        EXPECT_EQ(opened, chain());
        EXPECT_EQ(i + 1, anchor->recordCount);
    }
    for (std::uint32_t i = 0; i < 20; ++i) {
        EXPECT_EQ(i, opened[i]->firstCode);
        EXPECT_EQ(~i, opened[i]->secondCode);
    }
}

TEST_F(ErrorChain, KeepsTheLargestSize) {
    open(5);
    EXPECT_EQ(openedBytes(5), anchor->currentSize);
    ErrorRecord* const first = anchor->head;
    open(1);
    EXPECT_EQ(first, anchor->head);
    EXPECT_EQ(first->next, anchor->tail);
    EXPECT_EQ(2u, anchor->recordCount);
    EXPECT_EQ(openedBytes(1), anchor->currentSize);
    EXPECT_EQ(openedBytes(5), anchor->largestSize);
    open(6);
    EXPECT_EQ(openedBytes(6), anchor->largestSize);
    // A size below zero is a very large one.
    open(-5);
    EXPECT_EQ(openedBytes(-5), anchor->largestSize);
    open(1);
    EXPECT_EQ(openedBytes(1), anchor->currentSize);
    EXPECT_EQ(openedBytes(-5), anchor->largestSize);
}

TEST_F(ErrorChain, WithoutMemoryForTheFirstRecordStaysEmpty) {
    // The tail of an empty chain means nothing.
    ErrorRecord unused{};
    anchor->tail = &unused;
    heap::failAt(1);
    EXPECT_EQ(KORV_FAILURE, ErrorCaptureEAB(anchor, 1, 2, 10));
    EXPECT_EQ(nullptr, anchor->head);
    EXPECT_EQ(&unused, anchor->tail);
    EXPECT_EQ(nullptr, unused.next);
    EXPECT_EQ(0u, anchor->recordCount);
    EXPECT_EQ(0u, anchor->largestSize);
    EXPECT_EQ(recordBytes(10), anchor->currentSize);
    ErrorRecord* const record = open(1);
    EXPECT_EQ(record, anchor->head);
    EXPECT_EQ(1u, anchor->recordCount);
}

TEST_F(ErrorChain, WithoutMemoryForAFurtherRecordStaysAsItWas) {
    for (std::uint32_t records = 1; records <= 3; ++records) {
        open(1);
        const std::vector<ErrorRecord*> before = chain();
        heap::failAt(1);
        EXPECT_EQ(KORV_FAILURE, ErrorCaptureEAB(anchor, 1, 2, 100));
        EXPECT_EQ(1u, heap::allocations());
        heap::failAt(0);
        EXPECT_EQ(before, chain());
        EXPECT_EQ(before.back(), anchor->tail);
        EXPECT_EQ(records, anchor->recordCount);
        EXPECT_EQ(openedBytes(1), anchor->largestSize);
        EXPECT_EQ(recordBytes(100), anchor->currentSize);
    }
}

TEST_F(ErrorChain, NeedsAnAnchor) {
    heap::failAt(0);
    EXPECT_EQ(KORV_FAILURE, ErrorCaptureEAB(nullptr, 1, 2, 3));
    CtrlBlkI without{};
    EXPECT_EQ(KORV_FAILURE, ErrorCapture(&without, 1, 2, 3));
    EXPECT_EQ(0u, heap::allocations());
}

TEST_F(ErrorChain, IsReachedThroughTheBlock) {
    ASSERT_EQ(0, ErrorCapture(&block, 7, 8, 3));
    EXPECT_EQ(7u, anchor->tail->firstCode);
    EXPECT_EQ(8u, anchor->tail->secondCode);
    EXPECT_EQ(3, anchor->tail->tokenSlotCount);
    EXPECT_EQ(openedBytes(3), anchor->currentSize);
    heap::failAt(1);
    EXPECT_EQ(KORV_FAILURE, ErrorCapture(&block, 7, 8, 3));
}

// Only the anchor of a block is read: here all after it lies in the unreadable page.
TEST_F(ErrorChain, ReadsNothingElseOfTheBlock) {
    constexpr std::size_t end = offsetof(CtrlBlkI, errorAnchor) + sizeof block.errorAnchor;
    Fenced<char> bytes(end);
    std::memcpy(bytes.data() + offsetof(CtrlBlkI, errorAnchor), &anchor, sizeof anchor);
    const auto* cut = reinterpret_cast<const CtrlBlkI*>(bytes.data());
    EXPECT_EQ(0, ErrorCapture(cut, 1, 2, 1));
    EXPECT_EQ(0, TokenCapture(cut, nullptr, VARCHAR_SZ, KORV_TOKID_PATH, 0));
    EXPECT_EQ(1u, anchor->recordCount);
    EXPECT_STREQ(L"<NULL>", slotOf(anchor->head, 0).text);
    EXPECT_TRUE(bytes.intact());
}

}  // namespace
