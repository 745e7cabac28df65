// simd.h - vector loops for the reductions whose order of combination
// cannot change the result, and for the floating ones where the caller can
// prove that it does not (see extrema.cpp and maxloc.cpp).
//
// Every kernel is one lane policy run by one sweep over the memory:
//   head:    single elements up to the first 64-byte boundary (when the data
//            is aligned to its element size), so that no vector load splits
//            a cache line;
//   middle:  kStreams equal stretches far apart, one vector of each per step,
//            each into its own lane accumulator: the hardware prefetcher
//            follows both streams, and more cache misses are in flight than
//            along one stream on ordinary 4 KiB pages (four streams measured
//            slower than two, on either page size);
//   rest:    whole vectors into lane 0, then single elements.
// The kernels are compiled for the SSE2 baseline (16-byte vectors) and, in
// functions marked with a target attribute, for 32 bytes (AVX2) and 64 bytes
// (AVX-512: one load per cache line, which read memory 3-10% faster than two
// 32-byte loads); the choice is made once per process from
// __builtin_cpu_supports and cached.  Memory is read through memcpy, so
// callers' data needs no particular alignment.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace intrins::reduce::simd {

// The vector width in bytes that a sweep runs with by default: the widest
// one that the processor has.
inline int widest() {
    static const int bytes = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                                     __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")
                                 ? 64
                             : __builtin_cpu_supports("avx2") ? 32
                                                              : 16;
    return bytes;
}

template <class T, int Bytes>
struct VecOf {
    typedef T type __attribute__((vector_size(Bytes)));
};

inline constexpr int kStreams = 2;
inline constexpr std::uintptr_t kLine = 64;
inline constexpr int64_t kStreamed = int64_t{1} << 20;  // bytes

// Reads one element or vector (by reference: a 32-byte vector returned by
// value from a baseline function would change the calling convention).
template <class X>
[[gnu::always_inline]] inline const X& load(X& x, const char* p) {
    std::memcpy(&x, p, sizeof x);
    return x;
}

// Runs the lane policy K over n contiguous elements at p and returns its
// result.  K provides: using elem (the element type) and vec (a vector of
// them); step(int lane, vec) for a vector; one(elem) for a single element;
// result().
template <class K>
[[gnu::always_inline]] inline auto sweep(const char* p, int64_t n) {
    using T = typename K::elem;
    using V = typename K::vec;
    constexpr int64_t W = sizeof(V) / sizeof(T);
    constexpr int64_t z = sizeof(T);
    K k;
    T e;
    V v;
    const std::uintptr_t at = reinterpret_cast<std::uintptr_t>(p);
    int64_t head = at % z == 0 ? static_cast<int64_t>((0 - at) % kLine / z) : 0;
    if (head > n) head = n > 0 ? n : 0;
    for (int64_t i = 0; i < head; ++i) k.one(load(e, p + i * z));
    p += head * z;
    n -= head;
    // Elements per stream; none for a run too short to gain from streams
    // (a stretch restarts the prefetcher's ramp-up, so short ones cost).
    const int64_t per = n * z >= kStreamed ? n / (kStreams * W) * W : 0;
    for (int64_t i = 0; i < per; i += W) {
#pragma GCC unroll 4
        for (int s = 0; s < kStreams; ++s) k.step(s, load(v, p + (s * per + i) * z));
    }
    int64_t i = kStreams * per;
    for (; i + kStreams * W <= n; i += kStreams * W) {
#pragma GCC unroll 4
        for (int s = 0; s < kStreams; ++s) k.step(s, load(v, p + (i + s * W) * z));
    }
    for (; i + W <= n; i += W) k.step(0, load(v, p + i * z));
    for (; i < n; ++i) k.one(load(e, p + i * z));
    return k.result();
}

// Lane policy K<Bytes> compiled for each vector width.
template <template <int> class K>
[[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]] auto sweep_avx512(const char* p, int64_t n) {
    return sweep<K<64>>(p, n);
}
template <template <int> class K>
[[gnu::target("avx2")]] auto sweep_avx2(const char* p, int64_t n) {
    return sweep<K<32>>(p, n);
}
template <template <int> class K>
auto sweep_sse2(const char* p, int64_t n) {
    return sweep<K<16>>(p, n);
}
// Lane policy K<Bytes> run with vectors of `bytes` (64, 32 or 16; at most
// widest()).
template <template <int> class K>
auto run(const char* p, int64_t n, int bytes = widest()) {
    return bytes == 64 ? sweep_avx512<K>(p, n) : bytes == 32 ? sweep_avx2<K>(p, n) : sweep_sse2<K>(p, n);
}

// The extreme of n contiguous T by value: the largest (Max) or smallest,
// NaNs ignored; `nan` tells whether a NaN was seen.  Empty: the identity of
// the comparison (lowest or highest value, infinities for floats).
template <class T, bool Max>
struct Extreme {
    T value;
    bool nan;
};
template <class T, bool Max>
constexpr T far_end() {
    if constexpr (std::is_floating_point_v<T>)
        return Max ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::infinity();
    else
        return Max ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
}

