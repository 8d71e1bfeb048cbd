// What the parts of the concurrency test share: one thread's run, its calls and its checks.
//
// The program keeps away from the C++ run-time library and from GoogleTest, so that a sanitizer
// that has to see all code can see all of it.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "korv/datacnv.h"
#include "korv/korv.h"

// The functions that must be called, from the lists of exports.
struct Names {
    static constexpr int most = 160;
    char name[most][48];
    int count = 0;

    // The index of a name, or `count`.
    int find(const char* wanted) const {
        int i = 0;
        while (i < count && std::strcmp(name[i], wanted) != 0) ++i;
        return i;
    }
};

struct Run {
    const Names* names;
    uint32_t thread;
    uint32_t round;
    bool called[Names::most + 1];
    int faults;

    // A number that no other thread has in any round, never 0.
    uint32_t number() const { return round * 8 + thread + 1; }

    void enter(const char* function) { called[names->find(function)] = true; }
    void check(bool holds, const char* what, const char* file, int line);
};

// Both need a Run called `run`.
#define CALL(function, ...) (run.enter(#function), function(__VA_ARGS__))
#define CHECK(condition) run.check((condition), #condition, __FILE__, __LINE__)

template <class Record>
Record* zeroed() {
    return static_cast<Record*>(std::calloc(1, sizeof(Record)));
}

inline bool equal(const char* first, const char* second) {
    return std::strcmp(first, second) == 0;
}
inline bool equal(const wchar_t* first, const wchar_t* second) {
    return std::wcscmp(first, second) == 0;
}

// A text that differs from run to run, "Run 00001 ...", in either width.
template <class Char>
struct Text {
    static constexpr uint32_t length = 44;
    Char characters[length + 1];

    explicit Text(uint32_t number) {
        const char pattern[] = "Run 00000, the quick brown Fox and Lazy Dogs";
        static_assert(sizeof pattern == length + 1);
        for (uint32_t i = 0; i <= length; ++i) characters[i] = static_cast<Char>(pattern[i]);
        for (int i = 8; i >= 4; --i, number /= 10) {
            characters[i] = static_cast<Char>('0' + number % 10);
        }
    }
};

using Part = void (*)(Run& run);
void convertRecords(Run& run);
void copyDescriptions(Run& run);
void captureErrors(Run& run);
void describeTypes(Run& run);
void measureValues(Run& run);
void countDaysAndDigits(Run& run);
void writeDigits(Run& run);
void maskDigits(Run& run);
void readClockAndSort(Run& run);
void changeCase(Run& run);
void compareText(Run& run);
void parseText(Run& run);
void convertUnits(Run& run);
void swapBytes(Run& run);
void convertText(Run& run);
void convertNumbers(Run& run);
