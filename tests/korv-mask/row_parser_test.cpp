// The CSV parser: fields, line ends and error positions, in one chunk.
#include "row_parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "parsed_rows.h"
#include "support/fenced.h"
#include "text_source.h"

namespace {

using tool::Chunk;
using tool::RowParser;

// A chunk of its own buffer that holds the whole text.
Chunk wholeText(const std::string& text) {
    Chunk chunk;
    chunk.buffer.assign(text.begin(), text.end());
    chunk.buffer.resize(text.size() + Chunk::kPadding);
    chunk.begin = chunk.buffer.data();
    chunk.end = chunk.begin + text.size();
    chunk.last = true;
    return chunk;
}

std::string rowsOf(const Chunk& chunk, char delimiter = ',') {
    reference::CsvRows result;
    addRows(chunk, {delimiter, true}, 1, result);
    return result.rows;
}

struct Case {
    const char* name;
    std::string text;
    std::string expected;
};

const Case kCases[] = {
    {"plain", "a,b\n1,2\n", "1[a][b]LF 2[1][2]LF "},
    {"crlf", "a,b\r\n1,2\r\n", "1[a][b]CRLF 2[1][2]CRLF "},
    {"mixed line ends", "a\r\nb\nc", "1[a]CRLF 2[b]LF 3[c]END "},
    {"no end of line", "a,b", "1[a][b]END "},
    {"empty", "", ""},
    {"empty fields", ",,\n", "1[][][]LF "},
    {"empty last field at the end", "a,", "1[a][]END "},
    {"empty line", "a\n\nb\n", "1[a]LF 2[]LF 3[b]LF "},
    {"quoted", "\"a\",\"\"\n", "1'a]']LF "},
    {"quoted at the end", "\"a\"", "1'a]END "},
    {"quoted before crlf", "\"a\"\r\n", "1'a]CRLF "},
    {"doubled quotes", "\"a\"\"b\",\"\"\"\",\"\"\"\"\"\"\n", "1'a\"b]'\"]'\"\"]LF "},
    {"delimiters in quotes", "\"a,b\nc\r\nd\",e\nf,g\n", "1'a,b\nc\r\nd][e]LF 4[f][g]LF "},
    {"a lone carriage return in quotes", "\"a\rb\"\n", "1'a\rb]LF "},
    {"long fields", std::string(70, 'x') + "," + std::string(70, 'y') + "\n",
     "1[" + std::string(70, 'x') + "][" + std::string(70, 'y') + "]LF "},
    {"quote in an unquoted field", "a,b\nc,d\"e\n",
     "1[a][b]LF 2:4: a quote in a field that does not begin with one"},
    {"text after a quote", "\"a\"b\n", "1:4: text after a closing quote"},
    {"text after a quote at the end", "\"a\"b", "1:4: text after a closing quote"},
    {"blank after a quote", "\"a\" ,b\n", "1:4: text after a closing quote"},
    {"quote never closed", "a\nb,\"c\nd", "1[a]LF 2:3: a quote that is never closed"},
    {"doubled quote never closed", "\"a\"\"", "1:1: a quote that is never closed"},
    {"nul", std::string("a\nb\0c\n", 6), "1[a]LF 2:2: a NUL byte"},
    {"nul in quotes", std::string("a\n\"b\nc\0\"\n", 9), "1[a]LF 3:2: a NUL byte"},
    {"nul after a quote", std::string("\"a\"\0\n", 5), "1:4: a NUL byte"},
    {"lone carriage return", "a\rb\n", "1:2: a carriage return without line feed"},
    {"carriage return before a quote", "a\r\"b\"\n", "1:2: a carriage return without line feed"},
    {"carriage return at the end", "a\r", "1:2: a carriage return without line feed"},
    {"columns count characters",
     "\xC3\xA4\xF0\x9F\x98\x80"
     "b\"\n",
     "1:4: a quote in a field that does not begin with one"},
    {"position after line feeds in quotes", "\"a\n\nb\",c\"\n",
     "3:5: a quote in a field that does not begin with one"},
};

TEST(RowParser, ParsesRowsAndFindsFaults) {
    for (const Case& c : kCases) EXPECT_EQ(c.expected, rowsOf(wholeText(c.text))) << c.name;
}

// What the slow reader, which the other tests compare with, makes of the same texts.
TEST(RowParser, TheSlowReaderAgrees) {
    for (const Case& c : kCases) {
        EXPECT_EQ(c.expected, reference::CsvReader(c.text, ',', SIZE_MAX).read().rows) << c.name;
    }
}

TEST(RowParser, AnyDelimiterSeparatesFields) {
    for (const char delimiter : {';', '\t', '|', ' ', 'x'}) {
        EXPECT_EQ("1[a,b]'c]END ",
                  rowsOf(wholeText(std::string("a,b") + delimiter + "\"c\""), delimiter));
    }
}

TEST(RowParser, TellsWhereRowsBeginAndEnd) {
    const Chunk chunk = wholeText("\"a\nb\",c\r\n\nd");
    RowParser parser(chunk, {});
    const auto offset = [&](const char* place) { return place - chunk.begin; };

    ASSERT_TRUE(parser.next());
    EXPECT_EQ(0, offset(parser.rowBegin()));
    EXPECT_EQ(7, offset(parser.rowEnd()));
    EXPECT_EQ("\r\n", parser.lineEnd());
    EXPECT_EQ(0u, parser.line());
    EXPECT_EQ(2u, parser.lines());
    EXPECT_FALSE(parser.isBlank());
    ASSERT_EQ(2u, parser.fields().size());
    EXPECT_EQ(0, offset(parser.fields()[0].raw));
    EXPECT_EQ(5u, parser.fields()[0].length);

    ASSERT_TRUE(parser.next());
    EXPECT_TRUE(parser.isBlank());
    ASSERT_EQ(1u, parser.fields().size());
    EXPECT_EQ(0u, parser.fields()[0].length);
    EXPECT_EQ(2u, parser.line());

    ASSERT_TRUE(parser.next());
    EXPECT_EQ(10, offset(parser.rowBegin()));
    EXPECT_EQ("", parser.lineEnd());
    EXPECT_EQ(3u, parser.lines());
    EXPECT_FALSE(parser.next());
    EXPECT_FALSE(parser.next());
    EXPECT_EQ(3u, parser.lines());
}

TEST(RowParser, CallersFailAtAPlaceInTheRow) {
    const Chunk chunk = wholeText("a\n\"\xC3\xA4\nb\",c\n");
    RowParser parser(chunk, {});
    ASSERT_TRUE(parser.next());
    ASSERT_TRUE(parser.next());
    try {
        parser.fail(parser.fields()[1].raw, "wrong");
    } catch (const tool::MalformedRow& malformed) {
        EXPECT_EQ(2u, malformed.line);
        EXPECT_EQ(4u, malformed.column);
        EXPECT_EQ("wrong", malformed.message);
    }
}

TEST(RowParser, TheFaultOfTheSourceFollowsTheChunk) {
    const struct {
        const char* text;
        const char* expected;
    } rows[] = {{"", "1:1: fault"},
                {"a\n", "1[a]LF 2:1: fault"},
                {"a\nb,c", "1[a]LF 2:4: fault"},
                {"a\r", "1:3: fault"},
                {"\"a\nb", "2:2: fault"},
                {"\"a\"", "1:4: fault"},
                {"a\"b", "1:2: a quote in a field that does not begin with one"}};
    for (const auto& row : rows) {
        Chunk chunk = wholeText(row.text);
        chunk.fault = "fault";
        EXPECT_EQ(row.expected, rowsOf(chunk)) << row.text;
    }
}

TEST(RowParser, ARowThatTheChunkCutsOffIsTooLong) {
    const std::string message =
        "1:1: the row is longer than 4 bytes; is there a quote that is "
        "never closed?";
    for (const char* text : {"abcd", "abc\r", "a,b,", "\"ab\"", "\"abc", "\"\n\n\n"}) {
        Chunk chunk = wholeText(text);
        chunk.last = false;
        EXPECT_EQ(message, rowsOf(chunk)) << text;
    }
}

// Every character near the ends of blocks, and nothing read from beyond the padding.
TEST(RowParser, ParsesEveryLengthNextToAnUnreadablePage) {
    std::mt19937 random(1);
    const std::string characters = "abc,,\n\n\"\"\"\r";
    for (size_t length = 0; length <= 200; ++length) {
        for (int round = 0; round < 50; ++round) {
            // Few of the texts would otherwise be parsed to their ends.
            std::string text(length, 'x');
            for (size_t i = round % 2 ? 0 : length - std::min<size_t>(length, 4); i < length; ++i) {
                text[i] = characters[random() % characters.size()];
            }
            Fenced<char> memory(length + Chunk::kPadding);
            std::copy(text.begin(), text.end(), memory.data());
            // What is in the padding does not matter.
            std::fill(memory.data() + length, memory.data() + memory.size(),
                      round % 3 ? '"' : '\n');
            Chunk chunk;
            chunk.begin = memory.data();
            chunk.end = chunk.begin + length;
            chunk.last = true;
            reference::CsvRows rows;
            addRows(chunk, {}, 1, rows);
            ASSERT_EQ(reference::CsvReader(text, ',', SIZE_MAX).read(), rows) << text;
        }
    }
}

TEST(SpecialCharacters, ABlockFindsWhatTheLoopFinds) {
    std::mt19937 random(2);
    for (int round = 0; round < 2000; ++round) {
        Fenced<char> memory(tool::kBlockSize);
        for (size_t i = 0; i < memory.size(); ++i) {
            memory[i] = round < 256 ? static_cast<char>(round + static_cast<int>(i))
                                    : "\"\n\r\0,;ab"[random() % 8];
        }
        const tool::Block block(memory.data());
        const tool::PlainBlock plain(memory.data());
        for (const char c : {'"', '\n', ',', '\0', '\x80', '\xFF'}) {
            ASSERT_EQ(plain.equalTo(c), block.equalTo(c));
        }
        for (const char delimiter : {',', ';', '\t'}) {
            ASSERT_EQ(plain.special(delimiter), block.special(delimiter));
        }
    }
}

TEST(SpecialCharacters, AreFoundInOrderAndOnlyInTheRange) {
    for (size_t length = 0; length <= 200; ++length) {
        for (size_t step = 1; step <= 70; step += 3) {
            Fenced<char> memory(length + tool::kBlockSize - 1);
            std::fill(memory.data(), memory.data() + length, 'x');
            std::fill(memory.data() + length, memory.data() + memory.size(), ';');
            for (size_t i = 0; i < length; i += step) memory[i] = "\"\n\r\0;"[i / step % 5];
            const char* const end = memory.data() + length;
            tool::SpecialCharacters special(memory.data(), end, ';');
            for (size_t i = 0; i < length; i += step) ASSERT_EQ(&memory[i], special.next());
            ASSERT_EQ(end, special.next());
            ASSERT_EQ(end, special.next());
        }
    }
}

}  // namespace
