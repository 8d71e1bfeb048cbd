// The chunk reader: chunks of whole rows, which parse like the whole input wherever they end.
#include "chunk_reader.h"

#include <gtest/gtest.h>

#include <random>

#include "parsed_rows.h"
#include "text_source.h"

namespace {

using tool::Chunk;
using tool::ChunkReader;

std::vector<std::string> chunksOf(const std::string& text, size_t chunkSize,
                                  size_t longestRow = ChunkReader::kLongestRow) {
    TextSource source(text);
    ChunkReader reader(source, "in.csv", chunkSize, longestRow);
    std::vector<std::string> chunks;
    Chunk chunk;
    while (reader.next(chunk)) chunks.emplace_back(chunk.begin, chunk.end);
    return chunks;
}

using Chunks = std::vector<std::string>;

TEST(ChunkReader, EndsChunksAtTheLastRowEndThatFits) {
    const std::string text = "ab\ncd\nef\n";
    EXPECT_EQ((Chunks{"ab\n", "cd\n", "ef\n"}), chunksOf(text, 3));
    EXPECT_EQ((Chunks{"ab\n", "cd\n", "ef\n"}), chunksOf(text, 5));
    EXPECT_EQ((Chunks{"ab\ncd\n", "ef\n"}), chunksOf(text, 6));
    EXPECT_EQ((Chunks{"ab\ncd\n", "ef\n"}), chunksOf(text, 8));
    EXPECT_EQ(Chunks{text}, chunksOf(text, 9));
    EXPECT_EQ((Chunks{"a\r\n", "b\r\n"}), chunksOf("a\r\nb\r\n", 5));
    EXPECT_EQ(Chunks{}, chunksOf("", 5));
}

TEST(ChunkReader, KeepsLineFeedsInQuotesInTheirRow) {
    EXPECT_EQ((Chunks{"\"a\nb\"\n", "\"\n\"\"\n\"\n", "c\nd\n"}),
              chunksOf("\"a\nb\"\n\"\n\"\"\n\"\nc\nd\n", 8));
}

TEST(ChunkReader, GrowsAChunkForALongRow) {
    const std::string row = std::string(99, 'x') + "\n";
    EXPECT_EQ((Chunks{"a\nb\n", row, row + "c\n"}), chunksOf("a\nb\n" + row + row + "c\n", 10));
    // The size doubles; later chunks are small again.
    EXPECT_EQ((Chunks{"a\nb\n", row + "c\nd\ne\nf\ng\nh\n", "i\nj\nk\n", "l\n"}),
              chunksOf("a\nb\n" + row + "c\nd\ne\nf\ng\nh\ni\nj\nk\nl\n", 7));
}

// The last flag is exact wherever the input ends, and nothing is lost.
TEST(ChunkReader, TheLastChunkIsMarked) {
    for (const char* text : {"a\n", "a", "a\nb", "a\nb\n", "abc\nabc\n\n", "\n\n\n"}) {
        for (size_t size = 1; size < 12; ++size) {
            TextSource source(text);
            ChunkReader reader(source, "in.csv", size);
            // Throws where the last flag is wrong.
            EXPECT_EQ(text, parsedRows(reader).raw);
        }
    }
}

TEST(ChunkReader, TakesTheByteOrderMarkAway) {
    const struct {
        const char* text;
        bool mark;
        const char* rows;
    } cases[] = {
        {"\xEF\xBB\xBF\"a\",b\n", true, "1'a][b]LF "},
        {"\xEF\xBB\xBF", true, ""},
        {"\xEF\xBB", false, "1[\xEF\xBB]END "},
        {"abcd\n", false, "1[abcd]LF "},
        {"", false, ""},
    };
    for (const auto& c : cases) {
        for (const size_t atOnce : {1, 2, 100}) {
            TextSource source(c.text, atOnce);
            ChunkReader reader(source, "in.csv", 1);
            EXPECT_EQ(c.mark, reader.hasByteOrderMark());
            EXPECT_EQ(c.rows, parsedRows(reader).rows);
            EXPECT_EQ(c.mark, reader.hasByteOrderMark());
        }
    }
}

TEST(ChunkReader, LeavesPaddingAndRoomForATerminator) {
    std::string text;
    for (int i = 0; i < 50; ++i) text += std::string(static_cast<size_t>(i), 'x') + "\n";
    TextSource source(text);
    ChunkReader reader(source, "in.csv", 64);
    std::string read;
    Chunk chunk;
    while (reader.next(chunk)) {
        ASSERT_LE(chunk.end + Chunk::kPadding, chunk.buffer.data() + chunk.buffer.size());
        read.append(chunk.begin, chunk.end);
        // What is written there is in no other chunk.
        std::fill(chunk.end, chunk.end + Chunk::kPadding, '\0');
    }
    EXPECT_EQ(text, read);
}

TEST(ChunkReader, ChunksOutliveTheNextOnes) {
    TextSource source("a\nb\nc\n");
    ChunkReader reader(source, "in.csv", 2);
    Chunk first, second, third;
    ASSERT_TRUE(reader.next(first) && reader.next(second) && reader.next(third));
    EXPECT_EQ("a\n", std::string(first.begin, first.end));
    EXPECT_EQ("b\n", std::string(second.begin, second.end));
    EXPECT_EQ("c\n", std::string(third.begin, third.end));
}

TEST(ChunkReader, RefusesARowThatIsTooLong) {
    const std::string message =
        "2:1: the row is longer than 64 bytes; is there a quote that is never closed?";
    const auto rows = [](const std::string& text, size_t chunkSize) {
        TextSource source(text);
        ChunkReader reader(source, "in.csv", chunkSize, 64);
        return parsedRows(reader).rows;
    };
    for (const size_t size : {1, 4, 7, 63, 64, 65, 1000}) {
        const std::string row(63, 'x');
        EXPECT_EQ("1[a]LF 2[" + row + "]LF 3[b]LF ", rows("a\n" + row + "\nb\n", size));
        EXPECT_EQ("1[a]LF 2[" + row + "x]END ", rows("a\n" + row + "x", size));
        EXPECT_EQ("1[a]LF " + message, rows("a\n" + row + "x\n", size));
        EXPECT_EQ("1[a]LF " + message, rows("a\n" + row + "\r\n", size));
        EXPECT_EQ("1[a]LF " + message, rows("a\n\"" + row + row, size));
        EXPECT_EQ("1[a]LF 2:3: a quote in a field that does not begin with one",
                  rows("a\nbb\"" + row + row, size));
    }
}

TEST(ChunkReader, AFaultOfTheSourceFollowsTheRowsBeforeIt) {
    for (size_t size = 1; size < 9; ++size) {
        TextSource source("a\nb\nc,d", 2, "fault");
        ChunkReader reader(source, "in.csv", size);
        EXPECT_EQ("1[a]LF 2[b]LF 3:4: fault", parsedRows(reader).rows) << size;
    }
}

// Rows and their faults are the same with every chunk size, also where the input is malformed and
// the chunks after that place end anywhere.
TEST(ChunkReader, RowsAndFaultsDoNotDependOnTheChunks) {
    std::mt19937 random(1);
    const std::string characters = "aab,,\n\n\"\"\"\"\r\xC3\xA4";
    for (int round = 0; round < 1000; ++round) {
        std::string text;
        const size_t length = random() % 60;
        // Well-formed fields are more likely than from single characters alone.
        while (text.size() < length) {
            switch (random() % 6) {
                case 0:
                    text += "\"a\n\"\"b\",";
                    break;
                case 1:
                    text += "\"\"\r\n";
                    break;
                case 2:
                    text += characters[random() % characters.size()];
                    break;
                default:
                    text += random() % 3 ? "ab," : "c\n";
            }
        }
        const std::string fault = random() % 4 ? "" : "fault";
        const size_t longest = random() % 2 ? ChunkReader::kLongestRow : 3 + random() % 40;
        const reference::CsvRows expected = reference::CsvReader(text, ',', longest, fault).read();
        for (size_t size = 1; size <= text.size() + 2; ++size) {
            TextSource source(text, random() % 2 ? SIZE_MAX : 1 + random() % 9, fault);
            ChunkReader reader(source, "in.csv", size, longest);
            ASSERT_EQ(expected, parsedRows(reader)) << size << "\n" << text;
        }
    }
}

// The same for chunks of several blocks.
TEST(ChunkReader, RowsDoNotDependOnTheBlocksOfChunks) {
    std::mt19937 random(2);
    for (int round = 0; round < 200; ++round) {
        std::string text;
        while (text.size() < 1000) {
            text += std::string(random() % 80, 'x');
            if (random() % 3 == 0) text += ",\"" + std::string(random() % 80, '\n') + "\"";
            text += random() % 2 ? "\r\n" : "\n";
        }
        const reference::CsvRows expected =
            reference::CsvReader(text, ',', ChunkReader::kLongestRow).read();
        for (const size_t size : {16, 31, 63, 64, 65, 127, 128, 129, 300, 999}) {
            TextSource source(text);
            ChunkReader reader(source, "in.csv", size);
            ASSERT_EQ(expected, parsedRows(reader)) << size << "\n" << text;
        }
    }
}

}  // namespace
