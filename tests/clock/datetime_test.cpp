// DATE_AND_TIME and SYSTEM_CLOCK with a fixed clock put in place of the
// platform's (a given instant, time zone and milliseconds, or no clock at
// all), and against the system clock.
#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <string>

#include "clock/platform.h"
#include "support/arrays.h"

using intrins::clock::FineTime;
using intrins::clock::Sources;
using testutil::Args;
using testutil::Array;
using testutil::Section;
using testutil::tri;

namespace {

struct Fixed {
    static inline bool on = true;
    static inline std::time_t when = 0;
    static inline int32_t millis = 0, zone = 0;
};
const Sources kFixed = {
    [] { return Fixed::on; },
    [] { return Fixed::when; },
    intrins::clock::os::utc,
    [] { return FineTime{Fixed::when, Fixed::millis}; },
    [] { return Fixed::zone; },
    intrins::clock::read_ticks,
    intrins::clock::spin,
};

std::time_t utc(int y, int mo, int d, int h, int mi, int s) {
    std::tm t{};
    t.tm_year = y - 1900, t.tm_mon = mo - 1, t.tm_mday = d, t.tm_hour = h, t.tm_min = mi, t.tm_sec = s;
    return timegm(&t);
}

class FixedClock : public ::testing::Test {
protected:
    void SetUp() override {
        Fixed::on = true;
        Fixed::when = utc(2026, 3, 5, 7, 8, 9);
        Fixed::millis = 7;
        Fixed::zone = 90;
        intrins::clock::set_sources(&kFixed);
    }
    void TearDown() override { intrins::clock::set_sources(nullptr); }
};

// DATE, TIME and ZONE of the given lengths (0: absent), filled with '?'
// first; each comes back as the full buffer, so nothing past a length may change.
struct Texts {
    std::string date, time, zone;
};
Texts date_and_time(int32_t ld, int32_t lt, int32_t lz, bool check = false) {
    Texts r{std::string(ld + 2, '?'), std::string(lt + 2, '?'), std::string(lz + 2, '?')};
    Args args;
    if (check) args.check();
    if (ld) args.presence(F90_PRESENT_RESULT).text(0, r.date.data(), ld);
    if (lt) args.text(1, r.time.data(), lt);
    if (lz) args.text(2, r.zone.data(), lz);
    // The length word's upper half is not part of the length.
    if (sizeof(F90Word) == 8) args.slot(1).w[1] |= ~F90Word{0} << 32 >> 32 << 32;
    f90_dateandtime(args.get());
    if (lt) {
        EXPECT_EQ(args.slot(1).w[0], reinterpret_cast<F90Word>(r.time.data()));
        EXPECT_EQ(args.slot(1).w[1], static_cast<F90Word>(lt)) << "slot holds its address and length again";
    }
    return r;
}

TEST_F(FixedClock, TextsAtBelowAndAboveTheirFullLength) {
    Texts t = date_and_time(8, 10, 5);
    EXPECT_EQ(t.date, "20260305??");
    EXPECT_EQ(t.time, "070809.007??");
    EXPECT_EQ(t.zone, "+0130??");
    t = date_and_time(12, 13, 7);
    EXPECT_EQ(t.date, "20260305    ??");
    EXPECT_EQ(t.time, "070809.007   ??");
    EXPECT_EQ(t.zone, "+0130  ??");
    t = date_and_time(6, 8, 3);  // short texts without the check flag
    EXPECT_EQ(t.date, "202603??");
    EXPECT_EQ(t.time, "070809.0??");
    EXPECT_EQ(t.zone, "+01??");
    t = date_and_time(1, 4, 1);
    EXPECT_EQ(t.date, "2??");
    EXPECT_EQ(t.time, "0708??");
    EXPECT_EQ(t.zone, "+??");
    t = date_and_time(8, 10, 5, true);  // the full lengths pass the check
    EXPECT_EQ(t.time, "070809.007??");
}

// The zone field counts minutes west: east of Greenwich reads negative.
TEST_F(FixedClock, ZoneKeepsTheWestPositiveSign) {
    const struct {
        int32_t west;
        const char* text;
    } cases[] = {{90, "+0130"}, {0, "+0000"}, {-330, "-0530"}, {-60, "-0100"}, {600, "+1000"}, {-765, "-1245"}};
    for (auto c : cases) {
        Fixed::zone = c.west;
        EXPECT_EQ(date_and_time(0, 0, 5).zone, std::string(c.text) + "??") << c.west;
    }
}

TEST_F(FixedClock, MillisecondsAndMidnight) {
    Fixed::when = utc(1999, 12, 31, 23, 59, 59);
    Fixed::millis = 999;
    Texts t = date_and_time(8, 10, 0);
    EXPECT_EQ(t.date, "19991231??");
    EXPECT_EQ(t.time, "235959.999??");
    Fixed::when = utc(2000, 1, 1, 0, 0, 0);
    Fixed::millis = 0;
    t = date_and_time(8, 10, 0);
    EXPECT_EQ(t.date, "20000101??");
    EXPECT_EQ(t.time, "000000.000??");
}

TEST_F(FixedClock, UnavailableClockGivesBlanks) {
    Fixed::on = false;
    Texts t = date_and_time(9, 11, 6);
    EXPECT_EQ(t.date, "         ??");
    EXPECT_EQ(t.time, "           ??");
    EXPECT_EQ(t.zone, "      ??");
}

const std::string kHead = "ERROR calling the intrinsic subprogram DATEANDTIME:\n";
std::string length_message(int arg, int len, int want) {
    return kHead + " Argument " + std::to_string(arg) + " of the intrinsic function DATEANDTIME has string length " +
           std::to_string(len) + ".\n It should have string length at least " + std::to_string(want) + ".\n";
}

TEST_F(FixedClock, ShortTextsWithTheCheckFlagDie) {
    EXPECT_DIES_WITH(date_and_time(7, 10, 5, true), length_message(1, 7, 8));
    EXPECT_DIES_WITH(date_and_time(8, 9, 5, true), length_message(2, 9, 10));
    EXPECT_DIES_WITH(date_and_time(0, 0, 4, true), length_message(3, 4, 5));
    EXPECT_DIES_WITH(date_and_time(7, 9, 4, true), length_message(1, 7, 8));  // DATE is checked first
}

// VALUES through its descriptor, in every integer kind.
template <class I>
void call_values(void (*entry)(ArgList*), ArrDesc* v, bool check = false) {
    Args args;
    if (check) args.check();
    entry(args.addr(3, v).get());
}

template <class I>
void expect_values(void (*entry)(ArgList*), I marker) {
    Fixed::zone = 90;
    Array v({{0, 9}}, sizeof(I));
    for (int k = 0; k < 10; ++k) v.at<I>(k) = 55;
    call_values<I>(entry, v);
    const I want[10] = {2026, 3, 5, 90, 7, 8, 9, 7, 55, 55};
    for (int k = 0; k < 10; ++k) EXPECT_EQ(v.at<I>(k), want[k]) << "size 10, element " << k;

    Array w({{1, 8}}, sizeof(I));
    Fixed::zone = -120;
    call_values<I>(entry, w, true);
    EXPECT_EQ(w.at<I>(3), -120);
    EXPECT_EQ(w.at<I>(7), 7);

    // A reversed, strided section of a larger array: elements 18, 16, ..., 4.
    Array big({{1, 20}}, sizeof(I));
    Section s(big, {tri(18, 4, -2)});
    call_values<I>(entry, s, true);
    for (int k = 0; k < 8; ++k) EXPECT_EQ(big.at<I>(17 - 2 * k), I(k == 3 ? -120 : want[k])) << k;
    EXPECT_EQ(big.at<I>(18), 0);
    EXPECT_EQ(big.at<I>(2), 0);

    Fixed::on = false;
    call_values<I>(entry, v);
    for (int k = 0; k < 10; ++k) EXPECT_EQ(v.at<I>(k), marker) << "every element when unavailable";
    Fixed::on = true;

    // Without the check a short VALUES gets the fields it has room for.
    Array room({{1, 6}}, sizeof(I));
    room.at<I>(5) = 99;
    Section first5(room, {tri(1, 5)});
    call_values<I>(entry, first5);
    EXPECT_EQ(room.at<I>(4), 7);
    EXPECT_EQ(room.at<I>(5), 99);
}

TEST_F(FixedClock, ValuesInEveryKind) {
    expect_values<int32_t>(f90_dateandtime, -2147483647);
    expect_values<int16_t>(f90_dateandtime2, -32767);
    expect_values<int64_t>(f90_dateandtime8, -INT64_C(9223372036854775807));
}

TEST_F(FixedClock, ValuesChecksReportTheRequiredValue) {
    Array seven({{1, 7}}, 4);
    Array matrix({{1, 8}, {1, 2}}, 4);
    const std::string size_msg = kHead +
        " Argument 4 of the intrinsic function DATEANDTIME is an array with 8 elements.\n"
        " It should be an array with at least 8 elements.\n";
    const std::string rank_msg = kHead +
        " Argument 4 of the intrinsic function DATEANDTIME is a rank 1 array.\n It should be a rank 1 array.\n";
    EXPECT_DIES_WITH(call_values<int32_t>(f90_dateandtime, seven, true), size_msg);
    EXPECT_DIES_WITH(call_values<int16_t>(f90_dateandtime2, seven, true), size_msg);
    EXPECT_DIES_WITH(call_values<int64_t>(f90_dateandtime8, matrix, true), rank_msg);
}

// SYSTEM_CLOCK: COUNT, COUNT_RATE, COUNT_MAX at the addresses in the Result
// slot, ARG1 and ARG2, each only when present.
template <class I>
struct Clock {
    I count = 77, rate = 77, max = 77;
};
template <class I>
Clock<I> system_clock(void (*entry)(ArgList*), unsigned present = 7) {
    Clock<I> c;
    Args args;
    if (present & 1) args.presence(F90_PRESENT_RESULT).addr(0, &c.count);
    if (present & 2) args.addr(1, &c.rate);
    if (present & 4) args.addr(2, &c.max);
    entry(args.get());
    return c;
}

TEST_F(FixedClock, SystemClockWrapsAtTheLastSecondOfTheDay) {
    const struct {
        int h, m, s;
        int32_t count4;
        int16_t count2;
    } cases[] = {
        {0, 0, 0, 0, 0},           {7, 8, 9, 25689, 25689 - 20864},  // 25689 >= 20863
        {5, 47, 42, 20862, 20862}, {5, 47, 43, 20863, -1},           {9, 6, 40, 32800, -32736},
        {12, 0, 0, 43200, -22336}, {23, 59, 58, 86398, 20862},       {23, 59, 59, -1, -1},
    };
    for (auto c : cases) {
        Fixed::when = utc(2026, 11, 22, c.h, c.m, c.s);
        auto c4 = system_clock<int32_t>(f90_sysclock);
        EXPECT_EQ(c4.count, c.count4) << c.h << ":" << c.m << ":" << c.s;
        EXPECT_EQ(c4.rate, 1);
        EXPECT_EQ(c4.max, 86399);
        auto c8 = system_clock<int64_t>(f90_sysclock8);
        EXPECT_EQ(c8.count, c.count4);
        EXPECT_EQ(c8.rate, 1);
        EXPECT_EQ(c8.max, 86399);
        auto c2 = system_clock<int16_t>(f90_sysclock2);
        EXPECT_EQ(c2.count, c.count2) << c.h << ":" << c.m << ":" << c.s;
        EXPECT_EQ(c2.rate, 1);
        EXPECT_EQ(c2.max, 20863);
    }
}

TEST_F(FixedClock, SystemClockUnavailableAndAbsentArguments) {
    Fixed::on = false;
    auto c4 = system_clock<int32_t>(f90_sysclock);
    EXPECT_EQ(c4.count, -2147483647);
    EXPECT_EQ(c4.rate, 0);
    EXPECT_EQ(c4.max, 0);
    auto c2 = system_clock<int16_t>(f90_sysclock2);
    EXPECT_EQ(c2.count, -32767);
    EXPECT_EQ(c2.max, 0);
    auto c8 = system_clock<int64_t>(f90_sysclock8);
    EXPECT_EQ(c8.count, -INT64_C(9223372036854775807));
    EXPECT_EQ(c8.rate, 0);

    Fixed::on = true;
    auto only_rate = system_clock<int32_t>(f90_sysclock, 2);
    EXPECT_EQ(only_rate.count, 77);
    EXPECT_EQ(only_rate.rate, 1);
    EXPECT_EQ(only_rate.max, 77);
    auto count_max = system_clock<int64_t>(f90_sysclock8, 5);
    EXPECT_EQ(count_max.count, 25689);
    EXPECT_EQ(count_max.rate, 77);
    EXPECT_EQ(count_max.max, 86399);
}

// The real clock: what comes back lies between two readings of time().
TEST(SystemClock, AgreesWithTheSystemTime) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        std::time_t before = std::time(nullptr);
        char date[8], time[10];
        Array v({{1, 8}}, 4);
        Args args;
        args.check().presence(F90_PRESENT_RESULT).text(0, date, 8).text(1, time, 10).addr(3, v.desc());
        f90_dateandtime(args.get());
        int32_t count = 0;
        Args sc;
        sc.presence(F90_PRESENT_RESULT).addr(0, &count);
        f90_sysclock(sc.get());
        std::time_t after = std::time(nullptr);
        if (before != after) continue;  // a second boundary in between: read again
        std::tm t;
        gmtime_r(&before, &t);
        char want[16];
        std::strftime(want, sizeof want, "%Y%m%d", &t);
        EXPECT_EQ(std::string(date, 8), want);
        std::strftime(want, sizeof want, "%H%M%S.", &t);
        EXPECT_EQ(std::string(time, 7), want);
        EXPECT_EQ(v.at<int32_t>(0), t.tm_year + 1900);
        EXPECT_EQ(v.at<int32_t>(4) * 3600 + v.at<int32_t>(5) * 60 + v.at<int32_t>(6),
                  t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec);
        EXPECT_GE(v.at<int32_t>(7), 0);
        EXPECT_LT(v.at<int32_t>(7), 1000);
        int32_t secs = t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec;
        EXPECT_EQ(count, secs == 86399 ? -1 : secs);
        return;
    }
    FAIL() << "no quiet second in three attempts";
}

}  // namespace
