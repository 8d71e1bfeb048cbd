// An array that takes more than half of a 32-bit address space keeps to the stack of partitions.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

#include "korv/sort.h"

namespace {

constexpr std::uint32_t kWidth = 1u << 20;
constexpr std::uint32_t kCount = 2048 + 150;

// Compares places instead of values, so that each partition puts all elements except the last two
// on the left.
struct Answers {
    char* base;
    std::uint32_t last = kCount - 1;
    int askedAtTurn = 0;
    std::uint32_t comparisons = 0;
};

std::int32_t compareByPlace(const void* first, const void*, void* context) {
    auto& answers = *static_cast<Answers*>(context);
    ++answers.comparisons;
    const auto place =
        static_cast<std::uint32_t>(static_cast<const char*>(first) - answers.base) / kWidth;
    const std::uint32_t turn = answers.last - 2;
    if (place > turn) return 1;
    // The scan from the left asks there first, then the one from the right.
    if (place == turn && ++answers.askedAtTurn == 2) {
        answers.askedAtTurn = 0;
        answers.last -= 3;
    }
    return -1;
}

// All elements are the same piece of memory, mapped again and again.
TEST(HugeArray, LargerSidesWaitHoweverLargeTheyAre) {
    const int memory = memfd_create("element", 0);
    ASSERT_EQ(0, ftruncate(memory, kWidth));
    auto* base = static_cast<char*>(mmap(nullptr, std::size_t{kCount} * kWidth, PROT_NONE,
                                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    ASSERT_NE(MAP_FAILED, static_cast<void*>(base));
    for (std::uint32_t i = 0; i < kCount; ++i) {
        ASSERT_NE(MAP_FAILED, mmap(base + std::size_t{i} * kWidth, kWidth, PROT_READ | PROT_WRITE,
                                   MAP_SHARED | MAP_FIXED, memory, 0));
    }
    Answers answers{base};
    KorvQSort(base, kCount, kWidth, compareByPlace, &answers, 1);
    EXPECT_LT(kCount, answers.comparisons);
    munmap(base, std::size_t{kCount} * kWidth);
    close(memory);
}

}  // namespace
