// Case converters: every character of every kind of locale, at every length and place.
#include <ctype.h>
#include <wctype.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "korv/text.h"
#include "text/locales.h"
#include "text/places.h"

namespace {

// The system's functions are called through pointers, so that no compiler answers for them.
int (*const volatile kSystemUpper)(int) = toupper;
int (*const volatile kSystemLower)(int) = tolower;
wint_t (*const volatile kSystemWideUpper)(wint_t) = towupper;
wint_t (*const volatile kSystemWideLower)(wint_t) = towlower;

char upper(char c) {
    return static_cast<char>(kSystemUpper(static_cast<signed char>(c)));
}
char lower(char c) {
    return static_cast<char>(kSystemLower(static_cast<signed char>(c)));
}
wchar_t wideUpper(wchar_t c) {
    return static_cast<wchar_t>(kSystemWideUpper(static_cast<wint_t>(c)));
}
wchar_t wideLower(wchar_t c) {
    return static_cast<wchar_t>(kSystemWideLower(static_cast<wint_t>(c)));
}

template <class T>
struct Converter {
    const char* name;
    T* (*convert)(T*);
    T (*one)(T);
};
constexpr Converter<char> kNarrow[] = {{"KORV_StrToUpper", KORV_StrToUpper, upper},
                                       {"KORV_StrToLower", KORV_StrToLower, lower}};
constexpr Converter<wchar_t> kWide[] = {{"KORV_StrToWUpper", KORV_StrToWUpper, wideUpper},
                                        {"KORV_StrToWLower", KORV_StrToWLower, wideLower}};

constexpr int32_t kOddCodes[] = {-1,       -2,          -128,       INT32_MIN,  INT32_MIN + 'a',
                                 0x110000, INT32_MAX,   0x7FFFFF61, 0x01000041, 0x01000061,
                                 0x10041,  -'a' & ~0x3F};

std::vector<wchar_t> everyWideCharacter() {
    std::vector<wchar_t> codes;
    for (wchar_t c = 1; c <= 0x110010; ++c) codes.push_back(c);
    for (const int32_t code : kOddCodes) codes.push_back(code);
    return codes;
}

template <class T>
void expectConverted(const Converter<T>& converter, const std::basic_string<T>& text) {
    std::basic_string<T> expected = text;
    for (T& c : expected) c = converter.one(c);
    atEveryPlace<T>(text.size() + 1, [&](T* place) {
        std::memcpy(place, text.c_str(), (text.size() + 1) * sizeof(T));
        ASSERT_EQ(place, converter.convert(place));
        ASSERT_TRUE(expected == std::basic_string<T>(place, text.size()))
            << converter.name << " at length " << text.size();
        ASSERT_EQ(T{}, place[text.size()]);
    });
}

class CaseInLocale : public testing::TestWithParam<const char*> {
  protected:
    locales::Global locale_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Locales, CaseInLocale, testing::ValuesIn(locales::kAll),
                         [](const auto& instance) {
                             std::string name = instance.param;
                             for (char& c : name) {
                                 if (!isalnum(c)) c = '_';
                             }
                             return name;
                         });

TEST_P(CaseInLocale, EveryByteIsConvertedAsTheSystemDoes) {
    for (const auto& converter : kNarrow) {
        std::string text;
        for (int c = 1; c < 256; ++c) text.push_back(static_cast<char>(c));
        expectConverted(converter, text);
        for (int c = 1; c < 256; ++c) {
            char one[2] = {static_cast<char>(c), 0};
            converter.convert(one);
            EXPECT_EQ(converter.one(static_cast<char>(c)), one[0]) << converter.name << ' ' << c;
        }
    }
}

TEST_P(CaseInLocale, EveryWideCharacterIsConvertedAsTheSystemDoes) {
    const std::vector<wchar_t> codes = everyWideCharacter();
    for (const auto& converter : kWide) {
        std::vector<wchar_t> text = codes;
        text.push_back(0);
        converter.convert(text.data());
        for (std::size_t i = 0; i < codes.size(); ++i) {
            ASSERT_EQ(converter.one(codes[i]), text[i]) << converter.name << " " << int{codes[i]};
        }
        EXPECT_EQ(0, text.back());
    }
}

TEST_P(CaseInLocale, NarrowTextIsConvertedAtEveryLengthAndPlace) {
    std::mt19937 random(1);
    for (const std::size_t length : everyLength()) {
        for (int kind = 0; kind < 3; ++kind) {
            std::string text(length, ' ');
            for (char& c : text) {
                const unsigned drawn = random();
                c = static_cast<char>(kind == 0   ? 'a' + drawn % 26
                                      : kind == 1 ? 'A' + drawn % 26
                                                  : 1 + drawn % 255);
            }
            for (const auto& converter : kNarrow) expectConverted(converter, text);
        }
    }
}

TEST_P(CaseInLocale, WideTextIsConvertedAtEveryLengthAndPlace) {
    std::mt19937 random(2);
    for (const std::size_t length : everyLength()) {
        for (int kind = 0; kind < 3; ++kind) {
            std::wstring text(length, L' ');
            for (wchar_t& c : text) {
                const unsigned drawn = random();
                const unsigned range[] = {0x7F, 0x250, 0x10FFFF};
                c = static_cast<wchar_t>(1 + drawn % range[kind]);
                if (kind == 2 && drawn >> 28 == 0) c = kOddCodes[random() % std::size(kOddCodes)];
            }
            for (const auto& converter : kWide) expectConverted(converter, text);
        }
    }
}

// One character that is not ASCII, or one letter among others, at each position.
TEST_P(CaseInLocale, ASingleOddCharacterIsSeenAtEveryPosition) {
    for (const std::size_t length :
         {1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 33u, 40u, 64u, 81u}) {
        for (std::size_t at = 0; at < length; ++at) {
            for (const char c : {'i', 'I', 'z', 'Z', '\xC4', '\xE4', '\xFF', '{', '@'}) {
                for (const auto& converter : kNarrow) {
                    std::string text(length, '-');
                    text[at] = c;
                    std::string converted = text;
                    converter.convert(converted.data());
                    text[at] = converter.one(c);
                    ASSERT_EQ(text, converted) << converter.name;
                }
            }
            for (const int32_t c : {0x49, 0x69, 0xC4, 0xE4, 0xFF, 0x130, 0x131, 0x430, 0x10428}) {
                for (const auto& converter : kWide) {
                    std::wstring text(length, L'-');
                    text[at] = c;
                    std::wstring converted = text;
                    converter.convert(converted.data());
                    text[at] = converter.one(c);
                    ASSERT_TRUE(text == converted) << converter.name << ' ' << c;
                }
            }
        }
    }
}

// Whatever bits the characters of a block share.
TEST_P(CaseInLocale, AWholeTextOfOneWideCharacterIsConverted) {
    std::vector<wchar_t> codes;
    for (wchar_t c = 1; c < 0x600; ++c) codes.push_back(c);
    for (wchar_t c = 0x600; c < 0x11000; c += 0x40) codes.push_back(c);
    for (const auto& converter : kWide) {
        for (const wchar_t c : codes) {
            std::wstring text(40, c);
            converter.convert(text.data());
            ASSERT_TRUE(std::wstring(40, converter.one(c)) == text)
                << converter.name << ' ' << static_cast<int>(c);
        }
    }
}

TEST_P(CaseInLocale, NothingBehindTheTerminatorIsConverted) {
    for (std::size_t length = 0; length <= 40; ++length) {
        for (const auto& converter : kNarrow) {
            std::string text(length, 'q');
            text += std::string("\0aZaZaZaZaZaZaZaZaZaZaZaZaZaZaZaZaZaZ", 37);
            std::string converted = text;
            converter.convert(converted.data());
            for (std::size_t i = 0; i < length; ++i) text[i] = converter.one('q');
            ASSERT_EQ(text, converted) << converter.name;
        }
        for (const auto& converter : kWide) {
            std::wstring text(length, L'q');
            text += std::wstring(L"\0aZaZaZaZaZaZaZaZaZaZaZ", 23);
            std::wstring converted = text;
            converter.convert(converted.data());
            for (std::size_t i = 0; i < length; ++i) text[i] = converter.one(L'q');
            ASSERT_TRUE(text == converted) << converter.name;
        }
    }
}

TEST_P(CaseInLocale, SingleCharacterConvertersKnowOnlyAscii) {
    std::vector<int32_t> codes{0};
    for (const wchar_t c : everyWideCharacter()) codes.push_back(c);
    for (int32_t c = -300; c < 0; ++c) codes.push_back(c);
    for (const int32_t c : codes) {
        ASSERT_EQ(c >= 0x61 && c <= 0x7A ? c - 0x20 : c, toportwupper(c)) << c;
        ASSERT_EQ(c >= 0x41 && c <= 0x5A ? c + 0x20 : c, toportwlower(c)) << c;
    }
}

TEST(Case, SingleCharacterConvertersAtTheEdgesOfTheAlphabet) {
    EXPECT_EQ(0x41, toportwupper(0x61));
    EXPECT_EQ(0x5A, toportwupper(0x7A));
    EXPECT_EQ(0x60, toportwupper(0x60));
    EXPECT_EQ(0x7B, toportwupper(0x7B));
    EXPECT_EQ(0xE0, toportwupper(0xE0));
    EXPECT_EQ(0x61, toportwlower(0x41));
    EXPECT_EQ(0x7A, toportwlower(0x5A));
    EXPECT_EQ(0x40, toportwlower(0x40));
    EXPECT_EQ(0x5B, toportwlower(0x5B));
}

TEST(Case, OnlyAsciiLettersChangeInTheClassicLocale) {
    char text[] = "az{`AZ@[09 \x80\xC4\xE4\xFF";
    EXPECT_STREQ("AZ{`AZ@[09 \x80\xC4\xE4\xFF", KORV_StrToUpper(text));
    EXPECT_STREQ("az{`az@[09 \x80\xC4\xE4\xFF", KORV_StrToLower(text));
    wchar_t wideText[] = L"az{`AZ@[09 \x80\xC4\xE4\xFF";
    EXPECT_STREQ(L"AZ{`AZ@[09 \x80\xC4\xE4\xFF", KORV_StrToWUpper(wideText));
    EXPECT_STREQ(L"az{`az@[09 \x80\xC4\xE4\xFF", KORV_StrToWLower(wideText));
}

// 0xFF is -1 as a signed char, which the system takes for the end of a file: a letter there stays.
TEST(Case, ByteFFStaysEvenWhereItIsALetter) {
    {
        const locales::Global locale(locales::kRussian);
        ASSERT_NE(0xFF, kSystemLower(0xFF));
        char text[] = "\xFE\xFF";
        EXPECT_STREQ("\xDE\xFF", KORV_StrToLower(text));
    }
    const locales::Global locale("ru_RU.CP1251");
    ASSERT_NE(0xFF, kSystemUpper(0xFF));
    char text[] = "\xFE\xFF";
    EXPECT_STREQ("\xDE\xFF", KORV_StrToUpper(text));
}

TEST(Case, LettersOfTheLocaleChange) {
    {
        const locales::Global locale(locales::kGerman);
        char text[] = "\xE4\xDF!";
        EXPECT_STREQ("\xC4\xDF!", KORV_StrToUpper(text));
    }
    {
        const locales::Global locale(locales::kTurkish);
        char text[] = "iI";
        EXPECT_STREQ("\xDDI", KORV_StrToUpper(text));
        char other[] = "iI";
        EXPECT_STREQ("i\xFD", KORV_StrToLower(other));
    }
    const locales::Global locale(locales::kWideTurkish);
    wchar_t text[] = L"iI";
    EXPECT_STREQ(L"\x130I", KORV_StrToWUpper(text));
    wchar_t other[] = L"iI";
    EXPECT_STREQ(L"i\x131", KORV_StrToWLower(other));
}

}  // namespace
