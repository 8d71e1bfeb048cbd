/* A C compiler lays the public records out as the modules of the framework expect: byte by byte on
 * 32 bits, and everywhere with the members in order, each where its alignment lets it begin. */
#include <stddef.h>
#include <stdio.h>

#include "korv/datacnv.h"
#include "korv/korv.h"

enum RowKind { recordRow, memberRow, otherRow };

#define MEMBER(record, member) (((record*)0)->member)
/* A member's bytes by where it ends: checkers take the size of a pointer for a mistake. */
#define BYTES_OF(record, member) \
    ((size_t)(&MEMBER(record, member) + 1) - (size_t)&MEMBER(record, member))
#define SIZE(record, bytes) \
    { recordRow, #record, sizeof(record), bytes, 0, 1 }
#define AT(record, member, offset)                                             \
    {                                                                          \
        memberRow, #record "." #member, offsetof(record, member), offset,      \
            BYTES_OF(record, member), __alignof__(MEMBER(record, member))      \
    }
#define INSIDE(record, member, offset) \
    { otherRow, #record "." #member, offsetof(record, member), offset, 0, 1 }
/* Records of one layout: the last member tells where the whole ends. */
#define BYTES(record, member, bytes) \
    { otherRow, "size of " #record "." #member, BYTES_OF(record, member), bytes, 0, 1 }

/* What is found, and what is expected on 32 bits. The members of a record follow it in order. */
static const struct {
    enum RowKind kind;
    const char* what;
    size_t found;
    size_t expected;
    size_t size;
    size_t alignment;
} rows[] = {
    SIZE(BlockHeader, 8),
    AT(BlockHeader, eyeCatcher, 0),
    AT(BlockHeader, version, 4),
    AT(BlockHeader, length, 6),

    SIZE(FieldDefI, 56),
    AT(FieldDefI, link, 0),
    AT(FieldDefI, header, 4),
    AT(FieldDefI, dataType, 12),
    AT(FieldDefI, length, 16),
    AT(FieldDefI, fldValue1, 20),
    AT(FieldDefI, fldValue2, 24),
    AT(FieldDefI, fldValue3, 28),
    AT(FieldDefI, fldFlag, 32),
    AT(FieldDefI, fldExtra, 36),
    AT(FieldDefI, wideText, 40),
    AT(FieldDefI, narrowText, 44),
    AT(FieldDefI, wideTextLen, 48),
    AT(FieldDefI, narrowTextLen, 52),

    SIZE(FieldDefX, 52),
    AT(FieldDefX, link, 0),
    AT(FieldDefX, header, 4),
    AT(FieldDefX, dataType, 12),
    AT(FieldDefX, length, 16),
    AT(FieldDefX, fldValue1, 20),
    AT(FieldDefX, fldValue2, 24),
    AT(FieldDefX, fldValue3, 28),
    AT(FieldDefX, fldFlag, 32),
    AT(FieldDefX, wideText, 36),
    AT(FieldDefX, narrowText, 40),
    AT(FieldDefX, wideTextLen, 44),
    AT(FieldDefX, narrowTextLen, 48),

    SIZE(FieldRefI, 12),
    AT(FieldRefI, link, 0),
    AT(FieldRefI, fieldPos, 4),
    AT(FieldRefI, fieldDef, 8),

    SIZE(FieldRefX, 12),
    AT(FieldRefX, link, 0),
    AT(FieldRefX, fieldPos, 4),
    AT(FieldRefX, fieldDef, 8),

    SIZE(CtrlBlkI, 104),
    AT(CtrlBlkI, header, 0),
    AT(CtrlBlkI, blkCode, 8),
    AT(CtrlBlkI, reserved1, 9),
    AT(CtrlBlkI, blkAttr1, 12),
    AT(CtrlBlkI, blkAttr2, 14),
    AT(CtrlBlkI, blkAttr3, 16),
    AT(CtrlBlkI, blkAttr4, 18),
    AT(CtrlBlkI, blkAttr5, 20),
    AT(CtrlBlkI, blkFlag, 22),
    AT(CtrlBlkI, blkValue1, 24),
    AT(CtrlBlkI, blkValue2, 28),
    AT(CtrlBlkI, fieldDefs, 32),
    AT(CtrlBlkI, reserved2, 36),
    AT(CtrlBlkI, blkValue3, 44),
    AT(CtrlBlkI, errorAnchor, 48),
    AT(CtrlBlkI, reserved3, 52),
    AT(CtrlBlkI, fieldRefs, 92),

    SIZE(CtrlBlkX, 56),
    AT(CtrlBlkX, header, 0),
    AT(CtrlBlkX, blkCode, 8),
    AT(CtrlBlkX, reserved1, 9),
    AT(CtrlBlkX, blkAttr1, 10),
    AT(CtrlBlkX, blkAttr2, 12),
    AT(CtrlBlkX, blkAttr3, 14),
    AT(CtrlBlkX, blkAttr4, 16),
    AT(CtrlBlkX, blkAttr5, 18),
    AT(CtrlBlkX, blkFlag, 20),
    AT(CtrlBlkX, blkValue1, 24),
    AT(CtrlBlkX, blkValue2, 28),
    AT(CtrlBlkX, fieldDefs, 32),
    AT(CtrlBlkX, blkSlot, 36),
    AT(CtrlBlkX, blkValue3, 40),
    AT(CtrlBlkX, fieldRefs, 44),

    SIZE(OprDef, 72),
    AT(OprDef, link, 0),
    AT(OprDef, header, 4),
    AT(OprDef, oprCode, 12),
    AT(OprDef, oprText, 16),
    AT(OprDef, oprValue1, 20),
    AT(OprDef, oprFlag, 24),
    AT(OprDef, oprValue2, 28),
    AT(OprDef, oprTextLen, 32),
    AT(OprDef, valueKind, 36),
    AT(OprDef, valueFlag, 40),
    AT(OprDef, valueCodePage, 44),
    AT(OprDef, narrowValueLen, 48),
    AT(OprDef, wideValueLen, 52),
    AT(OprDef, intValue, 56),
    AT(OprDef, wideValue, 60),
    AT(OprDef, narrowValue, 64),
    AT(OprDef, otherValue, 68),

    SIZE(SvcDefI, 24),
    AT(SvcDefI, header, 0),
    AT(SvcDefI, svcCode1, 8),
    AT(SvcDefI, svcCode2, 9),
    AT(SvcDefI, svcAttr1, 10),
    AT(SvcDefI, svcAttr2, 12),
    AT(SvcDefI, svcFlag, 14),
    AT(SvcDefI, svcValue, 16),
    AT(SvcDefI, oprDefs, 20),

    SIZE(SvcDefX, 28),
    AT(SvcDefX, header, 0),
    AT(SvcDefX, svcCode1, 8),
    AT(SvcDefX, svcCode2, 9),
    AT(SvcDefX, svcAttr1, 10),
    AT(SvcDefX, svcAttr2, 12),
    AT(SvcDefX, svcFlag, 14),
    AT(SvcDefX, svcValue, 16),
    AT(SvcDefX, oprDefs, 20),
    AT(SvcDefX, fieldDefs, 24),

    SIZE(TextDesc, 12),
    AT(TextDesc, head, 0),
    INSIDE(TextDesc, head.wideText, 0),
    INSIDE(TextDesc, head.flag, 0),
    AT(TextDesc, codePage, 4),
    AT(TextDesc, narrowText, 8),

    SIZE(FieldDesc, 48),
    AT(FieldDesc, reserved1, 0),
    AT(FieldDesc, dataType, 12),
    AT(FieldDesc, length, 16),
    AT(FieldDesc, fldValue1, 20),
    AT(FieldDesc, fldValue2, 24),
    AT(FieldDesc, fldValue3, 28),
    AT(FieldDesc, fldFlag, 32),
    AT(FieldDesc, textLen, 36),
    AT(FieldDesc, textMode, 40),
    AT(FieldDesc, text, 44),

    SIZE(ParamDesc, 36),
    AT(ParamDesc, reserved1, 0),
    AT(ParamDesc, oprCode, 12),
    AT(ParamDesc, oprTextMode, 14),
    AT(ParamDesc, oprTextLen, 16),
    AT(ParamDesc, oprText, 20),
    AT(ParamDesc, valueKind, 24),
    AT(ParamDesc, valueLen, 28),
    AT(ParamDesc, value, 32),
    INSIDE(ParamDesc, value.number, 32),
    INSIDE(ParamDesc, value.text, 32),

    SIZE(PrvDesc, 36),
    AT(PrvDesc, reserved1, 0),
    AT(PrvDesc, prvCode1, 12),
    AT(PrvDesc, prvCode2, 13),
    AT(PrvDesc, prvAttr1, 14),
    AT(PrvDesc, prvAttr2, 16),
    AT(PrvDesc, text1Len, 20),
    AT(PrvDesc, text2Len, 24),
    AT(PrvDesc, text1, 28),
    AT(PrvDesc, text2, 32),

    SIZE(PrvRecord, 24),
    AT(PrvRecord, reserved1, 0),
    AT(PrvRecord, prvCode1, 4),
    AT(PrvRecord, prvCode2, 5),
    AT(PrvRecord, prvAttr1, 6),
    AT(PrvRecord, prvAttr2, 8),
    AT(PrvRecord, text1Cap, 12),
    AT(PrvRecord, text2Cap, 16),
    AT(PrvRecord, texts, 20),

    SIZE(CnvOptions, 36),
    AT(CnvOptions, reserved1, 0),
    AT(CnvOptions, codePage, 28),
    AT(CnvOptions, flag, 32),

    SIZE(TokenSlot, 8),
    AT(TokenSlot, tokenId, 0),
    AT(TokenSlot, text, 4),

    SIZE(ErrorRecord, 32),
    AT(ErrorRecord, next, 0),
    AT(ErrorRecord, header, 4),
    AT(ErrorRecord, tokenSlotCount, 12),
    AT(ErrorRecord, secondCode, 16),
    AT(ErrorRecord, firstCode, 20),
    AT(ErrorRecord, tokenSlots, 24),

    SIZE(ErrorAnchor, 20),
    AT(ErrorAnchor, head, 0),
    AT(ErrorAnchor, tail, 4),
    AT(ErrorAnchor, recordCount, 8),
    AT(ErrorAnchor, largestSize, 12),
    AT(ErrorAnchor, currentSize, 16),

    SIZE(ValueRecord, 40),
    AT(ValueRecord, reserved1, 0),
    AT(ValueRecord, nullIndicator, 12),
    AT(ValueRecord, secondFlag, 13),
    AT(ValueRecord, length, 16),
    AT(ValueRecord, capacity, 20),
    AT(ValueRecord, copiedLength, 24),
    AT(ValueRecord, processingClass, 28),
    AT(ValueRecord, data, 32),
    AT(ValueRecord, target, 36),

    SIZE(OdbcDate, 6),
    AT(OdbcDate, year, 0),
    AT(OdbcDate, month, 2),
    AT(OdbcDate, day, 4),

    SIZE(OdbcTimestamp, 16),
    AT(OdbcTimestamp, year, 0),
    AT(OdbcTimestamp, month, 2),
    AT(OdbcTimestamp, day, 4),
    AT(OdbcTimestamp, hour, 6),
    AT(OdbcTimestamp, minute, 8),
    AT(OdbcTimestamp, second, 10),
    AT(OdbcTimestamp, fraction, 12),

    SIZE(OprDefI, 72),
    SIZE(OprDefX, 72),
    SIZE(wchar_t, 4),
    SIZE(void*, 4),

    BYTES(BlockHeader, eyeCatcher, 4),
    BYTES(CtrlBlkI, reserved3, 40),
    BYTES(CtrlBlkI, fieldRefs, 12),
    BYTES(FieldDefI, dataType, 2),
    BYTES(FieldDefX, fldValue2, 2),
    BYTES(FieldRefX, fieldPos, 2),
    BYTES(OprDef, oprCode, 2),
    BYTES(OprDef, valueFlag, 1),
    BYTES(ParamDesc, value, 4),
    BYTES(TextDesc, head, 4),
    BYTES(PrvDesc, prvAttr2, 4),
    BYTES(PrvRecord, prvAttr2, 2),
    BYTES(CnvOptions, flag, 1),
    BYTES(ErrorRecord, tokenSlotCount, 2),
    BYTES(ErrorRecord, tokenSlots, 8),
    BYTES(ValueRecord, secondFlag, 1),
};

static const size_t rowCount = sizeof rows / sizeof rows[0];

static int expect(const char* what, size_t found, size_t expected) {
    if (found == expected) return 0;
    fprintf(stderr, "%s is %u, expected %u\n", what, (unsigned)found, (unsigned)expected);
    return 1;
}

static size_t roundedUp(size_t bytes, size_t alignment) {
    return (bytes + alignment - 1) / alignment * alignment;
}

/* Walks the members behind the record in row `at`. */
static int faultsOfOrder(size_t at) {
    size_t end = 0, alignment = 1, i;
    int faults = 0;
    for (i = at + 1; i < rowCount && rows[i].kind != recordRow; ++i) {
        if (rows[i].kind != memberRow) continue;
        faults += expect(rows[i].what, rows[i].found, roundedUp(end, rows[i].alignment));
        end = rows[i].found + rows[i].size;
        if (rows[i].alignment > alignment) alignment = rows[i].alignment;
    }
    /* A record without rows of its members has another name with them. */
    return end == 0 ? faults
                    : faults + expect(rows[at].what, rows[at].found, roundedUp(end, alignment));
}

int main(void) {
    int faults = 0;
    size_t i;
    for (i = 0; i < rowCount; ++i) {
        if (sizeof(void*) == 4) faults += expect(rows[i].what, rows[i].found, rows[i].expected);
        if (rows[i].kind == recordRow) faults += faultsOfOrder(i);
    }
    return faults != 0;
}
