// The three forms of narrow text become zero-terminated wide text.
#include <string>

#include "datacnv/outcome.h"

namespace {

// `length` bytes that run through all 256 values but zero.
std::string bytes(int length, int first) {
    std::string text;
    for (int i = 0; i < length; ++i) text.push_back(static_cast<char>(1 + (first + i * 37) % 255));
    return text;
}

std::wstring latin1(const std::string& text) {
    std::wstring wide;
    for (char c : text) wide.push_back(static_cast<unsigned char>(c));
    return wide;
}

// Text after its 16-bit length, `shift` bytes off alignment, next to an unreadable page.
auto variableText(const std::string& text, int16_t length, const CnvOptions* options) {
    return [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
        Fenced<char> source(sizeof length + text.size());
        std::memcpy(source.data(), &length, sizeof length);
        std::memcpy(source.data() + sizeof length, text.data(), text.size());
        return KORVCnvVarcharToWVarcharSz(source.data(), &kNoLength, target, capacity, outLen,
                                          options);
    };
}

auto terminatedText(const std::string& text, const CnvOptions* options) {
    return [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
        Fenced<char> source{std::string_view(text)};
        return KORVCnvVarcharSzToWVarcharSz(source.data(), &kNoLength, target, capacity, outLen,
                                            options);
    };
}

class Widening : public testing::TestWithParam<int> {};

// The length shifts the alignment of the source, which ends at the fence.
TEST_P(Widening, FixedTextBecomesOneCharacterPerByte) {
    const std::string text = bytes(GetParam(), GetParam());
    expectText(latin1(text), fixedText(text, nullptr));
}

TEST_P(Widening, VariableTextTakesItsLengthFromItsPrefix) {
    const std::string text = bytes(GetParam(), 100 + GetParam());
    expectText(latin1(text), variableText(text, static_cast<int16_t>(text.size()), nullptr));
}

TEST_P(Widening, TerminatedTextEndsAtItsTerminator) {
    const std::string text = bytes(GetParam(), 200 + GetParam());
    expectText(latin1(text), terminatedText(text, nullptr));
}

INSTANTIATE_TEST_SUITE_P(EveryLength, Widening, testing::Range(0, 71));

TEST(WideningWithoutOptions, EveryByteIsItsIso8859Character) {
    for (int byte = 0; byte < 256; ++byte) {
        const char source = static_cast<char>(byte);
        const uint32_t length = 1;
        wchar_t target[2] = {-1, -1};
        uint32_t outLen = 0;
        ASSERT_EQ(CNV_SUCCESS, KORVCnvCharToWVarcharSz(&source, &length, target, sizeof target,
                                                       &outLen, nullptr));
        ASSERT_EQ(byte, target[0]);
        ASSERT_EQ(0, target[1]);
        ASSERT_EQ(1u, outLen);
    }
}

TEST(Widening, FixedAndVariableTextMayHoldZeros) {
    const std::string text("a\0b\0", 4);
    const std::wstring wide(L"a\0b\0", 4);
    expectText(wide, fixedText(text, nullptr));
    expectText(wide, variableText(text, 4, nullptr));
}

TEST(Widening, TextBehindThePrefixEndsWhereThePrefixSays) {
    expectText(std::wstring(L"abc"), variableText("abcdef", 3, nullptr));
}

TEST(Widening, LongestVariableText) {
    const std::string text = bytes(32767, 5);
    Fenced<wchar_t> target(32768);
    uint32_t outLen = 0;
    ASSERT_EQ(CNV_SUCCESS, variableText(text, 32767, nullptr)(target.data(), 4 * 32768, &outLen));
    EXPECT_EQ(32767u, outLen);
    EXPECT_EQ(latin1(text), std::wstring(target.data(), outLen));
}

TEST(Widening, NegativeLengthsAreRefused) {
    const CnvOptions utf8 = codePage(1208);
    for (const CnvOptions* options : {static_cast<const CnvOptions*>(nullptr), &utf8}) {
        expectFailure<wchar_t>(CNV_BAD_LENGTH, 0, variableText("ab", -1, options));
        expectFailure<wchar_t>(CNV_BAD_LENGTH, 0, variableText("ab", INT16_MIN, options));
        expectFailure<wchar_t>(
            CNV_BAD_LENGTH, 0, [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
                const uint32_t length = 0x80000000;
                return KORVCnvCharToWVarcharSz("ab", &length, target, capacity, outLen, options);
            });
    }
}

TEST(Widening, EveryFormFollowsTheCodePage) {
    const CnvOptions utf8 = codePage(1208);
    const CnvOptions ebcdic = codePage(37);
    const std::string text = "\xC3\xA4\xE2\x82\xAC";
    const std::wstring wide = L"\x00E4\x20AC";
    expectText(wide, fixedText(text, &utf8));
    expectText(wide, variableText(text, 5, &utf8));
    expectText(wide, terminatedText(text, &utf8));
    expectText(std::wstring(L"A1"), variableText("\xC1\xF1", 2, &ebcdic));
    expectText(std::wstring(L"A1"), terminatedText("\xC1\xF1", &ebcdic));
}

TEST(Widening, TheFlagChangesNothing) {
    for (uint8_t flag : {0, 1, 255}) {
        const CnvOptions options = codePage(1208, flag);
        expectText(std::wstring(L"x\x00E4"), fixedText("x\xC3\xA4", &options));
    }
}

TEST(Widening, SourceLengthIsNotWritten) {
    uint32_t length = 3;
    wchar_t target[4];
    uint32_t outLen = 0;
    ASSERT_EQ(CNV_SUCCESS,
              KORVCnvCharToWVarcharSz("abc", &length, target, sizeof target, &outLen, nullptr));
    EXPECT_EQ(3u, length);
}

}  // namespace
