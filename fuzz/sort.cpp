// Sorting with comparisons that are consistent, constant, drawn or dependent on the address: the
// comparisons that a plain sort makes, in the same order, and the same elements at the end.
#include "korv/sort.h"
#include "reference/quicksort.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;
using reference::Bytes;

using Order = std::function<int32_t(const unsigned char*, const unsigned char*)>;

enum Kind { byBytes, byFirstBit, alwaysLess, alwaysMore, drawn, byAddress, kinds };

// A new order for each sort: some count their calls. `base` is the array's, so that addresses mean
// the same in each.
Order makeOrder(unsigned kind, uint32_t width, uint32_t seed, const unsigned char* base) {
    switch (kind) {
        case byBytes:
            return [width](const unsigned char* x, const unsigned char* y) {
                return std::memcmp(x, y, width);
            };
        case byFirstBit:
            return [](const unsigned char* x, const unsigned char* y) {
                return (*x & 1) - (*y & 1) > 0   ? INT32_MAX
                       : (*x & 1) - (*y & 1) < 0 ? INT32_MIN
                                                 : 0;
            };
        case alwaysLess:
            return [](const unsigned char*, const unsigned char*) { return -1; };
        case alwaysMore:
            return [](const unsigned char*, const unsigned char*) { return 1; };
        case drawn:
            return [seed](const unsigned char*, const unsigned char*) mutable {
                seed = seed * 1664525 + 1013904223;
                return static_cast<int32_t>(seed >> 16) % 3 - 1;
            };
        default:
            return [base, seed](const unsigned char* x, const unsigned char* y) {
                const auto mixed = static_cast<uint32_t>((x - base) * 7 + (y - base) * 13) ^ seed;
                return static_cast<int32_t>(mixed * 2654435761u >> 8 & 3) - 1;
            };
    }
}

// The elements in an order that depends on nothing but themselves.
std::vector<Bytes> contents(const unsigned char* array, std::size_t count, uint32_t width) {
    std::vector<Bytes> elements;
    for (std::size_t i = 0; i < count; ++i) {
        elements.emplace_back(array + i * width, array + (i + 1) * width);
    }
    std::sort(elements.begin(), elements.end());
    return elements;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    constexpr std::size_t mostElements = 100;
    Input input(data, size);
    const unsigned kind = input.choice(kinds);
    const auto ascending = static_cast<uint8_t>(input.choice(3));
    const uint32_t width = input.choice(40);
    const std::size_t shift = input.choice(16);
    const auto seed = input.number<uint32_t>();
    const Bytes array = input.units<unsigned char>(mostElements * std::max(width, 1u));
    const auto count = static_cast<uint32_t>(width > 0 ? array.size() / width : array.size());

    Block<unsigned char> plain(array, shift), sorted(array, shift);
    reference::Recorder expected{
        plain.data(), width, makeOrder(kind, width, seed, plain.data()), {}};
    reference::quicksort(plain.data(), count, width, reference::Recorder::compare, &expected,
                         ascending);
    reference::Recorder made{sorted.data(), width, makeOrder(kind, width, seed, sorted.data()), {}};
    KorvQSort(sorted.data(), count, width, reference::Recorder::compare, &made, ascending);

    FUZZ_EXPECT(made.made == expected.made);
    FUZZ_EXPECT(sorted.holds({plain.data(), plain.size()}));
    FUZZ_EXPECT(contents(sorted.data(), count, width) == contents(array.data(), count, width));
    for (std::size_t i = 1; kind == byBytes && width > 0 && i < count; ++i) {
        const int order = std::memcmp(&sorted[(i - 1) * width], &sorted[i * width], width);
        FUZZ_EXPECT(ascending ? order <= 0 : order >= 0);
    }
    return 0;
}
