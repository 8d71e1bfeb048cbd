/* COPY: an empty provider. The result is the value. */
#include "answer.h"

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    copyValue(call, call->value, call->result);
    return 0;
}

const PrvEntry* KorvProviderEntry(void) {
    static PrvEntry entry;
    entry.interfaceVersion = PRV_INTERFACE_VERSION;
    entry.name = "COPY";
    entry.open = openNothing;
    entry.mask = mask;
    entry.close = closeNothing;
    return &entry;
}
