/* DSWAP, a provider to start from: exchanges the digits of each pair of neighbours, 123-45 becomes
 * 213-54. A run of an odd number of digits keeps its last one.
 *
 * The operand AT=n leaves the first n characters as they are.
 */
#include <mask_csv/provider.h>
#include <stdlib.h>

/* 1. What a rule may say: one operand, a number. */
enum { OPERAND_AT = 1 };
static const PrvOperand operands[] = {
    {"AT", OPERAND_AT, 0, OPR_VALUE_INTEGER, 0, 1000},
};

/* 2. What can go wrong, for the report. */
enum { ERROR_NO_PAIR = 1, ERROR_TOO_LONG = 2, ERROR_NOT_TEXT = 3, ERROR_NO_MEMORY = 4 };
static const PrvErrorText errors[] = {
    {ERROR_NO_PAIR, "no two neighbouring digits"},
    {ERROR_TOO_LONG, "longer than its target"},
    {ERROR_NOT_TEXT, "not text"},
    {ERROR_NO_MEMORY, "no memory"},
};

/* Captures an error with the column's name and, unless it is negative, a length. */
static int32_t fail(const PrvCall* call, uint32_t code, int32_t length) {
    const FieldDefX* field = call->block->fieldRefs.fieldDef;
    if (ErrorCapture(call->context, code, call->service->svcCode1, 2) == KORV_SUCCESS) {
        TokenCapture(call->context, field->wideText, WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
        if (length >= 0) TokenCapture(call->context, &length, INTEGER, KORV_TOKID_SRCLEN, 0);
    }
    return (int32_t)code;
}

/* 3. Once for each rule: its operands become the state of the provider. */
typedef struct State {
    int32_t at;
} State;

static int32_t openRule(const PrvCall* call, void** state) {
    const OprDefX* operand;
    State* made = calloc(1, sizeof *made);
    if (!made) return fail(call, ERROR_NO_MEMORY, -1);
    for (operand = call->service->oprDefs; operand; operand = operand->link) {
        if (operand->oprCode == OPERAND_AT) made->at = (int32_t)operand->intValue;
    }
    *state = made;
    return 0;
}

static void closeRule(void* state) {
    free(state);
}

/* 4. Once for each value: narrow and wide text by the same lines. Returns the pairs exchanged. */
#define DEFINE_SWAP(name, Char)                                                         \
    static int32_t name(Char* text, int32_t length, int32_t at) {                       \
        int32_t pairs = 0;                                                              \
        int32_t i;                                                                      \
        for (i = at; i + 1 < length; ++i) {                                             \
            const Char first = text[i];                                                 \
            const Char second = text[i + 1];                                            \
            if (first < '0' || first > '9' || second < '0' || second > '9') continue;   \
            text[i++] = second;                                                         \
            text[i] = first;                                                            \
            ++pairs;                                                                    \
        }                                                                               \
        return pairs;                                                                   \
    }
DEFINE_SWAP(swapNarrow, char)
DEFINE_SWAP(swapWide, wchar_t)

static int32_t maskValue(void* state, const PrvCall* call) {
    const int32_t at = ((const State*)state)->at;
    const int16_t type = call->block->fieldRefs.fieldDef->dataType;
    ValueRecord* value = call->value;
    int32_t characters;
    int32_t pairs;

    /* A null or empty value stays one. */
    KORVGetSourceDataLen(value, call->context->fieldRefs.fieldDef, &characters);
    if (characters <= 0) {
        call->result->nullIndicator = 1;
        return 0;
    }

    /* Its bytes, and its copy in the target. */
    if (GetSrcBufLen(value, type) != KORV_SUCCESS) return fail(call, ERROR_NOT_TEXT, -1);
    if (value->length > value->capacity) return fail(call, ERROR_TOO_LONG, characters);
    if (KORV_IsZeroOrZeroLength(call->context, value, call->result) != KORV_CLASS_TEXT) {
        return fail(call, ERROR_NOT_TEXT, -1);
    }

    /* The masking itself. */
    if (type == WVARCHAR_SZ) {
        pairs = swapWide(value->target, characters, at);
        call->result->length = characters * (int32_t)sizeof(wchar_t);
    } else {
        pairs = swapNarrow(value->target, characters, at);
        call->result->length = characters;
    }
    call->result->data = value->target;
    return pairs ? 0 : fail(call, ERROR_NO_PAIR, characters);
}

/* 5. The one name that the module exports. */
__attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void) {
    static const PrvEntry entry = {
        PRV_INTERFACE_VERSION,
        "DSWAP",
        operands,
        sizeof operands / sizeof *operands,
        errors,
        sizeof errors / sizeof *errors,
        openRule,
        maskValue,
        closeRule,
    };
    return &entry;
}
