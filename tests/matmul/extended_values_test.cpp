// REAL(10) and COMPLEX(20) MATMUL with values of every class of the 80-bit
// format: the packed blocks that hold such values take another path, and
// every result element must still match the reference bit for bit.
#include <cmath>
#include <cstring>
#include <random>

#include "reference.h"
#include "support/arrays.h"

namespace {

using mmref::El;
using mmref::Fam;
using mmref::Mat;
using testutil::Args;
using testutil::Array;
using R10 = mmref::Ty<long double, long double, Fam::Real, 16, 32, 128, f90_matmulr10, 0>;
using C20 = mmref::Ty<long double, long double, Fam::Cplx, 16, 32, 128, f90_matmulc20, 0>;

// An 80-bit value from its fields.
long double bits80(uint16_t sign_exp, uint64_t mant) {
    unsigned char raw[sizeof(long double)] = {};
    std::memcpy(raw, &mant, 8);
    std::memcpy(raw + 8, &sign_exp, 2);
    long double v;
    std::memcpy(&v, raw, sizeof v);
    return v;
}

// Values around the edges of what a pair of doubles holds exactly (binary
// exponents up to +-1000 split, beyond not), and the special classes.
std::vector<long double> edge_values(bool splittable_only) {
    const uint64_t top = 1ull << 63, odd = top | 0x5a5a5a5a5a5a5a5bull;
    std::vector<long double> v = {0.0L, -0.0L};
    for (int e : {-1000, -999, 999, 1000})
        for (uint64_t m : {top, odd, ~uint64_t(0)})
            for (uint16_t sign : {0, 0x8000}) v.push_back(bits80(uint16_t(sign | (16383 + e)), m));
    std::mt19937_64 r(5);  // full 64-bit significands of moderate size
    for (int n = 0; n < 24; ++n) v.push_back(bits80(uint16_t((r() & 0x8000) | (16382 + r() % 3)), r() | top));
    if (splittable_only) return v;
    for (int e : {-1001, 1001, -16382, 16383})
        for (uint64_t m : {top, odd, ~uint64_t(0)}) v.push_back(bits80(uint16_t(16383 + e), m));
    v.push_back(bits80(0x0000, 0x0000000000001234ull));        // subnormal
    v.push_back(bits80(0x8000, top | 5));                       // pseudo-subnormal
    v.push_back(bits80(0x3fff, 0x4000000000000000ull));        // unnormal
    v.push_back(bits80(0x7fff, top));                           // infinity
    v.push_back(bits80(0xffff, top));                           // -infinity
    v.push_back(bits80(0x7fff, top | 0x4000000000000123ull));  // quiet NaN with a payload
    v.push_back(bits80(0xffff, top | 0x0000000000000777ull));  // signalling NaN
    return v;
}

// MATMUL of m x k by k x n through the driver, compared with the reference.
// place(rng, is_b, i, j) decides which parts get an edge value.
template <class T, class Place>
void check(int M, int N, int K, uint64_t seed, bool splittable_only, Place place) {
    SCOPED_TRACE(::testing::Message() << "M " << M << " N " << N << " K " << K << " seed " << seed);
    std::mt19937_64 rng(seed);
    const auto edges = edge_values(splittable_only);
    auto fill = [&](Array& arr, Mat& plain, int rows, int cols, bool is_b) {
        for (int j = 0; j < cols; ++j)
            for (int i = 0; i < rows; ++i) {
                char* p = plain.at(i, j);
                El<T>::random(p, rng);
                for (int q = 0; q < T::parts; ++q)
                    if (place(rng, is_b, i, j)) El<T>::set(p, q, edges[rng() % edges.size()]);
                std::memcpy(arr.data() + (std::size_t(j) * rows + i) * T::size, p, T::size);
            }
    };
    Array a({{1, M}, {1, K}}, T::size), b({{1, K}, {1, N}}, T::size), c({{1, M}, {1, N}}, T::size);
    Mat pa(M, K, T::size), pb(K, N, T::size), want(M, N, T::size);
    fill(a, pa, M, K, false);
    fill(b, pb, K, N, true);
    std::memset(c.data(), 0x7f, std::size_t(M) * N * T::size);
    mmref::reference<T>(pa, pb, want, T::kblk, 2);
    Args args;
    args.presence(F90_PRESENT_RESULT).addr(0, c.desc()).addr(1, a.desc()).addr(2, b.desc());
    T::run(args.get());
    int bad = 0;
    for (int j = 0; j < N; ++j)
        for (int i = 0; i < M; ++i)
            if (!El<T>::same(c.data() + (std::size_t(j) * M + i) * T::size, want.at(i, j)) && ++bad <= 3)
                ADD_FAILURE() << "element (" << i << ", " << j << ") differs";
    EXPECT_EQ(bad, 0);
}

template <class T>
void every_placement() {
    uint64_t seed = 7;
    // Sparse edge values anywhere: some blocks of A and B cannot be packed.
    for (int rate : {50, 400})
        check<T>(37, 70, 99, seed++, false, [rate](std::mt19937_64& r, bool, int, int) { return r() % rate == 0; });
    // Only in B's second column block: the first stays on the packed path.
    check<T>(16, 130, 64, seed++, false,
             [](std::mt19937_64& r, bool is_b, int, int j) { return is_b && j >= 64 && r() % 9 == 0; });
    // Only in one row of A: that panel falls back, the others stay packed.
    check<T>(24, 9, 70, seed++, false,
             [](std::mt19937_64& r, bool is_b, int i, int) { return !is_b && i == 10 && r() % 3 == 0; });
    // Dense splittable edges (signed zeros, exponents +-999 and +-1000):
    // every block packs, and products reach the far ends of the range.
    for (int n : {8, 33})
        check<T>(n, n, 40, seed++, true, [](std::mt19937_64& r, bool, int, int) { return r() % 3 == 0; });
}

// With the x87 precision control at 53 bits, every product and sum rounds
// to 53 bits: the results must still be those of the operands as stored.
TEST(MatmulExtendedValues, NarrowPrecisionControl) {
    uint16_t saved;
    asm volatile("fnstcw %0" : "=m"(saved));
    const uint16_t narrow = uint16_t((saved & ~0x300u) | 0x200u);
    asm volatile("fldcw %0" : : "m"(narrow));
    // Operands with full 64-bit significands, built from their fields (the
    // random fill would be computed at the narrow precision too).
    auto all = [](std::mt19937_64&, bool, int, int) { return true; };
    check<R10>(24, 20, 70, 31, true, all);
    check<C20>(12, 9, 40, 32, true, all);
    asm volatile("fldcw %0" : : "m"(saved));
}

TEST(MatmulExtendedValues, Real10EveryClassOfValue) { every_placement<R10>(); }
TEST(MatmulExtendedValues, Complex20EveryClassOfValue) { every_placement<C20>(); }

}  // namespace
