/* A provider of version 1 of the provider interface: replaces each digit by its complement to nine,
 * and checks what the engine passes to it.
 *
 * 32/libkorvprv_cdswap.so and 64/libkorvprv_cdswap.so are this file as it was compiled once, with
 * the headers of that day. It is never compiled again: its purpose is to show that old modules are
 * still served. */
#include <korv/provider.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

enum { OPERAND_AT = 1, OPERAND_NAME = 2, OPERAND_FLAG = 3 };
static const PrvOperand operands[] = {
    {"AT", OPERAND_AT, PRV_OPERAND_REQUIRED, OPR_VALUE_INTEGER, 0, 9},
    {"NAME", OPERAND_NAME, 0, OPR_VALUE_NARROW, 0, 0},
    {"FLAG", OPERAND_FLAG, 0, OPR_VALUE_NONE, 0, 0},
};

enum { ERROR_NO_DIGIT = 1, ERROR_NOT_TEXT = 2, ERROR_BROKEN_INTERFACE = 3 };
static const PrvErrorText errors[] = {
    {ERROR_NO_DIGIT, "no digit"},
    {ERROR_NOT_TEXT, "not text"},
    {ERROR_BROKEN_INTERFACE, "the engine breaks version 1 of the interface"},
};

static int32_t fail(const PrvCall* call, uint32_t code, int32_t number) {
    const FieldDefX* field = call->block->fieldRefs.fieldDef;
    if (ErrorCapture(call->context, code, call->service->svcCode1, 2) == KORV_SUCCESS) {
        TokenCapture(call->context, field->wideText, WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
        TokenCapture(call->context, &number, INTEGER, KORV_TOKID_SRCLEN, 0);
    }
    return (int32_t)code;
}

#define EXPECT(condition) \
    if (!(condition)) return fail(call, ERROR_BROKEN_INTERFACE, __LINE__)

/* What holds in every call. */
static int32_t checkRequest(const PrvCall* call) {
    const FieldDefX* field = call->block->fieldRefs.fieldDef;
    EXPECT(call->context->blkCode == 1);
    EXPECT(memcmp(call->block->header.eyeCatcher, "BLKX", 4) == 0);
    EXPECT(call->block->header.version == 21);
    EXPECT(field && field->wideText);
    EXPECT(field->dataType == VARCHAR_SZ || field->dataType == WVARCHAR_SZ);
    EXPECT(call->context->fieldRefs.fieldDef->dataType == field->dataType);
    EXPECT(call->service->svcCode1 == (uint8_t)GetProviderID("CDSWAP"));
    return 0;
}

typedef struct State {
    int32_t at;
} State;

static int32_t openRule(const PrvCall* call, void** state) {
    const OprDefX* operand;
    int found = 0;
    State* made;
    int32_t status = checkRequest(call);
    if (status) return status;
    EXPECT(!call->value && !call->result);
    for (operand = call->service->oprDefs; operand; operand = operand->link) {
        if (operand->oprCode == OPERAND_AT) {
            found = wcscmp(operand->oprText, L"AT") == 0 && operand->intValue == 2;
        } else if (operand->oprCode == OPERAND_NAME) {
            EXPECT(operand->narrowValueLen == 7 && strcmp(operand->narrowValue, "pq-7.t") == 0);
        } else {
            EXPECT(operand->oprCode == OPERAND_FLAG);
        }
    }
    EXPECT(found);
    made = calloc(1, sizeof *made);
    EXPECT(made);
    made->at = 2;
    *state = made;
    return 0;
}

static void closeRule(void* state) {
    free(state);
}

static int32_t maskValue(void* state, const PrvCall* call) {
    const int wide = call->block->fieldRefs.fieldDef->dataType == WVARCHAR_SZ;
    const int32_t unit = wide ? (int32_t)sizeof(wchar_t) : 1;
    ValueRecord* value = call->value;
    int32_t digits = 0, characters = -1, i;
    int32_t status = checkRequest(call);
    if (status) return status;
    EXPECT(value && call->result && state);
    if (value->nullIndicator) {
        EXPECT(!value->data);
        call->result->nullIndicator = 1;
        return 0;
    }

    EXPECT(value->data && value->target && value->data != value->target);
    EXPECT(value->length == 0);
    if (GetSrcBufLen(value, wide ? WVARCHAR_SZ : VARCHAR_SZ) != KORV_SUCCESS) {
        return fail(call, ERROR_NOT_TEXT, -1);
    }
    KORVGetSourceDataLen(value, call->context->fieldRefs.fieldDef, &characters);
    EXPECT(value->capacity >= (characters + 1024) * unit);
    if (KORV_IsZeroOrZeroLength(call->context, value, call->result) != KORV_CLASS_TEXT) {
        return fail(call, ERROR_NOT_TEXT, characters);
    }
    for (i = ((const State*)state)->at; i < characters; ++i) {
        if (wide) {
            wchar_t* text = (wchar_t*)value->target + i;
            if (*text < L'0' || *text > L'9') continue;
            *text = L'0' + L'9' - *text;
        } else {
            char* text = (char*)value->target + i;
            EXPECT((unsigned char)*text < 128);
            if (*text < '0' || *text > '9') continue;
            *text = (char)('0' + '9' - *text);
        }
        ++digits;
    }
    call->result->length = characters * unit;
    call->result->data = value->target;
    return digits ? 0 : fail(call, ERROR_NO_DIGIT, characters);
}

__attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void) {
    static const PrvEntry entry = {
        PRV_INTERFACE_VERSION,
        "CDSWAP",
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
