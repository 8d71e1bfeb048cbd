// Memory that ends at an unreadable page.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <new>

namespace kit {

class FencedMemory {
  public:
    explicit FencedMemory(size_t size) {
        const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
        size_ = (size + page - 1) / page * page;
        mapped_ = size_ + page;
        void* const memory =
            ::mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        begin_ = static_cast<char*>(memory);
        ::mprotect(begin_ + size_, page, PROT_NONE);
    }
    FencedMemory(const FencedMemory&) = delete;
    FencedMemory& operator=(const FencedMemory&) = delete;
    ~FencedMemory() { ::munmap(begin_, mapped_); }

    size_t size() const { return size_; }
    // The unreadable page begins here.
    char* end() const { return begin_ + size_; }

  private:
    char* begin_;
    size_t size_;
    size_t mapped_;
};

}  // namespace kit
