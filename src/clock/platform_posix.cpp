// platform_posix.cpp - clock sources on Linux.
//
// The time-zone offset is the C library's `timezone` after tzset(): seconds
// west of Greenwich for standard time, the same quantity the Windows runtime
// reports in minutes (daylight saving is not folded in there either).
#include "clock/platform.h"

#if !defined(_WIN32)

#include <time.h>

namespace intrins::clock::os {

void utc(std::time_t t, std::tm* out) { gmtime_r(&t, out); }

FineTime fine() {
    timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    return {static_cast<int64_t>(ts.tv_sec), static_cast<int32_t>(ts.tv_nsec / 1000000)};
}

int32_t zone_west() {
    tzset();
    return static_cast<int32_t>(timezone / 60);
}

}  // namespace intrins::clock::os

#endif
