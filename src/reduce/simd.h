// simd.h - vector loops for the reductions whose order of combination
// cannot change the result, and for the floating ones where the caller can
// prove that it does not (see extrema.cpp and maxloc.cpp).
//
// Each kernel is written once over GCC vector types of a given byte width
// and compiled twice: for the SSE2 baseline (16 bytes) and, in a function
// marked target("avx2"), for 32 bytes.  The choice is made once per process
// from __builtin_cpu_supports and cached.  Memory is read through memcpy, so
// callers' data needs no particular alignment.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace intrins::reduce::simd {

inline bool has_avx2() {
    static const bool yes = __builtin_cpu_supports("avx2");
    return yes;
}

template <class T, int Bytes>
struct VecOf {
    typedef T type __attribute__((vector_size(Bytes)));
};

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

template <class T, bool Max, int Bytes>
[[gnu::always_inline]] inline Extreme<T, Max> extreme_body(const char* p, int64_t n) {
    using V = typename VecOf<T, Bytes>::type;
    constexpr int W = Bytes / sizeof(T);
    const T init = far_end<T, Max>();
    V m0, m1;
    for (int i = 0; i < W; ++i) m0[i] = m1[i] = init;
    using M = decltype(m0 != m0);
    M bad = M{} != M{};
    int64_t i = 0;
    for (; i + 2 * W <= n; i += 2 * W) {
        V x0, x1;
        std::memcpy(&x0, p + i * sizeof(T), sizeof x0);
        std::memcpy(&x1, p + (i + W) * sizeof(T), sizeof x1);
        if constexpr (Max) {
            m0 = x0 > m0 ? x0 : m0;
            m1 = x1 > m1 ? x1 : m1;
        } else {
            m0 = x0 < m0 ? x0 : m0;
            m1 = x1 < m1 ? x1 : m1;
        }
        if constexpr (std::is_floating_point_v<T>) bad |= (x0 != x0) | (x1 != x1);
    }
    Extreme<T, Max> r{init, false};
    for (int k = 0; k < W; ++k) {
        T a = m0[k], b = m1[k];
        if (Max ? a > r.value : a < r.value) r.value = a;
        if (Max ? b > r.value : b < r.value) r.value = b;
        if constexpr (std::is_floating_point_v<T>) r.nan |= bad[k] != 0;
    }
    for (; i < n; ++i) {
        T x;
        std::memcpy(&x, p + i * sizeof(T), sizeof x);
        if (Max ? x > r.value : x < r.value) r.value = x;
        if (x != x) r.nan = true;
    }
    return r;
}

template <class T, bool Max>
[[gnu::target("avx2")]] Extreme<T, Max> extreme_avx2(const char* p, int64_t n) {
    return extreme_body<T, Max, 32>(p, n);
}
template <class T, bool Max>
Extreme<T, Max> extreme_sse2(const char* p, int64_t n) {
    return extreme_body<T, Max, 16>(p, n);
}
template <class T, bool Max>
Extreme<T, Max> extreme(const char* p, int64_t n) {
    return has_avx2() ? extreme_avx2<T, Max>(p, n) : extreme_sse2<T, Max>(p, n);
}

// One wrapping integer fold over n contiguous elements of type T, four
// vectors per step: the sum of the values (Tally false) or the number of
// nonzero ones (Tally true: a true lane compares as all ones, -1, and is
// subtracted).  Lanes keep T's width, which a 32-bit element count cannot
// overflow when tallying; the lanes are added into Acc at the end.
template <class T, class Acc, bool Tally, int Bytes>
[[gnu::always_inline]] inline Acc fold_body(const char* p, int64_t n) {
    static_assert(std::is_unsigned_v<T> && std::is_unsigned_v<Acc>);
    using V = typename VecOf<T, Bytes>::type;
    constexpr int W = Bytes / sizeof(T);
    auto step = [](V& acc, const V& x) {
        if constexpr (Tally)
            acc -= (V)(x != 0);
        else
            acc += x;
    };
    V s0 = {}, s1 = {}, s2 = {}, s3 = {};
    int64_t i = 0;
    for (; i + 4 * W <= n; i += 4 * W) {
        V x0, x1, x2, x3;
        std::memcpy(&x0, p + i * sizeof(T), sizeof x0);
        std::memcpy(&x1, p + (i + W) * sizeof(T), sizeof x1);
        std::memcpy(&x2, p + (i + 2 * W) * sizeof(T), sizeof x2);
        std::memcpy(&x3, p + (i + 3 * W) * sizeof(T), sizeof x3);
        step(s0, x0);
        step(s1, x1);
        step(s2, x2);
        step(s3, x3);
    }
    s0 += s1 + s2 + s3;
    Acc r = 0;
    for (int k = 0; k < W; ++k) r += static_cast<Acc>(s0[k]);
    for (; i < n; ++i) {
        T x;
        std::memcpy(&x, p + i * sizeof(T), sizeof x);
        r += Tally ? (x != 0 ? 1 : 0) : static_cast<Acc>(x);
    }
    return r;
}
template <class T, class Acc, bool Tally>
[[gnu::target("avx2")]] Acc fold_avx2(const char* p, int64_t n) {
    return fold_body<T, Acc, Tally, 32>(p, n);
}
template <class T, class Acc, bool Tally>
Acc fold_sse2(const char* p, int64_t n) {
    return fold_body<T, Acc, Tally, 16>(p, n);
}
template <class T, class Acc, bool Tally>
Acc fold(const char* p, int64_t n) {
    return has_avx2() ? fold_avx2<T, Acc, Tally>(p, n) : fold_sse2<T, Acc, Tally>(p, n);
}

// The wrapping sum of n contiguous integers of the accumulator's width.
template <class T, class Acc>
Acc sum(const char* p, int64_t n) {
    static_assert(sizeof(T) == sizeof(Acc));
    return fold<Acc, Acc, false>(p, n);
}

// How many of n contiguous 4- or 8-byte logicals (of unsigned type T) are
// true (any bit set), wrapping modulo 2^32 like the scalar tally.
template <class T>
uint32_t count(const char* p, int64_t n) {
    static_assert(sizeof(T) >= 4);
    return fold<T, uint32_t, true>(p, n);
}

}  // namespace intrins::reduce::simd
