// platform_windows.cpp - clock sources on Windows: the C runtime's clock,
// time, gmtime, _ftime and _tzset.
#include "clock/platform.h"

#if defined(_WIN32)

#include <sys/timeb.h>

namespace intrins::clock::os {

void utc(std::time_t t, std::tm* out) { *out = *std::gmtime(&t); }

FineTime fine() {
    struct _timeb tb;
    _ftime(&tb);
    return {static_cast<int64_t>(tb.time), static_cast<int32_t>(tb.millitm)};
}

int32_t zone_west() {
    _tzset();
    struct _timeb tb;
    _ftime(&tb);
    return tb.timezone;
}

}  // namespace intrins::clock::os

#endif
