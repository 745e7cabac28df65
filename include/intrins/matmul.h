/* intrins/matmul.h - MATMUL and its exported multiply kernels.
   Included by intrins.h; include that header, not this one.

   The drivers take an ArgList: Result = the result descriptor, ARG1 =
   MATRIX_A, ARG2 = MATRIX_B (descriptors).  The kernels take byte addresses
   of first elements and strides in elements; counts are signed 32-bit.
   `acc` is 0 (store each result element) or 1 (add it to C). */
#ifndef INTRINS_MATMUL_H
#define INTRINS_MATMUL_H

#ifdef __cplusplus
extern "C" {
#endif

void f90_matmuli1(ArgList *a);
void f90_matmuli2(ArgList *a);
void f90_matmuli4(ArgList *a);
void f90_matmuli8(ArgList *a);
void f90_matmull1(ArgList *a);
void f90_matmull2(ArgList *a);
void f90_matmull4(ArgList *a);
void f90_matmull8(ArgList *a);
void f90_matmulr4(ArgList *a);
void f90_matmulr8(ArgList *a);
void f90_matmulr10(ArgList *a);
void f90_matmulr16(ArgList *a);
void f90_matmulc8(ArgList *a);
void f90_matmulc16(ArgList *a);
void f90_matmulc20(ArgList *a);
void f90_matmulc32(ArgList *a);

/* The three engines: C = A B (matrix x matrix, vector x matrix, matrix x vector). */
#define F90_MM_ENGINES(T)                                                                          \
    void f90_Engine2x2##T(int32_t M, int32_t N, int32_t K, const void *A, int32_t as1, int32_t as2,  \
                          const void *B, int32_t bs1, int32_t bs2, void *C, int32_t cs1, int32_t cs2); \
    void f90_Engine1x2##T(int32_t N, int32_t K, const void *A, int32_t as, const void *B,            \
                          int32_t bs1, int32_t bs2, void *C, int32_t cs);                            \
    void f90_Engine2x1##T(int32_t M, int32_t K, const void *A, int32_t as1, int32_t as2,             \
                          const void *B, int32_t bs, void *C, int32_t cs);

/* Inner kernels (packed or unit-stride operands) and epilogues (any strides). */
#define F90_MM_COMPUTE(T)                                                                           \
    F90_MM_ENGINES(T)                                                                              \
    void f90_Inner2x2##T(int32_t acc, int32_t rows, int32_t ncols, int32_t kcount, const void *panel, \
                         const void *B, int32_t bcs, void *C, int32_t crs, int32_t ccs);             \
    void f90_Inner1x2##T(int32_t acc, int32_t ncols, int32_t kcount, const void *A, const void *B,    \
                         int32_t bks, int32_t bcs, void *C, int32_t cs);                             \
    void f90_Inner2x1##T(int32_t acc, int32_t rows, int32_t kcount, const void *A, int32_t ars,       \
                         int32_t aks, const void *x, void *C, int32_t cs);                           \
    void f90_Epilogue2x2##T(int32_t acc, int32_t rows, int32_t ncols, int32_t kcount, const void *A,   \
                            int32_t ars, int32_t aks, const void *B, int32_t bks, int32_t bcs, void *C, \
                            int32_t crs, int32_t ccs);                                                \
    void f90_Epilogue1x2##T(int32_t acc, int32_t ncols, int32_t kcount, const void *A, int32_t as,    \
                            const void *B, int32_t bks, int32_t bcs, void *C, int32_t cs);           \
    void f90_Epilogue2x1##T(int32_t acc, int32_t rows, int32_t kcount, const void *A, int32_t ars,    \
                            int32_t aks, const void *x, int32_t xs, void *C, int32_t cs);

/* Data movers: panel packing (rows a multiple of 4), B block copy, gather, zero fill. */
#define F90_MM_MOVERS(T)                                                                             \
    void f90_ConvertBlock##T(void *dest, const void *A, int32_t rows, int32_t kcount, int32_t ars,     \
                             int32_t aks);                                                            \
    void f90_CopyBlock##T(void *dest, const void *B, int32_t kcount, int32_t ncols, int32_t bks,      \
                          int32_t bcs);                                                               \
    void f90_CopyVector##T(void *dest, const void *src, int32_t n, int32_t stride);                    \
    void f90_InitVector##T(void *dest, int32_t n, int32_t stride);

F90_MM_COMPUTE(Int1) F90_MM_MOVERS(Int1)
F90_MM_COMPUTE(Int2) F90_MM_MOVERS(Int2)
F90_MM_COMPUTE(Int4) F90_MM_MOVERS(Int4)
F90_MM_COMPUTE(Int8) F90_MM_MOVERS(Int8)
F90_MM_COMPUTE(Real4) /* moves 4-byte patterns with the Int4 movers */
F90_MM_COMPUTE(Real8) F90_MM_MOVERS(Real8)
F90_MM_COMPUTE(Complex8) F90_MM_MOVERS(Complex8)
F90_MM_COMPUTE(Complex16) F90_MM_MOVERS(Complex16)
F90_MM_ENGINES(Log1)
F90_MM_ENGINES(Log2)
F90_MM_ENGINES(Log4)
F90_MM_ENGINES(Log8)

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_MATMUL_H */
