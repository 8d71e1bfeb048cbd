/* Examples of the support library for its reference. What a line prints is in its comment. */
#include <korv/korv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

/* ---- korv/ctrlblk.h -------------------------------------------------------------------------- */

static void convertRequest(void) {
    wchar_t name[] = L"CARD";
    FieldDefI field = {0};
    field.dataType = KORV_TYPE_VARCHAR;
    field.wideText = name;
    field.wideTextLen = sizeof name;
    CtrlBlkI request = {0};
    request.fieldDefs = &field;
    OprDefI operand = {0};
    operand.valueKind = OPR_VALUE_INTEGER;
    operand.intValue = 17;
    SvcDefI service = {0};
    service.oprDefs = &operand;

    CtrlBlkX* block = calloc(1, sizeof *block);
    SvcDefX* converted = calloc(1, sizeof *converted);
    if (KORVCnvCtrlBlkFromIToX(&request, block) == KORV_SUCCESS &&
        KORVCnvSvcDefFromIToX(block, &service, converted) == KORV_SUCCESS) {
        printf("%ls\n", block->fieldRefs.fieldDef->wideText);  // CARD
        printf("%u\n", converted->oprDefs->intValue);          // 17
    }
    CleanSvcDefX(converted);
    CleanCtrlBlkX(block);
}

static void convertField(void) {
    wchar_t name[] = L"CARD";
    FieldDefI field = {0};
    field.wideText = name;
    field.wideTextLen = sizeof name;
    FieldDefX converted;
    KORVCnvFieldDefFromIToX(&field, &converted);
    printf("%.4s %ls\n", converted.header.eyeCatcher, converted.wideText);  // FLDX CARD
}

static void convertOperands(void) {
    OprDefI operand = {0};
    operand.valueKind = OPR_VALUE_INTEGER;
    operand.intValue = 17;
    OprDefX* list = calloc(1, sizeof *list);  // calloc has set its link to NULL
    KORVCnvOprDefFromIToX(&operand, list);
    printf("%u\n", list->intValue);  // 17
    CleanParamsX(list);
}

static void duplicateField(void) {
    wchar_t name[] = L"CARD";
    FieldDefI field = {0};
    field.wideText = name;
    field.wideTextLen = sizeof name;
    FieldDefI copy;
    if (DuplicateFieldDefI(&copy, &field) == KORV_SUCCESS) {
        name[0] = L'W';
        printf("%ls\n", copy.wideText);  // CARD
        free(copy.wideText);
        free(copy.narrowText);
    }
}

static void copyField(void) {
    TextDesc text = {0};
    text.codePage = KORV_CODEPAGE_NOT_GIVEN;
    text.narrowText = "Z\xFCrich";
    FieldDesc description = {0};
    description.textMode = KORV_TEXT_NARROW;
    description.textLen = 6;
    description.text = &text;
    FieldDefI field = {0};
    if (CopyFieldStruct(&description, &field, 1252, 0) == KORV_SUCCESS)
        printf("U+%04X\n", (unsigned)field.wideText[1]);  // U+00FC
    free(field.wideText);
    free(field.narrowText);
}

static void copyParameter(void) {
    ParamDesc description = {0};
    description.valueKind = OPR_VALUE_INTEGER;
    description.value.number = 17;
    OprDefI operand = {0};
    if (CopyParamsStruct(&description, &operand, 1252, 0) == KORV_SUCCESS)
        printf("%u\n", operand.intValue);  // 17
    free(operand.oprText);
    free(operand.wideValue);
    free(operand.narrowValue);
}

static void copyProvider(void) {
    PrvDesc description = {0};
    description.text1 = L"CCN";
    description.text2 = L"cards";
    char first[16], second[16];
    void* texts[] = {first, second};
    PrvRecord record = {0};
    record.text1Cap = sizeof first;
    record.text2Cap = sizeof second;
    record.texts = texts;
    if (CopyPrvStruct(&record, &description, 1252, 0, KORV_TEXT_NARROW) == KORV_SUCCESS)
        printf("%s %s\n", first, second);  // CCN cards
}

static void providerNumber(void) {
    printf("%d\n", (int)GetProviderID("ccn"));                      // 1
    printf("%d\n", GetProviderID("XYZ") == KORV_PROVIDER_UNKNOWN);  // 1
}

/* ---- korv/errors.h --------------------------------------------------------------------------- */

