// Release of X records: each block once, texts never.
#include "ctrlblk/records.h"

namespace {

class Release : public HeapTest {};

TEST_F(Release, OfNothingSucceeds) {
    EXPECT_EQ(0, CleanCtrlBlkX(nullptr));
    EXPECT_EQ(0, CleanSvcDefX(nullptr));
    EXPECT_EQ(0, CleanParamsX(nullptr));
}

TEST_F(Release, OfABlockFreesItsListsAndItself) {
    for (const std::size_t fields : {0u, 1u, 4u}) {
        for (const std::vector<int>& positions : {std::vector<int>{0}, std::vector<int>{0, 0, 0}}) {
            const std::size_t live = heap::liveBlocks();
            Request request(fields, positions);
            auto* block = heapRecord<CtrlBlkX>();
            ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block));
            EXPECT_EQ(live + 1 + fields + positions.size() - 1, heap::liveBlocks());
            EXPECT_EQ(0, CleanCtrlBlkX(block));
            EXPECT_EQ(live, heap::liveBlocks());
        }
    }
}

TEST_F(Release, OfAServiceFreesItsOperandsAndItselfButNoFields) {
    const std::size_t live = heap::liveBlocks();
    Request request(2, {0});
    auto* block = heapRecord<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block));
    OprDefI second{};
    OprDefI first{};
    first.link = &second;
    SvcDefI source{};
    source.oprDefs = &first;
    auto* service = heapRecord<SvcDefX>();
    ASSERT_EQ(0, KORVCnvSvcDefFromIToX(block, &source, service));
    EXPECT_EQ(live + 3 + 3, heap::liveBlocks());
    EXPECT_EQ(0, CleanSvcDefX(service));
    EXPECT_EQ(live + 3, heap::liveBlocks()) << "the block and its two fields remain";
    EXPECT_EQ(2u, listed(block->fieldDefs).size());
    EXPECT_EQ(0, CleanCtrlBlkX(block));
}

TEST_F(Release, OfOperandsFreesTheList) {
    const std::size_t live = heap::liveBlocks();
    auto* first = heapRecord<OprDefX>();
    first->link = heapRecord<OprDefX>();
    first->link->link = heapRecord<OprDefX>();
    EXPECT_EQ(live + 3, heap::liveBlocks());
    EXPECT_EQ(0, CleanParamsX(first));
    EXPECT_EQ(live, heap::liveBlocks());
}

// Texts on the stack: freeing one would end the program.
TEST_F(Release, LeavesTextsOfTheSourceAlone) {
    wchar_t wide[] = L"account";
    char narrow[] = "account";
    Request request(1, {0});
    request.fields[0].wideText = wide;
    request.fields[0].narrowText = narrow;
    auto* block = heapRecord<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block));
    OprDefI operand{};
    operand.oprText = wide;
    operand.wideValue = wide;
    operand.narrowValue = narrow;
    SvcDefI source{};
    source.oprDefs = &operand;
    auto* service = heapRecord<SvcDefX>();
    ASSERT_EQ(0, KORVCnvSvcDefFromIToX(block, &source, service));
    EXPECT_EQ(wide, block->fieldDefs->wideText);
    EXPECT_EQ(narrow, block->fieldDefs->narrowText);
    EXPECT_EQ(wide, service->oprDefs->oprText);
    EXPECT_EQ(0, CleanSvcDefX(service));
    EXPECT_EQ(0, CleanCtrlBlkX(block));
    EXPECT_STREQ(L"account", wide);
    EXPECT_STREQ("account", narrow);
}

}  // namespace
