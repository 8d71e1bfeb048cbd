/* VERSION1: a module as it was built for version 1 of the interface: reverses values. NULL comes
 * out as NULL, and is counted. Its record ends at an unreadable page: it has no members of
 * version 2. */
#define _GNU_SOURCE
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "provider_version1.h"

KORV_API const PrvEntry* KorvProviderEntry(void);
KORV_API int KorvTestNulls;

typedef struct State {
    int32_t key;
} State;

static int32_t fail(const PrvCall* call, uint32_t code, int32_t length) {
    if (ErrorCapture(call->context, code, call->service->svcCode1, 2) != 0) return -1;
    TokenCapture(call->context, call->block->fieldRefs.fieldDef->wideText, WVARCHAR_SZ,
                 KORV_TOKID_COLNAME, 0);
    TokenCapture(call->context, &length, INTEGER, KORV_TOKID_SRCLEN, 0);
    return (int32_t)code;
}

static int32_t openRule(const PrvCall* call, void** state) {
    State* made = (State*)calloc(1, sizeof *made);
    if (made == NULL) return fail(call, 3, 0);
    if (call->service->oprDefs != NULL) made->key = (int32_t)call->service->oprDefs->intValue;
    *state = made;
    return 0;
}

/* The key is the length of values that fail. */
static int32_t mask(void* state, const PrvCall* call) {
    const FieldDefX* field = call->block->fieldRefs.fieldDef;
    ValueRecord* value = call->value;
    int32_t characters = 0;
    KORVGetSourceDataLen(value, call->context->fieldRefs.fieldDef, &characters);
    if (characters <= 0) {
        if (value->nullIndicator == 1 && value->data == NULL) {
            __atomic_add_fetch(&KorvTestNulls, 1, __ATOMIC_RELAXED);
        }
        call->result->nullIndicator = 1;
        return 0;
    }
    if (characters == ((const State*)state)->key) return fail(call, 1, characters);
    if (GetSrcBufLen(value, field->dataType) != 0 ||
        KORV_IsZeroOrZeroLength(call->context, value, call->result) != KORV_CLASS_TEXT) {
        return fail(call, 2, characters);
    }
    call->result->data = value->target;
    if (field->dataType == VARCHAR_SZ) {
        KORVRevString((char*)value->target, characters);
        call->result->length = characters;
    } else {
        KORVRevStringW((wchar_t*)value->target);
        call->result->length = characters * (int32_t)sizeof(wchar_t);
    }
    return 0;
}

static void closeRule(void* state) {
    free(state);
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvOperand operands[] = {{"KEY", 1, 0, OPR_VALUE_INTEGER, 0, 9999}};
    static const PrvErrorText errors[] = {
        {1, "the length is the key's"}, {2, "no text"}, {3, "no memory"}};
    static const PrvEntry record = {1, "VERSION1", operands, 1,        errors,
                                    3, openRule,   mask,     closeRule};
    static PrvEntry* entry;
    if (entry == NULL) {
        const size_t page = (size_t)sysconf(_SC_PAGESIZE);
        char* pages =
            (char*)mmap(NULL, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED || mprotect(pages + page, page, PROT_NONE) != 0) abort();
        entry = (PrvEntry*)(pages + page - sizeof record);
        memcpy(entry, &record, sizeof record);
    }
    return entry;
}
