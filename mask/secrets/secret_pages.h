// Memory for secrets and keys: left out of core dumps, and wiped before it is given back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace secrets {

class SecretPages {
  public:
    SecretPages() = default;
    ~SecretPages();
    SecretPages(const SecretPages&) = delete;
    SecretPages& operator=(const SecretPages&) = delete;

    // Zero bytes, aligned for numbers, as long as the object lives. Throws std::bad_alloc.
    uint8_t* allocate(size_t bytes);

  private:
    struct Block {
        uint8_t* begin;
        size_t size;
        size_t used;
    };
    std::vector<Block> blocks_;
};

// Overwrites memory, also when it is not read any more.
void wipe(void* memory, size_t bytes);

}  // namespace secrets
