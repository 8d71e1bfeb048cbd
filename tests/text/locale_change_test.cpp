// A locale that changes takes effect at the next call: in this thread, in another, everywhere.
#include <ctype.h>
#include <wctype.h>

#include <barrier>
#include <cstdint>
#include <string>
#include <thread>

#include "korv/text.h"
#include "text/locales.h"
#include "text/places.h"

namespace {

// The system's functions are called through pointers, so that no compiler answers for them.
int (*const volatile kSystemUpper)(int) = toupper;
int (*const volatile kSystemLower)(int) = tolower;
wint_t (*const volatile kSystemWideUpper)(wint_t) = towupper;
wint_t (*const volatile kSystemWideLower)(wint_t) = towlower;

// What every function that follows the locale answers in the locale that holds here and now.
void expectLocaleFollowed(const char* where) {
    SCOPED_TRACE(where);
    std::string upper, lower;
    std::wstring wide, wideUpper, wideLower;
    std::string narrow;
    for (int c = 1; c < 256; ++c) {
        narrow += static_cast<char>(c);
        upper += static_cast<char>(kSystemUpper(static_cast<signed char>(c)));
        lower += static_cast<char>(kSystemLower(static_cast<signed char>(c)));
    }
    for (wint_t c = 1; c < 0x600; ++c) {
        wide += static_cast<wchar_t>(c);
        wideUpper += static_cast<wchar_t>(kSystemWideUpper(c));
        wideLower += static_cast<wchar_t>(kSystemWideLower(c));
    }
    std::string text = narrow;
    EXPECT_EQ(upper, KORV_StrToUpper(text.data()));
    text = narrow;
    EXPECT_EQ(lower, KORV_StrToLower(text.data()));
    std::wstring wideText = wide;
    EXPECT_TRUE(wideUpper == KORV_StrToWUpper(wideText.data()));
    wideText = wide;
    EXPECT_TRUE(wideLower == KORV_StrToWLower(wideText.data()));
    wideText = wide;
    NormalizeColName(wideText.data(), 0);
    EXPECT_TRUE(wideUpper == wideText);

    for (const wchar_t c : {L'I', L'\xC4', L'\x130', L'\x410'}) {
        const wchar_t first[] = {c, 0};
        const int32_t expected =
            static_cast<int32_t>(kSystemWideLower(static_cast<wint_t>(c))) - L'i';
        EXPECT_EQ(expected, StringWCaseCompare(first, L"i"));
        EXPECT_EQ(expected, StringWNCaseCompare(first, L"i", 1));
    }
    wchar_t element[4];
    uint32_t length = 0;
    KORV_GetNextElement(L"i\xE4", element, &length, L',', 0, 0);
    const wchar_t expected[] = {static_cast<wchar_t>(kSystemWideUpper('i')),
                                static_cast<wchar_t>(kSystemWideUpper(0xE4)), 0};
    EXPECT_STREQ(expected, element);
}

TEST(LocaleChange, TakesEffectInTheSameThread) {
    for (const char* from : locales::kAll) {
        for (const char* to : locales::kAll) {
            locales::choose(from);
            expectLocaleFollowed(from);
            locales::choose(to);
            expectLocaleFollowed(to);
        }
    }
    locales::choose("C");
}

TEST(LocaleChange, OnlyTheCategoryOfCharactersMatters) {
    locales::choose(locales::kWideTurkish);
    locales::choose("C", LC_CTYPE);
    expectLocaleFollowed("C characters");
    wchar_t text[] = L"i";
    EXPECT_STREQ(L"I", KORV_StrToWUpper(text));
    locales::choose("C");
    locales::choose(locales::kWideTurkish, LC_CTYPE);
    expectLocaleFollowed("Turkish characters");
    EXPECT_STREQ(L"\x130", KORV_StrToWUpper(std::wstring(L"i").data()));
    locales::choose("C");
}

TEST(LocaleChange, OfOneThreadTakesEffectInIt) {
    for (const char* global : {"C", locales::kGerman}) {
        locales::choose(global);
        for (const char* own : locales::kAll) {
            const locale_t opened = locales::open(own);
            expectLocaleFollowed("before");
            uselocale(opened);
            expectLocaleFollowed(own);
            uselocale(LC_GLOBAL_LOCALE);
            expectLocaleFollowed("after");
            freelocale(opened);
        }
    }
    locales::choose("C");
}

// A new locale object may well lie where a released one did.
TEST(LocaleChange, ReleasedLocaleIsNotRemembered) {
    for (int round = 0; round < 3; ++round) {
        for (const char* own : locales::kAll) {
            const locale_t opened = locales::open(own);
            uselocale(opened);
            expectLocaleFollowed(own);
            uselocale(LC_GLOBAL_LOCALE);
            freelocale(opened);
        }
    }
}

TEST(LocaleChange, OfOneThreadLeavesTheOthersAlone) {
    const locale_t opened = locales::open(locales::kWideTurkish);
    std::barrier<> turn(2);
    std::thread other([&] {
        uselocale(opened);
        expectLocaleFollowed("other thread");
        turn.arrive_and_wait();
        turn.arrive_and_wait();
        expectLocaleFollowed("other thread again");
        wchar_t text[] = L"i";
        EXPECT_STREQ(L"\x130", KORV_StrToWUpper(text));
        uselocale(LC_GLOBAL_LOCALE);
        expectLocaleFollowed("other thread, global locale");
    });
    turn.arrive_and_wait();
    wchar_t text[] = L"i";
    EXPECT_STREQ(L"I", KORV_StrToWUpper(text));
    expectLocaleFollowed("this thread");
    turn.arrive_and_wait();
    other.join();
    freelocale(opened);
}

TEST(LocaleChange, OfTheProcessTakesEffectInThreadsThatRunAlready) {
    std::barrier<> turn(2);
    std::thread other([&] {
        for (const char* name : locales::kAll) {
            expectLocaleFollowed("before");
            turn.arrive_and_wait();
            turn.arrive_and_wait();
            expectLocaleFollowed(name);
            turn.arrive_and_wait();
        }
    });
    for (const char* name : locales::kAll) {
        turn.arrive_and_wait();
        locales::choose(name);
        turn.arrive_and_wait();
        turn.arrive_and_wait();
    }
    other.join();
    locales::choose("C");
}

}  // namespace
