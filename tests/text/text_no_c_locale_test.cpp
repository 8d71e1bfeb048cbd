// Case conversion in a process where the table of the C locale cannot be found out.
#include <gtest/gtest.h>
#include <locale.h>

#include "korv/text.h"

// The library finds this one in the program.
extern "C" locale_t newlocale(int, const char*, locale_t) noexcept {
    return nullptr;
}

TEST(NoCLocale, TextIsConvertedAllTheSame) {
    char text[] =
        "Berlin, 3 Stra\xDF"
        "en";
    EXPECT_STREQ(
        "BERLIN, 3 STRA\xDF"
        "EN",
        KORV_StrToUpper(text));
    EXPECT_STREQ(
        "berlin, 3 stra\xDF"
        "en",
        KORV_StrToLower(text));
    wchar_t wide[] = L"Berlin, @[`{ 3 Stra\u00DFen, in each block of sixteen characters";
    EXPECT_STREQ(L"BERLIN, @[`{ 3 STRA\u00DFEN, IN EACH BLOCK OF SIXTEEN CHARACTERS",
                 KORV_StrToWUpper(wide));
    EXPECT_STREQ(L"berlin, @[`{ 3 stra\u00DFen, in each block of sixteen characters",
                 KORV_StrToWLower(wide));
}
