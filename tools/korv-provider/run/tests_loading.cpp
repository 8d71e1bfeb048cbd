// Level 1: loading. The tests of the file alone are those of korv-provider itself.
#include <time.h>

#include <algorithm>

#include <stdexcept>

#include "checks.h"
#include "process_state.h"
#include "watched_heap.h"

namespace kit {

namespace {

// Loads and calls the entry function; false after a finding.
bool loads(const Context& context) {
    doing("loading the module");
    try {
        const auto handle = loadModule(context.settings.module);
        doing("calling KorvProviderEntry");
        if (const PrvEntryFunction entry = findEntry(handle.get())) entry();
        doing("unloading the module");
    } catch (const std::runtime_error& error) {
        finding(error.what());
        return false;
    }
    return true;
}

void symbolsResolved(const Context& context) {
    loads(context);
}

// What the module prints is seen by korv-provider.
void silentLoading(const Context& context) {
    loads(context);
}

double secondsNow() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void quickLoading(const Context& context) {
    constexpr double kLimit = 0.1;
    constexpr int kTries = 10;  // on a busy machine, one may take long
    double least = 1e9;
    for (int i = 0; i < kTries && least >= kLimit; ++i) {
        const double start = secondsNow();
        if (!loads(context)) return;
        least = std::min(least, secondsNow() - start);
    }
    figure("loading, ms", std::to_string(least * 1000));
    if (least >= kLimit) {
        finding("loading takes " + std::to_string(static_cast<int>(least * 1000)) +
                " ms, even in the quickest of " + std::to_string(kTries) + " attempts");
    }
}

size_t mappings() {
    const std::string maps = readFile("/proc/self/maps");
    return static_cast<size_t>(std::count(maps.begin(), maps.end(), '\n'));
}

void reloading(const Context& context) {
    constexpr int kTimes = 1000;
    // What libraries keep once is no leak.
    for (int i = 0; i < 20; ++i) {
        if (!loads(context)) return;
    }
    const std::string descriptors = aspectNow("descriptors");
    const size_t blocks = heap::liveBlocks();
    const size_t maps = mappings();
    for (int i = 20; i < kTimes; ++i) {
        if (!loads(context)) return;
    }
    constexpr size_t kAllowed = 20;
    if (heap::liveBlocks() > blocks + kAllowed) {
        finding("loading and unloading " + std::to_string(kTimes) + " times keeps " +
                std::to_string(heap::liveBlocks() - blocks) + " blocks of memory");
    }
    if (mappings() > maps + kAllowed) {
        finding("loading and unloading " + std::to_string(kTimes) + " times keeps " +
                std::to_string(mappings() - maps) + " mappings of memory");
    }
    if (aspectNow("descriptors") != descriptors) {
        finding("loading and unloading " + std::to_string(kTimes) + " times keeps descriptors");
    }
}

void cleanConstructors(const Context& context) {
    const ProcessState before;
    if (!loads(context)) return;
    for (const std::string& aspect : before.changes()) {
        finding("loading and unloading changes the " + aspect);
    }
}

}  // namespace

std::vector<NamedTest> loadingTests() {
    return {{"symbols-resolved", symbolsResolved},
            {"silent-loading", silentLoading},
            {"quick-loading", quickLoading},
            {"reloading", reloading},
            {"clean-constructors", cleanConstructors}};
}

}  // namespace kit
