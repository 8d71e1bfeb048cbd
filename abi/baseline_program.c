/* A program of an earlier build: calls the libraries that it finds, and checks what they answer.
 *
 * 32/baseline_program and 64/baseline_program are this file as it was compiled once, with the
 * headers of that day. It is never compiled again: its purpose is to show that old programs still
 * run. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#include "korv/datacnv.h"
#include "korv/korv.h"

static int checks, faults;

static void check(int right, const char* what, int line) {
    ++checks;
    if (right) return;
    ++faults;
    printf("line %d: %s\n", line, what);
}
#define CHECK(condition) check((condition) != 0, #condition, __LINE__)

static int headerIs(const BlockHeader* header, const char* eyeCatcher, size_t length) {
    return memcmp(header->eyeCatcher, eyeCatcher, 4) == 0 && header->version == 21 &&
           header->length == length;
}

static void requests(void) {
    FieldDefI fields[2], copy;
    OprDefI operand;
    SvcDefI service;
    CtrlBlkI block;
    CtrlBlkX* blockX = calloc(1, sizeof *blockX);
    SvcDefX* serviceX = calloc(1, sizeof *serviceX);
    static char narrow[] = "name";
    static wchar_t wide[] = L"name";
    if (!blockX || !serviceX) abort();
    memset(fields, 0, sizeof fields);
    memset(&operand, 0, sizeof operand);
    memset(&service, 0, sizeof service);
    memset(&block, 0, sizeof block);
    fields[0].link = &fields[1];
    fields[1].dataType = WVARCHAR_SZ;
    fields[1].length = 30;
    fields[1].fldValue3 = 0x33333333;
    fields[1].narrowText = narrow;
    fields[1].narrowTextLen = sizeof narrow;
    fields[1].wideText = wide;
    fields[1].wideTextLen = sizeof wide;
    operand.oprCode = 7;
    operand.otherValue = 0x77777777;
    service.svcValue = 0x12345678;
    service.oprDefs = &operand;
    block.blkAttr5 = 0x5555;
    block.blkValue3 = 0xABCDEF01;
    block.fieldDefs = fields;
    block.fieldRefs.fieldPos = 1;

    CHECK(KORVCnvCtrlBlkFromIToX(&block, blockX) == KORV_SUCCESS);
    CHECK(headerIs(&blockX->header, "BLKX", sizeof *blockX));
    CHECK(blockX->blkAttr5 == 0x5555 && blockX->blkValue3 == 0xABCDEF01);
    CHECK(blockX->fieldRefs.fieldDef == blockX->fieldDefs->link);
    CHECK(headerIs(&blockX->fieldDefs->header, "FLDX", sizeof(FieldDefX)));
    CHECK(blockX->fieldRefs.fieldDef->dataType == WVARCHAR_SZ);
    CHECK(blockX->fieldRefs.fieldDef->fldValue3 == 0x33333333);
    CHECK(blockX->fieldRefs.fieldDef->wideText == wide);
    CHECK(KORVCnvSvcDefFromIToX(blockX, &service, serviceX) == KORV_SUCCESS);
    CHECK(headerIs(&serviceX->header, "SVCX", sizeof *serviceX));
    CHECK(serviceX->svcValue == 0x12345678 && serviceX->fieldDefs == blockX->fieldDefs);
    CHECK(headerIs(&serviceX->oprDefs->header, "OPRX", sizeof(OprDefX)));
    CHECK(serviceX->oprDefs->oprCode == 7 && serviceX->oprDefs->otherValue == 0x77777777);
    CHECK(DuplicateFieldDefI(&copy, &fields[1]) == KORV_SUCCESS);
    CHECK(copy.link == NULL && strcmp(copy.narrowText, "name") == 0 && copy.narrowText != narrow);
    CHECK(wcscmp(copy.wideText, L"name") == 0 && copy.fldValue3 == 0x33333333);
    free(copy.narrowText);
    free(copy.wideText);
    CHECK(CleanSvcDefX(serviceX) == KORV_SUCCESS && CleanCtrlBlkX(blockX) == KORV_SUCCESS);
    CHECK(KORVCnvCtrlBlkFromIToX(NULL, NULL) == KORV_FAILURE);
}

static void descriptions(void) {
    const TextDesc text = {{0}, 1208, "Z\xC3\xBCrich"};
    FieldDesc field;
    FieldDefI filled;
    PrvDesc provider;
    PrvRecord record;
    char texts[2][8];
    void* buffers[2] = {texts[0], texts[1]};
    memset(&field, 0, sizeof field);
    memset(&filled, 0, sizeof filled);
    memset(&provider, 0, sizeof provider);
    memset(&record, 0, sizeof record);
    field.dataType = CHAR;
    field.textMode = KORV_TEXT_NARROW;
    field.textLen = 7;
    field.text = &text;
    CHECK(CopyFieldStruct(&field, &filled, 819, 0) == KORV_SUCCESS);
    CHECK(wcscmp(filled.wideText, L"Z\xFCrich") == 0 && filled.wideTextLen == 28);
    free(filled.narrowText);
    free(filled.wideText);
    provider.prvAttr2 = 0x12345678;
    provider.text1 = L"CCN";
    provider.text2 = L"card";
    record.text1Cap = record.text2Cap = sizeof texts[0];
    record.texts = buffers;
    CHECK(CopyPrvStruct(&record, &provider, 819, 0, KORV_TEXT_NARROW) == KORV_SUCCESS);
    CHECK(record.prvAttr2 == 0x5678 && strcmp(texts[1], "card") == 0);
    CHECK(GetProviderID("hash") == 5 && GetProviderID("none") == KORV_PROVIDER_UNKNOWN);
}

static void errors(void) {
    ErrorAnchor* anchor = calloc(1, sizeof *anchor);
    CtrlBlkI block;
    const int32_t number = -123;
    if (!anchor) abort();
    memset(&block, 0, sizeof block);
    block.errorAnchor = anchor;
    CHECK(ErrorCapture(&block, 11, 22, 2) == KORV_SUCCESS);
    CHECK(TokenCapture(&block, "CARD", VARCHAR_SZ, KORV_TOKID_COLNAME, 0) == KORV_SUCCESS);
    CHECK(TokenCaptureEAB(anchor, &number, INTEGER, KORV_TOKID_ROW_COUNT, 0) == KORV_SUCCESS);
    CHECK(anchor->head == anchor->tail && anchor->recordCount == 1);
    CHECK(headerIs(&anchor->head->header, "ECBD", sizeof *anchor->head));
    CHECK(anchor->head->firstCode == 11 && anchor->head->secondCode == 22);
    CHECK(anchor->head->tokenSlots[0].tokenId == KORV_TOKID_COLNAME);
    CHECK(wcscmp(anchor->head->tokenSlots[0].text, L"CARD") == 0);
    CHECK(wcscmp(anchor->head->tokenSlots[1].text, L"-123") == 0);
    CHECK(TermErrors(anchor) == KORV_SUCCESS);
}

static void values(void) {
    FieldDefI field;
    ValueRecord value;
    OdbcDate date = {1900, 1, 1};
    uint32_t bytes = 0, size = 0;
    int32_t length = 0, day = -1;
    void* buffer = NULL;
    static char data[] = "abcdef";
    memset(&field, 0, sizeof field);
    memset(&value, 0, sizeof value);
    field.dataType = LONG_LONG;
    CHECK(GetDataTypeBytes(&field, &bytes) == KORV_SUCCESS && bytes == 8);
    CHECK(strcmp(KORVGetDataTypeName(U_LONG_LONG), "U_LONG_LONG") == 0);
    CHECK(KORV_IsWideCharacterDatatype(WCHAR) == 0 && KORV_IsCharacterDatatype(DOUBLE) == -1);
    field.dataType = VARCHAR_SZ;
    value.data = data;
    CHECK(KORVGetSourceDataLen(&value, &field, &length) == KORV_SUCCESS && length == 6);
    CHECK(KORVAllocateBuffer(&buffer, &size, 64) == KORV_SUCCESS && size == 64);
    free(buffer);
    CHECK((KORVIntODBCToSYB(&date, &day), day) == 0);
    day = 45350;
    CHECK((KORVIntSYBToODBC(&day, &date), date.year) == 2024 && date.month == 3 && date.day == 1);
}

static void digits(void) {
    char field[16] = "", masked[16] = "";
    wchar_t wide[16] = L"";
    int32_t value = 0;
    uint64_t number = 1230;
    CHECK(PXIntToNum(-42, 5, field) == 0 && PXIntToNum(4711, 6, field) == 0);
    CHECK(strcmp(field, "004711") == 0);
    CHECK(PXNumToLong(field, 6, 6, &value) == 0 && value == 4711);
    CHECK(PXTransposeNum("123456789012", masked, 12, 5, 3) == 0);
    CHECK(memcmp(masked, "408628640642", 12) == 0);
    CHECK(PXTransposeNumW(L"123456789012", wide, 12, 5, 3) == 0);
    CHECK(wmemcmp(wide, L"408628640642", 12) == 0);
    CHECK(KORVReverseNum(&number) == 0 && number == 321);
    /* The tables have been copied into this program, as large as they were. */
    CHECK(sizeof PXSpaces == 257 && strspn(PXSpaces, " ") == 256 && PXSpaces[256] == 0);
    CHECK(sizeof PXSpacesW == 1028 && wcsspn(PXSpacesW, L" ") == 256 && PXSpacesW[256] == 0);
}

