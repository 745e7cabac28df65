// engines.h - which engine each type runs.  The native types go to the tiled
// engines (packing, SIMD register tiles; the instruction set is chosen at run
// time, dispatch.cpp); the REAL(10), REAL(16), COMPLEX(20) and COMPLEX(32)
// kernels run the blocked engines of kernels.h; LOGICAL runs its scan.
#pragma once

#include "kernels.h"

namespace intrins::mm {

// One type's three engines, as a table entry; one entry per native type.
struct EngineSet {
    void (*mm)(int32_t, int32_t, int32_t, const void*, int32_t, int32_t, const void*, int32_t, int32_t, void*,
               int32_t, int32_t);
    void (*vm)(int32_t, int32_t, const void*, int32_t, const void*, int32_t, int32_t, void*, int32_t);
    void (*mv)(int32_t, int32_t, const void*, int32_t, int32_t, const void*, int32_t, void*, int32_t);
};
#define X(T, ...) EngineSet T;
struct EngineTable {
    MM_NATIVE_TYPES(X)
};
#undef X

// The table for this processor, chosen once; `narrow` asks for one whose
// vectors are at most 32 bytes, for products with fewer rows than a 64-byte
// vector has lanes (results are the same bits either way).
const EngineTable& engine_table(bool narrow = false);

template <EngineSet EngineTable::*Member>
struct TableEngines {
    template <class... A>
    static void engine2x2(int32_t M, A... a) { (engine_table(M < 16).*Member).mm(M, a...); }
    template <class... A>
    static void engine1x2(A... a) { (engine_table().*Member).vm(a...); }
    template <class... A>
    static void engine2x1(A... a) { (engine_table().*Member).mv(a...); }
};

template <class T, Family F = MmType<T>::family>
struct Engines : Blocked<T> {};
template <class T>
struct Engines<T, Family::Logical> : LogicalEngines<T> {};
#define X(T, ...) \
    template <>   \
    struct Engines<T> : TableEngines<&EngineTable::T> {};
MM_NATIVE_TYPES(X)
#undef X

}  // namespace intrins::mm
