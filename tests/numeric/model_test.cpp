// The real-model intrinsics of every kind on the operands the standard model
// leaves open: zeros and NaN take the zero path, infinities are treated as
// the largest exponent.  (Finite values: the GNU Fortran table and the kept
// departures of patterns_test.)
#include <gtest/gtest.h>

#include <vector>

#include "real_kinds.h"

using namespace numtest;

namespace {

template <class T>
class RealModel : public ::testing::Test {};
TYPED_TEST_SUITE(RealModel, Kinds);

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

}  // namespace
