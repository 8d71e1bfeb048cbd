// What the program needs of the process that it runs in, and what it tells it at the end.
#pragma once

namespace host {

enum ExitStatus { kAllMasked = 0, kSomeFailed = 1, kNotRun = 2 };

// Standard streams, signals, locale and time zone. Throws HostError when one cannot be had.
void prepareProcess();

}  // namespace host
