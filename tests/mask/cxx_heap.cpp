// The watched operator new: see cxx_heap.h.
#include "cxx_heap.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<unsigned> attempts;
std::atomic<unsigned> failing;
std::atomic<std::size_t> live;

void* allocate(std::size_t size, std::size_t alignment) {
    if (++attempts == failing.load()) return nullptr;
    if (size == 0) size = 1;
    // aligned_alloc takes multiples of the alignment.
    void* block = alignment == 0 ? std::malloc(size)
                                 : std::aligned_alloc(
                                       alignment, (size + alignment - 1) / alignment * alignment);
    if (block != nullptr) ++live;
    return block;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment) {
    void* block = allocate(size, alignment);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void release(void* block) {
    if (block != nullptr) --live;
    std::free(block);
}

}  // namespace

namespace cxx_heap {

void failAt(unsigned n) {
    attempts = 0;
    failing = n;
}

unsigned allocations() {
    return attempts;
}

std::size_t liveBlocks() {
    return live;
}

}  // namespace cxx_heap

// The forms for arrays and for sizes end in these ones.
void* operator new(std::size_t size) {
    return allocateOrThrow(size, 0);
}
// The run-time library's nothrow form ends in the one above, but the sanitizers have their own.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocateOrThrow(size, 0);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}
