// UTF-16 units become UTF-32 units and back, over every character and every lone surrogate.
#include <random>
#include <string>
#include <vector>

#include "datacnv/outcome.h"

namespace {

struct Pair {
    std::u16string narrow;
    std::wstring wide;
};

// `length` characters, every third beyond the basic plane.
Pair sample(int length, unsigned seed) {
    std::mt19937 random(seed);
    Pair pair;
    for (int i = 0; i < length; ++i) {
        const uint32_t c = i % 3 == 2 ? 0x10000 + static_cast<uint32_t>(random()) % 0x100000
                                      : static_cast<uint32_t>(random()) % 0xD800;
        pair.wide.push_back(static_cast<wchar_t>(c));
        if (c < 0x10000) {
            pair.narrow.push_back(static_cast<char16_t>(c));
        } else {
            pair.narrow.push_back(static_cast<char16_t>(0xD800 + (c - 0x10000) / 1024));
            pair.narrow.push_back(static_cast<char16_t>(0xDC00 + (c - 0x10000) % 1024));
        }
    }
    return pair;
}

// Runs a conversion with fences at both ends; the text is what was written when it succeeded.
template <class From, class To, class Text, class Convert>
int32_t run(Convert convert, const std::vector<From>& units, size_t room, Text* text) {
    Fenced<From> source(units.size());
    for (size_t i = 0; i < units.size(); ++i) source[i] = units[i];
    Fenced<To> target(room);
    uint32_t count = kUntouched;
    const int32_t status = convert(source.data(), static_cast<int32_t>(units.size()), target.data(),
                                   static_cast<int32_t>(room), &count);
    EXPECT_TRUE(target.intact());
    EXPECT_TRUE(source.intact());
    if (status == CNV_SUCCESS) {
        EXPECT_LE(count, room);
        text->assign(target.data(), target.data() + count);
    } else {
        EXPECT_EQ(kUntouched, count);
    }
    return status;
}

int32_t join(const std::u16string& text, size_t room, std::wstring* result = nullptr) {
    std::wstring unused;
    return run<uint16_t, wchar_t>(Convert16To32, {text.begin(), text.end()}, room,
                                  result ? result : &unused);
}

int32_t split(const std::wstring& text, size_t room, std::u16string* result = nullptr) {
    std::u16string unused;
    return run<wchar_t, uint16_t>(Convert32To16, {text.begin(), text.end()}, room,
                                  result ? result : &unused);
}

TEST(UnicodeUnits, EveryCharacterThereAndBack) {
    for (uint32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        const wchar_t source = static_cast<wchar_t>(c);
        uint16_t units[2] = {};
        uint32_t count = 0;
        ASSERT_EQ(CNV_SUCCESS, Convert32To16(&source, 1, units, 2, &count));
        if (c < 0x10000) {
            ASSERT_EQ(1u, count);
            ASSERT_EQ(c, units[0]);
        } else {
            ASSERT_EQ(2u, count);
            ASSERT_EQ(0xD800 + (c - 0x10000) / 1024, units[0]);
            ASSERT_EQ(0xDC00 + (c - 0x10000) % 1024, units[1]);
        }
        wchar_t back = 0;
        uint32_t characters = 0;
        ASSERT_EQ(CNV_SUCCESS,
                  Convert16To32(units, static_cast<int32_t>(count), &back, 1, &characters));
        ASSERT_EQ(1u, characters);
        ASSERT_EQ(source, back);
    }
}

TEST(UnicodeUnits, EveryLengthAndEveryTargetSize) {
    for (int length = 0; length <= 70; ++length) {
        const Pair pair = sample(length, static_cast<unsigned>(length));
        for (size_t room = pair.wide.size() > 3 ? pair.wide.size() - 3 : 0;
             room <= pair.wide.size() + 2; ++room) {
            std::wstring wide;
            const bool fits = room >= pair.wide.size();
            ASSERT_EQ(fits ? CNV_SUCCESS : CNV_TARGET_TOO_SMALL, join(pair.narrow, room, &wide));
            if (fits) {
                ASSERT_EQ(pair.wide, wide);
            }
        }
        for (size_t room = pair.narrow.size() > 3 ? pair.narrow.size() - 3 : 0;
             room <= pair.narrow.size() + 2; ++room) {
            std::u16string narrow;
            const bool fits = room >= pair.narrow.size();
            ASSERT_EQ(fits ? CNV_SUCCESS : CNV_TARGET_TOO_SMALL, split(pair.wide, room, &narrow));
            if (fits) {
                ASSERT_EQ(pair.narrow, narrow);
            }
        }
    }
}

TEST(UnicodeUnits, ALoneSurrogateIsMalformedAtEveryPosition) {
    for (int surrogate = 0xD800; surrogate <= 0xDFFF; ++surrogate) {
        const wchar_t unit = surrogate;
        const uint16_t half = static_cast<uint16_t>(surrogate);
        wchar_t wide[2];
        uint16_t narrow[2];
        uint32_t count = kUntouched;
        ASSERT_EQ(CNV_MALFORMED_SOURCE, Convert32To16(&unit, 1, narrow, 2, &count));
        ASSERT_EQ(CNV_MALFORMED_SOURCE, Convert16To32(&half, 1, wide, 2, &count));
        ASSERT_EQ(kUntouched, count);
    }
    for (size_t length = 1; length <= 70; ++length) {
        for (char16_t surrogate : {0xD800, 0xDBFF, 0xDC00, 0xDFFF}) {
            for (size_t at = 0; at < length; ++at) {
                std::u16string narrow(length, u'a');
                narrow[at] = surrogate;
                ASSERT_EQ(CNV_MALFORMED_SOURCE, join(narrow, length)) << at;
            }
        }
        std::wstring wide(length, L'a');
        wide[length / 2] = 0xDFFF;
        ASSERT_EQ(CNV_MALFORMED_SOURCE, split(wide, length));
    }
}

TEST(UnicodeUnits, SurrogatesInTheWrongOrderOrDoubledAreMalformed) {
    EXPECT_EQ(CNV_MALFORMED_SOURCE, join({0xDC00, 0xD800}, 9));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, join({0xD800, 0xD800, 0xDC00}, 9));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, join({0xD800, 0xDC00, 0xDC00}, 9));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, join({0xD800, 0xE000}, 9));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, join({0xD800, 0xDBFF}, 9));
}

