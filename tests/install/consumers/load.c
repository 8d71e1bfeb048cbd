/* A consumer that links nothing: it loads the support library, by the name given, when it runs, and
 * prints what the companion that came with it answers. */
#include <dlfcn.h>
#include <korv/korv.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    int32_t (*join)(const void*, int32_t, wchar_t*, int32_t, uint32_t*);
    const uint16_t units[] = {0xD83D, 0xDE00};
    wchar_t text[2] = {0};
    uint32_t count = 0;
    void* address;
    void* library = dlopen(argc > 1 ? argv[1] : "libKORVSupport.so.21", RTLD_NOW);
    if (!library) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    address = dlsym(library, "KORV_Utf16ToUtf32");
    if (!address) return 2;
    memcpy(&join, &address, sizeof address);
    printf("status %d", (int)join(units, 4, text, 4, &count));
    printf(", U+%X\n", (unsigned)text[0]);
    return dlclose(library);
}
