// Column names: upper-cased unless quoted.
#include <wctype.h>

#include <cstdint>
#include <string>

#include "korv/text.h"
#include "text/locales.h"
#include "text/places.h"

namespace {

std::wstring normalized(std::wstring name, int32_t maxLength) {
    if (!name.empty() && name[0] == L'"') {
        for (int32_t i = 1; i < maxLength && i < static_cast<int32_t>(name.size()); ++i) {
            if (name[static_cast<std::size_t>(i)] == L'"') return name;
        }
    }
    for (wchar_t& c : name) c = static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
    return name;
}

void expectNormalized(const std::wstring& name, int32_t maxLength) {
    static Fenced<wchar_t> room(128);
    wchar_t* place = room.data() + room.size() - name.size() - 1;
    std::memcpy(place, name.c_str(), (name.size() + 1) * sizeof(wchar_t));
    ASSERT_EQ(0, NormalizeColName(place, maxLength));
    ASSERT_EQ(normalized(name, maxLength), place) << "at most " << maxLength;
}

TEST(ColumnName, KnownNames) {
    const struct {
        const wchar_t* name;
        int32_t maxLength;
        const wchar_t* result;
    } rows[] = {
        {L"abc", 30, L"ABC"},        {L"\"abc\"", 30, L"\"abc\""}, {L"\"abc", 30, L"\"ABC"},
        {L"\"abc\"", 5, L"\"abc\""}, {L"\"abc\"", 4, L"\"ABC\""},  {L"\"\"a", 2, L"\"\"a"},
        {L"\"\"a", 1, L"\"\"A"},     {L"\"\"a", 0, L"\"\"A"},      {L"\"\"a", -1, L"\"\"A"},
        {L"\"a\"b", 30, L"\"a\"b"},  {L"a\"b\"", 30, L"A\"B\""},   {L"", 30, L""},
        {L"\"", 30, L"\""},          {L"abc", 0, L"ABC"},          {L" \"a\"", 30, L" \"A\""},
    };
    for (const auto& row : rows) {
        std::wstring name = row.name;
        EXPECT_EQ(0, NormalizeColName(name.data(), row.maxLength));
        EXPECT_STREQ(row.result, name.c_str()) << row.maxLength;
    }
}

TEST(ColumnName, EveryShortNameWithEveryMaximum) {
    forEachText<wchar_t>(L"\"a\xE9 Z", 5, [](const std::wstring& name) {
        for (int32_t maxLength = -2; maxLength <= 8; ++maxLength) {
            ASSERT_NO_FATAL_FAILURE(expectNormalized(name, maxLength));
        }
        ASSERT_NO_FATAL_FAILURE(expectNormalized(name, INT32_MIN));
        ASSERT_NO_FATAL_FAILURE(expectNormalized(name, INT32_MAX));
    });
}

TEST(ColumnName, SecondQuoteIsFoundAtEveryPositionWithinTheMaximum) {
    const locales::Global locale("en_US.UTF-8");
    for (std::size_t length = 1; length <= 70; ++length) {
        for (std::size_t at = 1; at < length; ++at) {
            std::wstring name(length, L'\xE9');
            name[0] = name[at] = L'"';
            for (int32_t around = -1; around <= 2; ++around) {
                ASSERT_NO_FATAL_FAILURE(expectNormalized(name, static_cast<int32_t>(at) + around));
            }
        }
    }
}

TEST(ColumnName, UpperCaseFollowsTheLocale) {
    const locales::Global locale(locales::kWideTurkish);
    wchar_t name[] = L"i\xE4";
    EXPECT_EQ(0, NormalizeColName(name, 9));
    EXPECT_STREQ(L"\x130\xC4", name);
}

}  // namespace
