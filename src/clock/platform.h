// platform.h - where the clocks come from.  Windows takes them from the C
// runtime (clock, time, _ftime, _tzset); Linux from the C library's
// equivalents (clock, time, clock_gettime, tzset with its `timezone`).  Both
// read the processor's time-stamp counter for the high-resolution clock.
//
// The sources are reached through one table so that tests can put a fixed
// clock in their place (an unavailable clock, the last second of a day, a
// given time zone) and drive the calibration with a simulated counter.
#pragma once

#include <cstdint>
#include <ctime>

#include <x86intrin.h>

namespace intrins::clock {

// Seconds and milliseconds of the wall clock.
struct FineTime {
    int64_t seconds;
    int32_t millis;
};

struct Sources {
    bool (*available)();              // the C library's clock() is not negative
    std::time_t (*now)();             // time()
    void (*utc)(std::time_t, std::tm*);  // gmtime
    FineTime (*fine)();               // seconds and milliseconds
    int32_t (*zone_west)();           // minutes west of Greenwich, standard time
    uint64_t (*ticks)();              // the time-stamp counter
    void (*spin)(uint64_t n);         // an empty counting loop of n increments
};

// The operating system's part (platform_posix.cpp, platform_windows.cpp);
// clock() and time() are the C library's on both.
namespace os {
void utc(std::time_t t, std::tm* out);
FineTime fine();
int32_t zone_west();
}  // namespace os

// The sources in use; tests replace them (nullptr restores the platform's).
const Sources& sources();
void set_sources(const Sources* s);

// The time-stamp counter, read directly: the high-resolution clock's hot path.
inline uint64_t read_ticks() { return __rdtsc(); }

// The calibration's empty counting loop.  The empty asm statement makes each
// increment observable, so the loop is kept and runs at about one increment
// per cycle.
inline void spin(uint64_t n) {
    for (uint64_t k = 0; k < n; ++k) __asm__ volatile("" : "+r"(k));
}

}  // namespace intrins::clock
