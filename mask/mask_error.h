// What ends the opening of rules: one or more faults, each with a message that is complete.
#pragma once

#include <algorithm>
#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "korv/mask.h"

namespace mask {

struct Fault {
    int32_t status;     // KorvMaskStatus
    uint32_t line;      // in the rules, from 1, or 0
    uint32_t position;  // character in that line, from 1, or 0
    std::string message;
};

// A message without control characters and of limited length, whatever the rules hold.
inline std::string oneLine(std::string message) {
    constexpr size_t kMostBytes = 2000;
    if (message.size() > kMostBytes) {
        size_t end = kMostBytes;
        while ((message[end] & 0xC0) == 0x80) --end;  // not amid a character
        message.replace(end, std::string::npos, "...");
    }
    for (size_t i = 0; i < message.size(); ++i) {
        const auto byte = static_cast<unsigned char>(message[i]);
        // U+0080 to U+009F have two bytes.
        const bool isWide = byte == 0xC2 && i + 1 < message.size() &&
                            static_cast<unsigned char>(message[i + 1]) < 0xA0;
        if (isWide) message.replace(i, 2, "?");
        if (byte < ' ' || byte == 0x7F) message[i] = '?';
    }
    return message;
}

class MaskError : public std::exception {
  public:
    explicit MaskError(std::vector<Fault> list) : faults(std::move(list)) {}
    MaskError(int32_t status, std::string message)
        : faults({{status, 0, 0, oneLine(std::move(message))}}) {}
    // "file:line:position: message" about the rules.
    MaskError(int32_t status, const std::string& file, uint32_t line, uint32_t position,
              const std::string& message)
        : faults({{status, line, position,
                   oneLine(file + ":" + std::to_string(line) + ":" + std::to_string(position) +
                           ": " + message)}}) {}

    const char* what() const noexcept override { return faults.front().message.c_str(); }

    std::vector<Fault> faults;  // never empty
};

// Collects the faults of several steps, so that the user sees them together.
class Faults {
  public:
    template <class Step>
    void collect(Step step) {
        try {
            step();
        } catch (MaskError& error) {
            for (Fault& fault : error.faults) add(std::move(fault));
        }
    }

    // Throws what has been collected, if anything, in the order of the rules' lines; faults that
    // are about no line come last.
    void raise() {
        if (faults_.empty()) return;
        std::stable_sort(faults_.begin(), faults_.end(),
                         [](const Fault& a, const Fault& b) { return a.line - 1 < b.line - 1; });
        throw MaskError(faults_);
    }

  private:
    // A file of another kind, given by mistake, has a fault in every line.
    static constexpr size_t kMost = 20;

    void add(Fault fault) {
        faults_.push_back(std::move(fault));
        if (faults_.size() == kMost) raise();
    }

    std::vector<Fault> faults_;
};

}  // namespace mask
