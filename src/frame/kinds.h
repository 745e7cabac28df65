// kinds.h - the element types of the arithmetic families, one table.
//
// Kind<E> gives, for an element tag E, the value type the code computes with,
// the slot size an element occupies in the arithmetic families, and load/store
// between a slot and a value.  REAL(10) values sit in 16-byte slots there
// (value in the first 10 bytes); the data movers use raw byte sizes instead.
#pragma once

#include <cstdint>
#include <cstring>

#include "../extended/floatxxx.h"

namespace intrins {

// Element tags for the kinds whose storage differs from a plain C++ type.
struct R10 {};  // REAL(10) in a 16-byte slot
template <class T>
struct Cplx {
    T re, im;
};

template <class E>
struct Kind {  // plain types: INTEGER, LOGICAL, REAL(4), REAL(8)
    using value = E;
    static constexpr std::size_t size = sizeof(E);
    static value load(const void* p) {
        value v;
        std::memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(void* p, value v) { std::memcpy(p, &v, sizeof v); }
};

template <>
struct Kind<R10> {
    using value = Real10;
    static constexpr std::size_t size = kReal10Slot;
    static value load(const void* p) { return load_r10(p); }
    static void store(void* p, value v) { store_r10(p, v); }
};

template <>
struct Kind<Quad> {
    using value = Quad;
    static constexpr std::size_t size = 16;
    static value load(const void* p) { return load_q(p); }
    static void store(void* p, value v) { store_q(p, v); }
};

template <class E>
struct Kind<Cplx<E>> {
    using part = Kind<E>;
    using value = Cplx<typename part::value>;
    static constexpr std::size_t size = 2 * part::size;
    static value load(const void* p) {
        auto* b = static_cast<const char*>(p);
        return {part::load(b), part::load(b + part::size)};
    }
    static void store(void* p, const value& v) {
        auto* b = static_cast<char*>(p);
        part::store(b, v.re);
        part::store(b + part::size, v.im);
    }
};

// A logical element of any kind is true when any bit is set.
template <class L>
inline bool logical_true(const void* p) {
    return Kind<L>::load(p) != 0;
}

}  // namespace intrins
