// A control block in the X form: its own members, its field list, its reference nodes.
#include "ctrlblk/records.h"

namespace {

class ConvertBlock : public HeapTest {};

void expectBlockCarried(const CtrlBlkI& source, const CtrlBlkX& target) {
    expectHeader(target.header, "BLKX", sizeof target);
    EXPECT_MEMBER(source, target, blkCode);
    EXPECT_MEMBER(source, target, blkAttr1);
    EXPECT_MEMBER(source, target, blkAttr2);
    EXPECT_MEMBER(source, target, blkAttr3);
    EXPECT_MEMBER(source, target, blkAttr4);
    EXPECT_MEMBER(source, target, blkAttr5);
    EXPECT_MEMBER(source, target, blkFlag);
    EXPECT_MEMBER(source, target, blkValue1);
    EXPECT_MEMBER(source, target, blkValue2);
    EXPECT_MEMBER(source, target, blkValue3);
}

// An X block on the heap that holds rubbish where the library writes, and no lists.
CtrlBlkX* rubbishBlock() {
    auto* block = heapRecord<CtrlBlkX>();
    *block = rubbish<CtrlBlkX>(77);
    block->fieldDefs = nullptr;
    block->fieldRefs.link = nullptr;
    return block;
}

void freeFields(FieldDefX* first) {
    for (FieldDefX* field : listed(first)) std::free(field);
}

TEST_F(ConvertBlock, CarriesItsMembersAndLeavesTheCallersAlone) {
    Request request(1, {0});
    CtrlBlkX* target = rubbishBlock();
    const CtrlBlkX before = *target;
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    expectBlockCarried(request.block, *target);
    EXPECT_MEMBER(before, *target, reserved1);
    EXPECT_MEMBER(before, *target, blkSlot);
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(ConvertBlock, NeedsBothBlocksAndWritesNothingWithout) {
    Request request(1, {0});
    CtrlBlkX target = rubbish<CtrlBlkX>(5);
    const CtrlBlkX before = target;
    EXPECT_EQ(KORV_FAILURE, KORVCnvCtrlBlkFromIToX(nullptr, &target));
    EXPECT_EQ(0, std::memcmp(&before, &target, sizeof target));
    EXPECT_EQ(KORV_FAILURE, KORVCnvCtrlBlkFromIToX(&request.block, nullptr));
    EXPECT_EQ(KORV_FAILURE, KORVCnvCtrlBlkFromIToX(nullptr, nullptr));
}

TEST_F(ConvertBlock, ConvertsFieldsInListOrder) {
    for (const std::size_t count : {1u, 2u, 3u, 17u}) {
        Request request(count, {0});
        CtrlBlkX* target = rubbishBlock();
        ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
        const auto fields = listed(target->fieldDefs);
        ASSERT_EQ(count, fields.size());
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(sizeof(FieldDefX), heap::sizeOf(fields[i]));
            expectHeader(fields[i]->header, "FLDX", sizeof(FieldDefX));
            expectFieldCarried(request.fields[i], *fields[i]);
            EXPECT_MEMBER(request.fields[i], *fields[i], wideText);
            EXPECT_MEMBER(request.fields[i], *fields[i], narrowText);
        }
        EXPECT_EQ(0, CleanCtrlBlkX(target));
    }
}

TEST_F(ConvertBlock, WithoutFieldsHasEmptyReferences) {
    Request request(0, {0, 1, -1, 5});
    auto* target = heapRecord<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    EXPECT_EQ(nullptr, target->fieldDefs);
    const auto nodes = listed(&target->fieldRefs);
    ASSERT_EQ(4u, nodes.size());
    for (const FieldRefX* node : nodes) EXPECT_EQ(nullptr, node->fieldDef);
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

// The caller's own list stays in the block, and it is the one that the references count in.
TEST_F(ConvertBlock, WithoutFieldsKeepsTheListOfTheCaller) {
    Request request(0, {1, 0, 2});
    FieldDefX second = rubbish<FieldDefX>(2);
    FieldDefX first = rubbish<FieldDefX>(1);
    second.link = nullptr;
    first.link = &second;
    CtrlBlkX* target = rubbishBlock();
    target->fieldDefs = &first;
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    EXPECT_EQ(&first, target->fieldDefs);
    const auto nodes = listed(&target->fieldRefs);
    ASSERT_EQ(3u, nodes.size());
    EXPECT_EQ(&second, nodes[0]->fieldDef);
    EXPECT_EQ(&first, nodes[1]->fieldDef);
    EXPECT_EQ(&second + 1, nodes[2]->fieldDef);
    target->fieldDefs = nullptr;
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(ConvertBlock, DropsTheListOfTheCallerForItsOwn) {
    Request request(1, {0});
    FieldDefX held = rubbish<FieldDefX>(1);
    const FieldDefX before = held;
    CtrlBlkX* target = rubbishBlock();
    target->fieldDefs = &held;
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    EXPECT_NE(&held, target->fieldDefs);
    EXPECT_EQ(0, std::memcmp(&before, &held, sizeof held));
    EXPECT_EQ(1u, listed(target->fieldDefs).size());
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(ConvertBlock, FillsChainedNodesAgainAndAddsTheMissingOnes) {
    Request shortChain(2, {0, 1});
    Request longChain(3, {2, 1, 0, 2});
    CtrlBlkX* target = rubbishBlock();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&shortChain.block, target));
    FieldRefX* const kept = target->fieldRefs.link;
    freeFields(target->fieldDefs);

    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&longChain.block, target));
    const auto fields = listed(target->fieldDefs);
    const auto nodes = listed(&target->fieldRefs);
    ASSERT_EQ(4u, nodes.size());
    EXPECT_EQ(kept, nodes[1]);
    EXPECT_EQ(fields[2], nodes[0]->fieldDef);
    EXPECT_EQ(fields[1], nodes[1]->fieldDef);
    EXPECT_EQ(fields[0], nodes[2]->fieldDef);
    EXPECT_EQ(fields[2], nodes[3]->fieldDef);
    EXPECT_EQ(sizeof(FieldRefX), heap::sizeOf(nodes[3]));
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(ConvertBlock, NeverShortensTheChain) {
    Request longChain(2, {0, 1, 1, 0});
    Request shortChain(2, {1, 0});
    CtrlBlkX* target = rubbishBlock();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&longChain.block, target));
    const auto before = listed(&target->fieldRefs);
    const FieldRefX third = *before[2];
    const FieldRefX fourth = *before[3];
    freeFields(target->fieldDefs);

    heap::failAt(0);
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&shortChain.block, target));
    EXPECT_EQ(2u, heap::allocations()) << "one for each field, none for the nodes";
    EXPECT_EQ(before, listed(&target->fieldRefs));
    EXPECT_EQ(0, std::memcmp(&third, before[2], sizeof third));
    EXPECT_EQ(0, std::memcmp(&fourth, before[3], sizeof fourth));
    EXPECT_EQ(target->fieldDefs->link, before[0]->fieldDef);
    EXPECT_EQ(target->fieldDefs, before[1]->fieldDef);
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(ConvertBlock, WithoutMemoryLeavesNoLists) {
    Request request(3, {0, 1, 2});
    for (unsigned n = 1; n <= 5; ++n) {
        CtrlBlkX target = rubbish<CtrlBlkX>(77);
        target.fieldRefs.link = nullptr;
        const CtrlBlkX before = target;
        const std::size_t live = heap::liveBlocks();
        heap::failAt(n);
        EXPECT_EQ(n <= 3 ? KORV_NO_MEMORY_FIELD : KORV_NO_MEMORY_REFERENCE,
                  KORVCnvCtrlBlkFromIToX(&request.block, &target))
            << n;
        EXPECT_EQ(n, heap::allocations());
        EXPECT_EQ(live, heap::liveBlocks()) << n;
        EXPECT_EQ(nullptr, target.fieldDefs) << n;
        EXPECT_EQ(nullptr, target.fieldRefs.link) << n;
        expectBlockCarried(request.block, target);
        EXPECT_MEMBER(before, target, reserved1);
        EXPECT_MEMBER(before, target, blkSlot);
    }
    heap::failAt(6);
    CtrlBlkX target{};
    EXPECT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, &target)) << "five blocks are enough";
    std::free(target.fieldRefs.link->link);
    std::free(target.fieldRefs.link);
    freeFields(target.fieldDefs);
}

