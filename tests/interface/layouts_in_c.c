/* A C compiler lays the public records out byte by byte as modules that were built elsewhere expect
 * them, and places each member where its natural alignment lets it begin. */
#include <stddef.h>
#include <stdio.h>

#include "korv/datacnv.h"
#include "korv/korv.h"
#include "korv/mask.h"
#include "korv/provider.h"

enum RowKind { recordRow, memberRow, otherRow };

#define MEMBER(record, member) (((record*)0)->member)
/* A member's bytes by where it ends: checkers take the size of a pointer for a mistake. */
#define BYTES_OF(record, member) \
    ((size_t)(&MEMBER(record, member) + 1) - (size_t)&MEMBER(record, member))

/* In the rows below the first number is the one for 32 bits and the second the one for 64 bits. */
#define SIZE(record, bytes32, bytes64) \
    { recordRow, #record, sizeof(record), {bytes32, bytes64}, 0, 1 }
#define AT(record, member, offset32, offset64)                                          \
    {                                                                                   \
        memberRow, #record "." #member, offsetof(record, member), {offset32, offset64}, \
            BYTES_OF(record, member), __alignof__(MEMBER(record, member))               \
    }
#define INSIDE(record, member, offset32, offset64) \
    { otherRow, #record "." #member, offsetof(record, member), {offset32, offset64}, 0, 1 }
/* Records of one layout: the last member tells where the whole ends. */
#define BYTES(record, member, bytes32, bytes64) \
    { otherRow, "size of " #record "." #member, BYTES_OF(record, member), {bytes32, bytes64}, 0, 1 }

/* What is found and what is expected. The members of a record follow it in order. */
static const struct {
    enum RowKind kind;
    const char* what;
    size_t found;
    size_t expected[2];
    size_t size;
    size_t alignment;
} rows[] = {
    SIZE(BlockHeader, 8, 8),
    AT(BlockHeader, eyeCatcher, 0, 0),
    AT(BlockHeader, version, 4, 4),
    AT(BlockHeader, length, 6, 6),

    SIZE(FieldDefI, 56, 72),
    AT(FieldDefI, link, 0, 0),
    AT(FieldDefI, header, 4, 8),
    AT(FieldDefI, dataType, 12, 16),
    AT(FieldDefI, length, 16, 20),
    AT(FieldDefI, fldValue1, 20, 24),
    AT(FieldDefI, fldValue2, 24, 28),
    AT(FieldDefI, fldValue3, 28, 32),
    AT(FieldDefI, fldFlag, 32, 36),
    AT(FieldDefI, fldExtra, 36, 40),
    AT(FieldDefI, wideText, 40, 48),
    AT(FieldDefI, narrowText, 44, 56),
    AT(FieldDefI, wideTextLen, 48, 64),
    AT(FieldDefI, narrowTextLen, 52, 68),

    SIZE(FieldDefX, 52, 64),
    AT(FieldDefX, link, 0, 0),
    AT(FieldDefX, header, 4, 8),
    AT(FieldDefX, dataType, 12, 16),
    AT(FieldDefX, length, 16, 20),
    AT(FieldDefX, fldValue1, 20, 24),
    AT(FieldDefX, fldValue2, 24, 28),
    AT(FieldDefX, fldValue3, 28, 32),
    AT(FieldDefX, fldFlag, 32, 36),
    AT(FieldDefX, wideText, 36, 40),
    AT(FieldDefX, narrowText, 40, 48),
    AT(FieldDefX, wideTextLen, 44, 56),
    AT(FieldDefX, narrowTextLen, 48, 60),

    SIZE(FieldRefI, 12, 24),
    AT(FieldRefI, link, 0, 0),
    AT(FieldRefI, fieldPos, 4, 8),
    AT(FieldRefI, fieldDef, 8, 16),

    SIZE(FieldRefX, 12, 24),
    AT(FieldRefX, link, 0, 0),
    AT(FieldRefX, fieldPos, 4, 8),
    AT(FieldRefX, fieldDef, 8, 16),

    SIZE(CtrlBlkI, 104, 128),
    AT(CtrlBlkI, header, 0, 0),
    AT(CtrlBlkI, blkCode, 8, 8),
    AT(CtrlBlkI, reserved1, 9, 9),
    AT(CtrlBlkI, blkAttr1, 12, 12),
    AT(CtrlBlkI, blkAttr2, 14, 14),
    AT(CtrlBlkI, blkAttr3, 16, 16),
    AT(CtrlBlkI, blkAttr4, 18, 18),
    AT(CtrlBlkI, blkAttr5, 20, 20),
    AT(CtrlBlkI, blkFlag, 22, 22),
    AT(CtrlBlkI, blkValue1, 24, 24),
    AT(CtrlBlkI, blkValue2, 28, 28),
    AT(CtrlBlkI, fieldDefs, 32, 32),
    AT(CtrlBlkI, reserved2, 36, 40),
    AT(CtrlBlkI, blkValue3, 44, 48),
    AT(CtrlBlkI, errorAnchor, 48, 56),
    AT(CtrlBlkI, reserved3, 52, 64),
    AT(CtrlBlkI, fieldRefs, 92, 104),

    SIZE(CtrlBlkX, 56, 72),
    AT(CtrlBlkX, header, 0, 0),
    AT(CtrlBlkX, blkCode, 8, 8),
    AT(CtrlBlkX, reserved1, 9, 9),
    AT(CtrlBlkX, blkAttr1, 10, 10),
    AT(CtrlBlkX, blkAttr2, 12, 12),
    AT(CtrlBlkX, blkAttr3, 14, 14),
    AT(CtrlBlkX, blkAttr4, 16, 16),
    AT(CtrlBlkX, blkAttr5, 18, 18),
    AT(CtrlBlkX, blkFlag, 20, 20),
    AT(CtrlBlkX, blkValue1, 24, 24),
    AT(CtrlBlkX, blkValue2, 28, 28),
    AT(CtrlBlkX, fieldDefs, 32, 32),
    AT(CtrlBlkX, blkSlot, 36, 40),
    AT(CtrlBlkX, blkValue3, 40, 44),
    AT(CtrlBlkX, fieldRefs, 44, 48),

    SIZE(OprDef, 72, 96),
    AT(OprDef, link, 0, 0),
    AT(OprDef, header, 4, 8),
    AT(OprDef, oprCode, 12, 16),
    AT(OprDef, oprText, 16, 24),
    AT(OprDef, oprValue1, 20, 32),
    AT(OprDef, oprFlag, 24, 36),
    AT(OprDef, oprValue2, 28, 40),
    AT(OprDef, oprTextLen, 32, 44),
    AT(OprDef, valueKind, 36, 48),
    AT(OprDef, valueFlag, 40, 52),
    AT(OprDef, valueCodePage, 44, 56),
    AT(OprDef, narrowValueLen, 48, 60),
    AT(OprDef, wideValueLen, 52, 64),
    AT(OprDef, intValue, 56, 68),
    AT(OprDef, wideValue, 60, 72),
    AT(OprDef, narrowValue, 64, 80),
    AT(OprDef, otherValue, 68, 88),

    SIZE(SvcDefI, 24, 32),
    AT(SvcDefI, header, 0, 0),
    AT(SvcDefI, svcCode1, 8, 8),
    AT(SvcDefI, svcCode2, 9, 9),
    AT(SvcDefI, svcAttr1, 10, 10),
    AT(SvcDefI, svcAttr2, 12, 12),
    AT(SvcDefI, svcFlag, 14, 14),
    AT(SvcDefI, svcValue, 16, 16),
    AT(SvcDefI, oprDefs, 20, 24),

    SIZE(SvcDefX, 28, 40),
    AT(SvcDefX, header, 0, 0),
    AT(SvcDefX, svcCode1, 8, 8),
    AT(SvcDefX, svcCode2, 9, 9),
    AT(SvcDefX, svcAttr1, 10, 10),
    AT(SvcDefX, svcAttr2, 12, 12),
    AT(SvcDefX, svcFlag, 14, 14),
    AT(SvcDefX, svcValue, 16, 16),
    AT(SvcDefX, oprDefs, 20, 24),
    AT(SvcDefX, fieldDefs, 24, 32),

    SIZE(TextDesc, 12, 24),
    AT(TextDesc, head, 0, 0),
    INSIDE(TextDesc, head.wideText, 0, 0),
    INSIDE(TextDesc, head.flag, 0, 0),
    AT(TextDesc, codePage, 4, 8),
    AT(TextDesc, narrowText, 8, 16),

    SIZE(FieldDesc, 48, 56),
    AT(FieldDesc, reserved1, 0, 0),
    AT(FieldDesc, dataType, 12, 12),
    AT(FieldDesc, length, 16, 16),
    AT(FieldDesc, fldValue1, 20, 20),
    AT(FieldDesc, fldValue2, 24, 24),
    AT(FieldDesc, fldValue3, 28, 28),
    AT(FieldDesc, fldFlag, 32, 32),
    AT(FieldDesc, textLen, 36, 36),
    AT(FieldDesc, textMode, 40, 40),
    AT(FieldDesc, text, 44, 48),

    SIZE(ParamDesc, 36, 48),
    AT(ParamDesc, reserved1, 0, 0),
    AT(ParamDesc, oprCode, 12, 12),
    AT(ParamDesc, oprTextMode, 14, 14),
    AT(ParamDesc, oprTextLen, 16, 16),
    AT(ParamDesc, oprText, 20, 24),
    AT(ParamDesc, valueKind, 24, 32),
    AT(ParamDesc, valueLen, 28, 36),
    AT(ParamDesc, value, 32, 40),
    INSIDE(ParamDesc, value.number, 32, 40),
    INSIDE(ParamDesc, value.text, 32, 40),

    SIZE(PrvDesc, 36, 48),
    AT(PrvDesc, reserved1, 0, 0),
    AT(PrvDesc, prvCode1, 12, 12),
    AT(PrvDesc, prvCode2, 13, 13),
    AT(PrvDesc, prvAttr1, 14, 14),
    AT(PrvDesc, prvAttr2, 16, 16),
    AT(PrvDesc, text1Len, 20, 20),
    AT(PrvDesc, text2Len, 24, 24),
    AT(PrvDesc, text1, 28, 32),
    AT(PrvDesc, text2, 32, 40),

    SIZE(PrvRecord, 24, 32),
    AT(PrvRecord, reserved1, 0, 0),
    AT(PrvRecord, prvCode1, 4, 4),
    AT(PrvRecord, prvCode2, 5, 5),
    AT(PrvRecord, prvAttr1, 6, 6),
    AT(PrvRecord, prvAttr2, 8, 8),
    AT(PrvRecord, text1Cap, 12, 12),
    AT(PrvRecord, text2Cap, 16, 16),
    AT(PrvRecord, texts, 20, 24),

    SIZE(CnvOptions, 36, 36),
    AT(CnvOptions, reserved1, 0, 0),
    AT(CnvOptions, codePage, 28, 28),
    AT(CnvOptions, flag, 32, 32),

    SIZE(TokenSlot, 8, 16),
    AT(TokenSlot, tokenId, 0, 0),
    AT(TokenSlot, text, 4, 8),

    SIZE(ErrorRecord, 32, 48),
    AT(ErrorRecord, next, 0, 0),
    AT(ErrorRecord, header, 4, 8),
    AT(ErrorRecord, tokenSlotCount, 12, 16),
    AT(ErrorRecord, secondCode, 16, 20),
    AT(ErrorRecord, firstCode, 20, 24),
    AT(ErrorRecord, tokenSlots, 24, 32),

    SIZE(ErrorAnchor, 20, 32),
    AT(ErrorAnchor, head, 0, 0),
    AT(ErrorAnchor, tail, 4, 8),
    AT(ErrorAnchor, recordCount, 8, 16),
    AT(ErrorAnchor, largestSize, 12, 20),
    AT(ErrorAnchor, currentSize, 16, 24),

    SIZE(ValueRecord, 40, 48),
    AT(ValueRecord, reserved1, 0, 0),
    AT(ValueRecord, nullIndicator, 12, 12),
    AT(ValueRecord, secondFlag, 13, 13),
    AT(ValueRecord, length, 16, 16),
    AT(ValueRecord, capacity, 20, 20),
    AT(ValueRecord, copiedLength, 24, 24),
    AT(ValueRecord, processingClass, 28, 28),
    AT(ValueRecord, data, 32, 32),
    AT(ValueRecord, target, 36, 40),

    SIZE(OdbcDate, 6, 6),
    AT(OdbcDate, year, 0, 0),
    AT(OdbcDate, month, 2, 2),
    AT(OdbcDate, day, 4, 4),

    SIZE(OdbcTimestamp, 16, 16),
    AT(OdbcTimestamp, year, 0, 0),
    AT(OdbcTimestamp, month, 2, 2),
    AT(OdbcTimestamp, day, 4, 4),
    AT(OdbcTimestamp, hour, 6, 6),
    AT(OdbcTimestamp, minute, 8, 8),
    AT(OdbcTimestamp, second, 10, 10),
    AT(OdbcTimestamp, fraction, 12, 12),

    SIZE(KorvMaskSettings, 52, 96),
    AT(KorvMaskSettings, size, 0, 0),
    AT(KorvMaskSettings, flags, 4, 8),
    AT(KorvMaskSettings, columnCount, 8, 12),
    AT(KorvMaskSettings, columns, 12, 16),
    AT(KorvMaskSettings, rules, 16, 24),
    AT(KorvMaskSettings, rulesFile, 20, 32),
    AT(KorvMaskSettings, folders, 24, 40),
    AT(KorvMaskSettings, folderCount, 28, 48),
    AT(KorvMaskSettings, secrets, 32, 56),
    AT(KorvMaskSettings, secretCount, 36, 64),
    AT(KorvMaskSettings, secretsFile, 40, 72),
    AT(KorvMaskSettings, fileFolders, 44, 80),
    AT(KorvMaskSettings, fileFolderCount, 48, 88),

    SIZE(KorvMaskSecret, 12, 24),
    AT(KorvMaskSecret, name, 0, 0),
    AT(KorvMaskSecret, bytes, 4, 8),
    AT(KorvMaskSecret, length, 8, 16),

    SIZE(KorvMaskColumn, 72, 128),
    AT(KorvMaskColumn, name, 0, 0),
    AT(KorvMaskColumn, actionName, 4, 8),
    AT(KorvMaskColumn, action, 8, 16),
    AT(KorvMaskColumn, rulesLine, 12, 20),
    AT(KorvMaskColumn, rulePattern, 16, 24),
    AT(KorvMaskColumn, related, 20, 32),
    AT(KorvMaskColumn, promises, 24, 36),
    AT(KorvMaskColumn, onError, 28, 40),
    AT(KorvMaskColumn, module, 32, 48),
    AT(KorvMaskColumn, files, 36, 56),
    AT(KorvMaskColumn, fileCount, 40, 64),
    AT(KorvMaskColumn, method, 44, 72),
    AT(KorvMaskColumn, isDisguise, 48, 80),
    AT(KorvMaskColumn, secret, 52, 88),
    AT(KorvMaskColumn, fingerprint, 56, 96),
    AT(KorvMaskColumn, scope, 60, 104),
    AT(KorvMaskColumn, mapping, 64, 112),
    AT(KorvMaskColumn, relatedName, 68, 120),

    SIZE(KorvMaskProvider, 12, 24),
    AT(KorvMaskProvider, name, 0, 0),
    AT(KorvMaskProvider, module, 4, 8),
    AT(KorvMaskProvider, entry, 8, 16),

    SIZE(KorvMaskStrings, 32, 48),
    AT(KorvMaskStrings, count, 0, 0),
    AT(KorvMaskStrings, first, 8, 8),
    AT(KorvMaskStrings, offsetBits, 16, 16),
    AT(KorvMaskStrings, offsets, 20, 24),
    AT(KorvMaskStrings, bytes, 24, 32),
    AT(KorvMaskStrings, validity, 28, 40),

    SIZE(KorvMaskFailures, 12, 16),
    AT(KorvMaskFailures, code, 0, 0),
    AT(KorvMaskFailures, count, 4, 8),

    SIZE(KorvMaskStatistics, 56, 64),
    AT(KorvMaskStatistics, values, 0, 0),
    AT(KorvMaskStatistics, nulls, 8, 8),
    AT(KorvMaskStatistics, masked, 16, 16),
    AT(KorvMaskStatistics, unchanged, 24, 24),
    AT(KorvMaskStatistics, formulas, 32, 32),
    AT(KorvMaskStatistics, failed, 40, 40),
    AT(KorvMaskStatistics, failures, 48, 48),
    AT(KorvMaskStatistics, failureCount, 52, 56),

    SIZE(KorvMaskResult, 92, 120),
    AT(KorvMaskResult, strings, 0, 0),
    AT(KorvMaskResult, states, 32, 48),
    AT(KorvMaskResult, statistics, 36, 56),

    SIZE(KorvMaskToken, 12, 24),
    AT(KorvMaskToken, id, 0, 0),
    AT(KorvMaskToken, name, 4, 8),
    AT(KorvMaskToken, text, 8, 16),

    SIZE(KorvMaskRecord, 48, 64),
    AT(KorvMaskRecord, status, 0, 0),
    AT(KorvMaskRecord, code, 4, 4),
    AT(KorvMaskRecord, row, 8, 8),
    AT(KorvMaskRecord, column, 16, 16),
    AT(KorvMaskRecord, isFirst, 20, 20),
    AT(KorvMaskRecord, rulesLine, 24, 24),
    AT(KorvMaskRecord, rulesPosition, 28, 28),
    AT(KorvMaskRecord, message, 32, 32),
    AT(KorvMaskRecord, provider, 36, 40),
    AT(KorvMaskRecord, tokens, 40, 48),
    AT(KorvMaskRecord, tokenCount, 44, 56),

    SIZE(PrvCall, 40, 72),
    AT(PrvCall, context, 0, 0),
    AT(PrvCall, block, 4, 8),
    AT(PrvCall, service, 8, 16),
    AT(PrvCall, value, 12, 24),
    AT(PrvCall, result, 16, 32),
    AT(PrvCall, key, 20, 40),
    AT(PrvCall, keyLength, 24, 48),
    AT(PrvCall, reserved1, 28, 52),
    AT(PrvCall, related, 32, 56),
    AT(PrvCall, method, 36, 64),

    SIZE(PrvOperand, 20, 24),
    AT(PrvOperand, key, 0, 0),
    AT(PrvOperand, code, 4, 8),
    AT(PrvOperand, flags, 6, 10),
    AT(PrvOperand, kind, 8, 12),
    AT(PrvOperand, minimum, 12, 16),
    AT(PrvOperand, maximum, 16, 20),

    SIZE(PrvErrorText, 8, 16),
    AT(PrvErrorText, code, 0, 0),
    AT(PrvErrorText, text, 4, 8),

    SIZE(PrvEntry, 64, 128),
    AT(PrvEntry, interfaceVersion, 0, 0),
    AT(PrvEntry, name, 4, 8),
    AT(PrvEntry, operands, 8, 16),
    AT(PrvEntry, operandCount, 12, 24),
    AT(PrvEntry, errors, 16, 32),
    AT(PrvEntry, errorCount, 20, 40),
    AT(PrvEntry, open, 24, 48),
    AT(PrvEntry, mask, 28, 56),
    AT(PrvEntry, close, 32, 64),
    AT(PrvEntry, maskBatch, 36, 72),
    AT(PrvEntry, unmask, 40, 80),
    AT(PrvEntry, promises, 44, 88),
    AT(PrvEntry, sampleRules, 48, 96),
    AT(PrvEntry, sampleRuleCount, 52, 104),
    AT(PrvEntry, methods, 56, 112),
    AT(PrvEntry, methodCount, 60, 120),

    SIZE(PrvMethod, 8, 16),
    AT(PrvMethod, name, 0, 0),
    AT(PrvMethod, flags, 4, 8),

    SIZE(OprDefI, 72, 96),
    SIZE(OprDefX, 72, 96),
    SIZE(wchar_t, 4, 4),
    SIZE(void*, 4, 8),

    BYTES(BlockHeader, eyeCatcher, 4, 4),
    BYTES(CtrlBlkI, reserved3, 40, 40),
    BYTES(CtrlBlkI, fieldRefs, 12, 24),
    BYTES(FieldDefI, dataType, 2, 2),
    BYTES(FieldDefX, fldValue2, 2, 2),
    BYTES(FieldRefX, fieldPos, 2, 2),
    BYTES(OprDef, oprCode, 2, 2),
    BYTES(OprDef, valueFlag, 1, 1),
    BYTES(ParamDesc, value, 4, 8),
    BYTES(TextDesc, head, 4, 8),
    BYTES(PrvDesc, prvAttr2, 4, 4),
    BYTES(PrvRecord, prvAttr2, 2, 2),
    BYTES(CnvOptions, flag, 1, 1),
    BYTES(ErrorRecord, tokenSlotCount, 2, 2),
    BYTES(ErrorRecord, tokenSlots, 8, 16),
    BYTES(ValueRecord, secondFlag, 1, 1),
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

/* Walks the members of the record in row `at`. */
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
        faults += expect(rows[i].what, rows[i].found, rows[i].expected[sizeof(void*) == 8]);
        if (rows[i].kind == recordRow) faults += faultsOfOrder(i);
    }
    return faults != 0;
}
