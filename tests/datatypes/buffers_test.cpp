// Work buffers: allocation, growth, what is zeroed, and what remains after a failure.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "korv/datatypes.h"
#include "support/heap.h"

namespace {

// Both functions, and every keep flag that must behave as none.
struct Allocator {
    int keep;  // -1: KORVAllocateBuffer
    int32_t operator()(void** buffer, uint32_t* size, int32_t newSize) const {
        return keep < 0 ? KORVAllocateBuffer(buffer, size, newSize)
                        : KORVAllocateBuffer1(buffer, size, newSize, static_cast<uint8_t>(keep));
    }
};
constexpr Allocator kClearing[] = {{-1}, {0}, {2}, {3}, {129}, {255}};
constexpr Allocator kAll[] = {{-1}, {0}, {2}, {3}, {129}, {255}, {1}};
constexpr Allocator kKeeping = {1};

bool filledWith(const void* block, std::size_t begin, std::size_t end, char byte) {
    const char* bytes = static_cast<const char*>(block);
    return std::all_of(bytes + begin, bytes + end, [byte](char b) { return b == byte; });
}

// A buffer filled with 'x', as a caller has it.
struct Work {
    explicit Work(int32_t bytes) {
        EXPECT_EQ(0, KORVAllocateBuffer(&buffer, &size, bytes));
        std::memset(buffer, 'x', static_cast<std::size_t>(bytes));
        heap::failAt(0);
    }
    ~Work() { std::free(buffer); }
    void* buffer = nullptr;
    uint32_t size = 0;
};

class BuffersTest : public HeapTest {};

TEST_F(BuffersTest, ASizeBelow1Is107AndChangesNothing) {
    for (const Allocator& allocate : kAll) {
        for (int32_t newSize : {0, -1, -8, INT32_MIN}) {
            void* none = nullptr;
            uint32_t size = 1234;
            heap::failAt(0);
            EXPECT_EQ(KORV_BAD_BUFFER_SIZE, allocate(&none, &size, newSize));
            EXPECT_EQ(nullptr, none);
            EXPECT_EQ(1234u, size);

            Work work(8);
            void* const block = work.buffer;
            EXPECT_EQ(KORV_BAD_BUFFER_SIZE, allocate(&work.buffer, &work.size, newSize));
            EXPECT_EQ(block, work.buffer);
            EXPECT_EQ(8u, work.size);
            EXPECT_TRUE(filledWith(block, 0, 8, 'x'));
            EXPECT_EQ(0u, heap::allocations());
        }
    }
}

TEST_F(BuffersTest, ANewBlockIsZeroedAsAWholeWhateverTheOldSize) {
    for (const Allocator& allocate : kAll) {
        for (uint32_t oldSize : {0u, 1u, 8u, 5000u, 0xFFFFFFFFu}) {
            for (int32_t newSize = 1; newSize <= 70; ++newSize) {
                void* buffer = nullptr;
                uint32_t size = oldSize;
                heap::failAt(0);
                ASSERT_EQ(0, allocate(&buffer, &size, newSize));
                ASSERT_NE(nullptr, buffer);
                const std::size_t bytes = static_cast<std::size_t>(newSize);
                ASSERT_EQ(bytes, heap::sizeOf(buffer));
                ASSERT_EQ(bytes, size);
                ASSERT_TRUE(filledWith(buffer, 0, bytes, 0)) << allocate.keep << ' ' << oldSize;
                ASSERT_EQ(1u, heap::allocations());
                std::free(buffer);
            }
        }
    }
}

TEST_F(BuffersTest, AResizedBlockIsZeroedAsAWhole) {
    for (const Allocator& allocate : kClearing) {
        for (int32_t oldSize : {1, 8, 40, 4096}) {
            for (int32_t newSize : {1, 7, 8, 9, 16, 33, 70, 4095, 4096, 4097, 100000}) {
                Work work(oldSize);
                ASSERT_EQ(0, allocate(&work.buffer, &work.size, newSize));
                const std::size_t bytes = static_cast<std::size_t>(newSize);
                ASSERT_EQ(bytes, heap::sizeOf(work.buffer));
                ASSERT_EQ(bytes, work.size);
                ASSERT_TRUE(filledWith(work.buffer, 0, bytes, 0)) << allocate.keep;
                ASSERT_EQ(1u, heap::allocations());
            }
        }
    }
}

TEST_F(BuffersTest, KeepingZeroesOnlyWhatIsNew) {
    for (int32_t oldSize = 1; oldSize <= 70; ++oldSize) {
        for (int32_t newSize : {oldSize, oldSize + 1, oldSize + 8, 2 * oldSize, 141, 5000}) {
            Work work(oldSize);
            ASSERT_EQ(0, kKeeping(&work.buffer, &work.size, newSize));
            const std::size_t kept = static_cast<std::size_t>(oldSize);
            const std::size_t bytes = static_cast<std::size_t>(newSize);
            ASSERT_EQ(bytes, heap::sizeOf(work.buffer));
            ASSERT_EQ(bytes, work.size);
            ASSERT_TRUE(filledWith(work.buffer, 0, kept, 'x')) << oldSize << ' ' << newSize;
            ASSERT_TRUE(filledWith(work.buffer, kept, bytes, 0)) << oldSize << ' ' << newSize;
        }
    }
}

TEST_F(BuffersTest, KeepingASmallerSizeZeroesNothing) {
    for (int32_t newSize = 1; newSize < 40; ++newSize) {
        Work work(40);
        ASSERT_EQ(0, kKeeping(&work.buffer, &work.size, newSize));
        const std::size_t bytes = static_cast<std::size_t>(newSize);
        ASSERT_EQ(bytes, work.size);
        ASSERT_EQ(bytes, heap::sizeOf(work.buffer));
        ASSERT_TRUE(filledWith(work.buffer, 0, bytes, 'x')) << newSize;
    }
}

TEST_F(BuffersTest, KeepingGoesByTheSizeVariable) {
    Work smaller(16);
    smaller.size = 5;
    ASSERT_EQ(0, kKeeping(&smaller.buffer, &smaller.size, 24));
    EXPECT_TRUE(filledWith(smaller.buffer, 0, 5, 'x'));
    EXPECT_TRUE(filledWith(smaller.buffer, 5, 24, 0));

    Work nothing(16);
    nothing.size = 0;
    ASSERT_EQ(0, kKeeping(&nothing.buffer, &nothing.size, 16));
    EXPECT_TRUE(filledWith(nothing.buffer, 0, 16, 0));

    // Sizes of 2 GiB and more are larger than any new size, not negative.
    for (uint32_t size : {0x80000000u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
        Work huge(16);
        huge.size = size;
        ASSERT_EQ(0, kKeeping(&huge.buffer, &huge.size, 16));
        EXPECT_TRUE(filledWith(huge.buffer, 0, 16, 'x'));
        EXPECT_EQ(16u, huge.size);
    }
}

TEST_F(BuffersTest, AGrowingBufferKeepsItsVariables) {
    for (const Allocator& allocate : kAll) {
        void* buffer = nullptr;
        uint32_t size = 0;
        for (int32_t newSize : {8, 16, 17, 64, 1000}) {
            ASSERT_EQ(0, allocate(&buffer, &size, newSize));
            ASSERT_EQ(static_cast<uint32_t>(newSize), size);
            ASSERT_TRUE(filledWith(buffer, 0, size, 0));
        }
        std::free(buffer);
    }
}

TEST_F(BuffersTest, NoMemoryForANewBlockIs106) {
    for (const Allocator& allocate : kAll) {
        void* buffer = nullptr;
        uint32_t size = 77;
        heap::failAt(1);
        EXPECT_EQ(KORV_NO_MEMORY_BUFFER, allocate(&buffer, &size, 16));
        EXPECT_EQ(nullptr, buffer);
        EXPECT_EQ(77u, size);
        EXPECT_EQ(1u, heap::allocations());
    }
}

TEST_F(BuffersTest, NoMemoryForAResizeEmptiesThePointerAndLosesTheBlock) {
    for (const Allocator& allocate : kAll) {
        for (int32_t newSize : {4, 8, 16, 5000}) {
            Work work(8);
            void* const lost = work.buffer;
            heap::failAt(1);
            EXPECT_EQ(KORV_NO_MEMORY_BUFFER, allocate(&work.buffer, &work.size, newSize));
            EXPECT_EQ(nullptr, work.buffer);
            EXPECT_EQ(8u, work.size);
            EXPECT_EQ(8u, heap::sizeOf(lost)) << "the old block must not be freed";
            EXPECT_TRUE(filledWith(lost, 0, 8, 'x'));
            std::free(lost);

            // The emptied pointer starts afresh.
            EXPECT_EQ(0, allocate(&work.buffer, &work.size, 4));
            EXPECT_EQ(4u, work.size);
            EXPECT_TRUE(filledWith(work.buffer, 0, 4, 0));
        }
    }
}

}  // namespace
