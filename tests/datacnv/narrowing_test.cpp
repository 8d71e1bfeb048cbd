// Zero-terminated wide text becomes zero-terminated narrow text.
#include <string>

#include "datacnv/outcome.h"

namespace {

TEST(Narrowing, WithoutOptionsEveryLengthBecomesOneBytePerCharacter) {
    for (int length = 0; length <= 70; ++length) {
        std::wstring wide;
        std::string text;
        for (int i = 0; i < length; ++i) {
            const int c = 1 + (length + i * 41) % 255;
            wide.push_back(c);
            text.push_back(static_cast<char>(c));
        }
        expectText(text, narrowed(wide, nullptr));
    }
}

TEST(Narrowing, WithoutOptionsEveryCharacterUpTo255IsItsByte) {
    for (int c = 1; c <= 255; ++c) {
        const wchar_t source[] = {c, 0};
        char target[2] = {'x', 'x'};
        uint32_t outLen = 0;
        ASSERT_EQ(CNV_SUCCESS, KORVCnvWVarcharSzToVarcharSz(source, &kNoLength, target,
                                                            sizeof target, &outLen, nullptr));
        ASSERT_EQ(static_cast<char>(c), target[0]);
        ASSERT_EQ(0, target[1]);
        ASSERT_EQ(1u, outLen);
    }
}

TEST(Narrowing, CharactersThatThePageLacksAreUnconvertible) {
    const CnvOptions latin1 = codePage(819);
    const CnvOptions windows = codePage(1252);
    for (wchar_t c : {0x100, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF}) {
        const std::wstring text{L'a', c, L'b'};
        expectFailure<char>(CNV_UNCONVERTIBLE, 3, narrowed(text, nullptr));
        expectFailure<char>(CNV_UNCONVERTIBLE, 3, narrowed(text, &latin1));
        if (c != 0x100) {
            expectFailure<char>(CNV_UNCONVERTIBLE, 3, narrowed(text, &windows));
        }
    }
}

// iconv would drop these without a word.
TEST(Narrowing, TagCharactersAreUnconvertibleWhereThePageLacksThem) {
    for (uint32_t number : {1252u, 850u, 37u, 1047u, 943u}) {
        const CnvOptions options = codePage(number);
        for (wchar_t c : {0xE0000, 0xE0001, 0xE0041, 0xE007F}) {
            expectFailure<char>(CNV_UNCONVERTIBLE, 3, narrowed({L'a', c, L'b'}, &options));
        }
    }
    const CnvOptions utf16 = codePage(1201);
    expectText(std::string("\0a\xDB\x40\xDC\x41\0b", 8), narrowed(L"a\U000E0041b", &utf16));
    const CnvOptions gb18030 = codePage(54936);
    expectText(std::string("a\xD3\x36\x9C\x33"
                           "b"),
               narrowed(L"a\U000E0041b", &gb18030));
}

TEST(Narrowing, UnitsThatAreNoCharactersAreMalformedInEveryPage) {
    for (uint32_t number : {0u, 819u, 1208u, 1200u, 1252u, 943u, 54936u}) {
        const CnvOptions options = codePage(number);
        for (uint32_t unit : {0xD800u, 0xDBFFu, 0xDC00u, 0xDFFFu, 0x110000u, 0x7FFFFFFFu,
                              0x80000000u, 0xFFFFFFFFu}) {
            const std::wstring text{L'a', static_cast<wchar_t>(unit)};
            expectFailure<char>(CNV_MALFORMED_SOURCE, 8,
                                narrowed(text, number == 0 ? nullptr : &options));
        }
    }
}

TEST(Narrowing, TheFirstFaultIsTheOneReported) {
    const CnvOptions latin1 = codePage(819), utf8 = codePage(1208), windows = codePage(1252);
    const std::wstring unconvertibleFirst{L'a', 0x4E00, 0xD800},
        malformedFirst{L'a', 0xD800, 0x4E00};
    for (const CnvOptions* options : {&latin1, &windows}) {
        expectFailure<char>(CNV_UNCONVERTIBLE, 8, narrowed(unconvertibleFirst, options));
        expectFailure<char>(CNV_MALFORMED_SOURCE, 8, narrowed(malformedFirst, options));
    }
    for (const CnvOptions* options : {&latin1, &utf8, &windows}) {
        EXPECT_EQ(CNV_TARGET_TOO_SMALL, statusAt<char>(2, narrowed({L'a', L'b', 0xD800}, options)));
        EXPECT_EQ(CNV_MALFORMED_SOURCE, statusAt<char>(2, narrowed({L'a', 0xD800}, options)));
    }
}

TEST(Narrowing, ALengthBoundsTheSource) {
    const CnvOptions windows = codePage(1252);
    for (const CnvOptions* options : {static_cast<const CnvOptions*>(nullptr), &windows}) {
        for (uint32_t length = 1; length <= 3; ++length) {
            expectText(std::string("abc").substr(0, length),
                       [=](char* target, uint32_t capacity, uint32_t* outLen) {
                           Fenced<wchar_t> source(std::wstring_view(L"abc"), false);
                           return KORVCnvWVarcharSzToVarcharSz(source.data() + 0, &length, target,
                                                               capacity, outLen, options);
                       });
        }
    }
}

TEST(Narrowing, ATerminatorBeforeTheLengthEndsTheSource) {
    for (uint32_t length : {4u, 5u, 100u, 0x7FFFFFFFu}) {
        expectText(std::string("abc"), [=](char* target, uint32_t capacity, uint32_t* outLen) {
            Fenced<wchar_t> source(std::wstring_view(L"abc"));
            return KORVCnvWVarcharSzToVarcharSz(source.data(), &length, target, capacity, outLen,
                                                nullptr);
        });
    }
}

TEST(Narrowing, NegativeLengthIsRefused) {
    const uint32_t length = 0x80000000;
    expectFailure<char>(CNV_BAD_LENGTH, 3, [&](char* target, uint32_t capacity, uint32_t* outLen) {
        return KORVCnvWVarcharSzToVarcharSz(L"abc", &length, target, capacity, outLen, nullptr);
    });
}

}  // namespace
