// A companion library of the tests: it writes down the last call and answers what the test has set.
#pragma once

#include <cstdint>
#include <string>

namespace companion {

struct Call {
    std::string function;
    const void* source;
    std::uint32_t sourceLen;
    const void* target;
    std::uint32_t capacity;
    std::uint32_t outLenBefore;
    const void* options;
};

extern int calls;
extern Call last;

extern std::int32_t status;  // what every conversion returns
extern bool writes;          // whether it fills the target's capacity with '#' and a terminator
extern std::int64_t outLen;  // what it stores as its output length; nothing when negative

// Forgets the calls; conversions write nothing, store nothing and succeed.
void reset();

}  // namespace companion
