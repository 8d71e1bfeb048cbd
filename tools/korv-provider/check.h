// The mode check.
#pragma once

#include "options.h"

namespace kit {

// Tests the module and prints the findings; returns the exit status.
int check(const Options& options);
// Prints the tests, one in a line.
int listTests();

}  // namespace kit
