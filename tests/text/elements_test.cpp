// Cutting elements out of lists: quotes, escapes, spaces, delimiters and the codes of each end.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>

#include "korv/text.h"
#include "reference/text.h"
#include "text/locales.h"
#include "text/places.h"

namespace {

using reference::Element;
using reference::elementOf;

// Fenced room for source and output, used again and again.
class Elements : public testing::Test {
  protected:
    static constexpr std::size_t room = 256;

    // `source` ends at an unreadable page, and so does the room that the output needs.
    void expectElement(const std::wstring& list, wchar_t delimiter, std::size_t start) {
        const Element expected = elementOf(list, delimiter, start);
        wchar_t* source = source_.data() + room - list.size() - 1;
        std::memcpy(source, list.c_str(), (list.size() + 1) * sizeof(wchar_t));
        // Blanks in front of an element are not its own, even where nothing else is.
        const wchar_t untouched = ignored_ % 2 ? L' ' : L'~';
        std::fill_n(output_.data(), room, untouched);
        wchar_t* output = output_.data() + room - expected.written;
        uint32_t length = 77;
        const int32_t result = KORV_GetNextElement(source, output, &length, delimiter, ignored_++,
                                                   static_cast<uint32_t>(start));
        SCOPED_TRACE(testing::Message()
                     << "list <" << list << "> delimiter " << int(delimiter) << " start " << start);
        ASSERT_EQ(expected.result, result);
        ASSERT_EQ(expected.text.size(), length);
        ASSERT_TRUE(expected.text == std::wstring(output, expected.text.size()));
        if (expected.terminated) {
            ASSERT_EQ(0, output[length]);
        }
        for (wchar_t* p = output_.data(); p < output; ++p) ASSERT_EQ(untouched, *p);
        ASSERT_EQ(0, std::memcmp(source, list.c_str(), (list.size() + 1) * sizeof(wchar_t)));
    }

