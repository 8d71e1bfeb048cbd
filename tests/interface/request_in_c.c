/* A real C program, linked without the C++ run-time library, that walks the whole road of a
 * request: records and their texts, conversion, values, masking, errors with tokens, and release.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#include "korv/korv.h"

#define CHECK(condition)                                                    \
    do {                                                                    \
        if (!(condition)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            exit(1);                                                        \
        }                                                                   \
    } while (0)

#define CODE_PAGE_WINDOWS 1252
#define CODE_PAGE_UTF8 1208

static int headerIs(const BlockHeader* header, const char* eyeCatcher, size_t length) {
    return memcmp(header->eyeCatcher, eyeCatcher, 4) == 0 && header->version == 21 &&
           header->length == length;
}

typedef struct Request {
    FieldDefI fields[2];
    OprDefI operand;
    CtrlBlkI block;
    SvcDefI service;
    FieldRefI secondRef;
    CtrlBlkX* blockX;
    SvcDefX* serviceX;
} Request;

/* 1. The framework copies its descriptions into I records. */
static void describe(Request* request) {
    const TextDesc city = {{0}, CODE_PAGE_UTF8, "Z\xC3\xBCrich"};
    const TextDesc name = {{0}, KORV_CODEPAGE_NOT_GIVEN, "N\xE4me"};
    TextDesc wide = {{0}, KORV_CODEPAGE_NOT_GIVEN, NULL};
    FieldDesc field;
    ParamDesc parameter;

    memset(&field, 0, sizeof field);
    field.dataType = VARCHAR_SZ;
    field.length = 20;
    field.textMode = KORV_TEXT_NARROW;
    field.textLen = 4;
    field.text = &name;
    CHECK(CopyFieldStruct(&field, &request->fields[0], CODE_PAGE_WINDOWS, 0) == 0);
    CHECK(wcscmp(request->fields[0].wideText, L"N\xE4me") == 0);
    CHECK(request->fields[0].wideTextLen == 20 && request->fields[0].narrowTextLen == 5);

    wide.head.wideText = L"AGE";
    field.dataType = INTEGER;
    field.textMode = KORV_TEXT_WIDE;
    field.textLen = 12;
    field.text = &wide;
    CHECK(CopyFieldStruct(&field, &request->fields[1], CODE_PAGE_WINDOWS, 0) == 0);
    CHECK(wcscmp(request->fields[1].wideText, L"AGE") == 0);
    CHECK(request->fields[1].narrowText == NULL);

    memset(&parameter, 0, sizeof parameter);
    parameter.oprCode = 7;
    parameter.oprTextMode = KORV_TEXT_WIDE;
    wide.head.wideText = L"CITY";
    parameter.oprTextLen = 20;
    parameter.oprText = &wide;
    parameter.valueKind = OPR_VALUE_NARROW;
    parameter.valueLen = 7;
    parameter.value.text = &city;
    CHECK(CopyParamsStruct(&parameter, &request->operand, CODE_PAGE_WINDOWS, 0) == 0);
    CHECK(wcscmp(request->operand.oprText, L"CITY") == 0);
    CHECK(wcscmp(request->operand.wideValue, L"Z\xFCrich") == 0);
    CHECK(request->operand.wideValueLen == 28 && request->operand.narrowValueLen == 8);
}

static void describeProvider(void) {
    PrvDesc provider;
    PrvRecord record;
    char first[8] = "", second[8] = "";
    void* texts[2];

    memset(&provider, 0, sizeof provider);
    memset(&record, 0, sizeof record);
    provider.prvAttr2 = 0x12345678;
    provider.text1 = L"Z\xFC";
    provider.text2 = L"x";
    texts[0] = first;
    texts[1] = second;
    record.text1Cap = record.text2Cap = 8;
    record.texts = texts;
    CHECK(CopyPrvStruct(&record, &provider, 850, 0, KORV_TEXT_NARROW) == 0);
    CHECK(strcmp(first, "Z\x81") == 0 && strcmp(second, "x") == 0);
    CHECK(record.prvAttr2 == 0x5678);
    CHECK(GetProviderID("cdswap") == 10);
    CHECK(GetProviderID("nobody") == KORV_PROVIDER_UNKNOWN);
}

