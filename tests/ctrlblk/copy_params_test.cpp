// Operands filled from parameter descriptions.
#include <climits>

#include "ctrlblk/copy_params.h"
#include "support/fenced.h"

namespace {

constexpr std::uint32_t kUnknownCodePage = 4000000000u;

TEST_F(CopyParams, OfNoKindSetCodeAndKindOnly) {
    copy(describe(0), 0);
    expectSame(expected, target);
}

TEST_F(CopyParams, TakeIntegers) {
    for (const std::uint32_t value : {0u, 1u, 0x80000000u, 0xFFFFFFFFu, 0x12345678u}) {
        reset();
        ParamDesc source = describe(1);
        source.value.number = value;
        copy(source, 0);
        expected.intValue = value;
        expectSame(expected, target);
    }
}

TEST_F(CopyParams, TakeOpaqueValuesOfAnyOtherKind) {
    for (const std::int32_t kind : {4, 5, 7, 255, 256, 257, 65537, INT_MAX, -1, -2, -3, INT_MIN}) {
        reset();
        ParamDesc source = describe(kind);
        source.value.number = 0xDEADBEEF;
        source.valueLen = -1;
        copy(source, 0);
        expected.otherValue = 0xDEADBEEF;
        expectSame(expected, target);
    }
}

TEST_F(CopyParams, TakeOperandTextsAsStored) {
    for (std::size_t count = 1; count <= 40; ++count) {
        reset();
        Fenced<wchar_t> text(count);
        for (std::size_t i = 0; i < count; ++i) text[i] = static_cast<wchar_t>(0x10000 + i);
        TextDesc descriptor{};
        descriptor.head.wideText = text.data();
        ParamDesc source = describe(0);
        source.oprTextMode = 'W';
        source.oprText = &descriptor;
        source.oprTextLen = static_cast<std::uint32_t>(count * 4);
        copy(source, 0);
        ASSERT_EQ(count * 4, heap::sizeOf(target.oprText));
        EXPECT_EQ(0, std::memcmp(text.data(), target.oprText, count * 4));
        expected.oprText = target.oprText;
        expected.oprTextLen = source.oprTextLen;
        expectSame(expected, target);
        std::free(target.oprText);
    }
}

TEST_F(CopyParams, LeaveTheOperandTextAloneInAnyOtherMode) {
    const wchar_t text[] = L"text";
    TextDesc descriptor{};
    descriptor.head.wideText = text;
    for (int mode = 0; mode <= 255; ++mode) {
        if (mode == 'W') continue;
        reset();
        ParamDesc source = describe(0);
        source.oprTextMode = static_cast<std::uint8_t>(mode);
        source.oprText = &descriptor;
        source.oprTextLen = sizeof text;
        copy(source, 0);
        expectSame(expected, target);
    }
}

TEST_F(CopyParams, KeepWideLengthsOfPartialUnitsInsideTheirBlocks) {
    const wchar_t text[] = L"0123456789abcdef";
    TextDesc descriptor{};
    descriptor.head.wideText = text;
    for (std::uint32_t length = 1; length <= 64; ++length) {
        reset();
        ParamDesc source = describe(2);
        source.oprTextMode = 'W';
        source.oprText = &descriptor;
        source.oprTextLen = length;
        source.value.text = &descriptor;
        source.valueLen = static_cast<std::int32_t>(length);
        copy(source, 0);
        ASSERT_LE(length, heap::sizeOf(target.oprText));
        EXPECT_EQ(0, std::memcmp(text, target.oprText, length));
        ASSERT_EQ(length + 4, target.wideValueLen);
        ASSERT_LE(length + 4, heap::sizeOf(target.wideValue));
        EXPECT_EQ(0, std::memcmp(text, target.wideValue, length));
        const char zeros[4] = {};
        EXPECT_EQ(0, std::memcmp(zeros, reinterpret_cast<char*>(target.wideValue) + length, 4));
        std::free(target.oprText);
        std::free(target.wideValue);
    }
}

TEST_F(CopyParams, TakeWideValues) {
    for (std::size_t count = 1; count <= 70; ++count) {
        reset();
        Fenced<wchar_t> text(count);
        for (std::size_t i = 0; i < count; ++i) text[i] = static_cast<wchar_t>(0x10000 + i);
        TextDesc descriptor{};
        descriptor.head.wideText = text.data();
        ParamDesc source = describe(2);
        source.value.text = &descriptor;
        source.valueLen = static_cast<std::int32_t>(count * 4);
        copy(source, 0);
        ASSERT_EQ(count * 4 + 4, heap::sizeOf(target.wideValue));
        EXPECT_EQ(0, std::memcmp(text.data(), target.wideValue, count * 4));
        EXPECT_EQ(L'\0', target.wideValue[count]);
        expected.wideValue = target.wideValue;
        expected.wideValueLen = static_cast<std::uint32_t>(count * 4 + 4);
        expectSame(expected, target);
        std::free(target.wideValue);
    }
}

TEST_F(CopyParams, TakeNarrowValuesInBothWidths) {
    for (std::size_t count = 1; count <= 70; ++count) {
        reset();
        Fenced<char> text(count);
        for (std::size_t i = 0; i < count; ++i) text[i] = static_cast<char>('0' + i);
        TextDesc descriptor{};
        descriptor.head.wideText = nullptr;
        descriptor.head.flag = 0x5A;
        descriptor.codePage = KORV_CODEPAGE_NOT_GIVEN;
        descriptor.narrowText = text.data();
        ParamDesc source = describe(3);
        source.value.text = &descriptor;
        source.valueLen = static_cast<std::int32_t>(count);
        copy(source, 0);
        ASSERT_EQ(count + 1, heap::sizeOf(target.narrowValue));
        EXPECT_EQ(0, std::memcmp(text.data(), target.narrowValue, count));
        EXPECT_EQ('\0', target.narrowValue[count]);
        ASSERT_EQ((count + 1) * 4, heap::sizeOf(target.wideValue));
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(text[i], target.wideValue[i]);
        EXPECT_EQ(L'\0', target.wideValue[count]);
        expected.narrowValue = target.narrowValue;
        expected.narrowValueLen = static_cast<std::uint32_t>(count + 1);
        expected.wideValue = target.wideValue;
        expected.wideValueLen = static_cast<std::uint32_t>((count + 1) * 4);
        expected.valueFlag = 0x5A;
        expected.valueCodePage = KORV_CODEPAGE_NOT_GIVEN;
        expectSame(expected, target);
        std::free(target.narrowValue);
        std::free(target.wideValue);
    }
}

TEST_F(CopyParams, CountWideValuesInCharacters) {
    TextDesc descriptor{};
    descriptor.codePage = kUtf8;
    descriptor.narrowText = "Zo\xC3\xAB";
    ParamDesc source = describe(3);
    source.value.text = &descriptor;
    source.valueLen = 4;
    ASSERT_EQ(0, CopyParamsStruct(&source, &target, kUnknownCodePage, 0));
    EXPECT_STREQ(L"Zo\u00EB", target.wideValue);
    EXPECT_EQ(16u, target.wideValueLen);
    EXPECT_EQ(20u, heap::sizeOf(target.wideValue));
    EXPECT_EQ(L'\0', target.wideValue[4]);
    EXPECT_EQ(5u, target.narrowValueLen);
    EXPECT_EQ(static_cast<std::int32_t>(kUtf8), target.valueCodePage);
    std::free(target.narrowValue);
    std::free(target.wideValue);
}

TEST_F(CopyParams, EmptyTheMembersOfAnEmptyValue) {
    TextDesc noText{};
    noText.codePage = kUtf8;
    TextDesc text{};
    text.head.wideText = L"wide";
    text.narrowText = "narrow";
    struct Case {
        const TextDesc* text;
        std::int32_t length;
    };
    for (const Case& c : {Case{&noText, 4}, Case{&noText, 0}, Case{&text, 0}, Case{nullptr, 0}}) {
        reset();
        ParamDesc source = describe(2);
        source.value.text = c.text;
        source.valueLen = c.length;
        copy(source, 0);
        expected.wideValue = nullptr;
        expected.wideValueLen = 0;
        expectSame(expected, target);

        reset();
        source.valueKind = 3;
        copy(source, 0);
        expected.wideValue = nullptr;
        expected.wideValueLen = 0;
        expected.narrowValue = nullptr;
        expected.narrowValueLen = 0;
        expectSame(expected, target);
    }
}

// Each kind has its own text: the other one does not stand in for it.
TEST_F(CopyParams, LookForTheTextOfTheirKindOnly) {
    TextDesc wideOnly{};
    wideOnly.head.wideText = L"wide";
    TextDesc narrowOnly{};
    narrowOnly.narrowText = "narrow";
    ParamDesc source = describe(2);
    source.valueLen = 4;
    source.value.text = &narrowOnly;
    copy(source, 0);
    EXPECT_EQ(nullptr, target.wideValue);
    reset();
    source.valueKind = 3;
    source.value.text = &wideOnly;
    copy(source, 0);
    EXPECT_EQ(nullptr, target.narrowValue);
}

}  // namespace