    Fenced<wchar_t> source_ = Fenced<wchar_t>(room);
    Fenced<wchar_t> output_ = Fenced<wchar_t>(room);
    uint32_t ignored_ = 0;
};

struct Row {
    const wchar_t* list;
    uint32_t start;
    int32_t result;
    const wchar_t* text;
};

TEST(Element, KnownElements) {
    const Row rows[] = {
        {L"  abc , def", 0, 7, L"ABC"},
        {L"  abc , def", 7, -1, L"DEF"},
        {L"\"Mixed, Case\" x,y", 0, 16, L"\"Mixed, Case\""},
        {L"\"Mixed, Case\" x,y", 16, -1, L"Y"},
        {L"a\\,b", 0, 3, L"A"},
        {L"a\\\"b", 0, -1, L"A\"B"},
        {L"a\\\\b", 0, -1, L"A\\B"},
        {L"a\\bc", 0, -1, L"ABC"},
        {L"a\\", 0, -1, L"A"},
        {L"\"a\\\"b\"", 0, -1, L"\"a\"b\""},
        {L"\"a\\\\\",b", 0, 6, L"\"a\\\""},
        {L"\"never closed, a  ", 0, -1, L"\"never closed, a"},
        {L"\"   ", 0, -1, L"\""},
        {L"\"a  \"  ,b", 0, 8, L"\"a  \""},
        {L"\"\",b", 0, 3, L"\"\""},
        {L"\"a\" dropped \\\" too,b", 0, 19, L"\"a\""},
        {L",b", 0, 1, L""},
        {L"   ,b", 0, 4, L""},
        {L"a,", 0, 2, L"A"},
        {L"\\  ", 0, -1, L""},
        {L"\ta\t ,", 0, 5, L"\tA\t"},
        {L"a b  c  ", 0, -1, L"A B  C"},
    };
    for (const Row& row : rows) {
        wchar_t output[64];
        uint32_t length = 77;
        EXPECT_EQ(row.result, KORV_GetNextElement(row.list, output, &length, L',', 1, row.start));
        EXPECT_STREQ(row.text, output);
        EXPECT_EQ(std::wcslen(row.text), length);
    }
}

TEST(Element, NoneIsLeftWhereOnlySpacesFollow) {
    for (const wchar_t* list : {L"", L"   ", L"a,   "}) {
        wchar_t output[4] = {1, 2, 3, 4};
        uint32_t length = 77;
        const uint32_t start = list[0] == L'a' ? 2 : 0;
        EXPECT_EQ(-2, KORV_GetNextElement(list, output, &length, L',', 0, start));
        EXPECT_EQ(0u, length);
        EXPECT_EQ(1, output[0]);
    }
}

TEST(Element, MisplacedQuoteLeavesWhatWasCopied) {
    wchar_t output[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    uint32_t length = 77;
    EXPECT_EQ(-3, KORV_GetNextElement(L"ab\"c", output, &length, L',', 0, 0));
    EXPECT_EQ(2u, length);
    EXPECT_EQ(L'a', output[0]);
    EXPECT_EQ(L'b', output[1]);
    EXPECT_EQ(9, output[2]) << "no terminator";

    EXPECT_EQ(-3, KORV_GetNextElement(L"\"a\" x\"", output, &length, L',', 0, 0));
    EXPECT_EQ(3u, length);
    EXPECT_EQ(9, output[3]);
}

TEST(Element, IgnoredArgumentBoundsNothing) {
    for (const uint32_t ignored : {0u, 1u, 2u, 0x80000000u, 0xFFFFFFFFu}) {
        wchar_t output[16];
        uint32_t length = 0;
        EXPECT_EQ(9, KORV_GetNextElement(L"abcdefgh,i", output, &length, L',', ignored, 0));
        EXPECT_STREQ(L"ABCDEFGH", output);
    }
}

TEST(Element, UpperCaseFollowsTheLocale) {
    const locales::Global locale(locales::kWideTurkish);
    wchar_t output[16];
    uint32_t length = 0;
    EXPECT_EQ(-1, KORV_GetNextElement(L"i\xE4", output, &length, L',', 0, 0));
    EXPECT_STREQ(L"\x130\xC4", output);
}

TEST_F(Elements, EveryShortListIsCutAsTheStepsSay) {
    forEachText<wchar_t>(L" \"\\,a\xE9", 5, [&](const std::wstring& list) {
        for (const wchar_t delimiter : {L',', L' ', L'"', L'\\', L'a', L'\0'}) {
            for (std::size_t start = 0; start <= list.size(); ++start) {
                expectElement(list, delimiter, start);
                if (HasFatalFailure()) return;
            }
        }
    });
    EXPECT_TRUE(source_.intact());
    EXPECT_TRUE(output_.intact());
}

TEST_F(Elements, LongListsAreCutAsTheStepsSay) {
    std::mt19937 random(4);
    const locales::Global locale("en_US.UTF-8");
    const wchar_t rare[] = L" \"\\,i\xE4\x130\x10428;";
    for (int round = 0; round < 40000; ++round) {
        std::wstring list(random() % 90, L' ');
        const unsigned rarity = 1 + random() % 20;
        for (wchar_t& c : list) {
            c = random() % rarity ? static_cast<wchar_t>('a' + random() % 26)
                                  : rare[random() % (std::size(rare) - 1)];
        }
        if (random() % 2 && !list.empty()) list[0] = L'"';
        list += std::wstring(random() % 3 ? 0 : random() % 20, L' ');
        const wchar_t delimiter = random() % 4 ? L',' : rare[random() % (std::size(rare) - 1)];
        expectElement(list, delimiter, random() % (list.size() + 1));
        if (HasFatalFailure()) return;
    }
}

// One special character at each position of an element of each length.
TEST_F(Elements, SpecialCharactersAreSeenAtEveryPosition) {
    for (std::size_t length = 1; length <= 70; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            for (const wchar_t c : {L'"', L'\\', L',', L' ', L'\xFF'}) {
                std::wstring list(length, L'b');
                list[at] = c;
                for (const wchar_t* front : {L"", L" ", L"\"", L"\\\""}) {
                    expectElement(front + list, L',', 0);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(Element, AListIsWalkedToItsEnd) {
    std::wstring list;
    for (int i = 0; i < 1000; ++i) list += (i ? L", el" : L"el") + std::to_wstring(i);
    int32_t at = 0;
    for (int i = 0; i < 1000; ++i) {
        wchar_t output[16];
        uint32_t length = 0;
        at = KORV_GetNextElement(list.c_str(), output, &length, L',', 0, static_cast<uint32_t>(at));
        ASSERT_EQ(L"EL" + std::to_wstring(i), output);
    }
    EXPECT_EQ(-1, at);
}

}  // namespace
