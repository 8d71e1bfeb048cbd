// Input in other code pages: names, conversion line by line, and the positions of faults.
#include "code_page_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "parsed_rows.h"
#include "text_source.h"
#include "tool_error.h"

namespace {

using std::string_literals::operator""s;
using tool::CodePageSource;

std::string readAll(tool::ByteSource& source, size_t capacity) {
    std::string result;
    std::string buffer(capacity, '\0');
    try {
        while (const size_t count = source.read(buffer.data(), buffer.size())) {
            result.append(buffer, 0, count);
        }
    } catch (const tool::MalformedInput& error) {
        result += "!" + std::string(error.what());
    }
    return result;
}

void expectEverywhere(const std::string& expected, const std::string& bytes, uint32_t codePage) {
    for (const size_t chunk : {1, 2, 3, 7, 1000}) {
        for (const size_t atOnce : {1, 2, 5, 1000}) {
            for (const size_t capacity : {1, 3, 1000}) {
                TextSource source(bytes, atOnce);
                CodePageSource conversion(source, codePage, "PAGE", chunk);
                ASSERT_EQ(expected, readAll(conversion, capacity))
                    << codePage << " " << chunk << " " << atOnce << " " << capacity;
            }
        }
    }
}

TEST(CodePageSource, ConvertsCharactersOfOneByte) {
    expectEverywhere("", "", 1252);
    expectEverywhere("a\u00E4\u20AC\r\nb\u00FF", "a\xE4\x80\r\nb\xFF", 1252);
    expectEverywhere("\u0141\n", "\xA3\n", 28592);
    expectEverywhere("\u00E4\u0085\n", "\xE4\x85\n", 28591);
    expectEverywhere("az\n", "az\n", 20127);
    expectEverywhere("\u00E4\n", "\x84\n", 437);
}

// Trail bytes are letters, digits and even what means something in CSV, but never a line feed.
TEST(CodePageSource, ConvertsCharactersOfSeveralBytes) {
    expectEverywhere("\u8868,\u65E5\n\u3042\n", "\x95\x5C,\x93\xFA\n\x82\xA0\n", 932);
    expectEverywhere("\uFF71\n", "\xB1\n", 943);
    expectEverywhere("\u3042\n", "\xA4\xA2\n", 51932);
    expectEverywhere("\u4E2D\n\U0001F600,\n", "\xD6\xD0\n\x94\x39\xFC\x36,\n", 54936);
}

// A letter waits in the converter for an accent that may follow.
TEST(CodePageSource, CharactersAreComposedWithinALine) {
    expectEverywhere("x\u00E1y\n\u00E1\n", "xa\xECy\na\xEC\n", 1258);
}

// 15 is NEL and 25 is LF; 6B is the comma, 0D CR. C1 and C2 are A and B.
TEST(CodePageSource, BothLineEndsOfEbcdicAreLineFeeds) {
    for (const uint32_t page : {37u, 273u, 500u, 1047u, 1140u}) {
        expectEverywhere("A,B\nB\r\nA", "\xC1\x6B\xC2\x15\xC2\x0D\x25\xC1", page);
        expectEverywhere("A\n", "\xC1\x15", page);
    }
}

// Shift out, hiragana a, shift in: the shift state does not last from one line to the next.
TEST(CodePageSource, ShiftStatesAreConverted) {
    expectEverywhere("A\u3042\nA\n", "\xC1\x0E\x44\x81\x0F\x15\xC1\x15", 939);
    expectEverywhere("A\n!the input is not valid PAGE", "\xC1\x15\x0E\x44\x15\x0F\x15", 939);
}

TEST(CodePageSource, ConvertsWhatPrecedesAFault) {
    const std::string fault = "!the input is not valid PAGE";
    expectEverywhere("a\nbc" + fault,
                     "a\nbc\x81"
                     "d\ne\n",
                     1252);
    expectEverywhere(fault, "\x80", 20127);
    expectEverywhere("a\n\u3042" + fault, "a\n\x82\xA0\x82\n", 932);
    expectEverywhere("a\n\u3042" + fault, "a\n\x82\xA0\x82", 932);
    expectEverywhere("\U0001F600" + fault, "\x94\x39\xFC\x36\x94\x39\xFC\n", 54936);
}

// At every place of lines of every length: the search for the fault ends next to it.
TEST(CodePageSource, FindsTheFaultAmongCharactersOfAnyLength) {
    const std::pair<std::string, std::string> characters[] = {
        {"a", "a"}, {"\xD6\xD0", "\u4E2D"}, {"\x94\x39\xFC\x36", "\U0001F600"}, {"\n", "\n"}};
    for (unsigned before = 0; before < 256; ++before) {
        for (unsigned after = 0; after < 6; ++after) {
            std::string bytes, text;
            for (int i = 0; i < 4; ++i) {
                bytes += characters[before >> 2 * i & 3].first;
                text += characters[before >> 2 * i & 3].second;
            }
            bytes += "\xFF";
            for (unsigned i = 0; i < after; ++i) bytes += characters[(before + i) & 3].first;
            TextSource source(bytes);
            CodePageSource conversion(source, 54936, "PAGE");
            ASSERT_EQ(text + "!the input is not valid PAGE", readAll(conversion, 1000));
        }
    }
}

TEST(CodePageSource, EndsAfterANulByte) {
    expectEverywhere("a\nb\0"s, "a\nb\0c\n"s, 1252);
}

TEST(CodePageSource, TheParserFindsThePosition) {
    TextSource source("a\nb\xE4\x81\n");
    CodePageSource conversion(source, 1252, "windows-1252");
    tool::ChunkReader reader(conversion, "in.csv");
    EXPECT_EQ("1[a]LF 2:3: the input is not valid windows-1252", parsedRows(reader).rows);
}

TEST(CodePageSource, RefusesALineThatIsTooLong) {
    for (const size_t chunk : {1, 5, 10, 100}) {
        const auto convert = [&](const std::string& bytes) {
            TextSource source(bytes);
            CodePageSource conversion(source, 1252, "PAGE", chunk, 10);
            return readAll(conversion, 1000);
        };
        EXPECT_EQ("a\n123456789\nb", convert("a\n123456789\nb"));
        EXPECT_EQ("a\n!a line is longer than 10 bytes", convert("a\n1234567890\nb"));
    }
}

class OpenAsUtf8 : public testing::Test {
  protected:
    void SetUp() override {
        path_ = testing::TempDir() + "code_page_XXXXXX";
        const int file = mkstemp(path_.data());
        ASSERT_NE(-1, file);
        close(file);
    }
    void TearDown() override { unlink(path_.c_str()); }

