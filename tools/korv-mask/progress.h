// A progress bar on standard error for long inputs.
#pragma once

#include <cstdint>
#include <string>

namespace tool {

enum class ProgressMode { automatic, always, never };

class Progress {
  public:
    // Inputs below this many bytes are done before a bar is of use.
    static constexpr uint64_t kLongInput = 8 * 1024 * 1024;

    // `total` is 0 when it is not known: then the bar counts megabytes. The automatic mode shows it
    // only for long inputs, and when standard error is a terminal.
    Progress(ProgressMode mode, uint64_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void update(uint64_t done) {
        if (enabled_ && done >= nextDraw_) draw(done);
    }
    // Takes the bar off the line, so that a message can be written there.
    void clear();

  private:
    void draw(uint64_t done);

    bool enabled_;
    bool shown_ = false;
    uint64_t total_;
    uint64_t nextDraw_ = 0;
};

// The bar's text for a state.
std::string progressText(uint64_t done, uint64_t total);

}  // namespace tool
