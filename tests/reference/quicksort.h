// The sort, and a recorder of the comparisons that a sort makes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "korv/sort.h"

namespace reference {

// Returns the largest number of partitions that waited at the end of one.
int quicksort(void* base, uint32_t count, uint32_t width, KorvCompare compare, void* context,
              uint8_t ascending);

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

}  // namespace reference
