// The command line.
#pragma once

#include <string>

#include "host/progress.h"

namespace host {

struct Options {
    std::string rules;
    std::string input = "-";
    std::string output = "-";
    std::string report;
    std::string providers;
    ProgressMode progress = ProgressMode::automatic;
};

// Reads the command line. False when the program is to end at once with `status`, because help was
// asked for or the command line is wrong; the text for that has been printed.
bool parseOptions(int argc, char** argv, Options& options, int& status);

}  // namespace host
