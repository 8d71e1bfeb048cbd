// Fixed and variable wide text becomes zero-terminated wide text.
#include <string>

#include "datacnv/outcome.h"

namespace {

// Fixed text of the given byte length, whose whole units end at an unreadable page.
auto fixedWide(const std::wstring& text, uint32_t bytes) {
    return [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
        Fenced<wchar_t> source(text, false);
        return KORVCnvWCharToWVarcharSz(source.data(), &bytes, target, capacity, outLen, nullptr);
    };
}

// Variable text that begins `shift` bytes off alignment and ends at an unreadable page, or before
// it.
auto variableWide(const std::wstring& text, int16_t bytes, size_t shift) {
    return [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
        const size_t size = sizeof bytes + text.size() * sizeof(wchar_t);
        Fenced<char> source(size + shift);
        std::memcpy(source.data(), &bytes, sizeof bytes);
        std::memcpy(source.data() + sizeof bytes, text.data(), text.size() * sizeof(wchar_t));
        return KORVCnvWVarcharToWVarcharSz(source.data(), &kNoLength, target, capacity, outLen,
                                           nullptr);
    };
}

std::wstring sample(int length) {
    std::wstring text;
    for (int i = 0; i < length; ++i) text.push_back(0x10FF00 + length + i * 3);
    return text;
}

TEST(WideText, FixedTextOfEveryLength) {
    for (int length = 0; length <= 70; ++length) {
        const std::wstring text = sample(length);
        expectText(text, fixedWide(text, static_cast<uint32_t>(length) * 4));
    }
}

TEST(WideText, VariableTextOfEveryLengthAndAlignment) {
    for (int length = 0; length <= 70; ++length) {
        const std::wstring text = sample(length);
        expectText(text, variableWide(text, static_cast<int16_t>(length * 4),
                                      static_cast<size_t>(length % 4)));
    }
    for (size_t shift = 0; shift < 16; ++shift) {
        expectText(sample(9), variableWide(sample(9), 36, shift));
    }
}

TEST(WideText, UnitsAreCarriedAsTheyAre) {
    const std::wstring text{L'a', 0, -1, 0xD800, 0};
    expectText(text, fixedWide(text, 20));
    expectText(text, variableWide(text, 20, 0));
}

TEST(WideText, TextEndsWhereItsLengthSays) {
    expectText(std::wstring(L"abc"), fixedWide(L"abcdef", 12));
    expectText(std::wstring(L"abc"), variableWide(L"abcdef", 12, 0));
}

TEST(WideText, LongestVariableText) {
    const std::wstring text = sample(8191);
    Fenced<wchar_t> target(8192);
    uint32_t outLen = 0;
    ASSERT_EQ(CNV_SUCCESS, variableWide(text, 32764, 0)(target.data(), 4 * 8192, &outLen));
    EXPECT_EQ(text, std::wstring(target.data(), outLen));
}

TEST(WideText, APartialUnitAtTheEndIsLeftOut) {
    for (int partial = 1; partial < 4; ++partial) {
        expectText(std::wstring(L"ab"), fixedWide(L"abc", static_cast<uint32_t>(8 + partial)));
        expectText(std::wstring(L"ab"), variableWide(L"abc", static_cast<int16_t>(8 + partial), 0));
        expectText(std::wstring(), fixedWide(L"abc", static_cast<uint32_t>(partial)));
    }
}

TEST(WideText, AnEmptyTextNeedsNoSource) {
    expectText(std::wstring(), [](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
        return KORVCnvWCharToWVarcharSz(nullptr, &kNoLength, target, capacity, outLen, nullptr);
    });
}

TEST(WideText, NegativeLengthsAreRefused) {
    for (int16_t bytes : {-1, -4, -32768}) {
        expectFailure<wchar_t>(CNV_BAD_LENGTH, 4, variableWide(L"abc", bytes, 0));
    }
    for (uint32_t bytes : {0x80000000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
        expectFailure<wchar_t>(CNV_BAD_LENGTH, 4, fixedWide(L"abc", bytes));
    }
}

}  // namespace
