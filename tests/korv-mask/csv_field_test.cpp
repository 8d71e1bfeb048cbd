// The text of fields: what needs quotes, and that quoting and parsing are inverse.
#include "csv_field.h"

#include <gtest/gtest.h>

#include <vector>

#include "parsed_rows.h"
#include "support/fenced.h"
#include "text_source.h"

namespace {

std::string quoted(std::string_view text, bool quote, char delimiter = ',') {
    std::string target = "before";
    tool::appendField(target, text, quote, delimiter);
    return target.substr(6);
}

TEST(CsvField, QuotesWhatMustBeQuoted) {
    const struct {
        const char* text;
        bool quote;
        const char* expected;
    } cases[] = {
        {"", false, ""},         {"", true, "\"\""},        {"a b", false, "a b"},
        {"a", true, "\"a\""},    {"a,b", false, "\"a,b\""}, {"a\nb", false, "\"a\nb\""},
        {"\r", false, "\"\r\""}, {"\"", false, "\"\"\"\""}, {"a\"b\"", true, "\"a\"\"b\"\"\""},
        {"a;b", false, "a;b"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.expected, quoted(c.text, c.quote)) << c.text;
    EXPECT_EQ("\"a;b\"", quoted("a;b", false, ';'));
    EXPECT_EQ("a,b", quoted("a,b", false, ';'));
}

TEST(CsvField, FindsWhatNeedsQuotesAnywhereInATextOfAnyLength) {
    for (size_t length = 0; length <= 140; ++length) {
        Fenced<char> text(std::string_view(std::string(length, 'x')), false);
        const std::string_view view(text.data(), length);
        EXPECT_FALSE(tool::needsQuotes(view, ';'));
        for (size_t at = 0; at < length; ++at) {
            for (const char c : {';', '"', '\r', '\n'}) {
                text[at] = c;
                EXPECT_TRUE(tool::needsQuotes(view, ';')) << length << " " << at;
            }
            text[at] = ',';
            EXPECT_FALSE(tool::needsQuotes(view, ';')) << length << " " << at;
        }
    }
}

TEST(CsvField, TakesQuotesOff) {
    const struct {
        const char* raw;
        const char* text;
    } cases[] = {{"", ""},
                 {"ab", "ab"},
                 {"\"\"", ""},
                 {"\"ab\"", "ab"},
                 {"\"a\"\"b\"", "a\"b"},
                 {"\"\"\"\"", "\""},
                 {"\"\"\"a\"\"\"\"\"", "\"a\"\""}};
    for (const auto& c : cases) {
        TextSource source(std::string(c.raw) + "\n");
        tool::ChunkReader reader(source, "in.csv");
        tool::Chunk chunk;
        ASSERT_TRUE(reader.next(chunk));
        tool::RowParser parser(chunk, {});
        ASSERT_TRUE(parser.next());
        const tool::CsvField& field = parser.fields()[0];

        std::string work = "old";
        EXPECT_EQ(c.text, tool::unquoted(field, work)) << c.raw;
        std::string text = "before ";
        tool::appendUnquoted(field, text);
        EXPECT_EQ("before " + std::string(c.text), text);
    }
}

TEST(CsvField, WhatIsQuotedParsesToTheSameText) {
    const std::string characters = "a,\"\r\n;";
    std::string text;
    for (int number = 0; number < 6 * 6 * 6 * 6; ++number) {
        text.clear();
        for (int i = 0, rest = number; i < 4; ++i, rest /= 6) {
            text += characters[static_cast<size_t>(rest % 6)];
        }
        for (const char delimiter : {',', ';'}) {
            TextSource source(quoted(text, false, delimiter) + "\n");
            tool::ChunkReader reader(source, "in.csv");
            tool::Chunk chunk;
            ASSERT_TRUE(reader.next(chunk));
            tool::RowParser parser(chunk, {delimiter, true});
            ASSERT_TRUE(parser.next());
            ASSERT_EQ(1u, parser.fields().size());
            std::string work;
            EXPECT_EQ(text, tool::unquoted(parser.fields()[0], work));
            EXPECT_FALSE(parser.next());
        }
    }
}

}  // namespace
