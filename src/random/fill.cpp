// fill.cpp - the array forms of RANDOM_NUMBER: many steps of the generator at
// once.
//
// The values form one sequence y[n] = y[n-22] - y[n-43] - c (generator.h),
// so any 22 consecutive values depend only on values already made.  Once the
// borrow is set (it never clears, and is set within the first few steps of a
// thread) every step is the same branch-free lane operation:
//     d = y[n-22] - y[n-43] - 1;  d -= 5 where d < 0 (signed);  r = d - w[n]
// with w[n] = w - (n+1) * 362436069.  The loop makes blocks of V values
// (V = 16, 8 or 4 lanes for AVX-512, AVX2 or SSE2, chosen once at run time)
// and keeps the last ceil(43 / V) blocks in registers; the two lagged operands
// of a block are each cut from two neighbouring older blocks by one shuffle,
// so no value goes through memory between steps.  Each block of r is turned
// into values in the lanes as well (REAL(4), REAL(8)) or lane by lane
// (REAL(10), quad) with exactly the operations of the one-value form, so
// every value has the same bits as the one-at-a-time sequence.
//
// Before the borrow is set, for the few steps after a whole block and when
// the state does not have the usual lag between i and j, single steps do
// the work.  At the end the last 43 values go back into the lag table.
#include <cstring>
#include <utility>

#include "random/generator.h"

// The lane helpers below are always inlined into the target-specific
// functions that use them, so no vector crosses a call boundary and the ABI
// notes for wide vectors do not apply.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace intrins::random {
namespace {

template <int V>
struct Lanes {
    typedef uint32_t u32 __attribute__((vector_size(4 * V)));
    typedef int32_t i32 __attribute__((vector_size(4 * V)));
    typedef double f64 __attribute__((vector_size(8 * V)));
    typedef float f32 __attribute__((vector_size(4 * V)));
    static constexpr int kDepth = (kTableWords + V - 1) / V;  // blocks kept
};

// The V values that lie `lag` steps behind the block being made: lanes from
// offset o of the block ceil(lag / V) back, continued by the next one.
template <int V, int Lag, std::size_t... I>
[[gnu::always_inline]] inline typename Lanes<V>::u32 behind(const typename Lanes<V>::u32* hist,
                                                             std::index_sequence<I...>) {
    constexpr int back = (Lag + V - 1) / V;
    constexpr int o = back * V - Lag;
    constexpr int at = Lanes<V>::kDepth - back;
    return __builtin_shufflevector(hist[at], hist[at + 1], (o + static_cast<int>(I))...);
}

// Stores the values of one block of r at out (V slots).
template <int V, class E>
[[gnu::always_inline]] inline void put(char* out, typename Lanes<V>::u32 r) {
    using L = Lanes<V>;
    if constexpr (std::is_same_v<E, double>) {
        typename L::f64 v = __builtin_convertvector((typename L::i32)r, typename L::f64);
        v = v * kScale8 + 0.5;
        std::memcpy(out, &v, sizeof v);
    } else if constexpr (std::is_same_v<E, float>) {
        typename L::f64 v = __builtin_convertvector((typename L::i32)r, typename L::f64);
        v = v * 0x1p-32 + 0.5;  // exact, see Unit<float>
        typename L::f32 f = __builtin_convertvector(v, typename L::f32);
        std::memcpy(out, &f, sizeof f);
    } else {
        int32_t lane[V];
        std::memcpy(lane, &r, sizeof lane);
        for (int t = 0; t < V; ++t) Kind<E>::store(out + t * Kind<E>::size, Unit<E>::value(lane[t]));
    }
}

// Makes `blocks` blocks of V values at out.  Requires c = 1 and j = i - 21
// (mod 43); leaves the state as that many single steps would.
template <int V, class E>
[[gnu::always_inline]] inline void blocks_of(State& s, char* out, int32_t blocks) {
    using L = Lanes<V>;
    using u32 = typename L::u32;
    constexpr int H = L::kDepth;
    constexpr auto lanes = std::make_index_sequence<V>();

    // The window y[-43..-1], oldest first, right-aligned in H blocks.  Slot i
    // holds the oldest value, i - 1 the next, ... i + 1 the newest.
    uint32_t window[H * V] = {};
    for (int k = 0; k < kTableWords; ++k)
        window[H * V - kTableWords + k] = s.x[(s.i + kTableWords - k) % kTableWords];
    u32 hist[H];
    std::memcpy(hist, window, sizeof hist);

    u32 w;  // lane t: the Weyl word of step t + 1
    for (int t = 0; t < V; ++t) w[t] = s.w - static_cast<uint32_t>(t + 1) * kWeylStep;
    const u32 dw = u32{} + static_cast<uint32_t>(V) * kWeylStep;

    for (int32_t b = 0; b < blocks; ++b, out += V * Kind<E>::size) {
        u32 d = behind<V, kShortLag>(hist, lanes) - behind<V, kTableWords>(hist, lanes) - 1u;
        d -= (u32)((typename L::i32)d >> 31) & 5u;  // 5 less where d < 0
        for (int k = 0; k + 1 < H; ++k) hist[k] = hist[k + 1];
        hist[H - 1] = d;
        put<V, E>(out, d - w);
        w -= dw;
    }

    const uint32_t steps = static_cast<uint32_t>(blocks) * V;
    std::memcpy(window, hist, sizeof hist);
    const uint32_t i = (s.i + kTableWords - steps % kTableWords) % kTableWords;
    for (int k = 0; k < kTableWords; ++k)
        s.x[(i + kTableWords - k) % kTableWords] = window[H * V - kTableWords + k];
    s.i = i;
    s.j = (s.j + kTableWords - steps % kTableWords) % kTableWords;
    s.w -= steps * kWeylStep;
}

template <class E>
using BlockFn = void (*)(State&, char*, int32_t);

template <class E>
[[gnu::target("avx512f")]] void blocks_avx512(State& s, char* out, int32_t blocks) {
    blocks_of<16, E>(s, out, blocks);
}
template <class E>
[[gnu::target("avx2")]] void blocks_avx2(State& s, char* out, int32_t blocks) {
    blocks_of<8, E>(s, out, blocks);
}
template <class E>
void blocks_sse2(State& s, char* out, int32_t blocks) {
    blocks_of<4, E>(s, out, blocks);
}

}  // namespace

