// rounding.h - CEILING and FLOOR, MODULO, MVBITS: one template each.
//
// CEILING: a range test in the floating-point unit (a NaN is out of range),
// then truncation toward zero on the bit pattern in 32 bits, then 1 added
// when the truncated value is below x.  The 64-bit-result members keep the
// 32-bit truncation (shift counts modulo 32, so magnitudes of 2^31 and more
// wrap) and sign-extend it; the 16-bit ones keep its low 16 bits and compare
// that.  Most FLOOR members are this same computation and so round up, on
// purpose; FLOOR(REAL(8)) alone returns 1 or 0 (see floor_sign).
//
// MODULO of integers: P = 0 gives A; A = most negative with P = -1 raises the
// processor's divide fault as the division would.  MODULO of reals: the
// remainder of |A| by |P| is exact (fmod), as the stepwise scaled subtraction
// is; with A and P of different signs a nonzero remainder becomes
// |P| - remainder (rounded); the result takes P's sign, a zero one too.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "intrins.h"

#include "format.h"

namespace intrins::num {

// ---- CEILING and FLOOR ----

// Truncation toward zero in 32 bits on the bit pattern: the top 32 bits of
// the significand (leading one at bit 31) shifted right by the distance of
// the exponent from 31, modulo 32.
template <class T>
int32_t truncate32(T x) {
    using F = Fmt<T>;
    auto p = F::split(x);
    if (p.e < F::kBias) return 0;
    uint32_t m = static_cast<uint32_t>(p.f >> (F::kFrac - 31)) | 0x80000000u;
    uint32_t t = m >> (static_cast<uint32_t>(F::kBias + 31 - p.e) & 31);
    return static_cast<int32_t>(p.neg ? 0u - t : t);
}
// REAL(16): the software arithmetic's conversion, then its low 32 bits.
inline int32_t truncate32(Quad x) { return static_cast<int32_t>(static_cast<uint32_t>(quad_to_int64(x))); }

// x is already in the computing type (REAL(4) arguments are widened to
// double); R is the result width.
template <class R, class T>
R ceiling(T x, T lo, T hi, R out) {
    if (!(x > lo) || x > hi) return out;
    R t = static_cast<R>(truncate32(x));
    if (T(t) < x) t = static_cast<R>(static_cast<std::make_unsigned_t<R>>(t) + 1u);
    return t;
}

// FLOOR(REAL(8)): the range test of CEILING(REAL(8)), then 1 for a positive
// x and 0 otherwise.
template <class T>
int32_t floor_sign(T x, T lo, T hi, int32_t out) {
    if (!(x > lo) || x > hi) return out;
    return x > T(0) ? 1 : 0;
}

// ---- MODULO ----

// Executes the overflowing signed division so that the processor raises its
// divide fault, as the plain division of these operands does.
[[noreturn]] void divide_fault();

template <class T>
T modulo_int(T a, T p) {
    using U = std::make_unsigned_t<T>;
    if (p == 0) return a;
    if (a == 0) return 0;
    if (a == std::numeric_limits<T>::min() && p == T(-1)) divide_fault();
    const T q = static_cast<T>(a / p);
    const U aq = q < 0 ? static_cast<U>(U(0) - static_cast<U>(q)) : static_cast<U>(q);
    const U mult = (a < 0) != (p < 0) ? static_cast<U>(U(0) - aq - U(1)) : aq;  // -|q| - 1 or |q|
    const T r = static_cast<T>(static_cast<U>(static_cast<U>(a) - static_cast<U>(static_cast<U>(p) * mult)));
    auto mag = [](T v) { return v < 0 ? static_cast<U>(U(0) - static_cast<U>(v)) : static_cast<U>(v); };
    return mag(r) == mag(p) ? T(0) : r;
}

inline float fmod_of(float a, float p) { return std::fmod(a, p); }
inline double fmod_of(double a, double p) { return std::fmod(a, p); }
inline Real10 fmod_of(Real10 a, Real10 p) { return std::fmod(a, p); }
Quad fmod_of(Quad a, Quad p);

template <class T>
T modulo_real(T a, T p) {
    using F = Fmt<T>;
    if (zero_path(p)) return a;  // zero or NaN P
    auto pp = F::split(p), pa = F::split(a);
    if (pp.e == F::kEmax) return a;  // infinite P (a NaN P has taken the zero path)
    if (pa.e == F::kEmax) return F::join(pa.neg, F::kEmax, typename F::Bits(1) << (F::kFrac - 1));  // quiet NaN
    if (zero_path(a)) return a;
    const T ma = F::join(false, pa.e, pa.f), mp = F::join(false, pp.e, pp.f);
    const T rem = fmod_of(ma, mp);  // exact, so always below |P|
    // A zero remainder stays 0 whatever the signs (as in the integer rule,
    // where a result of magnitude |P| becomes 0).
    const T r = pa.neg != pp.neg && !(rem == T(0)) ? mp - rem : rem;
    auto pr = F::split(r);
    return F::join(pp.neg, pr.e, pr.f);
}

// ---- MVBITS ----

// Bits FROMPOS .. FROMPOS+LEN-1 of FROM to TOPOS .. of TO; both ranges must
// lie within the bit size (checked always; the sums are taken without
// overflow).
template <class T>
void mvbits(T from, int32_t frompos, int32_t len, T* to, int32_t topos) {
    constexpr int32_t bits = 8 * sizeof(T);
    if (!(frompos >= 0 && len >= 0 && int64_t{frompos} + len <= bits))
        f90_ArrLibError("MVBITS", 1, frompos, len, bits);
    if (!(topos >= 0 && int64_t{topos} + len <= bits)) f90_ArrLibError("MVBITS", 2, topos, len, bits);
    if (len == 0) return;
    using U = std::make_unsigned_t<T>;
    const uint64_t mask = len == 64 ? ~uint64_t{0} : (uint64_t{1} << len) - 1;
    const uint64_t f = static_cast<U>(from), t = static_cast<U>(*to);
    *to = static_cast<T>(static_cast<U>((((f >> frompos) & mask) << topos) | (t & ~(mask << topos))));
}

}  // namespace intrins::num
