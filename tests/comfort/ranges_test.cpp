// Ranges of the C++ header: the records of every list, in their order, and nothing else.
#include <algorithm>
#include <iterator>
#include <ranges>
#include <string>
#include <string_view>
#include <utility>
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

TEST(Ranges, WalkTheFieldsOfBothForms) {
    for (const std::size_t count : {0u, 1u, 2u, 5u}) {
        Request request(count, {0});
        EXPECT_EQ(count == 0, korv::fields(request.block).empty());
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

// As the conversion counts, except for positions past the end.
TEST(Ranges, FindTheFieldThatAReferencePicks) {
    const std::vector<int> positions = {0, 1, 2, 3, 32767, -1, -32768, 2};
    Request request(3, positions);
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
    EXPECT_EQ(&request.fields[1], korv::pickedField(std::as_const(request.block), second));
    const CtrlBlkX withoutFields{};
    EXPECT_EQ(nullptr, korv::pickedField(withoutFields, FieldRefX{}));
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
        EXPECT_EQ(slots.size() == 0, slots.empty());
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

TEST(Ranges, MakeEmptyOnesByDefault) {
    EXPECT_TRUE(korv::List<FieldDefX>().empty());
    EXPECT_TRUE(addresses(korv::List<FieldDefX>()).empty());
    EXPECT_TRUE(korv::Row<TokenSlot>().empty());
    EXPECT_TRUE(addresses(korv::Row<TokenSlot>()).empty());
}

TEST(Ranges, GiveConstantRecordsFromOthers) {
    Request request(3, {0});
    const korv::List<const FieldDefI> fields = korv::fields(request.block);
    EXPECT_EQ(addresses(korv::fields(std::as_const(request.block))), addresses(fields));
    TokenSlot slots[2] = {};
    const korv::Row<const TokenSlot> row = korv::Row(slots, 2);
    EXPECT_EQ(slots, row.begin());
    EXPECT_EQ(2u, row.size());
}

// Iterators stay valid without the range that they come from.
TEST(Ranges, AreBorrowedByTheStandardAlgorithms) {
    Request request(3, {0});
    request.fields[1].dataType = WVARCHAR_SZ;
    const auto found = std::ranges::find(korv::fields(request.block), std::int16_t{WVARCHAR_SZ},
                                         &FieldDefI::dataType);
    EXPECT_EQ(&request.fields[1], &*found);
}

TEST(Ranges, ServeTheStandardViews) {
    Request request(5, {0});
    std::uint32_t length = 0;
    for (FieldDefI& field : request.fields) field.length = ++length;
    const auto isOdd = [](const FieldDefI& field) { return field.length % 2 == 1; };
    std::vector<std::uint32_t> lengths;
    for (const std::uint32_t each : korv::fields(request.block) | std::views::drop(1) |
                                        std::views::filter(isOdd) |
                                        std::views::transform(&FieldDefI::length)) {
        lengths.push_back(each);
    }
    EXPECT_EQ((std::vector<std::uint32_t>{3, 5}), lengths);

    for (FieldDefI& field : korv::fields(request.block) | std::views::take(2)) field.length = 9;
    EXPECT_EQ(9u, request.fields[1].length);
    EXPECT_EQ(3u, request.fields[2].length);
}

TEST(Ranges, ServeTheStandardViewsOfSlots) {
    TokenSlot slots[3] = {{1, nullptr}, {2, nullptr}, {3, nullptr}};
    std::vector<std::uint32_t> backwards;
    for (const TokenSlot& slot : korv::Row(slots, 3) | std::views::reverse) {
        backwards.push_back(slot.tokenId);
    }
    EXPECT_EQ((std::vector<std::uint32_t>{3, 2, 1}), backwards);
    EXPECT_EQ(2u, std::ranges::subrange(korv::Row(slots, 3) | std::views::drop(1)).size());
}

TEST(Ranges, ServeTheStandardViewsOfElements) {
    korv::Elements elements(L"a, bc, d\"e");
    std::vector<std::wstring> found;
    for (const std::wstring_view element :
         elements | std::views::filter([](std::wstring_view text) { return text.size() > 1; })) {
        found.emplace_back(element);
    }
    EXPECT_EQ((std::vector<std::wstring>{L"BC"}), found);
    EXPECT_EQ(korv::Status::failure, elements.status());
}

}  // namespace