static void captureError(void) {
    CtrlBlkI request = {0};
    request.errorAnchor = calloc(1, sizeof(ErrorAnchor));
    if (ErrorCapture(&request, 5001, 0, 1) == KORV_SUCCESS &&
        TokenCapture(&request, L"CARD", KORV_TYPE_WVARCHAR_SZ, KORV_TOKID_COLNAME, 0) ==
            KORV_SUCCESS) {
        const ErrorRecord* error = request.errorAnchor->head;
        printf("%u %ls\n", error->firstCode, error->tokenSlots[0].text);  // 5001 CARD
    }
    TermErrors(request.errorAnchor);
    request.errorAnchor = NULL;
}

static void captureErrorInAnchor(void) {
    ErrorAnchor* anchor = calloc(1, sizeof *anchor);
    const int32_t row = 12;
    if (ErrorCaptureEAB(anchor, 5002, 0, 1) == KORV_SUCCESS &&
        TokenCaptureEAB(anchor, &row, KORV_TYPE_INTEGER, KORV_TOKID_ROW_COUNT, 0) == KORV_SUCCESS)
        printf("%ls\n", anchor->tail->tokenSlots[0].text);  // 12
    TermErrors(anchor);
}

/* ---- korv/datatypes.h ------------------------------------------------------------------------ */

static void fieldSizes(void) {
    FieldDefI field = {0};
    field.dataType = KORV_TYPE_WCHAR;
    field.length = 10;
    uint32_t bytes = 0;
    GetDataTypeBytes(&field, &bytes);
    printf("%u\n", bytes);  // 40

    field.dataType = KORV_TYPE_INTEGER;
    uint32_t length = 0;
    GetDataTypeLengths(&field, &length);
    printf("%u\n", length);  // 11
}

static void typeNames(void) {
    printf("%s\n", KORVGetDataTypeName(KORV_TYPE_WVARCHAR));                          // WVARCHAR
    printf("%d\n", KORV_IsCharacterDatatype(KORV_TYPE_VARCHAR) == KORV_SUCCESS);      // 1
    printf("%d\n", KORV_IsWideCharacterDatatype(KORV_TYPE_VARCHAR) == KORV_SUCCESS);  // 0
}

static void sourceValue(void) {
    char text[] = "Berlin";
    char copy[16] = "";
    FieldDefI field = {0};
    field.dataType = KORV_TYPE_VARCHAR_SZ;
    CtrlBlkI context = {0};
    context.blkCode = 1;  // copy the value
    context.fieldRefs.fieldDef = &field;
    ValueRecord value = {0};
    value.data = text;
    value.target = copy;
    value.capacity = sizeof copy;

    int32_t length = 0;
    KORVGetSourceDataLen(&value, &field, &length);
    printf("%d\n", (int)length);  // 6
    GetSrcBufLen(&value, field.dataType);
    printf("%d\n", (int)value.length);  // 7
    ValueRecord result;
    printf("%d\n", KORV_IsZeroOrZeroLength(&context, &value, &result) == KORV_CLASS_TEXT);  // 1
    printf("%s\n", copy);  // Berlin
}

static void workBuffer(void) {
    void* buffer = NULL;
    uint32_t size = 0;
    if (KORVAllocateBuffer(&buffer, &size, 100) == KORV_SUCCESS) {
        strcpy(buffer, "kept");
        if (KORVAllocateBuffer1(&buffer, &size, 200, 1) == KORV_SUCCESS)
            printf("%u %s\n", size, (char*)buffer);  // 200 kept
    }
    free(buffer);
}

static void digitCounts(void) {
    uint32_t digits = 0;
    KORVGetIntDigitCount(-120, &digits);
    printf("%u\n", digits);                           // 3
    KORVGetLongLongDigitCount(10000000000, &digits);  // adds to the counter
    printf("%u\n", digits);                           // 14
}

static void dayNumbers(void) {
    const OdbcDate first = {2000, 2, 29};
    int32_t day;
    KORVIntODBCToSYB(&first, &day);
    printf("%d\n", (int)day);  // 36583
    ++day;
    OdbcDate next;
    KORVIntSYBToODBC(&day, &next);
    printf("%d-%02u-%02u\n", next.year, next.month, next.day);  // 2000-03-01
}

/* ---- korv/numeric.h -------------------------------------------------------------------------- */

static void writeDigits(void) {
    char digits[8];
    PXLongToNum(42, sizeof digits, digits);  // without a terminator
    printf("%.8s\n", digits);                // 00000042
    char field[9];
    PXIntToNum(42, 8, field);
    printf("%s\n", field);  // 00000042
}

