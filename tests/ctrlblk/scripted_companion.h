// A companion library of the tests: it writes down each call and answers what the test has set.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace companion {

struct Call {
    const void* source;
    std::uint32_t sourceLen;
    const void* target;
    std::uint32_t capacity;
    std::uint32_t outLenBefore;
    std::uint32_t
        codePage;  // read at its place in the options, as the framework's own library does
    unsigned char flag;
    bool targetZeroed;  // whether all of the target was zero; widening only
};

struct Answer {
    std::int32_t status = 0;
    std::uint32_t outLen = 0;
    std::wstring text;  // what a widening writes to the target
};

extern std::vector<Call> widened;    // calls of KORVCnvCharToWVarcharSz
extern std::vector<Call> narrowed;   // calls of KORVCnvWVarcharSzToVarcharSz
extern std::vector<Answer> answers;  // for the calls in turn; success beyond the last

// Forgets calls and answers.
void reset();

}  // namespace companion
