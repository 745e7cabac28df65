// The real-model intrinsics.  A typed test runs every kind over the value
// classes (zeros, smallest subnormal, a subnormal with several bits, TINY, 1,
// neighbours of powers of two, HUGE, infinities, NaN) against a reference
// computed with the math library's ldexp/nextafter/ilogb; the deliberate
// departures are then pinned on exact bit patterns, kind by kind.
#include <gtest/gtest.h>

#include <vector>

#include "real_kinds.h"

using namespace numtest;

namespace {

template <class T>
class RealModel : public ::testing::Test {};
using Kinds = ::testing::Types<float, double, Real10, Quad>;
TYPED_TEST_SUITE(RealModel, Kinds);

template <class T>
std::vector<T> finite_values() {
    using C = Classes<T>;
    std::vector<T> v;
    for (T x : {C::min_sub(), C::sub_bits(), C::tiny(), T(1), T(3), T(0.1), R<T>::next(T(2), T(0)), T(2),
                R<T>::next(T(2), T(4)), R<T>::ldexp(T(1), 100), C::huge()}) {
        v.push_back(x);
        v.push_back(-x);
    }
    return v;
}

template <class T>
int ref_exponent(T x) { return R<T>::ilogb(x) + 1; }
template <class T>
T ref_fraction(T x) { return R<T>::ldexp(x, -ref_exponent(x)); }
template <class T>
T abs_of(T x) { return x < 0 ? -x : x; }

TYPED_TEST(RealModel, ExponentFractionRrspacingOfFiniteValues) {
    using T = TypeParam;
    for (T x : finite_values<T>()) {
        SCOPED_TRACE(hex(x));
        EXPECT_EQ(R<T>::exponent(x), ref_exponent(x));
        if (std::is_same_v<T, float> && abs_of(x) < Classes<T>::tiny()) continue;  // own rule, below
        EXPECT_TRUE(same_bits(R<T>::fraction(x), ref_fraction(x)));
        EXPECT_TRUE(same_bits(R<T>::rrspacing(x), R<T>::ldexp(abs_of(ref_fraction(x)), R<T>::kDigits)));
    }
}

TYPED_TEST(RealModel, ZeroPathTakesZerosAndNaN) {
    using T = TypeParam;
    using C = Classes<T>;
    for (T x : {T(0), -T(0), C::nan()}) {
        SCOPED_TRACE(hex(x));
        EXPECT_EQ(R<T>::exponent(x), 0);
        EXPECT_TRUE(same_bits(R<T>::fraction(x), T(0)));
        EXPECT_TRUE(same_bits(R<T>::rrspacing(x), T(0)));
        EXPECT_TRUE(same_bits(R<T>::setexp(x, 5), x));  // returned unchanged
        EXPECT_TRUE(same_bits(R<T>::scale(x, 5), x));
    }
    // NEAREST from a zero steps by TINY, not by the smallest subnormal.
    EXPECT_TRUE(same_bits(R<T>::nearest(T(0), T(1)), C::tiny()));
    EXPECT_TRUE(same_bits(R<T>::nearest(-T(0), T(-2)), -C::tiny()));
    EXPECT_TRUE(is_nan(R<T>::nearest(C::nan(), T(1))));
}

TYPED_TEST(RealModel, Infinities) {
    using T = TypeParam;
    using C = Classes<T>;
    const int emax = R<T>::kMaxExp + 1;  // biased all-ones field less (bias - 1)
    EXPECT_EQ(R<T>::exponent(C::inf()), emax);
    EXPECT_EQ(R<T>::exponent(-C::inf()), emax);
    EXPECT_TRUE(same_bits(R<T>::fraction(C::inf()), T(0.5)));
    EXPECT_TRUE(same_bits(R<T>::fraction(-C::inf()), T(-0.5)));
    EXPECT_TRUE(same_bits(R<T>::rrspacing(-C::inf()), R<T>::ldexp(T(1), R<T>::kDigits - 1)));
    EXPECT_TRUE(same_bits(R<T>::nearest(C::inf(), T(-1)), C::inf()));
    EXPECT_TRUE(same_bits(R<T>::nearest(-C::inf(), T(1)), -C::inf()));
    EXPECT_TRUE(same_bits(R<T>::scale(-C::inf(), -3), -C::inf()));
    // SET_EXPONENT replaces the exponent of an infinity like any other.
    EXPECT_TRUE(same_bits(R<T>::setexp(-C::inf(), 2), T(-2)));
}

TYPED_TEST(RealModel, NearestStepsToTheNeighbour) {
    using T = TypeParam;
    using C = Classes<T>;
    for (T x : finite_values<T>()) {
        SCOPED_TRACE(hex(x));
        // x + d: stepping onto zero gives +0 (the sum's sign in rounding to nearest).
        T up = R<T>::next(x, C::inf()), down = R<T>::next(x, -C::inf());
        EXPECT_TRUE(same_bits(R<T>::nearest(x, T(1)), up == T(0) ? T(0) : up));
        EXPECT_TRUE(same_bits(R<T>::nearest(x, -T(1)), down == T(0) ? T(0) : down));
    }
}

TYPED_TEST(RealModel, ScaleAgreesWithLdexpWhereExact) {
    using T = TypeParam;
    using C = Classes<T>;
    for (T x : finite_values<T>())
        for (int32_t i : {0, 1, -1, 7, -7, 60, -60, 2 * R<T>::kMaxExp, -R<T>::kMaxExp}) {
            SCOPED_TRACE(hex(x) + " " + std::to_string(i));
            T want = R<T>::ldexp(x, i);
            // Single precision truncates (and renormalises in its own way)
            // below the normal range; pinned separately.
            if (std::is_same_v<T, float> && (abs_of(x) < C::tiny() || abs_of(want) < C::tiny())) continue;
            EXPECT_TRUE(same_bits(R<T>::scale(x, i), want));
        }
}

TYPED_TEST(RealModel, SetExponentOfNormalValues) {
    using T = TypeParam;
    using C = Classes<T>;
    for (T x : finite_values<T>()) {
        if (abs_of(x) < C::tiny()) continue;
        for (int32_t i : {1, 0, -3, 40, R<T>::kMaxExp, R<T>::kMinExp - 1}) {
            if (std::is_same_v<T, float> && i < R<T>::kMinExp) continue;  // truncates, pinned below
            SCOPED_TRACE(hex(x) + " " + std::to_string(i));
            EXPECT_TRUE(same_bits(R<T>::setexp(x, i), R<T>::ldexp(ref_fraction(x), i)));
        }
        EXPECT_TRUE(same_bits(R<T>::setexp(x, R<T>::kMaxExp + 1), x < 0 ? -C::inf() : C::inf()));
    }
}

TYPED_TEST(RealModel, SpacingOutsideExtended) {
    using T = TypeParam;
    using C = Classes<T>;
    if (std::is_same_v<T, Real10>) GTEST_SKIP() << "REAL(10) builds its own pattern";
    EXPECT_TRUE(same_bits(R<T>::spacing(T(1)), R<T>::ldexp(T(1), 1 - R<T>::kDigits)));
    EXPECT_TRUE(same_bits(R<T>::spacing(T(-3)), R<T>::ldexp(T(1), 2 - R<T>::kDigits)));
    EXPECT_TRUE(same_bits(R<T>::spacing(C::huge()), R<T>::ldexp(T(1), R<T>::kMaxExp - R<T>::kDigits)));
    for (T x : {T(0), C::min_sub(), C::tiny()}) EXPECT_TRUE(same_bits(R<T>::spacing(x), C::tiny()));
    // No zero test: an infinity has the largest spacing pattern.
    EXPECT_TRUE(same_bits(R<T>::spacing(-C::inf()), R<T>::ldexp(T(1), R<T>::kMaxExp + 1 - R<T>::kDigits)));
}

// ---- single precision ----

TEST(Single, EdgeCases) {
    EXPECT_EQ(R<float>::exponent(1.0f), 1);
    EXPECT_EQ(R<float>::exponent(f32(1)), -148);
    EXPECT_EQ(R<float>::exponent(f32(0x7f800000)), 129);
    EXPECT_EQ(R<float>::fraction(3.0f), 0.75f);
    EXPECT_TRUE(same_bits(R<float>::nearest(1.0f, -1.0f), 1.0f - 0x1p-24f));
    EXPECT_TRUE(same_bits(R<float>::nearest(0.0f, 1.0f), 0x1p-126f));
    EXPECT_TRUE(same_bits(R<float>::scale(1.0f, 200), f32(0x7f800000)));
    EXPECT_TRUE(same_bits(R<float>::scale(1.0f, -130), 0x1p-130f));
    EXPECT_TRUE(same_bits(R<float>::setexp(3.0f, 1), 1.5f));
    EXPECT_TRUE(same_bits(R<float>::setexp(-3.0f, 200), f32(0xff800000)));
    EXPECT_TRUE(same_bits(R<float>::spacing(1.0f), 0x1p-23f));
    EXPECT_TRUE(same_bits(R<float>::spacing(0.0f), 1.1754944e-38f));
    EXPECT_TRUE(same_bits(R<float>::spacing(f32(0x7f800000)), 0x1p105f));
    EXPECT_TRUE(same_bits(R<float>::spacing(f32(0x7fc00000)), 0x1p105f));
}

TEST(Single, FractionOfSubnormalShiftsAsSignedWord) {
    // The bit after the leading one fills sign and exponent: a NaN pattern.
    EXPECT_TRUE(same_bits(R<float>::fraction(f32(0x600000)), f32(0xffc00000)));
    EXPECT_TRUE(same_bits(R<float>::fraction(f32(0x00000003)), f32(0xffc00000)));
    EXPECT_TRUE(same_bits(R<float>::fraction(f32(0x80000005)), f32(0xbf200000)));  // -0.625
    EXPECT_TRUE(same_bits(R<float>::fraction(f32(0x00000001)), 0.5f));
    EXPECT_TRUE(same_bits(R<float>::fraction(f32(0x00500000)), 0.625f));
    // RRSPACING normalises the same subnormals with unsigned shifts.
    EXPECT_TRUE(same_bits(R<float>::rrspacing(f32(0x600000)), 0x1.8p23f));
}

TEST(Single, ScaleTruncatesBelowTheNormalRange) {
    // From a normal value: truncation, shift count modulo 32.
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x3fffffff), -127), f32(0x00ffffff >> 1)));
    EXPECT_TRUE(same_bits(R<float>::scale(-1.0f, -127), f32(0x80400000 >> 0)));  // e + i = 0
    EXPECT_TRUE(same_bits(R<float>::scale(1.0f, -159), f32(0x00400000)));  // e + i = -32: shift 0
    EXPECT_TRUE(same_bits(R<float>::scale(1.0f, -160), f32(0x00200000)));  // shift 33 mod 32 = 1
    EXPECT_TRUE(same_bits(R<float>::scale(1.0f, -150), f32(0x00000000)));  // shift 23: bits gone
    // From a subnormal: normalised to an exponent of 0 minus the shifts.
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x00400000), 10), 0x1p-118f));
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x00000001), 1), f32(0x00000002)));
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x80000003), 3), f32(0x80000018)));
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x00000007), -1), f32(0x00000003)));
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x80400000), -23), f32(0x00000000)));  // sign lost
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x80400000), -22), f32(0x80000001)));
    EXPECT_TRUE(same_bits(R<float>::scale(f32(0x00000001), 300), f32(0x7f800000)));
}

