// floatxxx.h - REAL(10) and REAL(16) support for every family.
//
// REAL(10) is the x87 80-bit extended format, held in a `long double` and
// moved to and from memory as exactly 10 bytes (sizeof(long double) is 12 on
// 32-bit x86 and 16 on x86-64; the padding is never written).  The arithmetic
// families keep each REAL(10) value in a 16-byte slot (value in the first 10
// bytes); the data movers move 10 bytes.
//
// REAL(16) is IEEE binary128: GCC's __float128, computed in software by the
// compiler's runtime.  Values are moved with memcpy, since callers' data need
// not have the type's 16-byte alignment.  Decimal text goes through
// libquadmath, with "INF", "-INF" and "QNAN" for the special values.
#pragma once

#include <cstdint>
#include <cstring>

#include "../frame/platform.h"

namespace intrins {

using Real10 = long double;
using Quad = __float128;

static_assert(sizeof(Quad) == 16);
static_assert(sizeof(long double) >= 10);

inline constexpr std::size_t kReal10Slot = 16;  // arithmetic families' slot

inline Real10 load_r10(const void* p) {
    Real10 v = 0;  // padding bytes of the register image stay zero
    std::memcpy(&v, p, kReal10Bytes);
    return v;
}
inline void store_r10(void* p, Real10 v) { std::memcpy(p, &v, kReal10Bytes); }

inline Quad load_q(const void* p) {
    Quad v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void store_q(void* p, Quad v) { std::memcpy(p, &v, sizeof v); }

// Fields of the 80-bit format: 64-bit significand (explicit integer bit) and
// sign plus 15-bit biased exponent.
struct Real10Bits {
    uint64_t mantissa;
    uint16_t sign_exp;
};
inline Real10Bits bits_of(Real10 v) {
    Real10Bits b;
    unsigned char raw[kLongDoubleBytes];
    std::memcpy(raw, &v, sizeof raw);
    std::memcpy(&b.mantissa, raw, 8);
    std::memcpy(&b.sign_exp, raw + 8, 2);
    return b;
}
inline Real10 from_bits(Real10Bits b) {
    unsigned char raw[kLongDoubleBytes] = {};
    std::memcpy(raw, &b.mantissa, 8);
    std::memcpy(raw + 8, &b.sign_exp, 2);
    Real10 v;
    std::memcpy(&v, raw, sizeof v);
    return v;
}

// Fields of binary128: low and high 64-bit halves (little-endian).
struct QuadBits {
    uint64_t lo;
    uint64_t hi;  // sign, 15-bit exponent, top 48 bits of the fraction
};
inline QuadBits bits_of(Quad v) {
    QuadBits b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}
inline Quad from_bits(QuadBits b) {
    Quad v;
    std::memcpy(&v, &b, sizeof v);
    return v;
}

// Conversion to a 64-bit integer, truncating toward zero.  NaN and values
// outside the int64 range give INT64_MIN, the processor's "integer
// indefinite", as the 80-bit conversions of the floating-point unit do.
int64_t quad_to_int64(Quad v);

// Decimal text.  quad_to_text writes the shortest form that reads back
// exactly at full width: "d.ddd...dE+xxxxL" (37 fraction digits), "INF",
// "-INF" or "QNAN"; it returns the length written (buffer of at least 64).
int quad_to_text(Quad v, char* buf, std::size_t size);
// Reads such a text (a trailing 'L' is allowed; "INF", "-INF", "QNAN", "NAN"
// in either case).  Returns false when the text is not a number.
bool quad_from_text(const char* text, Quad* out);

// Scaling by a power of two.
Quad scale_q(Quad v, int n);       // ldexpq
Real10 scale_r10(Real10 v, int n); // ldexpl

}  // namespace intrins
