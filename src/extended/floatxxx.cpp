// floatxxx.cpp - the out-of-line REAL(16) and REAL(10) services: integer
// conversion, decimal text through libquadmath, power-of-two scaling.
#include "floatxxx.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include <quadmath.h>

namespace intrins {

int64_t quad_to_int64(Quad v) {
    // 2^63 is exact in binary128; the range is [-2^63, 2^63).
    const Quad limit = 9223372036854775808.0Q;
    if (!(v > -limit - 1 && v < limit)) return INT64_MIN;  // NaN fails both
    return static_cast<int64_t>(v);
}

int quad_to_text(Quad v, char* buf, std::size_t size) {
    if (isnanq(v)) return std::snprintf(buf, size, "QNAN");
    if (isinfq(v)) return std::snprintf(buf, size, v < 0 ? "-INF" : "INF");
    int n = quadmath_snprintf(buf, size, "%.37QE", v);
    if (n < 0 || static_cast<std::size_t>(n) + 1 >= size) return n;
    buf[n++] = 'L';
    buf[n] = '\0';
    return n;
}

bool quad_from_text(const char* text, Quad* out) {
    while (*text == ' ') ++text;
    const char* t = text;
    bool neg = false;
    if (*t == '-' || *t == '+') neg = (*t++ == '-');
    auto word = [&](const char* w) {
        std::size_t n = std::strlen(w);
        for (std::size_t i = 0; i < n; ++i)
            if ((t[i] | 0x20) != w[i]) return false;
        return t[n] == '\0';
    };
    if (word("inf")) {
        *out = neg ? -HUGE_VALQ : HUGE_VALQ;
        return true;
    }
    if (word("qnan") || word("nan")) {
        *out = nanq("");
        return true;
    }
    char* end = nullptr;
    Quad v = strtoflt128(text, &end);
    if (end == text) return false;
    if (*end == 'L' || *end == 'l') ++end;
    if (*end != '\0') return false;
    *out = v;
    return true;
}

Quad scale_q(Quad v, int n) { return ldexpq(v, n); }
Real10 scale_r10(Real10 v, int n) { return ldexpl(v, n); }

}  // namespace intrins
