/* Records for the debugger to show: sound and damaged ones, all there before the program runs, and
 * those of a live request. */
#include <korv/korv.h>
#include <stdlib.h>

#define NOWHERE(type) ((type*)0x10)

/* A request: two fields, three references, two errors. */
static FieldDefI second_field = {
    .dataType = INTEGER, .length = 4, .fldValue1 = 7, .wideText = L"BALANCE"};
static FieldDefI first_field = {
    .link = &second_field, .dataType = VARCHAR_SZ, .length = 20, .narrowText = "NAME"};
static FieldRefI fourth_reference = {.fieldPos = 2};
static FieldRefI third_reference = {.link = &fourth_reference, .fieldPos = 1};
static FieldRefI second_reference = {
    .link = &third_reference, .fieldPos = 1, .fieldDef = &second_field};

typedef struct TwoSlots {
    ErrorRecord record;
    TokenSlot more[2];
} TwoSlots;
static wchar_t column[] = L"N\u00e4me \"A\"";
static TwoSlots second_error = {{.header = {"ECBD", 21, 32},
                                 .tokenSlotCount = 2,
                                 .firstCode = 3,
                                 .secondCode = 4,
                                 .tokenSlots = {{KORV_TOKID_COLNAME, column}}},
                                {{0, NULL}, {KORV_TOKID_SQLCODE, L"-1"}}};
static ErrorRecord first_error = {
    .next = &second_error.record, .header = {"ECBD", 21, 32}, .firstCode = 1, .secondCode = 2};
ErrorAnchor errors = {&first_error, &second_error.record, 2, 56, 40};
CtrlBlkI request = {.blkCode = 1,
                    .fieldDefs = &first_field,
                    .errorAnchor = &errors,
                    .fieldRefs = {.link = &second_reference, .fieldDef = &first_field}};

/* Operands of every kind. */
static OprDef opaque_operand = {.oprCode = 5, .valueKind = 9, .otherValue = 0xBEEF};
static OprDef narrow_operand = {.link = &opaque_operand,
                                .oprCode = 4,
                                .oprText = L"MASK",
                                .valueKind = OPR_VALUE_NARROW,
                                .narrowValue = "***",
                                .wideValue = L"***"};
static OprDef wide_operand = {.link = &narrow_operand,
                              .oprCode = 3,
                              .oprText = L"TEXT",
                              .valueKind = OPR_VALUE_WIDE,
                              .wideValue = L"W\u0142"};
static OprDef integer_operand = {.link = &wide_operand,
                                 .oprCode = 2,
                                 .oprText = L"KEY",
                                 .oprFlag = 1,
                                 .valueKind = OPR_VALUE_INTEGER,
                                 .intValue = 42};
static OprDef plain_operand = {.link = &integer_operand, .oprCode = 1, .oprText = L"FLAG"};
SvcDefI service = {.svcCode1 = 6, .oprDefs = &plain_operand};

/* The X form, with a block header that is not filled in. */
static FieldDefX x_field = {.header = {"FLDX", 21, 52}, .dataType = WCHAR, .wideText = L"CITY"};
CtrlBlkX block = {.header = {"BLKX", 21, 56},
                  .fieldDefs = &x_field,
                  .fieldRefs = {.fieldPos = 0xFFFF, .fieldDef = &x_field}};
SvcDefX unwritten = {.fieldDefs = &x_field};

/* Values. */
static char packed[16] = {0x12, 0x34, 0x5C};
static struct {
    int16_t length;
    char text[4];
} variable = {3, "ab"};
static int64_t big = -5000000000;
static double fraction = 2.5;
static OdbcTimestamp moment = {-44, 3, 15, 12, 5, 9, 700};
static uint8_t byte = 200;
#define VALUE(data_, length_) \
    { .length = length_, .capacity = 64, .data = data_ }
