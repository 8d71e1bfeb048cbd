/* REPORT: what it finds in its calls, as text. A value that begins with `locale` gets the locales
 * of open and mask, any other value the members of the call. KorvTestCloseLocale holds the one of
 * close. */
#define _XOPEN_SOURCE 700
#include <langinfo.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <wctype.h>

#include "answer.h"

enum { LOCALE_ROOM = 64 };
KORV_API char KorvTestCloseLocale[LOCALE_ROOM];

typedef struct State {
    char locale[LOCALE_ROOM];
    int valuesAreNull;
} State;

/* i and I are a pair in every locale but the Turkish ones. */
static void describeLocale(char* text) {
    snprintf(text, LOCALE_ROOM, "%s %lX %s", nl_langinfo(CODESET), (unsigned long)towupper(L'i'),
             nl_langinfo(RADIXCHAR));
}

static int32_t reportOpen(const PrvCall* call, void** state) {
    State* made = (State*)calloc(1, sizeof *made);
    if (made == NULL) return ErrorCapture(call->context, 1, 0, 0) + 1;
    describeLocale(made->locale);
    made->valuesAreNull = call->value == NULL && call->result == NULL && call->related == NULL;
    *state = made;
    return 0;
}

static int32_t reportMask(void* state, const PrvCall* call) {
    const State* made = (const State*)state;
    const ValueRecord* value = call->value;
    const FieldDefX* field = call->block->fieldRefs.fieldDef;
    const size_t unit = isWide(call) ? sizeof(wchar_t) : 1;
    char text[400];
    size_t characters;

    if (begins(call, value, "locale")) {
        char locale[LOCALE_ROOM];
        describeLocale(locale);
        snprintf(text, sizeof text, "%s, %s", made->locale, locale);
        answer(call, text);
        return 0;
    }
    characters =
        isWide(call) ? wcslen((const wchar_t*)value->data) : strlen((const char*)value->data);
    snprintf(text, sizeof text,
             "open without values %d, %s value of %u characters, length %d, null %d, room %s, "
             "column %ls, code %d, key %s %u, related %s, reserved %u",
             made->valuesAreNull, isWide(call) ? "wide" : "narrow", (unsigned)characters,
             (int)value->length, (int)value->nullIndicator,
             (size_t)value->capacity >= (characters + 1024) * unit ? "enough" : "missing",
             field->wideText, (int)call->context->blkCode, call->key == NULL ? "NULL" : "given",
             (unsigned)call->keyLength, call->related == NULL ? "NULL" : "given",
             (unsigned)call->reserved1);
    answer(call, text);
    return 0;
}

static void reportClose(void* state) {
    describeLocale(KorvTestCloseLocale);
    free(state);
}

static uint32_t promises(const void* state) {
    (void)state;
    return PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_FORMAT_KEPT;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvErrorText errors[] = {{1, "no memory"}};
    static const char* const samples[] = {"REPORT"};
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = "REPORT",
        .errors = errors,
        .errorCount = 1,
        .open = reportOpen,
        .mask = reportMask,
        .close = reportClose,
        .promises = promises,
        .sampleRules = samples,
        .sampleRuleCount = 1,
    };
    return &entry;
}
