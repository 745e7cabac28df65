// SUM and PRODUCT: every kind, DIM on ranks 2 and 3, MASK, sections, checks.
#include <cmath>
#include <vector>

#include "frame/kinds.h"
#include "reduce/lists.h"
#include "reduce_support.h"

namespace rtest {
namespace {

using Fn = void (*)(ArgList*);

// Element type, slot size, and the two entry points of a real or integer kind.
template <class T, int Slot, Fn S, Fn P>
struct RK {
    using type = T;
    static constexpr int slot = Slot;
    static constexpr Fn sum = S, prod = P;
};
using RealIntKinds = ::testing::Types<RK<int8_t, 1, f90_sumi1, f90_prodi1>, RK<int16_t, 2, f90_sumi2, f90_prodi2>,
                                      RK<int32_t, 4, f90_sumi4, f90_prodi4>, RK<int64_t, 8, f90_sumi8, f90_prodi8>,
                                      RK<float, 4, f90_sumr4, f90_prodr4>, RK<double, 8, f90_sumr8, f90_prodr8>,
                                      RK<long double, 16, f90_sumr10, f90_prodr10>,
                                      RK<__float128, 16, f90_sumr16, f90_prodr16>>;
template <class K>
struct SumKind : ::testing::Test {};
TYPED_TEST_SUITE(SumKind, RealIntKinds);

template <class T>
void put(char* p, double v) {
    T t = static_cast<T>(v);
    std::memcpy(p, &t, std::is_same_v<T, long double> ? 10 : sizeof(T));
}
template <class T>
void fill_raw(Array& a, std::initializer_list<T> v) {
    int i = 0;
    for (T x : v) std::memcpy(a.data() + sizeof(T) * i++, &x, sizeof x);
}
template <class T>
double get(const char* p) {
    T t{};
    std::memcpy(&t, p, std::is_same_v<T, long double> ? 10 : sizeof(T));
    return static_cast<double>(t);
}

TYPED_TEST(SumKind, WholeArrayMaskAndDim) {
    using T = typename TypeParam::type;
    constexpr int S = TypeParam::slot;
    Array a({{-1, 1}, {2, 3}}, S);  // 3 x 2 with lower bounds -1 and 2
    const double v[6] = {1, 2, -1, 3, 1, -2};
    for (int i = 0; i < 6; ++i) put<T>(a.data() + i * S, v[i]);
    Array r(S);
    TypeParam::sum(Red(a).into(r));
    EXPECT_EQ(get<T>(r.data()), 4);
    TypeParam::prod(Red(a).into(r));
    EXPECT_EQ(get<T>(r.data()), 12);

    Array m({{1, 3}, {1, 2}}, 4);
    m.fill<int32_t>({1, 0, 1, 0, 7, 0});
    TypeParam::sum(Red(a).mask(m).check().into(r));
    EXPECT_EQ(get<T>(r.data()), 1);  // 1 - 1 + 1
    TypeParam::prod(Red(a).mask(m).into(r));
    EXPECT_EQ(get<T>(r.data()), -1);

    Red d1(a), d2(a);
    TypeParam::sum(d1.dim(1).check());
    TypeParam::prod(d2.dim(2).mask(m));
    ASSERT_EQ(d1.res->EXTENT, 2);
    EXPECT_EQ(d1.res->ELSIZE, S);
    EXPECT_EQ(get<T>(d1.res->BASE), 2);
    EXPECT_EQ(get<T>(d1.res->BASE + S), 2);
    ASSERT_EQ(d2.res->EXTENT, 3);
    EXPECT_EQ(get<T>(d2.res->BASE), 1);      // 1 (3 masked out)
    EXPECT_EQ(get<T>(d2.res->BASE + S), 1);  // both masked out: identity
    EXPECT_EQ(get<T>(d2.res->BASE + 2 * S), -1);

    Array e({{1, 0}}, S);
    TypeParam::sum(Red(e).into(r));
    EXPECT_EQ(get<T>(r.data()), 0);
    TypeParam::prod(Red(e).into(r));
    EXPECT_EQ(get<T>(r.data()), 1);
}

TEST(Sum, IntegersWrap) {
    Array a({{1, 2}}, 1);
    a.fill<int8_t>({100, 100});
    Array r(1);
    f90_sumi1(Red(a).into(r));
    EXPECT_EQ(r.at<int8_t>(0), -56);
    Array b({{1, 3}}, 2);
    b.fill<int16_t>({300, 300, 300});  // 27000000 mod 65536
    Array r2(2);
    f90_prodi2(Red(b).into(r2));
    EXPECT_EQ(r2.at<int16_t>(0), static_cast<int16_t>(27000000 & 0xffff));
    Array c({{1, 2}}, 4);
    c.fill<int32_t>({INT32_MAX, 1});
    Array r4(4);
    f90_sumi4(Red(c).into(r4));
    EXPECT_EQ(r4.at<int32_t>(0), INT32_MIN);
}

TEST(Sum, Real4AccumulatesInDouble) {
    Array a({{1, 3}}, 4);
    a.fill<float>({16777216.0f, 1.0f, 1.0f});
    Array r(4);
    f90_sumr4(Red(a).into(r));
    EXPECT_EQ(r.at<float>(0), 16777218.0f);
    Array c({{1, 3}}, 8);  // COMPLEX(8): the same for each part
    fill_raw<float>(c, {16777216.0f, 1.0f, 1.0f, 1.0f, 1.0f, 16777216.0f});
    Array rc(8);
    f90_sumc8(Red(c).into(rc));
    EXPECT_EQ(get<float>(rc.data()), 16777218.0f);
    EXPECT_EQ(get<float>(rc.data() + 4), 16777218.0f);
}

TEST(Sum, ComplexKinds) {
    // (0, 1) * (0, 1) = (-1, 0); sum (0, 2); empty: (0, 0) and (1, 0).
    auto check = [](Fn sum, Fn prod, auto part) {
        using T = decltype(part);
        constexpr int P = std::is_same_v<T, long double> ? 16 : sizeof(T);
        Array a({{1, 2}}, 2 * P);
        for (int i = 0; i < 2; ++i) {  // (0, 1) twice
            put<T>(a.data() + 2 * P * i, 0);
            put<T>(a.data() + 2 * P * i + P, 1);
        }
        Array r(2 * P);
        prod(Red(a).into(r));
        EXPECT_EQ(get<T>(r.data()), -1);
        EXPECT_EQ(get<T>(r.data() + P), 0);
        sum(Red(a).into(r));
        EXPECT_EQ(get<T>(r.data()), 0);
        EXPECT_EQ(get<T>(r.data() + P), 2);
        Array e({{1, 0}}, 2 * P);
        prod(Red(e).into(r));
        EXPECT_EQ(get<T>(r.data()), 1);
        EXPECT_EQ(get<T>(r.data() + P), 0);
        sum(Red(e).into(r));
        EXPECT_EQ(get<T>(r.data()), 0);
    };
    check(f90_sumc8, f90_prodc8, float{});
    check(f90_sumc16, f90_prodc16, double{});
    check(f90_sumc20, f90_prodc20, (long double){});
    check(f90_sumc32, f90_prodc32, __float128{});
}

TEST(Sum, MaskedOutComplexProductDoesNotMultiplyByOne) {
    Array a({{1, 3}}, 16);  // (1e200, 0)^2 overflows to (inf, 0); times (1, 0) would give a NaN
    fill_raw<double>(a, {1e200, 0, 1e200, 0, 5, 5});
    Array m({{1, 3}}, 4);
    m.fill<int32_t>({1, 1, 0});
    Array r(16);
    f90_prodc16(Red(a).mask(m).into(r));
    EXPECT_EQ(get<double>(r.data()), INFINITY);
    EXPECT_EQ(get<double>(r.data() + 8), 0);
}

// Rank 3 with extents around the DIM walk's block of result elements,
// against a naive per-element sum, for each DIM, through a reversed section
// and with an array MASK; library-allocated and caller-supplied results.
TEST(Sum, DimOnRankThreeMatchesNaive) {
    const int n0 = 70, n1 = 3, n2 = 2;
    Array a({{0, n0 - 1}, {-1, n1 - 2}, {1, 2 * n2}}, 8);
    for (int i = 0; i < n0 * n1 * 2 * n2; ++i) a.at<double>(i) = 1.0 / (1 + i % 11) + (i % 5);
    Section s(a, {tri(n0 - 1, 0, -1), tri(-1, n1 - 2), tri(1, 2 * n2, 2)});
    Array m({{1, n0}, {1, n1}, {1, n2}}, 4);
    for (int i = 0; i < n0 * n1 * n2; ++i) m.at<int32_t>(i) = (i * 7) % 3 != 0;
    auto elem = [&](int i, int j, int k) { return a.at<double>((n0 - 1 - i) + n0 * j + n0 * n1 * (2 * k)); };
    const int ext[3] = {n0, n1, n2};
    for (int dim = 1; dim <= 3; ++dim) {
        for (bool masked : {false, true}) {
            Red lib(s);
            lib.dim(dim).check();
            if (masked) lib.mask(m);
            f90_sumr8(lib);
            int o[2], on = 0;
            for (int d = 0; d < 3; ++d)
                if (d != dim - 1) o[on++] = ext[d];
            Array sup({{1, o[0]}, {1, o[1]}}, 8);
            Red given(s);
            given.dim(dim).check().into(sup);
            if (masked) given.mask(m);
            f90_sumr8(given);
            for (int q = 0; q < o[1]; ++q)
                for (int p = 0; p < o[0]; ++p) {
                    double acc = 0;
                    for (int t = 0; t < ext[dim - 1]; ++t) {
                        int sub[3], u = 0;
                        for (int d = 0; d < 3; ++d) sub[d] = d == dim - 1 ? t : (u++ == 0 ? p : q);
                        if (!masked || m.at<int32_t>(sub[0] + n0 * sub[1] + n0 * n1 * sub[2]))
                            acc += elem(sub[0], sub[1], sub[2]);
                    }
                    ASSERT_EQ(lib.at<double>(p + o[0] * q), acc) << dim << masked;
                    ASSERT_EQ(sup.at<double>(p + o[0] * q), acc) << dim << masked;
                }
        }
    }
}

TEST(Sum, ScalarMask) {
    Array a({{1, 2}, {1, 2}}, 4);
    a.fill<int32_t>({1, 2, 3, 4});
    Array f(4), t(4);
    f.at<int32_t>(0) = 0;
    t.at<int32_t>(0) = 5;
    Array r(4);
    f90_sumi4(Red(a).mask(t).into(r));
    EXPECT_EQ(r.at<int32_t>(0), 10);
    f90_prodi4(Red(a).mask(f).into(r));
    EXPECT_EQ(r.at<int32_t>(0), 1);
    Red d(a);
    f90_prodi4(d.dim(1).mask(f));
    EXPECT_EQ(d.at<int32_t>(0), 1);
    EXPECT_EQ(d.at<int32_t>(1), 1);
}

TEST(Sum, DimZeroWithoutCheckFlagIsTheWholeArray) {
    Array a({{1, 2}, {1, 2}}, 4);
    a.fill<int32_t>({1, 2, 3, 4});
    Array r(4);
    f90_sumi4(Red(a).dim(0).into(r));
    EXPECT_EQ(r.at<int32_t>(0), 10);
}

TEST(Sum, ExtentOneWhereZeroIsExpectedPassesTheCheck) {
    Array a({{1, 2}, {1, 0}}, 8);  // 2 x 0: SUM(DIM=1) has extent 0
    Array r({{1, 1}}, 8);
    r.at<double>(0) = 7;
    f90_sumr8(Red(a).dim(1).check().into(r));
    EXPECT_EQ(r.at<double>(0), 7);  // nothing to store
    Array r2({{1, 2}}, 8);          // extent 2 is caught
    EXPECT_DIES_WITH(f90_sumr8(Red(a).dim(1).check().into(r2)), head("SUM") + result_msg("(2)", "(0)"));
}

TEST(SumDeath, Checks) {
    Array a({{1, 2}, {1, 3}}, 4);
    Array r({{1, 4}}, 4);
    Array m({{1, 3}, {1, 2}}, 4);
    EXPECT_DIES_WITH(f90_sumi4(Red(a).dim(3).check().into(r)), head("SUM") + dim_msg(3, 2));
    EXPECT_DIES_WITH(f90_prodr8(Red(a).dim(2).check().into(r)), head("PRODUCT") + result_msg("(4)", "(2)"));
    EXPECT_DIES_WITH(f90_sumi4(Red(a).mask(m).check().into(r)), head("SUM") + mask_msg("(2, 3)", "(3, 2)"));
    Array v({{1, 3}}, 4);
    EXPECT_DIES_WITH(f90_sumi4(Red(v).dim(2).check().into(r)), head("SUM") + dim_msg(2, 1));
}

TEST(Sum, ChecksNeedTheFlag) {
    Array a({{1, 2}, {1, 3}}, 4);
    a.fill<int32_t>({1, 2, 3, 4, 5, 6});
    Array r({{1, 4}}, 4);
    Array m({{1, 3}, {1, 2}}, 4);
    m.fill<int32_t>({1, 1, 1, 1, 1, 1});
    f90_sumi4(Red(a).dim(2).into(r));
    EXPECT_EQ(r.at<int32_t>(0), 9);
    EXPECT_EQ(r.at<int32_t>(1), 12);
    Array s(4);
    f90_sumi4(Red(a).mask(m).into(s));
    EXPECT_EQ(s.at<int32_t>(0), 21);
}

// Every DIM reduction over a section that is empty along DIM and reversed
// along the others (BASE and ZERO null; MASK alike) stores what it stores for
// an empty array that has storage.
struct DimEntry {
    Fn fn;
    int32_t size, result_size;
    bool masks;
};
#define RED_ROW(name, E, rsize, masks) {name, static_cast<int32_t>(intrins::Kind<E>::size), rsize, masks},
#define SUM_ROWS(sfx, E) RED_ROW(f90_sum##sfx, E, intrins::Kind<E>::size, true) \
    RED_ROW(f90_prod##sfx, E, intrins::Kind<E>::size, true)
#define ORDERED_ROWS(sfx, E) RED_ROW(f90_maxval##sfx, E, intrins::Kind<E>::size, true) \
    RED_ROW(f90_minval##sfx, E, intrins::Kind<E>::size, true) RED_ROW(f90_maxloc##sfx, E, 4, true) \
    RED_ROW(f90_minloc##sfx, E, 4, true)
#define KLOC_ROWS(sfx, E) RED_ROW(f90_kmaxloc##sfx, E, 8, true) RED_ROW(f90_kminloc##sfx, E, 8, true)
#define LOGICAL_ROWS(k, L) RED_ROW(f90_all##k, L, k, false) RED_ROW(f90_any##k, L, k, false) \
    RED_ROW(f90_count##k, L, 4, false) RED_ROW(f90_kcount##k, L, 8, false)
const DimEntry kDimEntries[] = {REDUCE_SUM_KINDS(SUM_ROWS) REDUCE_ORDERED_KINDS(ORDERED_ROWS)
                                    REDUCE_KLOC_KINDS(KLOC_ROWS) REDUCE_LOGICAL_KINDS(LOGICAL_ROWS)};

TEST(DimReductions, EmptySectionsWithNullBase) {
    for (const DimEntry& e : kDimEntries) {
        Array a({{1, 3}, {1, 2}, {1, 4}}, e.size), m({{1, 3}, {1, 2}, {1, 4}}, 4);
        Array ref({{1, 3}, {1, 0}, {1, 4}}, e.size), mref({{1, 3}, {1, 0}, {1, 4}}, 4);
        Array got({{1, 3}, {1, 4}}, e.result_size), want({{1, 3}, {1, 4}}, e.result_size);
        Section s(a, {tri(3, 1, -1), tri(2, 1), tri(4, 1, -1)}), ms(m, {tri(3, 1, -1), tri(2, 1), tri(4, 1, -1)});
        ASSERT_EQ(s.desc()->BASE, nullptr);
        Red g(s), w(ref);
        g.dim(2).check().into(got);
        w.dim(2).check().into(want);
        if (e.masks) g.mask(ms), w.mask(mref);
        e.fn(g);
        e.fn(w);
        EXPECT_EQ(std::memcmp(got.data(), want.data(), 12 * std::size_t(e.result_size)), 0) << e.size;
    }
}

}  // namespace
}  // namespace rtest