TEST(UnicodeUnits, UnitsAboveTheLastCharacterAreMalformed) {
    for (uint32_t unit : {0x110000u, 0x7FFFFFFFu, 0x80000000u, 0x8000D800u, 0xFFFFFFFFu}) {
        EXPECT_EQ(CNV_MALFORMED_SOURCE, split({L'a', static_cast<wchar_t>(unit)}, 9)) << unit;
    }
}

TEST(UnicodeUnits, ZeroUnitsAreOrdinary) {
    std::wstring wide;
    EXPECT_EQ(CNV_SUCCESS, join(std::u16string(3, u'\0'), 3, &wide));
    EXPECT_EQ(std::wstring(3, L'\0'), wide);
}

TEST(UnicodeUnits, HalfAPairIsNeverWritten) {
    const wchar_t source[] = {L'a', 0x1F600};
    uint16_t target[3] = {7, 7, 7};
    uint32_t count = kUntouched;
    EXPECT_EQ(CNV_TARGET_TOO_SMALL, Convert32To16(source, 2, target, 2, &count));
    EXPECT_EQ(7, target[1]);
    EXPECT_EQ(kUntouched, count);
}

TEST(UnicodeUnits, TheFirstFaultIsTheOneReported) {
    EXPECT_EQ(CNV_TARGET_TOO_SMALL, join({u'a', u'b', 0xD800}, 1));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, join({u'a', 0xD800, u'b'}, 1));
    EXPECT_EQ(CNV_TARGET_TOO_SMALL, split({L'a', L'b', 0xD800}, 1));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, split({L'a', 0xD800, L'b'}, 1));
}

TEST(UnicodeUnits, NegativeCountsAreRefused) {
    uint16_t narrow[1] = {u'a'};
    wchar_t wide[1] = {L'a'};
    uint32_t count = kUntouched;
    for (int32_t negative : {-1, INT32_MIN}) {
        EXPECT_EQ(CNV_BAD_LENGTH, Convert16To32(narrow, negative, wide, 1, &count));
        EXPECT_EQ(CNV_BAD_LENGTH, Convert16To32(narrow, 1, wide, negative, &count));
        EXPECT_EQ(CNV_BAD_LENGTH, Convert32To16(wide, negative, narrow, 1, &count));
        EXPECT_EQ(CNV_BAD_LENGTH, Convert32To16(wide, 1, narrow, negative, &count));
    }
    EXPECT_EQ(kUntouched, count);
}

}  // namespace
