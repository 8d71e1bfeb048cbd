// Every exported function works when entered with a stack that is aligned to 4 bytes only.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <fstream>
#include <initializer_list>
#include <set>
#include <sstream>
#include <string>

#include "interface/stack_entry.h"
#include "korv/datacnv.h"
#include "korv/korv.h"

namespace {

template <class T>
T* zeroed() {
    return static_cast<T*>(std::calloc(1, sizeof(T)));
}

int32_t orderOfInts(const void* first, const void* second, void*) {
    return *static_cast<const int32_t*>(first) - *static_cast<const int32_t*>(second);
}

const char kLongText[] = "the quick brown fox jumps over the lazy dog";
constexpr uint32_t kLongTextLen = sizeof kLongText - 1;
const uint32_t kZero = 0;

using Case = void (*)(const Entry& call);
const Case kCases[] = {
    [](const Entry& call) {
        FieldDefI fields[2] = {};
        fields[0].link = &fields[1];
        CtrlBlkI block = {};
        block.fieldDefs = fields;
        block.fieldRefs.fieldPos = 1;
        OprDefI operand = {};
        SvcDefI service = {};
        service.oprDefs = &operand;
        auto* blockX = zeroed<CtrlBlkX>();
        auto* serviceX = zeroed<SvcDefX>();
        FieldDefX field = {};
        OprDefX operandX = {};
        EXPECT_EQ(0, CALL(KORVCnvCtrlBlkFromIToX, &block, blockX));
        EXPECT_EQ(blockX->fieldDefs->link, blockX->fieldRefs.fieldDef);
        EXPECT_EQ(0, CALL(KORVCnvSvcDefFromIToX, blockX, &service, serviceX));
        EXPECT_EQ(0, CALL(KORVCnvFieldDefFromIToX, &fields[0], &field));
        EXPECT_EQ(0, CALL(KORVCnvOprDefFromIToX, &operand, &operandX));
        EXPECT_EQ(0, CALL(CleanParamsX, serviceX->oprDefs));
        serviceX->oprDefs = nullptr;
        EXPECT_EQ(0, CALL(CleanSvcDefX, serviceX));
        EXPECT_EQ(0, CALL(CleanCtrlBlkX, blockX));
    },
    [](const Entry& call) {
        TextDesc text = {};
        text.codePage = 1252;
        text.narrowText = kLongText;
        FieldDesc field = {};
        field.textMode = KORV_TEXT_NARROW;
        field.textLen = static_cast<int32_t>(kLongTextLen);
        field.text = &text;
        FieldDefI first = {}, second = {};
        EXPECT_EQ(0, CALL(CopyFieldStruct, &field, &first, 1208, 0));
        EXPECT_EQ(0, CALL(DuplicateFieldDefI, &second, &first));
        EXPECT_EQ(0, std::wcscmp(first.wideText, second.wideText));
        ParamDesc parameter = {};
        parameter.valueKind = OPR_VALUE_NARROW;
        parameter.valueLen = field.textLen;
        parameter.value.text = &text;
        OprDefI operand = {};
        EXPECT_EQ(0, CALL(CopyParamsStruct, &parameter, &operand, 1208, 0));
        EXPECT_EQ(0, std::wcscmp(first.wideText, operand.wideValue));
        PrvDesc provider = {};
        provider.text1 = provider.text2 = first.wideText;
        char buffers[2][80];
        void* texts[] = {buffers[0], buffers[1]};
        PrvRecord record = {};
        record.text1Cap = record.text2Cap = 80;
        record.texts = texts;
        EXPECT_EQ(0, CALL(CopyPrvStruct, &record, &provider, 1252, 0, KORV_TEXT_NARROW));
        EXPECT_STREQ(kLongText, buffers[1]);
        EXPECT_EQ(0, CALL(CopyPrvStruct, &record, &provider, 0, 0, KORV_TEXT_WIDE));
        EXPECT_EQ(10, CALL(GetProviderID, "cdswap"));
        for (void* block :
             {static_cast<void*>(first.wideText), static_cast<void*>(first.narrowText),
              static_cast<void*>(second.wideText), static_cast<void*>(second.narrowText),
              static_cast<void*>(operand.wideValue), static_cast<void*>(operand.narrowValue)}) {
            std::free(block);
        }
    },
    [](const Entry& call) {
        auto* anchor = zeroed<ErrorAnchor>();
        CtrlBlkI block = {};
        block.errorAnchor = anchor;
        const int32_t number = -12345;
        EXPECT_EQ(0, CALL(ErrorCapture, &block, 1, 2, 3));
        EXPECT_EQ(0, CALL(ErrorCaptureEAB, anchor, 1, 2, 4));
        EXPECT_EQ(0, CALL(TokenCapture, &block, kLongText, VARCHAR_SZ, 5, 0));
        EXPECT_EQ(0, CALL(TokenCaptureEAB, anchor, &number, INTEGER, 6, 0));
        const TokenSlot* slots = anchor->tail->tokenSlots;
        EXPECT_STREQ(L"-12345", slots[1].text);
        EXPECT_EQ(0, CALL(TermErrors, anchor));
    },
    [](const Entry& call) {
        FieldDefI field = {};
        field.dataType = INTEGER;
        uint32_t unsignedLength = 0;
        int32_t length = 0;
        char data[] = "abc", target[8] = {};
        ValueRecord value = {}, result = {};
        value.data = data;
        value.target = target;
        value.capacity = 8;
        CtrlBlkI block = {};
        block.blkCode = 1;
        block.fieldRefs.fieldDef = &field;
        EXPECT_EQ(0, CALL(GetDataTypeBytes, &field, &unsignedLength));
        EXPECT_EQ(4u, unsignedLength);
        EXPECT_EQ(0, CALL(GetDataTypeLengths, &field, &unsignedLength));
        EXPECT_STREQ("INTEGER", reinterpret_cast<const char*>(CALL(KORVGetDataTypeName, INTEGER)));
        EXPECT_EQ(0, CALL(KORV_IsCharacterDatatype, CHAR));
        EXPECT_EQ(0, CALL(KORV_IsWideCharacterDatatype, WCHAR));
        EXPECT_EQ(0, CALL(GetSrcBufLen, &value, VARCHAR_SZ));
        field.dataType = VARCHAR_SZ;
        EXPECT_EQ(0, CALL(KORVGetSourceDataLen, &value, &field, &length));
        EXPECT_EQ(3, length);
        EXPECT_EQ(74, CALL(KORV_IsZeroOrZeroLength, &block, &value, &result));
        EXPECT_STREQ("abc", target);
    },
    [](const Entry& call) {
        void* buffer = nullptr;
        uint32_t size = 0, digits = 0;
        EXPECT_EQ(0, CALL(KORVAllocateBuffer, &buffer, &size, 100));
        EXPECT_EQ(0, CALL(KORVAllocateBuffer1, &buffer, &size, 200, 1));
        EXPECT_EQ(200u, size);
        std::free(buffer);
        EXPECT_EQ(0, CALL(KORVGetLongLongDigitCount, 0x89ABCDEFu, 0x01234567u, &digits));
        EXPECT_EQ(17u, digits);
        EXPECT_EQ(0, CALL(KORVGetIntDigitCount, -120, &digits));
        EXPECT_EQ(20u, digits);
        int32_t day = 0;
        OdbcDate date = {};
        CALL(KORVIntSYBToODBC, &day, &date);
        EXPECT_EQ(1900, date.year);
        CALL(KORVIntODBCToSYB, &date, &day);
        EXPECT_EQ(0, day);
    },
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

// The stack pointer that the caller had when it called.
extern "C" uint32_t stackAtCall();
asm(".text\n"
    ".type stackAtCall, @function\n"
    "stackAtCall:\n\t"
    "leal 4(%esp), %eax\n\t"
    "ret\n"
    ".size stackAtCall, . - stackAtCall\n");

class StackOffset : public testing::TestWithParam<uint32_t> {};

TEST_P(StackOffset, EveryFunctionWorks) {
    const Entry call(GetParam());
    for (Case run : kCases) run(call);
}

TEST_P(StackOffset, TheStackStandsAtTheOffset) {
    const Entry call(GetParam());
    EXPECT_EQ((16 - GetParam()) % 16, static_cast<uint32_t>(CALL(stackAtCall)) % 16);
}

// The shadow memory of the address sanitizer has no place for frames between its 8-byte units: in a
// leaf function that the compiler leaves as it came, it reports sound accesses.
#ifdef __SANITIZE_ADDRESS__
constexpr uint32_t kStep = 8;
#else
constexpr uint32_t kStep = 4;
#endif
INSTANTIATE_TEST_SUITE_P(FromSixteen, StackOffset, testing::Range(0u, 16u, kStep));

TEST(StackOffsets, EveryExportIsEntered) {
    const Entry call(0);
    for (Case run : kCases) run(call);
    std::set<std::string> exported;
    for (const char* path : {KORV_EXPORTS, KORV_DATACNV_EXPORTS}) {
        std::ifstream lines(path);
        for (std::string kind, name, line; std::getline(lines, line);) {
            std::istringstream words(line);
            if (words >> kind >> name && kind == "function") exported.insert(name);
        }
    }
    std::set<std::string> missing;
    for (const std::string& name : exported) {
        if (!call.entered().count(name)) missing.insert(name);
    }
    EXPECT_EQ(std::set<std::string>(), missing);
    EXPECT_EQ(exported.size(), call.entered().size());
}

}  // namespace
