/* EMPTY, a provider that does as little as the interface permits: each result is one digit. */
#include "korv/provider.h"

static int32_t openRule(const PrvCall* call, void** state) {
    (void)call;
    *state = 0;
    return 0;
}

static int32_t maskValue(void* state, const PrvCall* call) {
    (void)state;
    *(char*)call->value->target = '0';
    call->result->length = 1;
    return 0;
}

static void closeRule(void* state) {
    (void)state;
}

__attribute__((visibility("default"))) const PrvEntry* KorvProviderEntry(void);

const PrvEntry* KorvProviderEntry(void) {
    static const PrvEntry entry = {.interfaceVersion = PRV_INTERFACE_VERSION,
                                   .name = "EMPTY",
                                   .open = openRule,
                                   .mask = maskValue,
                                   .close = closeRule};
    return &entry;
}
