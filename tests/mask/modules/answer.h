/* What the test modules share: what kind of value they got, and ways to answer it. */
#ifndef KORV_TESTS_ANSWER_H
#define KORV_TESTS_ANSWER_H

#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#include "korv/provider.h"

KORV_API const PrvEntry* KorvProviderEntry(void);

static inline int isWide(const PrvCall* call) {
    return call->block->fieldRefs.fieldDef->dataType == WVARCHAR_SZ;
}

/* Whether the value begins with an ASCII text. */
static inline int begins(const PrvCall* call, const ValueRecord* value, const char* text) {
    size_t i;
    for (i = 0; text[i] != 0; ++i) {
        const int32_t character = isWide(call) ? (int32_t)((const wchar_t*)value->data)[i]
                                               : ((const char*)value->data)[i];
        if (character != text[i]) return 0;
    }
    return 1;
}

/* The value itself as its result. */
static inline void copyValue(const PrvCall* call, ValueRecord* value, ValueRecord* result) {
    const size_t bytes = isWide(call) ? wcslen((const wchar_t*)value->data) * sizeof(wchar_t)
                                      : strlen((const char*)value->data);
    memcpy(value->target, value->data, bytes);
    result->length = (int32_t)bytes;
}

/* A text in UTF-8 as result, in the form that the value has. Providers run in a locale of UTF-8. */
static inline void answer(const PrvCall* call, const char* text) {
    const size_t length = strlen(text);
    call->result->data = call->value->target;
    if (isWide(call)) {
        const size_t count = mbstowcs((wchar_t*)call->value->target, text, length);
        call->result->length = (int32_t)(count * sizeof(wchar_t));
    } else {
        memcpy(call->value->target, text, length);
        call->result->length = (int32_t)length;
    }
}

static inline int32_t openNothing(const PrvCall* call, void** state) {
    (void)call;
    *state = NULL;
    return 0;
}

static inline void closeNothing(void* state) {
    (void)state;
}

#endif
