// The watching heap: see heap.h.
#include "support/heap.h"

#include <dlfcn.h>
#include <link.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

struct Entry {
    void* block;  // null: never used; the table's own address: freed
    std::size_t size;
};

constexpr std::size_t kTable = 1u << 18;
Entry table[kTable];
std::atomic_flag busy = ATOMIC_FLAG_INIT;
std::size_t live;
std::atomic<unsigned> attempts;
std::atomic<unsigned> failing;

struct Lock {
    Lock() {
        while (busy.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~Lock() { busy.clear(std::memory_order_release); }
};

struct Range {
    std::uintptr_t begin, end;
};
Range ranges[16];
std::atomic<int> rangeCount{-1};

int collect(dl_phdr_info* info, std::size_t, void*) {
    if (!std::strstr(info->dlpi_name, "libKORV")) return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || !(segment.p_flags & PF_X)) continue;
        const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
        int n = rangeCount.load();
        if (n < 16) {
            ranges[n] = {begin, begin + segment.p_memsz};
            rangeCount.store(n + 1);
        }
    }
    return 0;
}

bool leavesBlocks;

// Static initialisation is early enough: no test has called the libraries before.
[[gnu::constructor]] void findLibraries() {
    leavesBlocks = std::getenv("KORV_HEAP_LEAVES_BLOCKS") != nullptr;
    rangeCount.store(0);
    dl_iterate_phdr(collect, nullptr);
}

bool fromLibrary(void* caller) {
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    for (int i = 0; i < rangeCount.load(); ++i) {
        if (address >= ranges[i].begin && address < ranges[i].end) return true;
    }
    return false;
}

Entry* find(const void* block) {
    std::size_t at = (reinterpret_cast<std::uintptr_t>(block) >> 3) * 2654435761u % kTable;
    while (table[at].block) {
        if (table[at].block == block) return &table[at];
        at = (at + 1) % kTable;
    }
    return nullptr;
}

void remember(void* block, std::size_t size) {
    Lock lock;
    std::size_t at = (reinterpret_cast<std::uintptr_t>(block) >> 3) * 2654435761u % kTable;
    while (table[at].block && table[at].block != table) at = (at + 1) % kTable;
    table[at] = {block, size};
    ++live;
}

// Size of a remembered block, which is forgotten; 0 for others.
std::size_t forget(void* block) {
    Lock lock;
    Entry* entry = block ? find(block) : nullptr;
    if (!entry) return 0;
    const std::size_t size = entry->size;
    entry->block = table;
    --live;
    return size;
}

void fill(void* block, std::size_t size) {
    if (!leavesBlocks) std::memset(block, 0xA5, size);
}

std::atomic<void (*)(const void*)> looker;

bool mustFail() {
    return ++attempts == failing.load();
}

// The system's own functions. dlsym itself may allocate before they are known: from a small arena.
alignas(16) char arena[4096];
std::size_t arenaUsed;
bool inArena(void* block) {
    return block >= arena && block < arena + sizeof arena;
}

template <class F>
F next(const char* name) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

using Malloc = void* (*)(std::size_t);
using Calloc = void* (*)(std::size_t, std::size_t);
using Realloc = void* (*)(void*, std::size_t);
using Free = void (*)(void*);
Malloc realMalloc;
Calloc realCalloc;
Realloc realRealloc;
Free realFree;
bool resolving;

void resolve() {
    resolving = true;
    realCalloc = next<Calloc>("calloc");
    realMalloc = next<Malloc>("malloc");
    realRealloc = next<Realloc>("realloc");
    realFree = next<Free>("free");
    resolving = false;
}

void* fromArena(std::size_t size) {
    void* block = arena + arenaUsed;
    arenaUsed += (size + 15) & ~std::size_t{15};
    if (arenaUsed > sizeof arena) __builtin_trap();
    return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    if (resolving) return fromArena(size);
    if (!realMalloc) resolve();
    if (!fromLibrary(__builtin_return_address(0))) return realMalloc(size);
    if (mustFail()) {
        errno = ENOMEM;
        return nullptr;
    }
    void* block = realMalloc(size);
    if (block) {
        fill(block, size);
        remember(block, size);
    }
    return block;
}

void* calloc(std::size_t count, std::size_t size) {
    if (resolving) return fromArena(count * size);
    if (!realCalloc) resolve();
    if (!fromLibrary(__builtin_return_address(0))) return realCalloc(count, size);
    if (mustFail()) {
        errno = ENOMEM;
        return nullptr;
    }
    void* block = realCalloc(count, size);
    if (block) remember(block, count * size);
    return block;
}

void* realloc(void* old, std::size_t size) {
    if (!realRealloc) resolve();
    if (!fromLibrary(__builtin_return_address(0))) {
        const std::size_t had = forget(old);
        void* block = realRealloc(old, size);
        if (had && block) remember(block, size);
        return block;
    }
    if (mustFail()) {
        errno = ENOMEM;
        return nullptr;
    }
    const std::size_t had = forget(old);
    void* block = realRealloc(old, size);
    if (block) {
        if (size > had) fill(static_cast<char*>(block) + had, size - had);
        remember(block, size);
    } else if (had) {
        remember(old, had);
    }
    return block;
}

void free(void* block) {
    if (inArena(block)) return;
    if (const auto look = looker.load()) look(block);
    forget(block);
    if (!realFree) resolve();
    realFree(block);
}

}  // extern "C"

namespace heap {

void failAt(unsigned n) {
    attempts = 0;
    failing = n;
}

void beforeFree(void (*look)(const void* block)) {
    looker = look;
}

unsigned allocations() {
    return attempts;
}

std::size_t liveBlocks() {
    Lock lock;
    return live;
}

std::size_t sizeOf(const void* block) {
    Lock lock;
    const Entry* entry = find(block);
    return entry ? entry->size : 0;
}

}  // namespace heap
