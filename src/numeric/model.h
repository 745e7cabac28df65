// model.h - the real-model intrinsics EXPONENT, FRACTION, NEAREST, RRSPACING,
// SCALE, SET_EXPONENT and SPACING, one template each over the four formats.
//
// They work on the fields of Fmt<T>.  Rules kept on purpose:
// - the zero test lets a NaN take the zero path (EXPONENT 0, FRACTION and
//   RRSPACING 0.0, SET_EXPONENT returns x, NEAREST steps from it by TINY);
// - NEAREST(0, s) is +-TINY, not the smallest subnormal;
// - SPACING has no zero test: SPACING(0) is TINY, SPACING(Inf) and
//   SPACING(NaN) are large powers of two; REAL(10) builds its result with an
//   all-zero significand (integer bit included) and a wrapping exponent;
// - single precision has its own subnormal rules, made with 32-bit shifts:
//   FRACTION shifts right as a signed word (the bit after the leading one
//   spreads into the sign and exponent, giving a NaN pattern); SCALE and
//   SET_EXPONENT truncate, with shift counts taken modulo 32 as the
//   processor's shifts take them, and SCALE normalises a subnormal to an
//   exponent of 0 minus the shifts;
// - the wider formats follow the double rules: subnormal cases of SCALE and
//   SET_EXPONENT go through ldexp, and SET_EXPONENT of a subnormal joins the
//   word holding x's own exponent (with the new exponent) to the rest of the
//   normalised value.  That word is the upper 32-bit word for double and
//   quad; REAL(10) keeps its exponent in a 16-bit word of its own, so there
//   the join is exact;
// - exponent sums (e + i) wrap in 32 bits, as the processor's do.
// For REAL(10) and REAL(16), where only the rules are given, the double
// steps are carried over to their fields: FRACTION and RRSPACING normalise
// a subnormal with unsigned shifts across the whole fraction, NEAREST's
// subnormal step is the one bit at position (stored bits - 1 + t), and
// SPACING of REAL(16) below the normal range is TINY like single and double
// (only REAL(10) wraps its exponent field).
#pragma once

#include <cstdint>
#include <type_traits>

#include "format.h"
#include "frame/wrap.h"

