// Faults of which each ends the program, but which the user sees together.
#pragma once

#include <string>

#include "host/host_error.h"

namespace host {

class Faults {
  public:
    // Takes a step, and keeps the message of a HostError.
    template <typename Step>
    void collect(Step step) {
        try {
            step();
            return;
        } catch (const HostError& error) {
            if (count_ > 0) messages_ += "\n";
            messages_ += error.what();
        }
        if (++count_ == kMost) throw HostError(messages_ + "\nno more than these are shown");
    }

    // Throws what has been collected, if anything.
    void raise() const {
        if (count_ > 0) throw HostError(messages_);
    }

  private:
    // A file of another kind, given by mistake, has a fault in every line.
    static constexpr int kMost = 20;

    int count_ = 0;
    std::string messages_;
};

}  // namespace host
