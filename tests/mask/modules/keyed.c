/* KEYED: two methods with a secret, `first` and `second`, and two without, `plain` and `other`. A
 * value becomes the method and its key, in hexadecimal digits: `first 0123...`, `plain none`. Its
 * operand PROMISE is what it promises. A value that begins with `environment` tells whether the
 * process has the variable that the operand VARIABLE names. To unmask, it answers `clear`.
 *
 * METHODS_FROM and METHODS_TO leave out methods; ONE_WAY leaves out unmask. */
#include <stdio.h>
#include <stdlib.h>

#include "answer.h"

enum { PROMISE = 40, VARIABLE = 50 };

typedef struct State {
    uint32_t promises;
    int hasVariable;
} State;

static int32_t keyedOpen(const PrvCall* call, void** state) {
    State* made = (State*)calloc(1, sizeof *made);
    const OprDefX* operand;
    if (made == NULL) return ErrorCapture(call->context, 1, 0, 0) + 1;
    for (operand = call->service->oprDefs; operand != NULL; operand = operand->link) {
        if (operand->oprCode == PROMISE) made->promises = (uint32_t)operand->intValue;
        if (operand->oprCode == VARIABLE) made->hasVariable = getenv(operand->narrowValue) != NULL;
    }
    *state = made;
    return 0;
}

static int32_t keyedMask(void* state, const PrvCall* call) {
    char text[100];
    int length = snprintf(text, sizeof text, "%s ", call->method);
    uint32_t i;
    if (begins(call, call->value, "environment")) {
        answer(call, ((const State*)state)->hasVariable ? "found" : "gone");
        return 0;
    }
    for (i = 0; i < call->keyLength; ++i) {
        length += snprintf(text + length, sizeof text - (size_t)length, "%02x", call->key[i]);
    }
    if (call->key == NULL) snprintf(text + length, sizeof text - (size_t)length, "none");
    answer(call, text);
    return 0;
}

static int32_t keyedUnmask(void* state, const PrvCall* call) {
    (void)state;
    answer(call, "clear");
    return 0;
}

static void keyedClose(void* state) {
    free(state);
}

static uint32_t promises(const void* state) {
    return ((const State*)state)->promises;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvOperand operands[] = {
        {"CHECK", 10, PRV_OPERAND_CHECK, OPR_VALUE_INTEGER, 0, 9},
        {"PART", 20, 0, OPR_VALUE_WIDE, 0, 0},
        {"MAYBE", 30, PRV_OPERAND_OPTIONAL_VALUE, OPR_VALUE_NARROW, 0, 0},
        {"PROMISE", PROMISE, 0, OPR_VALUE_INTEGER, 0, 15},
        {"VARIABLE", VARIABLE, 0, OPR_VALUE_NARROW, 0, 0},
    };
    static const PrvMethod methods[] = {
        {"first", PRV_METHOD_KEYED}, {"second", PRV_METHOD_KEYED}, {"plain", 0}, {"other", 0}};
    static const PrvErrorText errors[] = {{1, "no memory"}};
    (void)keyedUnmask;
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = PROVIDER_NAME,
        .operands = operands,
        .operandCount = 5,
        .errors = errors,
        .errorCount = 1,
        .open = keyedOpen,
        .mask = keyedMask,
        .close = keyedClose,
#ifndef ONE_WAY
        .unmask = keyedUnmask,
#endif
        .promises = promises,
        .methods = methods + METHODS_FROM,
        .methodCount = METHODS_TO - METHODS_FROM,
    };
    return &entry;
}
