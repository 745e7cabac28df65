// The real-model intrinsics, every kind over the value classes (zeros,
// smallest subnormal, a subnormal with several bits, TINY, 1, neighbours of
// powers of two, HUGE, infinities, NaN) against a reference computed with the
// math library's ldexp/nextafter/ilogb.  Where single precision keeps its own
// subnormal rules the comparison leaves it out; patterns_test pins those.
#include <gtest/gtest.h>

#include <vector>

#include "real_kinds.h"

using namespace numtest;

namespace {

template <class T>
class RealModel : public ::testing::Test {};
TYPED_TEST_SUITE(RealModel, Kinds);

template <class T>
std::vector<T> finite_values() {
    using C = Classes<T>;
    std::vector<T> v;
    for (T x : {C::min_sub(), C::sub_bits(), C::tiny(), T(1), T(3), T(0.1), R<T>::next(T(2), T(0)), T(2),
                R<T>::next(T(2), T(4)), C::huge()})
        v.insert(v.end(), {x, -x});
    return v;
}
template <class T>
int ref_exponent(T x) { return R<T>::ilogb(x) + 1; }
template <class T>
T ref_fraction(T x) { return R<T>::ldexp(x, -ref_exponent(x)); }
template <class T>
bool below_normal(T x) { return (x < 0 ? -x : x) < Classes<T>::tiny(); }

TYPED_TEST(RealModel, FiniteValues) {
    using T = TypeParam;
    using C = Classes<T>;
    constexpr bool single = std::is_same_v<T, float>;
    for (T x : finite_values<T>()) {
        SCOPED_TRACE(hex(x));
        EXPECT_EQ(R<T>::exponent(x), ref_exponent(x));
        // x + d: a step onto zero gives +0.
        T up = R<T>::next(x, C::inf()), down = R<T>::next(x, -C::inf());
        EXPECT_TRUE(same_bits(R<T>::nearest(x, T(1)), up == T(0) ? T(0) : up));
        EXPECT_TRUE(same_bits(R<T>::nearest(x, -T(1)), down == T(0) ? T(0) : down));
        if (!single || !below_normal(x)) {
            EXPECT_TRUE(same_bits(R<T>::fraction(x), ref_fraction(x)));
            EXPECT_TRUE(same_bits(R<T>::rrspacing(x), R<T>::ldexp(x < 0 ? -ref_fraction(x) : ref_fraction(x), R<T>::kDigits)));
        }
        for (int32_t i : {0, 1, -7, 60, -60, 2 * R<T>::kMaxExp, -R<T>::kMaxExp}) {
            T want = R<T>::ldexp(x, i);
            if (!single || !(below_normal(x) || below_normal(want))) {
                EXPECT_TRUE(same_bits(R<T>::scale(x, i), want)) << i;
            }
            // Own rules, pinned in patterns_test: single truncation below the
            // normal range; double and quad join the words of a subnormal.
            constexpr bool joins = std::is_same_v<T, double> || std::is_same_v<T, Quad>;
            if ((single && i < R<T>::kMinExp) || (joins && below_normal(x))) continue;
            EXPECT_TRUE(same_bits(R<T>::setexp(x, i), i > R<T>::kMaxExp ? (x < 0 ? -C::inf() : C::inf())
                                                                         : R<T>::ldexp(ref_fraction(x), i)))
                << i;
        }
    }
}

TYPED_TEST(RealModel, ZerosInfinitiesAndNaN) {
    using T = TypeParam;
    using C = Classes<T>;
    for (T x : {T(0), -T(0), C::nan()}) {  // the zero path
        SCOPED_TRACE(hex(x));
        EXPECT_EQ(R<T>::exponent(x), 0);
        EXPECT_TRUE(same_bits(R<T>::fraction(x), T(0)));
        EXPECT_TRUE(same_bits(R<T>::rrspacing(x), T(0)));
        EXPECT_TRUE(same_bits(R<T>::setexp(x, 5), x));
        EXPECT_TRUE(same_bits(R<T>::scale(x, 5), x));
    }
    EXPECT_TRUE(same_bits(R<T>::nearest(T(0), T(1)), C::tiny()));  // TINY, not the smallest subnormal
    EXPECT_TRUE(is_nan(R<T>::nearest(C::nan(), T(1))));
    EXPECT_EQ(R<T>::exponent(-C::inf()), R<T>::kMaxExp + 1);
    EXPECT_TRUE(same_bits(R<T>::fraction(-C::inf()), T(-0.5)));
    EXPECT_TRUE(same_bits(R<T>::rrspacing(-C::inf()), R<T>::ldexp(T(1), R<T>::kDigits - 1)));
    EXPECT_TRUE(same_bits(R<T>::nearest(C::inf(), T(-1)), C::inf()));
    EXPECT_TRUE(same_bits(R<T>::scale(-C::inf(), -3), -C::inf()));
    EXPECT_TRUE(same_bits(R<T>::setexp(-C::inf(), 2), T(-2)));  // the exponent replaced like any other
}

TYPED_TEST(RealModel, Spacing) {
    using T = TypeParam;
    using C = Classes<T>;
    if (std::is_same_v<T, Real10>) GTEST_SKIP() << "REAL(10) builds its own pattern (patterns_test)";
    EXPECT_TRUE(same_bits(R<T>::spacing(T(-3)), R<T>::ldexp(T(1), 2 - R<T>::kDigits)));
    EXPECT_TRUE(same_bits(R<T>::spacing(C::huge()), R<T>::ldexp(T(1), R<T>::kMaxExp - R<T>::kDigits)));
    for (T x : {T(0), C::min_sub(), C::tiny()}) EXPECT_TRUE(same_bits(R<T>::spacing(x), C::tiny()));
    EXPECT_TRUE(same_bits(R<T>::spacing(-C::inf()), R<T>::ldexp(T(1), R<T>::kMaxExp + 1 - R<T>::kDigits)));
}

}  // namespace
