// descriptor.h - internal view of the array descriptor and the argument list:
// layout pins, per-dimension helpers, and the bounds-check switch.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "intrins.h"
#include "platform.h"

// Layout pins: these records are the binary interface with compiled code.
static_assert(offsetof(ArrDesc, ZERO) == 0);
#if INTRINS_64BIT
static_assert(offsetof(ArrDesc, BASE) == 8);
static_assert(offsetof(ArrDesc, EXTENT) == 16);
static_assert(offsetof(ArrDesc, ELSIZE) == 20);
static_assert(offsetof(ArrDesc, SCALEFACTOR) == 24);
static_assert(offsetof(ArrDesc, RANK) == 28);
static_assert(offsetof(ArrDesc, NONCONTIG) == 29);
static_assert(offsetof(ArrDesc, RESERVED) == 30);
static_assert(offsetof(ArrDesc, DIM) == 32);
static_assert(sizeof(ArrDesc) == 120);
static_assert(sizeof(ArgList) == 96);
static_assert(offsetof(ArgList, Flags) == 8);
static_assert(offsetof(ArgList, Result) == 16);
static_assert(offsetof(ArgList, ARG1) == 32);
static_assert(offsetof(ArgList, ARG4) == 80);
#else
static_assert(offsetof(ArrDesc, BASE) == 4);
static_assert(offsetof(ArrDesc, EXTENT) == 8);
static_assert(offsetof(ArrDesc, ELSIZE) == 12);
static_assert(offsetof(ArrDesc, SCALEFACTOR) == 16);
static_assert(offsetof(ArrDesc, RANK) == 20);
static_assert(offsetof(ArrDesc, NONCONTIG) == 21);
static_assert(offsetof(ArrDesc, RESERVED) == 22);
static_assert(offsetof(ArrDesc, DIM) == 24);
static_assert(sizeof(ArrDesc) == 108);
static_assert(sizeof(ArgList) == 48);
static_assert(offsetof(ArgList, Flags) == 4);
static_assert(offsetof(ArgList, Result) == 8);
static_assert(offsetof(ArgList, ARG1) == 16);
static_assert(offsetof(ArgList, ARG4) == 40);
#endif
static_assert(offsetof(ArgList, Shape) == 0);
static_assert(offsetof(ArgList, Presence) == 2);
static_assert(sizeof(ArrDim) == 12);
static_assert(offsetof(ArrDescChecked, desc) == 8);

extern "C" {
// Bounds-check switch: a 32-bit word in the library's writable data, off.
// Nothing in the library turns it on; it is not exported.
extern int32_t ArrBoundsCheck;
}

namespace intrins {

// The two bounds-check words directly ahead of a descriptor.
inline int32_t* low_offset(const ArrDesc* d) {
    return reinterpret_cast<int32_t*>(const_cast<ArrDesc*>(d)) - 2;
}
inline int32_t* high_offset(const ArrDesc* d) {
    return reinterpret_cast<int32_t*>(const_cast<ArrDesc*>(d)) - 1;
}

// Extent of dimension d (0-based): UPPER - LOWER + 1, or 0 when empty.
inline int32_t extent(const ArrDesc& a, int d) {
    int32_t e = a.DIM[d].UPPER - a.DIM[d].LOWER + 1;
    return e < 0 ? 0 : e;
}

// Byte distance between neighbours along dimension d (0-based).
inline std::ptrdiff_t byte_step(const ArrDesc& a, int d) {
    return static_cast<std::ptrdiff_t>(a.DIM[d].STRIDE) * a.SCALEFACTOR;
}

inline int rank(const ArrDesc& a) { return a.RANK > 0 ? a.RANK : 0; }

// A shape list as f90_ArrLibError's "@G" reads it: a count, then the extents.
struct ShapeList {
    int32_t count = 0;
    int32_t extent[F90_MAXDIM] = {};
};
static_assert(offsetof(ShapeList, extent) == 4);

}  // namespace intrins
