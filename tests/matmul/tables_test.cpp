// Every instruction-set variant of the tiled engines (the one this processor
// runs and the others it could run) against the blocked engines, which the
// driver tests hold to the naive reference: bit-identical results for every
// native type, over packed and unpacked paths, strides and tile edges.
#include <random>
#include <tuple>

#include "matmul/engines.h"
#include "support/arrays.h"

namespace intrins::mm {
extern const EngineTable table_avx512, table_avx2, table_base;
}

namespace {

using namespace intrins::mm;

template <class T>
class TiledTables : public ::testing::Test {};
using Native = ::testing::Types<Int1, Int2, Int4, Int8, Real4, Real8, Complex8, Complex16>;
TYPED_TEST_SUITE(TiledTables, Native);

template <class T>
std::vector<char> random_bytes(std::size_t n, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::vector<char> v(n * MmType<T>::size);
    constexpr bool fp = MmType<T>::family != Family::Integer;
    if constexpr (fp) {
        constexpr std::size_t part = MmType<T>::size / (MmType<T>::family == Family::Complex ? 2 : 1);
        using P = std::conditional_t<part == 4, float, double>;
        std::uniform_real_distribution<double> u(-1, 1);
        for (std::size_t i = 0; i < v.size() / sizeof(P); ++i) {
            P x = static_cast<P>(std::ldexp(u(rng), int(rng() % 13) - 6));
            std::memcpy(v.data() + i * sizeof(P), &x, sizeof x);
        }
    } else {
        for (auto& b : v) b = static_cast<char>(rng());
    }
    return v;
}

bool cpu_has(const EngineTable* t) {
    __builtin_cpu_init();
    if (t == &table_avx512)
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
               __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
    if (t == &table_avx2) return __builtin_cpu_supports("avx2");
    return true;
}

TYPED_TEST(TiledTables, MatchBlockedEngines) {
    using T = TypeParam;
    const EngineSet EngineTable::*member = nullptr;
#define X(tag, ...) if constexpr (std::is_same_v<T, tag>) member = &EngineTable::tag;
    MM_NATIVE_TYPES(X)
#undef X
    // (M, N, K, A row stride factor, B k stride factor, C row stride factor)
    const std::tuple<int, int, int, int, int, int> shapes[] = {
        {1, 1, 1, 1, 1, 1},     {5, 3, 2, 1, 1, 1},   {17, 13, 31, 1, 1, 1}, {40, 29, 70, 1, 1, 1},
        {33, 14, 130, 2, 1, 1}, {100, 27, 97, 1, 2, 1}, {70, 101, 65, 1, 1, 2}, {129, 98, 200, 1, 1, 1},
        {48, 48, 48, 1, 1, 1},  {9, 40, 0, 1, 1, 1},   {70, 37, 77, 1, 1, 1},  {64, 26, 150, 1, 1, 2}};
    uint64_t seed = 11;
    for (const EngineTable* t : {&table_avx512, &table_avx2, &table_base}) {
        if (!cpu_has(t)) continue;
        const EngineSet& e = t->*member;
        for (auto [M, N, K, fa, fb, fc] : shapes) {
            SCOPED_TRACE(::testing::Message() << M << "x" << N << "x" << K << " strides " << fa << fb << fc);
            const int lda = M * fa + 1, ldb = K * fb + 3, ldc = M * fc + 2;
            auto A = random_bytes<T>(std::size_t(lda) * (K + 1), seed++);
            auto B = random_bytes<T>(std::size_t(ldb) * N + 1, seed++);
            auto C0 = random_bytes<T>(std::size_t(ldc) * N, seed++);
            auto want = C0, got = C0;
            Blocked<T>::engine2x2(M, N, K, A.data(), fa, lda, B.data(), fb, ldb, want.data(), fc, ldc);
            e.mm(M, N, K, A.data(), fa, lda, B.data(), fb, ldb, got.data(), fc, ldc);
            EXPECT_TRUE(want == got) << "matrix x matrix";
            // Matrix x vector down the first column of B, vector x matrix with A's first row.
            auto wv = C0, gv = C0;
            Blocked<T>::engine2x1(M, K, A.data(), fa, lda, B.data(), fb, wv.data(), fc);
            e.mv(M, K, A.data(), fa, lda, B.data(), fb, gv.data(), fc);
            EXPECT_TRUE(wv == gv) << "matrix x vector";
            wv = C0, gv = C0;
            Blocked<T>::engine1x2(N, K, A.data(), lda, B.data(), fb, ldb, wv.data(), fc);
            e.vm(N, K, A.data(), lda, B.data(), fb, ldb, gv.data(), fc);
            EXPECT_TRUE(wv == gv) << "vector x matrix";
        }
    }
}

}  // namespace
