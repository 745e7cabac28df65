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
const intrins::clock::Sources kFixed = {
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

// DATE, TIME and ZONE of the given lengths (0: absent) in buffers two longer,
// filled with '?', so that a write past a length shows.  The slots must come
// back holding their address and length (the length word's upper half is not
// part of the length).
std::string date_and_time(int32_t ld, int32_t lt, int32_t lz, bool check = false) {
    std::string d(ld + 2, '?'), t(lt + 2, '?'), z(lz + 2, '?');
    Args args;
    if (check) args.check();
    if (ld) args.presence(F90_PRESENT_RESULT).text(0, d.data(), ld);
    if (lt) args.text(1, t.data(), lt);
    if (lz) args.text(2, z.data(), lz);
    if constexpr (sizeof(F90Word) == 8) args.slot(1).w[1] |= static_cast<F90Word>(UINT64_C(0xFFFFFFFF00000000));
    f90_dateandtime(args.get());
    if (lt) {
        EXPECT_EQ(args.slot(1).w[0], reinterpret_cast<F90Word>(t.data()));
        EXPECT_EQ(args.slot(1).w[1], static_cast<F90Word>(lt));
    }
    return d + "|" + t + "|" + z;
}

TEST_F(FixedClock, TextsAtBelowAndAboveTheirFullLength) {
    EXPECT_EQ(date_and_time(8, 10, 5), "20260305??|070809.007??|+0130??");
    EXPECT_EQ(date_and_time(8, 10, 5, true), "20260305??|070809.007??|+0130??");
    EXPECT_EQ(date_and_time(12, 13, 7), "20260305    ??|070809.007   ??|+0130  ??");
    EXPECT_EQ(date_and_time(6, 8, 3), "202603??|070809.0??|+01??");  // short, no check flag
    EXPECT_EQ(date_and_time(1, 4, 1), "2??|0708??|+??");
    Fixed::when = utc(1999, 12, 31, 23, 59, 59);
    Fixed::millis = 999;
    EXPECT_EQ(date_and_time(8, 10, 0), "19991231??|235959.999??|??");
    Fixed::when = utc(2000, 1, 1, 0, 0, 0);
    Fixed::millis = 0;
    EXPECT_EQ(date_and_time(8, 10, 0), "20000101??|000000.000??|??");
    Fixed::on = false;
    EXPECT_EQ(date_and_time(9, 11, 6), "         ??|           ??|      ??");
}

// The zone field counts minutes west: east of Greenwich reads negative.
TEST_F(FixedClock, ZoneKeepsTheWestPositiveSign) {
    const std::pair<int32_t, const char*> cases[] = {{90, "+0130"},   {0, "+0000"},   {-330, "-0530"},
                                                     {-60, "-0100"},  {600, "+1000"}, {-765, "-1245"}};
    for (auto [west, text] : cases) {
        Fixed::zone = west;
        EXPECT_EQ(date_and_time(0, 0, 5), std::string("??|??|") + text + "??") << west;
    }
}

std::string length_message(int arg, int len, int want) {
    return "ERROR calling the intrinsic subprogram DATEANDTIME:\n Argument " + std::to_string(arg) +
           " of the intrinsic function DATEANDTIME has string length " + std::to_string(len) +
           ".\n It should have string length at least " + std::to_string(want) + ".\n";
}

TEST_F(FixedClock, ShortTextsWithTheCheckFlagDie) {
    EXPECT_DIES_WITH(date_and_time(7, 10, 5, true), length_message(1, 7, 8));
    EXPECT_DIES_WITH(date_and_time(8, 9, 5, true), length_message(2, 9, 10));
    EXPECT_DIES_WITH(date_and_time(0, 0, 4, true), length_message(3, 4, 5));
    EXPECT_DIES_WITH(date_and_time(7, 9, 4, true), length_message(1, 7, 8));  // DATE is checked first
}

template <class I>
void values(void (*entry)(ArgList*), ArrDesc* v, bool check = false) {
    Args args;
    if (check) args.check();
    entry(args.addr(3, v).get());
}

// VALUES through its descriptor: size 10 keeps its last two elements; a
// reversed strided section; every element marked when there is no clock; a
// short VALUES without the check flag gets only the fields it has room for.
template <class I>
void expect_values(void (*entry)(ArgList*), I marker) {
    const I want[8] = {2026, 3, 5, 90, 7, 8, 9, 7};
    Array v({{0, 9}}, sizeof(I));
    for (int k = 0; k < 10; ++k) v.at<I>(k) = 55;
    values<I>(entry, v);
    for (int k = 0; k < 10; ++k) EXPECT_EQ(v.at<I>(k), k < 8 ? want[k] : 55) << "size 10, element " << k;

    Array big({{1, 20}}, sizeof(I));
    Section s(big, {tri(18, 4, -2)});  // elements 18, 16, ..., 4
    values<I>(entry, s, true);
    for (int k = 0; k < 8; ++k) EXPECT_EQ(big.at<I>(17 - 2 * k), want[k]) << k;
    EXPECT_EQ(big.at<I>(18) | big.at<I>(2), 0);

    Fixed::on = false;
    values<I>(entry, v);
    for (int k = 0; k < 10; ++k) EXPECT_EQ(v.at<I>(k), marker) << "every element when unavailable";
    Fixed::on = true;

    Array room({{1, 6}}, sizeof(I));
    room.at<I>(5) = 99;
    Section first5(room, {tri(1, 5)});
    values<I>(entry, first5);
    EXPECT_EQ(room.at<I>(4), 7);
    EXPECT_EQ(room.at<I>(5), 99);
}

TEST_F(FixedClock, ValuesInEveryKind) {
    expect_values<int32_t>(f90_dateandtime, -2147483647);
    expect_values<int16_t>(f90_dateandtime2, -32767);
    expect_values<int64_t>(f90_dateandtime8, -INT64_C(9223372036854775807));
    Fixed::zone = -120;
    Array v({{1, 8}}, 4);
    values<int32_t>(f90_dateandtime, v);
    EXPECT_EQ(v.at<int32_t>(3), -120);
}

TEST_F(FixedClock, ValuesChecksReportTheRequiredValue) {
    Array seven({{1, 7}}, 4), matrix({{1, 8}, {1, 2}}, 4);
    const std::string head = "ERROR calling the intrinsic subprogram DATEANDTIME:\n Argument 4 of the intrinsic "
                             "function DATEANDTIME is ";
    const std::string size_msg = head + "an array with 8 elements.\n It should be an array with at least 8 elements.\n";
    const std::string rank_msg = head + "a rank 1 array.\n It should be a rank 1 array.\n";
    EXPECT_DIES_WITH(values<int32_t>(f90_dateandtime, seven, true), size_msg);
    EXPECT_DIES_WITH(values<int16_t>(f90_dateandtime2, seven, true), size_msg);
    EXPECT_DIES_WITH(values<int64_t>(f90_dateandtime8, matrix, true), rank_msg);
}

// SYSTEM_CLOCK: COUNT, COUNT_RATE, COUNT_MAX at the addresses in the Result
// slot, ARG1 and ARG2, each only when present.
template <class I>
std::vector<int64_t> system_clock(void (*entry)(ArgList*), unsigned present = 7) {
    I c[3] = {77, 77, 77};
    Args args;
    if (present & 1) args.presence(F90_PRESENT_RESULT).addr(0, &c[0]);
    if (present & 2) args.addr(1, &c[1]);
    if (present & 4) args.addr(2, &c[2]);
    entry(args.get());
    return {c[0], c[1], c[2]};
}
using Counts = std::vector<int64_t>;

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
        EXPECT_EQ(system_clock<int32_t>(f90_sysclock), Counts({c.count4, 1, 86399})) << c.h << ":" << c.m;
        EXPECT_EQ(system_clock<int64_t>(f90_sysclock8), Counts({c.count4, 1, 86399})) << c.h << ":" << c.m;
        EXPECT_EQ(system_clock<int16_t>(f90_sysclock2), Counts({c.count2, 1, 20863})) << c.h << ":" << c.m;
    }
}

