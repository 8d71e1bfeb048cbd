// Drawing of the progress bar.
#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tool {

namespace {
constexpr uint64_t kMegabyte = 1000 * 1000;
constexpr uint64_t kWidth = 40;
}  // namespace

Progress::Progress(ProgressMode mode, uint64_t total) : total_(total) {
    const bool terminal = ::isatty(STDERR_FILENO) == 1;
    const bool isLong = total == 0 || total >= kLongInput;
    enabled_ =
        mode == ProgressMode::always || (mode == ProgressMode::automatic && terminal && isLong);
    // An input of unknown length shows a bar once it has turned out to be long.
    if (total == 0 && mode == ProgressMode::automatic) nextDraw_ = kLongInput;
}

Progress::~Progress() {
    clear();
}

void Progress::draw(uint64_t done) {
    std::fprintf(stderr, "\r%s", progressText(done, total_).c_str());
    std::fflush(stderr);
    shown_ = true;
    nextDraw_ = done + std::max<uint64_t>(total_ / 100, kMegabyte);
}

void Progress::clear() {
    if (!shown_) return;
    std::fprintf(stderr, "\r\x1b[K");
    std::fflush(stderr);
    shown_ = false;
}

std::string progressText(uint64_t done, uint64_t total) {
    if (total == 0) return std::to_string(done / kMegabyte) + " MB";
    done = std::min(done, total);
    const auto filled = static_cast<size_t>(done * kWidth / total);
    return "[" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "] " +
           std::to_string(done * 100 / total) + " %";
}

}  // namespace tool
