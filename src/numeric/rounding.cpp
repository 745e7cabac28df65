// rounding.cpp - entry points of CEILING, FLOOR, MODULO and MVBITS, and the
// kind inquiries SELECTED_INT_KIND and SELECTED_REAL_KIND.
#include <quadmath.h>

#include <cstdint>
#include <cstdlib>

#include "args.h"
#include "frame/call.h"
#include "frame/platform.h"
#include "intrins.h"
#include "rounding.h"

namespace intrins::num {

void divide_fault() {
    int32_t n = INT32_MIN;
    const int32_t d = -1;
    __asm__ volatile("cltd\n\tidivl %1" : "+a"(n) : "r"(d) : "edx", "cc");
    std::abort();  // not reached: the division faults
}

Quad fmod_of(Quad a, Quad p) { return fmodq(a, p); }

// SELECTED_INT_KIND(R).
int32_t int_kind(int32_t r) {
    if (r <= 1) return 1;
    if (r <= 4) return 2;
    if (r <= 9) return 4;
    if (r <= 18) return 8;
    return -1;
}

// SELECTED_REAL_KIND by range alone; `fail` when no kind has it.
int32_t real_kind_for_range(int32_t r, int32_t smallest, int32_t fail) {
    if (r <= 37 && smallest <= 4) return 4;
    if (r <= 307 && smallest <= 8) return 8;
    if (r <= 4932) return smallest <= 10 ? 10 : 16;
    return fail;
}

// SELECTED_REAL_KIND(P, R) with the presence of each.  With both given, any
// unmet requirement gives -3; without P, R is read as it stands and decides.
int32_t real_kind(bool has_p, int32_t p, bool has_r, int32_t r) {
    if (!has_p) return real_kind_for_range(r, 4, -2);
    if (!has_r) {
        if (p <= 6) return 4;
        if (p <= 15) return 8;
        if (p <= 19) return 10;
        if (p <= 33) return 16;
        return -1;
    }
    if (p <= 0 && r <= 0) return 4;
    if (p <= 6) return real_kind_for_range(r, 4, -3);
    if (p <= 15) return real_kind_for_range(r, 8, -3);
    if (p <= 19) return real_kind_for_range(r, 10, -3);
    if (p <= 33) return real_kind_for_range(r, 16, -3);
    return -3;
}

}  // namespace intrins::num

using intrins::Quad;
using intrins::Real10;
using namespace intrins::num;

// CEILING and FLOOR: name, argument pointee, argument type, computing type,
// result, lower and upper bound, out-of-range value.
#define ROUNDING_ENTRIES(X)                                                                       \
    X(ceiling4, float, float, double, int32_t, -2147483648.0, 2147483648.0, INT32_MIN)            \
    X(ceiling8, double, double, double, int32_t, -2147483648.0, 2147483647.0, INT32_MIN)          \
    X(ceiling10, void, Real10, Real10, int32_t, -2147483648.0L, 2147483647.0L, INT32_MIN)         \
    X(ceilingh4, float, float, double, int16_t, -32768.0, 32767.0, 0)                             \
    X(ceilingh8, double, double, double, int16_t, -32768.0, 32767.0, 0)                           \
    X(ceilingh10, void, Real10, Real10, int16_t, -32768.0L, 32767.0L, 0)                          \
    X(ceilingk4, float, float, double, int64_t, -9.223372036854776e18, 9.223372036854776e18,      \
      int64_t{2147483648})                                                                        \
    X(ceilingk8, double, double, double, int64_t, -9.223372036854776e18, 9.223372036854776e18,    \
      int64_t{2147483648})                                                                        \
    X(ceilingk10, void, Real10, Real10, int64_t, -9.223372036854776e18L, 9.223372036854776e18L,   \
      int64_t{2147483648})                                                                        \
    X(floor4, float, float, double, int32_t, -2147483648.0, 2147483648.0, INT32_MIN)              \
    X(floor10, void, Real10, Real10, int32_t, -2147483648.0L, 2147483647.0L, INT32_MIN)           \
    X(floorh10, void, Real10, Real10, int16_t, -32768.0L, 32767.0L, 0)                            \
    X(floork10, void, Real10, Real10, int64_t, -9.223372036854776e18L, 9.223372036854776e18L,     \
      int64_t{2147483648})

// REAL(16): one function under two names each.
#define ROUNDING_ENTRIES_16(X)                                                                    \
    X(ceiling16, floor16, int32_t, -2147483648.0, 2147483647.0, INT32_MIN)                        \
    X(ceilingh16, floorh16, int16_t, -32768.0, 32767.0, 0)                                        \
    X(ceilingk16, floork16, int64_t, -9.223372036854776e18, 9.223372036854776e18, int64_t{2147483648})

#define MODULO_ENTRIES(X)                                                                         \
    X(moduloi1, int8_t, modulo_int) X(moduloi2, int16_t, modulo_int) X(moduloi4, int32_t, modulo_int) \
    X(moduloi8, int64_t, modulo_int) X(modulor4, float, modulo_real) X(modulor8, double, modulo_real)

#define MVBITS_ENTRIES(X) X(mvbits1, int8_t) X(mvbits2, int16_t) X(mvbits4, int32_t) X(mvbits8, int64_t)

extern "C" {

#define X(name, P, A, T, R, lo, hi, out) \
    INTRINS_EXPORT R f90_##name(const P* x) { return ceiling<R, T>(load<A>(x), lo, hi, out); }
ROUNDING_ENTRIES(X)
#undef X

INTRINS_EXPORT int32_t f90_floor8(const double* x) {
    return floor_sign<double>(*x, -2147483648.0, 2147483647.0, INT32_MIN);
}

#define X(name, other, R, lo, hi, out)                                                        \
    INTRINS_EXPORT R f90_##name(const void* x) { return ceiling<R, Quad>(load<Quad>(x), lo, hi, out); } \
    INTRINS_EXPORT R f90_##other(const void* x) __attribute__((alias("f90_" #name)));
ROUNDING_ENTRIES_16(X)
#undef X

#define X(name, T, fn) \
    INTRINS_EXPORT T f90_##name(const T* a, const T* p) { return fn<T>(*a, *p); }
MODULO_ENTRIES(X)
#undef X
INTRINS_EXPORT Real10 f90_modulor10(const void* a, const void* p) {
    return modulo_real(load<Real10>(a), load<Real10>(p));
}
INTRINS_EXPORT void* f90_modulor16(void* r, const void* a, const void* p) {
    return deliver(r, modulo_real(load<Quad>(a), load<Quad>(p)));
}

#define X(name, T)                                                                               \
    INTRINS_EXPORT void f90_##name(T from, const int32_t* frompos, const int32_t* len, T* to,     \
                                   const int32_t* topos) {                                       \
        mvbits<T>(from, *frompos, *len, to, *topos);                                             \
    }
MVBITS_ENTRIES(X)
#undef X

// SELECTED_INT_KIND: R by value in ARG 1; the kind, 32-bit, in Result.
INTRINS_EXPORT void f90_selintkind(ArgList* a) {
    intrins::Call c(a);
    c.result().write(int_kind(c.arg(1).i32()));
}

// SELECTED_REAL_KIND: P by value in ARG 1, R in ARG 2, present as Presence
// bits 1 and 2 say.
INTRINS_EXPORT void f90_selrealkind(ArgList* a) {
    intrins::Call c(a);
    c.result().write(real_kind(c.present(1), c.arg(1).i32(), c.present(2), c.arg(2).i32()));
}

}  // extern "C"
