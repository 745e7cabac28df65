// What the model's small arrays cannot reach: every vector width the
// processor runs, runs long enough to be read as two far-apart streams (1 MiB
// and more) with every head up to a 64-byte boundary and every tail, MAXLOC's
// blocks, ALL/ANY's 4096-element chunks, and DIM walks of more result
// elements than one block holds.  Plain loops are the reference.
#include <cmath>
#include <limits>

#include "reduce/simd.h"
#include "support/arrays.h"

namespace {

using namespace testutil;
namespace simd = intrins::reduce::simd;
using Fn = void (*)(ArgList*);

template <class T>
T scalar(void (*fn)(ArgList*), Array& a, int32_t dim = 0) {
    Array r(static_cast<int32_t>(sizeof(T)));
    Args args;
    args.result(r.desc()).addr(1, a.desc());
    if (dim) args.value(2, dim);
    fn(args);
    T v;
    std::memcpy(&v, r.data(), sizeof v);
    return v;
}

// A rank-1 operand of n elements starting `off` bytes past a 64-byte boundary.
struct Span {
    std::vector<char> store;
    char* p;
    Array a;
    Span(int32_t n, int elsize, int off)
        : store(static_cast<std::size_t>(n) * elsize + 256),
          p(store.data() + (64 - reinterpret_cast<std::uintptr_t>(store.data()) % 64) + off), a(elsize) {
        ArrDesc& d = *a.desc();
        d.BASE = p, d.ZERO = p - elsize, d.RANK = 1, d.EXTENT = n, d.DIM[0] = {1, n, 1};
    }
    template <class T>
    void put(int64_t i, T v) { std::memcpy(p + i * int64_t{sizeof(T)}, &v, sizeof v); }
    template <class T>
    T get(int64_t i) { T v; std::memcpy(&v, p + i * int64_t{sizeof(T)}, sizeof v); return v; }
};

// Streaming starts at 1 MiB: lengths around 2^18 four-byte and 2^17 eight-byte
// elements, heads of every kind (aligned, misaligned by the element, odd).
TEST(Vectors, LongRunsStreamsHeadsAndTails) {
    std::mt19937_64 rng(21);
    for (int32_t n : {(1 << 18) - 1, (1 << 18) + 127, (1 << 17) + 61, 300007})
        for (int off : {0, 8, 56, 3}) {
            SCOPED_TRACE(::testing::Message() << n << " +" << off);
            Span r(n, 4, off);
            uint32_t s4 = 0, c4 = 0;
            int32_t hi = INT32_MIN, lo = INT32_MAX, at = 0;
            for (int64_t i = 0; i < n; ++i) {
                int32_t x = rng() % 3 ? static_cast<int32_t>(rng()) : 0;
                r.put(i, x), s4 += x, c4 += x != 0, lo = std::min(lo, x);
                if (x > hi) hi = x, at = static_cast<int32_t>(i + 1);
            }
            EXPECT_EQ(scalar<uint32_t>(f90_sumi4, r.a), s4);
            EXPECT_EQ(scalar<uint32_t>(f90_count4, r.a), c4);
            EXPECT_EQ(scalar<int32_t>(f90_maxvali4, r.a), hi);
            EXPECT_EQ(scalar<int32_t>(f90_minvali4, r.a), lo);
            Desc loc;
            f90_maxloci4(Args().addr(0, loc.get()).addr(1, r.a.desc()));
            EXPECT_EQ(*reinterpret_cast<int32_t*>(loc->BASE), at);
            // REAL(8) over the first half, a NaN and the extremes at spots
            // in the head, where the streams meet and in the tail: MAXVAL
            // never takes the NaN, MINVAL takes it and the next element
            // replaces it; first element, then last down to second.
            Span d(n / 2, 8, off);
            for (int64_t i = 0; i < n / 2; ++i) d.put(i, static_cast<double>(rng() % 100000) / 64 - 700);
            for (int64_t s : {int64_t{1}, int64_t{n / 4}, int64_t{n / 4 + 1}, int64_t{n / 2 - 2}})
                d.put(s, s % 2 ? 5000.5 : -5000.25);
            d.put(n / 8, std::numeric_limits<double>::quiet_NaN());
            double mx = d.get<double>(0), mn = mx;
            for (int64_t i = n / 2 - 1; i >= 1; --i) {
                double x = d.get<double>(i);
                if (x > mx) mx = x;
                if (!(x >= mn)) mn = x;
            }
            double got = scalar<double>(f90_maxvalr8, d.a);
            EXPECT_TRUE(same_bits(&got, &mx, 8));
            got = scalar<double>(f90_minvalr8, d.a);
            EXPECT_TRUE(same_bits(&got, &mn, 8));
        }
}

// The kernels at every width this processor has, over lengths that stream
// or not and odd offsets.
TEST(Vectors, EveryWidth) {
    std::mt19937_64 rng(24);
    for (int bytes : {16, 32, 64}) {
        if (bytes > simd::widest()) continue;
        for (int32_t n : {0, 1, 7, 70, 97, (1 << 17) + 61})
            for (int off : {0, 8, 3}) {
                SCOPED_TRACE(::testing::Message() << bytes << " " << n << " +" << off);
                Span r(n, 8, off);
                double mx = -INFINITY, mn = INFINITY;
                for (int64_t i = 0; i < n; ++i) {
                    double x = static_cast<double>(static_cast<int64_t>(rng() % 20001) - 10000) / 8;
                    r.put(i, x), mx = std::max(mx, x), mn = std::min(mn, x);
                }
                EXPECT_EQ((simd::run<simd::ExtremeLanes<double, true>::At>(r.p, n, bytes).value), mx);
                EXPECT_EQ((simd::run<simd::ExtremeLanes<double, false>::At>(r.p, n, bytes).value), mn);
                uint64_t sum = 0, prod = 1;
                uint32_t nz8 = 0, nz4 = 0;
                int32_t top = INT32_MIN;
                for (int64_t i = 0; i < n; ++i) {
                    uint64_t y = rng() % 3 ? rng() | 1 : 0;
                    r.put(i, y), sum += y, nz8 += y != 0;
                }
                for (int64_t i = 0; i < 2 * n; ++i) nz4 += r.get<uint32_t>(i) != 0, top = std::max(top, r.get<int32_t>(i));
                EXPECT_EQ((simd::run<simd::FoldLanes<uint64_t, uint64_t, simd::Op::Sum>::At>(r.p, n, bytes)), sum);
                EXPECT_EQ((simd::run<simd::FoldLanes<uint64_t, uint32_t, simd::Op::Tally>::At>(r.p, n, bytes)), nz8);
                EXPECT_EQ((simd::run<simd::FoldLanes<uint32_t, uint32_t, simd::Op::Tally>::At>(r.p, 2 * n, bytes)), nz4);
                EXPECT_EQ((simd::run<simd::ExtremeLanes<int32_t, true>::At>(r.p, 2 * n, bytes).value), top);
                for (int64_t i = 0; i < n; ++i) r.put(i, r.get<uint64_t>(i) | 1), prod *= r.get<uint64_t>(i);
                EXPECT_EQ((simd::run<simd::FoldLanes<uint64_t, uint64_t, simd::Op::Product>::At>(r.p, n, bytes)), prod);
                if (n > 0) {
                    r.put(n * 2 / 3, std::numeric_limits<double>::quiet_NaN());
                    EXPECT_TRUE((simd::run<simd::ExtremeLanes<double, true>::At>(r.p, n, bytes).nan));
                }
            }
    }
}

// ALL and ANY a chunk of 4096 at a time: the deciding element in the first,
// a middle and the last chunk, at chunk edges, and nowhere.
template <class L>
void all_any(Fn all, Fn any) {
    for (int32_t n : {4095, 4097, 3 * 4096 + 5})
        for (int32_t k : {-1, 0, 4095, 4096, n / 2, n - 1}) {
            if (k >= n) continue;
            Array a({{1, n}}, sizeof(L));
            for (int32_t i = 0; i < n; ++i) a.at<L>(i) = static_cast<L>(i == k ? 0 : L{1} << (i % (8 * sizeof(L))));
            EXPECT_EQ(scalar<L>(all, a), k < 0) << n << " @" << k;
            for (int32_t i = 0; i < n; ++i) a.at<L>(i) = i == k ? L{1} << (sizeof(L) * 8 - 1) : 0;
            EXPECT_EQ(scalar<L>(any, a), k >= 0) << n << " @" << k;
        }
}
TEST(Vectors, AllAnyByChunks) {
    all_any<int32_t>(f90_all4, f90_any4);
    all_any<int64_t>(f90_all8, f90_any8);
}

// DIM walks over more result elements than a block (2048) holds, in groups
// of four DIM positions and streams of eight columns: REAL(8) sums whose
// bits depend on the order, against runs in DIM order.
TEST(Vectors, DimWalksAcrossBlocks) {
    std::mt19937_64 rng(25);
    for (auto [rows, cols, dim] : {std::tuple{2051, 7, 2}, std::tuple{7, 2051, 1}, std::tuple{9, 17, 1}}) {
        Array a({{1, rows}, {1, cols}}, 8);
        for (int64_t i = 0; i < a.size(); ++i) a.at<double>(i) = (rng() % 4 ? 1.0 : 1e16) * (static_cast<int>(rng() % 9) - 4);
        Desc r;
        f90_sumr8(Args().addr(0, r.get()).addr(1, a.desc()).value(2, dim));
        const int n = dim == 1 ? cols : rows, len = dim == 1 ? rows : cols;
        for (int j = 0; j < n; ++j) {
            double s = 0;
            for (int k = 0; k < len; ++k) s += dim == 1 ? a.at<double>(int64_t{j} * rows + k) : a.at<double>(int64_t{k} * rows + j);
            ASSERT_TRUE(same_bits(r->BASE + j * 8, &s, 8)) << rows << "x" << cols << " dim " << dim << " @" << j;
        }
    }
}

}  // namespace
