/* A provider with the one fault that DEFECT names, in the masking of single values. Values that
 * begin with `good` are copied. Built as broken_<defect>.so. */
#define _XOPEN_SOURCE 700
#include <locale.h>
#include <signal.h>

#include "answer.h"

enum {
    DEFECT_BEYOND,        /* a unit above U+10FFFF */
    DEFECT_CAPACITY,      /* raises value->capacity, and returns a length below that */
    DEFECT_CHANGING,      /* another result in every call */
    DEFECT_CRASH,         /* a signal that ends the process */
    DEFECT_ELSEWHERE,     /* result->data is not the target */
    DEFECT_LENGTH,        /* a length above the capacity */
    DEFECT_LOCALE,        /* leaves the thread in another locale */
    DEFECT_NEGATIVE,      /* a negative length */
    DEFECT_NO_RECORD,     /* fails without an error */
    DEFECT_NO_RESULT,     /* succeeds without a result */
    DEFECT_OVERRUN,       /* a terminator one byte after the target */
    DEFECT_OVERRUN_64,    /* 64 bytes after the target */
    DEFECT_OVERRUN_ERROR, /* a byte after the target, then an error */
    DEFECT_OVERRUN_NULL,  /* a byte after the target, then NULL as result */
    DEFECT_PROMISES,      /* promises that do not exist, and reversal without unmask */
    DEFECT_SOURCE,        /* changes its source */
    DEFECT_SURROGATE,     /* a surrogate */
    DEFECT_TARGET,        /* puts another buffer into value->target */
    DEFECT_UNITS,         /* a length that is not a whole number of wide characters */
    DEFECT_UTF8,          /* a sequence that is cut off at the end */
    DEFECT_ZERO           /* a zero character inside of the text */
};

/* A result of one to four wide characters or of bytes, by the form of the value. */
static void answerUnits(const PrvCall* call, const wchar_t* wide, int32_t characters,
                        const char* bytes, int32_t length) {
    call->result->length = isWide(call) ? characters * (int32_t)sizeof(wchar_t) : length;
    memcpy(call->value->target, isWide(call) ? (const void*)wide : (const void*)bytes,
           (size_t)call->result->length);
}

static int32_t defect(const PrvCall* call) {
    static wchar_t elsewhere[16];
    static int calls;
    ValueRecord* value = call->value;
    char* end = (char*)value->target + value->capacity;
    char digits[2] = "0";

    switch (DEFECT) {
        case DEFECT_BEYOND:
            answerUnits(call, L"\x110000", 1, "\xF4\x90\x80\x80", 4);
            return 0;
        case DEFECT_CAPACITY:
            value->capacity = INT32_MAX;
            call->result->length = 1 << 26;
            return 0;
        case DEFECT_CHANGING:
            digits[0] = (char)('0' + ++calls % 10);
            answer(call, digits);
            return 0;
        case DEFECT_CRASH:
            raise(SIGSEGV);
            return 0;
        case DEFECT_ELSEWHERE:
            copyValue(call, value, call->result);
            call->result->data = elsewhere;
            return 0;
        case DEFECT_LENGTH:
            copyValue(call, value, call->result);
            call->result->length = value->capacity + 36;
            return 0;
        case DEFECT_LOCALE:
            uselocale(LC_GLOBAL_LOCALE);
            copyValue(call, value, call->result);
            return 0;
        case DEFECT_NEGATIVE:
            copyValue(call, value, call->result);
            call->result->length = -4;
            return 0;
        case DEFECT_NO_RECORD:
            return 5;
        case DEFECT_NO_RESULT:
            return 0;
        case DEFECT_OVERRUN:
            copyValue(call, value, call->result);
            end[0] = 0;
            return 0;
        case DEFECT_OVERRUN_64:
            copyValue(call, value, call->result);
            memset(end, 'x', 64);
            return 0;
        case DEFECT_OVERRUN_ERROR:
            end[0] = 'x';
            ErrorCapture(call->context, 1, 0, 0);
            return 1;
        case DEFECT_OVERRUN_NULL:
            end[0] = 'x';
            call->result->nullIndicator = 1;
            return 0;
        case DEFECT_SOURCE:
            copyValue(call, value, call->result);
            if (isWide(call)) {
                *(wchar_t*)value->data = L'#';
            } else {
                *(char*)value->data = '#';
            }
            return 0;
        case DEFECT_SURROGATE:
            answerUnits(call, L"\xD800", 1, "\xED\xA0\x80", 3);
            return 0;
        case DEFECT_TARGET:
            value->target = elsewhere;
            call->result->data = elsewhere;
            call->result->length = sizeof(wchar_t);
            return 0;
        case DEFECT_UNITS:
            copyValue(call, value, call->result);
            call->result->length -= isWide(call) ? 1 : 0;
            return 0;
        case DEFECT_UTF8:
            answerUnits(call, L"a", 1, "a\xE2\x82", 3);
            return 0;
        case DEFECT_ZERO:
            answerUnits(call, L"a\0b", 3, "a\0b", 3);
            return 0;
        default:
            copyValue(call, value, call->result);
            return 0;
    }
}

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    if (!begins(call, call->value, "good")) return defect(call);
    copyValue(call, call->value, call->result);
    return 0;
}

static uint32_t promises(const void* state) {
    (void)state;
    return DEFECT == DEFECT_PROMISES ? UINT32_MAX : 0;
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
        .promises = promises,
    };
    return &entry;
}
