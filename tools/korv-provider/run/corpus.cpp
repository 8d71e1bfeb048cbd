// Values of the kinds that providers mask, and every kind of character.
#include "corpus.h"

#include <fstream>
#include <stdexcept>

#include "mask/text/utf8_text.h"

namespace kit {

namespace {

struct Kind {
    const char* name;
    std::vector<const char*> values;
};

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> all = {
        {"card number",
         {"4111111111111111", "4556737586899855", "5500005555555559", "340000000000009",
          "30000000000004", "4111-1111-1111-1111", "4556 7375 8689 9855", "6011000990139424",
          "3530111333300000", "4000000000000000006", "501800000009"}},
        {"card number with a wrong check digit",
         {"4111111111111112", "4556737586899850", "4111-1111-1111-1110", "340000000000000"}},
        {"identity number",
         {"123-45-6789", "078051120", "12345678Z", "184127645108946", "AB123456C", "00000000",
          "99999999", "X1234567L", "1 84 12 76 451 089 46", "130692544"}},
        {"telephone number",
         {"030-123456", "+49 (89) 7654321", "(555) 010-9999", "0044 20 7946 0958"}},
        {"integer",
         {"0", "7", "42", "-1", "+15", "007", "1000000", "2147483647", "-2147483648",
          "9223372036854775807", "123456789012345678"}},
        {"decimal number", {"3.14", "-0.5", "1,234.56", "1e10"}},
        {"e-mail address",
         {"john.doe@post.example", "ADA@EXAMPLE.COM", "a@b", "x.y-z_1@sub.domain.example",
          "j\xC3\xB6rg@b\xC3\xBC"
          "cher.example",
          "123@456.example", "no-domain@", "@no-user", "two@at@signs"}},
        {"date", {"2024-02-29", "1999-12-31", "2000-01-01", "1970-06-15", "2023-11-05"}},
        {"date of another format",
         {"31.12.1999", "1/15/2023", "12/31/1999", "5 Jan 2021", "29 Feb 2024", "20230115",
          "2021-07-04T12:30:00Z", "2021-07-04 23:59:59.125", "15-JAN-2020", "2023-02-30"}},
        {"time", {"12:34", "23:59:59", "00:00:00.000"}},
        {"word",
         {"apple", "Zebra", "UPPER", "lower", "a1b2c3", "x", "no", "yes", "abcdefghij",
          "Mississippi", "level", "aab"}},
        {"name",
         {"Anna", "Anna Blume", "Zo\xC3\xAB Blume", "O'Neill",
          "M\xC3\xBCller-L\xC3\xBC"
          "denscheidt",
          "\xC3\x89"
          "dith",
          "Ada Lovelace", "\xC5\x81ukasz", "\xD0\x90\xD0\xBD\xD0\xBD\xD0\xB0",
          "\xE7\x8E\x8B\xE5\xB0\x8F\xE6\x98\x8E"}},
        {"city",
         {"Berlin", "New York", "S\xC3\xA3o Paulo", "Z\xC3\xBCrich",
          "K\xC3\xB8"
          "benhavn",
          "\xE6\x9D\xB1\xE4\xBA\xAC"}},
        {"sentence",
         {"The quick brown fox jumps over the lazy dog.", "Call me at 555-0100, or write!",
          "Stra\xC3\x9F"
          "e 12, 10115 Berlin",
          "say \"hello\" to C:\\temp; 100% done?"}},
        {"text of two-byte characters", {"\xC3\xA9", "\xC3\x84\xC3\x96\xC3\x9C", "\xC2\xA0"}},
        {"text of three-byte characters",
         {"\xE2\x82\xAC", "\xE2\x82\xAC 100", "\xEF\xBF\xBD", "\xEE\x80\x80"}},
        {"text beyond the BMP",
         {"\xF0\x9F\x98\x80", "ok \xF0\x9F\x98\x80 12", "\xF0\xA0\x80\x80", "\xF4\x8F\xBF\xBF",
          "1\xF0\x9F\x92\xB3"
          "2"}},
        {"text with combining characters", {"e\xCC\x81", "Zoe\xCC\x88", "\xD8\xA7\xD9\x8E"}},
        {"blank", {" ", "   ", " a", "a ", " 12 ", "\t", "a\nb", "1\r\n2"}},
        {"text of one kind of character",
         {"0000000000", "9999999999", "aaaaaaaaaa", "ZZZZZZZZZZ", "----------", "@@@@"}},
    };
    return all;
}

void addCharacters(std::vector<TestValue>& corpus) {
    std::string all;
    for (int c = 1; c < 128; ++c) {
        const std::string one(1, static_cast<char>(c));
        corpus.push_back({"ASCII character " + std::to_string(c), one});
        corpus.push_back({"digits around ASCII character " + std::to_string(c), "12" + one + "34"});
        all += one;
    }
    corpus.push_back({"all ASCII characters", all});
    for (const size_t length : {2, 5, 16, 17, 63, 64, 65, 255, 256, 1000}) {
        corpus.push_back({std::to_string(length) + " digits", {}});
        for (size_t i = 0; i < length; ++i) {
            corpus.back().text += static_cast<char>('0' + (i * 7 + 1) % 10);
        }
        corpus.push_back({std::to_string(length) + " letters", {}});
        for (size_t i = 0; i < length; ++i) {
            corpus.back().text += static_cast<char>('a' + (i * 11) % 26);
        }
    }
}

void addFile(const std::string& path, std::vector<TestValue>& corpus) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::string line;
    for (size_t number = 1; std::getline(file, line); ++number) {
        if (line.ends_with('\r')) line.pop_back();
        if (line.empty()) continue;
        const std::string kind = "line " + std::to_string(number) + " of the file of values";
        if (!isText(line)) throw std::runtime_error(path + ": " + kind + " is not UTF-8 text");
        corpus.push_back({kind, line});
    }
    if (file.bad()) throw std::runtime_error("cannot read " + path);
}

}  // namespace

