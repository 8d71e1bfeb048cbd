/* A provider that is sound (DEFECT is 0), or has one defect of those that tests find.
 *
 * It adds a number, which depends on the rule, to each digit and letter. The defect's name stands
 * where it comes in: IS(null_crash). */
#include <fcntl.h>
#include <korv/provider.h>
#include <locale.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>
#include <wchar.h>

#include "defect_numbers.h"

#define IS(name) (DEFECT == DEFECT_##name)

enum { LONGEST = 8000, MAXIMUM = 9999 };

static void crash(void) {
    raise(SIGSEGV);
}

/* ---- Loading --------------------------------------------------------------------------------- */

#if DEFECT == DEFECT_missing_symbol
extern int korvNoSuchFunction(void);
#endif

#if DEFECT == DEFECT_extra_export
__attribute__((visibility("default"))) int korvExtraExport(void) {
    return 1;
}
#endif

#if DEFECT == DEFECT_text_relocation
#ifdef __x86_64__
__asm__(".text\n.balign 8\n.quad ErrorCapture\n");
#else
__asm__(".text\n.balign 8\n.long ErrorCapture\n");
#endif
#endif

#if DEFECT == DEFECT_program
int main(void) {
    return 0;
}
#endif

static void* volatile kept;

__attribute__((constructor)) static void construct(void) {
    if (IS(printing_constructor)) {
        if (write(1, "loaded\n", 7) < 0) abort();
    }
    if (IS(slow_constructor)) usleep(150000);
    if (IS(leaking_constructor)) kept = malloc(1000);
    if (IS(signal_in_constructor)) signal(SIGUSR1, SIG_IGN);
}

/* ---- Tables ---------------------------------------------------------------------------------- */

enum { OPERAND_KEY = 1, OPERAND_TEXT, OPERAND_PER, OPERAND_STRICT };
static PrvOperand operands[] = {
    {"KEY", OPERAND_KEY, PRV_OPERAND_REQUIRED, OPR_VALUE_INTEGER, IS(bounds_reversed) ? 10000 : 1,
     MAXIMUM},
    {IS(key_twice) ? "KEY" : "TEXT", OPERAND_TEXT, 0, IS(kind_unknown) ? 7 : OPR_VALUE_WIDE, 0, 0},
    {"PER", OPERAND_PER, PRV_OPERAND_COLUMN, OPR_VALUE_NARROW, 0, 0},
    {"STRICT", OPERAND_STRICT, PRV_OPERAND_CHECK, OPR_VALUE_NONE, 0, 0},
};

enum {
    ERROR_NOTHING = 1,
    ERROR_TOO_LONG,
    ERROR_NO_MEMORY,
    ERROR_FORBIDDEN,
    ERROR_NOT_TEXT,
    ERROR_OPERAND
};
static const PrvErrorText errors[] = {
    {ERROR_NOTHING, "no letter and no digit"},
    {IS(error_twice) ? ERROR_NOTHING : ERROR_TOO_LONG, "too long"},
    {ERROR_NO_MEMORY, "out of memory"},
    {ERROR_FORBIDDEN, IS(error_full_stop) ? "a forbidden character." : "a forbidden character"},
    {ERROR_NOT_TEXT, "not text"},
    {ERROR_OPERAND, "an operand is missing or has no value"},
};

static const PrvMethod methods[] = {
    {IS(method_capital) ? "Plain" : "plain", 0},
    {"keyed", PRV_METHOD_KEYED},
};

static const char* const sampleRules[] = {
    IS(sample_malformed) ? PROVIDER_NAME ", method=none" : PROVIDER_NAME ", method=plain, key=17",
    PROVIDER_NAME ", method=plain, key=5, text=abc, per=ID, strict",
};

/* ---- Errors ---------------------------------------------------------------------------------- */

