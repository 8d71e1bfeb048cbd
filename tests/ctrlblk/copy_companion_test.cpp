// What the copies of descriptions hand to the companion library, and what they make of its answers.
#include <climits>

#include "ctrlblk/records.h"
#include "ctrlblk/scripted_companion.h"
#include "korv/datacnv.h"
#include "support/fenced.h"

namespace {

using companion::Call;

class CopyCompanion : public HeapTest {
  protected:
    void SetUp() override {
        HeapTest::SetUp();
        companion::reset();
        // The flag is the first byte of the member; the other three are not used.
        text.head.wideText = nullptr;
        std::memset(&text.head, 0xEE, sizeof text.head);
        text.head.flag = 0x77;
        text.codePage = KORV_CODEPAGE_NOT_GIVEN;
        text.narrowText = "value";
    }

    TextDesc text{};
};

ParamDesc narrowParameter(const TextDesc& text) {
    ParamDesc source = rubbish<ParamDesc>(61);
    source.oprTextMode = 0;
    source.valueKind = 3;
    source.valueLen = 5;
    source.value.text = &text;
    return source;
}

FieldDesc narrowField(const TextDesc& text) {
    FieldDesc source = rubbish<FieldDesc>(62);
    source.textMode = 'M';
    source.textLen = 5;
    source.text = &text;
    return source;
}

void expectWidening(const Call& call, const char* narrow, const wchar_t* wide,
                    std::uint32_t codePage, unsigned flag) {
    EXPECT_EQ(narrow, call.source);
    EXPECT_EQ(5u, call.sourceLen);
    EXPECT_EQ(wide, call.target);
    EXPECT_EQ(24u, call.capacity);
    EXPECT_EQ(0u, call.outLenBefore);
    EXPECT_TRUE(call.targetZeroed);
    EXPECT_EQ(codePage, call.codePage);
    EXPECT_EQ(flag, call.flag);
}

// The code pages that a text may give; the most negative number means that it gives none.
struct Choice {
    std::int32_t given;
    std::uint32_t codePage;
    unsigned flag;
};
constexpr Choice kChoices[] = {{INT_MIN, 9876, 0x99},
                               {0, 0, 0x77},
                               {1208, 1208, 0x77},
                               {-1, 0xFFFFFFFF, 0x77},
                               {INT_MIN + 1, 0x80000001, 0x77},
                               {INT_MAX, 0x7FFFFFFF, 0x77}};

TEST_F(CopyCompanion, WidensAParameterWithItsOwnCodePageOrTheDefault) {
    for (const Choice& choice : kChoices) {
        companion::reset();
        companion::answers = {{0, 3, L"abc"}};
        text.codePage = choice.given;
        OprDefI target = rubbish<OprDefI>(63);
        const ParamDesc source = narrowParameter(text);
        ASSERT_EQ(0, CopyParamsStruct(&source, &target, 9876, 0x99));
        ASSERT_EQ(1u, companion::widened.size());
        expectWidening(companion::widened[0], target.narrowValue, target.wideValue, choice.codePage,
                       choice.flag);
        EXPECT_EQ(choice.given, target.valueCodePage);
        EXPECT_EQ(0x77, target.valueFlag);
        EXPECT_STREQ("value", target.narrowValue);
        EXPECT_EQ(6u, target.narrowValueLen);
        EXPECT_STREQ(L"abc", target.wideValue);
        EXPECT_EQ(24u, heap::sizeOf(target.wideValue));
        EXPECT_EQ(16u, target.wideValueLen);
        std::free(target.narrowValue);
        std::free(target.wideValue);
    }
    EXPECT_TRUE(companion::narrowed.empty());
}

TEST_F(CopyCompanion, WidensAFieldTextWithItsOwnCodePageOrTheDefault) {
    for (const Choice& choice : kChoices) {
        companion::reset();
        companion::answers = {{0, 2, L"xy"}};
        text.codePage = choice.given;
        FieldDefI target = rubbish<FieldDefI>(64);
        const FieldDesc source = narrowField(text);
        ASSERT_EQ(0, CopyFieldStruct(&source, &target, 9876, 0x99));
        ASSERT_EQ(1u, companion::widened.size());
        expectWidening(companion::widened[0], target.narrowText, target.wideText, choice.codePage,
                       choice.flag);
        EXPECT_STREQ("value", target.narrowText);
        EXPECT_EQ(6, target.narrowTextLen);
        EXPECT_STREQ(L"xy", target.wideText);
        EXPECT_EQ(12, target.wideTextLen);
        std::free(target.narrowText);
        std::free(target.wideText);
    }
}

TEST_F(CopyCompanion, PassesOnTheStatusOfAWidening) {
    for (const std::int32_t status : {1, -1, 65, 204, INT_MAX, INT_MIN}) {
        companion::reset();
        companion::answers = {{status, 3, L"abc"}, {status, 3, L"abc"}};
        OprDefI operand = rubbish<OprDefI>(63);
        const OprDefI operandBefore = operand;
        const ParamDesc parameter = narrowParameter(text);
        EXPECT_EQ(status, CopyParamsStruct(&parameter, &operand, 9876, 0x99));
        EXPECT_MEMBER(operandBefore, operand, wideValueLen);
        EXPECT_EQ(6u, operand.narrowValueLen);
        EXPECT_STREQ("value", operand.narrowValue);
        EXPECT_STREQ(L"abc", operand.wideValue);
        EXPECT_EQ(KORV_CODEPAGE_NOT_GIVEN, operand.valueCodePage);
        EXPECT_EQ(0x77, operand.valueFlag);

        FieldDefI field = rubbish<FieldDefI>(64);
        const FieldDefI fieldBefore = field;
        const FieldDesc description = narrowField(text);
        EXPECT_EQ(status, CopyFieldStruct(&description, &field, 9876, 0x99));
        EXPECT_MEMBER(fieldBefore, field, wideTextLen);
        EXPECT_EQ(6, field.narrowTextLen);
        EXPECT_STREQ("value", field.narrowText);
        EXPECT_STREQ(L"abc", field.wideText);

        std::free(operand.narrowValue);
        std::free(operand.wideValue);
        std::free(field.narrowText);
        std::free(field.wideText);
    }
}

TEST_F(CopyCompanion, IsNotAskedForOtherTexts) {
    const wchar_t wide[] = L"wide";
    TextDesc wideText{};
    wideText.head.wideText = wide;
    ParamDesc parameter = narrowParameter(wideText);
    parameter.valueKind = 2;
    parameter.valueLen = 16;
    OprDefI operand{};
    EXPECT_EQ(0, CopyParamsStruct(&parameter, &operand, 9876, 0x99));
    parameter.valueKind = 3;
    parameter.valueLen = 0;
    OprDefI empty{};
    EXPECT_EQ(0, CopyParamsStruct(&parameter, &empty, 9876, 0x99));
    FieldDesc description = narrowField(wideText);
    description.textMode = 'W';
    description.textLen = 16;
    FieldDefI field{};
    EXPECT_EQ(0, CopyFieldStruct(&description, &field, 9876, 0x99));
    EXPECT_TRUE(companion::widened.empty());
    EXPECT_TRUE(companion::narrowed.empty());
    std::free(operand.wideValue);
    std::free(field.wideText);
}

class ProviderCompanion : public CopyCompanion {
  protected:
    void SetUp() override {
        CopyCompanion::SetUp();
        source.text1 = L"first";
        source.text2 = L"second";
        source.text1Len = 0xF0000001;
        source.text2Len = 17;
        target.texts = buffers;
        target.text1Cap = 8;
        target.text2Cap = 0x80000010;
    }
    void expectCodes() {
        EXPECT_MEMBER(source, target, prvCode1);
        EXPECT_MEMBER(source, target, prvCode2);
        EXPECT_MEMBER(source, target, prvAttr1);
        EXPECT_EQ(source.prvAttr2 & 0xFFFF, target.prvAttr2);
    }
    void expectNarrowing(const Call& call, const wchar_t* text, std::uint32_t length,
                         const void* buffer, std::uint32_t capacity) {
        EXPECT_EQ(text, call.source);
        EXPECT_EQ(length, call.sourceLen);
        EXPECT_EQ(buffer, call.target);
        EXPECT_EQ(capacity, call.capacity);
        EXPECT_EQ(0u, call.outLenBefore);
        EXPECT_EQ(4000000000u, call.codePage);
        EXPECT_EQ(0xA5, call.flag);
    }

