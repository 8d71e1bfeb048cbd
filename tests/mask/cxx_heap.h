// operator new of the test program, and so of the engine and of its providers: counts what is
// allocated, and makes a chosen allocation fail. heap.h does this for malloc in the support
// library.
#pragma once

#include <cstddef>

namespace cxx_heap {

// The n-th allocation from now on fails (1 is the next one); 0 lets all succeed. Resets the count.
void failAt(unsigned n);

// Allocations tried since the last failAt.
unsigned allocations();

// Blocks that have not been deleted.
std::size_t liveBlocks();

}  // namespace cxx_heap
