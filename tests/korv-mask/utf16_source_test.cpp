// UTF-16 input: both byte orders, and pairs and units that lie partly in two chunks.
#include "utf16_source.h"

#include <gtest/gtest.h>

#include "parsed_rows.h"
#include "text_source.h"

namespace {

std::string bytesOf(const std::u16string& units, bool big) {
    std::string bytes;
    for (const char16_t unit : units) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += big ? high : low;
        bytes += big ? low : high;
    }
    return bytes;
}

// The UTF-8 of the input; a '!' and the message where it is malformed.
std::string convert(const std::string& bytes, bool big, size_t chunk, size_t atOnce,
                    size_t capacity) {
    TextSource source(bytes, atOnce);
    tool::Utf16Source conversion(source, big, chunk);
    std::string result;
    std::string buffer(capacity, '\0');
    try {
        while (const size_t count = conversion.read(buffer.data(), buffer.size())) {
            result.append(buffer, 0, count);
        }
    } catch (const tool::MalformedInput& error) {
        result += "!" + std::string(error.what());
    }
    return result;
}

void expectEverywhere(const std::string& expected, const std::u16string& units,
                      const std::string& tail = "") {
    for (const bool big : {false, true}) {
        const std::string bytes = bytesOf(units, big) + tail;
        for (const size_t chunk : {2, 3, 4, 5, 100}) {
            for (const size_t atOnce : {1, 2, 3, 7, 1000}) {
                for (const size_t capacity : {1, 2, 5, 1000}) {
                    ASSERT_EQ(expected, convert(bytes, big, chunk, atOnce, capacity))
                        << big << " " << chunk << " " << atOnce << " " << capacity;
                }
            }
        }
    }
}

TEST(Utf16Source, ConvertsEveryLengthOfCharacter) {
    expectEverywhere("a\u00E9\u20AC\U0001F600b\U0010FFFF", u"a\u00E9\u20AC\U0001F600b\U0010FFFF");
    expectEverywhere("", u"");
    expectEverywhere("\U0001F600\U0001F600\U0001F600", u"\U0001F600\U0001F600\U0001F600");
}

TEST(Utf16Source, ConvertsWhatPrecedesAFault) {
    const std::string lone = "!a UTF-16 surrogate without its partner";
    expectEverywhere("ab" + lone, std::u16string(u"ab") + char16_t(0xD800));
    expectEverywhere("ab" + lone, std::u16string(u"ab") + char16_t(0xDC00) + u"cd");
    expectEverywhere("ab" + lone, std::u16string(u"ab") + char16_t(0xDBFF) + u"cd");
    expectEverywhere("ab!the input ends within a UTF-16 unit", u"ab", "x");
}

TEST(Utf16Source, EndsAfterAZeroUnit) {
    expectEverywhere(std::string("ab\0", 3), std::u16string(u"ab\0cd", 5));
    expectEverywhere(std::string("ab\0", 3), std::u16string(u"ab\0", 3) + char16_t(0xDC00));
    expectEverywhere(std::string("ab\0", 3), std::u16string(u"ab\0", 3), "x");
}

TEST(Utf16Source, TheParserFindsThePosition) {
    TextSource source(bytesOf(std::u16string(u"a\nb\u00E9") + char16_t(0xDC00), false));
    tool::Utf16Source conversion(source, false, 2);
    tool::ChunkReader reader(conversion, "in.csv");
    EXPECT_EQ("1[a]LF 2:3: a UTF-16 surrogate without its partner", parsedRows(reader).rows);
}

}  // namespace
