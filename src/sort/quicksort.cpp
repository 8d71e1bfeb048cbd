// Quicksort of an array with a context and a direction.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "korv/sort.h"

namespace korv {
namespace {

// Partitions of up to this many elements are sorted by selection.
constexpr std::size_t kShortPartition = 8;

// The larger side of each partition waits on the stack while the smaller is sorted, so the stack
// never holds more entries than the base-2 logarithm of the count.
constexpr int kStackSize = 30;

// The callers' comparison with its context, elements in order or exchanged.
template <bool ascending>
struct Order {
    KorvCompare function;
    void* context;

    int32_t operator()(const char* first, const char* second) const noexcept {
        return ascending ? function(first, second, context) : function(second, first, context);
    }
};

// An element's width: a number that the compiler knows, or one of the caller's.
template <std::size_t bytes>
struct FixedWidth {
    static constexpr std::size_t value = bytes;
    void swap(char* first, char* second) const noexcept {
        char kept[bytes];
        std::memcpy(kept, first, bytes);
        std::memcpy(first, second, bytes);
        std::memcpy(second, kept, bytes);
    }
};
struct AnyWidth {
    std::size_t value;
    void swap(char* first, char* second) const noexcept {
        char kept[16];
        std::size_t left = value;
        for (; left > sizeof kept; left -= sizeof kept) {
            std::memcpy(kept, first, sizeof kept);
            std::memcpy(first, second, sizeof kept);
            std::memcpy(second, kept, sizeof kept);
            first += sizeof kept;
            second += sizeof kept;
        }
        std::swap_ranges(first, first + left, second);
    }
};

template <class Width, class Compare>
class Sorter {
  public:
    Sorter(Width width, Compare compare) noexcept : width_(width), compare_(compare) {}

    void sort(char* lo, char* hi) const noexcept;

  private:
    void swap(char* first, char* second) const noexcept {
        if (first != second) width_.swap(first, second);
    }

    void shortsort(char* lo, char* hi) const noexcept {
        for (; hi > lo; hi -= width_.value) {
            char* max = lo;
            for (char* p = lo + width_.value; p <= hi; p += width_.value) {
                if (compare_(p, max) > 0) max = p;
            }
            swap(max, hi);
        }
    }

    Width width_;
    Compare compare_;
};

template <class Width, class Compare>
void Sorter<Width, Compare>::sort(char* lo, char* hi) const noexcept {
    struct Partition {
        char* lo;
        char* hi;
    };
    Partition stack[kStackSize];
    int waiting = 0;
    const std::size_t width = width_.value;
    for (;;) {
        const std::size_t size = static_cast<std::size_t>(hi - lo) / width + 1;
        if (size <= kShortPartition) {
            shortsort(lo, hi);
        } else {
            // The pivot stands at lo; both scans pass over elements equal to it.
            swap(lo + size / 2 * width, lo);
            char* loguy = lo;
            char* higuy = hi + width;
            for (;;) {
                do loguy += width;
                while (loguy <= hi && compare_(loguy, lo) <= 0);
                do higuy -= width;
                while (higuy > lo && compare_(higuy, lo) >= 0);
                if (higuy < loguy) break;
                swap(loguy, higuy);
            }
            swap(lo, higuy);

            const bool leftWaits = lo + width < higuy;
            const bool rightWaits = loguy < hi;
            // Bytes on the left and on the right, without a sign: either may be above half the
            // memory.
            if (static_cast<std::size_t>(higuy - lo) >=
                static_cast<std::size_t>(hi + width - loguy)) {
                if (leftWaits) stack[waiting++] = {lo, higuy - width};
                if (rightWaits) {
                    lo = loguy;
                    continue;
                }
            } else {
                if (rightWaits) stack[waiting++] = {loguy, hi};
                if (leftWaits) {
                    hi = higuy - width;
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

template <class Compare>
void sortWith(char* lo, char* hi, uint32_t width, Compare compare) noexcept {
    switch (width) {
        case 4:
            return Sorter(FixedWidth<4>{}, compare).sort(lo, hi);
        case 8:
            return Sorter(FixedWidth<8>{}, compare).sort(lo, hi);
        case 16:
            return Sorter(FixedWidth<16>{}, compare).sort(lo, hi);
        default:
            return Sorter(AnyWidth{width}, compare).sort(lo, hi);
    }
}

}  // namespace
}  // namespace korv

void KorvQSort(void* base, uint32_t count, uint32_t width, KorvCompare compare, void* context,
               uint8_t ascending) {
    if (count < 2 || width == 0) return;
    char* lo = static_cast<char*>(base);
    char* hi = lo + static_cast<std::size_t>(count - 1) * width;
    if (ascending) {
        korv::sortWith(lo, hi, width, korv::Order<true>{compare, context});
    } else {
        korv::sortWith(lo, hi, width, korv::Order<false>{compare, context});
    }
}
