// MAXLOC and MINLOC: positions, ties, markers, the kept quirks, checks.
#include <cmath>
#include <limits>
#include <vector>

#include "reduce_support.h"

namespace rtest {
namespace {

std::vector<int64_t> positions(const Red& r, bool k8) {
    std::vector<int64_t> v;
    for (int i = 0; i < r.res->EXTENT; ++i) v.push_back(k8 ? r.at<int64_t>(i) : r.at<int32_t>(i));
    return v;
}
using V = std::vector<int64_t>;

TEST(Loc, FirstOfEqualExtremesAndLowerBounds) {
    Array a({{0, 3}}, 4);
    a.fill<int32_t>({3, 7, 7, 1});
    Red r(a);
    f90_maxloci4(r);
    ASSERT_EQ(r.res->RANK, 1);
    EXPECT_EQ(positions(r, false), V({2}));
    Red k(a);
    f90_kminloci4(k);
    EXPECT_EQ(k.res->ELSIZE, 8);
    EXPECT_EQ(positions(k, true), V({4}));
    Array b({{0, 1}}, 4);
    b.fill<int32_t>({5, 9});
    Red rb(b);
    f90_maxloci4(rb);
    EXPECT_EQ(positions(rb, false), V({2}));
}

TEST(Loc, EveryKindOnARank2Section) {
    // The extreme at (2, 3) of a 3 x 4 array, seen through a section that
    // reverses the rows: position (2, 3) there too.
    auto check = [](auto fn, auto v, int size, bool k8) {
        using T = decltype(v);
        Array a({{1, 3}, {1, 4}}, size);
        for (int i = 0; i < 12; ++i) {
            T t = static_cast<T>(i % 5);
            std::memcpy(a.data() + i * size, &t, std::is_same_v<T, long double> ? 10 : sizeof t);
        }
        T big = static_cast<T>(v);
        std::memcpy(a.data() + (1 + 3 * 2) * size, &big, std::is_same_v<T, long double> ? 10 : sizeof big);
        Section s(a, {tri(3, 1, -1), tri(1, 4)});
        Red r(s);
        fn(r);
        EXPECT_EQ(positions(r, k8), V({2, 3})) << sizeof(T);
    };
    check(f90_maxloci1, int8_t{100}, 1, false);
    check(f90_minloci2, int16_t{-100}, 2, false);
    check(f90_kmaxloci8, int64_t{100}, 8, true);
    check(f90_maxlocr4, 100.0f, 4, false);
    check(f90_kminlocr8, -100.0, 8, true);
    check(f90_maxlocr10, (long double)100, 16, false);
    check(f90_minlocr16, (__float128)-100, 16, false);
}

TEST(Loc, EmptyAndMaskedOutGiveTheMarker) {
    Array e({{1, 3}, {1, 0}}, 4);
    Red r(e);
    f90_maxloci4(r);
    EXPECT_EQ(positions(r, false), V({0, 1}));
    Array a({{1, 2}, {1, 2}, {1, 2}}, 8);
    Array f(4);
    Red m(a);
    f90_maxlocr8(m.mask(f));
    EXPECT_EQ(positions(m, false), V({0, 1, 1}));
    Array none({{1, 2}, {1, 2}, {1, 2}}, 4);
    Red am(a);
    f90_kminlocr8(am.mask(none));
    EXPECT_EQ(positions(am, true), V({0, 1, 1}));
}

TEST(Loc, AllEqualToTheStartValueReportsOnePastTheEnd) {
    Array v({{1, 2}}, 4);
    v.fill<int32_t>({INT32_MAX, INT32_MAX});
    Red r(v);
    f90_minloci4(r);
    EXPECT_EQ(positions(r, false), V({3}));
    Array m({{1, 2}, {1, 3}}, 4);
    for (int i = 0; i < 6; ++i) m.at<int32_t>(i) = INT32_MIN;
    Red rm(m);
    f90_maxloci4(rm);
    EXPECT_EQ(positions(rm, false), V({1, 4}));
    // The non-contiguous walk has no such position: the marker.
    Section s(m, {tri(1, 2), tri(1, 3, 2)});
    Red rs(s);
    f90_maxloci4(rs);
    EXPECT_EQ(positions(rs, false), V({0, 1}));
}

TEST(Loc, NaNRules) {
    const double NaN = std::numeric_limits<double>::quiet_NaN();
    Array a({{1, 4}}, 8);
    a.fill<double>({2, NaN, 1, 1});
    Red mn(a), mx(a);
    f90_minlocr8(mn);  // NaN is taken, then 1 replaces it
    EXPECT_EQ(positions(mn, false), V({3}));
    f90_maxlocr8(mx);
    EXPECT_EQ(positions(mx, false), V({1}));
}

TEST(Loc, DimPath) {
    Array a({{1, 3}, {1, 2}}, 4);
    a.fill<int32_t>({INT32_MIN, INT32_MIN, 5, 1, 9, 9});
    Red d(a);
    f90_maxloci4(d.dim(1));
    ASSERT_EQ(d.res->EXTENT, 2);
    EXPECT_EQ(d.at<int32_t>(0), 3);
    EXPECT_EQ(d.at<int32_t>(1), 2);
    Red first(a);
    Array two({{1, 3}, {1, 2}}, 4);
    two.fill<int32_t>({1, 1, 0, 0, 0, 0});
    f90_kmaxloci4(first.dim(1).mask(two));
    EXPECT_EQ(first.res->ELSIZE, 8);
    EXPECT_EQ(first.at<int64_t>(0), 1);  // a first element equal to the start value is still found
    EXPECT_EQ(first.at<int64_t>(1), 0);  // all masked out
    Array r({{1, 3}}, 4);
    f90_minloci4(Red(a).dim(2).into(r));
    EXPECT_EQ(r.at<int32_t>(0), 1);
    EXPECT_EQ(r.at<int32_t>(1), 1);
    EXPECT_EQ(r.at<int32_t>(2), 1);
}

TEST(LocDeath, Checks) {
    Array a({{1, 2}, {1, 3}}, 4);
    Array m({{1, 3}, {1, 2}}, 4);
    Array r3({{1, 3}}, 4);
    Array r2({{1, 2}}, 4);
    Array r22({{1, 1}, {1, 2}}, 4);
    // DIM's code 4 lies past the row: the next row's name is the text.
    EXPECT_DIES_WITH(f90_maxloci4(Red(a).dim(3).check()), head("MAXLOC") + "MAXVAL");
    EXPECT_DIES_WITH(f90_minlocr8(Red(a).dim(0).check()), head("MINLOC") + "MINVAL");
    EXPECT_DIES_WITH(f90_kmaxloci4(Red(a).dim(0).check()), unknown("KMAXLOC"));
    EXPECT_DIES_WITH(f90_kminlocr4(Red(a).mask(m).check()), unknown("KMINLOC"));
    EXPECT_DIES_WITH(f90_maxloci4(Red(a).mask(m).check()), head("MAXLOC") + mask_msg("(2, 3)", "(3, 2)"));
    EXPECT_DIES_WITH(f90_maxloci4(Red(a).check().into(r3)), head("MAXLOC") + " The RESULT array has size 3. It should have size 2.\n");
    EXPECT_DIES_WITH(f90_minloci4(Red(a).check().into(r22)), head("MINLOC") + result_msg("(1, 2)", "(2)"));
    // The DIM result check prints the expected-shape list as if it were a descriptor.
    EXPECT_DIES_WITH(f90_maxloci4(Red(a).dim(1).check().into(r2)), head("MAXLOC") + mask_msg("(2)", "(SCALAR)"));
    f90_maxloci4(Red(a).dim(1).into(r2));  // no flag: no check
}

}  // namespace
}  // namespace rtest
