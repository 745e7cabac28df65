// dclock.cpp - the exported high-resolution clock $KORVAf90_dclock and
// CPU_TIME, which reads it.
//
// The clock is the time-stamp counter times a scale fixed by a calibration on
// the first call.  The calibration times an empty counting loop of n * 2^24
// increments against the wall clock's seconds and milliseconds until one pass
// lasts 2 seconds or more, then rounds ticks per second to whole megahertz.
// Growing n by one per pass would take minutes on a fast core, so after a
// pass that is too short the next n is predicted from it: sixteenfold while a
// pass is too short to time (under 25 ms), then straight to about 2.15 s.
// The whole calibration takes about 2.2 s.
//
// The calibration is not guarded (the library takes no locks): two threads
// that call first at the same time may both calibrate, and one may read a
// scale of 0 meanwhile.  CPU_TIME is the time since the counter started, not
// the process's processor time.
#include <atomic>
#include <cmath>

#include "clock/timing.h"
#include "intrins.h"

namespace intrins::clock {
namespace {

constexpr double kMinimumPass = 2.0;   // seconds
constexpr double kTargetPass = 2.15;   // what a predicted pass aims at
constexpr double kTimeablePass = 0.025;

std::atomic<uint32_t> uncalibrated{1};
std::atomic<double> scale{0.0};

uint64_t next_passes(uint64_t n, double elapsed) {
    if (elapsed < kTimeablePass) return n * 16;
    double want = std::ceil(static_cast<double>(n) * kTargetPass / elapsed);
    return want > static_cast<double>(n) ? static_cast<uint64_t>(want) : n + 1;
}

}  // namespace

Calibration calibrate(const Sources& src) {
    Calibration c{0.0, 0, 0.0};
    double ticks = 0.0;
    for (uint64_t n = 1;; n = next_passes(n, c.last_elapsed)) {
        FineTime t0 = src.fine();
        uint64_t c0 = src.ticks();
        src.spin(n << 24);
        uint64_t c1 = src.ticks();
        FineTime t1 = src.fine();
        ticks = tick_count(c1) - tick_count(c0);
        c.last_elapsed = static_cast<double>(t1.seconds - t0.seconds) + (t1.millis - t0.millis) * 0.001;
        ++c.passes;
        if (c.last_elapsed >= kMinimumPass) break;
    }
    double mhz = ticks / c.last_elapsed * 1e-6 + 0.5;
    c.hz = mhz < 1.0 ? 0.0 : std::trunc(mhz) * 1000000.0;
    return c;
}


// The clock's reading in seconds, calibrating on the first call.  Out of line
// and noexcept, so that the '$' name below labels one call and nothing else:
// GCC names the parts it splits off a function (a ".cold" block, such as the
// unwinding cleanup that -fsanitize=thread adds around a call that may throw,
// or a ".part" clone) after the assembler name, unquoted, and the assembler
// rejects those names.
[[gnu::noinline]] double seconds() noexcept {
    if (uncalibrated.load(std::memory_order_relaxed)) {
        uncalibrated.store(0, std::memory_order_relaxed);
        scale.store(1.0 / calibrate(sources()).hz, std::memory_order_relaxed);
    }
    return tick_count(read_ticks()) * scale.load(std::memory_order_relaxed);
}

double clock_hz() {
    seconds();
    return 1.0 / scale.load(std::memory_order_relaxed);
}

}  // namespace intrins::clock

using namespace intrins;

extern "C" INTRINS_EXPORT double KORVAf90_dclock() INTRINS_ASM_NAME("$KORVAf90_dclock");
extern "C" INTRINS_EXPORT double KORVAf90_dclock() { return clock::seconds(); }

#define CPU_TIME_KINDS(X) X(4, float, float) X(8, double, double) X(10, R10, void) X(16, Quad, void)
#define X(k, E, P) \
    extern "C" INTRINS_EXPORT void f90_cputime##k(P* out) { clock::store_cpu_time<E>(out, clock::seconds()); }
CPU_TIME_KINDS(X)
#undef X
