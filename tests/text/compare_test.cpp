// Comparison without regard to case, with the remembered characters that odd calls answer from.
#include <wctype.h>

#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "korv/text.h"
#include "reference/text.h"
#include "text/locales.h"
#include "text/places.h"

namespace {

using reference::Comparison;
using reference::lower;

// A thread that has compared nothing yet.
template <class Body>
void inFreshThread(Body body) {
    std::thread(body).join();
}

TEST(Compare, KnownOrders) {
    struct {
        const wchar_t *first, *second;
        int32_t order;
    } const rows[] = {
        {L"ABC", L"abc", 0}, {L"abc", L"ABC", 0},
        {L"", L"", 0},       {L"abc", L"abd", -1},
        {L"abd", L"ABC", 1}, {L"ab", L"abc", -98},
        {L"abc", L"ab", 98}, {L"AB", L"ABC", -98},
        {L"ABC", L"AB", 98}, {L"a", L"B", -1},
        {L"Z", L"a", 25},    {L"[", L"a", -6},
        {L"^", L"A", -3},    {L"a\x10FFFF", L"a", 97},
        {L"x", L"xY", -120}, {L"1", L"\x10FFFF", 0x31 - 0x10FFFF},
    };
    for (const auto& row : rows) {
        Fenced<wchar_t> first((std::wstring_view(row.first)));
        Fenced<wchar_t> second((std::wstring_view(row.second)));
        EXPECT_EQ(row.order, StringWCaseCompare(first.data(), second.data()));
        EXPECT_EQ(row.order, StringWNCaseCompare(first.data(), second.data(), 100));
        EXPECT_EQ(row.order, StringWNCaseCompare(first.data(), second.data(), INT32_MAX));
        EXPECT_EQ(0, StringWNCaseCompare(first.data(), second.data(), 0));
    }
}

TEST(Compare, CountEndsTheComparison) {
    EXPECT_EQ(0, StringWNCaseCompare(L"abX", L"ABy", 2));
    EXPECT_EQ(-1, StringWNCaseCompare(L"abX", L"ABy", 3));
    EXPECT_EQ(0, StringWNCaseCompare(L"ab", L"ABcd", 2));
    EXPECT_EQ(-98, StringWNCaseCompare(L"ab", L"ABcd", 3));
    EXPECT_EQ(98, StringWNCaseCompare(L"ABcd", L"ab", 3));
    EXPECT_EQ(0, StringWNCaseCompare(L"", L"x", 0));
}

TEST(Compare, EmptyTextAnswersFromTheLastCharactersOfTheThread) {
    inFreshThread([] {
        EXPECT_EQ(0, StringWCaseCompare(L"", L"x"));
        EXPECT_EQ(0, StringWCaseCompare(L"x", L""));
        EXPECT_EQ('a' - 'z', StringWCaseCompare(L"QA", L"qZ"));
        EXPECT_EQ(-'z', StringWCaseCompare(L"", L"x"));
        EXPECT_EQ('a', StringWCaseCompare(L"x", L""));
        EXPECT_EQ(0, StringWCaseCompare(L"", L""));
        EXPECT_EQ(0, StringWCaseCompare(L"Km", L"kM"));
        EXPECT_EQ(-'m', StringWCaseCompare(L"", L"x"));
        EXPECT_EQ('m', StringWCaseCompare(L"x", L""));
    });
}

TEST(Compare, NegativeCountAnswersFromTheLastCharactersOfTheThread) {
    inFreshThread([] {
        EXPECT_EQ(0, StringWNCaseCompare(L"a", L"b", -1));
        EXPECT_EQ('e' - 'g', StringWNCaseCompare(L"E", L"G", 1));
        for (const int32_t count : {-1, -2, INT32_MIN}) {
            EXPECT_EQ('e', StringWNCaseCompare(L"a", L"b", count));
            EXPECT_EQ('e', StringWNCaseCompare(L"a", L"", count));
            EXPECT_EQ(-'g', StringWNCaseCompare(L"", L"b", count));
            EXPECT_EQ(0, StringWNCaseCompare(L"", L"", count));
            EXPECT_EQ('e', StringWNCaseCompare(L"same", L"same", count));
        }
        EXPECT_EQ(-'g', StringWNCaseCompare(L"", L"x", 1));
        EXPECT_EQ(0, StringWNCaseCompare(L"pq", L"pr", 1));
        EXPECT_EQ('p', StringWNCaseCompare(L"x", L"", 1));
    });
}

TEST(Compare, TheTwoFunctionsRememberApart) {
    inFreshThread([] {
        EXPECT_EQ(-1, StringWCaseCompare(L"c", L"d"));
        EXPECT_EQ(0, StringWNCaseCompare(L"", L"x", 1));
        EXPECT_EQ(-1, StringWNCaseCompare(L"s", L"t", 5));
        EXPECT_EQ(-'d', StringWCaseCompare(L"", L"x"));
        EXPECT_EQ('c', StringWCaseCompare(L"x", L""));
        EXPECT_EQ(-'t', StringWNCaseCompare(L"", L"x", 1));
        EXPECT_EQ('s', StringWNCaseCompare(L"x", L"", 1));
    });
}

TEST(Compare, ThreadsRememberApart) {
    StringWCaseCompare(L"f", L"g");
    StringWNCaseCompare(L"h", L"j", 1);
    inFreshThread([] {
        EXPECT_EQ(0, StringWCaseCompare(L"", L"x"));
        EXPECT_EQ(0, StringWNCaseCompare(L"", L"x", 1));
        StringWCaseCompare(L"u", L"v");
        StringWNCaseCompare(L"u", L"v", 1);
    });
    EXPECT_EQ(-'g', StringWCaseCompare(L"", L"x"));
    EXPECT_EQ('f', StringWCaseCompare(L"x", L""));
    EXPECT_EQ(-'j', StringWNCaseCompare(L"", L"x", 1));
    EXPECT_EQ('h', StringWNCaseCompare(L"x", L"", 1));
}

TEST(Compare, DifferencesWrapAround) {
    inFreshThread([] {
        Comparison whole, counted;
        const wchar_t codes[] = {INT32_MIN, INT32_MAX, -1, 1, 'K', 0x110000, 0x212A};
        for (const wchar_t a : codes) {
            for (const wchar_t b : codes) {
                const wchar_t texts[][3] = {{a, 0, 0}, {b, 0, 0}, {a, b, 0}, {0, 0, 0}};
                for (const auto& first : texts) {
                    for (const auto& second : texts) {
                        EXPECT_EQ(whole.compare(first, second), StringWCaseCompare(first, second));
                        EXPECT_EQ(counted.compareCounted(first, second, 2),
                                  StringWNCaseCompare(first, second, 2));
                    }
                }
            }
        }
    });
}

// Every pair of short texts in turn, so that each call also answers for what the one before left.
TEST(Compare, EveryPairOfShortTextsInTurn) {
    std::vector<std::wstring> texts;
    forEachText<wchar_t>(L"aAbZ", 3, [&](const std::wstring& text) { texts.push_back(text); });
    inFreshThread([&] {
        Comparison whole, counted;
        for (const std::wstring& a : texts) {
            Fenced<wchar_t> first((std::wstring_view(a)));
            for (const std::wstring& b : texts) {
                const wchar_t* second = b.c_str();
                ASSERT_EQ(whole.compare(first.data(), second),
                          StringWCaseCompare(first.data(), second));
                ASSERT_EQ(whole.compare(second, first.data()),
                          StringWCaseCompare(second, first.data()));
                for (int32_t count = -1; count <= 4; ++count) {
                    ASSERT_EQ(counted.compareCounted(first.data(), second, count),
                              StringWNCaseCompare(first.data(), second, count));
                    ASSERT_EQ(counted.compareCounted(second, first.data(), count),
                              StringWNCaseCompare(second, first.data(), count));
                }
            }
        }
    });
}

class CompareInLocale : public testing::TestWithParam<const char*> {
  protected:
    locales::Global locale_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Locales, CompareInLocale, testing::ValuesIn(locales::kAll),
                         [](const auto& instance) {
                             return "Kind" + std::to_string(instance.index);
                         });

TEST_P(CompareInLocale, EveryCharacterIsLoweredAsTheSystemDoes) {
    Comparison whole, counted;
    for (int32_t c = 1; c <= 0x110001; ++c) {
        const wchar_t first[] = {c, 0};
        const wchar_t second[] = {static_cast<wchar_t>(towupper(static_cast<wint_t>(c))), 'k', 0};
        ASSERT_EQ(whole.compare(first, second), StringWCaseCompare(first, second)) << c;
        ASSERT_EQ(counted.compareCounted(second, first, 2), StringWNCaseCompare(second, first, 2))
            << c;
    }
}

// Texts of a common length that differ in one character, in case only, or where one goes on.
TEST_P(CompareInLocale, DifferencesAreFoundAtEveryLengthAndPlace) {
    std::mt19937 random(3);
    const wchar_t letters[] = L"aAiIkKzZ\xE4\xC4\x130\x131\x212A\x3C3\x3C2\x10428[@";
    Comparison whole, counted;
    for (const std::size_t length : everyLength()) {
        if (length == 0) continue;
        std::wstring text(length, L' ');
        for (wchar_t& c : text) c = letters[random() % (std::size(letters) - 1)];
        std::wstring swapped = text;
        for (wchar_t& c : swapped) {
            c = static_cast<wchar_t>(random() % 2 ? towupper(static_cast<wint_t>(c)) : lower(c));
        }
        Fenced<wchar_t> second((std::wstring_view(swapped)));
        const std::size_t at = random() % length;
        atEveryPlace<wchar_t>(length + 1, [&](wchar_t* first) {
            std::memcpy(first, text.c_str(), (length + 1) * sizeof(wchar_t));
            const auto check = [&] {
                ASSERT_EQ(whole.compare(first, second.data()),
                          StringWCaseCompare(first, second.data()));
                ASSERT_EQ(whole.compare(second.data(), first),
                          StringWCaseCompare(second.data(), first));
                for (std::size_t count : {std::size_t{0}, at, at + 1, length, length + 1}) {
                    const auto bound = static_cast<int32_t>(count);
                    ASSERT_EQ(counted.compareCounted(first, second.data(), bound),
                              StringWNCaseCompare(first, second.data(), bound));
                    ASSERT_EQ(counted.compareCounted(second.data(), first, bound),
                              StringWNCaseCompare(second.data(), first, bound));
                }
                // The pair that the calls above compared last.
                ASSERT_EQ(whole.compare(L"", L"x"), StringWCaseCompare(L"", L"x"));
                ASSERT_EQ(counted.compareCounted(L"x", L"", 1), StringWNCaseCompare(L"x", L"", 1));
            };
            check();
            first[at] = L'5';
            check();
            first[at] = 0;
            check();
        });
    }
}

// In some locales the two are no pair.
TEST_P(CompareInLocale, ALetterInBothCasesAmidOtherAsciiText) {
    Comparison whole, counted;
    for (std::size_t length = 1; length <= 24; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            for (const wchar_t letter : {L'a', L'i', L'k', L'z'}) {
                std::wstring first(length, L'-');
                std::wstring second = first;
                first[at] = letter;
                second[at] = letter & ~0x20;
                const wchar_t *one = first.c_str(), *other = second.c_str();
                ASSERT_EQ(whole.compare(one, other), StringWCaseCompare(one, other)) << int{letter};
                ASSERT_EQ(whole.compare(other, one), StringWCaseCompare(other, one)) << int{letter};
                ASSERT_EQ(counted.compareCounted(one, other, 30),
                          StringWNCaseCompare(one, other, 30));
            }
        }
    }
}

TEST(Compare, TextsThatHaveNothingInCommonFromSomePlaceOn) {
    for (std::size_t common = 0; common <= 70; ++common) {
        for (std::size_t different = 1; different <= 20; ++different) {
            std::wstring first(common, L'x'), second(common, L'X');
            for (std::size_t i = 0; i < different; ++i) {
                first += static_cast<wchar_t>(L'a' + i);
                second += static_cast<wchar_t>(L'D' + i);
            }
            const wchar_t *one = first.c_str(), *other = second.c_str();
            ASSERT_EQ(-3, StringWCaseCompare(one, other)) << common << ' ' << different;
            ASSERT_EQ(3, StringWNCaseCompare(other, one, 100)) << common << ' ' << different;
        }
    }
}

}  // namespace