template <class T, bool Max>
struct ExtremeLanes {
    template <int Bytes>
    struct At {
        using elem = T;
        using vec = typename VecOf<T, Bytes>::type;
        static constexpr bool floating = std::is_floating_point_v<T>;
        vec lane[kStreams];
        // A NaN that a lane saw (kept by a select: a compare that yields a
        // mask vector is split into scalars for 64-byte vectors).
        vec bad = {};
        Extreme<T, Max> r{far_end<T, Max>(), false};

        [[gnu::always_inline]] At() {
            for (auto& l : lane) l = vec{} + far_end<T, Max>();
        }
        [[gnu::always_inline]] void step(int s, const vec& x) {
            if constexpr (Max) lane[s] = x > lane[s] ? x : lane[s];
            else lane[s] = x < lane[s] ? x : lane[s];
            if constexpr (floating) bad = x == x ? bad : x;
        }
        [[gnu::always_inline]] void one(T x) {
            if (Max ? x > r.value : x < r.value) r.value = x;
            if (x != x) r.nan = true;
        }
        [[gnu::always_inline]] Extreme<T, Max> result() {
            for (auto& l : lane)
                for (int k = 0; k < Bytes / static_cast<int>(sizeof(T)); ++k)
                    if (Max ? l[k] > r.value : l[k] < r.value) r.value = l[k];
            if constexpr (floating)
                for (int k = 0; k < Bytes / static_cast<int>(sizeof(T)); ++k) r.nan |= bad[k] != bad[k];
            return r;
        }
    };
};
template <class T, bool Max>
Extreme<T, Max> extreme(const char* p, int64_t n) {
    return run<ExtremeLanes<T, Max>::template At>(p, n);
}

// One wrapping integer fold over n contiguous elements of type T:
//   Sum:      the sum of the values;
//   Tally:    the number of nonzero ones (a true lane compares as all ones,
//             -1, and is subtracted);
//   Product:  the product of the values.
// Lanes keep T's width, which a 32-bit element count cannot overflow when
// tallying; the lanes are combined into Acc at the end.  Arithmetic modulo
// 2^k is commutative and associative, so any grouping gives the same bits.
enum class Op { Sum, Tally, Product };

template <class T, class Acc, Op O>
struct FoldLanes {
    static_assert(std::is_unsigned_v<T> && std::is_unsigned_v<Acc>);
    template <int Bytes>
    struct At {
        using elem = T;
        using vec = typename VecOf<T, Bytes>::type;
        static constexpr T unit = O == Op::Product ? 1 : 0;
        vec lane[kStreams];
        Acc r = unit;

        [[gnu::always_inline]] At() {
            for (auto& l : lane) l = vec{} + unit;
        }
        [[gnu::always_inline]] void step(int s, const vec& x) {
            if constexpr (O == Op::Tally) lane[s] -= (vec)(x != 0);
            else if constexpr (O == Op::Product) lane[s] *= x;
            else lane[s] += x;
        }
        [[gnu::always_inline]] void one(T x) { r = combine(r, O == Op::Tally ? (x != 0 ? 1 : 0) : static_cast<Acc>(x)); }
        [[gnu::always_inline]] Acc result() {
            vec t = lane[0];
            for (int s = 1; s < kStreams; ++s) t = O == Op::Product ? t * lane[s] : t + lane[s];
            for (int k = 0; k < Bytes / static_cast<int>(sizeof(T)); ++k) r = combine(r, static_cast<Acc>(t[k]));
            return r;
        }
        // In Acc's own width (no promotion of a narrow unsigned to int).
        static Acc combine(Acc a, Acc b) {
            using W = std::conditional_t<(sizeof(Acc) < sizeof(unsigned)), unsigned, Acc>;
            return static_cast<Acc>(O == Op::Product ? static_cast<W>(a) * static_cast<W>(b) : static_cast<W>(a) + b);
        }
    };
};
template <class T, class Acc, Op O>
Acc fold(const char* p, int64_t n) {
    return run<FoldLanes<T, Acc, O>::template At>(p, n);
}

// The wrapping sum or product of n contiguous integers of the accumulator's
// width.
template <class Acc>
Acc sum(const char* p, int64_t n) {
    return fold<Acc, Acc, Op::Sum>(p, n);
}
template <class Acc>
Acc product(const char* p, int64_t n) {
    return fold<Acc, Acc, Op::Product>(p, n);
}

// How many of n contiguous 4- or 8-byte logicals (of unsigned type T) are
// true (any bit set), wrapping modulo 2^32 like the scalar tally.
template <class T>
uint32_t count(const char* p, int64_t n) {
    static_assert(sizeof(T) >= 4);
    return fold<T, uint32_t, Op::Tally>(p, n);
}

}  // namespace intrins::reduce::simd
