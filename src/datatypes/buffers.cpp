// Work buffers of providers.
#include <cstring>

#include "common/heap.h"
#include "korv/datatypes.h"

namespace korv {
namespace {

int32_t allocate(void*& buffer, uint32_t& size, int32_t newSize, bool keep) noexcept {
    if (newSize < 1) return KORV_BAD_BUFFER_SIZE;
    const auto bytes = static_cast<uint32_t>(newSize);
    const uint32_t kept = keep && buffer ? size : 0;
    // A failure is stored too: a block that could not be resized is given up.
    buffer = buffer ? heap::resized(buffer, bytes) : heap::unfilled(bytes);
    if (!buffer) return KORV_NO_MEMORY_BUFFER;
    if (bytes > kept) std::memset(static_cast<char*>(buffer) + kept, 0, bytes - kept);
    size = bytes;
    return KORV_SUCCESS;
}

}  // namespace
}  // namespace korv

int32_t KORVAllocateBuffer(void** buffer, uint32_t* size, int32_t newSize) {
    return korv::allocate(*buffer, *size, newSize, false);
}

int32_t KORVAllocateBuffer1(void** buffer, uint32_t* size, int32_t newSize, uint8_t keep) {
    return korv::allocate(*buffer, *size, newSize, keep == 1);
}
