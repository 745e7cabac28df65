// MATMUL of all sixteen kinds against the naive reference (reference.h), bit
// for bit, over randomized layouts: matrix x matrix, vector x matrix and
// matrix x vector, sizes around every block edge and wider than one packed B
// block, operands with lower bounds other than 1, strided, reversed and
// an ELSIZE unlike the kind's size, supplied result
// sections whose other bytes must survive; REAL(10) values of every class.
// Then the instruction-set variants of the tiled engines, the x87
// precision-control case, and the diagnostics.
#include <tuple>

#include "matmul/engines.h"
#include "reference.h"
#include "support/arrays.h"
#include "support/messages.h"

namespace intrins::mm {
extern const EngineTable table_avx512, table_avx2, table_base;
}

namespace {

using namespace mmref;
using namespace testutil;
using Fn = void (*)(ArgList*);

template <class T>
class MatmulKinds : public ::testing::Test {};
// clang-format off
using Kinds = ::testing::Types<
    Ty<int8_t, int8_t, Fam::Int, 1, 128, 1536, f90_matmuli1>, Ty<int16_t, int16_t, Fam::Int, 2, 64, 512, f90_matmuli2>,
    Ty<int32_t, int32_t, Fam::Int, 4, 64, 256, f90_matmuli4>, Ty<int64_t, int64_t, Fam::Int, 8, 64, 256, f90_matmuli8>,
    Ty<int8_t, int8_t, Fam::Log, 1, 1, 1, f90_matmull1>, Ty<int16_t, int16_t, Fam::Log, 2, 1, 1, f90_matmull2>,
    Ty<int32_t, int32_t, Fam::Log, 4, 1, 1, f90_matmull4>, Ty<int64_t, int64_t, Fam::Log, 8, 1, 1, f90_matmull8>,
    Ty<float, double, Fam::Real, 4, 64, 512, f90_matmulr4>, Ty<double, double, Fam::Real, 8, 64, 256, f90_matmulr8>,
    Ty<long double, long double, Fam::Real, 16, 32, 128, f90_matmulr10>,
    Ty<__float128, __float128, Fam::Real, 16, 32, 128, f90_matmulr16>,
    Ty<float, double, Fam::Cplx, 4, 32, 256, f90_matmulc8>, Ty<double, double, Fam::Cplx, 8, 32, 128, f90_matmulc16>,
    Ty<long double, long double, Fam::Cplx, 16, 32, 128, f90_matmulc20>,
    Ty<__float128, __float128, Fam::Cplx, 16, 32, 128, f90_matmulc32>>;
// clang-format on
TYPED_TEST_SUITE(MatmulKinds, Kinds);
using R10 = Ty<long double, long double, Fam::Real, 16, 32, 128, f90_matmulr10>;
using C20 = Ty<long double, long double, Fam::Cplx, 16, 32, 128, f90_matmulc20>;

enum Form { MxM, VxM, MxV };

// One product through the driver, every element against the reference.
// edge: REAL(10) parts take an edge value 1 in `edge` times.
template <class T>
void product(std::mt19937_64& rng, Form form, int M, int N, int K, int edge = 0) {
    auto ext = [](std::initializer_list<int32_t> e) { return std::vector<int32_t>(e); };
    Array a = random_array(rng, form == VxM ? ext({K}) : ext({M, K}), T::size, false);
    Array b = random_array(rng, form == MxV ? ext({K}) : ext({K, N}), T::size, false);
    Mat pa(form == VxM ? 1 : M, K, T::size), pb(K, form == MxV ? 1 : N, T::size);
    for (int64_t n = 0; n < a.size(); ++n) El<T>::random(a.elem(n), rng, edge), std::memcpy(pa.v.data() + n * T::size, a.elem(n), T::size);
    for (int64_t n = 0; n < b.size(); ++n) El<T>::random(b.elem(n), rng, edge), std::memcpy(pb.v.data() + n * T::size, b.elem(n), T::size);
    if (rng() % 4 == 0)  // not read: the kind fixes the element size
        a.desc()->ELSIZE = b.desc()->ELSIZE = T::value_bytes < T::part ? T::value_bytes : 2 * T::size;
    Mat want(form == VxM ? 1 : M, form == MxV ? 1 : N, T::size);
    const int kb = form == MxM ? T::kblk : T::chunk, split = form == VxM ? 4 : 2;
    reference<T>(pa, pb, want, T::fam == Fam::Log ? 1 : kb, split);

    const bool supply = rng() % 2;
    Array r = random_array(rng, form == MxM ? ext({M, N}) : ext({form == VxM ? N : M}), T::size, false);
    Desc own;
    Args args;
    args.addr(0, own.get()).addr(1, a.desc()).addr(2, b.desc()).check(rng() % 2);
    if (supply) args.result(r.desc());
    T::run(args);
    const std::string say = ::testing::PrintToString(std::tuple{form, M, N, K}) + " A " + a.str() + " B " + b.str() +
                            (supply ? " result " + r.str() : "");
    ArrDesc& rd = supply ? *r.desc() : *own.get();
    if (!supply) {
        ASSERT_EQ(rd.ELSIZE, T::size) << say;
    }
    const std::vector<char*> got = elements(rd);
    ASSERT_EQ(got.size(), std::size_t(want.rows) * want.cols) << say;
    for (std::size_t n = 0; n < got.size(); ++n)
        ASSERT_TRUE(El<T>::same(got[n], want.v.data() + n * T::size)) << "element " << n << " " << say;
    EXPECT_TRUE(!supply || r.guard_intact()) << say;
}

TYPED_TEST(MatmulKinds, AgainstTheReference) {
    std::mt19937_64 rng(1);
    const int small[] = {0, 1, 3, 4, 7, 8, 13};
    for (int M : small)
        for (int N : small)
            for (int K : small) product<TypeParam>(rng, MxM, M, N, K);
    for (auto [M, N, K] : {std::tuple{63, 64, 65}, {65, 63, 64}, {127, 13, 129}, {129, 7, 63}, {13, 129, 33},
                           {8, 3, 200}, {33, 97, 31}, {50, 49, 48}, {7, 1100, 20}, {3, 700, 70}})
        product<TypeParam>(rng, MxM, M, N, K);  // the last two: more than one packed B block
    for (int K : {0, 1, 3, 4, 7, 8, 13, 63, 64, 65, 127, 128, 129, 255, 256, 257, 515, 1539})
        product<TypeParam>(rng, VxM, 1, 7, K), product<TypeParam>(rng, MxV, 13, 1, K);
    for (int n : {0, 1, 4, 5, 17, 65}) product<TypeParam>(rng, VxM, 1, n, 70), product<TypeParam>(rng, MxV, n, 1, 70);
}

// REAL(10) values of every class, sparse (some blocks cannot be packed) and
// dense (splittable edges: every block packs).
TEST(MatmulExtended, EveryClassOfValue) {
    std::mt19937_64 rng(7);
    for (int edge : {50, 400, 3}) {
        product<R10>(rng, MxM, 37, 70, 99, edge), product<C20>(rng, MxM, 16, 130, 64, edge);
        product<R10>(rng, MxV, 24, 1, 70, edge), product<C20>(rng, VxM, 1, 33, 40, edge);
    }
}

// With the x87 precision control at 53 bits, every product and sum of the
// reference rounds to 53 bits: on splittable operands built from their
// fields the library's results must still be those of the operands as stored.
TEST(MatmulExtended, NarrowPrecisionControl) {
    const std::vector<long double> e = edges80(true);
    std::mt19937_64 rng(31);
    for (auto [M, N, K] : {std::tuple{24, 20, 70}, {12, 9, 40}}) {
        Array a({{1, M}, {1, K}}, 16), b({{1, K}, {1, N}}, 16), c({{1, M}, {1, N}}, 16);
        Mat pa(M, K, 16), pb(K, N, 16), want(M, N, 16);
        for (int64_t n = 0; n < a.size(); ++n) El<R10>::set(pa.v.data() + 16 * n, 0, e[rng() % e.size()]);
        for (int64_t n = 0; n < b.size(); ++n) El<R10>::set(pb.v.data() + 16 * n, 0, e[rng() % e.size()]);
        std::memcpy(a.data(), pa.v.data(), 16 * a.size()), std::memcpy(b.data(), pb.v.data(), 16 * b.size());
        uint16_t saved, narrow;
        asm volatile("fnstcw %0" : "=m"(saved));
        narrow = uint16_t((saved & ~0x300u) | 0x200u);
        asm volatile("fldcw %0" : : "m"(narrow));
        reference<R10>(pa, pb, want, R10::kblk, 2);
        f90_matmulr10(Args().result(c.desc()).addr(1, a.desc()).addr(2, b.desc()));
        asm volatile("fldcw %0" : : "m"(saved));
        for (int64_t n = 0; n < c.size(); ++n) ASSERT_TRUE(El<R10>::same(c.elem(n), want.v.data() + 16 * n)) << n;
    }
}

// Every instruction-set variant of the tiled engines this processor runs
// against the blocked engines (held to the reference above): packed and
// unpacked paths, strides and tile edges.
template <class T>
class TiledTables : public ::testing::Test {};
using Native = ::testing::Types<intrins::mm::Int1, intrins::mm::Int2, intrins::mm::Int4, intrins::mm::Int8,
                                intrins::mm::Real4, intrins::mm::Real8, intrins::mm::Complex8, intrins::mm::Complex16>;
TYPED_TEST_SUITE(TiledTables, Native);
TYPED_TEST(TiledTables, MatchBlockedEngines) {
    using namespace intrins::mm;
    using T = TypeParam;
    const EngineSet EngineTable::*member = nullptr;
#define X(tag, ...) \
    if constexpr (std::is_same_v<T, tag>) member = &EngineTable::tag;
    MM_NATIVE_TYPES(X)
#undef X
    constexpr int size = MmType<T>::size;
    constexpr bool fp = MmType<T>::family != Family::Integer;
    std::mt19937_64 rng(11);
    auto bytes = [&](std::size_t n) {
        std::vector<char> v(n * size);
        for (std::size_t i = 0; i < v.size(); i += fp ? size / (MmType<T>::family == Family::Complex ? 2 : 1) : 1) {
            if (!fp) v[i] = static_cast<char>(rng());
            else if (size == 4 || (size == 8 && MmType<T>::family == Family::Complex)) *reinterpret_cast<float*>(&v[i]) = std::ldexp(float(rng() % 2001) - 1000, int(rng() % 13) - 16);
            else *reinterpret_cast<double*>(&v[i]) = std::ldexp(double(rng() % 2001) - 1000, int(rng() % 13) - 16);
        }
        return v;
    };
    const std::tuple<int, int, int, int, int, int> shapes[] = {
        {1, 1, 1, 1, 1, 1},     {5, 3, 2, 1, 1, 1},     {17, 13, 31, 1, 1, 1},  {40, 29, 70, 1, 1, 1},
        {33, 14, 130, 2, 1, 1}, {100, 27, 97, 1, 2, 1}, {70, 101, 65, 1, 1, 2}, {129, 98, 200, 1, 1, 1},
        {48, 48, 48, 1, 1, 1},  {9, 40, 0, 1, 1, 1},    {70, 37, 77, 1, 1, 1},  {64, 26, 150, 1, 1, 2}};
    __builtin_cpu_init();
    const bool has[] = {__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                            __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"),
                        __builtin_cpu_supports("avx2") != 0, true};
    const EngineTable* tables[] = {&table_avx512, &table_avx2, &table_base};
    for (int t = 0; t < 3; ++t) {
        if (!has[t]) continue;
        const EngineSet& e = tables[t]->*member;
        for (auto [M, N, K, fa, fb, fc] : shapes) {
            SCOPED_TRACE(::testing::Message() << t << ": " << M << "x" << N << "x" << K << " " << fa << fb << fc);
            const int lda = M * fa + 1, ldb = K * fb + 3, ldc = M * fc + 2;
            auto A = bytes(std::size_t(lda) * (K + 1)), B = bytes(std::size_t(ldb) * N + 1), C0 = bytes(std::size_t(ldc) * N);
            auto want = C0, got = C0;
            Blocked<T>::engine2x2(M, N, K, A.data(), fa, lda, B.data(), fb, ldb, want.data(), fc, ldc);
            e.mm(M, N, K, A.data(), fa, lda, B.data(), fb, ldb, got.data(), fc, ldc);
            EXPECT_TRUE(want == got) << "matrix x matrix";
            want = got = C0;
            Blocked<T>::engine2x1(M, K, A.data(), fa, lda, B.data(), fb, want.data(), fc);
            e.mv(M, K, A.data(), fa, lda, B.data(), fb, got.data(), fc);
            EXPECT_TRUE(want == got) << "matrix x vector";
            want = got = C0;
            Blocked<T>::engine1x2(N, K, A.data(), lda, B.data(), fb, ldb, want.data(), fc);
            e.vm(N, K, A.data(), lda, B.data(), fb, ldb, got.data(), fc);
            EXPECT_TRUE(want == got) << "vector x matrix";
        }
    }
}

// Ranks are checked always; K against B's first extent and the result's
// extents only under the check flag; without it a larger result gets its
// leading part.
TEST(MatmulDeath, Diagnostics) {
    using namespace msg;
    auto call = [](Fn f, std::vector<std::vector<Dim>> ops, int result, bool check) {
        std::vector<Array> arr;
        for (auto& d : ops) arr.emplace_back(d, 16);
        Desc own;
        Args args;
        args.addr(0, own.get()).addr(1, arr[0].desc()).addr(2, arr[1].desc()).check(check);
        if (result) args.result(arr[2].desc());
        f(args);
    };
    const std::vector<Dim> v3 = {{1, 3}}, m33 = {{1, 3}, {1, 3}}, t = {{1, 3}, {1, 3}, {1, 2}}, s = {};
    const std::vector<Dim> a46 = {{1, 4}, {0, 6}}, b52 = {{1, 5}, {1, 2}}, v5 = {{2, 5}}, m42 = {{0, 4}, {1, 2}};
    const std::string rank = of("MATMUL", kRank2);
    EXPECT_DIES_WITH(call(f90_matmulr8, {v3, v3}, 0, false), rank);
    EXPECT_DIES_WITH(call(f90_matmuli4, {m33, t}, 0, false), rank);
    EXPECT_DIES_WITH(call(f90_matmull1, {t, m33}, 0, true), rank);
    EXPECT_DIES_WITH(call(f90_matmulc16, {s, m33}, 0, false), rank);
    EXPECT_DIES_WITH(call(f90_matmulr16, {m33, s}, 0, false), rank);
    EXPECT_DIES_WITH(call(f90_matmulr8, {a46, b52}, 0, true), of("MATMUL", kInner, {"6", "5"}));
    EXPECT_DIES_WITH(call(f90_matmulr8, {a46, v5}, 0, true), of("MATMUL", kInner, {"6", "5"}));
    EXPECT_DIES_WITH(call(f90_matmuli4, {{{1, 7}}, b52}, 0, true), of("MATMUL", kInner, {"7", "5"}));
    EXPECT_DIES_WITH(call(f90_matmulr8, {{{1, 3}, {1, 5}}, b52, m33}, 1, true), of("MATMUL", kResultShape, {"(3, 3)", "(3, 2)"}));
    EXPECT_DIES_WITH(call(f90_matmulc8, {{{1, 3}, {1, 5}}, b52, m42}, 1, true), of("MATMUL", kResultShape, {"(4, 2)", "(3, 2)"}));
    EXPECT_DIES_WITH(call(f90_matmull4, {{{1, 5}}, b52, {{1, 5}}}, 1, true), of("MATMUL", kResultShape, {"(5)", "(2)"}));
    EXPECT_DIES_WITH(call(f90_matmulr10, {m33, v3, {{1, 5}}}, 1, true), of("MATMUL", kResultShape, {"(5)", "(3)"}));
    Array a({{1, 2}, {1, 1}}, 8), b({{1, 1}, {1, 1}}, 8), r({{1, 3}, {1, 3}}, 8);
    a.fill<double>({2.0, 3.0}), b.fill<double>({5.0}), r.fill<double>({-1, -1, -1});
    f90_matmulr8(Args().result(r.desc()).addr(1, a.desc()).addr(2, b.desc()));
    EXPECT_EQ(r.at<double>(0), 10.0);
    EXPECT_EQ(r.at<double>(1), 15.0);
    EXPECT_EQ(r.at<double>(2), -1.0);
}

}  // namespace
