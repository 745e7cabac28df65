// timing.h - the high-resolution clock's calibration and CPU_TIME's store,
// shared by dclock.cpp and the tests.
#pragma once

#include <cstdint>

#include "clock/platform.h"
#include "frame/kinds.h"

namespace intrins::clock {

struct Calibration {
    double hz;            // a whole number of megahertz, times 1e6
    int passes;           // counting passes run
    double last_elapsed;  // seconds of the last pass (at least 2)
};

// Counter readings as doubles: high half * 2^32 + low half, each unsigned.
inline double tick_count(uint64_t t) {
    return static_cast<double>(static_cast<uint32_t>(t >> 32)) * 4294967296.0 +
           static_cast<double>(static_cast<uint32_t>(t));
}

// Times passes of the empty counting loop against the wall clock until one
// pass lasts at least 2 seconds, and returns the counter's frequency rounded
// to whole megahertz.
Calibration calibrate(const Sources& src);

// The frequency the clock runs on (calibrating first if it has not yet).
double clock_hz();

// CPU_TIME: any time above the largest REAL(4) reads as its negative, in
// every kind.
inline constexpr double kLargestReal4 = 3.4028234663852886e38;
template <class E>
void store_cpu_time(void* out, double t) {
    if (t > kLargestReal4) t = -kLargestReal4;
    Kind<E>::store(out, static_cast<typename Kind<E>::value>(t));
}

}  // namespace intrins::clock
