// format.h - the four REAL formats as fields: sign, biased exponent e and the
// stored fraction f, for the numeric-model intrinsics, which work on bit
// patterns rather than through arithmetic.
//
// Fmt<T> gives, for T = float, double, Real10 (x87 extended) and Quad
// (binary128): the unsigned type holding the fraction field, the field
// widths, split() and join().  REAL(10) stores its integer bit explicitly;
// here it is derived: split() drops it and join() sets it exactly when the
// exponent field is not 0, so that every format looks like one with a hidden
// bit (63 stored fraction bits, 64 digits).  An x87 encoding whose integer bit
// disagrees with its exponent field (unnormal, pseudo-denormal) is therefore
// read as the value with the bit the field implies.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

#include "extended/floatxxx.h"

namespace intrins::num {

// 128-bit unsigned, for the binary128 fraction; only what the field code uses
// (also on 32-bit targets, which have no 128-bit integer type).
struct U128 {
    uint64_t hi = 0, lo = 0;
    constexpr U128() = default;
    constexpr U128(uint64_t v) : lo(v) {}  // NOLINT: widening like the built-in types
    constexpr U128(uint64_t h, uint64_t l) : hi(h), lo(l) {}
    friend constexpr U128 operator|(U128 a, U128 b) { return {a.hi | b.hi, a.lo | b.lo}; }
    friend constexpr U128 operator&(U128 a, U128 b) { return {a.hi & b.hi, a.lo & b.lo}; }
    friend constexpr U128 operator~(U128 a) { return {~a.hi, ~a.lo}; }
    friend constexpr bool operator==(U128 a, U128 b) { return a.hi == b.hi && a.lo == b.lo; }
    friend constexpr U128 operator<<(U128 a, int n) {  // 0 <= n < 128
        if (n == 0) return a;
        if (n >= 64) return {a.lo << (n - 64), 0};
        return {(a.hi << n) | (a.lo >> (64 - n)), a.lo << n};
    }
    friend constexpr U128 operator>>(U128 a, int n) {  // 0 <= n < 128
        if (n == 0) return a;
        if (n >= 64) return {0, a.hi >> (n - 64)};
        return {a.hi >> n, (a.lo >> n) | (a.hi << (64 - n))};
    }
};

// Leading zero bits of the whole word (its width for 0).
inline int clz(uint32_t v) { return v ? __builtin_clz(v) : 32; }
inline int clz(uint64_t v) { return v ? __builtin_clzll(v) : 64; }
inline int clz(U128 v) { return v.hi ? __builtin_clzll(v.hi) : 64 + clz(v.lo); }

template <class B>
inline constexpr int kWidth = 8 * sizeof(B);

template <class B>
struct Fields {
    bool neg;
    int32_t e;  // biased exponent field
    B f;        // stored fraction field (no hidden or integer bit)
};

template <class T>
struct Fmt;

// Shared constants; B is the fraction type, M the stored fraction bits.
template <class B, int ExpBits, int Bias, int M>
struct FmtBase {
    using Bits = B;
    using Parts = Fields<B>;
    static constexpr int kExpBits = ExpBits;
    static constexpr int32_t kBias = Bias;
    static constexpr int kFrac = M;
    static constexpr int kDigits = M + 1;
    static constexpr int32_t kEmax = (1 << ExpBits) - 1;  // Inf and NaN
    static constexpr B kHidden = B(1) << M;
    static constexpr B kFracMask = ~(~B(0) << M);
    // Leading zeros of a fraction field, counted from its top bit.
    static int clz_field(B f) { return clz(f) - (kWidth<B> - M); }
};

template <class T, class W>
inline W raw_of(T v) {
    W w;
    std::memcpy(&w, &v, sizeof w);
    return w;
}
template <class T, class W>
inline T from_raw(W w) {
    T v;
    std::memcpy(&v, &w, sizeof v);
    return v;
}

// IEEE single and double: sign, exponent and fraction in one word W.
template <class T, class W, int ExpBits, int Bias, int M>
struct IeeeFmt : FmtBase<W, ExpBits, Bias, M> {
    using Base = FmtBase<W, ExpBits, Bias, M>;
    static constexpr int kSignBit = kWidth<W> - 1;
    static typename Base::Parts split(T x) {
        W w = raw_of<T, W>(x);
        return {(w >> kSignBit) != 0, static_cast<int32_t>((w >> M) & Base::kEmax), w & Base::kFracMask};
    }
    static T join(bool neg, int32_t e, W f) {
        return from_raw<T>((W{neg} << kSignBit) | (static_cast<W>(e) & Base::kEmax) << M | (f & Base::kFracMask));
    }
};

template <>
struct Fmt<float> : IeeeFmt<float, uint32_t, 8, 127, 23> {};

template <>
struct Fmt<double> : IeeeFmt<double, uint64_t, 11, 1023, 52> {
    // The fraction bits that share the upper 32-bit word with the exponent.
    static constexpr uint64_t kTopWordFrac = 0xfffffull << 32;
};

template <>
struct Fmt<Real10> : FmtBase<uint64_t, 15, 16383, 63> {
    static constexpr uint64_t kIntegerBit = 1ull << 63;
    static Parts split(Real10 x) {
        Real10Bits b = bits_of(x);
        return {(b.sign_exp >> 15) != 0, b.sign_exp & 0x7fff, b.mantissa & kFracMask};
    }
    static Real10 join(bool neg, int32_t e, uint64_t f) {
        e &= 0x7fff;
        return from_bits(Real10Bits{(f & kFracMask) | (e != 0 ? kIntegerBit : 0),
                                    static_cast<uint16_t>((neg ? 0x8000 : 0) | e)});
    }
    // The exponent has a 16-bit word to itself.
    static constexpr uint64_t kTopWordFrac = 0;
};

template <>
struct Fmt<Quad> : FmtBase<U128, 15, 16383, 112> {
    static Parts split(Quad x) {
        QuadBits b = bits_of(x);
        return {(b.hi >> 63) != 0, static_cast<int32_t>((b.hi >> 48) & 0x7fff), U128(b.hi, b.lo) & kFracMask};
    }
    static Quad join(bool neg, int32_t e, U128 f) {
        f = f & kFracMask;
        uint64_t hi = (uint64_t{neg} << 63) | (static_cast<uint64_t>(e) & 0x7fff) << 48 | f.hi;
        return from_bits(QuadBits{f.lo, hi});
    }
    // The fraction bits that share the top 32-bit word with the exponent.
    static constexpr U128 kTopWordFrac = U128(0xffffull << 32, 0);
};

// The zero test of the model functions: an unordered comparison (a NaN) takes
// the path of an exact zero.  For Quad this is the software comparison.
template <class T>
inline bool zero_path(T x) {
    return !(x < T(0) || x > T(0));
}

// ldexp of each format (the math library's for the wide ones).
inline double ldexp_of(double x, int n) { return std::ldexp(x, n); }
inline Real10 ldexp_of(Real10 x, int n) { return scale_r10(x, n); }
inline Quad ldexp_of(Quad x, int n) { return scale_q(x, n); }

}  // namespace intrins::num