    PrvDesc source = rubbish<PrvDesc>(65);
    PrvRecord target = rubbish<PrvRecord>(66);
    char first[8] = {}, second[8] = {};
    void* buffers[2] = {first, second};
};

TEST_F(ProviderCompanion, NarrowsBothTextsInTurn) {
    companion::answers = {{0, 99, L""}, {0, 98, L""}};
    EXPECT_EQ(0, CopyPrvStruct(&target, &source, 4000000000u, 0xA5, 'M'));
    ASSERT_EQ(2u, companion::narrowed.size());
    expectNarrowing(companion::narrowed[0], source.text1, 0xF0000001, first, 8);
    expectNarrowing(companion::narrowed[1], source.text2, 17, second, 0x80000010);
    EXPECT_TRUE(companion::widened.empty());
    expectCodes();
}

TEST_F(ProviderCompanion, StopsAtTheFirstTextThatFails) {
    companion::answers = {{-7, 0, L""}};
    EXPECT_EQ(-7, CopyPrvStruct(&target, &source, 4000000000u, 0xA5, 'M'));
    EXPECT_EQ(1u, companion::narrowed.size());
    expectCodes();
}

TEST_F(ProviderCompanion, PassesOnTheStatusOfTheSecondText) {
    companion::answers = {{0, 0, L""}, {CNV_UNCONVERTIBLE, 0, L""}};
    EXPECT_EQ(CNV_UNCONVERTIBLE, CopyPrvStruct(&target, &source, 4000000000u, 0xA5, 'M'));
    EXPECT_EQ(2u, companion::narrowed.size());
    expectCodes();
}

TEST_F(ProviderCompanion, IsNotAskedForWideTexts) {
    wchar_t wide1[8], wide2[8];
    void* wideBuffers[] = {wide1, wide2};
    target.texts = wideBuffers;
    target.text1Cap = target.text2Cap = 32;
    EXPECT_EQ(0, CopyPrvStruct(&target, &source, 4000000000u, 0xA5, 'W'));
    EXPECT_TRUE(companion::narrowed.empty());
    EXPECT_STREQ(L"first", wide1);
    EXPECT_STREQ(L"second", wide2);
    expectCodes();
}

}  // namespace
