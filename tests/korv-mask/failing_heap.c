/* A heap that has no memory for the n-th allocation of the program, be it the program's own, the
 * engine's, a provider's, the libraries' or the system's. */
#include <errno.h>

#include "nth_call.h"

/* What the system's malloc and the others are inside. */
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);

static int hasMemory(void) {
    if (!isNthCall()) return 1;
    errno = ENOMEM;
    return 0;
}

static void* counted(void* block) {
    if (block) nthCallCountBlocks(1);
    return block;
}

void* malloc(size_t size) {
    return hasMemory() ? counted(__libc_malloc(size)) : NULL;
}

void* calloc(size_t count, size_t size) {
    return hasMemory() ? counted(__libc_calloc(count, size)) : NULL;
}

void* realloc(void* block, size_t size) {
    if (!hasMemory()) return NULL;
    return block ? __libc_realloc(block, size) : counted(__libc_malloc(size));
}

void* aligned_alloc(size_t alignment, size_t size) {
    return hasMemory() ? counted(__libc_memalign(alignment, size)) : NULL;
}

int posix_memalign(void** block, size_t alignment, size_t size) {
    void* const allocated = aligned_alloc(alignment, size);
    if (!allocated) return ENOMEM;
    *block = allocated;
    return 0;
}

void free(void* block) {
    if (block) nthCallCountBlocks(-1);
    __libc_free(block);
}
