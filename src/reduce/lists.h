// lists.h - every reduction entry point, one X-macro list per family.
// Each list entry names the suffix and the element tag (src/frame/kinds.h);
// the family's .cpp stamps one thin extern "C" function per entry.
#pragma once

#include <cstdint>

#include "frame/kinds.h"

// LOGICAL kinds: suffix, element type.
#define REDUCE_LOGICAL_KINDS(X) X(1, int8_t) X(2, int16_t) X(4, int32_t) X(8, int64_t)

#define REDUCE_INT_KINDS(X) X(i1, int8_t) X(i2, int16_t) X(i4, int32_t) X(i8, int64_t)
#define REDUCE_REAL_KINDS(X) X(r4, float) X(r8, double) X(r10, intrins::R10) X(r16, intrins::Quad)
#define REDUCE_COMPLEX_KINDS(X)                                                                   \
    X(c8, intrins::Cplx<float>) X(c16, intrins::Cplx<double>) X(c20, intrins::Cplx<intrins::R10>) \
    X(c32, intrins::Cplx<intrins::Quad>)

// SUM and PRODUCT: every INTEGER, REAL and COMPLEX kind.
#define REDUCE_SUM_KINDS(X) REDUCE_INT_KINDS(X) REDUCE_REAL_KINDS(X) REDUCE_COMPLEX_KINDS(X)
// MAXVAL, MINVAL, MAXLOC, MINLOC: INTEGER and REAL.
#define REDUCE_ORDERED_KINDS(X) REDUCE_INT_KINDS(X) REDUCE_REAL_KINDS(X)
// The 8-byte-result MAXLOC and MINLOC: no REAL(10), REAL(16).
#define REDUCE_KLOC_KINDS(X) REDUCE_INT_KINDS(X) X(r4, float) X(r8, double)
// DOT_PRODUCT: numeric kinds, and LOGICAL with an l suffix.
#define REDUCE_DOT_KINDS(X) REDUCE_SUM_KINDS(X)
#define REDUCE_DOT_LOGICAL_KINDS(X) X(l1, int8_t) X(l2, int16_t) X(l4, int32_t) X(l8, int64_t)
