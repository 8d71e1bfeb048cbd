/* A provider with the one fault that DEFECT names, in maskBatch. Values that begin with `good` are
 * copied, as mask copies all of them. Built as broken_<defect>.so. */
#include "answer.h"

enum {
    DEFECT_BATCH_CHANGING,     /* another result in every call */
    DEFECT_BATCH_ELSEWHERE,    /* result->data is not the target */
    DEFECT_BATCH_ERROR,        /* captures an error, and succeeds */
    DEFECT_BATCH_LEFT,         /* leaves values to mask that it has spoiled before */
    DEFECT_BATCH_LENGTH,       /* a length above the capacity */
    DEFECT_BATCH_NO_RESULT,    /* succeeds without a result */
    DEFECT_BATCH_OVERRUN,      /* a terminator one byte after a target */
    DEFECT_BATCH_OVERRUN_LEFT, /* the same, for a value that it leaves to mask */
    DEFECT_BATCH_RETURNS,      /* leaves all to mask that it has spoiled before */
    DEFECT_BATCH_SOURCE,       /* changes its source */
    DEFECT_BATCH_TARGET,       /* puts another buffer into value->target */
    DEFECT_BATCH_UTF8          /* a sequence that is cut off at the end */
};

static void spoil(ValueRecord* value, ValueRecord* result) {
    memset(value->target, 0xFF, 16);
    result->length = -9;
    result->nullIndicator = 1;
    result->data = value;
}

static void defect(const PrvCall* call, ValueRecord* value, ValueRecord* result, int32_t* status) {
    static wchar_t elsewhere[16];
    static char calls;
    if (DEFECT == DEFECT_BATCH_NO_RESULT) return;
    copyValue(call, value, result);
    switch (DEFECT) {
        case DEFECT_BATCH_CHANGING:
            ((char*)value->target)[0] = (char)('A' + ++calls % 26);
            break;
        case DEFECT_BATCH_ELSEWHERE:
            result->data = elsewhere;
            break;
        case DEFECT_BATCH_ERROR:
            ErrorCapture(call->context, 1, 0, 0);
            break;
        case DEFECT_BATCH_LEFT:
            spoil(value, result);
            *status = -1;
            break;
        case DEFECT_BATCH_LENGTH:
            result->length = value->capacity + 36;
            break;
        case DEFECT_BATCH_OVERRUN_LEFT:
            *status = 1;
            ((char*)value->target)[value->capacity] = 0;
            break;
        case DEFECT_BATCH_OVERRUN:
            ((char*)value->target)[value->capacity] = 0;
            break;
        case DEFECT_BATCH_RETURNS:
            spoil(value, result);
            break;
        case DEFECT_BATCH_SOURCE:
            *(char*)value->data = '#';
            break;
        case DEFECT_BATCH_TARGET:
            value->target = elsewhere;
            result->data = elsewhere;
            break;
        case DEFECT_BATCH_UTF8:
            if (isWide(call)) {
                *(wchar_t*)value->target = 0xDC00;
            } else {
                ((char*)value->target)[result->length++] = (char)0xC3;
            }
            break;
        default:
            break;
    }
}

static int32_t maskBatch(void* state, const PrvCall* call, uint32_t count, int32_t* statuses) {
    PrvCall one = *call;
    uint32_t i;
    (void)state;
    for (i = 0; i < count; ++i) {
        one.value = &call->value[i];
        one.result = &call->result[i];
        if (begins(&one, one.value, "good")) {
            copyValue(&one, one.value, one.result);
        } else {
            defect(&one, one.value, one.result, &statuses[i]);
        }
    }
    return DEFECT == DEFECT_BATCH_RETURNS ? 3 : 0;
}

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    copyValue(call, call->value, call->result);
    return 0;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvErrorText errors[] = {{1, "an error"}};
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = PROVIDER_NAME,
        .errors = errors,
        .errorCount = 1,
        .open = openNothing,
        .mask = mask,
        .close = closeNothing,
        .maskBatch = maskBatch,
    };
    return &entry;
}
