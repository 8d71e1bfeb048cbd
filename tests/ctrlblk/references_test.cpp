// Which field a reference names, against the walk from the first field that defines it.
#include <algorithm>
#include <climits>

#include "ctrlblk/records.h"
#include "reference/field_walk.h"

namespace {

class References : public HeapTest {};

using reference::walk;

void expectWalked(std::size_t fieldCount, const std::vector<int>& positions) {
    Request request(fieldCount, positions);
    auto* target = heapRecord<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    const auto nodes = listed(&target->fieldRefs);
    ASSERT_EQ(positions.size(), nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const auto position = static_cast<std::int16_t>(positions[i]);
        ASSERT_EQ(static_cast<std::uint16_t>(position), nodes[i]->fieldPos);
        ASSERT_EQ(walk(target->fieldDefs, position), nodes[i]->fieldDef)
            << "node " << i << ", position " << position << " of " << fieldCount << " fields";
    }
    ASSERT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(References, NameTheFieldAtTheirPosition) {
    Request request(2, {0, 1, 2});
    auto* target = heapRecord<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    FieldDefX* const first = target->fieldDefs;
    FieldDefX* const second = first->link;
    const auto nodes = listed(&target->fieldRefs);
    ASSERT_EQ(3u, nodes.size());
    EXPECT_EQ(first, nodes[0]->fieldDef);
    EXPECT_EQ(second, nodes[1]->fieldDef);
    EXPECT_EQ(second + 1, nodes[2]->fieldDef);
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(References, AtNegativePositionsNameTheFirstField) {
    Request request(3, {-1, -2, SHRT_MIN});
    auto* target = heapRecord<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    const auto nodes = listed(&target->fieldRefs);
    for (const FieldRefX* node : nodes) EXPECT_EQ(target->fieldDefs, node->fieldDef);
    EXPECT_EQ(0xFFFF, nodes[0]->fieldPos);
    EXPECT_EQ(0xFFFE, nodes[1]->fieldPos);
    EXPECT_EQ(0x8000, nodes[2]->fieldPos);
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(References, FarPastTheEndNameTheAddressBeyondTheLastField) {
    for (std::size_t fields = 1; fields <= 3; ++fields) {
        const int end = static_cast<int>(fields);
        Request request(fields, {end, end + 1, SHRT_MAX, end + 2, 0, end + 40});
        auto* target = heapRecord<CtrlBlkX>();
        ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
        FieldDefX* const beyond = listed(target->fieldDefs).back() + 1;
        const auto nodes = listed(&target->fieldRefs);
        for (const std::size_t i : {0u, 1u, 2u, 3u, 5u}) EXPECT_EQ(beyond, nodes[i]->fieldDef) << i;
        EXPECT_EQ(target->fieldDefs, nodes[4]->fieldDef);
        EXPECT_EQ(0, CleanCtrlBlkX(target));
    }
}

// The framework's pointer in the I node is not what the X node gets.
TEST_F(References, IgnoreTheFieldOfTheSourceNode) {
    Request request(2, {1});
    request.block.fieldRefs.fieldDef = &request.fields[0];
    auto* target = heapRecord<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, target));
    EXPECT_EQ(target->fieldDefs->link, target->fieldRefs.fieldDef);
    EXPECT_EQ(0, CleanCtrlBlkX(target));
}

TEST_F(References, AscendAndDescendOverTheWholeList) {
    for (int fields = 0; fields <= 20; ++fields) {
        std::vector<int> positions;
        for (int i = -2; i <= fields + 2; ++i) positions.push_back(i);
        expectWalked(static_cast<std::size_t>(fields), positions);
        std::reverse(positions.begin(), positions.end());
        expectWalked(static_cast<std::size_t>(fields), positions);
    }
}

// Every pair and triple of positions about a short list: each step from one place to another.
TEST_F(References, StepFromAnyPositionToAnyOther) {
    for (int fields = 0; fields <= 3; ++fields) {
        std::vector<int> positions;
        for (int a = -1; a <= fields + 2; ++a) {
            for (int b = -1; b <= fields + 2; ++b) {
                for (int c = -1; c <= fields + 2; ++c) positions.insert(positions.end(), {a, b, c});
            }
        }
        expectWalked(static_cast<std::size_t>(fields), positions);
    }
}

TEST_F(References, InRandomOrderAgreeWithTheWalk) {
    std::mt19937 random(20240229);
    for (int round = 0; round < 300; ++round) {
        const int fields = static_cast<int>(random() % 40);
        std::vector<int> positions(1 + random() % 60);
        for (int& position : positions) {
            const unsigned kind = random() % 10;
            position = kind == 0   ? fields
                       : kind == 1 ? -static_cast<int>(random() % 32769)
                       : kind == 2 ? static_cast<int>(random() % 32768)
                                   : static_cast<int>(random() % static_cast<unsigned>(fields + 1));
        }
        if (round % 3 == 0) std::sort(positions.begin(), positions.end());
        if (round % 6 == 0) std::reverse(positions.begin(), positions.end());
        expectWalked(static_cast<std::size_t>(fields), positions);
    }
}

TEST_F(References, ReachTheLastPositionOfALongList) {
    expectWalked(33000, {0, SHRT_MAX, SHRT_MAX - 1, SHRT_MIN, SHRT_MAX, 1});
    expectWalked(32767, {SHRT_MAX - 1, SHRT_MAX, SHRT_MAX - 2});
}

}  // namespace
