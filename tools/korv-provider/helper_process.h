// The helper korv-provider-run: it loads the module and runs one test in a process of its own.
#pragma once

#include <string>
#include <vector>

#include "record.h"

namespace kit {

// How a run of the helper has ended.
struct HelperRun {
    bool isDone = false;      // the helper came to its regular end
    bool isTimedOut = false;  // it was ended at the time limit
    int signal = 0;           // the signal that ended it, or 0
    int status = 0;           // its exit status
    std::string doing;        // what it was doing last
    size_t printed = 0;       // bytes on its standard output and standard error
    std::string output;       // the beginning of them
    std::vector<Record> records;
};

struct Helper {
    std::string path;  // empty if no helper was found
    int bits = 0;
};

// Runs the helper with a limit of processor time and four times as much time, and with limits of
// memory, file sizes and descriptors. Can be called by several threads. Throws std::system_error
// when it cannot be started.
HelperRun runHelper(const Helper& helper, const std::vector<std::string>& arguments,
                    unsigned seconds);

// The helper of a word size: one of the given ones, or beside this program, in the folder of the
// installed libraries or, for a program in a build folder, in the build folders beside it.
Helper findHelper(int bits, const std::vector<std::string>& given);

// What is wrong with how a run has ended: a crash, a hang, an exit, output. Empty when nothing is.
std::string endOf(const HelperRun& run);

// The message for a module without a helper of its word size.
std::string missingHelper(const std::string& module, int bits);

}  // namespace kit
