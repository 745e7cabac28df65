// real_kinds.h - uniform access, for typed tests, to the numeric entry points
// of the four REAL kinds (each with its own argument passing), with the
// libm/libquadmath functions a reference computes with, and bit comparison.
#pragma once

#include <gtest/gtest.h>
#include <quadmath.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "extended/floatxxx.h"
#include "intrins.h"
#include "support/arrays.h"

namespace numtest {

using intrins::Quad;
using intrins::Real10;

// The bytes that carry the value (10 for REAL(10)).
template <class T>
constexpr std::size_t kValueBytes = std::is_same_v<T, Real10> ? 10 : sizeof(T);

template <class T>
std::string hex(T v) {
    return testutil::hex(&v, kValueBytes<T>);
}
template <class T>
::testing::AssertionResult same_bits(T got, T want) {
    return testutil::same_bits(&got, &want, kValueBytes<T>);
}

template <class T>
struct R;

// REAL(4) and REAL(8): arguments by address, results by value.
#define NUMTEST_PLAIN_KIND(T, k, digits, minexp, maxexp)                              \
    template <>                                                                     \
    struct R<T> {                                                                   \
        static int32_t exponent(T x) { return f90_exponent##k(&x); }                \
        static T fraction(T x) { return f90_fraction##k(&x); }                      \
        static T rrspacing(T x) { return f90_rrspacing##k(&x); }                    \
        static T spacing(T x) { return f90_spacing##k(&x); }                        \
        static T nearest(T x, T s) { return f90_nearest##k(&x, &s); }               \
        static T scale(T x, int32_t i) { return f90_scale##k(&x, &i); }             \
        static T setexp(T x, int32_t i) { return f90_setexp##k(&x, &i); }           \
        static T modulo(T a, T p) { return f90_modulor##k(&a, &p); }                \
        static int32_t ceiling(T x) { return f90_ceiling##k(&x); }                  \
        static int32_t floor(T x) { return f90_floor##k(&x); }                      \
        static int16_t ceilingh(T x) { return f90_ceilingh##k(&x); }                \
        static int64_t ceilingk(T x) { return f90_ceilingk##k(&x); }                \
        static T fmod(T a, T p) { return std::fmod(a, p); }                         \
        static T ldexp(T x, int n) { return std::ldexp(x, n); }                     \
        static T next(T x, T to) { return std::nextafter(x, to); }                  \
        static int ilogb(T x) { return std::ilogb(x); }                             \
        static constexpr int kDigits = digits, kMinExp = minexp, kMaxExp = maxexp;  \
    };
NUMTEST_PLAIN_KIND(float, 4, 24, -125, 128)
NUMTEST_PLAIN_KIND(double, 8, 53, -1021, 1024)
#undef NUMTEST_PLAIN_KIND

// REAL(10) arguments are passed as 10-byte values in a buffer of exactly
// that size, so that a read past them shows under the sanitizers.
struct Arg10 {
    unsigned char b[10];
    explicit Arg10(Real10 v) { intrins::store_r10(b, v); }
};

template <>
struct R<Real10> {
    static int32_t exponent(Real10 x) { return f90_exponent10(Arg10(x).b); }
    static Real10 fraction(Real10 x) { return f90_fraction10(Arg10(x).b); }
    static Real10 rrspacing(Real10 x) { return f90_rrspacing10(Arg10(x).b); }
    static Real10 spacing(Real10 x) { return f90_spacing10(Arg10(x).b); }
    static Real10 nearest(Real10 x, Real10 s) { return f90_nearest10(Arg10(x).b, Arg10(s).b); }
    static Real10 scale(Real10 x, int32_t i) { return f90_scale10(Arg10(x).b, &i); }
    static Real10 setexp(Real10 x, int32_t i) { return f90_setexp10(Arg10(x).b, &i); }
    static Real10 modulo(Real10 a, Real10 p) { return f90_modulor10(Arg10(a).b, Arg10(p).b); }
    static int32_t ceiling(Real10 x) { return f90_ceiling10(Arg10(x).b); }
    static int32_t floor(Real10 x) { return f90_floor10(Arg10(x).b); }
    static int16_t ceilingh(Real10 x) { return f90_ceilingh10(Arg10(x).b); }
    static int64_t ceilingk(Real10 x) { return f90_ceilingk10(Arg10(x).b); }
    static Real10 fmod(Real10 a, Real10 p) { return std::fmod(a, p); }
    static Real10 ldexp(Real10 x, int n) { return std::ldexp(x, n); }
    static Real10 next(Real10 x, Real10 to) { return std::nextafter(x, to); }
    static int ilogb(Real10 x) { return std::ilogb(x); }
    static constexpr int kDigits = 64, kMinExp = -16381, kMaxExp = 16384;
};

// REAL(16) results come through a result slot; the returned address must be
// that slot.
template <class F, class... A>
Quad via_slot(F f, A... a) {
    unsigned char slot[16];
    void* r = f(slot, a...);
    EXPECT_EQ(r, static_cast<void*>(slot));
    return intrins::load_q(slot);
}

template <>
struct R<Quad> {
    static int32_t exponent(Quad x) { return f90_exponent16(&x); }
    static Quad fraction(Quad x) { return via_slot(f90_fraction16, &x); }
    static Quad rrspacing(Quad x) { return via_slot(f90_rrspacing16, &x); }
    static Quad spacing(Quad x) { return via_slot(f90_spacing16, &x); }
    static Quad nearest(Quad x, Quad s) { return via_slot(f90_nearest16, &x, &s); }
    static Quad scale(Quad x, int32_t i) { return via_slot(f90_scale16, &x, &i); }
    static Quad setexp(Quad x, int32_t i) { return via_slot(f90_setexp16, &x, &i); }
    static Quad modulo(Quad a, Quad p) { return via_slot(f90_modulor16, &a, &p); }
    static int32_t ceiling(Quad x) { return f90_ceiling16(&x); }
    static int32_t floor(Quad x) { return f90_floor16(&x); }
    static int16_t ceilingh(Quad x) { return f90_ceilingh16(&x); }
    static int64_t ceilingk(Quad x) { return f90_ceilingk16(&x); }
    static Quad fmod(Quad a, Quad p) { return fmodq(a, p); }
    static Quad ldexp(Quad x, int n) { return ldexpq(x, n); }
    static Quad next(Quad x, Quad to) { return nextafterq(x, to); }
    static int ilogb(Quad x) { return ilogbq(x); }
    static constexpr int kDigits = 113, kMinExp = -16381, kMaxExp = 16384;
};

// Value classes, built from the reference library.
template <class T>
struct Classes {
    static T tiny() { return R<T>::ldexp(T(1), R<T>::kMinExp - 1); }
    static T min_sub() { return R<T>::ldexp(T(1), R<T>::kMinExp - R<T>::kDigits); }
    // A subnormal whose bit after the leading one is 0, with more bits below.
    static T sub_bits() { return R<T>::ldexp(T(1), R<T>::kMinExp - 3) + min_sub() * T(5); }
    static T huge() { return R<T>::ldexp(T(2) - R<T>::ldexp(T(1), 1 - R<T>::kDigits), R<T>::kMaxExp - 1); }
    static T inf() { return huge() * T(2); }
    static T nan() { return inf() - inf(); }
};

template <class T>
bool is_nan(T x) { return x != x; }

// The kinds of the typed tests.
using Kinds = ::testing::Types<float, double, Real10, Quad>;

}  // namespace numtest
