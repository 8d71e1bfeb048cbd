// Short copies and the checks of UTF-8 text, at every length and at the end of readable memory.
#include <gtest/gtest.h>

#include <string>

#include "support/fenced.h"
#include "text/copy_text.h"
#include "text/utf8_text.h"

namespace {

TEST(CopyText, CopiesAnyLengthAndNothingElse) {
    for (size_t length = 0; length <= 100; ++length) {
        Fenced<char> source(length);
        for (size_t i = 0; i < length; ++i) source[i] = static_cast<char>(i * 7 + 1);
        Fenced<char> target(length);
        text::copyText(target.data(), source.data(), length);
        EXPECT_TRUE(target.intact());
        EXPECT_EQ(std::string(source.data(), length), std::string(target.data(), length));
    }
}

TEST(PlainAscii, EveryByteOfEveryLengthCounts) {
    for (size_t length = 0; length <= 40; ++length) {
        Fenced<char> text(length);
        for (size_t i = 0; i < length; ++i) text[i] = i % 2 == 0 ? '\x01' : '\x7F';
        EXPECT_TRUE(text::isPlainAscii(text.data(), length));
        for (size_t at = 0; at < length; ++at) {
            for (const char other : {'\0', '\x80', '\xFF'}) {
                const char before = std::exchange(text[at], other);
                EXPECT_FALSE(text::isPlainAscii(text.data(), length)) << length << " " << at;
                text[at] = before;
            }
        }
    }
}

TEST(ValidUtf8, EndsAtTheFirstFault) {
    // Each pair is a text and the number of its bytes that are valid.
    const std::pair<std::string, size_t> cases[] = {
        {"\x7F", 1},
        {"\x80", 0},
        {"\xC1\x80", 0},
        {"\xC2\x80", 2},
        {"\xDF\xBF", 2},
        {"\xC2", 0},
        {"\xC2x", 0},
        {"\xE0\x9F\x80", 0},
        {"\xE0\xA0\x80", 3},
        {"\xED\x9F\xBF", 3},
        {"\xED\xA0\x80", 0},
        {"\xEF\xBF\xBF", 3},
        {"\xF0\x8F\x80\x80", 0},
        {"\xF0\x90\x80\x80", 4},
        {"\xF4\x8F\xBF\xBF", 4},
        {"\xF4\x90\x80\x80", 0},
        {"\xF5\x80\x80\x80", 0},
        {"\xE4\xBD", 0},
    };
    for (const auto& [bytes, valid] : cases) {
        for (size_t before = 0; before <= 20; ++before) {
            for (const char* after : {"", "x", "\xC3\xA4", "twelve bytes"}) {
                std::string all = std::string(before, 'a') + bytes;
                const size_t expected =
                    valid == bytes.size() ? all.size() + std::strlen(after) : before + valid;
                // What follows must not complete a character that is cut off.
                if (valid != bytes.size() && *after < 0) continue;
                all += after;
                Fenced<char> memory(std::string_view(all), false);
                EXPECT_EQ(expected, text::validUtf8Length(memory.data(), all.size()))
                    << testing::PrintToString(all);
            }
        }
    }
}

}  // namespace
