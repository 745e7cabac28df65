// arith.h - the arithmetic of the reductions, one table per element kind.
//
// Arith<E> gives, for an element tag of src/frame/kinds.h, the accumulator the
// numeric reductions carry and the conversions into and out of it:
//   INTEGER(1/2/4): an unsigned 32-bit accumulator, truncated to the kind on
//                   store (wrap-around modulo 2^8/2^16/2^32 is the same thing);
//   INTEGER(8):     unsigned 64-bit;
//   REAL(4), REAL(8): double (REAL(4) widened per element, rounded once);
//   REAL(10):       the x87 80-bit format; REAL(16): binary128;
//   COMPLEX:        a pair of the part's accumulators.
// Unsigned accumulators make the wrap-around defined behaviour.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/kinds.h"

namespace intrins::reduce {

template <class E>
struct Arith {
    using value = typename Kind<E>::value;
    using acc = std::conditional_t<std::is_floating_point_v<E>, double,
                                   std::conditional_t<sizeof(E) == 8, uint64_t, uint32_t>>;
    static acc widen(value v) { return static_cast<acc>(v); }
    static value narrow(acc a) { return static_cast<value>(a); }
};
// REAL(10) and REAL(16) accumulate in their own format.
template <class E>
struct OwnArith {
    using value = typename Kind<E>::value;
    using acc = value;
    static acc widen(value v) { return v; }
    static value narrow(acc a) { return a; }
};
template <>
struct Arith<R10> : OwnArith<R10> {};
template <>
struct Arith<Quad> : OwnArith<Quad> {};
template <class E>
struct Arith<Cplx<E>> {
    using part = Arith<E>;
    using value = typename Kind<Cplx<E>>::value;
    using acc = Cplx<typename part::acc>;
    static acc widen(const value& v) { return {part::widen(v.re), part::widen(v.im)}; }
    static value narrow(const acc& a) { return {part::narrow(a.re), part::narrow(a.im)}; }
};

template <class E>
inline constexpr bool is_complex = false;
template <class E>
inline constexpr bool is_complex<Cplx<E>> = true;

// Integers wrap: the product of two unsigned values narrower than int would
// be promoted to (signed) int, so multiply in the accumulator's own width.
template <class T>
inline T mul(T a, T b) {
    if constexpr (std::is_unsigned_v<T>) {
        using W = std::conditional_t<(sizeof(T) < sizeof(unsigned)), unsigned, T>;
        return static_cast<T>(static_cast<W>(a) * static_cast<W>(b));
    } else {
        return a * b;
    }
}

template <class T>
inline Cplx<T> operator+(const Cplx<T>& a, const Cplx<T>& b) {
    return {a.re + b.re, a.im + b.im};
}
// Product step: accumulator (a, b) times element (x, y) gives
// (x*a - y*b, b*x + a*y), both parts from the old values.
template <class T>
inline Cplx<T> operator*(const Cplx<T>& acc, const Cplx<T>& e) {
    return {e.re * acc.re - e.im * acc.im, acc.im * e.re + acc.re * e.im};
}

template <class E>
inline typename Arith<E>::acc zero() {
    if constexpr (is_complex<E>) return {0, 0};
    else return typename Arith<E>::acc(0);
}
template <class E>
inline typename Arith<E>::acc one() {
    if constexpr (is_complex<E>) return {1, 0};
    else return typename Arith<E>::acc(1);
}

}  // namespace intrins::reduce
