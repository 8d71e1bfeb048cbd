// The mode inspect.
#pragma once

#include "options.h"

namespace kit {

// Prints what the module says of itself; returns the exit status.
int inspect(const Options& options);

}  // namespace kit