namespace intrins::num {

template <class T>
inline constexpr bool kSingleRules = std::is_same_v<T, float>;

// The fraction of a subnormal moved up until its leading one reaches the
// hidden position, that one then dropped.
template <class T>
typename Fmt<T>::Bits normalised(typename Fmt<T>::Bits f) {
    return (f << (Fmt<T>::clz_field(f) + 1)) & Fmt<T>::kFracMask;
}

template <class T>
T infinity(bool neg) {
    return Fmt<T>::join(neg, Fmt<T>::kEmax, 0);
}

template <class T>
int32_t exponent(T x) {
    using F = Fmt<T>;
    if (zero_path(x)) return 0;
    auto p = F::split(x);
    if (p.e != 0) return p.e - (F::kBias - 1);
    return -(F::kBias - 1) - F::clz_field(p.f);
}

template <class T>
T fraction(T x) {
    using F = Fmt<T>;
    if (zero_path(x)) return T(0);
    auto p = F::split(x);
    if (p.e != 0) return F::join(p.neg, F::kBias - 1, p.f);
    if constexpr (kSingleRules<T>) {
        // Leading one to bit 31, then out at the top; the signed shift
        // spreads the next bit over bits 31..22.  Exponent and sign are or-ed.
        uint32_t w = p.f << clz(p.f);
        w <<= 1;
        uint32_t r = static_cast<uint32_t>(static_cast<int32_t>(w) >> 9);
        return from_raw<float>(r | (126u << 23) | (uint32_t{p.neg} << 31));
    } else {
        return F::join(p.neg, F::kBias - 1, normalised<T>(p.f));
    }
}

// x + d with d a power of two of the sign of s: TINY from a zero (or NaN),
// otherwise the spacing of x on the side s points to.
template <class T>
T nearest(T x, T s) {
    using F = Fmt<T>;
    using B = typename F::Bits;
    const bool down = F::split(s).neg;
    T d;
    if (zero_path(x)) {
        d = F::join(down, 1, 0);
    } else {
        auto p = F::split(x);
        int32_t t = (p.f == B(0) && p.neg != down) ? p.e - F::kDigits : p.e - F::kFrac;
        if (t >= 1) {
            d = F::join(down, t, 0);
        } else {
            int pos = F::kFrac - 1 + t;  // the one bit of a subnormal step
            d = F::join(down, 0, pos >= 0 ? B(1) << pos : B(1));
        }
    }
    return x + d;
}

template <class T>
T rrspacing(T x) {
    using F = Fmt<T>;
    if (zero_path(x)) return T(0);
    auto p = F::split(x);
    return F::join(false, F::kBias + F::kFrac, p.e != 0 ? p.f : normalised<T>(p.f));
}

template <class T>
T spacing(T x) {
    using F = Fmt<T>;
    auto p = F::split(x);
    if constexpr (std::is_same_v<T, Real10>) {
        // Significand all zero, exponent field (e - 64) mod 2^15, 0 made 1.
        uint16_t field = static_cast<uint16_t>((p.e - F::kDigits) & 0x7fff);
        return from_bits(Real10Bits{0, field == 0 ? uint16_t{1} : field});
    } else {
        int32_t t = p.e - F::kFrac;
        return F::join(false, t >= 1 ? t : 1, 0);
    }
}

template <class T>
T scale(T x, int32_t i) {
    using F = Fmt<T>;
    auto p = F::split(x);
    if (p.e == F::kEmax || i == 0 || zero_path(x)) return x;
    if constexpr (kSingleRules<T>) {
        int32_t e = p.e;
        uint32_t sig = p.f | F::kHidden;
        if (e == 0) {  // normalise: e becomes 0 minus the shifts
            int k = F::clz_field(p.f) + 1;
            sig = p.f << k;
            e = -k;
        }
        int32_t n = wadd(e, i);
        if (n >= F::kEmax) return infinity<T>(p.neg);
        if (n >= 1) return F::join(p.neg, n, sig);
        const uint32_t sign = uint32_t{p.neg} << 31;
        if (p.e != 0)  // top of the significand at bit 22, shift count mod 32
            return from_raw<float>(sign | (sig >> 1) >> ((0u - static_cast<uint32_t>(n)) & 31));
        if (i >= 0) return from_raw<float>(sign | (sig >> -e) << i);
        if (n > -F::kDigits) return from_raw<float>(sign | sig >> -n);
        return 0.0f;  // the sign is not kept here
    } else {
        if (p.e != 0) {
            int32_t n = wadd(p.e, i);
            if (n >= F::kEmax) return infinity<T>(p.neg);
            if (n >= 1) return F::join(p.neg, n, p.f);
        }
        return ldexp_of(x, i);
    }
}

template <class T>
T set_exponent(T x, int32_t i) {
    using F = Fmt<T>;
    if (zero_path(x)) return x;
    auto p = F::split(x);
    const int32_t n = wadd(i, F::kBias - 1);
    if (n >= F::kEmax) return infinity<T>(p.neg);
    if constexpr (kSingleRules<T>) {
        uint32_t sig = p.e != 0 ? p.f | F::kHidden : p.f << (F::clz_field(p.f) + 1);
        if (n >= 1) return F::join(p.neg, n, sig);
        uint32_t r = (sig >> 1) >> ((0u - static_cast<uint32_t>(n)) & 31);
        return from_raw<float>((uint32_t{p.neg} << 31) | r);
    } else {
        T y = p.e != 0 ? x : ldexp_of(x, F::kDigits);
        auto q = F::split(y);
        y = F::join(q.neg, 1, q.f);
        if (n < 1) return ldexp_of(y, wadd(i, F::kBias - 2));
        return F::join(p.neg, n, (p.f & F::kTopWordFrac) | (q.f & ~F::kTopWordFrac));
    }
}

}  // namespace intrins::num
