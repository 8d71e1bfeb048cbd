/* VERSION2: a module of version 2 of the interface, whose own operands have keys that the engine
 * takes from version 3 on. A value becomes the operands' values: `METHOD=value;SECRET=value;`. Its
 * record ends at an unreadable page: it has no members of version 3. */
#define _GNU_SOURCE
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include "answer.h"

static int32_t versionOpen(const PrvCall* call, void** state) {
    enum { ROOM = 200 };
    char* text = (char*)calloc(1, ROOM);
    size_t used = 0;
    const OprDefX* operand;
    if (text == NULL) return ErrorCapture(call->context, 1, 0, 0) + 1;
    for (operand = call->service->oprDefs; operand != NULL; operand = operand->link) {
        used += (size_t)snprintf(text + used, ROOM - used, "%ls=%s;", operand->oprText,
                                 operand->narrowValue == NULL ? "" : operand->narrowValue);
    }
    *state = text;
    return 0;
}

static int32_t versionMask(void* state, const PrvCall* call) {
    answer(call, (const char*)state);
    return 0;
}

static void versionClose(void* state) {
    free(state);
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvOperand operands[] = {{"METHOD", 1, 0, OPR_VALUE_NARROW, 0, 0},
                                          {"SECRET", 2, 0, OPR_VALUE_NARROW, 0, 0},
                                          {"SCOPE", 3, 0, OPR_VALUE_NARROW, 0, 0},
                                          {"UNIQUE", 4, 0, OPR_VALUE_NONE, 0, 0}};
    static const PrvErrorText errors[] = {{1, "no memory"}};
    static PrvEntry* entry;
    if (entry == NULL) {
        const size_t size = offsetof(PrvEntry, methods);
        const size_t page = (size_t)sysconf(_SC_PAGESIZE);
        PrvEntry record = {0};
        char* pages =
            (char*)mmap(NULL, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED || mprotect(pages + page, page, PROT_NONE) != 0) abort();
        record.interfaceVersion = 2;
        record.name = "VERSION2";
        record.operands = operands;
        record.operandCount = 4;
        record.errors = errors;
        record.errorCount = 1;
        record.open = versionOpen;
        record.mask = versionMask;
        record.close = versionClose;
        entry = (PrvEntry*)(pages + page - size);
        memcpy(entry, &record, size);
    }
    return entry;
}