/* 2. It converts the request for the provider. */
static void convert(Request* request) {
    CtrlBlkI* block = &request->block;
    request->fields[0].link = &request->fields[1];
    request->secondRef.fieldPos = 0;
    request->secondRef.fieldDef = &request->fields[0];
    block->blkCode = 1;
    block->blkAttr5 = 55;
    block->blkValue3 = 33;
    block->fieldDefs = &request->fields[0];
    block->fieldRefs.link = &request->secondRef;
    block->fieldRefs.fieldPos = 1;
    block->fieldRefs.fieldDef = &request->fields[1];
    block->errorAnchor = calloc(1, sizeof(ErrorAnchor));
    request->service.svcValue = 99;
    request->service.oprDefs = &request->operand;
    request->blockX = calloc(1, sizeof(CtrlBlkX));
    request->serviceX = calloc(1, sizeof(SvcDefX));
    CHECK(block->errorAnchor && request->blockX && request->serviceX);

    CHECK(KORVCnvCtrlBlkFromIToX(block, request->blockX) == 0);
    CHECK(headerIs(&request->blockX->header, "BLKX", sizeof(CtrlBlkX)));
    CHECK(request->blockX->blkAttr5 == 55 && request->blockX->blkValue3 == 33);
    CHECK(headerIs(&request->blockX->fieldDefs->header, "FLDX", sizeof(FieldDefX)));
    CHECK(request->blockX->fieldDefs->wideText == request->fields[0].wideText);
    CHECK(request->blockX->fieldRefs.fieldDef == request->blockX->fieldDefs->link);
    CHECK(request->blockX->fieldRefs.link->fieldDef == request->blockX->fieldDefs);

    CHECK(KORVCnvSvcDefFromIToX(request->blockX, &request->service, request->serviceX) == 0);
    CHECK(headerIs(&request->serviceX->header, "SVCX", sizeof(SvcDefX)));
    CHECK(headerIs(&request->serviceX->oprDefs->header, "OPRX", sizeof(OprDefX)));
    CHECK(request->serviceX->svcValue == 99 && request->serviceX->oprDefs->oprCode == 7);
    CHECK(request->serviceX->fieldDefs == request->blockX->fieldDefs);
}

/* 3. The provider measures, classifies and masks a value. */
static void mask(Request* request) {
    char data[] = "smith", target[16] = "", digits[13] = "";
    wchar_t wide[13];
    ValueRecord value;
    uint32_t size = 0;
    int32_t length = 0, number = 0;
    void* work = NULL;

    memset(&value, 0, sizeof value);
    value.capacity = sizeof target;
    value.data = data;
    value.target = target;
    CHECK(GetSrcBufLen(&value, VARCHAR_SZ) == 0 && value.length == 6);
    CHECK(KORVGetSourceDataLen(&value, &request->fields[0], &length) == 0 && length == 5);
    request->block.fieldRefs.fieldDef = &request->fields[0];
    CHECK(KORV_IsZeroOrZeroLength(&request->block, &value, &value) == KORV_CLASS_TEXT);
    CHECK(value.copiedLength == 6 && strcmp(target, "smith") == 0);

    CHECK(KORVAllocateBuffer(&work, &size, length + 1) == 0 && size == 6);
    CHECK(KORV_StrToUpper(memcpy(work, target, size)) == work);
    CHECK(strcmp(KORVRevString(work, length), "HTIMS") == 0);
    free(work);

    CHECK(PXIntToNum(4711, 8, digits) == 0 && strcmp(digits, "00004711") == 0);
    CHECK(PXTransposeNum(digits, target, 8, 5, 3) == 0 && memcmp(target, digits, 8) != 0);
    CHECK(PXIntToNumW(4711, 8, wide) == 0 && KORVShuffle(wide) == 0);
    CHECK(PXNumToLongW(wide, 8, 8, &number) == 0 && number == 47110000);
}

