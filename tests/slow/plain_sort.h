// The sort transcribed plainly, and a recorder of the comparisons that a sort makes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "korv/sort.h"

namespace slow {

using Bytes = std::vector<unsigned char>;

// Records the comparisons, one after the other, and answers them: the offsets of the two elements,
// then their bytes.
struct Recorder {
    const unsigned char* base;
    uint32_t width;
    std::function<int32_t(const unsigned char*, const unsigned char*)> order;
    Bytes made;

    static int32_t compare(const void* first, const void* second, void* context) {
        auto& self = *static_cast<Recorder*>(context);
        const auto x = static_cast<const unsigned char*>(first);
        const auto y = static_cast<const unsigned char*>(second);
        const std::ptrdiff_t offsets[] = {x - self.base, y - self.base};
        const std::size_t at = self.made.size();
        self.made.resize(at + sizeof offsets + 2 * self.width);
        unsigned char* const record = self.made.data() + at;
        std::memcpy(record, offsets, sizeof offsets);
        std::memcpy(record + sizeof offsets, x, self.width);
        std::memcpy(record + sizeof offsets + self.width, y, self.width);
        return self.order(x, y);
    }
};

// Byte addresses are offsets here, signed so that one in front of the array is no special case.
class PlainSort {
  public:
    PlainSort(unsigned char* base, uint32_t width, KorvCompare compare, void* context,
              uint8_t ascending)
        : base_(base), width_(width), compare_(compare), context_(context), ascending_(ascending) {}

    void sort(uint32_t count) {
        if (count < 2 || width_ == 0) return;
        int64_t lows[30], highs[30];
        int index = 0;
        int64_t lo = 0, hi = int64_t{count - 1} * width_;
        for (;;) {
            bool again = false;
            const int64_t size = (hi - lo) / width_ + 1;
            if (size <= 8) {
                selection(lo, hi);
            } else {
                const int64_t mid = lo + size / 2 * width_;
                exchange(mid, lo);
                int64_t loguy = lo, higuy = hi + width_;
                for (;;) {
                    for (;;) {
                        loguy += width_;
                        if (loguy > hi || compare(loguy, lo) > 0) break;
                    }
                    for (;;) {
                        higuy -= width_;
                        if (higuy <= lo || compare(higuy, lo) < 0) break;
                    }
                    if (higuy < loguy) break;
                    exchange(loguy, higuy);
                }
                exchange(lo, higuy);
                const int64_t left = higuy - 1 - lo, right = hi - loguy;
                if (left >= right) {
                    if (lo + width_ < higuy) {
                        lows[index] = lo;
                        highs[index++] = higuy - width_;
                    }
                    if (loguy < hi) {
                        lo = loguy;
                        again = true;
                    }
                } else {
                    if (loguy < hi) {
                        lows[index] = loguy;
                        highs[index++] = hi;
                    }
                    if (lo + width_ < higuy) {
                        hi = higuy - width_;
                        again = true;
                    }
                }
                deepest = std::max(deepest, index);
            }
            if (again) continue;
            if (--index < 0) return;
            lo = lows[index];
            hi = highs[index];
        }
    }

    int deepest = 0;

  private:
    int32_t compare(int64_t x, int64_t y) {
        return ascending_ ? compare_(base_ + x, base_ + y, context_)
                          : compare_(base_ + y, base_ + x, context_);
    }
    void exchange(int64_t x, int64_t y) {
        if (x == y) return;
        for (int64_t i = 0; i < width_; ++i) std::swap(base_[x + i], base_[y + i]);
    }
    void selection(int64_t lo, int64_t hi) {
        while (hi > lo) {
            int64_t max = lo;
            for (int64_t p = lo + width_; p <= hi; p += width_) {
                if (compare(p, max) > 0) max = p;
            }
            exchange(max, hi);
            hi -= width_;
        }
    }

    unsigned char* base_;
    int64_t width_;
    KorvCompare compare_;
    void* context_;
    uint8_t ascending_;
};

}  // namespace slow
