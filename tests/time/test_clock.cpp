// time() of the test program, in place of the system's.
#include "time/test_clock.h"

#include <atomic>

namespace {

std::atomic<bool> stopped;
std::atomic<unsigned> calls;
time_t stoppedAt;

}  // namespace

// The header gives the name the suffix that it has where time_t is wider than a word.
extern "C" __attribute__((visibility("default"))) time_t time(time_t* out) noexcept {
    time_t now = stoppedAt;
    if (stopped) {
        ++calls;
    } else {
        timespec real{};
        clock_gettime(CLOCK_REALTIME, &real);
        now = real.tv_sec;
    }
    if (out) *out = now;
    return now;
}

namespace test_clock {

void stopAt(time_t moment) {
    stoppedAt = moment;
    calls = 0;
    stopped = true;
}

void release() {
    stopped = false;
}

unsigned readings() {
    return calls;
}

}  // namespace test_clock
