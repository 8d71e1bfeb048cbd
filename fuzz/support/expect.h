// What must hold of every input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

[[noreturn]] inline void fail(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
    std::abort();
}

}  // namespace fuzz

#define FUZZ_EXPECT(condition) \
    ((condition) ? static_cast<void>(0) : fuzz::fail(#condition, __FILE__, __LINE__))
