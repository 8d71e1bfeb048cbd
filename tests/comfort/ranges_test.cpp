// Ranges of the C++ header: the records of every list, in their order, and nothing else.
#include <algorithm>
#include <iterator>
#include <ranges>
#include <vector>

#include "ctrlblk/records.h"
#include "errors/chain.h"
#include "korv/korv.hpp"

namespace {

template <class Range>
auto addresses(const Range& range) {
    std::vector<decltype(&*range.begin())> found;
    for (auto& record : range) found.push_back(&record);
    return found;
}

template <class Range>
constexpr bool isForward = std::ranges::forward_range<Range>;
static_assert(isForward<korv::List<FieldDefI>> && isForward<korv::List<FieldDefX>>);
static_assert(isForward<korv::List<const FieldRefX>> && isForward<korv::List<OprDef>>);
static_assert(isForward<korv::List<ErrorRecord>>);
static_assert(std::ranges::contiguous_range<korv::Row<TokenSlot>>);

TEST(Ranges, WalkTheFieldsOfBothForms) {
    for (const std::size_t count : {0u, 1u, 2u, 5u}) {
        const Request request(count, {0});
        EXPECT_EQ(listed(request.block.fieldDefs), addresses(korv::fields(request.block)));

        const auto block = korv::make<CtrlBlkX>();
        ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block.get()));
        const auto fields = addresses(korv::fields(*block));
        EXPECT_EQ(count, fields.size());
        EXPECT_EQ(listed(block->fieldDefs), fields);

        SvcDefX service{};
        service.fieldDefs = block->fieldDefs;
        EXPECT_EQ(fields, addresses(korv::fields(service)));
    }
}

TEST(Ranges, WalkTheReferencesFromTheEmbeddedOneOn) {
    Request request(3, {2, 0, 1});
    const auto nodes = addresses(korv::references(request.block));
    EXPECT_EQ(&request.block.fieldRefs, nodes.front());
    EXPECT_EQ(listed(&request.block.fieldRefs), nodes);

    const auto block = korv::make<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block.get()));
    std::vector<int> positions;
    for (const FieldRefX& node : korv::references(std::as_const(*block))) {
        positions.push_back(node.fieldPos);
    }
    EXPECT_EQ((std::vector<int>{2, 0, 1}), positions);
}

// As the conversion counts, but for positions past the end.
TEST(Ranges, FindTheFieldThatAReferencePicks) {
    const std::vector<int> positions = {0, 1, 2, 3, 32767, -1, -32768, 2};
    const Request request(3, positions);
    const auto block = korv::make<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block.get()));
    std::size_t at = 0;
    for (const FieldRefX& node : korv::references(*block)) {
        const bool past = positions[at++] >= 3;
        EXPECT_EQ(past ? nullptr : node.fieldDef, korv::pickedField(*block, node)) << at;
    }
    EXPECT_EQ(positions.size(), at);
    const FieldRefI& second = *request.block.fieldRefs.link;
    EXPECT_EQ(&request.fields[1], korv::pickedField(request.block, second));
    EXPECT_EQ(nullptr, korv::pickedField(CtrlBlkX{}, FieldRefX{}));
}

TEST(Ranges, WalkTheOperandsOfBothForms) {
    OprDefI operands[3] = {};
    operands[0].link = &operands[1];
    operands[1].link = &operands[2];
    SvcDefI service{};
    EXPECT_TRUE(addresses(korv::operands(service)).empty());
    service.oprDefs = operands;
    EXPECT_EQ(listed(operands), addresses(korv::operands(service)));
    SvcDefX converted{};
    const CtrlBlkX block{};
    ASSERT_EQ(0, KORVCnvSvcDefFromIToX(&block, &service, &converted));
    const korv::Owner<OprDefX> owner(converted.oprDefs);
    EXPECT_EQ(listed(owner.get()), addresses(korv::operands(converted)));
    EXPECT_EQ(listed(owner.get()), addresses(korv::List(owner.get())));
}

using RangesOfErrors = ChainTest;

TEST_F(RangesOfErrors, WalkTheRecordsAndTheirSlots) {
    EXPECT_TRUE(addresses(korv::errors(*anchor)).empty());
    for (const std::int16_t count : {2, 0, 1, -3}) open(count);
    EXPECT_EQ(chain(), addresses(korv::errors(*anchor)));

    std::vector<std::size_t> sizes;
    for (ErrorRecord& record : korv::errors(*anchor)) {
        const auto slots = korv::tokens(record);
        sizes.push_back(slots.size());
        EXPECT_EQ(slots.size(),
                  static_cast<std::size_t>(std::distance(slots.begin(), slots.end())));
        EXPECT_EQ(&record.tokenSlots[0], slots.begin());
    }
    EXPECT_EQ((std::vector<std::size_t>{2, 0, 1, 0}), sizes);
}

TEST_F(RangesOfErrors, ServeTheStandardAlgorithms) {
    open(2);
    open(1);
    ASSERT_EQ(0, TokenCaptureEAB(anchor, "x", VARCHAR_SZ, KORV_TOKID_MASK, 0));
    const auto records = korv::errors(*anchor);
    const auto used = [](const TokenSlot& slot) { return slot.tokenId != KORV_TOKID_UNUSED; };
    EXPECT_EQ(2, std::distance(records.begin(), records.end()));
    const auto with = std::ranges::find_if(records, [&](const ErrorRecord& record) {
        return std::ranges::any_of(korv::tokens(record), used);
    });
    EXPECT_EQ(anchor->tail, &*with);
    EXPECT_EQ(2, with->tokenSlotCount + 1);
    auto passed = records.begin();
    EXPECT_EQ(anchor->head, &*passed++);
    EXPECT_EQ(with, passed);
    EXPECT_NE(records.end(), passed);
}

}  // namespace
