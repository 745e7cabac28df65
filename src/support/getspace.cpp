// getspace.cpp - libzamtf90md, the runtime-support library: the storage
// services the intrinsic library imports.  A compiler's own runtime may
// provide these two names instead.
#include <cstdio>
#include <cstdlib>

#include "intrins.h"

#if defined(_WIN32)
#define ZAMT_EXPORT __declspec(dllexport)
#else
#define ZAMT_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

// A block of at least nbytes bytes.  A request of 0 bytes still returns a
// valid, distinct block; a failed allocation ends the program.
ZAMT_EXPORT void* f90_getspace(F90Word nbytes) {
    void* p = std::malloc(nbytes ? nbytes : 1);
    if (!p) {
        std::fprintf(stderr, "f90_getspace: cannot allocate %llu bytes\n", static_cast<unsigned long long>(nbytes));
        std::fflush(stderr);
        std::exit(1);
    }
    return p;
}

ZAMT_EXPORT void f90_freespace(void* p) { std::free(p); }

}  // extern "C"