TEST(Single, SetExponentTruncatesBelowTheNormalRange) {
    EXPECT_TRUE(same_bits(R<float>::setexp(1.0f, -126), f32(0x00400000)));
    EXPECT_TRUE(same_bits(R<float>::setexp(-3.0f, -130), f32(0x80060000)));
    EXPECT_TRUE(same_bits(R<float>::setexp(f32(0x007fffff), -126), f32(0x007fffff)));
    EXPECT_TRUE(same_bits(R<float>::setexp(1.0f, -158), f32(0x00400000)));  // shift 32 mod 32 = 0
    EXPECT_TRUE(same_bits(R<float>::setexp(f32(0x00000001), 1), 1.0f));
}

// ---- double precision ----

TEST(Double, EdgeCases) {
    EXPECT_EQ(R<double>::exponent(f64(1)), -1073);
    EXPECT_EQ(R<double>::exponent(f64(0x0000000100000000)), -1041);
    EXPECT_EQ(R<double>::exponent(f64(0x7ff0000000000000)), 1025);
    EXPECT_TRUE(same_bits(R<double>::spacing(1.0), 0x1p-52));
    EXPECT_TRUE(same_bits(R<double>::nearest(1.0, -1.0), 1.0 - 0x1p-53));
    EXPECT_TRUE(same_bits(R<double>::nearest(0x1p-1000, 1.0), 0x1p-1000 + 0x1p-1052));
    // Subnormal steps in the upper and lower words.
    EXPECT_TRUE(same_bits(R<double>::nearest(f64(0x0000100000000000), -1.0), f64(0x00000fffffffffff)));
    EXPECT_TRUE(same_bits(R<double>::nearest(0x1p-1010, 1.0), 0x1p-1010 + 0x1p-1062));
}

