// The clock of the test program, which tests set and stop, and its time zone.
#pragma once

#include <time.h>

#include <cstdlib>

namespace test_clock {

// time() answers `moment` from now on, for the libraries too.
void stopAt(time_t moment);

// time() tells the real time again.
void release();

// How often time() was called since the clock was stopped.
unsigned readings();

}  // namespace test_clock

// The time zone of the process, without the call that makes the system take notice.
inline void setZone(const char* zone) {
    setenv("TZ", zone, 1);
}

inline constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
inline constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";
inline constexpr const char* kSydney = "AEST-10AEDT,M10.1.0,M4.1.0/3";
inline constexpr const char* kAlwaysSummer = "XXX3YYY2,0/0,J365/25";
inline constexpr const char* kAllZones[] = {"UTC0",        kCentralEurope, kNewYork, kSydney,
                                            kAlwaysSummer, "NPT-5:45",     "AAA12",  "BBB-14"};
