/* The library can be loaded and unloaded by a C program again and again, and works each time. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "korv/korv.h"

static int fail(const char* what) {
    const char* reason = dlerror();
    fprintf(stderr, "%s: %s\n", what, reason ? reason : "wrong result");
    return 1;
}

/* ISO C has no cast from an object pointer to a function pointer. */
#define FUNCTION(library, pointer, name)              \
    do {                                              \
        void* address = dlsym(library, name);         \
        if (!address) return fail(name);              \
        memcpy(&(pointer), &address, sizeof address); \
    } while (0)

static int loadAndUse(const char* path, int round) {
    int32_t (*provider)(const char*);
    int32_t (*compare)(const wchar_t*, const wchar_t*);
    int32_t (*narrow)(const uint16_t*, int32_t, wchar_t*, int32_t, uint32_t*);
    const char* spaces;
    const uint16_t units[] = {0xD83D, 0xDE00};
    wchar_t character = 0;
    uint32_t count = 0;
    /* Round by round: symbols bound at once or late, visible to others or not. */
    const int flags = (round & 1 ? RTLD_NOW : RTLD_LAZY) | (round & 2 ? RTLD_GLOBAL : RTLD_LOCAL);
    void* library = dlopen(path, flags);
    if (!library) return fail("dlopen");
    FUNCTION(library, provider, "GetProviderID");
    FUNCTION(library, compare, "StringWCaseCompare");
    FUNCTION(library, narrow, "KORV_Utf16ToUtf32");
    spaces = (const char*)dlsym(library, "PXSpaces");
    if (!spaces || strlen(spaces) != 256) return fail("PXSpaces");
    if (provider("ddswap") != 9) return fail("GetProviderID");
    /* What a text was compared with last is remembered per load: nothing is left of the last one.
     */
    if (compare(L"", L"x") != 0) return fail("StringWCaseCompare in a new load");
    if (compare(L"ABC", L"abc") != 0) return fail("StringWCaseCompare");
    if (narrow(units, 4, &character, 4, &count) != 0 || count != 1 || character != 0x1F600) {
        return fail("KORV_Utf16ToUtf32");
    }
    if (dlclose(library) != 0) return fail("dlclose");
    if (dlopen(path, RTLD_NOW | RTLD_NOLOAD)) return fail("still loaded");
    return 0;
}

int main(int argc, char** argv) {
    int round;
    if (argc != 2) return 2;
    for (round = 0; round < 100; ++round) {
        if (loadAndUse(argv[1], round) != 0) {
            fprintf(stderr, "in round %d\n", round);
            return 1;
        }
    }
    return 0;
}
