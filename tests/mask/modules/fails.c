/* FAILS: fails as the first word of the value tells it to; every other value gets an `x` in front.
 * Operand `refuse`: open fails, with a token. */
#include "answer.h"

enum { ONE = 1, TWO, AFTER_TWO, SECRET, UNLISTED, SLOTS, LINES, REFUSED };

static int32_t capture(const PrvCall* call, uint32_t code, int16_t slots) {
    return ErrorCapture(call->context, code, 0, slots) == 0 ? (int32_t)code : -1;
}

/* A record may be missing when there was no memory for it. */
static int hasRecord(const PrvCall* call) {
    return call->context->errorAnchor->head != NULL;
}

static void tokenNumber(const PrvCall* call, uint32_t id, int32_t number) {
    if (hasRecord(call)) TokenCapture(call->context, &number, INTEGER, id, 0);
}

static void tokenText(const PrvCall* call, uint32_t id, const wchar_t* text) {
    if (hasRecord(call)) TokenCapture(call->context, text, WVARCHAR_SZ, id, 0);
}

/* The value between two words, as a token. */
static void tokenWithValue(const PrvCall* call) {
    wchar_t text[200] = L"the value ";
    const size_t start = wcslen(text);
    size_t i;
    for (i = 0; i < 100; ++i) {
        text[start + i] = isWide(call) ? ((const wchar_t*)call->value->data)[i]
                                       : (wchar_t)((const char*)call->value->data)[i];
        if (text[start + i] == 0) break;
    }
    wcscat(text, L" is bad");
    tokenText(call, KORV_TOKID_SRCDATA, text);
}

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    if (begins(call, call->value, "one")) {
        const int32_t code = capture(call, ONE, 3);
        tokenText(call, KORV_TOKID_COLNAME, call->block->fieldRefs.fieldDef->wideText);
        tokenNumber(call, KORV_TOKID_SRCLEN, 7);
        tokenNumber(call, KORV_TOKID_EXPSRCLEN, 12);
        return code;
    }
    if (begins(call, call->value, "two")) {
        const int32_t code = capture(call, TWO, 1);
        tokenNumber(call, KORV_TOKID_CHAR_POS, 9);
        capture(call, AFTER_TWO, 0);
        return code;
    }
    if (begins(call, call->value, "none")) return 77;
    if (begins(call, call->value, "secret")) {
        const int32_t code = capture(call, SECRET, 2);
        tokenWithValue(call);
        tokenNumber(call, KORV_TOKID_CHAR_POS, 4);
        return code;
    }
    if (begins(call, call->value, "unlisted")) return capture(call, UNLISTED, 1);
    if (begins(call, call->value, "slots")) {
        const double real = 1.5;
        const int32_t code = capture(call, SLOTS, 4);
        tokenNumber(call, KORV_TOKID_CHAR_POS, 5);
        if (hasRecord(call)) {
            TokenCapture(call->context, &real, DOUBLE, KORV_TOKID_SEED, 0); /* cannot be captured */
        }
        return code;
    }
    if (begins(call, call->value, "lines")) {
        const wchar_t text[] = {L'a', L'\n', L'\r', 0xD800, 0x110000, 0x1B, L'b', 0};
        const int32_t code = capture(call, LINES, 1);
        tokenText(call, KORV_TOKID_PATH, text);
        return code;
    }
    copyValue(call, call->value, call->result);
    memmove((char*)call->value->target + (isWide(call) ? sizeof(wchar_t) : 1), call->value->target,
            (size_t)call->result->length);
    if (isWide(call)) {
        *(wchar_t*)call->value->target = L'x';
    } else {
        *(char*)call->value->target = 'x';
    }
    call->result->length += isWide(call) ? (int32_t)sizeof(wchar_t) : 1;
    return 0;
}

static int32_t open(const PrvCall* call, void** state) {
    *state = NULL;
    if (call->service->oprDefs == NULL) return 0;
    capture(call, REFUSED, 1);
    tokenText(call, KORV_TOKID_METHOD, L"refuse");
    return REFUSED;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvOperand operands[] = {{"REFUSE", 1, 0, OPR_VALUE_NONE, 0, 0}};
    static const PrvErrorText errors[] = {
        {ONE, "too few digits"},
        {TWO, "the first error"},
        {AFTER_TWO, "the second error"},
        {SECRET, "a bad value"},
        {SLOTS, "slots without text"},
        {LINES, "a text of lines"},
        {REFUSED, "a rule that is refused"},
    };
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = "FAILS",
        .operands = operands,
        .operandCount = 1,
        .errors = errors,
        .errorCount = sizeof errors / sizeof *errors,
        .open = open,
        .mask = mask,
        .close = closeNothing,
    };
    return &entry;
}
