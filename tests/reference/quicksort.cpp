// Quicksort with a stack of partitions, elements exchanged byte by byte.
#include "reference/quicksort.h"

#include <algorithm>

namespace reference {

namespace {

struct Order {
    uint32_t width;
    KorvCompare compare;
    void* context;
    bool ascending;

    int32_t operator()(const char* first, const char* second) const {
        return ascending ? compare(first, second, context) : compare(second, first, context);
    }
};

void swap(char* first, char* second, uint32_t width) {
    if (first == second) return;
    while (width--) {
        const char byte = *first;
        *first++ = *second;
        *second++ = byte;
    }
}

void shortsort(char* lo, char* hi, const Order& order) {
    while (hi > lo) {
        char* max = lo;
        for (char* p = lo + order.width; p <= hi; p += order.width) {
            if (order(p, max) > 0) max = p;
        }
        swap(max, hi, order.width);
        hi -= order.width;
    }
}

}  // namespace

int quicksort(void* base, uint32_t count, uint32_t width, KorvCompare compare, void* context,
              uint8_t ascending) {
    if (count < 2 || width == 0) return 0;
    const Order order{width, compare, context, ascending != 0};
    char* los[30];
    char* his[30];
    int top = 0;
    int deepest = 0;
    char* lo = static_cast<char*>(base);
    char* hi = lo + (count - 1) * width;
    for (;;) {
        const uint32_t size = static_cast<uint32_t>(hi - lo) / width + 1;
        if (size <= 8) {
            shortsort(lo, hi, order);
        } else {
            swap(lo + size / 2 * width, lo, width);
            char* loguy = lo;
            char* higuy = hi + width;
            for (;;) {
                do loguy += width;
                while (loguy <= hi && order(loguy, lo) <= 0);
                do higuy -= width;
                while (higuy > lo && order(higuy, lo) >= 0);
                if (higuy < loguy) break;
                swap(loguy, higuy, width);
            }
            swap(lo, higuy, width);
            if (higuy - 1 - lo >= hi - loguy) {
                if (lo + width < higuy) {
                    los[top] = lo;
                    his[top++] = higuy - width;
                }
                if (loguy < hi) {
                    lo = loguy;
                    continue;
                }
            } else {
                if (loguy < hi) {
                    los[top] = loguy;
                    his[top++] = hi;
                }
                if (lo + width < higuy) {
                    hi = higuy - width;
                    continue;
                }
            }
        }
        deepest = std::max(deepest, top);
        if (--top < 0) return deepest;
        lo = los[top];
        hi = his[top];
    }
}

}  // namespace reference