TEST_F(FixedClock, SystemClockUnavailableAndAbsentArguments) {
    EXPECT_EQ(system_clock<int32_t>(f90_sysclock, 2), Counts({77, 1, 77}));
    EXPECT_EQ(system_clock<int64_t>(f90_sysclock8, 5), Counts({25689, 77, 86399}));
    Fixed::on = false;
    EXPECT_EQ(system_clock<int32_t>(f90_sysclock), Counts({-2147483647, 0, 0}));
    EXPECT_EQ(system_clock<int16_t>(f90_sysclock2), Counts({-32767, 0, 0}));
    EXPECT_EQ(system_clock<int64_t>(f90_sysclock8), Counts({-INT64_C(9223372036854775807), 0, 0}));
}

// The real clock: what comes back matches time() read before and after.
TEST(SystemClock, AgreesWithTheSystemTime) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        std::time_t before = std::time(nullptr);
        char date[8], time[10];
        Array v({{1, 8}}, 4);
        Args args;
        args.check().presence(F90_PRESENT_RESULT).text(0, date, 8).text(1, time, 10).addr(3, v.desc());
        f90_dateandtime(args.get());
        int32_t count = 0;
        f90_sysclock(Args().presence(F90_PRESENT_RESULT).addr(0, &count).get());
        if (before != std::time(nullptr)) continue;  // a second boundary in between: read again
        std::tm t;
        gmtime_r(&before, &t);
        char want[24];
        std::strftime(want, sizeof want, "%Y%m%d%H%M%S.", &t);
        EXPECT_EQ(std::string(date, 8) + std::string(time, 7), want);
        const int32_t secs = t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec;
        EXPECT_EQ(v.at<int32_t>(0), t.tm_year + 1900);
        EXPECT_EQ(v.at<int32_t>(4) * 3600 + v.at<int32_t>(5) * 60 + v.at<int32_t>(6), secs);
        EXPECT_TRUE(v.at<int32_t>(7) >= 0 && v.at<int32_t>(7) < 1000);
        EXPECT_EQ(count, secs == 86399 ? -1 : secs);
        return;
    }
    FAIL() << "no quiet second in three attempts";
}

}  // namespace
