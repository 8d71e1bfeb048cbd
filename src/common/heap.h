// The process heap: the only place that allocates and frees.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace korv::heap {

// A block for the caller to fill, or null.
inline void* unfilled(std::size_t bytes) noexcept {
    // A 32-bit heap cannot have a larger block. It is refused for 64 bits as well, because such a
    // size comes from a negative length.
    if (sizeof bytes > sizeof(int32_t) && bytes > INT32_MAX) return nullptr;
    return std::malloc(bytes);
}

inline void* zeroed(std::size_t bytes) noexcept {
    void* block = unfilled(bytes);
    if (block) std::memset(block, 0, bytes);
    return block;
}

// A zero-filled record, or null.
template <class Record>
Record* record() noexcept {
    return static_cast<Record*>(zeroed(sizeof(Record)));
}

// A block of `room` bytes that begins with a copy of `bytes` bytes and is zero-filled after them,
// or null.
inline void* copy(const void* source, std::size_t bytes, std::size_t room) noexcept {
    auto* block = static_cast<char*>(unfilled(room));
    if (!block) return nullptr;
    if (bytes) std::memcpy(block, source, bytes);
    if (room > bytes) std::memset(block + bytes, 0, room - bytes);
    return block;
}

// A block with another size, for the caller to fill, or null: the old one is then still there.
inline void* resized(void* block, std::size_t bytes) noexcept {
    return std::realloc(block, bytes);
}

inline void release(void* block) noexcept {
    std::free(block);
}

}  // namespace korv::heap
