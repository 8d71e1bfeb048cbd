// Single records in the X form: field definitions, operands, service definitions.
#include <cstddef>
#include <cstring>

#include "ctrlblk/records.h"

namespace {

class ConvertField : public HeapTest {};
class ConvertOperand : public HeapTest {};
class ConvertService : public HeapTest {};

TEST_F(ConvertField, CarriesMembersSharesTextsAndEmptiesTheLink) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const FieldDefI source = rubbish<FieldDefI>(seed);
        FieldDefX target = rubbish<FieldDefX>(seed + 1000);
        ASSERT_EQ(0, KORVCnvFieldDefFromIToX(&source, &target));
        expectHeader(target.header, "FLDX", sizeof target);
        EXPECT_EQ(sizeof target, target.header.length);
        expectFieldCarried(source, target);
        EXPECT_MEMBER(source, target, wideText);
        EXPECT_MEMBER(source, target, narrowText);
        EXPECT_EQ(nullptr, target.link);
    }
}

TEST_F(ConvertField, NeedsBothRecords) {
    const FieldDefI source = rubbish<FieldDefI>(1);
    FieldDefX target = rubbish<FieldDefX>(2);
    const FieldDefX before = target;
    EXPECT_EQ(KORV_FAILURE, KORVCnvFieldDefFromIToX(nullptr, &target));
    EXPECT_EQ(0, std::memcmp(&before, &target, sizeof target));
    EXPECT_EQ(KORV_FAILURE, KORVCnvFieldDefFromIToX(&source, nullptr));
    EXPECT_EQ(KORV_FAILURE, KORVCnvFieldDefFromIToX(nullptr, nullptr));
}

TEST_F(ConvertOperand, CarriesEveryMemberButLeavesTheLink) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const OprDefI source = rubbish<OprDefI>(seed);
        OprDefX target = rubbish<OprDefX>(seed + 1000);
        OprDefX* const link = target.link;
        ASSERT_EQ(0, KORVCnvOprDefFromIToX(&source, &target));
        expectHeader(target.header, "OPRX", sizeof target);
        EXPECT_EQ(sizeof target, target.header.length);
        expectOperandCarried(source, target);
        EXPECT_EQ(link, target.link);
    }
}

TEST_F(ConvertOperand, LeavesTheBytesBetweenMembers) {
    const auto source = rubbish<OprDefI>(1);
    auto target = rubbish<OprDefX>(1001);
    const auto before = target;
    ASSERT_EQ(0, KORVCnvOprDefFromIToX(&source, &target));
    const auto expectLeft = [&](std::size_t from, std::size_t to) {
        ASSERT_LT(from, to);
        EXPECT_EQ(0, std::memcmp(reinterpret_cast<const char*>(&before) + from,
                                 reinterpret_cast<const char*>(&target) + from, to - from))
            << from;
    };
    expectLeft(offsetof(OprDef, oprCode) + sizeof target.oprCode, offsetof(OprDef, oprText));
    expectLeft(offsetof(OprDef, oprFlag) + sizeof target.oprFlag, offsetof(OprDef, oprValue2));
    expectLeft(offsetof(OprDef, valueFlag) + sizeof target.valueFlag,
               offsetof(OprDef, valueCodePage));
}

TEST_F(ConvertOperand, NeedsBothRecords) {
    const OprDefI source = rubbish<OprDefI>(1);
    OprDefX target = rubbish<OprDefX>(2);
    const OprDefX before = target;
    EXPECT_EQ(KORV_FAILURE, KORVCnvOprDefFromIToX(nullptr, &target));
    EXPECT_EQ(0, std::memcmp(&before, &target, sizeof target));
    EXPECT_EQ(KORV_FAILURE, KORVCnvOprDefFromIToX(&source, nullptr));
    EXPECT_EQ(KORV_FAILURE, KORVCnvOprDefFromIToX(nullptr, nullptr));
}

// A service of `count` operands.
struct Service {
    SvcDefI service = rubbish<SvcDefI>(3);
    std::deque<OprDefI> operands;

