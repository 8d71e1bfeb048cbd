// Field definitions filled from field descriptions.
#include <climits>

#include "ctrlblk/records.h"
#include "support/fenced.h"

// A request for most of the address space fails here as it does with the system's own heap.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

constexpr std::uint32_t kUtf8 = 1208;

FieldDesc describe(std::uint8_t mode, const TextDesc* text, std::int32_t length) {
    FieldDesc source = rubbish<FieldDesc>(41);
    source.textMode = mode;
    source.text = text;
    source.textLen = length;
    return source;
}

class CopyField : public HeapTest {
  protected:
    FieldDefI target = rubbish<FieldDefI>(42);
    FieldDefI expected = target;

    void reset() { expected = target = rubbish<FieldDefI>(42); }
    void copy(const FieldDesc& source, std::int32_t status) {
        expected.dataType = source.dataType;
        expected.length = source.length;
        expected.fldValue1 = source.fldValue1;
        expected.fldValue2 = source.fldValue2;
        expected.fldValue3 = source.fldValue3;
        expected.fldFlag = source.fldFlag;
        ASSERT_EQ(status, CopyFieldStruct(&source, &target, kUtf8, 1));
    }
};

TEST_F(CopyField, TakesWideTexts) {
    for (const int mode : {0, int{'W'}, int{'m'}, int{'N'}, 255}) {
        for (std::size_t count = 0; count <= 70; ++count) {
            reset();
            Fenced<wchar_t> text(count);
            for (std::size_t i = 0; i < count; ++i) text[i] = static_cast<wchar_t>(0x10000 + i);
            TextDesc descriptor{};
            descriptor.head.wideText = text.data();
            const auto bytes = static_cast<std::int32_t>(count * 4);
            copy(describe(static_cast<std::uint8_t>(mode), &descriptor, bytes), 0);
            ASSERT_EQ(count * 4 + 4, heap::sizeOf(target.wideText));
            EXPECT_EQ(0, std::memcmp(text.data(), target.wideText, count * 4));
            EXPECT_EQ(L'\0', target.wideText[count]);
            expected.wideText = target.wideText;
            expected.wideTextLen = bytes + 4;
            expectSame(expected, target);
            std::free(target.wideText);
        }
    }
}

TEST_F(CopyField, KeepsWideLengthsOfPartialUnitsInsideTheBlock) {
    const wchar_t text[] = L"0123456789abcdef";
    TextDesc descriptor{};
    descriptor.head.wideText = text;
    for (std::int32_t length = 1; length <= 64; ++length) {
        reset();
        copy(describe('W', &descriptor, length), 0);
        const auto bytes = static_cast<std::size_t>(length);
        ASSERT_EQ(length + 4, target.wideTextLen);
        ASSERT_LE(bytes + 4, heap::sizeOf(target.wideText));
        EXPECT_EQ(0, std::memcmp(text, target.wideText, bytes));
        const char zeros[4] = {};
        EXPECT_EQ(0, std::memcmp(zeros, reinterpret_cast<char*>(target.wideText) + bytes, 4));
        std::free(target.wideText);
    }
}

// The text is not read: it lies in the unreadable page.
TEST_F(CopyField, CopiesNothingOfASlightlyNegativeWideLength) {
    Fenced<wchar_t> text(0);
    TextDesc descriptor{};
    descriptor.head.wideText = text.data();
    for (const std::int32_t length : {-1, -2, -3, -4}) {
        reset();
        copy(describe('W', &descriptor, length), 0);
        EXPECT_NE(nullptr, target.wideText) << length;
        const auto* bytes = reinterpret_cast<const char*>(target.wideText);
        for (std::size_t i = 0; i < heap::sizeOf(target.wideText); ++i) EXPECT_EQ(0, bytes[i]);
        expected.wideText = target.wideText;
        expected.wideTextLen = length + 4;
        expectSame(expected, target);
        std::free(target.wideText);
    }
}

TEST_F(CopyField, HasNoMemoryForAMoreNegativeWideLength) {
    TextDesc descriptor{};
    descriptor.head.wideText = L"text";
    for (const std::int32_t length : {-5, -6, -8, -100, -65536, -0x10000000}) {
        reset();
        copy(describe('W', &descriptor, length), KORV_NO_MEMORY_WIDE_TEXT);
        expected.wideText = nullptr;
        expected.wideTextLen = length + 4;
        expectSame(expected, target);
    }
}

