// Owners of the C++ header: what they hold is released once, by the right function, or handed on.
#include <array>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "ctrlblk/records.h"
#include "korv/korv.hpp"

namespace {

class Owners : public HeapTest {
  protected:
    // A record that counts as a block of the library, so that the test sees whether it is freed.
    template <class Record>
    static korv::Owner<Record> tracked() {
        return korv::Owner<Record>(heapRecord<Record>());
    }
    static std::size_t live() { return heap::liveBlocks(); }
};

OprDefI operandList(std::array<OprDefI, 2>& rest) {
    OprDefI first{};
    first.link = &rest[0];
    rest[0] = {};
    rest[0].link = &rest[1];
    rest[1] = {};
    return first;
}

TEST_F(Owners, ReleaseABlockWithItsFieldsAndReferences) {
    const Request request(3, {0, 1, 2});
    const std::size_t before = live();
    {
        const korv::Owner<CtrlBlkX> block = tracked<CtrlBlkX>();
        ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block.get()));
        EXPECT_EQ(before + 1 + 3 + 2, live());
    }
    EXPECT_EQ(before, live());
}

TEST_F(Owners, ReleaseAServiceWithItsOperandsButNotItsFields) {
    std::array<OprDefI, 2> rest;
    OprDefI first = operandList(rest);
    SvcDefI service{};
    service.oprDefs = &first;
    const Request request(2, {0});
    const korv::Owner<CtrlBlkX> block = tracked<CtrlBlkX>();
    ASSERT_EQ(0, KORVCnvCtrlBlkFromIToX(&request.block, block.get()));
    const std::size_t before = live();
    korv::Owner<SvcDefX> converted = tracked<SvcDefX>();
    ASSERT_EQ(0, KORVCnvSvcDefFromIToX(block.get(), &service, converted.get()));
    EXPECT_EQ(before + 1 + 3, live());
    converted.reset();
    EXPECT_EQ(before, live());
}

TEST_F(Owners, ReleaseAListOfOperands) {
    korv::Owner<OprDefX> first = tracked<OprDefX>();
    first->link = heapRecord<OprDefX>();
    first->link->link = heapRecord<OprDefX>();
}

TEST_F(Owners, ReleaseAnErrorChainWithItsTexts) {
    const std::size_t before = live();
    korv::Owner<ErrorAnchor> errors = tracked<ErrorAnchor>();
    CtrlBlkI request{};
    request.errorAnchor = errors.get();
    ASSERT_EQ(0, ErrorCapture(&request, 1, 2, 2));
    ASSERT_EQ(0, TokenCapture(&request, "NAME", VARCHAR_SZ, KORV_TOKID_COLNAME, 0));
    EXPECT_EQ(before + 3, live());
    errors = nullptr;
    EXPECT_EQ(before, live());
}

TEST_F(Owners, TakeUnitsThatACallAllocates) {
    korv::Owner<std::uint16_t> units;
    ASSERT_EQ(korv::Status::success, korv::narrowedUnits(L"ab", units));
    EXPECT_EQ('b', units.get()[1]);
    // What the owner held before goes, also when the call fails.
    ASSERT_EQ(korv::Status::success, korv::narrowedUnits(L"cd", units));
    EXPECT_EQ('d', units.get()[1]);
    heap::failAt(1);
    EXPECT_EQ(korv::Status::failure, korv::narrowedUnits(L"ef", units));
    EXPECT_EQ(nullptr, units);
}

TEST_F(Owners, TakeATokenTextOutOfItsSlot) {
    const korv::Owner<ErrorAnchor> errors = tracked<ErrorAnchor>();
    ASSERT_EQ(0, ErrorCaptureEAB(errors.get(), 1, 2, 1));
    ASSERT_EQ(0, TokenCaptureEAB(errors.get(), "x", VARCHAR_SZ, KORV_TOKID_MASK, 0));
    TokenSlot& slot = errors->head->tokenSlots[0];
    const korv::Owner<wchar_t> text(std::exchange(slot.text, nullptr));
    EXPECT_STREQ(L"x", text.get());
}

TEST_F(Owners, AreEmptyAfterAMoveAndARelease) {
    korv::Owner<CtrlBlkX> first = tracked<CtrlBlkX>();
    CtrlBlkX* const record = first.get();
    korv::Owner<CtrlBlkX> second = std::move(first);
    EXPECT_EQ(nullptr, first);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(record, second.get());
    EXPECT_EQ(record, second.release());
    EXPECT_EQ(nullptr, second);
    EXPECT_NE(0u, heap::sizeOf(record));
    EXPECT_EQ(0, CleanCtrlBlkX(record));
}

TEST_F(Owners, BeginWithZeroedRecords) {
    const auto block = korv::make<CtrlBlkX>();
    const CtrlBlkX zeroed{};
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(0, std::memcmp(&zeroed, block.get(), sizeof zeroed));
}

