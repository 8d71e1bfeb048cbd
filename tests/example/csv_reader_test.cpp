// The CSV reader: fields, line ends and error positions, wherever the buffer ends.
#include "host/csv_reader.h"

#include <gtest/gtest.h>

#include "host/host_error.h"
#include "text_source.h"

namespace {

using host::CsvReader;

// All rows as text: fields in brackets, then the line end by name; or the message.
std::string readAll(const std::string& input, size_t bufferSize, size_t atOnce,
                    size_t longestRow = CsvReader::kLongestRow) {
    TextSource source(input, atOnce);
    CsvReader reader(source, "in.csv", bufferSize, longestRow);
    std::string result;
    try {
        while (reader.next()) {
            result += std::to_string(reader.line());
            for (host::CsvField& field : reader.fields()) {
                const std::string_view text = CsvReader::text(field);
                EXPECT_EQ('\0', text.data()[text.size()]);
                result += (field.quoted ? "'" : "[") + std::string(text) + "]";
            }
            result += reader.lineEnd() == "\r\n" ? "CRLF "
                      : reader.lineEnd() == "\n" ? "LF "
                                                 : "END ";
        }
    } catch (const host::HostError& error) {
        result += error.what();
    }
    return result;
}

struct Case {
    const char* name;
    std::string input;
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
    {"long fields", std::string(70, 'x') + "," + std::string(70, 'y') + "\n",
     "1[" + std::string(70, 'x') + "][" + std::string(70, 'y') + "]LF "},
    {"byte order mark", "\xEF\xBB\xBF\"a\",b\n", "1'a][b]LF "},
    {"part of a byte order mark", "\xEF\xBB", "1[\xEF\xBB]END "},
    {"quote in an unquoted field", "a,b\nc,d\"e\n",
     "1[a][b]LF in.csv:2:4: a quote in a field that does not begin with one"},
    {"text behind a quote", "\"a\"b\n", "in.csv:1:4: text behind a closing quote"},
    {"blank behind a quote", "\"a\" ,b\n", "in.csv:1:4: text behind a closing quote"},
    {"quote never closed", "a\nb,\"c\nd", "1[a]LF in.csv:2:3: a quote that is never closed"},
    {"doubled quote never closed", "\"a\"\"", "in.csv:1:1: a quote that is never closed"},
    {"nul", std::string("a\nb\0c\n", 6), "1[a]LF in.csv:2:2: a NUL byte"},
    {"nul in quotes", std::string("a\n\"b\nc\0\"\n", 9), "1[a]LF in.csv:3:2: a NUL byte"},
    {"nul behind a quote", std::string("\"a\"\0\n", 5), "in.csv:1:4: a NUL byte"},
    {"lone carriage return", "a\rb\n", "in.csv:1:2: a carriage return without line feed"},
    {"carriage return at the end", "a\r", "in.csv:1:2: a carriage return without line feed"},
    {"columns count characters",
     "\xC3\xA4\xF0\x9F\x98\x80"
     "b\"\n",
     "in.csv:1:4: a quote in a field that does not begin with one"},
    {"position behind newlines in quotes", "\"a\n\nb\",c\"\n",
     "in.csv:3:5: a quote in a field that does not begin with one"},
};

TEST(CsvReader, ReadsTheSameWithEveryBufferSize) {
    for (const Case& c : kCases) {
        for (size_t size = 1; size <= c.input.size() + 2; ++size) {
            ASSERT_EQ(c.expected, readAll(c.input, size, SIZE_MAX)) << c.name << ", " << size;
        }
    }
}

TEST(CsvReader, ReadsTheSameFromASourceThatGivesLittle) {
    for (const Case& c : kCases) {
        for (size_t atOnce = 1; atOnce <= 5; ++atOnce) {
            ASSERT_EQ(c.expected, readAll(c.input, 4, atOnce)) << c.name << ", " << atOnce;
        }
        ASSERT_EQ(c.expected, readAll(c.input, CsvReader::kBufferSize, 1)) << c.name;
    }
}

TEST(CsvReader, KeepsTheRawRow) {
    TextSource source("\"a\"\"\",b\r\nc");
    CsvReader reader(source, "in.csv", 3);
    ASSERT_TRUE(reader.next());
    EXPECT_EQ("\"a\"\"\",b", reader.rawRow());
    ASSERT_TRUE(reader.next());
    EXPECT_EQ("c", reader.rawRow());
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.next());
}

TEST(CsvReader, TellsAByteOrderMark) {
    TextSource with(
        "\xEF\xBB\xBF"
        "a\n");
    CsvReader first(with, "in.csv", 1);
    ASSERT_TRUE(first.next());
    EXPECT_TRUE(first.hasByteOrderMark());
    TextSource without("abcd\n");
    CsvReader second(without, "in.csv", 1);
    ASSERT_TRUE(second.next());
    EXPECT_FALSE(second.hasByteOrderMark());
}

TEST(CsvReader, RefusesARowThatIsTooLong) {
    const std::string row(63, 'x');
    EXPECT_EQ("1[" + row + "]LF ", readAll(row + "\n", 4, 7, 64));
    EXPECT_EQ(
        "1[a]LF in.csv:2:1: the row is longer than 64 bytes; is there a quote that is never "
        "closed?",
        readAll("a\n" + row + "xx\n", 4, 7, 64));
}

}  // namespace
