// Integers and records, sorted; every batch finds fresh arrays, and their copying is not timed.
#include <cstdlib>
#include <cstring>

#include "korv/sort.h"
#include "reference/quicksort.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

// An element begins with its key.
int32_t compareKeys(const void* first, const void* second, void* /*context*/) {
    int32_t a;
    int32_t b;
    std::memcpy(&a, first, sizeof a);
    std::memcpy(&b, second, sizeof b);
    return (a > b) - (a < b);
}

void sort(uint32_t count, uint32_t width) {
    const std::size_t inputs = count < 1000 ? 256 : count == 1000 ? 8 : 1;
    const std::size_t words = width / sizeof(int32_t);
    const std::size_t array = count * words;
    const auto& fresh = forever(randomNumbers<int32_t>(inputs * array, INT32_MIN, INT32_MAX));
    auto& work = forever(fresh);
    const auto at = [&, array](std::size_t i) { return &work[i * array]; };
    Row("KorvQSort",
        std::to_string(count) + (width == 4 ? " integers" : " records of " + std::to_string(width)),
        inputs)
        .refresh([&] { work = fresh; })
        .observe([at, array](std::size_t i) { return bytesOf(at(i), array); })
        .with("ours",
              [=](std::size_t i) { KorvQSort(at(i), count, width, compareKeys, nullptr, 1); })
        .with("literal",
              [=](std::size_t i) {
                  reference::quicksort(at(i), count, width, compareKeys, nullptr, 1);
              })
        .with("qsort_r",
              [=](std::size_t i) { qsort_r(at(i), count, width, compareKeys, nullptr); });
}

}  // namespace

void addQuicksort() {
    for (uint32_t count : {8, 1000, 100000}) sort(count, 4);
    for (uint32_t width : {16, 64}) sort(1000, width);
}

}  // namespace bench