static int32_t fail(const PrvCall* call, uint32_t code, int32_t length) {
    const FieldDefX* field = call->block->fieldRefs.fieldDef;
    if (IS(silent_error)) return (int32_t)code;
    if (IS(undeclared_code)) code = 77;
    if (IS(chain_replaced)) call->context->errorAnchor->head = NULL;
    if (IS(printing)) {
        printf("error %u\n", (unsigned)code);
        fflush(stdout);
    }
    if (ErrorCapture(call->context, code, call->service->svcCode1, 2) == KORV_SUCCESS) {
        TokenCapture(call->context, field->wideText, WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
        if (IS(null_token)) TokenCapture(call->context, NULL, WVARCHAR_SZ, KORV_TOKID_ERRMSG, 0);
        if (length >= 0) TokenCapture(call->context, &length, INTEGER, KORV_TOKID_SRCLEN, 0);
    } else if (IS(capture_unchecked)) {
        crash();
    }
    return (int32_t)code;
}

static void captureText(const PrvCall* call, const void* text, int16_t type) {
    if (ErrorCapture(call->context, ERROR_NOTHING, 0, 1) == KORV_SUCCESS) {
        TokenCapture(call->context, text, type, KORV_TOKID_PARMVALUE, 0);
    }
}

/* ---- A rule ---------------------------------------------------------------------------------- */

typedef struct State {
    int32_t key;
    int strict;
    wchar_t* text;
    int32_t calls;
    int32_t lastLength;
    int32_t instance;
    uint8_t secret[32];
    int keyed;
    char before[64];
} State;

static int32_t instances;
static char* growing;
static size_t grown;

/* The copy of an operand's text; NULL without memory. */
static wchar_t* copyText(const OprDefX* operand) {
    const wchar_t* text = operand->wideValue;
    wchar_t small[64];
    wchar_t* copy;
    if (IS(text_overflow) && text) {
        wcscpy(small, text);
        kept = small;
        return wcsdup(small);
    }
    if (!IS(kind_crash) && !text) text = L"";
    copy = malloc((wcslen(text) + 1) * sizeof *copy);
    if (copy || IS(allocation_unchecked)) wcscpy(copy, text);
    return copy;
}

static void changeProcess(void) {
    static pthread_t thread;
    if (IS(locale_changed)) setlocale(LC_ALL, "C.UTF-8");
    if (IS(signal_changed)) signal(SIGPIPE, SIG_IGN);
    if (IS(umask_changed)) umask(0);
    if (IS(environment_changed)) setenv("KORV_BROKEN", "1", 1);
    if (IS(descriptor_left) && open("/dev/null", O_RDONLY) < 0) abort();
    if (IS(thread_left)) pthread_create(&thread, NULL, (void* (*)(void*))(void*)pause, NULL);
    if (IS(timer_set)) alarm(100000);
    if (IS(memory_grows)) {
        char* larger = realloc(growing, grown + 100);
        if (larger) {
            growing = larger;
            grown += 100;
        }
    }
}

static void closeRule(void* state) {
    State* made = state;
    if (!made) return;
    if (!IS(open_leak)) free(made->text);
    free(made);
}

static int32_t refuse(const PrvCall* call, State* made, uint32_t code) {
    closeRule(made);
    return fail(call, code, -1);
}

static int32_t openRule(const PrvCall* call, void** state) {
    const OprDefX* operand;
    const OprDefX* key = NULL;
    State* made = calloc(1, sizeof *made);
    if (!made) return fail(call, ERROR_NO_MEMORY, -1);
    made->instance = ++instances;
    changeProcess();
    if (IS(table_changes)) --operands[0].maximum;
    if (IS(refuses_rule)) return refuse(call, made, ERROR_OPERAND);
    for (operand = call->service->oprDefs; operand; operand = operand->link) {
        switch (operand->oprCode) {
            case OPERAND_KEY:
                key = operand;
                break;
            case OPERAND_TEXT:
                if (!IS(kind_crash) && operand->valueKind != OPR_VALUE_WIDE) {
                    return refuse(call, made, ERROR_OPERAND);
                }
                if (!IS(repeated_leak)) free(made->text);
                made->text = copyText(operand);
                if (!made->text) return refuse(call, made, ERROR_NO_MEMORY);
                break;
            case OPERAND_STRICT:
                made->strict = 1;
                break;
            case OPERAND_PER:
                break;
            default:
                if (IS(unknown_silent)) {
                    closeRule(made);
                    return ERROR_OPERAND;
                }
                return refuse(call, made, ERROR_OPERAND);
        }
    }
    if (!IS(missing_crash) && (!key || key->valueKind != OPR_VALUE_INTEGER)) {
        return refuse(call, made, ERROR_OPERAND);
    }
    made->key = (int32_t)key->intValue;
    if (IS(maximum_crash) && made->key == MAXIMUM) crash();
    if (IS(beyond_crash) && made->key > MAXIMUM) crash();
    if (IS(thirteen_crash) && made->key == 13) crash();
    if (made->key < 1 || made->key > MAXIMUM) return refuse(call, made, ERROR_OPERAND);
    made->keyed = call->method && strcmp(call->method, "keyed") == 0;
    if (made->keyed) {
        if (!IS(key_unchecked) && (!call->key || call->keyLength != 32)) {
            return refuse(call, made, ERROR_OPERAND);
        }
        memcpy(made->secret, call->key, 32);
    }
    *state = made;
    return 0;
}

/* ---- Values ---------------------------------------------------------------------------------- */

/* The number that is added to characters, 1 to 9. */
static int32_t numberFor(State* state, const PrvCall* call, int wide) {
    int32_t number = state->key;
    if (state->keyed) number += state->secret[0];
    if (call->related) {
        if (IS(related_crash) || call->related->nullIndicator != 1) {
            number += (int32_t)strlen(call->related->data);
        }
    }
    if (IS(call_counter)) number += ++state->calls;
    if (IS(earlier_value)) number += state->lastLength;
    if (IS(instance_counter)) number += state->instance;
    if (IS(process_id)) number += (int32_t)getpid();
    if (IS(process_locale)) number += strcmp(setlocale(LC_CTYPE, NULL), "C") != 0;
    if (IS(time_zone)) {
        tzset();
        number += (int32_t)(labs(timezone) / 1800 % 5);
    }
    if (IS(wide_differs)) number += wide;
    if (IS(target_read)) number += *(const unsigned char*)call->value->target;
    if (IS(check_changes)) number += state->strict;
    if (IS(other_results)) ++number;
    if (IS(clock_read)) {
        struct timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        number += (int32_t)(now.tv_nsec / 1000);
    }
    return number % 9 + 1;
}

static void spendTime(int32_t length) {
    volatile int64_t sink = 0;
    if (IS(slow_value) && length >= 5000) {
        const clock_t end = clock() + CLOCKS_PER_SEC * 11 / 10;
        while (clock() < end) ++sink;
    }
    if (IS(cubic_time)) {
        const int64_t part = length / 100;
        int64_t i;
        for (i = 0; i < part * part * part * 30; ++i) ++sink;
    }
}

static uint32_t shifted(uint32_t c, uint32_t first, uint32_t count, int32_t number, int back) {
    const uint32_t step = back ? count - (uint32_t)number % count : (uint32_t)number;
    return first + (c - first + step) % count;
}

#define MASK masknarrow
#define CHAR char
#define UNSIGNED unsigned char
#define IS_WIDE 0
#include "broken_text.h"
#undef MASK
#undef CHAR
#undef UNSIGNED
#undef IS_WIDE
#define MASK maskwide
#define CHAR wchar_t
#define UNSIGNED uint32_t
#define IS_WIDE 1
#include "broken_text.h"

/* Masks or unmasks; returns the code of an error, or 0. The value's length goes to `length`. */
static uint32_t change(State* state, const PrvCall* call, int back, int32_t* length) {
    const int16_t type = call->block->fieldRefs.fieldDef->dataType;
    *length = -1;
    if (type == VARCHAR_SZ) return masknarrow(state, call, back, length);
    if (type == WVARCHAR_SZ) return maskwide(state, call, back, length);
    return ERROR_NOT_TEXT;
}

static void useMemory(void) {
    char* work;
    if (IS(mask_allocation)) {
        work = malloc(100);
        *(volatile char*)work = 0;
        kept = work;
        free(work);
    }
    if (IS(mask_leak)) kept = malloc(10);
    if (IS(large_frame)) {
        volatile char frame[sizeof(void*) == 4 ? 40000 : 100000];
        size_t i;
        for (i = 0; i < sizeof frame; i += 1000) frame[i] = 1;
    }
#if DEFECT == DEFECT_aligned_stack
    {
        typedef float Four __attribute__((vector_size(16)));
        volatile Four four = {1, 2, 3, 4};
        four = four + four;
    }
#endif
#if DEFECT == DEFECT_rounding_changed
    {
        unsigned short control;
        __asm__ volatile("fnstcw %0" : "=m"(control));
        control |= 0x0800;
        __asm__ volatile("fldcw %0" : : "m"(control));
    }
#endif
}

static int32_t run(void* opened, const PrvCall* call, int back) {
    State* state = opened;
    int32_t length;
    const uint32_t code = change(state, call, back, &length);
    useMemory();
    state->lastLength = length;
    if (IS(clear_token) && code) {
        captureText(call, call->value->data, call->block->fieldRefs.fieldDef->dataType);
    }
    if (IS(clear_token_before)) {
        if (code) captureText(call, state->before, VARCHAR_SZ);
        if (call->block->fieldRefs.fieldDef->dataType == VARCHAR_SZ && length > 0) {
            snprintf(state->before, sizeof state->before, "%s", (const char*)call->value->data);
        }
    }
    if (IS(key_token) && code && state->keyed) {
        char digits[65];
        int i;
        for (i = 0; i < 32; ++i) snprintf(digits + 2 * i, 3, "%02x", state->secret[i]);
        captureText(call, digits, VARCHAR_SZ);
    }
    if (IS(error_on_success) && !code) fail(call, ERROR_NOTHING, length);
    return code ? fail(call, code, length) : 0;
}

static int32_t maskValue(void* state, const PrvCall* call) {
    return run(state, call, 0);
}

static int32_t unmaskValue(void* state, const PrvCall* call) {
    return run(state, call, 1);
}

static int32_t maskBatch(void* opened, const PrvCall* call, uint32_t count, int32_t* statuses) {
    State* state = opened;
    PrvCall one = *call;
    uint32_t i;
    const int differs = IS(batch_differs) || (IS(long_batch) && count > 40);
    if (differs) ++state->key;
    for (i = 0; i < count; ++i) {
        int32_t length;
        const uint32_t code = change(state, &one, 0, &length);
        if (code) statuses[i] = 1;
        if (IS(batch_captures) && code) fail(&one, code, length);
        ++one.value;
        ++one.result;
        if (one.related) ++one.related;
    }
    if (differs) --state->key;
    return 0;
}

static uint32_t promises(const void* state) {
    (void)state;
    return PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_LENGTH_KEPT | PRV_PROMISE_FORMAT_KEPT |
           PRV_PROMISE_REVERSIBLE | (IS(promise_unknown) ? 64u : 0u);
}

#define ENTRY                                                                                     \
    {                                                                                             \
        IS(version_99) ? 99 : PRV_INTERFACE_VERSION, IS(other_name) ? "OTHER" : PROVIDER_NAME,    \
            operands, sizeof operands / sizeof *operands, errors, sizeof errors / sizeof *errors, \
            openRule, maskValue, IS(no_close) ? NULL : closeRule, maskBatch, unmaskValue,         \
            promises, sampleRules, sizeof sampleRules / sizeof *sampleRules, methods,             \
            sizeof methods / sizeof *methods                                                      \
    }

__attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void) {
    static const PrvEntry entries[] = {ENTRY, ENTRY};
    static int calls;
#if DEFECT == DEFECT_missing_symbol
    if (korvNoSuchFunction()) return NULL;
#endif
    if (IS(entry_null)) return NULL;
    return &entries[IS(entry_changes) ? calls++ % 2 : 0];
}
