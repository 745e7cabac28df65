// traits.h - the element types of MATMUL and their arithmetic, one table.
//
// MmType<Tag> gives, per kernel type word (Int4, Real8, Complex20, ...):
//   elem     the storage tag of kinds.h (REAL(10) in a 16-byte slot);
//   Acc      the type a dot product is carried in: integers in an unsigned
//            type of at least their width (sums wrap; truncation on store
//            gives the same bits as wrapping in the element's own width),
//            REAL(4)/REAL(8) in double, REAL(10) in long double, REAL(16) in
//            binary128 held as bits (qfast::Q128), COMPLEX as a pair of the
//            part's accumulator;
//   blocks   column block, row block, K block, panel rows, vector k chunk.
//
// The per-element arithmetic that every kernel shares lives in Arith<T>:
//   s = 0; for k in increasing order: s = s + A(k) * B(k)   (never fused)
//   C = accumulate ? C + s : s, rounded to the element type on the store.
// COMPLEX products are (ar br - ai bi, ar bi + ai br).
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "extended/quadfast.h"
#include "frame/kinds.h"
#include "split10.h"

namespace intrins::mm {

struct Blocks {
    int col, row, kblk, panel, chunk;
};

enum class Family { Integer, Logical, Real, Complex };

template <class E, class A, Family F, Blocks B>
struct TypeBase {
    using elem = E;
    using Acc = A;
    static constexpr Family family = F;
    static constexpr Blocks blocks = B;
    static constexpr std::size_t size = Kind<E>::size;
};

template <class Tag>
struct MmType;

// One line per kernel type word: tag, element, accumulator, family, blocks.
#define MM_NATIVE_TYPES(X)                                                                    \
    X(Int1, int8_t, uint32_t, Integer, (Blocks{256, 128, 128, 32, 1536}))                      \
    X(Int2, int16_t, uint32_t, Integer, (Blocks{128, 128, 64, 32, 512}))                       \
    X(Int4, int32_t, uint32_t, Integer, (Blocks{96, 96, 64, 16, 256}))                         \
    X(Int8, int64_t, uint64_t, Integer, (Blocks{64, 64, 64, 8, 256}))                          \
    X(Real4, float, double, Real, (Blocks{128, 128, 64, 16, 512}))                             \
    X(Real8, double, double, Real, (Blocks{64, 64, 64, 8, 256}))                               \
    X(Complex8, Cplx<float>, Cplx<double>, Complex, (Blocks{64, 128, 32, 16, 256}))            \
    X(Complex16, Cplx<double>, Cplx<double>, Complex, (Blocks{96, 64, 32, 8, 128}))
#define MM_EXTENDED_TYPES(X)                                                                  \
    X(Real10, R10, long double, Real, (Blocks{64, 64, 32, 8, 128}))                            \
    X(Real16, Quad, qfast::Q128, Real, (Blocks{64, 64, 32, 8, 128}))                                \
    X(Complex20, Cplx<R10>, Cplx<long double>, Complex, (Blocks{64, 64, 32, 8, 128}))          \
    X(Complex32, Cplx<Quad>, Cplx<qfast::Q128>, Complex, (Blocks{64, 64, 32, 8, 128}))
#define MM_LOGICAL_TYPES(X)                                    \
    X(Log1, int8_t, uint32_t, Logical, (Blocks{0, 0, 0, 0, 0})) \
    X(Log2, int16_t, uint32_t, Logical, (Blocks{0, 0, 0, 0, 0})) \
    X(Log4, int32_t, uint32_t, Logical, (Blocks{0, 0, 0, 0, 0})) \
    X(Log8, int64_t, uint64_t, Logical, (Blocks{0, 0, 0, 0, 0}))

// The native types that have movers of their own (REAL(4) uses Int4's).
#define MM_MOVER_TYPES(X) X(Int1) X(Int2) X(Int4) X(Int8) X(Real8) X(Complex8) X(Complex16)

#define X(tag, E, A, F, B)                                 \
    struct tag {};                                         \
    template <>                                            \
    struct MmType<tag> : TypeBase<E, A, Family::F, B> {};
MM_NATIVE_TYPES(X)
MM_EXTENDED_TYPES(X)
MM_LOGICAL_TYPES(X)
#undef X

// The operations of one accumulator part.  Binary128 parts are carried as
// qfast::Q128, whose overloads (found by argument-dependent lookup) give the
// operators' bits by the fast routines of quadfast.h.
template <class P>
inline P mul(P a, P b) { return a * b; }
template <class P>
inline P add(P a, P b) { return a + b; }
template <class P>
inline P sub(P a, P b) { return a - b; }

// Accumulators held as integer bit patterns (binary128).
template <class A>
inline constexpr bool kIntegerHeld = std::is_same_v<A, qfast::Q128> || std::is_same_v<A, Cplx<qfast::Q128>>;

// One accumulator value P from an element slot of kind KP (a real element or
// one part of a complex one).  Split: the slot holds a packed (hi, lo) pair
// (split10.h).  A REAL(10) slot is 16 bytes: the whole register image is read
// in one piece (the extended load takes its 10 bytes), which avoids
// assembling the value from partial copies on every element.  Integers widen
// through their unsigned type, so that sums wrap.
template <bool Split, class P, class KP>
inline P load_slot(const void* p) {
    if constexpr (Split) {
        return join_r10(p);
    } else if constexpr (std::is_same_v<P, long double>) {
        long double v;
        std::memcpy(&v, p, sizeof v);
        return v;
    } else if constexpr (kIntegerHeld<P>) {
        return P::load(p);
    } else {
        const auto v = KP::load(p);
        if constexpr (std::is_integral_v<decltype(v)>)
            return static_cast<P>(static_cast<std::make_unsigned_t<decltype(v)>>(v));
        else
            return static_cast<P>(v);
    }
}

template <class T, bool Cx = (MmType<T>::family == Family::Complex)>
struct Arith;

// Integers and reals.
template <class T>
struct Arith<T, false> {
    using E = typename MmType<T>::elem;
    using K = Kind<E>;
    using Acc = typename MmType<T>::Acc;
    using V = typename K::value;
    static Acc zero() { return Acc(0); }
    // Split: the slot holds a packed (hi, lo) pair (split10.h).
    template <bool Split = false>
    static Acc load(const void* p) {
        return load_slot<Split, Acc, K>(p);
    }
    static Acc fma(Acc s, Acc a, Acc b) {  // s + a*b, two roundings
        Acc p = mul(a, b);
        return add(s, p);
    }
    static void put(void* c, bool accumulate, Acc s) {
        if (accumulate) s = add(load(c), s);
        K::store(c, static_cast<V>(s));
    }
};

template <class T>
struct Arith<T, true> {
    using E = typename MmType<T>::elem;
    using K = Kind<E>;
    using Acc = typename MmType<T>::Acc;
    using P = decltype(Acc{}.re);
    static Acc zero() { return Acc{P(0), P(0)}; }
    template <bool Split = false>
    static P load_part(const char* p) {
        return load_slot<Split, P, typename K::part>(p);
    }
    template <bool Split = false>
    static Acc load(const void* p) {
        const char* b = static_cast<const char*>(p);
        return Acc{load_part<Split>(b), load_part<Split>(b + K::part::size)};
    }
    static Acc fma(Acc s, Acc a, Acc b) {
        P rr = mul(a.re, b.re), ii = mul(a.im, b.im), ri = mul(a.re, b.im), ir = mul(a.im, b.re);
        P pr = sub(rr, ii), pi = add(ri, ir);
        // The vectorizer's complex patterns would fuse these into
        // multiply-add-subtract instructions where the target has them,
        // whatever the contraction setting; an empty barrier keeps the
        // product's two roundings.
        if constexpr (std::is_same_v<P, double>) asm("" : "+x"(pr), "+x"(pi));
        return Acc{add(s.re, pr), add(s.im, pi)};
    }
    static void put(void* c, bool accumulate, Acc s) {
        if (accumulate) {
            Acc o = load(c);
            s = Acc{add(o.re, s.re), add(o.im, s.im)};
        }
        using VP = decltype(typename K::value{}.re);
        K::store(c, typename K::value{static_cast<VP>(s.re), static_cast<VP>(s.im)});
    }
};

// Byte address of element i along a stride given in elements.
template <class T>
inline char* at(const void* p, std::intptr_t i, std::intptr_t stride) {
    return reinterpret_cast<char*>(reinterpret_cast<std::uintptr_t>(p) +
                                   static_cast<std::uintptr_t>(i * stride * static_cast<std::intptr_t>(MmType<T>::size)));
}
template <class T>
inline char* at2(const void* p, std::intptr_t i, std::intptr_t s1, std::intptr_t k, std::intptr_t s2) {
    return reinterpret_cast<char*>(reinterpret_cast<std::uintptr_t>(p) +
                                   static_cast<std::uintptr_t>((i * s1 + k * s2) * static_cast<std::intptr_t>(MmType<T>::size)));
}

// The K partition every engine follows, in order: the remainder first (its
// part that is a multiple of `split`, then the rest), then the full blocks in
// increasing k.  f(k0, count, accumulate) is called once per piece; the first
// piece stores, the others add.  K <= 0 gives one empty storing piece (zeros).
// When the remainder is empty the first full block stores where the blocked
// algorithm clears C and then adds: 0 + s equals s bit for bit, since a dot
// product that starts from +0 can never be -0.
template <class F>
inline void for_each_piece(int32_t K, int32_t kblk, int32_t split, F&& f) {
    if (K < 0) K = 0;
    const int32_t full = K / kblk * kblk, rest = K - full, even = rest / split * split;
    bool first = true;
    if (even > 0) { f(full, even, false); first = false; }
    if (rest - even > 0) { f(full + even, rest - even, !first); first = false; }
    for (int32_t k0 = 0; k0 < full; k0 += kblk) { f(k0, kblk, !first); first = false; }
    if (first) f(0, 0, false);
}

}  // namespace intrins::mm
