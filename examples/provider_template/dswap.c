/* DSWAP, a provider to start from: it swaps the two digits of each pair of neighbours, so 123-45
 * becomes 213-54. In a run with an odd number of digits the last digit stays.
 *
 * The operand AT=n leaves the first n characters unchanged.
 */
#include <korv/provider.h>
#include <stdlib.h>

/* 1. The operands that a rule may have: here one, a number. */
enum { OPERAND_AT = 1 };
static const PrvOperand operands[] = {
    {"AT", OPERAND_AT, 0, OPR_VALUE_INTEGER, 0, 1000},
};

/* 2. The errors, with their texts for reports. */
enum { ERROR_NO_PAIR = 1, ERROR_TOO_LONG = 2, ERROR_NOT_TEXT = 3, ERROR_NO_MEMORY = 4 };
static const PrvErrorText errors[] = {
    {ERROR_NO_PAIR, "no two neighbouring digits"},
    {ERROR_TOO_LONG, "longer than its target"},
    {ERROR_NOT_TEXT, "not text"},
    {ERROR_NO_MEMORY, "out of memory"},
};

/* Captures an error with the name of the column and, unless it is negative, the value's length. The
 * value itself must not appear in an error. */
static int32_t fail(const PrvCall* call, uint32_t code, int32_t length) {
    const FieldDefX* field = call->block->fieldRefs.fieldDef;
    if (ErrorCapture(call->context, code, call->service->svcCode1, 2) == KORV_SUCCESS) {
        TokenCapture(call->context, field->wideText, WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
        if (length >= 0) TokenCapture(call->context, &length, INTEGER, KORV_TOKID_SRCLEN, 0);
    }
    return (int32_t)code;
}

/* 3. Called once for each rule: turns its operands into the provider's state. */
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

/* 4. Called once for each value. The same code swaps in narrow and in wide text, and returns the
 * number of swapped pairs. */
#define DEFINE_SWAP(name, Char)                                                       \
    static int32_t name(Char* text, int32_t length, int32_t at) {                     \
        int32_t pairs = 0;                                                            \
        int32_t i;                                                                    \
        for (i = at; i + 1 < length; ++i) {                                           \
            const Char first = text[i];                                               \
            const Char second = text[i + 1];                                          \
            if (first < '0' || first > '9' || second < '0' || second > '9') continue; \
            text[i++] = second;                                                       \
            text[i] = first;                                                          \
            ++pairs;                                                                  \
        }                                                                             \
        return pairs;                                                                 \
    }
DEFINE_SWAP(swapNarrow, char)
DEFINE_SWAP(swapWide, wchar_t)

static int32_t maskValue(void* state, const PrvCall* call) {
    const int32_t at = ((const State*)state)->at;
    const int16_t type = call->block->fieldRefs.fieldDef->dataType;
    ValueRecord* value = call->value;
    int32_t characters;
    int32_t pairs;

    /* The engine hands no NULL over; other programs may. */
    if (value->nullIndicator == 1 || value->data == NULL) {
        call->result->nullIndicator = 1;
        return 0;
    }

    /* The length of the value in characters and in bytes, and its copy in the target. */
    KORVGetSourceDataLen(value, call->context->fieldRefs.fieldDef, &characters);
    if (GetSrcBufLen(value, type) != KORV_SUCCESS) return fail(call, ERROR_NOT_TEXT, -1);
    if (value->length > value->capacity) return fail(call, ERROR_TOO_LONG, characters);
    if (KORV_IsZeroOrZeroLength(call->context, value, call->result) != KORV_CLASS_TEXT) {
        return fail(call, ERROR_NOT_TEXT, -1);
    }

    /* The masking itself, in the copy. */
    if (type == WVARCHAR_SZ) {
        pairs = swapWide(value->target, characters, at);
        call->result->length = characters * (int32_t)sizeof(wchar_t);
    } else {
        pairs = swapNarrow(value->target, characters, at);
        call->result->length = characters;
    }
    return pairs ? 0 : fail(call, ERROR_NO_PAIR, characters);
}

/* 5. The provider's promises for an opened rule. Swapping twice restores the value, so maskValue is
 * also the function that unmasks. */
static uint32_t promises(const void* state) {
    (void)state;
    return PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT |
           PRV_PROMISE_REVERSIBLE;
}

/* 6. Rules to try the provider with. */
static const char* const sampleRules[] = {"DSWAP", "DSWAP, at=2"};

/* 7. The only name that the module exports. */
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
        NULL, /* maskBatch: masking single values is fast enough here */
        maskValue,
        promises,
        sampleRules,
        sizeof sampleRules / sizeof *sampleRules,
        NULL, /* methods: there is one way to mask, and it has no secret */
        0,
    };
    return &entry;
}
