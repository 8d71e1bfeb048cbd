// Quicksort of an array with a context and a direction.
#include <algorithm>
#include <cstddef>

#include "korv/sort.h"

namespace korv {
namespace {

// Partitions of up to this many elements are sorted by selection.
constexpr uint32_t shortPartition = 8;

// The larger side of each partition waits on the stack while the smaller is sorted, so the stack
// never holds more entries than the base-2 logarithm of the count.
constexpr int stackSize = 30;

class Sorter {
  public:
    Sorter(uint32_t width, KorvCompare compare, void* context, bool ascending) noexcept
        : width_(width), compare_(compare), context_(context), ascending_(ascending) {}

    void sort(char* lo, char* hi) const noexcept;

  private:
    int32_t compare(const char* first, const char* second) const noexcept {
        return ascending_ ? compare_(first, second, context_) : compare_(second, first, context_);
    }

    void swap(char* first, char* second) const noexcept {
        if (first != second) std::swap_ranges(first, first + width_, second);
    }

    void shortsort(char* lo, char* hi) const noexcept {
        for (; hi > lo; hi -= width_) {
            char* max = lo;
            for (char* p = lo + width_; p <= hi; p += width_) {
                if (compare(p, max) > 0) max = p;
            }
            swap(max, hi);
        }
    }

    std::size_t width_;
    KorvCompare compare_;
    void* context_;
    bool ascending_;
};

void Sorter::sort(char* lo, char* hi) const noexcept {
    struct Partition {
        char* lo;
        char* hi;
    };
    Partition stack[stackSize];
    int waiting = 0;
    for (;;) {
        const std::size_t size = static_cast<std::size_t>(hi - lo) / width_ + 1;
        if (size <= shortPartition) {
            shortsort(lo, hi);
        } else {
            // The pivot stands at lo; both scans pass over elements equal to it.
            swap(lo + size / 2 * width_, lo);
            char* loguy = lo;
            char* higuy = hi + width_;
            for (;;) {
                do loguy += width_;
                while (loguy <= hi && compare(loguy, lo) <= 0);
                do higuy -= width_;
                while (higuy > lo && compare(higuy, lo) >= 0);
                if (higuy < loguy) break;
                swap(loguy, higuy);
            }
            swap(lo, higuy);

            const bool leftWaits = lo + width_ < higuy;
            const bool rightWaits = loguy < hi;
            if (higuy - 1 - lo >= hi - loguy) {
                if (leftWaits) stack[waiting++] = {lo, higuy - width_};
                if (rightWaits) {
                    lo = loguy;
                    continue;
                }
            } else {
                if (rightWaits) stack[waiting++] = {loguy, hi};
                if (leftWaits) {
                    hi = higuy - width_;
                    continue;
                }
            }
        }
        if (waiting == 0) return;
        --waiting;
        lo = stack[waiting].lo;
        hi = stack[waiting].hi;
    }
}

}  // namespace
}  // namespace korv

void KorvQSort(void* base, uint32_t count, uint32_t width, KorvCompare compare, void* context,
               uint8_t ascending) {
    if (count < 2 || width == 0) return;
    char* lo = static_cast<char*>(base);
    char* hi = lo + static_cast<std::size_t>(count - 1) * width;
    korv::Sorter(width, compare, context, ascending != 0).sort(lo, hi);
}
