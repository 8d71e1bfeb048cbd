// The options of the command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kit {

// Exit statuses.
inline constexpr int kSound = 0;
inline constexpr int kHasFindings = 1;
inline constexpr int kNotRun = 2;

enum class Mode { inspect, check, list };

struct Options {
    Mode mode = Mode::check;
    std::string module;
    std::vector<std::string> rules;
    int level = 3;
    uint64_t seed = 1;
    unsigned seconds = 1;   // for each fuzz test of each rule
    unsigned timeout = 60;  // for each test
    unsigned jobs = 0;
    std::string only;
    std::string skip;
    std::string values;
    std::string files;
    std::string record;
    std::string replay;
    std::vector<std::string> helpers;
    bool json = false;
    bool verbose = false;
};

// False when the program is to end with `status` at once.
bool parseOptions(int argc, char** argv, Options& options, int& status);

}  // namespace kit
