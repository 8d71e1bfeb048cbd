/* COPY: an empty provider. The result is the value. */
#include "answer.h"

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    copyValue(call, call->value, call->result);
    return 0;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = "COPY",
        .open = openNothing,
        .mask = mask,
        .close = closeNothing,
    };
    return &entry;
}
