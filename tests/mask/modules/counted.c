/* COUNTED: copies values, and counts its calls. Operand `one` hides maskBatch's results: it leaves
 * every value to mask. Operand `refuse`: open fails. */
#include "counters.h"

#include "answer.h"

KORV_API Counters KorvTestCounters;

enum { OPERAND_ONE = 1, OPERAND_REFUSE = 2 };

static int hasOperand(const PrvCall* call, uint16_t code) {
    const OprDefX* operand = call->service->oprDefs;
    while (operand != NULL && operand->oprCode != code) operand = operand->link;
    return operand != NULL;
}

static int32_t countedOpen(const PrvCall* call, void** state) {
    static int one;
    ++KorvTestCounters.open;
    if (hasOperand(call, OPERAND_REFUSE)) {
        ErrorCapture(call->context, 1, 0, 0);
        return 1;
    }
    *state = hasOperand(call, OPERAND_ONE) ? &one : NULL;
    return 0;
}

static int32_t countedMask(void* state, const PrvCall* call) {
    (void)state;
    ++KorvTestCounters.mask;
    copyValue(call, call->value, call->result);
    return 0;
}

static int32_t countedBatch(void* state, const PrvCall* call, uint32_t count, int32_t* statuses) {
    uint32_t i;
    (void)statuses;
    ++KorvTestCounters.maskBatch;
    KorvTestCounters.batchValues += (int)count;
    if (state != NULL) return 1;
    for (i = 0; i < count; ++i) copyValue(call, &call->value[i], &call->result[i]);
    return 0;
}

static void countedClose(void* state) {
    (void)state;
    ++KorvTestCounters.close;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvOperand operands[] = {{"ONE", OPERAND_ONE, 0, OPR_VALUE_NONE, 0, 0},
                                          {"REFUSE", OPERAND_REFUSE, 0, OPR_VALUE_NONE, 0, 0}};
    static const PrvErrorText errors[] = {{1, "this rule is refused"}};
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = "COUNTED",
        .operands = operands,
        .operandCount = 2,
        .errors = errors,
        .errorCount = 1,
        .open = countedOpen,
        .mask = countedMask,
        .close = countedClose,
        .maskBatch = countedBatch,
    };
    return &entry;
}
