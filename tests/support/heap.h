// A heap that watches the libraries under test: counts their allocations, makes a chosen one fail,
// fills what they get with rubbish, and knows which of their blocks have not been freed.
//
// It takes the place of malloc, calloc, realloc and free in the whole test program, but looks only
// at calls that come from libKORVSupport and libKORVDataCnvLib.
//
// With KORV_HEAP_LEAVES_BLOCKS in the environment blocks stay as the system gives them: a tool that
// knows which bytes have been written would take the rubbish for such.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>

namespace heap {

// The n-th allocation from now on fails (1 is the next one); 0 lets all succeed. Resets the count.
void failAt(unsigned n);

// Allocations tried since the last failAt.
unsigned allocations();

// Blocks that the libraries allocated and that have not been freed.
std::size_t liveBlocks();

// Bytes that were asked for when the live block was allocated; 0 for any other address.
std::size_t sizeOf(const void* block);

// What is called with each block before it is freed; null for nothing.
void beforeFree(void (*look)(const void* block));

}  // namespace heap

// A fixture under which every block allocated by the libraries must be freed again.
class HeapTest : public testing::Test {
  protected:
    void SetUp() override {
        heap::failAt(0);
        before_ = heap::liveBlocks();
    }
    void TearDown() override {
        heap::failAt(0);
        EXPECT_EQ(before_, heap::liveBlocks()) << "blocks leaked or freed twice";
    }

  private:
    std::size_t before_ = 0;
};