// The widest the processor has, chosen once.
int lane_count() {
    static const int lanes = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx512f") ? 16 : __builtin_cpu_supports("avx2") ? 8 : 4;
    }();
    return lanes;
}

namespace {

template <class E>
void single_steps(State& s, char*& out, int32_t n) {
    for (int32_t k = 0; k < n; ++k, out += Kind<E>::size) Kind<E>::store(out, Unit<E>::value(step(s)));
}

}  // namespace

template <class E>
void fill(State& s, void* dest, int32_t n) {
    fill_lanes<E>(s, dest, n, lane_count());
}

template <class E>
void fill_lanes(State& s, void* dest, int32_t n, int lanes) {
    char* out = static_cast<char*>(dest);
    while (n > 0 && s.c == 0) {
        single_steps<E>(s, out, 1);
        --n;
    }
    if (s.j == (s.i + kTableWords - 21) % kTableWords && n >= lanes) {
        const BlockFn<E> run = lanes == 16 ? blocks_avx512<E> : lanes == 8 ? blocks_avx2<E> : blocks_sse2<E>;
        const int32_t blocks = n / lanes;
        run(s, out, blocks);
        out += static_cast<std::ptrdiff_t>(blocks) * lanes * Kind<E>::size;
        n -= blocks * lanes;
    }
    single_steps<E>(s, out, n);
}

#define X(E)                                         \
    template void fill<E>(State&, void*, int32_t); \
    template void fill_lanes<E>(State&, void*, int32_t, int);
X(float) X(double) X(R10) X(Quad)
#undef X

}  // namespace intrins::random