TEST(Double, ScaleRoundsThroughLdexp) {
    // Below the normal range the double result is rounded, not truncated.
    EXPECT_TRUE(same_bits(R<double>::scale(f64(0x3ff0000000000003), -1074), f64(1)));
    EXPECT_TRUE(same_bits(R<double>::scale(1.5, -1074), f64(2)));  // ties to even
    EXPECT_TRUE(same_bits(R<double>::scale(f64(3), 1), f64(6)));
}

TEST(Double, SetExponentOfSubnormalJoinsTheWords) {
    // Upper word from x itself (exponent replaced), lower word from the
    // normalised value (there the bit below the leading one is bit 1).
    double x = f64(0x0008000000000001);  // top fraction bit and bottom bit
    double got = R<double>::setexp(x, 1);
    EXPECT_TRUE(same_bits(got, f64(0x3ff8000000000002)));
    double y = f64(0x0000000080000000);  // leading one in the lower word
    EXPECT_TRUE(same_bits(R<double>::setexp(y, 0), f64(0x3fe0000000000000)));
    // Below the normal range it goes through ldexp of the normalised value.
    EXPECT_TRUE(same_bits(R<double>::setexp(x, -1030), R<double>::ldexp(ref_fraction(x), -1030)));
}

// ---- REAL(10) and REAL(16) patterns ----