    std::string convert(const std::string& bytes, const std::string& encoding) {
        std::ofstream(path_, std::ios::binary) << bytes;
        tool::FileSource file(path_);
        try {
            return readAll(*tool::openAsUtf8(file, encoding), 1000);
        } catch (const tool::ToolError& error) {
            return "error: " + std::string(error.what());
        }
    }

    std::string path_;
};

TEST_F(OpenAsUtf8, KnowsEncodingsByName) {
    const struct {
        const char* encoding;
        std::string bytes;
        const char* text;
    } cases[] = {
        {"utf-8", "\xC3\xA4", "\u00E4"},
        {"UTF8", "\xEF\xBB\xBF\xC3\xA4", "\uFEFF\u00E4"},
        {"1208", "\xC3\xA4", "\u00E4"},
        {"cp65001", "\xC3\xA4", "\u00E4"},
        {"utf-16", "\xFF\xFE\xE4\0"s, "\u00E4"},
        {"utf-16", "\xFE\xFF\0\xE4"s, "\u00E4"},
        {"UTF-16LE", "\xE4\0"s, "\u00E4"},
        {"utf-16le", "\xFF\xFE\xE4\0"s, "\u00E4"},
        {"utf-16be", "\0\xE4"s, "\u00E4"},
        {"1201", "\xFE\xFF\0\xE4"s, "\u00E4"},
        {"ascii", "a", "a"},
        {"US-ASCII", "a", "a"},
        {"iso-8859-1", "\xE4", "\u00E4"},
        {"Latin1", "\xE4", "\u00E4"},
        {"ISO_8859-2", "\xA3", "\u0141"},
        {"iso-8859-15", "\xA4", "\u20AC"},
        {"windows-1250", "\xA3", "\u0141"},
        {"windows-1258", "\xFE", "\u20AB"},
        {"cp1252", "\x80", "\u20AC"},
        {"CP437", "\x84", "\u00E4"},
        {"ibm1047", "\xC1", "A"},
        {"IBM-037", "\xC1", "A"},
        {"37", "\xC1", "A"},
        {"850", "\x84", "\u00E4"},
        {"shift_jis", "\x82\xA0", "\u3042"},
        {"cp932", "\x82\xA0", "\u3042"},
        {"cp943", "\x82\xA0", "\u3042"},
        {"euc-jp", "\xA4\xA2", "\u3042"},
        {"GB18030", "\xD6\xD0", "\u4E2D"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.text, convert(c.bytes, c.encoding)) << c.encoding;
}

TEST_F(OpenAsUtf8, WithoutAnEncodingTheByteOrderMarkDecides) {
    EXPECT_EQ("\u00E4", convert("\xC3\xA4", ""));
    EXPECT_EQ("\xE4", convert("\xE4", "")) << "the caller checks UTF-8";
    EXPECT_EQ("\u00E4", convert("\xFF\xFE\xE4\0"s, ""));
    EXPECT_EQ("\u00E4", convert("\xFE\xFF\0\xE4"s, ""));
    EXPECT_EQ("", convert("", ""));
    EXPECT_EQ("\xFF", convert("\xFF", ""));
    EXPECT_EQ("\xFF\xFE", convert("\xFF\xFE", "utf-8")) << "the encoding is given";
}

TEST_F(OpenAsUtf8, RefusesWhatItCannotConvert) {
    for (const char* encoding :
         {"latin", "cp", "cp99999", "cp1252x", "iso-8859-0", "iso-8859-12", "iso-8859-16",
          "iso-8859-36411", "4294968548", "x", "ibm 37", "--", "utf-7"}) {
        const std::string message = convert("a", encoding);
        EXPECT_EQ(0u, message.find("error: korv-mask: encoding '" + std::string(encoding) +
                                   "' is unknown; use utf-8, "))
            << message;
    }
    for (const char* encoding : {"utf-32", "UTF-32LE", "utf-32be", "12000", "cp12001"}) {
        EXPECT_EQ("error: korv-mask: encoding '" + std::string(encoding) +
                      "' cannot be read; convert the input to UTF-8 first",
                  convert("a", encoding));
    }
    for (const char* bytes : {"", "a", "ab", "\xC3\xA4"}) {
        EXPECT_EQ("error: korv-mask: " + path_ +
                      ": there is no byte order mark; use the encoding utf-16le or "
                      "utf-16be",
                  convert(bytes, "utf-16"));
    }
}

TEST_F(OpenAsUtf8, TheFileTellsItsIdentity) {
    const tool::FileSource file(path_);
    struct stat byDescriptor, byName;
    ASSERT_EQ(0, fstat(file.descriptor(), &byDescriptor));
    ASSERT_EQ(0, stat(path_.c_str(), &byName));
    EXPECT_EQ(byName.st_ino, byDescriptor.st_ino);
    EXPECT_EQ(byName.st_dev, byDescriptor.st_dev);
}

}  // namespace
