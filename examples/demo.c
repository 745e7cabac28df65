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

static void print_i4(const char *label, ArrDesc *d) {
    printf("%s (rank %d, shape", label, d->RANK);
    for (int k = 0; k < d->RANK; ++k) printf(" %d", d->DIM[k].UPPER - d->DIM[k].LOWER + 1);
    printf("):");
    for (int32_t *p = f90_FirstElemAddr(d); p; p = f90_NextElemAddr()) printf(" %d", *p);
    printf("\n");
}

static void demo_construct(void) {
    /* INTEGER :: V(6) = [1, 2, 3, 4, 5, 6] */
    ArrDesc v, shape, order, mask, r;
    int32_t b6[] = {1, 6}, b2[] = {1, 2};
    f90_CreateArray(1, b6, 4, &v);
    for (int32_t i = 0; i < 6; ++i) ((int32_t *)v.BASE)[i] = i + 1;
    f90_CreateArray(1, b2, 4, &shape);
    f90_CreateArray(1, b2, 4, &order);
    ((int32_t *)shape.BASE)[0] = 2, ((int32_t *)shape.BASE)[1] = 3;
    ((int32_t *)order.BASE)[0] = 2, ((int32_t *)order.BASE)[1] = 1;

    /* M = RESHAPE(V, [2, 3], ORDER=[2, 1]): the library creates M */
    ArgList a;
    memset(&a, 0, sizeof a);
    a.Result.w[0] = (F90Word)&r;
    a.ARG1.w[0] = (F90Word)&v;
    a.ARG2.w[0] = (F90Word)&shape;
    a.ARG4.w[0] = (F90Word)&order;
    a.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG4;
    a.Flags = F90_FLAG_CHECK;
    f90_reshape4(&a);
    print_i4("RESHAPE(V, [2,3], ORDER=[2,1])", &r);
    ArrDesc m = r;

    /* TRANSPOSE(M) */
    memset(&a, 0, sizeof a);
    a.Result.w[0] = (F90Word)&r;
    a.ARG1.w[0] = (F90Word)&m;
    a.Presence = F90_PRESENT_ARG1;
    f90_transpose4(&a);
    print_i4("TRANSPOSE(M)", &r);
    f90_freespace(r.BASE);

    /* CSHIFT(M, SHIFT=1, DIM=2): SHIFT is a scalar descriptor, DIM by value */
    ArrDesc shift;
    f90_CreateArray(0, NULL, 4, &shift);
    *(int32_t *)shift.BASE = 1;
    memset(&a, 0, sizeof a);
    a.Result.w[0] = (F90Word)&r;
    a.ARG1.w[0] = (F90Word)&m;
    a.ARG2.w[0] = (F90Word)&shift;
    *(int32_t *)a.ARG3.bytes = 2;
    a.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
    f90_cshift4(&a);
    print_i4("CSHIFT(M, 1, DIM=2)", &r);
    f90_freespace(r.BASE);

    /* PACK(V, MOD(V, 2) == 0): MASK is 4-byte logicals */
    f90_CreateArray(1, b6, 4, &mask);
    for (int32_t i = 0; i < 6; ++i) ((int32_t *)mask.BASE)[i] = (i + 1) % 2 == 0;
    memset(&a, 0, sizeof a);
    a.Result.w[0] = (F90Word)&r;
    a.ARG1.w[0] = (F90Word)&v;
    a.ARG2.w[0] = (F90Word)&mask;
    a.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    f90_pack4(&a);
    print_i4("PACK(V, MOD(V,2)==0)", &r);
    f90_freespace(r.BASE);

    /* SPREAD(V(1:2), DIM=1, NCOPIES=3) on a section */
    int32_t trip[] = {F90_SUBSCRIPT_TRIPLET, 1, 2, 1};
    ArrDesc s;
    f90_CreateSection(&v, trip, &s);
    memset(&a, 0, sizeof a);
    a.Result.w[0] = (F90Word)&r;
    a.ARG1.w[0] = (F90Word)&s;
    *(int32_t *)a.ARG2.bytes = 1;
    *(int32_t *)a.ARG3.bytes = 3;
    a.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
    f90_spread4(&a);
    print_i4("SPREAD(V(1:2), 1, 3)", &r);
    f90_freespace(r.BASE);

    /* TRANSFER(1.0, 0_1, SIZE=6): the bytes of a REAL(4), zero-filled */
    ArrDesc one, mold;
    f90_CreateArray(0, NULL, 4, &one);
    *(float *)one.BASE = 1.0f;
    f90_CreateArray(0, NULL, 1, &mold);
    memset(&a, 0, sizeof a);
    a.Result.w[0] = (F90Word)&r;
    a.ARG1.w[0] = (F90Word)&one;
    a.ARG2.w[0] = (F90Word)&mold;
    *(int32_t *)a.ARG3.bytes = 6;
    a.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
    f90_transfer1(&a);
    printf("TRANSFER(1.0, 0_1, 6):");
    for (int32_t i = 0; i < r.EXTENT; ++i) printf(" %02x", (unsigned char)r.BASE[i]);
    printf("\n");
    f90_freespace(r.BASE);

    f90_freespace(m.BASE);
    f90_freespace(v.BASE), f90_freespace(shape.BASE), f90_freespace(order.BASE);
    f90_freespace(mask.BASE), f90_freespace(shift.BASE), f90_freespace(one.BASE), f90_freespace(mold.BASE);
}

int main(void) {
    demo_frame();
    printf("\n");
    demo_construct();
    return 0;
}