TEST(Extended, SpacingHasZeroSignificandAndWrappingExponent) {
    EXPECT_TRUE(same_bits(R<Real10>::spacing(1.0L), f80(16383 - 64, 0)));
    EXPECT_TRUE(same_bits(R<Real10>::spacing(-1.0L), f80(16383 - 64, 0)));
    EXPECT_TRUE(same_bits(R<Real10>::spacing(f80(64, 1ull << 63)), f80(1, 0)));
    EXPECT_TRUE(same_bits(R<Real10>::spacing(0.0L), f80(0x7fff - 63, 0)));
    EXPECT_TRUE(same_bits(R<Real10>::spacing(f80(10, 1ull << 63)), f80(0x7fff - 53, 0)));
}

TEST(Extended, FieldsAndIntegerBit) {
    EXPECT_EQ(R<Real10>::exponent(f80(0, 1)), -16444);
    EXPECT_TRUE(same_bits(R<Real10>::fraction(f80(0, 3)), f80(0x3ffe, 0xc000000000000000)));
    EXPECT_TRUE(same_bits(R<Real10>::rrspacing(f80(0x8000 | 5, 0xffffffffffffffff)), 0x1.fffffffffffffffep63L));
    EXPECT_TRUE(same_bits(R<Real10>::setexp(f80(0x8000, 0x4000000000000001), 3), f80(0xc001, 0x8000000000000002)));
}

TEST(Quad, SpacingAndSetExponent) {
    EXPECT_TRUE(same_bits(R<Quad>::spacing(Quad(1)), f128(0x3f8f000000000000, 0)));
    EXPECT_TRUE(same_bits(R<Quad>::spacing(f128(0x0070000000000000, 0)), f128(0x0001000000000000, 0)));
    EXPECT_EQ(R<Quad>::exponent(f128(0, 1)), -16493);
    EXPECT_EQ(R<Quad>::exponent(f128(0, 1ull << 40)), -16453);
    // SET_EXPONENT of a subnormal: the top 32-bit word (sign, exponent and 16
    // fraction bits) comes from x, the other 96 bits from the normalised value.
    Quad x = f128(0x0000800000000000, 0x0000000000000001);
    EXPECT_TRUE(same_bits(R<Quad>::setexp(x, 1), f128(0x3fff800000000000, 0x0000000000000002)));
}

}  // namespace
