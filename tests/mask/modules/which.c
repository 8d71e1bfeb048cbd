/* WHICH: tells which of several modules of this name has been loaded: the result is VARIANT. */
#include "answer.h"

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    answer(call, VARIANT);
    return 0;
}

const PrvEntry* KorvProviderEntry(void) {
    static PrvEntry entry;
    entry.interfaceVersion = PRV_INTERFACE_VERSION;
    entry.name = "WHICH";
    entry.open = openNothing;
    entry.mask = mask;
    entry.close = closeNothing;
    return &entry;
}
