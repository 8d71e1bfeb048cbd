// Every exported function works in eight threads at once on records of their own.
//
// Usage: every_function_at_once EXPORTS... Run under the thread sanitizer it finds shared state,
// under the memory sanitizer results that were never written.
#include <pthread.h>

#include <cstdio>
#include <iterator>

#include "concurrency/run.h"

namespace {

constexpr uint32_t kThreadCount = 8;
constexpr uint32_t kRoundCount = 200;

constexpr Part kParts[] = {
    convertRecords, copyDescriptions,   captureErrors,  describeTypes,
    measureValues,  countDaysAndDigits, writeDigits,    maskDigits,
    changeCase,     compareText,        parseText,      convertUnits,
    swapBytes,      convertText,        convertNumbers, readClockAndSort,
};

// The generator of random numbers is one for the whole process: korv/numeric.h says so.
constexpr const char* kOneThreadOnly[] = {"KORVRandomValue"};

bool isForOneThread(const char* name) {
    for (const char* listed : kOneThreadOnly) {
        if (equal(listed, name)) return true;
    }
    return false;
}

bool readNames(const char* path, Names& names) {
    std::FILE* file = std::fopen(path, "r");
    if (!file) return false;
    char line[200];
    bool fits = true;
    while (fits && std::fgets(line, sizeof line, file)) {
        if (std::strncmp(line, "function ", 9) != 0) continue;
        fits = names.count < Names::most &&
               std::sscanf(line, "function %47s", names.name[names.count]) == 1;
        if (fits) ++names.count;
    }
    std::fclose(file);
    return fits;
}

pthread_barrier_t start;

// In the first round all threads do the same at the same time, later each something else.
void* runThread(void* argument) {
    Run& run = *static_cast<Run*>(argument);
    pthread_barrier_wait(&start);
    for (run.round = 0; run.round < kRoundCount; ++run.round) {
        for (std::size_t i = 0; i < std::size(kParts); ++i) {
            kParts[(i + run.round * run.thread) % std::size(kParts)](run);
        }
    }
    return nullptr;
}

int faultsOf(const Run& run) {
    int faults = run.faults;
    for (int i = 0; i < run.names->count; ++i) {
        const char* name = run.names->name[i];
        if (run.called[i] != isForOneThread(name)) continue;
        ++faults;
        std::fprintf(stderr, "thread %u has %s %s\n", static_cast<unsigned>(run.thread),
                     run.called[i] ? "called" : "not called", name);
    }
    if (run.called[run.names->count]) {
        ++faults;
        std::fprintf(stderr, "a function is called that is not exported\n");
    }
    return faults;
}

}  // namespace

// What libc and the loader do by themselves they guard by locks that the thread sanitizer cannot
// see.
extern "C" const char* __tsan_default_suppressions() {
    return "called_from_lib:libc.so.6\ncalled_from_lib:ld-linux-x86-64.so.2\n";
}

void Run::check(bool holds, const char* what, const char* file, int line) {
    if (holds) return;
    ++faults;
    std::fprintf(stderr, "%s:%d: thread %u, round %u: %s\n", file, line,
                 static_cast<unsigned>(thread), static_cast<unsigned>(round), what);
}

int main(int argc, char** argv) {
    static Names names;
    static Run runs[kThreadCount];
    for (int i = 1; i < argc; ++i) {
        if (!readNames(argv[i], names)) {
            std::fprintf(stderr, "cannot read %s\n", argv[i]);
            return 2;
        }
    }
    pthread_t threads[kThreadCount];
    pthread_barrier_init(&start, nullptr, kThreadCount);
    for (uint32_t i = 0; i < kThreadCount; ++i) {
        runs[i].names = &names;
        runs[i].thread = i;
        if (pthread_create(&threads[i], nullptr, runThread, &runs[i]) != 0) return 2;
    }
    int faults = 0;
    for (uint32_t i = 0; i < kThreadCount; ++i) {
        pthread_join(threads[i], nullptr);
        faults += faultsOf(runs[i]);
    }
    const int forOne = std::size(kOneThreadOnly);
    std::printf("%d functions in %u threads, %u rounds; %d faults\n", names.count - forOne,
                static_cast<unsigned>(kThreadCount), static_cast<unsigned>(kRoundCount), faults);
    return faults != 0 || names.count == 0;
}