std::vector<TestValue> makeCorpus(const Settings& settings) {
    std::vector<TestValue> corpus;
    // The values of the user come first: most tests of single values take the first that fit.
    if (!settings.values.empty()) addFile(settings.values, corpus);
    for (const Kind& kind : kinds()) {
        for (size_t i = 0; i < kind.values.size(); ++i) {
            corpus.push_back(
                {std::string(kind.name) + " " + std::to_string(i + 1), kind.values[i]});
        }
    }
    addCharacters(corpus);
    return corpus;
}

std::vector<TestValue> acceptedOf(const std::vector<TestValue>& corpus, Session& session) {
    std::vector<TestValue> accepted;
    for (const TestValue& value : corpus) {
        if (session.mask(value.text).isMasked()) accepted.push_back(value);
    }
    return accepted;
}

std::string variant(const std::string& text, Random& random, size_t keep) {
    std::string changed = text;
    for (size_t i = keep; i < changed.size(); ++i) {
        char& c = changed[i];
        if (c >= '0' && c <= '9') {
            c = static_cast<char>('0' + random.below(10));
        } else if (c >= 'a' && c <= 'z') {
            c = static_cast<char>('a' + random.below(26));
        } else if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>('A' + random.below(26));
        }
    }
    return changed;
}

std::string anyValue(const std::vector<TestValue>& corpus, Random& random) {
    std::string text = corpus[random.below(static_cast<uint32_t>(corpus.size()))].text;
    switch (random.below(6)) {
        case 0:
            return text;
        case 1:
            return variant(text, random);
        case 2: {  // an ASCII character in place of another, or in between
            const auto character = static_cast<char>(1 + random.below(127));
            const size_t at = random.below(static_cast<uint32_t>(text.size()));
            if (static_cast<unsigned char>(text[at]) < 0x80 && random.below(2) == 0) {
                text[at] = character;
            } else if ((text[at] & 0xC0) != 0x80) {
                text.insert(at, 1, character);
            }
            return text;
        }
        case 3: {  // two values, one after the other
            const auto size = static_cast<uint32_t>(corpus.size());
            return text + corpus[random.below(size)].text;
        }
        case 4: {  // again and again
            const uint32_t times = 1 + random.below(200);
            std::string repeated;
            for (uint32_t i = 0; i < times && repeated.size() < 9000; ++i) repeated += text;
            return repeated;
        }
        default: {  // any characters
            std::wstring characters(1 + random.below(40), L' ');
            for (wchar_t& c : characters) {
                constexpr uint32_t kLimits[] = {0x80, 0x80, 0x800, 0xD800, 0x110000};
                uint32_t scalar = 1 + random.below(kLimits[random.below(5)] - 1);
                if (scalar >= 0xD800 && scalar < 0xE000) scalar = 'x';
                c = static_cast<wchar_t>(scalar);
            }
            return text::toUtf8(characters);
        }
    }
}

}  // namespace kit
