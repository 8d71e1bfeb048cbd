// Times KorvMaskBatch with the empty provider: prints nanoseconds per value, the median of several
// runs. The argument is the folder of the provider's module.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "korv/mask.h"

namespace {

constexpr uint64_t kValues = 100000;
constexpr int kRuns = 15;

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const char* const folder = argv[1];
    const char* const name = "CARD";
    KorvMaskSettings settings = {};
    settings.size = sizeof settings;
    settings.rules = "CARD = EMPTY";
    settings.columns = &name;
    settings.columnCount = 1;
    settings.folders = &folder;
    settings.folderCount = 1;
    KorvMask* mask = nullptr;
    if (KorvMaskOpen(&settings, &mask) != KORV_MASK_SUCCESS) {
        std::fputs(KorvMaskGetRecord(mask, 0)->message, stderr);
        return 1;
    }
    std::string bytes;
    std::vector<int32_t> offsets = {0};
    for (uint64_t i = 0; i < kValues; ++i) {
        bytes += std::to_string(4000000000000000 + i * 7919);
        offsets.push_back(static_cast<int32_t>(bytes.size()));
    }
    const KorvMaskStrings source = {kValues, 0, 32, offsets.data(), bytes.data(), nullptr};
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        const KorvMaskResult* result = nullptr;
        const auto start = std::chrono::steady_clock::now();
        if (KorvMaskBatch(mask, 0, 1, &source, nullptr, &result) != KORV_MASK_SUCCESS) return 1;
        const std::chrono::duration<double, std::nano> took =
            std::chrono::steady_clock::now() - start;
        if (result->strings.bytes[0] != '0') return 1;
        times.push_back(took.count() / kValues);
    }
    std::sort(times.begin(), times.end());
    std::printf("%.2f\n", times[times.size() / 2]);
    KorvMaskClose(mask);
}
