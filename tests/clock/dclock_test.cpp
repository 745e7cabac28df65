// The high-resolution clock: the calibration driven by a simulated counter
// and wall clock, then the real clock (calibrated once for this program) and
// CPU_TIME in every kind.
#include <gtest/gtest.h>

#include <cfloat>
#include <chrono>
#include <cmath>
#include <cstring>
#include <thread>
#include <vector>

#include "clock/timing.h"
#include "support/arrays.h"

using intrins::clock::Calibration;
using intrins::clock::FineTime;
using intrins::clock::Sources;

namespace {

// Simulated time in whole microseconds; the counter runs at `hz` from a
// start far above 2^32, and one unit of 2^24 increments takes `unit_us`.
struct Sim {
    static inline int64_t now_us = 0;
    static inline double hz = 0;
    static inline int64_t unit_us = 0;
    static inline std::vector<uint64_t> passes;
};
const Sources kSim = {
    [] { return true; },
    [] { return std::time_t{0}; },
    intrins::clock::os::utc,
    [] { return FineTime{Sim::now_us / 1000000, static_cast<int32_t>(Sim::now_us % 1000000 / 1000)}; },
    [] { return int32_t{0}; },
    [] { return (uint64_t{1} << 40) + static_cast<uint64_t>(std::llround(Sim::now_us * 1e-6 * Sim::hz)); },
    [](uint64_t n) {
        Sim::passes.push_back(n);
        Sim::now_us += static_cast<int64_t>(n >> 24) * Sim::unit_us;
    },
};

Calibration simulate(double hz, int64_t unit_us) {
    Sim::now_us = 1700000000LL * 1000000 + 123000;  // on a whole millisecond
    Sim::hz = hz;
    Sim::unit_us = unit_us;
    Sim::passes.clear();
    return intrins::clock::calibrate(kSim);
}

// From a hypothetical core a thousand times faster than today's down to one
// of about 40 MHz (2^24 increments in 0.4 s), the last pass lasts 2 s or more, the whole
// stays under 3 s, passes are whole multiples of 2^24, and the frequency is
// rounded to whole megahertz.
TEST(Calibration, EndsNearTwoSecondsAtAnySpeed) {
    for (int64_t unit_us : {2, 100, 1000, 5600, 24000, 26000, 150000, 400000}) {
        const int64_t start = 1700000000LL * 1000000 + 123000;
        Calibration c = simulate(3e9, unit_us);
        const double total = (Sim::now_us - start) * 1e-6;
        EXPECT_GE(c.last_elapsed, 2.0) << unit_us;
        EXPECT_LE(total, 3.0) << unit_us << " us per unit, " << c.passes << " passes";
        EXPECT_EQ(c.passes, static_cast<int>(Sim::passes.size()));
        for (uint64_t n : Sim::passes) EXPECT_EQ(n % (uint64_t{1} << 24), 0u);
        EXPECT_EQ(Sim::passes.front(), uint64_t{1} << 24) << "the first pass counts 2^24";
        EXPECT_EQ(c.hz, 3e9) << unit_us;
    }
}

TEST(Calibration, RoundsToWholeMegahertz) {
    EXPECT_EQ(simulate(2999.6e6, 5000).hz, 3000e6);
    EXPECT_EQ(simulate(2999.4e6, 5000).hz, 2999e6);
    EXPECT_EQ(simulate(1234.5e6, 800).hz, 1235e6);
    EXPECT_EQ(simulate(0.4e6, 5000).hz, 0.0) << "below half a megahertz gives 0";
}

TEST(Clock, CountsSecondsOfTheSystemClock) {
    const double hz = intrins::clock::clock_hz();  // calibrates, once for this program
    EXPECT_GT(hz, 0.0);
    EXPECT_EQ(std::fmod(hz, 1e6), 0.0) << "a whole number of megahertz";

    auto t0 = std::chrono::steady_clock::now();
    double d0 = KORVAf90_dclock();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    double d1 = KORVAf90_dclock();
    auto t1 = std::chrono::steady_clock::now();
    const double real = std::chrono::duration<double>(t1 - t0).count();
    EXPECT_GT(d1 - d0, 0.95 * 0.3);
    EXPECT_LT(d1 - d0, real * 1.02 + 0.002);
}

TEST(CpuTime, EveryKindReadsTheClock) {
    double before = KORVAf90_dclock();
    float r4;
    double r8;
    unsigned char r10[16], r16[16];
    std::memset(r10, 0xA5, sizeof r10);
    f90_cputime4(&r4);
    f90_cputime8(&r8);
    f90_cputime10(r10);
    f90_cputime16(r16);
    double after = KORVAf90_dclock();
    long double v10 = 0;
    std::memcpy(&v10, r10, 10);
    __float128 v16;
    std::memcpy(&v16, r16, 16);
    EXPECT_GE(r8, before);
    EXPECT_LE(r8, after);
    EXPECT_GE(v10, r8);
    EXPECT_LE(v10, after);
    EXPECT_TRUE(v16 >= static_cast<__float128>(v10) && v16 <= static_cast<__float128>(after));
    EXPECT_NEAR(r4, before, before * 1e-6 + 1e-3);
    EXPECT_EQ(r10[10], 0xA5) << "REAL(10) stores exactly 10 bytes";
}

// Above the largest REAL(4) the time reads as its negative, in every kind.
TEST(CpuTime, LargestReal4BoundsEveryKind) {
    using intrins::R10;
    using intrins::clock::store_cpu_time;
    float r4;
    double r8;
    long double r10 = 0;
    __float128 r16;
    for (double t : {1e39, 3.4028234663852890e38, 1e300, HUGE_VAL}) {
        store_cpu_time<float>(&r4, t);
        store_cpu_time<double>(&r8, t);
        store_cpu_time<R10>(&r10, t);
        store_cpu_time<__float128>(&r16, t);
        EXPECT_EQ(r4, -FLT_MAX) << t;
        EXPECT_EQ(r8, -3.4028234663852886e38) << t;
        EXPECT_EQ(r10, static_cast<long double>(-3.4028234663852886e38)) << t;
        EXPECT_TRUE(r16 == static_cast<__float128>(-3.4028234663852886e38)) << t;
    }
    store_cpu_time<double>(&r8, 3.4028234663852886e38);
    EXPECT_EQ(r8, 3.4028234663852886e38) << "the bound itself is kept";
    store_cpu_time<R10>(&r10, 1.5e38);
    EXPECT_EQ(r10, static_cast<long double>(1.5e38));
}

}  // namespace
