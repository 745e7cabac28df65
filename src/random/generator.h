// generator.h - the generator behind RANDOM_NUMBER and RANDOM_SEED.
//
// A lagged subtract-with-borrow sequence over 43 32-bit words combined with a
// Weyl sequence, seeded by a lattice method from a fixed default seed.  The
// state is 47 words: the lag table x[0..42], the index i of the slot that
// receives the next value, the other lag j, the borrow c and the Weyl word w.
//
// One step:  d = x[j] - x[i] - c;  if (int32)d < 0 { d -= 5; c = 1; }
//            x[i] = d;  i, j move down by one (42 after 0);  w -= 362436069;
//            r = (int32)(d - w).
// The borrow is never cleared once set: kept so, since it is part of the
// sequence every program sees.  Because i and j move together with j = i - 21
// (mod 43), the values form one sequence y[n] = y[n-22] - y[n-43] - c; the
// array path (fill.h) uses that form.
#pragma once

#include <cstdint>

#include "extended/floatxxx.h"
#include "frame/kinds.h"

namespace intrins::random {

inline constexpr uint32_t kDefaultSeed = 390878531u;
inline constexpr uint32_t kWeylStep = 362436069u;
inline constexpr int kTableWords = 43;
inline constexpr int kShortLag = 22;  // y[n] depends on y[n-22] and y[n-43]
inline constexpr int kStateWords = 47;

struct State {
    uint32_t x[kTableWords];
    uint32_t i, j, c, w;
};
static_assert(sizeof(State) == kStateWords * 4);

// Fills the table from the default seed (lattice method) and resets i, j, c
// and w.  The seed arithmetic is signed 32-bit with arithmetic shifts; the
// fourth small seed takes the top byte as a signed byte.
inline void seed_default(State& s) {
    const int32_t seed = static_cast<int32_t>(kDefaultSeed);
    int32_t i0 = seed % 179, j0 = (seed >> 8) % 179, k0 = (seed >> 16) % 179;
    int32_t l0 = static_cast<int8_t>(seed >> 24) % 169;
    for (uint32_t& word : s.x) {
        word = 0;
        for (int bit = 0; bit < 32; ++bit) {
            int32_t m = (i0 * j0 * k0) % 179;
            i0 = j0;
            j0 = k0;
            k0 = m;
            l0 = (53 * l0 + 1) % 169;
            if ((l0 * m) % 64 >= 32) word |= 1u << bit;
        }
    }
    s.i = 42;
    s.j = 21;
    s.c = 0;
    s.w = kDefaultSeed;
}

inline int32_t step(State& s) {
    uint32_t d = s.x[s.j] - s.x[s.i] - s.c;
    if (static_cast<int32_t>(d) < 0) {
        d -= 5;
        s.c = 1;
    }
    s.x[s.i] = d;
    s.i = s.i == 0 ? kTableWords - 1 : s.i - 1;
    s.j = s.j == 0 ? kTableWords - 1 : s.j - 1;
    s.w -= kWeylStep;
    return static_cast<int32_t>(d - s.w);
}

// r -> a value in [0, 1): r * M + 0.5 with a per-kind M just below 2^-32, so
// that the largest r stays below 1 in that precision.
template <class E>
struct Unit;

// REAL(4): r * 2^-32 + 0.5 in extended precision, rounded to single on store.
// The exact value (r + 2^31) / 2^32 has 32 significant bits, so double holds
// it exactly and one rounding to single gives the same result; it can be 1.0.
template <>
struct Unit<float> {
    static float value(int32_t r) { return static_cast<float>(static_cast<double>(r) * 0x1p-32 + 0.5); }
};

// REAL(8): M = 0x3DEFFFFFFFF7FFFF, product and sum each rounded to double.
inline constexpr double kScale8 = 0x1.FFFFFFFF7FFFFp-33;
template <>
struct Unit<double> {
    static double value(int32_t r) { return static_cast<double>(r) * kScale8 + 0.5; }
};

// 80-bit: exponent 0x3FDE, significand 0xFFFFFFFFBFFFFFFF, in extended.
inline constexpr Real10 kScale10 = static_cast<Real10>(0xFFFFFFFFBFFFFFFFull) * 0x1p-96L;
template <>
struct Unit<R10> {
    static Real10 value(int32_t r) { return static_cast<Real10>(r) * kScale10 + 0.5L; }
};

// Quad: M = 0x3FDEFFFFFFFF7FFF FFFFFFFFFFFFFFFF, from a 64-bit integer, in
// software binary128.
inline const Quad kScale16 = from_bits(QuadBits{0xFFFFFFFFFFFFFFFFull, 0x3FDEFFFFFFFF7FFFull});
template <>
struct Unit<Quad> {
    static Quad value(int32_t r) {
        return static_cast<Quad>(static_cast<int64_t>(r)) * kScale16 + static_cast<Quad>(0.5);
    }
};

// n values (n > 0) stored contiguously in slots of Kind<E>::size bytes.
template <class E>
void fill(State& s, void* out, int32_t n);
// The same with blocks of `lanes` (16, 8 or 4) values, whatever the processor
// offers; lanes 16 and 8 need AVX-512F and AVX2.  fill() passes lane_count().
template <class E>
void fill_lanes(State& s, void* out, int32_t n, int lanes);
int lane_count();

}  // namespace intrins::random