static void writeWideDigits(void) {
    wchar_t field[9];
    PXLongToNumW(42, 8, field);
    printf("%ls\n", field);     // 00000042
    PXIntToNumW(-7, 3, field);  // the sign is lost, and the last digit is not one
    printf("%ls\n", field);     // 00)
}

static void readDigits(void) {
    int32_t value = 0;
    if (PXNumToLong("0042    ", 4, 8, &value) == KORV_SUCCESS) printf("%d\n", (int)value);  // 42
    printf("%d\n", (int)KORVCharNumToInt("00x2", 4, 4, &value));                            // -1
}

static void readWideDigits(void) {
    int32_t value = 0;
    if (PXNumToLongW(L"0042    ", 4, 8, &value) == KORV_SUCCESS) printf("%d\n", (int)value);  // 42
}

static void transposeDigits(void) {
    char digits[] = "123456789012";
    if (PXTransposeNum(digits, digits, 12, 5, 3) == KORV_SUCCESS)
        printf("%s\n", digits);  // 408628640642
}

static void transposeWideDigits(void) {
    wchar_t digits[] = L"123456789012";
    if (PXTransposeNumW(digits, digits, 12, 5, 3) == KORV_SUCCESS)
        printf("%ls\n", digits);  // 408628640642
}

static void permutation(void) {
    int16_t numbers[4];
    PXGetPermutation(7, 4, numbers);
    printf("%d %d %d %d\n", numbers[0], numbers[1], numbers[2], numbers[3]);  // 4 2 3 1
}

static void reverse(void) {
    char bytes[] = "abc";
    printf("%s\n", KORVRevString(bytes, 3));  // cba
    wchar_t text[] = L"abc";
    KORVRevStringW(text);
    printf("%ls\n", text);  // cba
    uint64_t number = 1230;
    KORVReverseNum(&number);
    printf("%u\n", (unsigned)number);  // 321
}

static void exchangeHalves(void) {
    wchar_t text[] = L"abcd";
    KORVShuffle(text);
    printf("%ls\n", text);  // cdab
}

static void randomValue(void) {
    const int32_t die = KORVRandomValue(6, 1) + 1;  // not for secrets
    printf("%d\n", die >= 1 && die <= 6);           // 1
}

/* ---- korv/text.h ----------------------------------------------------------------------------- */

static void letterCase(void) {
    char city[] = "Berlin";
    printf("%s\n", KORV_StrToUpper(city));  // BERLIN
    printf("%s\n", KORV_StrToLower(city));  // berlin
}

static void wideLetterCase(void) {
    wchar_t city[] = L"Berlin";
    printf("%ls\n", KORV_StrToWUpper(city));  // BERLIN
    printf("%ls\n", KORV_StrToWLower(city));  // berlin
}

static void asciiLetters(void) {
    printf("%c%c\n", (int)toportwupper('a'), (int)toportwlower('B'));  // Ab
}

static void compareTexts(void) {
    printf("%d\n", (int)StringWCaseCompare(L"Berlin", L"BERLIN"));    // 0
    printf("%d\n", (int)StringWCaseCompare(L"abc", L"ABD"));          // -1
    printf("%d\n", (int)StringWNCaseCompare(L"Berlin", L"Bern", 3));  // 0
}

static void listElements(void) {
    wchar_t element[32];
    uint32_t length;
    int32_t next = 0;
    do {
        next = KORV_GetNextElement(L"id, \"Last Name\"", element, &length, L',', 0, (uint32_t)next);
        if (next < -1) break;     // -2: no further element; -3: a misplaced quote
        printf("%ls|", element);  // ID|"Last Name"|
    } while (next >= 0);
    putchar('\n');
}

static void valueOfKey(void) {
    char value[9];  // 8 bytes and the terminator
    uint32_t length;
    if (GetKeyValue("mode = fast", value, 8, &length, '=') == KORV_SUCCESS)
        printf("%s\n", value);  // fast
}

static void removeCharacters(void) {
    wchar_t number[] = L"4556-7375 8689";
    wchar_t work[sizeof number / sizeof *number];
    uint32_t length;
    TrimSourceW(number, &length, L"- ", work, 1);
    printf("%ls %u\n", number, length);  // 455673758689 12
}

static void columnName(void) {
    wchar_t name[] = L"card";
    NormalizeColName(name, 4);
    printf("%ls\n", name);  // CARD
}