TEST_F(ConvertBlock, WithoutMemoryReleasesNodesChainedBefore) {
    Request request(2, {0, 1, 0});
    Request longer(2, {0, 0, 0, 0, 0});
    for (unsigned n = 1; n <= 4; ++n) {
        const std::size_t live = heap::liveBlocks();
        CtrlBlkX target{};
        ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, &target));
        freeFields(target.fieldDefs);
        heap::failAt(n);
        EXPECT_EQ(n <= 2 ? KORV_NO_MEMORY_FIELD : KORV_NO_MEMORY_REFERENCE,
                  KORVCnvCtrlBlkFromIToX(&longer.block, &target))
            << n;
        heap::failAt(0);
        EXPECT_EQ(nullptr, target.fieldDefs) << n;
        EXPECT_EQ(nullptr, target.fieldRefs.link) << n;
        EXPECT_EQ(live, heap::liveBlocks()) << n;
    }
}

// The block's field list is released, even if the caller built it.
TEST_F(ConvertBlock, WithoutMemoryReleasesTheListOfTheCaller) {
    Request fields(2, {0});
    Request references(0, {0, 1});
    const std::size_t live = heap::liveBlocks();
    CtrlBlkX target{};
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&fields.block, &target));
    heap::failAt(1);
    EXPECT_EQ(KORV_NO_MEMORY_REFERENCE, KORVCnvCtrlBlkFromIToX(&references.block, &target));
    heap::failAt(0);
    EXPECT_EQ(nullptr, target.fieldDefs);
    EXPECT_EQ(live, heap::liveBlocks());
}

}  // namespace
