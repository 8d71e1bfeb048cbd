// Operands that cannot be filled: bad lengths, no memory, texts that cannot be widened.
#include <climits>

#include "ctrlblk/copy_params.h"

namespace {

TEST_F(CopyParams, RefuseNegativeValueLengths) {
    const wchar_t operandText[] = L"op";
    TextDesc descriptor{};
    descriptor.head.wideText = operandText;
    for (const std::int32_t kind : {2, 3}) {
        for (const std::int32_t length : {-1, -4, INT_MIN}) {
            reset();
            ParamDesc source = describe(kind);
            source.valueLen = length;
            source.oprTextMode = 'W';
            source.oprText = &descriptor;
            source.oprTextLen = sizeof operandText;
            copy(source, KORV_BAD_VALUE_LENGTH);
            EXPECT_STREQ(operandText, target.oprText);
            expected.oprText = target.oprText;
            expected.oprTextLen = sizeof operandText;
            expectSame(expected, target);
            std::free(target.oprText);
        }
    }
}

TEST_F(CopyParams, KeepWhatTheyHadWhenMemoryRunsOut) {
    const wchar_t wide[] = L"wide";
    TextDesc operandText{};
    operandText.head.wideText = wide;
    TextDesc narrow{};
    narrow.head.flag = 0x11;
    narrow.codePage = kUtf8;
    narrow.narrowText = "narrow";
    struct Case {
        std::int32_t kind;
        unsigned failing;
        std::int32_t status;
    };
    for (const Case& c :
         {Case{2, 1, KORV_NO_MEMORY_WIDE_VALUE}, Case{3, 1, KORV_NO_MEMORY_WIDE_VALUE},
          Case{0, 1, KORV_NO_MEMORY_WIDE_VALUE}, Case{2, 2, KORV_NO_MEMORY_WIDE_VALUE},
          Case{3, 2, KORV_NO_MEMORY_NARROW_VALUE}, Case{3, 3, KORV_NO_MEMORY_WIDE_VALUE}}) {
        reset();
        ParamDesc source = describe(c.kind);
        source.oprTextMode = 'W';
        source.oprText = &operandText;
        source.oprTextLen = sizeof wide;
        source.value.text = c.kind == 2 ? &operandText : &narrow;
        source.valueLen = c.kind == 2 ? 16 : 6;
        heap::failAt(c.failing);
        copy(source, c.status);
        heap::failAt(0);
        expected.oprTextLen = sizeof wide;
        expected.oprText = c.failing == 1 ? nullptr : target.oprText;
        if (c.failing >= 2) {
            EXPECT_STREQ(wide, target.oprText);
        }
        if (c.kind == 2 && c.failing == 2) {
            expected.wideValueLen = 20;
            expected.wideValue = nullptr;
        }
        if (c.kind == 3 && c.failing >= 2) {
            expected.narrowValueLen = 7;
            expected.narrowValue = nullptr;
        }
        if (c.kind == 3 && c.failing == 3) {
            EXPECT_STREQ("narrow", target.narrowValue);
            expected.narrowValue = target.narrowValue;
            expected.valueCodePage = kUtf8;
            expected.valueFlag = 0x11;
            expected.wideValue = nullptr;
        }
        expectSame(expected, target);
        if (c.failing >= 2) std::free(target.oprText);
        if (c.failing == 3) std::free(target.narrowValue);
    }
}

TEST_F(CopyParams, KeepTheBuffersOfAValueThatCannotBeWidened) {
    TextDesc descriptor{};
    descriptor.codePage = kUtf8;
    descriptor.narrowText = "\xFF";
    ParamDesc source = describe(3);
    source.value.text = &descriptor;
    source.valueLen = 1;
    const std::uint32_t wideLengthBefore = target.wideValueLen;
    EXPECT_GT(CopyParamsStruct(&source, &target, kUtf8, 0), 0);
    EXPECT_STREQ("\xFF", target.narrowValue);
    EXPECT_EQ(8u, heap::sizeOf(target.wideValue));
    EXPECT_EQ(wideLengthBefore, target.wideValueLen);
    std::free(target.narrowValue);
    std::free(target.wideValue);
}

}  // namespace
