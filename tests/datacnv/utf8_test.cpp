// Code page 1208 is exact UTF-8: every character passes, and nothing else does.
#include <string>

#include "datacnv/outcome.h"
#include "reference/utf8.h"

namespace {

using reference::character;

void expectLikeTable(const uint8_t* bytes, uint32_t length) {
    const CnvOptions options = codePage(1208);
    wchar_t target[5] = {-1, -1, -1, -1, -1};
    uint32_t outLen = kUntouched;
    const int32_t status = KORVCnvCharToWVarcharSz(reinterpret_cast<const char*>(bytes), &length,
                                                   target, sizeof target, &outLen, &options);
    const int32_t expected = character(bytes, static_cast<int>(length));
    if (expected >= 0) {
        ASSERT_EQ(CNV_SUCCESS, status);
        ASSERT_EQ(1u, outLen);
        ASSERT_EQ(expected, target[0]);
    } else if (status == CNV_SUCCESS) {
        ASSERT_LT(1u, outLen) << "a malformed sequence gave one character";
        // Several characters: the first must be whole by itself, and so the rest.
        for (uint32_t cut = 1; cut < length; ++cut) {
            if (character(bytes, static_cast<int>(cut)) != target[0]) continue;
            expectLikeTable(bytes + cut, length - cut);
            return;
        }
        FAIL() << "the first character is not in the source";
    } else {
        ASSERT_EQ(CNV_MALFORMED_SOURCE, status);
        ASSERT_EQ(0, target[0]);
        ASSERT_EQ(kUntouched, outLen);
    }
}

TEST(Utf8, EverySequenceOfOneAndTwoBytes) {
    for (int a = 0; a < 256; ++a) {
        const uint8_t bytes[2] = {static_cast<uint8_t>(a), 0};
        expectLikeTable(bytes, 1);
        for (int b = 0; b < 256; ++b) {
            const uint8_t two[2] = {static_cast<uint8_t>(a), static_cast<uint8_t>(b)};
            expectLikeTable(two, 2);
            if (HasFatalFailure()) FAIL() << a << ' ' << b;
        }
    }
}

TEST(Utf8, SequencesOfThreeAndFourBytesAtEveryLimit) {
    const uint8_t limits[] = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xFF};
    for (int a = 0xC0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            for (uint8_t c : limits) {
                uint8_t bytes[4] = {static_cast<uint8_t>(a), static_cast<uint8_t>(b), c, 0};
                expectLikeTable(bytes, 3);
                for (uint8_t d : limits) {
                    bytes[3] = d;
                    expectLikeTable(bytes, 4);
                }
                if (HasFatalFailure()) FAIL() << a << ' ' << b << ' ' << int{c};
            }
        }
    }
}

TEST(Utf8, EveryCharacterThereAndBack) {
    const CnvOptions options = codePage(1208);
    for (int32_t c = 1; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        const wchar_t source[] = {c, 0};
        char narrow[5];
        uint32_t bytes = 0;
        ASSERT_EQ(CNV_SUCCESS, KORVCnvWVarcharSzToVarcharSz(source, &kNoLength, narrow,
                                                            sizeof narrow, &bytes, &options));
        ASSERT_EQ(c, character(reinterpret_cast<const uint8_t*>(narrow), static_cast<int>(bytes)));
        wchar_t back[2];
        uint32_t characters = 0;
        ASSERT_EQ(CNV_SUCCESS, KORVCnvCharToWVarcharSz(narrow, &bytes, back, sizeof back,
                                                       &characters, &options));
        ASSERT_EQ(c, back[0]);
        ASSERT_EQ(1u, characters);
    }
}

TEST(Utf8, TruncatedCharactersAtTheEndAreMalformed) {
    const CnvOptions options = codePage(1208);
    for (const char* cut : {"\xC3", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98"}) {
        for (int before = 0; before < 9; ++before) {
            expectFailure<wchar_t>(
                CNV_MALFORMED_SOURCE, 9,
                fixedText(std::string(static_cast<size_t>(before), 'a') + cut, &options));
        }
    }
}

TEST(Utf8, EveryLengthOfMixedTextAtEveryCapacity) {
    const CnvOptions options = codePage(1208);
    const wchar_t letters[] = {L'a', 0xE4,  0x20AC, 0x1F600, 0x7F,
                               0x80, 0x7FF, 0x800,  0xFFFF,  0x10000};
    const char* const spelled[] = {
        "a",        "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\x7F",
        "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBF",     "\xF0\x90\x80\x80"};
    for (int length = 0; length <= 40; ++length) {
        std::wstring wide;
        std::string narrow;
        for (int i = 0; i < length; ++i) {
            wide.push_back(letters[(i * 7 + length) % 10]);
            narrow += spelled[(i * 7 + length) % 10];
        }
        expectText(wide, fixedText(narrow, &options));
        expectText(narrow, narrowed(wide, &options));
    }
}

TEST(Utf8, TheFirstFaultIsTheOneReported) {
    const CnvOptions options = codePage(1208);
    EXPECT_EQ(CNV_TARGET_TOO_SMALL, statusAt<wchar_t>(8, fixedText("ab\xFF", &options)));
    EXPECT_EQ(CNV_MALFORMED_SOURCE, statusAt<wchar_t>(8, fixedText("a\xFF"
                                                                   "b",
                                                                   &options)));
}

}  // namespace
