// datetime.cpp - DATE_AND_TIME and SYSTEM_CLOCK, one template each over the
// integer kind of VALUES or of COUNT/COUNT_RATE/COUNT_MAX.
//
// Both read UTC.  The ZONE text and VALUES(4) give the zone field as the
// clock reports it: minutes west of Greenwich, so a zone east of it reads
// negative ("-0100" and -60 for Central Europe).  Kept so: programs built
// against the library rely on it.
//
// SYSTEM_CLOCK counts seconds since midnight UTC and subtracts a day from
// 86399 on, so the last second of the day reads -1.  Its 2-byte kind narrows
// the seconds and the constants 86399 and 86400 to 16 bits (20863, 20864),
// so from 32768 seconds on the count is negative; both are kept as they are.
//
// A text shorter than its full form without the check flag receives the first
// characters of it (TIME of length 8: "hhmmss.s"); nothing is written past a
// text's length or past the last element of VALUES.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>

#include "clock/platform.h"
#include "frame/call.h"
#include "frame/kinds.h"
#include "intrins.h"

namespace intrins::clock {
namespace {

const char kName[] = "DATEANDTIME";

// A present character argument: checks its length against the full form,
// then copies the first characters of `text` (none when the clock is
// unavailable) and blanks the rest.  The slot is left holding its address and
// length.
void put_text(const Call& call, Slot s, int argno, int32_t full, const char* text, int32_t textlen) {
    const int32_t len = s.length();
    if (call.check() && len < full) f90_ArrLibError(kName, 1, argno, len, full);
    char* p = s.text();
    int32_t k = 0;
    for (; k < len && k < textlen; ++k) p[k] = text[k];
    for (; k < len; ++k) p[k] = ' ';
    s.set_text(p, len);
}

// Two digits with a leading zero below 10, each formatted with "%i".
int two_digits(char* out, int v) {
    return std::snprintf(out, 8, v < 10 ? "0%i" : "%i", v);
}

template <class I>
constexpr I unavailable_marker() {
    return std::numeric_limits<I>::min() + 1;
}

template <class I>
void date_and_time(ArgList* a) {
    Call call(a);
    const Sources& src = sources();
    std::tm t{};
    src.utc(src.now(), &t);
    const int32_t zone = src.zone_west();
    const FineTime fine = src.fine();
    const bool on = src.available();

    if (call.result_supplied()) {
        char date[9] = {};
        std::size_t n = on ? std::strftime(date, sizeof date, "%Y%m%d", &t) : 0;
        put_text(call, call.result(), 1, 8, date, static_cast<int32_t>(n));
    }
    if (call.present(1)) {
        char time[32] = {};
        int n = 0;
        if (on && std::strftime(time, sizeof time, "%H%M%S.", &t) == 7)
            n = 7 + std::snprintf(time + 7, sizeof time - 7, "%03i", fine.millis);
        put_text(call, call.arg(1), 2, 10, time, n < 10 ? n : 10);
    }
    if (call.present(2)) {
        char text[32] = {};
        if (on) {
            text[0] = zone < 0 ? '-' : '+';
            int n = 1 + two_digits(text + 1, std::abs(zone / 60));
            two_digits(text + n, std::abs(zone % 60));
        }
        put_text(call, call.arg(2), 3, 5, text, on ? 5 : 0);
    }
    if (call.present(3)) {
        const ArrDesc& v = *call.arg(3).desc();
        const int32_t size = rank(v) ? extent(v, 0) : 0;
        if (call.check()) {
            if (size < 8) f90_ArrLibError(kName, 2, 8);
            if (v.RANK != 1) f90_ArrLibError(kName, 3, 1);
        }
        const std::ptrdiff_t step = size ? byte_step(v, 0) : 0;
        const int32_t fields[8] = {t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, zone,
                                   t.tm_hour,        t.tm_min,     t.tm_sec,  fine.millis};
        for (int32_t k = 0; k < (on ? (size < 8 ? size : 8) : size); ++k)
            Kind<I>::store(v.BASE + k * step, on ? static_cast<I>(fields[k]) : unavailable_marker<I>());
    }
}

template <class I>
void system_clock(ArgList* a) {
    Call call(a);
    const Sources& src = sources();
    I count = unavailable_marker<I>(), rate = 0, max = 0;
    if (src.available()) {
        std::tm t{};
        src.utc(src.now(), &t);
        const I last = static_cast<I>(86399), day = static_cast<I>(86400);
        count = static_cast<I>(t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec);
        if (count >= last) count = static_cast<I>(count - day);
        rate = 1;
        max = last;
    }
    if (call.result_supplied()) Kind<I>::store(call.result().addr(), count);
    if (call.present(1)) Kind<I>::store(call.arg(1).addr(), rate);
    if (call.present(2)) Kind<I>::store(call.arg(2).addr(), max);
}

}  // namespace
}  // namespace intrins::clock

using namespace intrins;

// suffix, integer kind of VALUES or of the SYSTEM_CLOCK arguments
#define CLOCK_INTEGER_KINDS(X) X(, int32_t) X(2, int16_t) X(8, int64_t)
#define X(k, I)                                                                                      \
    extern "C" INTRINS_EXPORT void f90_dateandtime##k(ArgList* a) { clock::date_and_time<I>(a); } \
    extern "C" INTRINS_EXPORT void f90_sysclock##k(ArgList* a) { clock::system_clock<I>(a); }
CLOCK_INTEGER_KINDS(X)
#undef X
