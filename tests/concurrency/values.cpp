// Data types, values, days and digits, the clock and sorting.
#include "concurrency/run.h"

void describeTypes(Run& run) {
    FieldDefI field = {};
    field.dataType = WCHAR;
    field.length = run.number();
    uint32_t bytes = 0, length = 0;
    CHECK(CALL(GetDataTypeBytes, &field, &bytes) == 0 && bytes == 4 * run.number());
    field.dataType = DOUBLE;
    CHECK(CALL(GetDataTypeLengths, &field, &length) == 0 && length == 32);
    CHECK(equal(CALL(KORVGetDataTypeName, ODBC_TIMESTAMP), "ODBC_TIMESTAMP"));
    CHECK(CALL(KORV_IsCharacterDatatype, CHAR) == 0);
    CHECK(CALL(KORV_IsWideCharacterDatatype, CHAR) == -1);
}

void measureValues(Run& run) {
    Text<char> text(run.number());
    char target[64] = {};
    FieldDefI field = {};
    field.dataType = VARCHAR_SZ;
    ValueRecord value = {}, result = {};
    value.data = text.characters;
    value.target = target;
    value.capacity = sizeof target;
    CtrlBlkI block = {};
    block.blkCode = 1;
    block.fieldRefs.fieldDef = &field;
    int32_t length = 0;
    CHECK(CALL(GetSrcBufLen, &value, VARCHAR_SZ) == 0 && value.length == text.length + 1);
    CHECK(CALL(KORVGetSourceDataLen, &value, &field, &length) == 0);
    CHECK(length == static_cast<int32_t>(text.length));
    CHECK(CALL(KORV_IsZeroOrZeroLength, &block, &value, &result) == KORV_CLASS_TEXT);
    CHECK(equal(target, text.characters));

    void* buffer = nullptr;
    uint32_t size = 0;
    const auto bytes = static_cast<int32_t>(run.number());
    CHECK(CALL(KORVAllocateBuffer, &buffer, &size, bytes) == 0 && size == run.number());
    std::memset(buffer, static_cast<int>(run.thread), size);
    CHECK(CALL(KORVAllocateBuffer1, &buffer, &size, 2 * bytes, 1) == 0);
    const auto* octets = static_cast<const uint8_t*>(buffer);
    CHECK(octets[0] == run.thread && octets[bytes - 1] == run.thread && octets[bytes] == 0);
    std::free(buffer);
}

void countDaysAndDigits(Run& run) {
    uint32_t digits = 0;
    CHECK(CALL(KORVGetLongLongDigitCount, -1000000 * int64_t{run.number()}, &digits) == 0);
    uint32_t expected = 6;
    for (uint32_t left = run.number(); left; left /= 10) ++expected;
    CHECK(digits == expected);
    CHECK(CALL(KORVGetIntDigitCount, static_cast<int32_t>(run.number()), &digits) == 0);
    CHECK(digits == 2 * expected - 6);

    // 2000 has 36524 days in front of it.
    const auto day = static_cast<int32_t>(36524 + run.number() % 31);
    OdbcDate date = {};
    int32_t back = 0;
    CALL(KORVIntSYBToODBC, &day, &date);
    CHECK(date.year == 2000 && date.month == 1 && date.day == 1 + run.number() % 31);
    CALL(KORVIntODBCToSYB, &date, &back);
    CHECK(back == day);
}

void writeDigits(Run& run) {
    const auto number = static_cast<int32_t>(run.number());
    char narrow[31];
    wchar_t wide[31];
    int32_t value = 0;
    CHECK(CALL(PXLongToNum, -number, 30, narrow) == 0);
    CHECK(CALL(PXIntToNum, number, 30, narrow) == 0);
    CHECK(CALL(PXNumToLong, narrow, 30, 30, &value) == 0 && value == number);
    CHECK(CALL(KORVCharNumToInt, narrow + 29, 1, 1, &value) == 0 && value == number % 10);
    CHECK(CALL(PXLongToNumW, -number, 30, wide) == 0);
    CHECK(CALL(PXIntToNumW, number, 30, wide) == 0);
    CHECK(CALL(PXNumToLongW, wide, 30, 30, &value) == 0 && value == number);
    CHECK(std::strlen(PXSpaces) == 256 && std::wcslen(PXSpacesW) == 256);
}

