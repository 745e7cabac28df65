// model.cpp - entry points of EXPONENT, FRACTION, NEAREST, RRSPACING, SCALE,
// SET_EXPONENT and SPACING for REAL(4), REAL(8), REAL(10) and REAL(16); the
// algorithms are the templates of model.h.
#include <cstdint>

#include "args.h"
#include "frame/platform.h"
#include "model.h"

using intrins::Quad;
using intrins::Real10;
using namespace intrins::num;

// The kinds returned by value: suffix, value type, pointee type of arguments.
#define VALUE_KINDS(X, name, fn) X(4, float, float, name, fn) X(8, double, double, name, fn) \
    X(10, Real10, void, name, fn)

#define EXPONENT_ENTRY(k, T, P, name, fn) \
    INTRINS_EXPORT int32_t f90_##name##k(const P* x) { return fn(load<T>(x)); }
#define UNARY_ENTRY(k, T, P, name, fn) \
    INTRINS_EXPORT T f90_##name##k(const P* x) { return fn(load<T>(x)); }
#define WITH_REAL_ENTRY(k, T, P, name, fn) \
    INTRINS_EXPORT T f90_##name##k(const P* x, const P* s) { return fn(load<T>(x), load<T>(s)); }
#define WITH_INT_ENTRY(k, T, P, name, fn) \
    INTRINS_EXPORT T f90_##name##k(const P* x, const int32_t* i) { return fn(load<T>(x), *i); }

#define UNARY(name, fn)                                                                  \
    VALUE_KINDS(UNARY_ENTRY, name, fn)                                                   \
    INTRINS_EXPORT void* f90_##name##16(void* r, const void* x) { return deliver(r, fn(load<Quad>(x))); }
#define WITH_REAL(name, fn)                                                              \
    VALUE_KINDS(WITH_REAL_ENTRY, name, fn)                                               \
    INTRINS_EXPORT void* f90_##name##16(void* r, const void* x, const void* s) {         \
        return deliver(r, fn(load<Quad>(x), load<Quad>(s)));                             \
    }
#define WITH_INT(name, fn)                                                               \
    VALUE_KINDS(WITH_INT_ENTRY, name, fn)                                                \
    INTRINS_EXPORT void* f90_##name##16(void* r, const void* x, const int32_t* i) {      \
        return deliver(r, fn(load<Quad>(x), *i));                                        \
    }

extern "C" {

VALUE_KINDS(EXPONENT_ENTRY, exponent, exponent)
INTRINS_EXPORT int32_t f90_exponent16(const void* x) { return exponent(load<Quad>(x)); }

UNARY(fraction, fraction)
UNARY(rrspacing, rrspacing)
UNARY(spacing, spacing)
WITH_REAL(nearest, nearest)
WITH_INT(scale, scale)
WITH_INT(setexp, set_exponent)

}  // extern "C"
