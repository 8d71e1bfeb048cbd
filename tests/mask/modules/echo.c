/* ECHO: the operands of its rule as `KEY=value;KEY=value;FLAG;`, whatever the value is. */
#include <stdio.h>
#include <stdlib.h>

#include "answer.h"

static int32_t echoOpen(const PrvCall* call, void** state) {
    enum { ROOM = 1000 };
    char* text = (char*)calloc(1, ROOM);
    size_t used = 0;
    const OprDefX* operand;
    if (text == NULL) return ErrorCapture(call->context, 1, 0, 0) + 1;
    for (operand = call->service->oprDefs; operand != NULL; operand = operand->link) {
        used += (size_t)snprintf(text + used, ROOM - used, "%ls", operand->oprText);
        if (operand->valueKind == OPR_VALUE_INTEGER) {
            used += (size_t)snprintf(text + used, ROOM - used, "=%d", (int)operand->intValue);
        } else if (operand->valueKind == OPR_VALUE_WIDE) {
            used += (size_t)snprintf(text + used, ROOM - used, "=%ls", operand->wideValue);
        } else if (operand->valueKind == OPR_VALUE_NARROW) {
            used += (size_t)snprintf(text + used, ROOM - used, "=%s", operand->narrowValue);
        }
        used += (size_t)snprintf(text + used, ROOM - used, ";");
    }
    *state = text;
    return 0;
}

static int32_t echoMask(void* state, const PrvCall* call) {
    answer(call, (const char*)state);
    return 0;
}

static void echoClose(void* state) {
    free(state);
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvOperand operands[] = {
        {"NUMBER", 10, 0, OPR_VALUE_INTEGER, -5, 5},
        {"NARROW", 20, 0, OPR_VALUE_NARROW, 0, 0},
        {"WIDE", 30, 0, OPR_VALUE_WIDE, 0, 0},
        {"PATH", 40, PRV_OPERAND_PATH, OPR_VALUE_NARROW, 0, 0},
        {"FLAG", 50, 0, OPR_VALUE_NONE, 0, 0},
    };
    static const PrvErrorText errors[] = {{1, "no memory"}};
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = "ECHO",
        .operands = operands,
        .operandCount = 5,
        .errors = errors,
        .errorCount = 1,
        .open = echoOpen,
        .mask = echoMask,
        .close = echoClose,
    };
    return &entry;
}
