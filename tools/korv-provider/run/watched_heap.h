// The process heap, watched: its blocks are counted, and allocations of a provider can be made to
// fail. The program's malloc, calloc, realloc and free take the place of the system's for all
// modules.
#pragma once

#include <cstddef>

namespace heap {

// While one of these lives, allocations of the thread count as the provider's.
class Inside {
  public:
    Inside();
    ~Inside();
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
};

// The n-th allocation of a provider from now on fails, or, with `andLater`, all from the n-th on; 0
// lets all succeed. Starts the count anew.
void failAt(unsigned n, bool andLater = false);

// A provider's allocations since failAt.
unsigned allocations();

// Blocks of the whole process that are not freed.
std::size_t liveBlocks();
std::size_t liveBytes();

}  // namespace heap
