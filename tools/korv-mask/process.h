// What the program needs of the process that it runs in, and what it tells it at the end.
#pragma once

namespace tool {

enum ExitStatus { kAllMasked = 0, kSomeFailed = 1, kNotRun = 2 };

// Prepares standard streams, signals and locale. Throws ToolError.
void prepareProcess();

}  // namespace tool
