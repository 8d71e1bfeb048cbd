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
    {recordRow, #record, sizeof(record), {bytes32, bytes64}, 0, 1},
#define AT(record, member, offset32, offset64) \
    {memberRow,                                \
     #record "." #member,                      \
     offsetof(record, member),                 \
     {offset32, offset64},                     \
     BYTES_OF(record, member),                 \
     __alignof__(MEMBER(record, member))},
#define INSIDE(record, member, offset32, offset64) \
    {otherRow, #record "." #member, offsetof(record, member), {offset32, offset64}, 0, 1},
/* Records of one layout: the last member tells where the whole ends. */
#define BYTES(record, member, bytes32, bytes64) \
    {otherRow, "size of " #record "." #member, BYTES_OF(record, member), {bytes32, bytes64}, 0, 1},

/* What is found and what is expected. The members of a record follow it in order. */
static const struct {
    enum RowKind kind;
    const char* what;
    size_t found;
    size_t expected[2];
    size_t size;
    size_t alignment;
} rows[] = {
#include "common/layouts.inc"

    SIZE(KorvMaskSettings, 52, 96) AT(KorvMaskSettings, size, 0, 0)
        AT(KorvMaskSettings, flags, 4, 8) AT(KorvMaskSettings, columnCount, 8, 12)
            AT(KorvMaskSettings, columns, 12, 16) AT(KorvMaskSettings, rules, 16, 24) AT(
                KorvMaskSettings, rulesFile, 20, 32) AT(KorvMaskSettings, folders, 24, 40)
                AT(KorvMaskSettings, folderCount, 28, 48) AT(KorvMaskSettings, secrets, 32, 56) AT(
                    KorvMaskSettings, secretCount, 36, 64) AT(KorvMaskSettings, secretsFile, 40, 72)
                    AT(KorvMaskSettings, fileFolders, 44, 80) AT(KorvMaskSettings, fileFolderCount,
                                                                 48, 88)

                        SIZE(KorvMaskSecret, 12, 24) AT(KorvMaskSecret, name, 0, 0) AT(
                            KorvMaskSecret, bytes, 4, 8) AT(KorvMaskSecret, length, 8, 16)

                            SIZE(KorvMaskColumn, 72, 128) AT(KorvMaskColumn, name, 0, 0) AT(
                                KorvMaskColumn, actionName, 4, 8) AT(KorvMaskColumn, action, 8, 16)
                                AT(KorvMaskColumn, rulesLine, 12,
                                   20) AT(KorvMaskColumn, rulePattern, 16,
                                          24) AT(KorvMaskColumn, related, 20,
                                                 32) AT(KorvMaskColumn, promises, 24, 36)
                                    AT(KorvMaskColumn, onError, 28,
                                       40) AT(KorvMaskColumn, module, 32,
                                              48) AT(KorvMaskColumn, files, 36,
                                                     56) AT(KorvMaskColumn, fileCount, 40, 64)
                                        AT(KorvMaskColumn, method, 44,
                                           72) AT(KorvMaskColumn, isDisguise, 48,
                                                  80) AT(KorvMaskColumn, secret, 52,
                                                         88) AT(KorvMaskColumn, fingerprint, 56, 96)
                                            AT(KorvMaskColumn, scope, 60, 104) AT(
                                                KorvMaskColumn,
                                                mapping, 64,
                                                112) AT(KorvMaskColumn, relatedName, 68, 120)

                                                SIZE(KorvMaskProvider, 12, 24) AT(
                                                    KorvMaskProvider,
                                                    name, 0, 0) AT(KorvMaskProvider, module, 4, 8)
                                                    AT(KorvMaskProvider, entry, 8, 16)

                                                        SIZE(KorvMaskStrings, 32, 48) AT(
                                                            KorvMaskStrings, count,
                                                            0,
                                                            0) AT(KorvMaskStrings, first, 8, 8)
                                                            AT(KorvMaskStrings, offsetBits, 16, 16)
                                                                AT(KorvMaskStrings, offsets, 20,
                                                                   24) AT(KorvMaskStrings, bytes,
                                                                          24,
                                                                          32) AT(KorvMaskStrings,
                                                                                 validity, 28, 40)

                                                                    SIZE(KorvMaskFailures, 12, 16)
                                                                        AT(KorvMaskFailures, code,
                                                                           0,
                                                                           0) AT(KorvMaskFailures,
                                                                                 count, 4, 8)

                                                                            SIZE(KorvMaskStatistics,
                                                                                 56, 64)
                                                                                AT(KorvMaskStatistics,
                                                                                   values, 0, 0)
                                                                                    AT(KorvMaskStatistics,
                                                                                       nulls, 8, 8)
                                                                                        AT(KorvMaskStatistics, masked, 16, 16)
                                                                                            AT(KorvMaskStatistics, unchanged, 24, 24)
                                                                                                AT(KorvMaskStatistics, formulas, 32, 32)
                                                                                                    AT(KorvMaskStatistics, failed, 40, 40)
                                                                                                        AT(KorvMaskStatistics, failures, 48, 48)
                                                                                                            AT(KorvMaskStatistics, failureCount, 52, 56)

                                                                                                                SIZE(KorvMaskResult,
                                                                                                                     92, 120)
                                                                                                                    AT(KorvMaskResult,
                                                                                                                       strings,
                                                                                                                       0, 0)
                                                                                                                        AT(KorvMaskResult, states, 32, 48)
                                                                                                                            AT(KorvMaskResult, statistics, 36, 56)

                                                                                                                                SIZE(KorvMaskToken, 12, 24) AT(KorvMaskToken, id, 0, 0) AT(KorvMaskToken,
                                                                                                                                                                                           name, 4, 8) AT(KorvMaskToken, text, 8, 16)

                                                                                                                                    SIZE(
                                                                                                                                        KorvMaskRecord, 48, 64) AT(KorvMaskRecord, status, 0, 0) AT(KorvMaskRecord,
                                                                                                                                                                                                    code,
                                                                                                                                                                                                    4,
                                                                                                                                                                                                    4) AT(KorvMaskRecord, row, 8, 8)
                                                                                                                                        AT(KorvMaskRecord, column, 16, 16) AT(KorvMaskRecord, isFirst, 20, 20) AT(KorvMaskRecord, rulesLine, 24, 24) AT(KorvMaskRecord, rulesPosition, 28, 28) AT(KorvMaskRecord, message, 32, 32) AT(KorvMaskRecord, provider, 36, 40)
                                                                                                                                            AT(KorvMaskRecord, tokens, 40, 48) AT(KorvMaskRecord, tokenCount, 44, 56)

                                                                                                                                                SIZE(
                                                                                                                                                    PrvCall,
                                                                                                                                                    40,
                                                                                                                                                    72) AT(PrvCall, context, 0, 0) AT(PrvCall, block, 4, 8) AT(PrvCall, service, 8, 16) AT(PrvCall, value, 12, 24) AT(PrvCall, result, 16, 32) AT(PrvCall, key, 20, 40) AT(PrvCall,
                                                                                                                                                                                                                                                                                                                           keyLength, 24, 48) AT(PrvCall, reserved1, 28, 52) AT(PrvCall,
                                                                                                                                                                                                                                                                                                                                                                                related, 32, 56) AT(PrvCall, method, 36, 64)

                                                                                                                                                    SIZE(PrvOperand,
                                                                                                                                                         20, 24)
                                                                                                                                                        AT(PrvOperand, key, 0, 0)
                                                                                                                                                            AT(PrvOperand, code, 4, 8)
                                                                                                                                                                AT(PrvOperand, flags, 6, 10) AT(PrvOperand, kind, 8, 12) AT(PrvOperand, minimum, 12, 16) AT(
                                                                                                                                                                    PrvOperand, maximum, 16, 20)

                                                                                                                                                                    SIZE(PrvErrorText, 8, 16) AT(
                                                                                                                                                                        PrvErrorText, code, 0, 0) AT(PrvErrorText, text,
                                                                                                                                                                                                     4, 8)

                                                                                                                                                                        SIZE(
                                                                                                                                                                            PrvEntry,
                                                                                                                                                                            64, 128)
                                                                                                                                                                            AT(PrvEntry, interfaceVersion, 0, 0) AT(PrvEntry,
                                                                                                                                                                                                                    name,
                                                                                                                                                                                                                    4, 8) AT(PrvEntry, operands, 8, 16) AT(PrvEntry,
                                                                                                                                                                                                                                                           operandCount,
                                                                                                                                                                                                                                                           12, 24) AT(PrvEntry,
                                                                                                                                                                                                                                                                      errors, 16, 32) AT(PrvEntry,
                                                                                                                                                                                                                                                                                         errorCount,
                                                                                                                                                                                                                                                                                         20, 40) AT(PrvEntry, open, 24, 48) AT(PrvEntry, mask, 28, 56) AT(PrvEntry, close, 32, 64) AT(PrvEntry,
                                                                                                                                                                                                                                                                                                                                                                                      maskBatch,
                                                                                                                                                                                                                                                                                                                                                                                      36,
                                                                                                                                                                                                                                                                                                                                                                                      72) AT(PrvEntry, unmask,
                                                                                                                                                                                                                                                                                                                                                                                             40,
                                                                                                                                                                                                                                                                                                                                                                                             80)
                                                                                                                                                                                AT(PrvEntry,
                                                                                                                                                                                   promises,
                                                                                                                                                                                   44,
                                                                                                                                                                                   88)
                                                                                                                                                                                    AT(PrvEntry,
                                                                                                                                                                                       sampleRules,
                                                                                                                                                                                       48,
                                                                                                                                                                                       96)
                                                                                                                                                                                        AT(PrvEntry, sampleRuleCount, 52, 104) AT(PrvEntry, methods,
                                                                                                                                                                                                                                  56,
                                                                                                                                                                                                                                  112)
                                                                                                                                                                                            AT(PrvEntry, methodCount, 60, 120)

                                                                                                                                                                                                SIZE(PrvMethod,
                                                                                                                                                                                                     8, 16) AT(PrvMethod, name, 0, 0) AT(PrvMethod,
                                                                                                                                                                                                                                         flags,
                                                                                                                                                                                                                                         4,
                                                                                                                                                                                                                                         8)

                                                                                                                                                                                                    SIZE(OprDefI, 72, 96) SIZE(OprDefX, 72, 96) SIZE(wchar_t, 4, 4) SIZE(
                                                                                                                                                                                                        void*,
                                                                                                                                                                                                        4,
                                                                                                                                                                                                        8)};

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