static void texts(void) {
    char narrow[] = "mixed Case", value[16] = "";
    wchar_t wide[16] = L"";
    uint16_t units[4] = {0x1234, 0x5678, 0, 0x9ABC};
    uint32_t length = 0, count = 0;
    const uint16_t pair[] = {0xD83D, 0xDE00};
    CHECK(KORV_StrToUpper(narrow) == narrow && strcmp(narrow, "MIXED CASE") == 0);
    CHECK(StringWCaseCompare(L"Korv", L"kORV") == 0 && StringWCaseCompare(L"b", L"A") == 1);
    CHECK(KORV_GetNextElement(L" one , two", wide, &length, L',', 0, 0) == 6);
    CHECK(wcscmp(wide, L"ONE") == 0 && length == 3);
    CHECK(GetKeyValue("key = value ", value, 15, &length, '=') == 0 && strcmp(value, "value") == 0);
    CHECK(KORV_Utf16ToUtf32(pair, sizeof pair, wide, sizeof wide, &count) == 0);
    CHECK(count == 1 && wide[0] == 0x1F600);
    CHECK(SwapBytes_2(units) == units && units[0] == 0x3412 && units[3] == 0x9ABC);
    CHECK(RTENDIAN_SWAP_UINT(0x12345678) == 0x78563412);
    CHECK(KORV_IsPlatformBigEndian() == 0);
}

