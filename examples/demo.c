/* demo.c - calls libintrinsMD the way compiled Fortran code does: it builds
   descriptors, hands them to the library and prints what comes back.
   Each intrinsic family adds its calls below. */
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

static void demo_matmul(void) {
    /* REAL(8) :: A(2,3), B(3,2);  C = MATMUL(A, B)  -- the library allocates C */
    double a[6] = {1, 2, 3, 4, 5, 6}, b[6] = {1, 0, 1, 0, 1, 0};
    int32_t ab[] = {1, 2, 1, 3}, bb[] = {1, 3, 1, 2};
    ArrDesc da, db, dc;
    f90_CreateArray(2, ab, 8, &da);
    f90_CreateArray(2, bb, 8, &db);
    memcpy(da.BASE, a, sizeof a);
    memcpy(db.BASE, b, sizeof b);
    ArgList args;
    memset(&args, 0, sizeof args);
    args.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2; /* result not supplied */
    args.Flags = F90_FLAG_CHECK;
    args.Result.w[0] = (F90Word)&dc;
    args.ARG1.w[0] = (F90Word)&da;
    args.ARG2.w[0] = (F90Word)&db;
    f90_matmulr8(&args);
    printf("MATMUL(A, B) is %d x %d:", dc.DIM[0].UPPER, dc.DIM[1].UPPER);
    for (int32_t i = 0; i < dc.EXTENT; ++i) printf(" %g", ((double *)dc.BASE)[i]);
    printf("\n");

    /* INTEGER(1) matrix x vector: sums wrap in the kind's width */
    int8_t m[4] = {100, 1, 100, 1}, x[2] = {1, 1}, y[2];
    f90_Engine2x1Int1(2, 2, m, 1, 2, x, 1, y, 1);
    printf("INTEGER(1) [100 100; 1 1] x [1 1] = %d %d\n", y[0], y[1]);

    /* LOGICAL(4) vector x matrix through the driver, with a supplied result */
    int32_t lv[2] = {0, 1}, lm[4] = {1, 0, 0, 7}, lr[2] = {-1, -1};
    ArrDesc dv, dm, dr;
    int32_t vb[] = {1, 2}, mb[] = {1, 2, 1, 2};
    f90_CreateArray(1, vb, 4, &dv);
    f90_CreateArray(2, mb, 4, &dm);
    f90_CreateArray(1, vb, 4, &dr);
    memcpy(dv.BASE, lv, sizeof lv);
    memcpy(dm.BASE, lm, sizeof lm);
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    args.Result.w[0] = (F90Word)&dr;
    args.ARG1.w[0] = (F90Word)&dv;
    args.ARG2.w[0] = (F90Word)&dm;
    f90_matmull4(&args);
    memcpy(lr, dr.BASE, sizeof lr);
    printf("LOGICAL [F T] x [T F; F T] = %d %d\n", lr[0], lr[1]);
    f90_freespace(da.BASE);
    f90_freespace(db.BASE);
    f90_freespace(dc.BASE);
    f90_freespace(dv.BASE);
    f90_freespace(dm.BASE);
    f90_freespace(dr.BASE);
}

int main(void) {
    demo_frame();
    demo_matmul();
    return 0;
}
