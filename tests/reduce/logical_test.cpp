// ALL, ANY, COUNT and KOUNT: every LOGICAL kind, whole arrays and DIM.
#include "reduce_support.h"

namespace rtest {
namespace {

template <class L>
struct LogicalKind : ::testing::Test {};
using LogicalKinds = ::testing::Types<int8_t, int16_t, int32_t, int64_t>;
TYPED_TEST_SUITE(LogicalKind, LogicalKinds);

using Fn = void (*)(ArgList*);
template <class L>
struct Fns;
#define FNS(k, L) \
    template <>   \
    struct Fns<L> { static constexpr Fn all = f90_all##k, any = f90_any##k, count = f90_count##k, kcount = f90_kcount##k; };
FNS(1, int8_t) FNS(2, int16_t) FNS(4, int32_t) FNS(8, int64_t)
#undef FNS

TYPED_TEST(LogicalKind, WholeArrayAndEmpty) {
    using L = TypeParam;
    using F = Fns<L>;
    Array a({{0, 2}, {-1, 0}}, sizeof(L));  // 3 x 2, lower bounds 0 and -1
    a.fill<L>({0, 2, 0, 0, 1, 0});          // 2: only bit 1 set, still true
    Scalar<L> r;
    Scalar<int32_t> c;
    Scalar<int64_t> k;
    F::all(Red(a).into(r.a));
    EXPECT_EQ(r.value(), 0);
    F::any(Red(a).into(r.a));
    EXPECT_EQ(r.value(), 1);
    F::count(Red(a).into(c.a));
    EXPECT_EQ(c.value(), 2);
    k.a.at<int64_t>(0) = -1;
    F::kcount(Red(a).into(k.a));
    EXPECT_EQ(k.value(), 2);

    Array e({{1, 3}, {1, 0}}, sizeof(L));
    F::all(Red(e).into(r.a));
    EXPECT_EQ(r.value(), 1);
    F::any(Red(e).into(r.a));
    EXPECT_EQ(r.value(), 0);
    F::count(Red(e).into(c.a));
    EXPECT_EQ(c.value(), 0);
}

TYPED_TEST(LogicalKind, DimOnRankThreeAndSections) {
    using L = TypeParam;
    using F = Fns<L>;
    Array a({{1, 2}, {1, 3}, {1, 4}}, sizeof(L));
    for (int i = 0; i < 24; ++i) a.at<L>(i) = (i % 3 == 0 || i % 7 == 0) ? 1 : 0;
    auto truth = [&](int i, int j, int k) { int n = i + 2 * j + 6 * k; return n % 3 == 0 || n % 7 == 0; };
    for (int dim = 1; dim <= 3; ++dim) {
        Red c(a);
        F::count(c.dim(dim));
        ASSERT_EQ(c.res->RANK, 2);
        ASSERT_EQ(c.res->ELSIZE, 4);
        Red all(a), any(a);
        F::all(all.dim(dim));
        F::any(any.dim(dim));
        int ext[3] = {2, 3, 4};
        int o[2], on = 0;
        for (int d = 0; d < 3; ++d)
            if (d != dim - 1) o[on++] = ext[d];
        for (int q = 0; q < o[1]; ++q)
            for (int p = 0; p < o[0]; ++p) {
                int n = 0, len = ext[dim - 1];
                for (int t = 0; t < len; ++t) {
                    int s[3], u = 0;
                    for (int d = 0; d < 3; ++d) s[d] = d == dim - 1 ? t : (u++ == 0 ? p : q);
                    n += truth(s[0], s[1], s[2]);
                }
                EXPECT_EQ(c.at<int32_t>(p + o[0] * q), n) << dim;
                EXPECT_EQ(all.at<L>(p + o[0] * q), n == len ? 1 : 0);
                EXPECT_EQ(any.at<L>(p + o[0] * q), n > 0 ? 1 : 0);
            }
    }
    // Every second column, rows reversed: a non-contiguous section.
    Array m({{1, 3}, {1, 4}}, sizeof(L));
    m.fill<L>({1, 0, 0, 9, 9, 9, 0, 0, 1, 9, 9, 9});
    Section s(m, {tri(3, 1, -1), tri(1, 4, 2)});  // columns 1 and 3
    Red c(s);
    F::count(c.dim(1));
    EXPECT_EQ(c.at<int32_t>(0), 1);
    EXPECT_EQ(c.at<int32_t>(1), 1);
    Scalar<L> r;
    F::all(Red(s).into(r.a));
    EXPECT_EQ(r.value(), 0);
    F::any(Red(s).into(r.a));
    EXPECT_EQ(r.value(), 1);
}

TEST(Logical, HighWordOfLogical8IsTrue) {
    Array a({{1, 2}}, 8);
    a.fill<int64_t>({int64_t{1} << 40, 0});
    Scalar<int32_t> c;
    f90_count8(Red(a).into(c.a));
    EXPECT_EQ(c.value(), 1);
}

TEST(Logical, RankOneIgnoresDimAndWalksItsStride) {
    Array a({{1, 6}}, 4);
    a.fill<int32_t>({1, 0, 1, 0, 1, 1});
    Section rev(a, {tri(6, 1, -2)});  // elements 6, 4, 2: NONCONTIG set, stride -2
    Scalar<int32_t> c;
    f90_count4(Red(rev).dim(5).check().into(c.a));
    EXPECT_EQ(c.value(), 1);
    Scalar<int32_t> l;
    f90_all4(Red(rev).dim(-3).into(l.a));
    EXPECT_EQ(l.value(), 0);
}

TEST(Logical, ZeroExtentAlongAndAcrossDim) {
    Array a({{1, 3}, {1, 0}}, 4);  // 3 x 0
    Red along(a);
    f90_all4(along.dim(2));
    ASSERT_EQ(along.res->EXTENT, 3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(along.at<int32_t>(i), 1);
    Red across(a);
    f90_count4(across.dim(1));
    EXPECT_EQ(across.res->EXTENT, 0);
    EXPECT_EQ(across.res->RANK, 1);
}

TEST(Logical, CallerResultIsTrustedWithoutCheckFlag) {
    Array a({{1, 2}, {1, 3}}, 4);
    a.fill<int32_t>({1, 1, 0, 1, 1, 1});
    Array r({{1, 5}}, 4);  // wrong shape: 5 instead of 2
    f90_count4(Red(a).dim(2).into(r));
    EXPECT_EQ(r.at<int32_t>(0), 2);
    EXPECT_EQ(r.at<int32_t>(1), 3);
    EXPECT_DIES_WITH(f90_count4(Red(a).dim(2).check().into(r)), head("COUNT") + result_msg("(5)", "(2)"));
}

TEST(Logical, KountStoresEightBytesAtTheFourByteStep) {
    Array a({{1, 2}, {1, 3}}, 4);
    a.fill<int32_t>({1, 1, 1, 0, 1, 1});
    Red k(a);
    f90_kcount4(k.dim(1));
    ASSERT_EQ(k.res->ELSIZE, 4);  // as COUNT's: the stores overlap
    EXPECT_EQ(k.at<int32_t>(0), 2);
    EXPECT_EQ(k.at<int32_t>(1), 1);
    EXPECT_EQ(k.at<int32_t>(2), 2);
    EXPECT_EQ(k.at<int32_t>(3), 0);  // the last store's high word lies past the last slot
    Array r({{1, 3}}, 8);
    r.fill<int64_t>({-1, -1, -1});
    f90_kcount4(Red(a).dim(1).into(r));
    EXPECT_EQ(r.at<int64_t>(0), 2);
    EXPECT_EQ(r.at<int64_t>(1), 1);
}

TEST(LogicalDeath, DimIsCheckedEvenWithoutTheFlag) {
    Array a({{1, 2}, {1, 2}}, 4);
    EXPECT_DIES_WITH(f90_all4(Red(a).dim(0)), head("ALL") + dim_msg(0, 2));
    EXPECT_DIES_WITH(f90_any1(Red(a).dim(3)), head("ANY") + dim_msg(3, 2));
    EXPECT_DIES_WITH(f90_count2(Red(a).dim(3)), head("COUNT") + dim_msg(3, 2));
    EXPECT_DIES_WITH(f90_kcount8(Red(a).dim(3)), unknown("KOUNT"));
}

}  // namespace
}  // namespace rtest