static int32_t descending(const void* first, const void* second, void* context) {
    ++*(int*)context;
    return (*(const int16_t*)second > *(const int16_t*)first) -
           (*(const int16_t*)second < *(const int16_t*)first);
}

static void datesAndArrays(void) {
    const OdbcTimestamp first = {2024, 2, 28, 23, 0, 0, 0}, second = {2024, 3, 1, 23, 0, 0, 0};
    OdbcTimestamp february = {2023, 2, 31, 0, 0, 0, 0};
    int16_t numbers[] = {3, -1, 2, 7, 0, 5, 4, 6, 1};
    int calls = 0;
    wchar_t text[16] = L"";
    uint32_t length = 0;
    const uint32_t none = 0;
    const int32_t least = INT32_MIN;
    CHECK(KORVGetDiffDays(&first, &second) == 2);
    CHECK((FixLeapYearDay(&february), february.day) == 28);
    KorvQSort(numbers, 9, sizeof numbers[0], descending, &calls, 0);
    CHECK(numbers[0] == -1 && numbers[8] == 7 && calls > 8);
    CHECK(KORVCnvIntToWVarcharSz1(&least, &none, text, sizeof text, &length, NULL) == CNV_SUCCESS);
    CHECK(wcscmp(text, L"-2147483648") == 0 && length == 11);
}

int main(void) {
    requests();
    descriptions();
    errors();
    values();
    digits();
    texts();
    datesAndArrays();
    printf("%d checks, %d faults\n", checks, faults);
    return faults != 0;
}
