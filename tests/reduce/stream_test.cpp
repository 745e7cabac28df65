// Long contiguous runs read as several far-apart streams after a head
// peeled up to a cache-line boundary: every element must be seen exactly
// once whatever the length (around the length where streaming starts, with
// tails of every size) and wherever the data starts (element offsets that
// change the head, and addresses not aligned to the element size).
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "reduce/simd.h"
#include "reduce_support.h"

namespace rtest {
namespace {

// A rank-1 operand of n elements over caller storage at any byte address.
struct Raw {
    Desc d;
    Raw(char* base, int32_t n, int32_t elsize) {
        d->BASE = base;
        d->ZERO = base - elsize;
        d->RANK = 1;
        d->EXTENT = n;
        d->ELSIZE = d->SCALEFACTOR = elsize;
        d->DIM[0] = {1, n, 1};
    }
};

template <class T>
T scalar(void (*fn)(ArgList*), Raw& a) {
    Array r(static_cast<int32_t>(sizeof(T)));
    fn(Red(a.d).into(r));
    T v;
    std::memcpy(&v, r.data(), sizeof v);
    return v;
}
int32_t location(void (*fn)(ArgList*), Raw& a) {
    Red l(a.d.get());
    fn(l);
    return l.at<int32_t>(0);
}

template <class T>
void put(char* p, int64_t i, T v) {
    std::memcpy(p + i * static_cast<int64_t>(sizeof(T)), &v, sizeof v);
}

// Streaming starts at 1 MiB of data: 2^18 four-byte or 2^17 eight-byte
// elements.  Lengths straddle it and leave tails of 1 .. several vectors.
const int32_t kLengths[] = {(1 << 18) - 1, 1 << 18, (1 << 18) + 1, (1 << 18) + 127, (1 << 17) - 3,
                            (1 << 17) + 61, 300007};
// Byte offsets of the first element from a 64-byte boundary.
const int kOffsets[] = {0, 4, 8, 24, 56, 1, 3};

TEST(Streams, IntegerSumsAndCounts) {
    std::mt19937 rng(21);
    std::vector<char> store((int64_t{300007} + 32) * 8 + 128);
    char* line = store.data() + (64 - reinterpret_cast<std::uintptr_t>(store.data()) % 64);
    for (int32_t n : kLengths)
        for (int off : kOffsets) {
            char* p = line + off;
            uint32_t s4 = 0, c4 = 0, c8 = 0;
            for (int64_t i = 0; i < n; ++i) {
                uint32_t x = static_cast<uint32_t>(rng());
                put<uint32_t>(p, i, x % 3 == 0 ? 0 : x);
                s4 += x % 3 == 0 ? 0 : x;
                c4 += x % 3 != 0;
            }
            Raw a4(p, n, 4);
            EXPECT_EQ(scalar<uint32_t>(f90_sumi4, a4), s4) << n << " +" << off;
            EXPECT_EQ(scalar<uint32_t>(f90_count4, a4), c4) << n << " +" << off;
            uint64_t s8 = 0;
            for (int64_t i = 0; i < n; ++i) {
                uint64_t y = i % 5 == 1 ? 0 : (uint64_t{rng()} << 32 | rng());
                put<uint64_t>(p, i, y);
                s8 += y;
                c8 += y != 0;
            }
            Raw a8(p, n, 8);
            EXPECT_EQ(scalar<uint64_t>(f90_sumi8, a8), s8) << n << " +" << off;
            EXPECT_EQ(scalar<uint32_t>(f90_count8, a8), c8) << n << " +" << off;
        }
}

// One extreme planted at places that fall in the head, at the quarters (the
// middle one is where the two streams meet), and in the tail.
std::vector<int64_t> spots(int32_t n) {
    std::vector<int64_t> s = {0, 1, 15, n - 1, n - 2, n - 17};
    for (int q = 1; q < 4; ++q)
        for (int64_t d : {-9, -1, 0, 1, 8}) s.push_back(int64_t{n} * q / 4 + d);
    return s;
}

TEST(Streams, ExtremesAndLocations) {
    std::mt19937 rng(22);
    std::vector<char> store((int64_t{300007} + 32) * 8 + 128);
    char* line = store.data() + (64 - reinterpret_cast<std::uintptr_t>(store.data()) % 64);
    for (int32_t n : {(1 << 17) + 61, (1 << 18) + 127}) {
        for (int off : {0, 8, 40, 3}) {
            char* p = line + off;
            Raw a4(p, n, 4), a8(p, n, 8);
            for (int64_t at : spots(n)) {
                for (int64_t i = 0; i < n; ++i) put<int32_t>(p, i, static_cast<int32_t>(rng() % 2001) - 1000);
                put<int32_t>(p, at, 5000);
                put<int32_t>(p, (at + n / 3) % n, -5000);
                EXPECT_EQ(scalar<int32_t>(f90_maxvali4, a4), 5000) << n << " +" << off << " @" << at;
                EXPECT_EQ(scalar<int32_t>(f90_minvali4, a4), -5000) << n << " +" << off << " @" << at;
                EXPECT_EQ(location(f90_maxloci4, a4), at + 1) << n << " +" << off;

                for (int64_t i = 0; i < n; ++i) put<double>(p, i, static_cast<double>(rng() % 100000) / 64 - 700);
                put<double>(p, at, 2000.5);
                put<double>(p, (at + n / 3) % n, -2000.25);
                EXPECT_EQ(scalar<double>(f90_maxvalr8, a8), 2000.5) << n << " +" << off << " @" << at;
                EXPECT_EQ(scalar<double>(f90_minvalr8, a8), -2000.25) << n << " +" << off << " @" << at;
                // A NaN elsewhere: against the ordered definition (first
                // element, then last to second; MAXVAL never takes a NaN,
                // MINVAL takes it and the next element may replace it).
                put<double>(p, (at + n / 2) % n, std::numeric_limits<double>::quiet_NaN());
                double mx, mn;
                std::memcpy(&mx, p, 8);
                mn = mx;
                for (int64_t i = n - 1; i >= 1; --i) {
                    double x;
                    std::memcpy(&x, p + i * 8, 8);
                    if (x > mx) mx = x;
                    if (!(x >= mn)) mn = x;
                }
                EXPECT_EQ(bits_of(scalar<double>(f90_maxvalr8, a8)), bits_of(mx)) << n << " +" << off << " @" << at;
                EXPECT_EQ(bits_of(scalar<double>(f90_minvalr8, a8)), bits_of(mn)) << n << " +" << off << " @" << at;
            }
        }
    }
}

// The entry points run the widest vectors the processor has; here every
// narrower width it can run is checked as well, on the kernels themselves:
// extremes with and without NaNs, counts and wrapping sums and products,
// against plain loops, over lengths that stream or not and odd offsets.
template <class T>
std::vector<T> values(std::mt19937_64& rng, int64_t n) {
    std::vector<T> v(static_cast<size_t>(n));
    for (auto& x : v) {
        if constexpr (std::is_floating_point_v<T>) x = static_cast<T>(static_cast<int64_t>(rng() % 20001) - 10000) / 8;
        else x = static_cast<T>(rng() % 3 == 0 ? 0 : rng());
    }
    return v;
}
TEST(Streams, EveryVectorWidth) {
    namespace simd = intrins::reduce::simd;
    std::mt19937_64 rng(24);
    std::vector<char> store((int64_t{1} << 18) * 8 + 256);
    char* line = store.data() + (64 - reinterpret_cast<std::uintptr_t>(store.data()) % 64);
    for (int bytes : {16, 32, 64}) {
        if (bytes > simd::widest()) continue;
        for (int64_t n : {int64_t{0}, int64_t{1}, int64_t{7}, int64_t{70}, (int64_t{1} << 17) + 61}) {
            for (int off : {0, 8, 3}) {
                char* p = line + off;
                const auto d = values<double>(rng, n);
                if (n > 0) std::memcpy(p, d.data(), d.size() * 8);
                double mx = -INFINITY, mn = INFINITY;
                for (double x : d) mx = std::max(mx, x), mn = std::min(mn, x);
                auto hi = simd::run<simd::ExtremeLanes<double, true>::At>(p, n, bytes);
                auto lo = simd::run<simd::ExtremeLanes<double, false>::At>(p, n, bytes);
                EXPECT_EQ(hi.value, mx) << bytes << " " << n << " +" << off;
                EXPECT_EQ(lo.value, mn) << bytes << " " << n << " +" << off;
                EXPECT_FALSE(hi.nan || lo.nan) << bytes << " " << n << " +" << off;
                if (n > 0) {
                    put<double>(p, n * 2 / 3, std::numeric_limits<double>::quiet_NaN());
                    double m2 = -INFINITY;
                    for (int64_t i = 0; i < n; ++i)
                        if (i != n * 2 / 3) m2 = std::max(m2, d[static_cast<size_t>(i)]);
                    hi = simd::run<simd::ExtremeLanes<double, true>::At>(p, n, bytes);
                    EXPECT_TRUE(hi.nan) << bytes << " " << n << " +" << off;
                    EXPECT_EQ(hi.value, m2) << bytes << " " << n << " +" << off;
                }

                const auto w = values<uint64_t>(rng, n);
                if (n > 0) std::memcpy(p, w.data(), w.size() * 8);
                uint64_t sum = 0, prod = 1;
                uint32_t nonzero8 = 0, nonzero4 = 0;
                int32_t top = std::numeric_limits<int32_t>::min();
                for (uint64_t x : w) sum += x, prod *= x | 1, nonzero8 += x != 0;
                for (int64_t i = 0; i < 2 * n; ++i) {
                    uint32_t x;
                    std::memcpy(&x, p + i * 4, 4);
                    nonzero4 += x != 0;
                    top = std::max(top, static_cast<int32_t>(x));
                }
                EXPECT_EQ((simd::run<simd::FoldLanes<uint64_t, uint64_t, simd::Op::Sum>::At>(p, n, bytes)), sum);
                EXPECT_EQ((simd::run<simd::FoldLanes<uint64_t, uint32_t, simd::Op::Tally>::At>(p, n, bytes)), nonzero8);
                EXPECT_EQ((simd::run<simd::FoldLanes<uint32_t, uint32_t, simd::Op::Tally>::At>(p, 2 * n, bytes)), nonzero4);
                EXPECT_EQ((simd::run<simd::ExtremeLanes<int32_t, true>::At>(p, 2 * n, bytes).value), top);
                for (int64_t i = 0; i < n; ++i) put<uint64_t>(p, i, w[static_cast<size_t>(i)] | 1);
                EXPECT_EQ((simd::run<simd::FoldLanes<uint64_t, uint64_t, simd::Op::Product>::At>(p, n, bytes)), prod)
                    << bytes << " " << n << " +" << off;
            }
        }
    }
}

// ALL and ANY of long LOGICAL(4) and LOGICAL(8) vectors, tallied a chunk at
// a time: the one deciding element placed in the first, a middle and the
// last chunk, at chunk edges, and nowhere.
template <class L>
void all_any(void (*all)(ArgList*), void (*any)(ArgList*)) {
    for (int32_t n : {1, 4095, 4096, 4097, 8193, 3 * 4096 + 5}) {
        Array a({{1, n}}, sizeof(L));
        Scalar<L> r;
        std::vector<int32_t> places = {-1, 0, 1, 4095, 4096, 4097, n / 2, n - 1};
        for (int32_t k : places) {
            if (k >= n) continue;
            // ALL: true everywhere (some values with a single high bit) but at k.
            for (int32_t i = 0; i < n; ++i) a.template at<L>(i) = static_cast<L>(i % 3 ? 1 : L{1} << (sizeof(L) * 8 - 1));
            if (k >= 0) a.template at<L>(k) = 0;
            r.a.template at<L>(0) = 7;
            all(Red(a).into(r.a));
            EXPECT_EQ(r.value(), k < 0 ? 1 : 0) << n << " @" << k;
            // ANY: false everywhere but at k.
            for (int32_t i = 0; i < n; ++i) a.template at<L>(i) = 0;
            if (k >= 0) a.template at<L>(k) = static_cast<L>(L{1} << (k % (sizeof(L) * 8)));
            r.a.template at<L>(0) = 7;
            any(Red(a).into(r.a));
            EXPECT_EQ(r.value(), k < 0 ? 0 : 1) << n << " @" << k;
        }
    }
}
TEST(Streams, AllAnyByChunks) {
    all_any<int32_t>(f90_all4, f90_any4);
    all_any<int64_t>(f90_all8, f90_any8);
}

// Integer PRODUCT of long vectors (odd factors keep it from reaching zero;
// then one zero), wrapping like the scalar product.
TEST(Streams, IntegerProducts) {
    std::mt19937 rng(23);
    for (int32_t n : {1, 31, 32, 33, 1000, 4099, (1 << 17) + 61, (1 << 18) + 127}) {
        Array a({{1, n}}, 4), b({{1, n}}, 8);
        uint32_t p4 = 1;
        uint64_t p8 = 1;
        for (int32_t i = 0; i < n; ++i) {
            uint32_t x = rng() | 1;
            uint64_t y = (uint64_t{rng()} << 32 | rng()) | 1;
            a.at<uint32_t>(i) = x;
            b.at<uint64_t>(i) = y;
            p4 *= x;
            p8 *= y;
        }
        Scalar<uint32_t> r4;
        Scalar<uint64_t> r8;
        f90_prodi4(Red(a).into(r4.a));
        EXPECT_EQ(r4.value(), p4) << n;
        f90_prodi8(Red(b).into(r8.a));
        EXPECT_EQ(r8.value(), p8) << n;
        a.at<uint32_t>(n / 2) = 0;
        b.at<uint64_t>(n - 1) = 0;
        f90_prodi4(Red(a).into(r4.a));
        EXPECT_EQ(r4.value(), 0u) << n;
        f90_prodi8(Red(b).into(r8.a));
        EXPECT_EQ(r8.value(), 0u) << n;
    }
}

// Strictly ordered REAL sums and dot products of short lengths (every tail
// of an unrolled loop) and a few longer ones: values whose sum depends on
// the order (large terms that cancel, small ones absorbed or not), bit for
// bit against the left-to-right definition.
TEST(Ordered, RealSumsAndDotProductsKeepTheOrder) {
    std::mt19937 rng(24);
    for (int32_t n = 0; n <= 41; n += n < 20 ? 1 : 7) {
        Array a({{1, n}}, 8), b({{1, n}}, 8), f({{1, n}}, 4);
        double sum = 0, dot = 0, sum4 = 0;
        for (int32_t i = 0; i < n; ++i) {
            double x = (i % 4 == 1 ? 1e16 : 1.0) * ((rng() % 2001) / 1000.0 - 1);
            double y = i % 3 == 0 ? 3.0 : 1.0 / (1 + i % 5);
            float z = static_cast<float>(i % 5 == 2 ? 1e8 : 0.1) * (rng() % 2 ? 1 : -1);
            a.at<double>(i) = x;
            b.at<double>(i) = y;
            f.at<float>(i) = z;
            sum += x;
            dot += x * y;
            sum4 += z;
        }
        Scalar<double> r8;
        Scalar<float> r4;
        f90_sumr8(Red(a).into(r8.a));
        EXPECT_EQ(bits_of(r8.value()), bits_of(sum)) << n;
        f90_sumr4(Red(f).into(r4.a));
        EXPECT_EQ(bits_of(r4.value()), bits_of(static_cast<float>(sum4))) << n;
        Args d;
        d.addr(1, a.desc()).addr(2, b.desc());
        f90_dotprr8(d.get());
        double got;
        std::memcpy(&got, d.a.Result.bytes, 8);
        EXPECT_EQ(bits_of(got), bits_of(dot)) << n;
    }
}

}  // namespace
}  // namespace rtest
