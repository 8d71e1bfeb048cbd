// Releasing an error chain: what is freed, and the texts that are not.
#include <cstring>

#include "errors/chain.h"

namespace {

class ReleaseChain : public ChainTest {
  protected:
    // A text that counts as a block of the library.
    static wchar_t* newText() {
        void* block = nullptr;
        std::uint32_t size = 0;
        EXPECT_EQ(0, KORVAllocateBuffer(&block, &size, 8));
        return static_cast<wchar_t*>(block);
    }
    void release() {
        EXPECT_EQ(0, TermErrors(anchor));
        anchor = nullptr;
    }
};

TEST_F(ReleaseChain, OfNothingSucceeds) {
    EXPECT_EQ(0, TermErrors(nullptr));
}

TEST_F(ReleaseChain, WithoutRecordsFreesTheAnchor) {
    const std::size_t live = heap::liveBlocks();
    release();
    EXPECT_EQ(live - 1, heap::liveBlocks());
}

// A debugging heap shows what the block held.
TEST_F(ReleaseChain, ClearsTheCountersOfTheAnchorBeforeItIsFreed) {
    static const ErrorAnchor* watched;
    static int seen;
    watched = anchor;
    seen = 0;
    open(2);
    ASSERT_NE(0u, anchor->currentSize);
    heap::beforeFree([](const void* block) {
        if (block != watched) return;
        ++seen;
        EXPECT_EQ(nullptr, watched->head);
        EXPECT_EQ(0u, watched->recordCount + watched->largestSize + watched->currentSize);
    });
    release();
    heap::beforeFree(nullptr);
    EXPECT_EQ(1, seen);
}

TEST_F(ReleaseChain, FreesEveryRecordAndEveryTextOfItsSlots) {
    const std::size_t live = heap::liveBlocks();
    for (std::int16_t count = 1; count <= 12; ++count) {
        ErrorRecord* const record = open(count);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            slotOf(record, i) = {static_cast<std::uint32_t>(i + 1), newText()};
        }
    }
    EXPECT_EQ(live + 12 + 78, heap::liveBlocks());
    release();
    EXPECT_EQ(live - 1, heap::liveBlocks());
}

TEST_F(ReleaseChain, FreesTextsBehindUnusedSlotsAndPassesOverMissingOnes) {
    ErrorRecord* const record = open(4);
    slotOf(record, 1) = {KORV_TOKID_PATH, nullptr};
    slotOf(record, 3) = {0x80000000u, newText()};
    const std::size_t live = heap::liveBlocks();
    release();
    EXPECT_EQ(live - 3, heap::liveBlocks());
}

TEST_F(ReleaseChain, LeavesTextsUnderIdentifierZero) {
    ErrorRecord* const record = open(2);
    wchar_t* const kept = newText();
    slotOf(record, 0) = {0, kept};
    slotOf(record, 1) = {KORV_TOKID_PATH, newText()};
    release();
    EXPECT_NE(0u, heap::sizeOf(kept));
    std::free(kept);
}

// A text on the stack: freeing it would end the program.
TEST_F(ReleaseChain, DoesNotVisitSlotsBehindTheCount) {
    wchar_t text[] = L"stays";
    for (const std::int16_t count : {1, 2, 7}) {
        slotOf(open(count), static_cast<std::size_t>(count)) = {KORV_TOKID_PATH, text};
    }
    for (const std::int16_t count : {0, -1, -5, -32768}) {
        slotOf(open(count), 0) = {KORV_TOKID_PATH, text};
    }
    const std::size_t live = heap::liveBlocks();
    release();
    EXPECT_EQ(live - 8, heap::liveBlocks());
    EXPECT_STREQ(L"stays", text);
}

TEST_F(ReleaseChain, FreesCapturedTokens) {
    const std::size_t live = heap::liveBlocks();
    const std::int32_t number = 42;
    for (int record = 0; record < 3; ++record) {
        open(3);
        ASSERT_EQ(0, TokenCaptureEAB(anchor, &number, INTEGER, KORV_TOKID_SQLCODE, 0));
        ASSERT_EQ(KORV_TOKEN_BAD_TYPE,
                  TokenCaptureEAB(anchor, &number, DOUBLE, KORV_TOKID_SEED, 0));
        ASSERT_EQ(0, TokenCaptureEAB(anchor, nullptr, WCHAR, KORV_TOKID_COLNAME, 0));
    }
    EXPECT_EQ(live + 3 * 3, heap::liveBlocks());
    release();
    EXPECT_EQ(live - 1, heap::liveBlocks());
}

}  // namespace
