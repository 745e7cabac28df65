// engines.h - which engine each type runs.  The native types go to the tiled
// engines (packing, SIMD register tiles, chosen at run time); the REAL(10),
// REAL(16), COMPLEX(20) and COMPLEX(32) kernels run the blocked engines of
// kernels.h; LOGICAL runs its early-exit scan.
#pragma once

#include "kernels.h"

namespace intrins::mm {

template <class T, Family F = MmType<T>::family>
struct Engines : Blocked<T> {};
template <class T>
struct Engines<T, Family::Logical> : LogicalEngines<T> {};

}  // namespace intrins::mm
