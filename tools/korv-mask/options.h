// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "progress.h"
#include "row_parser.h"
#include "secret_variables.h"

namespace tool {

struct Options {
    std::string rules;
    std::string secrets;    // the file
    std::string newSecret;  // the name
    const SecretVariables* secretVariables = nullptr;
    std::string input = "-";
    std::string output = "-";
    std::string report;
    std::string summary;
    std::string html;
    std::vector<std::string> providers;
    Dialect dialect;
    std::string encoding;
    std::vector<std::string> nullTexts;
    uint32_t jobs = 0;  // 0: the cores
    std::optional<uint64_t> maxErrors;
    uint64_t differenceRows = 0;  // --diff
    bool keepUnlisted = false;
    bool verifyProviders = false;
    bool check = false;
    bool suggest = false;
    bool listProviders = false;
    bool showClear = false;
    bool strict = false;
    bool unmask = false;
    ProgressMode progress = ProgressMode::automatic;
};

// Reads the command line. False when the program is to end at once with `status`, because help was
// asked for or the command line is wrong; the text for that has been printed.
bool parseOptions(int argc, char** argv, Options& options, int& status);

}  // namespace tool