    explicit Service(std::size_t count) {
        OprDefI** end = &service.oprDefs;
        *end = nullptr;
        for (std::size_t i = 0; i < count; ++i) {
            operands.push_back(rubbish<OprDefI>(static_cast<unsigned>(50 + i)));
            *end = &operands.back();
            end = &operands.back().link;
            *end = nullptr;
        }
    }
};

void expectServiceCarried(const SvcDefI& source, const SvcDefX& target) {
    expectHeader(target.header, "SVCX", sizeof target);
    EXPECT_EQ(sizeof target, target.header.length);
    EXPECT_MEMBER(source, target, svcCode1);
    EXPECT_MEMBER(source, target, svcCode2);
    EXPECT_MEMBER(source, target, svcAttr1);
    EXPECT_MEMBER(source, target, svcAttr2);
    EXPECT_MEMBER(source, target, svcFlag);
    EXPECT_MEMBER(source, target, svcValue);
}

TEST_F(ConvertService, ConvertsOperandsInOrderAndBorrowsTheFieldList) {
    const CtrlBlkX block = rubbish<CtrlBlkX>(9);
    for (const std::size_t count : {0u, 1u, 2u, 3u, 10u}) {
        Service source(count);
        SvcDefX target = rubbish<SvcDefX>(4);
        ASSERT_EQ(0, KORVCnvSvcDefFromIToX(&block, &source.service, &target));
        expectServiceCarried(source.service, target);
        EXPECT_EQ(block.fieldDefs, target.fieldDefs);
        const auto operands = listed(target.oprDefs);
        ASSERT_EQ(count, operands.size());
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(sizeof(OprDefX), heap::sizeOf(operands[i]));
            expectHeader(operands[i]->header, "OPRX", sizeof(OprDefX));
            expectOperandCarried(source.operands[i], *operands[i]);
        }
        EXPECT_EQ(0, CleanParamsX(target.oprDefs));
    }
}

TEST_F(ConvertService, BeforeItsBlockTakesTheEmptyFieldList) {
    const CtrlBlkX block{};
    Service source(0);
    SvcDefX target = rubbish<SvcDefX>(4);
    ASSERT_EQ(0, KORVCnvSvcDefFromIToX(&block, &source.service, &target));
    EXPECT_EQ(nullptr, target.fieldDefs);
    EXPECT_EQ(nullptr, target.oprDefs);
}

TEST_F(ConvertService, NeedsBothServiceRecords) {
    const CtrlBlkX block{};
    Service source(1);
    SvcDefX target = rubbish<SvcDefX>(4);
    const SvcDefX before = target;
    EXPECT_EQ(KORV_FAILURE, KORVCnvSvcDefFromIToX(&block, nullptr, &target));
    EXPECT_EQ(KORV_FAILURE, KORVCnvSvcDefFromIToX(nullptr, nullptr, &target));
    EXPECT_EQ(0, std::memcmp(&before, &target, sizeof target));
    EXPECT_EQ(KORV_FAILURE, KORVCnvSvcDefFromIToX(&block, &source.service, nullptr));
    EXPECT_EQ(KORV_FAILURE, KORVCnvSvcDefFromIToX(nullptr, &source.service, nullptr));
}

TEST_F(ConvertService, WithoutMemoryForAnOperandLeavesNoList) {
    const CtrlBlkX block = rubbish<CtrlBlkX>(9);
    Service source(4);
    for (unsigned n = 1; n <= 4; ++n) {
        SvcDefX target = rubbish<SvcDefX>(4);
        const std::size_t live = heap::liveBlocks();
        heap::failAt(n);
        EXPECT_EQ(KORV_NO_MEMORY_OPERAND, KORVCnvSvcDefFromIToX(&block, &source.service, &target))
            << n;
        EXPECT_EQ(n, heap::allocations());
        EXPECT_EQ(live, heap::liveBlocks()) << n;
        EXPECT_EQ(nullptr, target.oprDefs) << n;
        expectServiceCarried(source.service, target);
        EXPECT_EQ(block.fieldDefs, target.fieldDefs);
    }
    heap::failAt(0);
}

}  // namespace
