// The watched heap, on top of that of glibc.
#include "watched_heap.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<std::size_t> blocks, bytes;
std::atomic<unsigned> attempts, failing;
std::atomic<bool> laterFail;
thread_local unsigned inside;

bool mustFail() {
    if (inside == 0) return false;
    const unsigned n = failing.load(std::memory_order_relaxed);
    const unsigned attempt = ++attempts;
    const bool fails = n != 0 && (laterFail ? attempt >= n : attempt == n);
    if (fails) errno = ENOMEM;
    return fails;
}

void* counted(void* block) {
    if (block != nullptr) {
        blocks.fetch_add(1, std::memory_order_relaxed);
        bytes.fetch_add(malloc_usable_size(block), std::memory_order_relaxed);
    }
    return block;
}

void uncount(void* block) {
    blocks.fetch_sub(1, std::memory_order_relaxed);
    bytes.fetch_sub(malloc_usable_size(block), std::memory_order_relaxed);
}

}  // namespace

namespace heap {

Inside::Inside() {
    ++inside;
}

Inside::~Inside() {
    --inside;
}

void failAt(unsigned n, bool andLater) {
    attempts = 0;
    failing = n;
    laterFail = andLater;
}

unsigned allocations() {
    return attempts;
}

std::size_t liveBlocks() {
    return blocks;
}

std::size_t liveBytes() {
    return bytes;
}

}  // namespace heap

extern "C" {

void* malloc(std::size_t size) {
    return mustFail() ? nullptr : counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    return mustFail() ? nullptr : counted(__libc_calloc(count, size));
}

void free(void* block) {
    if (block == nullptr) return;
    uncount(block);
    __libc_free(block);
}

void* realloc(void* block, std::size_t size) {
    if (mustFail()) return nullptr;
    if (block == nullptr) return counted(__libc_malloc(size));
    const std::size_t before = malloc_usable_size(block);
    void* const moved = __libc_realloc(block, size);
    if (moved != nullptr) {
        bytes.fetch_add(malloc_usable_size(moved) - before, std::memory_order_relaxed);
    } else if (size == 0) {
        blocks.fetch_sub(1, std::memory_order_relaxed);
        bytes.fetch_sub(before, std::memory_order_relaxed);
    }
    return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
    return mustFail() ? nullptr : counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size) {
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0) return EINVAL;
    void* const block = memalign(alignment, size);
    if (block == nullptr) return ENOMEM;
    *result = block;
    return 0;
}

}  // extern "C"