void maskDigits(Run& run) {
    const auto key = static_cast<int32_t>(run.number());
    const auto shift = static_cast<int16_t>(1 + run.number() % 9);
    char narrow[13] = {};
    wchar_t wide[13] = {};
    CHECK(CALL(PXTransposeNum, "123456789012", narrow, 12, key, shift) == 0);
    CHECK(CALL(PXTransposeNumW, L"123456789012", wide, 12, key, shift) == 0);
    for (int i = 0; i < 12; ++i) CHECK(narrow[i] == wide[i] && narrow[i] >= '0');

    int16_t order[16] = {};
    uint32_t seen = 0;
    CALL(PXGetPermutation, key, 16, order);
    CHECK(order[0] == 1 + key % 16);
    for (const int16_t position : order) seen |= 1u << position;
    CHECK(seen == 0x1FFFE);

    Text<char> text(run.number());
    Text<wchar_t> wideText(run.number()), unchanged(run.number());
    CHECK(CALL(KORVRevString, text.characters, text.length) == text.characters);
    CHECK(CALL(KORVRevStringW, wideText.characters) == 0);
    for (uint32_t i = 0; i < text.length; ++i) {
        CHECK(text.characters[i] == static_cast<char>(wideText.characters[i]));
        CHECK(wideText.characters[i] == unchanged.characters[text.length - 1 - i]);
    }
    CHECK(CALL(KORVShuffle, wideText.characters) == 0);
    CHECK(CALL(KORVShuffle, wideText.characters) == 0);
    CHECK(wideText.characters[0] == L's' && wideText.characters[43] == L'R');
    uint64_t number = 1000000000 + run.number() % 10;
    CHECK(CALL(KORVReverseNum, &number) == 0 && number == run.number() % 10 * 1000000000ull + 1);
}

namespace {

int32_t orderOfInts(const void* first, const void* second, void* context) {
    ++*static_cast<uint32_t*>(context);
    return *static_cast<const int32_t*>(first) - *static_cast<const int32_t*>(second);
}

}  // namespace

void readClockAndSort(Run& run) {
    char text[64];
    CHECK(CALL(KORVGetLocalTime, text, sizeof text) == text && std::strlen(text) == 20);
    OdbcTimestamp now = {};
    CALL(KORVGetCurLocalTimeTS, &now, 1);
    CHECK(now.year > 2000 && now.month >= 1 && now.month <= 12 && now.hour == 0);
    const auto day = static_cast<uint16_t>(1 + run.number() % 28);
    const OdbcTimestamp first = {2024, 2, 1, 0, 0, 0, 0}, second = {2024, 3, day, 0, 0, 0, 0};
    CHECK(CALL(KORVGetDiffDays, &first, &second) == 28 + day);
    OdbcTimestamp february = {2023, 2, 29, 0, 0, 0, 0};
    CALL(FixLeapYearDay, &february);
    CHECK(february.day == 28);

    constexpr uint32_t count = 200;
    int32_t numbers[count];
    uint32_t comparisons = 0;
    for (uint32_t i = 0; i < count; ++i) {
        numbers[i] = static_cast<int32_t>((i + run.number()) * 37 % count);
    }
    const uint8_t ascending = run.number() % 2;
    CALL(KorvQSort, numbers, count, sizeof numbers[0], orderOfInts, &comparisons, ascending);
    for (uint32_t i = 0; i < count; ++i) {
        CHECK(numbers[i] == static_cast<int32_t>(ascending ? i : count - 1 - i));
    }
    CHECK(comparisons >= count);
}
