/* Version 1 of the provider interface, as modules outside of this project were built with it. This
 * copy never changes.
 *
 * A provider is a shared object that exports one function, KorvProviderEntry, which returns its
 * PrvEntry. The host calls open once for each rule that names the provider, mask once for each
 * value of the rule's column, and close at the end, all from one thread.
 *
 * open and mask return 0, or any other value after they have captured at least one error in the
 * chain of call->context (ErrorCapture, then TokenCapture for each token). No exception may leave
 * them.
 */
#ifndef MASK_CSV_PROVIDER_H
#define MASK_CSV_PROVIDER_H

#include "korv/korv.h"

#ifdef __cplusplus
extern "C" {
#endif

#define PRV_INTERFACE_VERSION 1

/* One request. open sees no value: value and result are empty there.
 *
 * The column's name is the text of block->fieldRefs.fieldDef, the operands hang from service. The
 * value has no character above 127 when the field's type is VARCHAR_SZ; it is wide text when the
 * type is WVARCHAR_SZ. context->blkCode is 1, so KORV_IsZeroOrZeroLength copies the value to its
 * target.
 *
 * mask leaves the masked text (UTF-8, or wide text) in value->target, which has value->capacity
 * bytes, and its length in bytes, terminator not counted, in result->length; or sets
 * result->nullIndicator to 1. */
typedef struct PrvCall {
    const CtrlBlkI* context; /* the request as the host built it; errors are captured here */
    const CtrlBlkX* block;   /* the converted request */
    const SvcDefX* service;  /* the converted service definition with the rule's operands */
    ValueRecord* value;
    ValueRecord* result;
} PrvCall;

/* Properties of an operand. */
enum {
    PRV_OPERAND_REQUIRED = 1,
    PRV_OPERAND_PATH = 2 /* a file name; the host resolves it against the folder of the rules */
};

/* An operand that the provider takes: `key=value` in a rule, or `key` alone for OPR_VALUE_NONE. The
 * host passes it with oprCode = code, the key as operand text, and a value of the given kind. Of a
 * number it checks the bounds. Keys are upper case. */
typedef struct PrvOperand {
    const char* key;
    uint16_t code;
    uint16_t flags;
    int32_t kind; /* OprValueKind */
    int32_t minimum;
    int32_t maximum;
} PrvOperand;

/* What an error's first code means, for the host's report. */
typedef struct PrvErrorText {
    uint32_t code;
    const char* text;
} PrvErrorText;

typedef struct PrvEntry {
    uint32_t interfaceVersion; /* PRV_INTERFACE_VERSION */
    const char* name;          /* a name that GetProviderID knows */
    const PrvOperand* operands;
    uint32_t operandCount;
    const PrvErrorText* errors;
    uint32_t errorCount;
    int32_t (*open)(const PrvCall* call, void** state);
    int32_t (*mask)(void* state, const PrvCall* call);
    void (*close)(void* state);
} PrvEntry;

#define PRV_ENTRY_SYMBOL "KorvProviderEntry"
typedef const PrvEntry* (*PrvEntryFunction)(void);

#ifdef __cplusplus
}
#endif

#endif