// What is part of another record, or needs another release, has no owner: it does not compile.
template <class T>
constexpr bool kHasOwner = std::is_invocable_v<korv::Release, T*>;
static_assert(kHasOwner<CtrlBlkX> && kHasOwner<SvcDefX> && kHasOwner<OprDefX>);
static_assert(kHasOwner<ErrorAnchor> && kHasOwner<char> && kHasOwner<wchar_t>);
static_assert(!kHasOwner<CtrlBlkI> && !kHasOwner<FieldDefI> && !kHasOwner<FieldDefX>);
static_assert(!kHasOwner<FieldRefX> && !kHasOwner<ErrorRecord> && !kHasOwner<const wchar_t>);
static_assert(sizeof(korv::Owner<CtrlBlkX>) == sizeof(CtrlBlkX*));

class Holders : public Owners {
  protected:
    Holders() {
        source_.wideText = wide_;
        source_.wideTextLen = sizeof wide_;
        source_.narrowText = narrow_;
        source_.narrowTextLen = sizeof narrow_;
    }
    wchar_t wide_[5] = L"NAME";
    char narrow_[5] = "NAME";
    FieldDefI source_{};
};

TEST_F(Holders, FreeBothTextsOfAField) {
    const std::size_t before = live();
    {
        korv::FieldWithTexts field;
        ASSERT_EQ(0, DuplicateFieldDefI(field.get(), &source_));
        EXPECT_STREQ(L"NAME", field->wideText);
        EXPECT_EQ(before + 2, live());
        field.reset();
        EXPECT_EQ(before, live());
        ASSERT_EQ(0, DuplicateFieldDefI(field.get(), &source_));
    }
    EXPECT_EQ(before, live());
}

TEST_F(Holders, FreeEveryTextOfAnOperand) {
    const TextDesc name = {{L"operand"}, KORV_CODEPAGE_NOT_GIVEN, nullptr};
    const TextDesc value = {{nullptr}, 1208, "value"};
    ParamDesc description{};
    description.oprTextMode = KORV_TEXT_WIDE;
    description.oprText = &name;
    description.oprTextLen = 8 * sizeof(wchar_t);
    description.valueKind = OPR_VALUE_NARROW;
    description.valueLen = 5;
    description.value.text = &value;
    const std::size_t before = live();
    korv::OperandWithTexts operand;
    ASSERT_EQ(0, CopyParamsStruct(&description, operand.get(), 1208, 0));
    EXPECT_STREQ(L"operand", operand->oprText);
    EXPECT_STREQ(L"value", operand->wideValue);
    EXPECT_STREQ("value", operand->narrowValue);
    EXPECT_EQ(before + 3, live());
}

TEST_F(Holders, AreZeroAfterAMoveAndARelease) {
    korv::FieldWithTexts first;
    ASSERT_EQ(0, DuplicateFieldDefI(first.get(), &source_));
    const wchar_t* const text = first->wideText;
    korv::FieldWithTexts second = std::move(first);
    const FieldDefI zeroed{};
    // NOLINTNEXTLINE(bugprone-use-after-move)
    EXPECT_EQ(0, std::memcmp(&zeroed, first.get(), sizeof zeroed));
    EXPECT_EQ(text, second->wideText);

    // The texts that the target held go, its own stay with it.
    ASSERT_EQ(0, DuplicateFieldDefI(first.get(), &source_));
    first = std::move(second);
    EXPECT_EQ(text, first->wideText);
    korv::FieldWithTexts& same = first;
    first = std::move(same);
    EXPECT_EQ(text, first->wideText);

    const FieldDefI released = first.release();
    EXPECT_EQ(0, std::memcmp(&zeroed, first.get(), sizeof zeroed));
    EXPECT_EQ(text, released.wideText);
    korv::FieldWithTexts(released).reset();
}

TEST_F(Holders, BuffersKeepWhatTheyHoldWhereTheyGrow) {
    korv::Buffer buffer;
    EXPECT_EQ(korv::Status::success, buffer.resize(4));
    std::memcpy(buffer->data, "abcd", 4);
    EXPECT_EQ(korv::Status::success, buffer.grow(8));
    EXPECT_EQ(8u, buffer->size);
    EXPECT_EQ(0, std::memcmp("abcd\0\0\0\0", buffer->data, 8));
    EXPECT_EQ(korv::Status::success, buffer.resize(8));
    EXPECT_EQ(0, std::memcmp("\0\0\0\0\0\0\0\0", buffer->data, 8));
    EXPECT_EQ(korv::Status::badBufferSize, buffer.resize(0));
    EXPECT_EQ(8u, buffer->size);

    korv::Buffer other = std::move(buffer);
    EXPECT_EQ(nullptr, buffer->data);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(0u, buffer->size);
    std::free(other.release().data);
    EXPECT_EQ(nullptr, other->data);
}

// The library gives up a block that it cannot resize.
TEST_F(Holders, BuffersFreeTheBlockThatCouldNotGrow) {
    for (const bool keep : {false, true}) {
        korv::Buffer buffer;
        const auto ask = [&](std::int32_t size) {
            return keep ? buffer.grow(size) : buffer.resize(size);
        };
        const std::size_t before = live();
        ASSERT_EQ(korv::Status::success, ask(8));
        heap::failAt(1);
        EXPECT_EQ(korv::Status::noMemoryBuffer, ask(16));
        EXPECT_EQ(before, live());
        EXPECT_EQ(nullptr, buffer->data);
        EXPECT_EQ(0u, buffer->size);
        ASSERT_EQ(korv::Status::success, ask(4));
    }
}

}  // namespace
