// runtime.h - the storage services imported from the runtime-support library
// (libzamtf90md).  The intrinsic library never defines them, so that a
// compiler's own runtime can stand in.
#pragma once

#include "intrins.h"

namespace intrins {

// Storage for a result or a provisional block; not tested for null.
inline void* getspace(Word nbytes) { return f90_getspace(nbytes); }
inline void freespace(void* p) { f90_freespace(p); }

}  // namespace intrins
