// Pages of their own for secrets.
#include "secrets/secret_pages.h"

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace secrets {

namespace {
constexpr size_t kAlignment = 16;

size_t roundedUp(size_t bytes, size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}
}  // namespace

void wipe(void* memory, size_t bytes) {
    ::explicit_bzero(memory, bytes);
}

SecretPages::~SecretPages() {
    for (const Block& block : blocks_) {
        wipe(block.begin, block.used);
        ::munmap(block.begin, block.size);
    }
}

uint8_t* SecretPages::allocate(size_t bytes) {
    const size_t needed = roundedUp(std::max<size_t>(bytes, 1), kAlignment);
    if (needed < bytes) throw std::bad_alloc();
    if (blocks_.empty() || blocks_.back().size - blocks_.back().used < needed) {
        const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
        const size_t size = roundedUp(needed, page);
        if (size < needed) throw std::bad_alloc();
        blocks_.reserve(blocks_.size() + 1);
        void* const memory =
            ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        if (::madvise(memory, size, MADV_DONTDUMP) != 0) {
            ::munmap(memory, size);
            throw std::bad_alloc();
        }
        blocks_.push_back({static_cast<uint8_t*>(memory), size, 0});
    }
    Block& block = blocks_.back();
    uint8_t* const begin = block.begin + block.used;
    block.used += needed;
    return begin;
}

}  // namespace secrets
