// Enters the functions that work on digits, texts, dates and arrays, and those of the companion.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

#include "interface/every_export.h"
#include "korv/datacnv.h"
#include "korv/korv.h"

namespace {

int32_t orderOfInts(const void* first, const void* second, void*) {
    return *static_cast<const int32_t*>(first) - *static_cast<const int32_t*>(second);
}

const uint32_t kZero = 0;

using Case = void (*)(const Entry& call);
const Case kCases[] = {
    [](const Entry& call) {
        char narrow[31];
        wchar_t wide[31];
        int32_t value = 0;
        EXPECT_EQ(0, CALL(PXLongToNum, 12345, 30, narrow));
        EXPECT_EQ(0, CALL(PXIntToNum, 12345, 30, narrow));
        EXPECT_STREQ("000000000000000000000000012345", narrow);
        EXPECT_EQ(0, CALL(PXNumToLong, narrow, 30, 30, &value));
        EXPECT_EQ(12345, value);
        EXPECT_EQ(0, CALL(KORVCharNumToInt, narrow, 30, 30, &value));
        EXPECT_EQ(0, CALL(PXLongToNumW, 54321, 30, wide));
        EXPECT_EQ(0, CALL(PXIntToNumW, 54321, 30, wide));
        EXPECT_EQ(0, CALL(PXNumToLongW, wide, 30, 30, &value));
        EXPECT_EQ(54321, value);
    },
    [](const Entry& call) {
        char narrow[13] = {};
        wchar_t wide[13] = {};
        int16_t order[16] = {};
        EXPECT_EQ(0, CALL(PXTransposeNum, "123456789012", narrow, 12, 7, 3));
        EXPECT_EQ(0, CALL(PXTransposeNumW, L"123456789012", wide, 12, 7, 3));
        for (int i = 0; i < 12; ++i) EXPECT_EQ(narrow[i], wide[i]);
        CALL(PXGetPermutation, 7, 4, order);
        EXPECT_EQ(4, order[0]);
        char text[] = "the quick brown fox jumps over the lazy do";
        EXPECT_EQ(word(text), word(CALL(KORVRevString, text, 42)));
        EXPECT_STREQ("od yzal eht revo spmuj xof nworb kciuq eht", text);
        wchar_t wideText[] = L"the quick brown fox jumps over the lazy do";
        EXPECT_EQ(0, CALL(KORVRevStringW, wideText));
        EXPECT_EQ(0, CALL(KORVShuffle, wideText));
        EXPECT_STREQ(L"j xof nworb kciuq ehtod yzal eht revo spmu", wideText);
        uint64_t number = 1234567890123456789u;
        EXPECT_EQ(0, CALL(KORVReverseNum, &number));
        EXPECT_EQ(9876543210987654321u, number);
        EXPECT_EQ(0, CALL(KORVRandomValue, 1, 1));
    },
    [](const Entry& call) {
        char text[] = "The Quick Brown Fox Jumps Over The Lazy Dog";
        wchar_t wide[] = L"The Quick Brown Fox Jumps Over The Lazy Dog";
        const wchar_t other[] = L"THE QUICK BROWN FOX JUMPS OVER THE LAZY CAT";
        EXPECT_EQ(word(text), word(CALL(KORV_StrToUpper, text)));
        EXPECT_STREQ("THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG", text);
        EXPECT_EQ(word(text), word(CALL(KORV_StrToLower, text)));
        EXPECT_STREQ(kLongText, text);
        EXPECT_EQ(word(wide), word(CALL(KORV_StrToWUpper, wide)));
        EXPECT_EQ(word(wide), word(CALL(KORV_StrToWLower, wide)));
        EXPECT_EQ('A', CALL(toportwupper, 'a'));
        EXPECT_EQ('a', CALL(toportwlower, 'A'));
        EXPECT_EQ(1, CALL(StringWCaseCompare, wide, other));
        EXPECT_EQ(0, CALL(StringWNCaseCompare, wide, other, 40));
    },
    [](const Entry& call) {
        wchar_t wide[64], work[64], list[] = L"  some longer element, next";
        char value[64];
        uint32_t length = 0;
        EXPECT_EQ(22, CALL(KORV_GetNextElement, list, wide, &length, L',', 0, 0));
        EXPECT_STREQ(L"SOME LONGER ELEMENT", wide);
        EXPECT_EQ(0, CALL(GetKeyValue, "key= a longer value ", value, 60, &length, '='));
        EXPECT_STREQ("a longer value", value);
        EXPECT_EQ(0, CALL(TrimSourceW, list, &length, L" ,", work, 1));
        EXPECT_STREQ(L"somelongerelementnext", list);
        EXPECT_EQ(0, CALL(NormalizeColName, list, 21));
        EXPECT_STREQ(L"SOMELONGERELEMENTNEXT", list);
    },
    [](const Entry& call) {
        const wchar_t wide[] = L"the quick brown fox jumps over \U0001F600";
        uint16_t units[40];
        wchar_t back[40];
        uint32_t count = 0;
        EXPECT_EQ(0, CALL(KORV_Utf32ToUtf16, wide, 4 * 32, units, sizeof units, &count));
        EXPECT_EQ(33u, count);
        EXPECT_EQ(0, CALL(KORV_Utf16ToUtf32, units, 2 * 33, back, sizeof back, &count));
        EXPECT_EQ(32u, count);
        EXPECT_EQ(0, std::wmemcmp(wide, back, 32));
        EXPECT_EQ(0, CALL(Convert32To16, wide, 32, units, 40, &count));
        EXPECT_EQ(0, CALL(Convert16To32, units, 33, back, 40, &count));
        uint16_t* block = nullptr;
        EXPECT_EQ(0, CALL(KORVGetXMLCHARFromWCHAR, wide, &block, 1));
        EXPECT_EQ(0xF600, block[31]);
        std::free(block);
    },
    [](const Entry& call) {
        uint16_t shorts[41] = {};
        uint32_t longs[41] = {};
        uint8_t bits[41] = {}, flipped[41] = {};
        for (int i = 0; i < 40; ++i) {
            shorts[i] = 0x1234;
            longs[i] = 0x12345678;
            bits[i] = 0x13;
        }
        EXPECT_EQ(0x78563412, CALL(RTENDIAN_SWAP_UINT, 0x12345678));
        EXPECT_EQ(0x3412, CALL(RTENDIAN_SWAP_USHORT, 0x1234) & 0xFFFF);
        EXPECT_EQ(word(shorts), word(CALL(SwapBytes_2, shorts)));
        EXPECT_EQ(0x3412, shorts[39]);
        EXPECT_EQ(word(shorts), word(CALL(SwapnBytes_2, shorts, 78)));
        EXPECT_EQ(0x1234, shorts[38]);
        EXPECT_EQ(word(longs), word(CALL(SwapBytes_4, longs)));
        EXPECT_EQ(0x78563412u, longs[39]);
        EXPECT_EQ(word(longs), word(CALL(SwapnBytes_4, longs, 156)));
        EXPECT_EQ(0x12345678u, longs[38]);
        CALL(RTBITFIELD_FLIP, flipped, bits, 40);
        EXPECT_EQ(0xC8, flipped[39]);
        EXPECT_EQ(0, CALL(KORV_IsPlatformBigEndian));
    },
    [](const Entry& call) {
        char text[64];
        EXPECT_EQ(word(text), word(CALL(KORVGetLocalTime, text, sizeof text)));
        EXPECT_LT(0u, std::strlen(text));
        OdbcTimestamp now = {};
        CALL(KORVGetCurLocalTimeTS, &now, 1);
        EXPECT_LT(2000, now.year);
        const OdbcTimestamp first = {2024, 2, 28, 0, 0, 0, 0}, second = {2024, 3, 1, 0, 0, 0, 0};
        EXPECT_EQ(2, CALL(KORVGetDiffDays, &first, &second));
        OdbcTimestamp february = {2023, 2, 29, 0, 0, 0, 0};
        CALL(FixLeapYearDay, &february);
        EXPECT_EQ(28, february.day);
        int32_t numbers[100];
        for (int i = 0; i < 100; ++i) numbers[i] = i * 37 % 100;
        CALL(KorvQSort, numbers, 100, 4, orderOfInts, static_cast<void*>(nullptr), 1);
        for (int i = 0; i < 100; ++i) EXPECT_EQ(i, numbers[i]);
    },
    [](const Entry& call) {
        wchar_t wide[64], again[64];
        char narrow[64];
        uint32_t length = 0;
        for (uint32_t page : {819u, 1208u, 1252u}) {
            CnvOptions options = {};
            options.codePage = page;
            EXPECT_EQ(0, CALL(KORVCnvCharToWVarcharSz, kLongText, &kLongTextLen, wide, sizeof wide,
                              &length, &options));
            EXPECT_EQ(0, CALL(KORVCnvVarcharSzToWVarcharSz, kLongText, &kZero, wide, sizeof wide,
                              &length, &options));
            EXPECT_EQ(0, CALL(KORVCnvVarcharToWVarcharSz, "\3\0abc", &kZero, again, sizeof again,
                              &length, &options));
            EXPECT_STREQ(L"abc", again);
            EXPECT_EQ(0, CALL(KORVCnvWVarcharSzToVarcharSz, wide, &kZero, narrow, sizeof narrow,
                              &length, &options));
            EXPECT_STREQ(kLongText, narrow);
        }
        const uint32_t bytes = kLongTextLen * 4;
        EXPECT_EQ(0, CALL(KORVCnvWCharToWVarcharSz, wide, &bytes, again, sizeof again, &length,
                          static_cast<void*>(nullptr)));
        EXPECT_STREQ(wide, again);
        EXPECT_EQ(0, CALL(KORVCnvWVarcharToWVarcharSz, "\4\0a\0\0", &kZero, again, sizeof again,
                          &length, static_cast<void*>(nullptr)));
        EXPECT_STREQ(L"a", again);
        const uint16_t numbers[] = {2024, 3, 5, 14, 7, 9};
        EXPECT_EQ(0, CALL(KORVGetStringFromTS, numbers, wide, sizeof wide, &length));
        EXPECT_STREQ(L"2024-03-05 14:07:09", wide);
    },
    [](const Entry& call) {
        const int32_t number = -5;
        wchar_t wide[16];
        uint32_t length = 0;
        const auto digits = [&](const char* name, auto* function) {
            EXPECT_EQ(0, call(name, function, &number, &kZero, wide, sizeof wide, &length,
                              static_cast<void*>(nullptr)));
            return std::wstring(wide);
        };
        EXPECT_EQ(L"-5", digits("KORVCnvIntToWVarcharSz1", KORVCnvIntToWVarcharSz1));
        EXPECT_EQ(L"4294967291", digits("KORVCnvUIntToWVarcharSz", KORVCnvUIntToWVarcharSz));
        EXPECT_EQ(L"-5", digits("KORVCnvSmallIntToWVarcharSz", KORVCnvSmallIntToWVarcharSz));
        EXPECT_EQ(L"65531", digits("KORVCnvSmallUIntToWVarcharSz", KORVCnvSmallUIntToWVarcharSz));
    },
};

}  // namespace

void enterTextExports(const Entry& call) {
    for (Case run : kCases) run(call);
}