static void convertUnits(void) {
    const uint16_t units[] = {0xD83D, 0xDE00};  // U+1F600
    wchar_t wide[2];
    uint32_t count = 0;
    if (KORV_Utf16ToUtf32(units, sizeof units, wide, sizeof wide, &count) == KORV_SUCCESS)
        printf("%u U+%X\n", count, (unsigned)wide[0]);  // 1 U+1F600
    uint16_t back[2];
    if (KORV_Utf32ToUtf16(wide, 4, back, sizeof back, &count) == KORV_SUCCESS)
        printf("%u %X %X\n", count, back[0], back[1]);  // 2 D83D DE00
}

static void narrowUnits(void) {
    uint16_t* units = NULL;
    if (KORVGetXMLCHARFromWCHAR(L"id", &units, 1) == KORV_SUCCESS)
        printf("%X %X %X\n", units[0], units[1], units[2]);  // 69 64 0
    free(units);
}

static void byteOrder(void) {
    printf("%X\n", RTENDIAN_SWAP_UINT(0x01020304u));  // 4030201
    printf("%X\n", RTENDIAN_SWAP_USHORT(0x0102));     // 201
    printf("%d\n", (int)KORV_IsPlatformBigEndian());  // 0
}

static void byteOrderOfStrings(void) {
    uint16_t two[] = {0x0102, 0x0304, 0};
    SwapBytes_2(two);
    printf("%X %X\n", two[0], two[1]);  // 201 403
    SwapnBytes_2(two, 2);               // the first two bytes only
    printf("%X %X\n", two[0], two[1]);  // 102 403
    uint32_t four[] = {0x01020304, 0x05060708, 0};
    SwapBytes_4(four);
    printf("%X %X\n", four[0], four[1]);  // 4030201 8070605
    SwapnBytes_4(four, 4);
    printf("%X %X\n", four[0], four[1]);  // 1020304 8070605
}

static void bitOrder(void) {
    const uint8_t bits[] = {0x01, 0x0F};
    uint8_t reversed[2];
    RTBITFIELD_FLIP(reversed, bits, sizeof bits);
    printf("%X %X\n", reversed[0], reversed[1]);  // 80 F0
}

/* ---- korv/time.h ----------------------------------------------------------------------------- */

static void timeStamp(void) {
    char stamp[32];
    printf("%d\n", (int)strlen(KORVGetLocalTime(stamp, sizeof stamp)));  // 20
}

static void daysBetween(void) {
    OdbcTimestamp now;
    KORVGetCurLocalTimeTS(&now, 1);
    printf("%u:%u\n", now.hour, now.minute);  // 0:0
    const OdbcTimestamp first = {2024, 2, 28, 0, 0, 0, 0};
    const OdbcTimestamp second = {2024, 3, 1, 0, 0, 0, 0};
    printf("%d\n", (int)KORVGetDiffDays(&first, &second));  // 2
}

static void endOfFebruary(void) {
    OdbcTimestamp birthday = {2024, 2, 29, 0, 0, 0, 0};
    birthday.year = 2023;
    FixLeapYearDay(&birthday);
    printf("%u\n", birthday.day);  // 28
}

/* ---- korv/sort.h ----------------------------------------------------------------------------- */

static int32_t byNumber(const void* first, const void* second, void* context) {
    const int32_t left = *(const int32_t*)first, right = *(const int32_t*)second;
    (void)context;
    return (left > right) - (left < right);
}

static void sortNumbers(void) {
    int32_t numbers[] = {5, 2, 9};
    KorvQSort(numbers, 3, sizeof *numbers, byNumber, NULL, 1);
    printf("%d %d %d\n", (int)numbers[0], (int)numbers[1], (int)numbers[2]);  // 2 5 9
}

int main(void) {
    convertRequest();
    convertField();
    convertOperands();
    duplicateField();
    copyField();
    copyParameter();
    copyProvider();
    providerNumber();
    captureError();
    captureErrorInAnchor();
    fieldSizes();
    typeNames();
    sourceValue();
    workBuffer();
    digitCounts();
    dayNumbers();
    writeDigits();
    writeWideDigits();
    readDigits();
    readWideDigits();
    transposeDigits();
    transposeWideDigits();
    permutation();
    reverse();
    exchangeHalves();
    randomValue();
    letterCase();
    wideLetterCase();
    asciiLetters();
    compareTexts();
    listElements();
    valueOfKey();
    removeCharacters();
    columnName();
    convertUnits();
    narrowUnits();
    byteOrder();
    byteOrderOfStrings();
    bitOrder();
    timeStamp();
    daysBetween();
    endOfFebruary();
    sortNumbers();
    return 0;
}
