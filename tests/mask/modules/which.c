/* WHICH: tells which of several modules of this name has been loaded: the result is VARIANT. */
#include "answer.h"

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    answer(call, VARIANT);
    return 0;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = "WHICH",
        .open = openNothing,
        .mask = mask,
        .close = closeNothing,
    };
    return &entry;
}
