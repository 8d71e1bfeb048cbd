// What the helper says to korv-provider: findings, notes and figures, and what it is doing.
#pragma once

#include <string>

#include "record.h"

namespace kit {

// Opens the channels. False when the program was not started by korv-provider.
bool openChannels();

void send(const Record& record);
inline void finding(const std::string& text) {
    send({"finding", text});
}
inline void note(const std::string& text) {
    send({"note", text});
}
// The test cannot be run, for a reason that is no fault of the module.
inline void notRun(const std::string& reason) {
    send({"not run", reason});
}
inline void figure(const std::string& name, const std::string& value) {
    send({"figure", name, value});
}

// What is being done, for the finding of a crash. Cheap enough for every value.
void doing(const char* what, const char* detail = "");

}  // namespace kit
