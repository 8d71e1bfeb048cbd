// Times KorvMaskBatch: prints a line for each rule with nanoseconds per value, the median of
// several runs, and the rule's name. The argument is the folder of the empty provider's module; the
// others are found beside the engine.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "korv/mask.h"

namespace {

constexpr uint64_t kValues = 100000;
constexpr int kRuns = 15;

struct Column {
    uint64_t count;
    std::string bytes;
    std::vector<int32_t> offsets = {0};

    void add(const std::string& value) {
        bytes += value;
        offsets.push_back(static_cast<int32_t>(bytes.size()));
        ++count;
    }
    KorvMaskStrings strings() const {
        return {count, 0, 32, offsets.data(), bytes.data(), nullptr};
    }
};

// Values that count up: `before`, a number of `digits` digits, `after`.
Column numbered(uint64_t count, const char* before, int digits, const char* after) {
    Column column = {};
    for (uint64_t i = 0; i < count; ++i) {
        std::string number = std::to_string(i * 7919);
        number.insert(0, static_cast<size_t>(digits) - number.size(), '0');
        column.add(before + number + after);
    }
    return column;
}

// All values of so many digits.
Column allOf(int digits) {
    Column column = {};
    const uint64_t end = static_cast<uint64_t>(std::pow(10, digits));
    for (uint64_t i = 0; i < end; ++i) column.add(std::to_string(end + i).substr(1));
    return column;
}

// Nanoseconds per value, or a negative number.
double measure(const char* rule, const Column& column, const char* const* folders) {
    static const uint8_t secret[32] = {1};
    static const KorvMaskSecret known = {"bench", secret, sizeof secret};
    const char* const name = "V";
    const std::string rules = std::string("V = ") + rule;
    KorvMaskSettings settings = {};
    settings.size = sizeof settings;
    settings.rules = rules.c_str();
    settings.columns = &name;
    settings.columnCount = 1;
    settings.folders = folders;
    settings.folderCount = folders == nullptr ? 0 : 1;
    settings.secrets = &known;
    settings.secretCount = 1;
    KorvMask* mask = nullptr;
    if (KorvMaskOpen(&settings, &mask) != KORV_MASK_SUCCESS) {
        std::fputs(KorvMaskGetRecord(mask, 0)->message, stderr);
        KorvMaskClose(mask);
        return -1;
    }
    std::vector<double> times;
    const KorvMaskStrings source = column.strings();
    for (int run = 0; run < kRuns; ++run) {
        const KorvMaskResult* result = nullptr;
        const auto start = std::chrono::steady_clock::now();
        if (KorvMaskBatch(mask, 0, 1, &source, nullptr, &result) != KORV_MASK_SUCCESS) return -1;
        const std::chrono::duration<double, std::nano> took =
            std::chrono::steady_clock::now() - start;
        times.push_back(took.count() / static_cast<double>(column.count));
    }
    KorvMaskClose(mask);
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const char* const folder = argv[1];
    struct {
        const char* name;
        const char* rule;
        Column column;
        const char* const* folders;
    } const cases[] = {
        {"empty provider", "EMPTY", numbered(kValues, "4000000", 9, ""), &folder},
        {"FF1 of 9 digits", "CCN, secret=bench", numbered(kValues, "400000", 9, "0"), nullptr},
        {"FF1 of 5 letters, 9 digits", "AFF, secret=bench", numbered(kValues, "abcde ", 9, ""),
         nullptr},
        {"EML pseudonym", "EML, secret=bench", numbered(kValues, "user.", 9, "@mail.example"),
         nullptr},
        {"HASH pick", "HASH, secret=bench, list=Ada;Grace;Mary", numbered(kValues, "name ", 9, ""),
         nullptr},
        // 5 digits: with one table, and with a table for each of 100 prefixes.
        {"table of 100,000 numbers", "NID, secret=bench", allOf(5), nullptr},
        {"tables that are not cached", "CCN, secret=bench, prefix=6, last=4",
         numbered(100, "", 7, "123456789"), nullptr},
    };
    for (const auto& [name, rule, column, folders] : cases) {
        const double time = measure(rule, column, folders);
        if (time < 0) return 1;
        std::printf("%.2f %s\n", time, name);
    }
}
