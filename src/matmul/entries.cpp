// entries.cpp - the multiply kernels' entry points, stamped from the type
// lists of traits.h.  The native types' kernels are exported; the REAL(10),
// REAL(16), COMPLEX(20) and COMPLEX(32) kernels keep the same names and
// argument lists but stay inside the library (hidden visibility, not in the
// export list).  REAL(4) has no movers of its own: the Int4 ones move its
// 4-byte patterns.
#include "engines.h"
#include "frame/platform.h"

using namespace intrins::mm;

#define MM_ENGINES(T, VIS)                                                                                     \
    extern "C" VIS void f90_Engine2x2##T(int32_t M, int32_t N, int32_t K, const void* A, int32_t a1, int32_t a2, \
                                         const void* B, int32_t b1, int32_t b2, void* C, int32_t c1, int32_t c2) { \
        Engines<T>::engine2x2(M, N, K, A, a1, a2, B, b1, b2, C, c1, c2);                                       \
    }                                                                                                          \
    extern "C" VIS void f90_Engine1x2##T(int32_t N, int32_t K, const void* A, int32_t as, const void* B,       \
                                         int32_t b1, int32_t b2, void* C, int32_t cs) {                        \
        Engines<T>::engine1x2(N, K, A, as, B, b1, b2, C, cs);                                                  \
    }                                                                                                          \
    extern "C" VIS void f90_Engine2x1##T(int32_t M, int32_t K, const void* A, int32_t a1, int32_t a2,         \
                                         const void* B, int32_t bs, void* C, int32_t cs) {                     \
        Engines<T>::engine2x1(M, K, A, a1, a2, B, bs, C, cs);                                                  \
    }

#define MM_COMPUTE(T, VIS)                                                                                     \
    MM_ENGINES(T, VIS)                                                                                         \
    extern "C" VIS void f90_Inner2x2##T(int32_t acc, int32_t rows, int32_t ncols, int32_t kcount,              \
                                        const void* panel, const void* B, int32_t bcs, void* C, int32_t crs,   \
                                        int32_t ccs) {                                                         \
        Kernels<T>::inner2x2(acc, rows, ncols, kcount, panel, B, bcs, C, crs, ccs);                            \
    }                                                                                                          \
    extern "C" VIS void f90_Inner1x2##T(int32_t acc, int32_t ncols, int32_t kcount, const void* A,             \
                                        const void* B, int32_t bks, int32_t bcs, void* C, int32_t cs) {        \
        Kernels<T>::inner1x2(acc, ncols, kcount, A, B, bks, bcs, C, cs);                                       \
    }                                                                                                          \
    extern "C" VIS void f90_Inner2x1##T(int32_t acc, int32_t rows, int32_t kcount, const void* A, int32_t ars, \
                                        int32_t aks, const void* x, void* C, int32_t cs) {                     \
        Kernels<T>::inner2x1(acc, rows, kcount, A, ars, aks, x, C, cs);                                        \
    }                                                                                                          \
    extern "C" VIS void f90_Epilogue2x2##T(int32_t acc, int32_t rows, int32_t ncols, int32_t kcount,           \
                                           const void* A, int32_t ars, int32_t aks, const void* B,             \
                                           int32_t bks, int32_t bcs, void* C, int32_t crs, int32_t ccs) {      \
        Kernels<T>::block(acc, rows, ncols, kcount, A, ars, aks, B, bks, bcs, C, crs, ccs);                    \
    }                                                                                                          \
    extern "C" VIS void f90_Epilogue1x2##T(int32_t acc, int32_t ncols, int32_t kcount, const void* A,          \
                                           int32_t as, const void* B, int32_t bks, int32_t bcs, void* C,       \
                                           int32_t cs) {                                                       \
        Kernels<T>::epilogue1x2(acc, ncols, kcount, A, as, B, bks, bcs, C, cs);                                \
    }                                                                                                          \
    extern "C" VIS void f90_Epilogue2x1##T(int32_t acc, int32_t rows, int32_t kcount, const void* A,           \
                                           int32_t ars, int32_t aks, const void* x, int32_t xs, void* C,       \
                                           int32_t cs) {                                                       \
        Kernels<T>::epilogue2x1(acc, rows, kcount, A, ars, aks, x, xs, C, cs);                                 \
    }

#define MM_MOVERS(T, VIS)                                                                                      \
    extern "C" VIS void f90_ConvertBlock##T(void* dest, const void* A, int32_t rows, int32_t kcount,           \
                                            int32_t ars, int32_t aks) {                                        \
        Kernels<T>::convert_block(dest, A, rows, kcount, ars, aks);                                            \
    }                                                                                                          \
    extern "C" VIS void f90_CopyBlock##T(void* dest, const void* B, int32_t kcount, int32_t ncols, int32_t bks, \
                                         int32_t bcs) {                                                        \
        Kernels<T>::copy_block(dest, B, kcount, ncols, bks, bcs);                                              \
    }                                                                                                          \
    extern "C" VIS void f90_CopyVector##T(void* dest, const void* src, int32_t n, int32_t stride) {            \
        Kernels<T>::copy_vector(dest, src, n, stride);                                                         \
    }                                                                                                          \
    extern "C" VIS void f90_InitVector##T(void* dest, int32_t n, int32_t stride) {                             \
        Kernels<T>::init_vector(dest, n, stride);                                                              \
    }

#define INTERNAL

#define X(T, ...) MM_COMPUTE(T, INTRINS_EXPORT)
MM_NATIVE_TYPES(X)
#undef X
#define X(T, ...) MM_MOVERS(T, INTRINS_EXPORT)
MM_MOVER_TYPES(X)
#undef X
#define X(T, ...) MM_ENGINES(T, INTRINS_EXPORT)
MM_LOGICAL_TYPES(X)
#undef X
#define X(T, ...) MM_COMPUTE(T, INTERNAL) MM_MOVERS(T, INTERNAL)
MM_EXTENDED_TYPES(X)
#undef X
