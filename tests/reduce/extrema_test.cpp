// MAXVAL and MINVAL: start values, NaN and signed-zero rules, visiting
// orders, DIM, MASK and the checks.
#include <cmath>
#include <limits>

#include <quadmath.h>

#include "reduce_support.h"

namespace rtest {
namespace {

const double NaN = std::numeric_limits<double>::quiet_NaN();

double vec_r8(void (*fn)(ArgList*), std::initializer_list<double> v, ArrDesc* mask = nullptr) {
    Array a({{1, static_cast<int32_t>(v.size())}}, 8);
    a.fill<double>(v);
    Array r(8);
    Red red(a);
    if (mask) red.mask(mask);
    fn(red.into(r));
    return r.at<double>(0);
}

TEST(Extrema, EmptyGivesTheStartValue) {
    Array e({{1, 0}}, 4);
    Array r(4);
    f90_maxvalr4(Red(e).into(r));
    EXPECT_EQ(bits_of(r.at<float>(0)), 0xFF7FFFFFu);
    f90_minvalr4(Red(e).into(r));
    EXPECT_EQ(bits_of(r.at<float>(0)), 0x7F7FFFFFu);
    Array e2({{3, 2}}, 2);
    Array r2(2);
    f90_minvali2(Red(e2).into(r2));
    EXPECT_EQ(r2.at<int16_t>(0), 32767);
    Array e8({{1, 0}}, 8);
    Array r8(8);
    f90_maxvali8(Red(e8).into(r8));
    EXPECT_EQ(r8.at<int64_t>(0), INT64_MIN);
    f90_maxvalr8(Red(e8).into(r8));
    EXPECT_EQ(bits_of(r8.at<double>(0)), 0xFFEFFFFFFFFFFFFFull);
    Array e10({{1, 0}}, 16);
    Array r10(16);
    f90_maxvalr10(Red(e10).into(r10));
    EXPECT_EQ(bits_of(r10.at<uint64_t>(0)), ~0ull);
    EXPECT_EQ(*reinterpret_cast<uint16_t*>(r10.data() + 8), 0xFFFE);
    f90_minvalr16(Red(e10).into(r10));
    __float128 q;
    std::memcpy(&q, r10.data(), 16);
    EXPECT_TRUE(q == FLT128_MAX);
}

TEST(Extrema, SignedZeroAndNaNFollowTheVisitingOrder) {
    EXPECT_EQ(bits_of(vec_r8(f90_maxvalr8, {+0.0, -0.0})), bits_of(+0.0));
    EXPECT_EQ(bits_of(vec_r8(f90_maxvalr8, {-0.0, +0.0})), bits_of(-0.0));
    EXPECT_EQ(bits_of(vec_r8(f90_maxvalr8, {-1.0, -0.0, +0.0})), bits_of(+0.0));  // last to second
    EXPECT_EQ(vec_r8(f90_maxvalr8, {1.0, NaN, 3.0}), 3.0);
    EXPECT_TRUE(std::isnan(vec_r8(f90_maxvalr8, {NaN, 1.0, 3.0})));
    EXPECT_TRUE(std::isnan(vec_r8(f90_minvalr8, {1.0, NaN, 3.0})));
    Array all({{1, 3}}, 4);
    all.fill<int32_t>({1, 1, 1});
    EXPECT_EQ(vec_r8(f90_minvalr8, {1.0, NaN, 3.0}, all), 1.0);
    EXPECT_EQ(vec_r8(f90_minvalr8, {NaN, 5.0, 3.0, 4.0}), 3.0);
    // -inf is below the start value: only the first element can bring it in.
    EXPECT_EQ(vec_r8(f90_maxvalr8, {-INFINITY}), -INFINITY);
    EXPECT_EQ(vec_r8(f90_maxvalr8, {-INFINITY}, all), -std::numeric_limits<double>::max());
}

TEST(Extrema, NonContiguousWalksForward) {
    Array a({{1, 6}}, 8);
    a.fill<double>({NaN, 9, 2, 9, 5, 9});
    Section s(a, {tri(5, 1, -2)});  // 5, 2, NaN: forward from the start value
    Array r(8);
    f90_minvalr8(Red(s).into(r));
    EXPECT_TRUE(std::isnan(r.at<double>(0)));
    f90_maxvalr8(Red(s).into(r));
    EXPECT_EQ(r.at<double>(0), 5);
}

TEST(Extrema, IntegerKindsWholeAndDim) {
    Array a({{0, 2}, {5, 6}}, 1);
    a.fill<int8_t>({3, -7, 9, 9, -128, 4});
    Array r(1);
    f90_maxvali1(Red(a).into(r));
    EXPECT_EQ(r.at<int8_t>(0), 9);
    f90_minvali1(Red(a).into(r));
    EXPECT_EQ(r.at<int8_t>(0), -128);
    Red d(a);
    f90_minvali1(d.dim(2));
    ASSERT_EQ(d.res->EXTENT, 3);
    EXPECT_EQ(d.res->ELSIZE, 1);
    EXPECT_EQ(d.at<int8_t>(0), 3);
    EXPECT_EQ(d.at<int8_t>(1), -128);
    EXPECT_EQ(d.at<int8_t>(2), 4);
    Array m({{1, 3}, {1, 2}}, 4);
    m.fill<int32_t>({0, 1, 0, 0, 1, 0});
    Red dm(a);
    f90_maxvali1(dm.dim(1).mask(m));
    EXPECT_EQ(dm.at<int8_t>(0), -7);
    EXPECT_EQ(dm.at<int8_t>(1), -128);  // the selected element is the start value
}

TEST(Extrema, DimRunStartsFromItsFirstSelectedElement) {
    Array a({{1, 2}, {1, 2}}, 8);
    a.fill<double>({-INFINITY, -INFINITY, NaN, 2});
    Red d(a);
    f90_maxvalr8(d.dim(1));
    EXPECT_EQ(d.at<double>(0), -INFINITY);
    EXPECT_TRUE(std::isnan(d.at<double>(1)));
    Array m({{1, 2}, {1, 2}}, 4);
    m.fill<int32_t>({0, 0, 1, 1});
    Red dm(a);
    f90_maxvalr8(dm.dim(1).mask(m));
    EXPECT_EQ(dm.at<double>(0), -std::numeric_limits<double>::max());  // empty run
    EXPECT_TRUE(std::isnan(dm.at<double>(1)));
}

TEST(Extrema, EmptyDimAndFalseScalarMask) {
    Array a({{1, 2}, {1, 0}}, 4);  // 2 x 0
    Red d(a);
    f90_maxvali4(d.dim(2));
    ASSERT_EQ(d.res->EXTENT, 2);
    EXPECT_EQ(d.at<int32_t>(0), INT32_MIN);
    EXPECT_EQ(d.at<int32_t>(1), INT32_MIN);
    Array b({{1, 2}}, 4);
    b.fill<int32_t>({5, 6});
    Array f(4);
    Red lib(b);
    f90_minvali4(lib.mask(f));
    ASSERT_EQ(lib.res->RANK, 0);
    EXPECT_EQ(lib.at<int32_t>(0), INT32_MAX);
}

TEST(ExtremaDeath, ChecksInTheirOrder) {
    Array a({{1, 2}, {1, 3}}, 4);
    Array m({{1, 3}, {1, 2}}, 4);
    Array r({{1, 5}}, 4);
    EXPECT_DIES_WITH(f90_maxvali4(Red(a).dim(0).mask(m).check().into(r)), head("MAXVAL") + dim_msg(0, 2));
    EXPECT_DIES_WITH(f90_minvalr8(Red(a).dim(1).mask(m).check().into(r)), head("MINVAL") + mask_msg("(2, 3)", "(3, 2)"));
    EXPECT_DIES_WITH(f90_maxvalr4(Red(a).dim(1).check().into(r)), head("MAXVAL") + result_msg("(5)", "(3)"));
    f90_maxvali4(Red(a).dim(1).mask(m).into(r));  // no flag: nothing checked
}

}  // namespace
}  // namespace rtest
