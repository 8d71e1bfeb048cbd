// Counting rows without their fields: as the parser counts them.
#include "row_counter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "row_parser.h"
#include "support/fenced.h"

namespace {

using tool::Chunk;
using tool::RowCount;
using tool::RowParser;

// The rows up to the first that has another number of fields, has a fault or is not ended.
RowCount countedByParser(const Chunk& chunk, size_t columns) {
    RowCount counted = {0, 0, chunk.begin};
    RowParser parser(chunk, {});
    try {
        while (parser.next() && parser.fields().size() == columns && !parser.lineEnd().empty()) {
            counted = {counted.rows + 1, parser.lines(), parser.position()};
        }
    } catch (const tool::MalformedRow&) {
    }
    return counted;
}

void compare(const std::string& text, size_t columns) {
    Chunk chunk;
    chunk.buffer.assign(text.begin(), text.end());
    chunk.buffer.resize(text.size() + Chunk::kPadding, '"');
    chunk.begin = chunk.buffer.data();
    chunk.end = chunk.begin + text.size();
    chunk.last = true;
    const RowCount expected = countedByParser(chunk, columns);
    const RowCount counted = tool::countRows(chunk.begin, chunk.end, ',', columns);
    ASSERT_EQ(expected.rows, counted.rows) << testing::PrintToString(text);
    ASSERT_EQ(expected.lineFeeds, counted.lineFeeds) << testing::PrintToString(text);
    ASSERT_EQ(expected.end - chunk.begin, counted.end - chunk.begin)
        << testing::PrintToString(text);
}

TEST(RowCounter, CountsAnyTextLikeTheParser) {
    std::mt19937 random(1);
    constexpr char kCharacters[] = {'a', 'a', ',', ',', '"', '"', '\n', '\n', '\r', '\0'};
    for (int i = 0; i < 300000; ++i) {
        const size_t kinds = i % 50 == 0 ? 10 : i % 10 == 0 ? 9 : 8;
        std::string text(random() % 20, '\0');
        for (char& c : text) c = kCharacters[random() % kinds];
        compare(text, 1 + random() % 3);
        if (HasFatalFailure()) return;
    }
}

// Fields of all kinds, so that faults are rare and every place in a block is met.
TEST(RowCounter, CountsLongTextsLikeTheParser) {
    std::mt19937 random(2);
    const std::string fields[] = {"",
                                  "a",
                                  "bcd",
                                  "\"\"",
                                  "\"x,y\"",
                                  "\"\n\"",
                                  "\"\"\"\"",
                                  "\"a\"\"b\r\n\"",
                                  "a much longer field"};
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (size_t rows = random() % 40; rows > 0; --rows) {
            text +=
                fields[random() % std::size(fields)] + "," + fields[random() % std::size(fields)];
            text += random() % 4 == 0 ? "\r\n" : "\n";
        }
        if (i % 2 == 0 && !text.empty()) text[random() % text.size()] = "\",\n\rx"[random() % 5];
        compare(text, 2);
        if (HasFatalFailure()) return;
    }
}

TEST(RowCounter, ReadsAtMostABlockAfterTheEnd) {
    for (size_t length = 1; length <= 130; ++length) {
        Fenced<char> memory(length + tool::kBlockSize - 1);
        std::fill(memory.data(), memory.data() + memory.size(), '\n');
        const RowCount counted = tool::countRows(memory.data(), memory.data() + length, ',', 1);
        EXPECT_EQ(length, counted.rows);
    }
}

}  // namespace
