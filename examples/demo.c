/* demo.c - calls libintrinsMD the way compiled Fortran code does: it builds
   descriptors, hands them to the library and prints what comes back.
   Each intrinsic family adds its calls below. */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "intrins.h"

static void demo_frame(void) {
    /* INTEGER :: A(0:3, 2:5)  -- an allocatable array created by the library */
    ArrDesc a;
    int32_t bounds[] = {0, 3, 2, 5};
    f90_CreateArray(2, bounds, 4, &a);
    printf("A(0:3,2:5): EXTENT %d, strides %d %d, ZERO = BASE - %d bytes\n", a.EXTENT, a.DIM[0].STRIDE,
           a.DIM[1].STRIDE, (int)(a.BASE - a.ZERO));
    for (int32_t j = 2; j <= 5; ++j)
        for (int32_t i = 0; i <= 3; ++i) *(int32_t *)f90_ElemAddr(&a, i, j) = 10 * i + j;

    /* A(3:0:-2, 3) -- a section: rows 3 and 1 of column 3 */
    int32_t triplets[] = {F90_SUBSCRIPT_TRIPLET, 3, 0, -2, F90_SUBSCRIPT_SCALAR, 3, 0, 0};
    ArrDesc s;
    f90_CreateSection(&a, triplets, &s);
    printf("A(3:0:-2, 3): rank %d, extent %d, stride %d:", s.RANK, s.EXTENT, s.DIM[0].STRIDE);
    for (int32_t *p = f90_FirstElemAddr(&s); p; p = f90_NextElemAddr()) printf(" %d", *p);
    printf("\n");

    printf("whole array in array-element order:");
    for (int32_t *p = f90_FirstElemAddr(&a); p; p = f90_NextElemAddr()) printf(" %d", *p);
    printf("\n\nthe section's descriptor:\n");
    fflush(stdout);
    f90_PrintArrDesc(&s);
    fflush(stdout);
    f90_freespace(a.BASE);
}

/* A contiguous array described the way compiled code describes it. */
static void describe(ArrDesc *d, void *data, int32_t elsize, int32_t rank, const int32_t *lower,
                     const int32_t *upper) {
    memset(d, 0, sizeof *d);
    d->BASE = (char *)data;
    d->ELSIZE = d->SCALEFACTOR = elsize;
    d->RANK = (int8_t)rank;
    int32_t n = 1, off = 0;
    for (int32_t k = 0; k < rank; ++k) {
        d->DIM[k].LOWER = lower[k];
        d->DIM[k].UPPER = upper[k];
        d->DIM[k].STRIDE = n;
        off += lower[k] * n;
        n *= upper[k] - lower[k] + 1;
    }
    d->EXTENT = n;
    d->ZERO = d->BASE - (ptrdiff_t)off * elsize;
}

static void demo_reduce(void) {
    /* INTEGER :: A(0:2, 1:4) = RESHAPE([(I * 7 MOD 10, I = 1, 12)], [3, 4]) */
    int32_t a[12];
    for (int i = 0; i < 12; ++i) a[i] = (i + 1) * 7 % 10;
    int32_t lo[2] = {0, 1}, hi[2] = {2, 4};
    ArrDesc da, dres, dscalar;
    describe(&da, a, 4, 2, lo, hi);

    /* S = SUM(A): a scalar result supplied by the caller */
    int32_t s = 0;
    describe(&dscalar, &s, 4, 0, NULL, NULL);
    ArgList args = {0};
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1;
    args.Flags = F90_FLAG_CHECK;
    args.Result.w[0] = (F90Word)&dscalar;
    args.ARG1.w[0] = (F90Word)&da;
    f90_sumi4(&args);
    printf("SUM(A) = %d\n", s);

    /* SUM(A, DIM=2): the library allocates the result */
    memset(&args, 0, sizeof args);
    memset(&dres, 0, sizeof dres);
    args.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    args.Flags = F90_FLAG_CHECK;
    args.Result.w[0] = (F90Word)&dres;
    args.ARG1.w[0] = (F90Word)&da;
    args.ARG2.w[0] = 2;
    f90_sumi4(&args);
    printf("SUM(A, DIM=2) =");
    for (int32_t i = 0; i < dres.EXTENT; ++i) printf(" %d", ((int32_t *)dres.BASE)[i]);
    printf("\n");
    f90_freespace(dres.BASE);

    /* MAXLOC(A, MASK=A < 7): positions count from 1 whatever the bounds */
    int32_t m[12];
    for (int i = 0; i < 12; ++i) m[i] = a[i] < 7;
    ArrDesc dm;
    describe(&dm, m, 4, 2, lo, hi);
    memset(&args, 0, sizeof args);
    memset(&dres, 0, sizeof dres);
    args.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG3;
    args.Result.w[0] = (F90Word)&dres;
    args.ARG1.w[0] = (F90Word)&da;
    args.ARG3.w[0] = (F90Word)&dm;
    f90_maxloci4(&args);
    printf("MAXLOC(A, MASK=A<7) = (%d, %d)\n", ((int32_t *)dres.BASE)[0], ((int32_t *)dres.BASE)[1]);
    f90_freespace(dres.BASE);

    /* COUNT(A > 4) through a LOGICAL(4) array, and DOT_PRODUCT(V, V) of COMPLEX(8) */
    int32_t c = 0;
    describe(&dscalar, &c, 4, 0, NULL, NULL);
    for (int i = 0; i < 12; ++i) m[i] = a[i] > 4;
    memset(&args, 0, sizeof args);
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1;
    args.Result.w[0] = (F90Word)&dscalar;
    args.ARG1.w[0] = (F90Word)&dm;
    f90_count4(&args);
    printf("COUNT(A > 4) = %d\n", c);

    float v[4] = {0, 1, 2, 0}; /* (0, 1), (2, 0) */
    int32_t vlo = 1, vhi = 2;
    ArrDesc dv;
    describe(&dv, v, 8, 1, &vlo, &vhi);
    memset(&args, 0, sizeof args);
    args.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    args.ARG1.w[0] = (F90Word)&dv;
    args.ARG2.w[0] = (F90Word)&dv;
    f90_dotprc8(&args);
    float z[2];
    memcpy(z, args.Result.bytes, sizeof z);
    printf("DOT_PRODUCT(V, V) = (%g, %g)\n", z[0], z[1]);
}

int main(void) {
    demo_frame();
    demo_reduce();
    return 0;
}
