// quadfast.h - binary128 multiply, add and subtract with a fast path for
// finite normal operands, for the multiply kernels' inner loops.
//
// The results are the bits of the compiler's __float128 operators in every
// case: the fast path computes the exact result in 64- and 128-bit integers
// and rounds it to nearest, ties to even (the only rounding mode a Fortran 90
// program runs in); zeros, subnormals, infinities, NaNs and any result that
// would not be a finite normal number go to the compiler's operators.  Where
// a shortcut is taken for a zero operand, it is one whose result IEEE fixes
// exactly: a normal x plus or minus zero is x, zero times a finite number is
// a zero with the exclusive or of the signs.  The fast path raises no
// floating-point exception flags.
//
// Without 128-bit integers (32-bit targets) the operators are used as they are.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "floatxxx.h"

namespace intrins::qfast {

#if INTRINS_INT128

using u128 = unsigned __int128;

inline constexpr u128 kSign = u128(1) << 127;
inline constexpr u128 kHidden = u128(1) << 112;
inline constexpr u128 kFrac = kHidden - 1;
inline constexpr unsigned kBias = 16383, kMaxExp = 0x7fff;

inline u128 bits(Quad x) { return std::bit_cast<u128>(x); }
inline Quad quad(u128 v) { return std::bit_cast<Quad>(v); }
inline unsigned biased_exp(u128 v) { return unsigned(uint64_t(v >> 112)) & kMaxExp; }
// True for a biased exponent of a normal number (1 .. 0x7ffe).
inline bool normal_exp(unsigned e) { return e - 1 < kMaxExp - 1; }

// Rounds r (top bit at 126: 113 bits of significand over 14 rounding bits,
// the lowest one sticky) to nearest even and packs it with biased exponent
// e (>= 1).  False when the rounded result overflows.
inline bool round_pack(u128 sign, int e, u128 r, u128& out) {
    const unsigned low = unsigned(uint64_t(r)) & 0x3fffu;
    r >>= 14;
    if (low > 0x2000u || (low == 0x2000u && (uint64_t(r) & 1u))) {
        r += 1;
        if (r >> 113) {  // carried into a new leading bit: significand 2^112
            r >>= 1;
            ++e;
        }
    }
    if (e >= int(kMaxExp)) return false;
    out = sign | (u128(unsigned(e)) << 112) | (r & kFrac);
    return true;
}

// The operators on bit patterns, for the rare cases.
inline u128 slow_mul(u128 a, u128 b) { return bits(quad(a) * quad(b)); }
template <bool Sub>
inline u128 slow_add(u128 a, u128 b) { return bits(Sub ? quad(a) - quad(b) : quad(a) + quad(b)); }

inline u128 mul(u128 a, u128 b) {
    const unsigned ea = biased_exp(a), eb = biased_exp(b);
    const u128 sign = (a ^ b) & kSign;
    if (!normal_exp(ea) || !normal_exp(eb)) [[unlikely]] {
        if ((a << 1) == 0 && eb != kMaxExp) return sign;
        if ((b << 1) == 0 && ea != kMaxExp) return sign;
        return slow_mul(a, b);
    }
    // 113-bit significands as (high 49 bits, low 64 bits); the product has
    // 225 or 226 bits: P = hh 2^128 + (lh + hl) 2^64 + ll = hi 2^128 + lo.
    const u128 ma = (a & kFrac) | kHidden, mb = (b & kFrac) | kHidden;
    const uint64_t ah = uint64_t(ma >> 64), al = uint64_t(ma), bh = uint64_t(mb >> 64), bl = uint64_t(mb);
    const u128 ll = u128(al) * bl, mid = u128(al) * bh + u128(ah) * bl, hh = u128(ah) * bh;
    const u128 lo = ll + (mid << 64);
    const u128 hi = hh + (mid >> 64) + (lo < ll);
    // Bring the leading bit (224 or 225) to 126, folding the rest into sticky.
    int e = int(ea) + int(eb) - int(kBias);
    unsigned s = 98;
    if (hi >> 97) {
        s = 99;
        ++e;
    }
    const u128 r = (hi << (128 - s)) | (lo >> s) | u128((lo << (128 - s)) != 0);
    u128 out;
    if (e < 1 || !round_pack(sign, e, r, out)) [[unlikely]]
        return slow_mul(a, b);
    return out;
}

// x + y, or x - y when Sub.
template <bool Sub>
inline u128 add(const u128 x, const u128 y) {
    u128 a = x, b = y ^ (Sub ? kSign : 0);
    unsigned ea = biased_exp(a), eb = biased_exp(b);
    if (!normal_exp(ea) || !normal_exp(eb)) [[unlikely]] {
        if ((b << 1) == 0 && normal_exp(ea)) return x;
        if ((a << 1) == 0 && normal_exp(eb)) return b;
        return slow_add<Sub>(x, y);
    }
    // a the operand of larger magnitude; its sign is the result's.
    if ((a & ~kSign) < (b & ~kSign)) {
        const u128 t = a;
        a = b, b = t;
        const unsigned te = ea;
        ea = eb, eb = te;
    }
    const u128 sign = a & kSign;
    const u128 ma = ((a & kFrac) | kHidden) << 14;  // leading bit at 126
    u128 mb = ((b & kFrac) | kHidden) << 14;
    const unsigned d = ea - eb;
    if (d > 126) mb = 1;  // below every rounding bit: sticky only
    else if (d > 0) mb = (mb >> d) | u128((mb << (128 - d)) != 0);
    int e = int(ea);
    u128 r;
    if (((a ^ b) & kSign) == 0) {
        r = ma + mb;
        if (r >> 127) {
            r = (r >> 1) | (r & 1);
            ++e;
        }
    } else {
        r = ma - mb;
        if (r == 0) return 0;  // x - x is +0 when rounding to nearest
        const uint64_t rh = uint64_t(r >> 64);
        const int lz = (rh ? __builtin_clzll(rh) : 64 + __builtin_clzll(uint64_t(r))) - 1;
        r <<= lz;
        e -= lz;
        if (e < 1) [[unlikely]]
            return slow_add<Sub>(x, y);
    }
    u128 out;
    if (!round_pack(sign, e, r, out)) [[unlikely]]
        return slow_add<Sub>(x, y);
    return out;
}

// A binary128 value kept as its bit pattern in two 64-bit integers, so
// that a chain of operations stays in integer registers and never moves
// the value through memory between vector and integer registers.
struct Q128 {
    uint64_t lo, hi;
    Q128() = default;
    Q128(Quad x) { std::memcpy(this, &x, sizeof x); }
    explicit operator Quad() const { return quad(bits()); }
    u128 bits() const { return (u128(hi) << 64) | lo; }
    static Q128 of(u128 v) {
        Q128 q;
        q.lo = uint64_t(v), q.hi = uint64_t(v >> 64);
        return q;
    }
    static Q128 load(const void* p) {  // a value in memory, any alignment
        Q128 q;
        std::memcpy(&q.lo, p, 8);
        std::memcpy(&q.hi, static_cast<const char*>(p) + 8, 8);
        return q;
    }
};
inline Q128 mul(Q128 a, Q128 b) { return Q128::of(mul(a.bits(), b.bits())); }
inline Q128 add(Q128 a, Q128 b) { return Q128::of(add<false>(a.bits(), b.bits())); }
inline Q128 sub(Q128 a, Q128 b) { return Q128::of(add<true>(a.bits(), b.bits())); }

#else

struct Q128 {
    Quad v;
    Q128() = default;
    Q128(Quad x) : v(x) {}
    explicit operator Quad() const { return v; }
    static Q128 load(const void* p) { return load_q(p); }
};
inline Q128 mul(Q128 a, Q128 b) { return a.v * b.v; }
inline Q128 add(Q128 a, Q128 b) { return a.v + b.v; }
inline Q128 sub(Q128 a, Q128 b) { return a.v - b.v; }

#endif

// The operations on __float128 values.
inline Quad mul(Quad x, Quad y) { return Quad(mul(Q128(x), Q128(y))); }
inline Quad add(Quad x, Quad y) { return Quad(add(Q128(x), Q128(y))); }
inline Quad sub(Quad x, Quad y) { return Quad(sub(Q128(x), Q128(y))); }

}  // namespace intrins::qfast
