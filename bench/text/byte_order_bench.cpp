// Counted byte swaps of 256 units. Swapping in place twice restores the units: nothing is
// refreshed.
#include <unistd.h>

#include "korv/text.h"
#include "peers/peers.h"
#include "reference/bytes.h"
#include "support/families.h"
#include "support/inputs.h"
#include "support/row.h"

namespace bench {
namespace {

constexpr std::size_t kUnits = 256;
constexpr std::size_t kInputs = 8;

template <class Unit>
std::vector<Unit> blockOf(std::size_t count) {
    // No unit is zero, in either order of its bytes.
    return randomNumbers<Unit>(count, 1, static_cast<Unit>(-1));
}

template <class Unit>
Row rowOf(const char* function, const std::vector<Unit>& fresh, std::vector<Unit>& work) {
    Row row(function, "256 units", kInputs);
    row.observe([&](std::size_t i) { return bytesOf(&work[i * kUnits], kUnits); });
    // The comparison of the variants starts from the same units; the time does not need it.
    row.refresh([&] { work = fresh; });
    return row;
}

}  // namespace

void addByteOrder() {
    constexpr int32_t bytes = kUnits * sizeof(uint16_t);
    const auto& shorts = forever(blockOf<uint16_t>(kInputs * kUnits));
    auto& shortWork = forever(shorts);
    rowOf("SwapnBytes_2", shorts, shortWork)
        .with("ours", [&](std::size_t i) { SwapnBytes_2(&shortWork[i * kUnits], bytes); })
        .with("literal",
              [&](std::size_t i) { reference::swapUnits(&shortWork[i * kUnits], bytes); })
        .with("swab",
              [&](std::size_t i) { swab(&shorts[i * kUnits], &shortWork[i * kUnits], bytes); });

    constexpr int32_t longBytes = kUnits * sizeof(uint32_t);
    const auto& longs = forever(blockOf<uint32_t>(kInputs * kUnits));
    auto& longWork = forever(longs);
    rowOf("SwapnBytes_4", longs, longWork)
        .with("ours", [&](std::size_t i) { SwapnBytes_4(&longWork[i * kUnits], longBytes); })
        .with("literal",
              [&](std::size_t i) { reference::swapUnits(&longWork[i * kUnits], longBytes); })
        .with("loop of byte swaps",
              [&](std::size_t i) { peerSwapUnits(&longWork[i * kUnits], kUnits); });
}

}  // namespace bench