TEST_F(CopyField, TakesNarrowTextsInBothWidths) {
    for (std::size_t count = 1; count <= 70; ++count) {
        reset();
        Fenced<char> text(count);
        for (std::size_t i = 0; i < count; ++i) text[i] = static_cast<char>('0' + i);
        TextDesc descriptor{};
        descriptor.codePage = KORV_CODEPAGE_NOT_GIVEN;
        descriptor.narrowText = text.data();
        copy(describe('M', &descriptor, static_cast<std::int32_t>(count)), 0);
        ASSERT_EQ(count + 1, heap::sizeOf(target.narrowText));
        EXPECT_EQ(0, std::memcmp(text.data(), target.narrowText, count));
        EXPECT_EQ('\0', target.narrowText[count]);
        ASSERT_EQ((count + 1) * 4, heap::sizeOf(target.wideText));
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(text[i], target.wideText[i]);
        EXPECT_EQ(L'\0', target.wideText[count]);
        expected.narrowText = target.narrowText;
        expected.narrowTextLen = static_cast<std::int32_t>(count + 1);
        expected.wideText = target.wideText;
        expected.wideTextLen = static_cast<std::int32_t>((count + 1) * 4);
        expectSame(expected, target);
        std::free(target.narrowText);
        std::free(target.wideText);
    }
}

TEST_F(CopyField, CountsTheWideTextInCharacters) {
    TextDesc descriptor{};
    descriptor.codePage = kUtf8;
    descriptor.narrowText = "\xE2\x82\xAC 5";
    copy(describe('M', &descriptor, 5), 0);
    EXPECT_STREQ(L"\u20AC 5", target.wideText);
    EXPECT_EQ(16, target.wideTextLen);
    EXPECT_EQ(24u, heap::sizeOf(target.wideText));
    EXPECT_EQ(6, target.narrowTextLen);
    std::free(target.narrowText);
    std::free(target.wideText);
}

TEST_F(CopyField, RefusesNarrowLengthsBelowOne) {
    TextDesc descriptor{};
    descriptor.narrowText = "text";
    for (const std::int32_t length : {0, -1, -4, -5, INT_MIN}) {
        reset();
        copy(describe('M', &descriptor, length), KORV_BAD_TEXT_LENGTH);
        expectSame(expected, target);
    }
}

TEST_F(CopyField, LeavesItsTextsAloneWithoutASource) {
    TextDesc wideOnly{};
    wideOnly.head.wideText = L"wide";
    TextDesc narrowOnly{};
    narrowOnly.narrowText = "narrow";
    const TextDesc* const noNarrowText[] = {nullptr, &wideOnly};
    const TextDesc* const noWideText[] = {nullptr, &narrowOnly};
    for (const std::int32_t length : {0, -1, 4}) {
        for (const TextDesc* text : noNarrowText) {
            reset();
            copy(describe('M', text, length), 0);
            expectSame(expected, target);
        }
        for (const TextDesc* text : noWideText) {
            reset();
            copy(describe('W', text, length), 0);
            expectSame(expected, target);
        }
    }
}

TEST_F(CopyField, KeepsWhatItHadWhenMemoryRunsOut) {
    TextDesc descriptor{};
    descriptor.codePage = kUtf8;
    descriptor.narrowText = "text";
    heap::failAt(1);
    copy(describe('M', &descriptor, 4), KORV_NO_MEMORY_NARROW_TEXT);
    expected.narrowText = nullptr;
    expected.narrowTextLen = 5;
    expectSame(expected, target);

    reset();
    heap::failAt(2);
    copy(describe('M', &descriptor, 4), KORV_NO_MEMORY_WIDE_TEXT);
    EXPECT_STREQ("text", target.narrowText);
    expected.narrowText = target.narrowText;
    expected.narrowTextLen = 5;
    expected.wideText = nullptr;
    expectSame(expected, target);
    std::free(target.narrowText);

    reset();
    descriptor.head.wideText = L"text";
    heap::failAt(1);
    copy(describe('W', &descriptor, 16), KORV_NO_MEMORY_WIDE_TEXT);
    expected.wideText = nullptr;
    expected.wideTextLen = 20;
    expectSame(expected, target);
}

TEST_F(CopyField, KeepsTheBuffersOfATextThatCannotBeWidened) {
    TextDesc descriptor{};
    descriptor.codePage = kUtf8;
    descriptor.narrowText = "a\xC3";
    const std::int32_t wideLengthBefore = target.wideTextLen;
    const FieldDesc source = describe('M', &descriptor, 2);
    EXPECT_GT(CopyFieldStruct(&source, &target, kUtf8, 0), 0);
    EXPECT_STREQ("a\xC3", target.narrowText);
    EXPECT_EQ(12u, heap::sizeOf(target.wideText));
    EXPECT_EQ(wideLengthBefore, target.wideTextLen);
    std::free(target.narrowText);
    std::free(target.wideText);
}

}  // namespace
