// The clocks with a fixed clock in place of the platform's (an instant, a
// zone, milliseconds, or no clock at all): DATE_AND_TIME's texts and VALUES
// in every kind, SYSTEM_CLOCK through the day, the diagnostics; the
// calibration driven by a simulated counter; CPU_TIME; the real clocks.
#include <cfloat>
#include <chrono>
#include <cmath>
#include <thread>

#include "clock/timing.h"
#include "support/arrays.h"
#include "support/messages.h"

namespace {
using namespace testutil;
using intrins::clock::FineTime;

struct Fixed {
    static inline bool on = true;
    static inline std::time_t when = 0;
    static inline int32_t millis = 7, zone = 90;
    static inline int64_t now_us = 0, unit_us = 0;  // simulated counter: microseconds,
    static inline double hz = 0;                    // per 2^24 increments, ticks per second
    static inline std::vector<uint64_t> passes;
};
const intrins::clock::Sources kFixed = {
    [] { return Fixed::on; },
    [] { return Fixed::when; },
    intrins::clock::os::utc,
    [] { return Fixed::hz ? FineTime{Fixed::now_us / 1000000, static_cast<int32_t>(Fixed::now_us % 1000000 / 1000)}
                          : FineTime{Fixed::when, Fixed::millis}; },
    [] { return Fixed::zone; },
    [] { return (uint64_t{1} << 40) + static_cast<uint64_t>(std::llround(Fixed::now_us * 1e-6 * Fixed::hz)); },
    [](uint64_t n) { Fixed::passes.push_back(n), Fixed::now_us += static_cast<int64_t>(n >> 24) * Fixed::unit_us; },
};

std::time_t utc(int y, int mo, int d, int h, int mi, int s) {
    std::tm t{};
    t.tm_year = y - 1900, t.tm_mon = mo - 1, t.tm_mday = d, t.tm_hour = h, t.tm_min = mi, t.tm_sec = s;
    return timegm(&t);
}

class FixedClock : public ::testing::Test {
protected:
    void SetUp() override {
        Fixed::on = true, Fixed::when = utc(2026, 3, 5, 7, 8, 9), Fixed::millis = 7, Fixed::zone = 90, Fixed::hz = 0;
        intrins::clock::set_sources(&kFixed);
    }
    void TearDown() override { intrins::clock::set_sources(nullptr); }
};

// DATE, TIME and ZONE of the given lengths (0: absent) in buffers two longer,
// filled with '?', so that a write past a length shows.
std::string date_and_time(int32_t ld, int32_t lt, int32_t lz, bool check = false) {
    std::string d(ld + 2, '?'), t(lt + 2, '?'), z(lz + 2, '?');
    Args args;
    args.check(check);
    if (ld) args.result(nullptr).text(0, d.data(), ld);
    if (lt) args.text(1, t.data(), lt);
    if (lz) args.text(2, z.data(), lz);
    f90_dateandtime(args);
    EXPECT_EQ(args.slot(1).w[1], static_cast<F90Word>(lt)) << "the slot keeps its length";
    return d + "|" + t + "|" + z;
}

TEST_F(FixedClock, Texts) {
    const struct {
        std::time_t when;
        int32_t millis, zone, ld, lt, lz;
        bool on;
        const char* want;
    } rows[] = {
        {Fixed::when, 7, 90, 8, 10, 5, true, "20260305??|070809.007??|+0130??"},
        {Fixed::when, 7, 90, 12, 13, 7, true, "20260305    ??|070809.007   ??|+0130  ??"},
        {Fixed::when, 7, 90, 6, 8, 3, true, "202603??|070809.0??|+01??"},  // short, no check flag
        {utc(1999, 12, 31, 23, 59, 59), 999, 0, 8, 10, 5, true, "19991231??|235959.999??|+0000??"},
        {utc(2000, 1, 1, 0, 0, 0), 0, -330, 8, 10, 5, true, "20000101??|000000.000??|-0530??"},
        {Fixed::when, 0, -60, 0, 0, 5, true, "??|??|-0100??"},  // minutes west: east reads negative
        {Fixed::when, 0, 600, 0, 0, 5, true, "??|??|+1000??"},
        {Fixed::when, 0, -765, 0, 0, 5, true, "??|??|-1245??"},
        {Fixed::when, 7, 90, 9, 11, 6, false, "         ??|           ??|      ??"},
    };
    for (const auto& r : rows) {
        Fixed::when = r.when, Fixed::millis = r.millis, Fixed::zone = r.zone, Fixed::on = r.on;
        EXPECT_EQ(date_and_time(r.ld, r.lt, r.lz), r.want);
    }
}

template <class I>
void values(void (*entry)(ArgList*), ArrDesc* v, bool check = false) {
    Args args;
    entry(args.check(check).addr(3, v));
}
// VALUES of every kind in random layouts of 8 to 10 elements (the fields,
// the rest untouched); every element marked when there is no clock; a short
// VALUES without checks gets the fields it has room for.
template <class I>
void expect_values(void (*entry)(ArgList*)) {
    const int64_t want[8] = {2026, 3, 5, 90, 7, 8, 9, 7};
    std::mt19937_64 g(3);
    for (int32_t n : {8, 10, 5}) {
        for (bool on : {true, false}) {
            Fixed::on = on;
            Array v = random_array(g, {n}, sizeof(I));
            for (int k = 0; k < n; ++k) v.at<I>(k) = 55;
            values<I>(entry, v.desc(), n >= 8);
            for (int k = 0; k < n; ++k)
                EXPECT_EQ(v.at<I>(k), !on ? std::numeric_limits<I>::min() + 1 : k < 8 ? want[k] : 55) << n << " " << k;
            EXPECT_TRUE(v.guard_intact());
        }
    }
}
TEST_F(FixedClock, ValuesInEveryKind) {
    expect_values<int32_t>(f90_dateandtime);
    expect_values<int16_t>(f90_dateandtime2);
    expect_values<int64_t>(f90_dateandtime8);
}

TEST_F(FixedClock, Diagnostics) {
    const char* len = " Argument @ of the intrinsic function DATEANDTIME has string length @.\n It should have string length at least @.\n";
    EXPECT_DIES_WITH(date_and_time(7, 10, 5, true), msg::of("DATEANDTIME", len, {"1", "7", "8"}));
    EXPECT_DIES_WITH(date_and_time(8, 9, 5, true), msg::of("DATEANDTIME", len, {"2", "9", "10"}));
    EXPECT_DIES_WITH(date_and_time(0, 0, 4, true), msg::of("DATEANDTIME", len, {"3", "4", "5"}));
    EXPECT_DIES_WITH(date_and_time(7, 9, 4, true), msg::of("DATEANDTIME", len, {"1", "7", "8"}));  // DATE first
    // VALUES: the required size and rank are printed, not the actual ones.
    Array seven({{1, 7}}, 4), matrix({{1, 8}, {1, 2}}, 8);
    const std::string head = " Argument 4 of the intrinsic function DATEANDTIME is ";
    EXPECT_DIES_WITH(values<int16_t>(f90_dateandtime2, seven, true),
                     msg::of("DATEANDTIME", (head + "an array with @ elements.\n It should be an array with at least 8 elements.\n").c_str(), {"8"}));
    EXPECT_DIES_WITH(values<int64_t>(f90_dateandtime8, matrix, true),
                     msg::of("DATEANDTIME", (head + "a rank @ array.\n It should be a rank 1 array.\n").c_str(), {"1"}));
}

// SYSTEM_CLOCK: COUNT, COUNT_RATE, COUNT_MAX at the addresses in the Result
// slot, ARG1 and ARG2, each only when present.
template <class I>
std::vector<int64_t> system_clock(void (*entry)(ArgList*), unsigned present = 7) {
    I c[3] = {77, 77, 77};
    Args args;
    for (int k = 0; k < 3; ++k)
        if (present >> k & 1) args.addr(k, &c[k]).presence(args.a.Presence | (1u << k));
    entry(args);
    return {c[0], c[1], c[2]};
}
TEST_F(FixedClock, SystemClock) {
    using V = std::vector<int64_t>;
    const struct {
        int h, m, s, count4, count2;
    } rows[] = {{0, 0, 0, 0, 0},           {7, 8, 9, 25689, 25689 - 20864}, {5, 47, 42, 20862, 20862},
                {5, 47, 43, 20863, -1},    {9, 6, 40, 32800, -32736},       {12, 0, 0, 43200, -22336},
                {23, 59, 58, 86398, 20862}, {23, 59, 59, -1, -1}};
    for (auto r : rows) {
        Fixed::when = utc(2026, 11, 22, r.h, r.m, r.s);
        V got = system_clock<int32_t>(f90_sysclock), more = system_clock<int64_t>(f90_sysclock8), two = system_clock<int16_t>(f90_sysclock2);
        got.insert(got.end(), more.begin(), more.end()), got.insert(got.end(), two.begin(), two.end());
        EXPECT_EQ(got, V({r.count4, 1, 86399, r.count4, 1, 86399, r.count2, 1, 20863})) << r.h << ":" << r.m << ":" << r.s;
    }
    EXPECT_EQ(system_clock<int64_t>(f90_sysclock8, 5), V({-1, 77, 86399}));
    Fixed::on = false;
    EXPECT_EQ(system_clock<int16_t>(f90_sysclock2, 6), V({77, 0, 0}));
    EXPECT_EQ(system_clock<int64_t>(f90_sysclock8), V({INT64_MIN + 1, 0, 0}));
}

// The calibration from a core a thousand times faster than today's down to
// one of 40 MHz: a last pass of 2 s or more, under 3 s in all, passes of
// whole units of 2^24 starting with one, the frequency in whole megahertz.
TEST_F(FixedClock, Calibration) {
    auto run = [](double hz, int64_t unit_us) {
        Fixed::now_us = 1700000000LL * 1000000 + 123000, Fixed::hz = hz, Fixed::unit_us = unit_us;
        Fixed::passes.clear();
        return intrins::clock::calibrate(kFixed);
    };
    for (int64_t unit_us : {2, 100, 1000, 5600, 24000, 26000, 150000, 400000}) {
        const auto c = run(3e9, unit_us);
        bool whole = Fixed::passes.front() == uint64_t{1} << 24 && c.passes == static_cast<int>(Fixed::passes.size());
        for (uint64_t n : Fixed::passes) whole &= n % (uint64_t{1} << 24) == 0;
        EXPECT_TRUE(whole && c.last_elapsed >= 2.0 && c.hz == 3e9) << unit_us;
        EXPECT_LE(Fixed::now_us - (1700000000LL * 1000000 + 123000), 3000000) << unit_us;
    }
    for (auto [hz, want] : {std::pair{2999.6e6, 3000e6}, {2999.4e6, 2999e6}, {1234.5e6, 1235e6}, {0.4e6, 0.0}})
        EXPECT_EQ(run(hz, 5000).hz, want) << hz;
}

// Above the largest REAL(4) the time reads as its negative, in every kind.
TEST(CpuTime, LargestReal4BoundsEveryKind) {
    using intrins::clock::store_cpu_time;
    float r4;
    double r8;
    long double r10 = 0;
    __float128 r16;
    for (double t : {1e39, 3.4028234663852890e38, HUGE_VAL, 3.4028234663852886e38, 1.5e38}) {
        const double want = t > 3.4028234663852886e38 ? -3.4028234663852886e38 : t;
        store_cpu_time<float>(&r4, t), store_cpu_time<double>(&r8, t);
        store_cpu_time<intrins::R10>(&r10, t), store_cpu_time<__float128>(&r16, t);
        EXPECT_TRUE(r4 == static_cast<float>(want) && r8 == want && r10 == static_cast<long double>(want) &&
                    r16 == static_cast<__float128>(want)) << t;
    }
}

// The real clocks: the calibrated counter against the steady clock, CPU_TIME
// in every kind between two readings, DATE_AND_TIME and SYSTEM_CLOCK against
// time() read before and after.
TEST(Clock, RealClocks) {
    const double hz = intrins::clock::clock_hz();
    EXPECT_EQ(std::fmod(hz, 1e6) + (hz > 0 ? 0 : 1), 0.0) << "a whole, positive number of megahertz";
    const auto t0 = std::chrono::steady_clock::now();
    const double d0 = KORVAf90_dclock();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    float r4;
    double r8;
    unsigned char r10[16];
    std::memset(r10, 0xA5, sizeof r10);
    f90_cputime4(&r4), f90_cputime8(&r8), f90_cputime10(r10);
    const double d1 = KORVAf90_dclock();
    const double real = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    EXPECT_GT(d1 - d0, 0.95 * 0.3);
    EXPECT_LT(d1 - d0, real * 1.02 + 0.002);
    long double v10 = 0;
    std::memcpy(&v10, r10, 10);
    EXPECT_TRUE(r8 >= d0 && r8 <= d1 && v10 >= r8 && v10 <= d1 && std::fabs(r4 - d0) <= d0 * 1e-6 + 1);
    EXPECT_EQ(r10[10], 0xA5) << "REAL(10) stores exactly 10 bytes";
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::time_t before = std::time(nullptr);
        char date[8], time[10];
        Args args;
        f90_dateandtime(args.check().result(nullptr).text(0, date, 8).text(1, time, 10));
        const int64_t count = system_clock<int32_t>(f90_sysclock, 1)[0];
        if (before != std::time(nullptr)) continue;  // a second boundary in between: read again
        std::tm t;
        gmtime_r(&before, &t);
        char want[24];
        std::strftime(want, sizeof want, "%Y%m%d%H%M%S.", &t);
        EXPECT_EQ(std::string(date, 8) + std::string(time, 7), want);
        const int64_t secs = t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec;
        EXPECT_EQ(count, secs == 86399 ? -1 : secs);
        return;
    }
    FAIL() << "no quiet second in three attempts";
}

}  // namespace