/* 4. It reports errors; the framework prints them. */
static void report(const CtrlBlkI* block) {
    static const wchar_t* const expected =
        L"8/9: KORV_TOKID_COLNAME=N\xE4me KORV_TOKID_ROW_COUNT=-42 KORV_TOKID_SRCDATA=<NULL>; "
        L"1/2: KORV_TOKID_KEY=0; ";
    const ErrorAnchor* anchor = block->errorAnchor;
    const ErrorRecord* record;
    const FieldDefI* field = block->fieldDefs;
    const int32_t rows = -42, zero = 0;
    const double real = 1.5;
    const size_t opened = sizeof(ErrorRecord), slot = sizeof(TokenSlot);
    wchar_t text[200] = L"";
    size_t at = 0;

    CHECK(ErrorCapture(block, 8, 9, 4) == 0);
    CHECK(anchor->currentSize == opened + 7 * slot);
    CHECK(TokenCapture(block, field->wideText, WVARCHAR_SZ, KORV_TOKID_COLNAME, 0) == 0);
    CHECK(TokenCapture(block, &rows, INTEGER, KORV_TOKID_ROW_COUNT, 0) == 0);
    CHECK(TokenCapture(block, NULL, VARCHAR, KORV_TOKID_SRCDATA, 0) == 0);
    CHECK(TokenCapture(block, &real, DOUBLE, KORV_TOKID_SEED, 0) == KORV_TOKEN_BAD_TYPE);
    CHECK(TokenCapture(block, &rows, INTEGER, KORV_TOKID_COUNT, 0) == KORV_TOKEN_BAD_ID);
    CHECK(anchor->currentSize == opened + 7 * slot + 20 + 16 + 28);
    CHECK(ErrorCapture(block, 1, 2, 1) == 0);
    CHECK(TokenCapture(block, &zero, INTEGER, KORV_TOKID_KEY, 0) == 0);
    CHECK(anchor->currentSize == opened + slot + 4);
    CHECK(anchor->largestSize == opened + 7 * slot + 20 + 16 + 28);
    CHECK(anchor->recordCount == 2);

    for (record = anchor->head; record; record = record->next) {
        int i;
        CHECK(headerIs(&record->header, "ECBD", sizeof(ErrorRecord)));
        at += (size_t)swprintf(text + at, 200 - at, L"%u/%u: ", (unsigned)record->firstCode,
                               (unsigned)record->secondCode);
        for (i = 0; i < record->tokenSlotCount; ++i) {
            const TokenSlot* token = (const TokenSlot*)record->tokenSlots + i;
            if (!token->text) continue;
            at += (size_t)swprintf(text + at, 200 - at, L"%ls=%ls%ls", gTokenIds[token->tokenId],
                                   token->text, record->next && i < 2 ? L" " : L"; ");
        }
    }
    CHECK(wcscmp(text, expected) == 0);
}

/* 5. The framework releases the request; its own texts are still there. */
static void release(Request* request) {
    CHECK(CleanSvcDefX(request->serviceX) == 0);
    CHECK(CleanCtrlBlkX(request->blockX) == 0);
    CHECK(TermErrors(request->block.errorAnchor) == 0);
    request->block.errorAnchor = NULL;
    CHECK(wcscmp(request->fields[1].wideText, L"AGE") == 0);
    CHECK(wcscmp(request->operand.wideValue, L"Z\xFCrich") == 0);
    free(request->fields[0].wideText);
    free(request->fields[0].narrowText);
    free(request->fields[1].wideText);
    free(request->operand.oprText);
    free(request->operand.wideValue);
    free(request->operand.narrowValue);
}

int main(void) {
    Request request;
    memset(&request, 0, sizeof request);
    describe(&request);
    describeProvider();
    convert(&request);
    mask(&request);
    report(&request.block);
    release(&request);
    return 0;
}
