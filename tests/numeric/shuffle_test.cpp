// The exchange of a wide text's halves.
#include <gtest/gtest.h>

#include <string>

#include "korv/numeric.h"
#include "support/fenced.h"

namespace {

std::wstring shuffled(std::wstring text) {
    EXPECT_EQ(0, KORVShuffle(text.data()));
    return text;
}

std::wstring numbered(std::size_t length) {
    std::wstring text;
    while (text.size() < length)
        text.push_back(static_cast<wchar_t>(0x01010100u + text.size() * 256));
    return text;
}

std::wstring halvesExchanged(const std::wstring& text) {
    const std::size_t half = text.size() / 2;
    std::wstring result = text;
    for (std::size_t i = 0; i < half; ++i) {
        result[i] = text[half + i];
        result[half + i] = text[i];
    }
    return result;
}

TEST(ShuffleTest, KnownTexts) {
    EXPECT_EQ(L"cdab", shuffled(L"abcd"));
    EXPECT_EQ(L"cdabe", shuffled(L"abcde"));
    EXPECT_EQ(L"ba", shuffled(L"ab"));
    EXPECT_EQ(L"bac", shuffled(L"abc"));
    EXPECT_EQ(L"a", shuffled(L"a"));
    EXPECT_EQ(L"", shuffled(L""));
}

TEST(ShuffleTest, EveryLengthAtEveryAlignment) {
    for (std::size_t offset = 0; offset < 16; ++offset) {
        for (std::size_t length = 0; length <= 140; ++length) {
            const std::wstring before(offset, L'<');
            const std::wstring text = numbered(length);
            const std::wstring behind = std::wstring(1, L'\0') + std::wstring(20, L'>');
            std::wstring buffer = before + text + behind;
            ASSERT_EQ(0, KORVShuffle(buffer.data() + offset));
            ASSERT_TRUE(before + halvesExchanged(text) + behind == buffer)
                << length << " at " << offset;
            ASSERT_EQ(0, KORVShuffle(buffer.data() + offset));
            ASSERT_TRUE(before + text + behind == buffer) << "twice restores " << length;
        }
    }
}

TEST(ShuffleTest, BetweenUnreadablePages) {
    using Fence = Fenced<wchar_t>::Fence;
    for (Fence fence : {Fence::behind, Fence::before}) {
        for (std::size_t length = 0; length <= 1100; length += length < 70 ? 1 : 103) {
            const std::wstring text = numbered(length);
            Fenced<wchar_t> buffer(length + 1, fence);
            for (std::size_t i = 0; i <= length; ++i) buffer[i] = text.c_str()[i];
            ASSERT_EQ(0, KORVShuffle(buffer.data()));
            ASSERT_TRUE(halvesExchanged(text) == std::wstring(buffer.data(), length)) << length;
            ASSERT_EQ(L'\0', buffer[length]);
            ASSERT_TRUE(buffer.intact()) << length;
        }
    }
}

}  // namespace