ValueRecord narrow = VALUE("caf\xc3\xa9 \xff", 7), wide = VALUE(column, 16);
ValueRecord prefixed = VALUE(&variable, 0), number = VALUE(&big, 8), real = VALUE(&fraction, 8);
ValueRecord when = VALUE(&moment, 20), tiny = VALUE(&byte, 1), decimal = VALUE(packed, 16);
ValueRecord null_value = {.nullIndicator = 1, .processingClass = 74, .data = packed};
ValueRecord lost = VALUE(NOWHERE(void), 4), negative = VALUE(packed, -3);
OdbcDate date = {2024, 2, 29};

/* Damage. */
static FieldDefI circle_end;
static FieldDefI circle = {.link = &circle_end, .dataType = 77, .narrowText = NOWHERE(char)};
static FieldDefI circle_end = {.link = &circle, .dataType = -1};
CtrlBlkI circular = {.fieldDefs = &circle,
                     .errorAnchor = NOWHERE(ErrorAnchor),
                     .fieldRefs = {.link = NOWHERE(FieldRefI), .fieldDef = NOWHERE(FieldDefI)}};
static ErrorRecord negative_count = {
    .next = NOWHERE(ErrorRecord), .header = {"EC\001\"", 20, 32}, .tokenSlotCount = -2};
static TwoSlots strange_tokens = {{.next = &negative_count,
                                   .header = {"ECBD", 21, 32},
                                   .tokenSlotCount = 2,
                                   .tokenSlots = {{200, NOWHERE(wchar_t)}}},
                                  {{KORV_TOKID_PATH, NULL}, {0, NULL}}};
ErrorAnchor damaged = {.head = &strange_tokens.record, .recordCount = 7};
static wchar_t strange_text[] = {L'\n', 0xD800, 0x110000, L'\\', 0};
#define FIFTY "0123456789abcdefghijklmnopqrstuvwxyz0123456789abcd"
OprDef endless = {.oprText = strange_text,
                  .valueKind = OPR_VALUE_NARROW,
                  .narrowValue = FIFTY FIFTY FIFTY FIFTY "!"};
OprDef self = {.link = &self, .valueKind = OPR_VALUE_NARROW, .narrowValue = NOWHERE(char)};
SvcDefI repeating = {.oprDefs = &self};
static FieldDefI many[217];
#define LINK_1(i) {.link = &many[(i) + 1]},
#define LINK_6(i) LINK_1(i) LINK_1(i + 1) LINK_1(i + 2) LINK_1(i + 3) LINK_1(i + 4) LINK_1(i + 5)
#define LINK_36(i) \
    LINK_6(i) LINK_6(i + 6) LINK_6(i + 12) LINK_6(i + 18) LINK_6(i + 24) LINK_6(i + 30)
#define LINK_108(i) LINK_36(i) LINK_36(i + 36) LINK_36(i + 72)
static FieldDefI many[217] = {LINK_108(0) LINK_108(108)};
CtrlBlkI crowded = {.fieldDefs = many};

void inspect(const CtrlBlkX* converted, const CtrlBlkI* source);
void inspect(const CtrlBlkX* converted, const CtrlBlkI* source) {
    (void)converted;
    (void)source;
}

int main(void) {
    CtrlBlkX* converted = calloc(1, sizeof *converted);
    ErrorAnchor* anchor = calloc(1, sizeof *anchor);
    CtrlBlkI source = {.fieldDefs = &first_field, .errorAnchor = anchor};
    source.fieldRefs.link = &second_reference;
    if (KORVCnvCtrlBlkFromIToX(&source, converted) != 0) return 1;
    if (ErrorCapture(&source, 1042, 8, 2) != 0) return 1;
    if (TokenCapture(&source, "NAME", VARCHAR_SZ, KORV_TOKID_COLNAME, 0) != 0) return 1;
    if (TokenCapture(&source, &(int32_t){-180}, INTEGER, KORV_TOKID_SQLCODE, 0) != 0) return 1;
    inspect(converted, &source);
    CleanCtrlBlkX(converted);
    TermErrors(anchor);
    return 0;
}
