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

/* An argument list the way compiled code fills one: the result descriptor,
   then ARG k as a descriptor address or as a value, each marked present. */
static ArgList *list(ArgList *a, ArrDesc *result) {
    memset(a, 0, sizeof *a);
    a->Result.w[0] = (F90Word)result;
    return a;
}
static ArgList *arg(ArgList *a, int k, ArrDesc *d) {
    (&a->Result)[k].w[0] = (F90Word)d;
    a->Presence |= (uint16_t)(1u << k);
    return a;
}
static ArgList *val(ArgList *a, int k, int32_t v) {
    memcpy((&a->Result)[k].bytes, &v, sizeof v);
    a->Presence |= (uint16_t)(1u << k);
    return a;
}

static void demo_construct(void) {
    /* INTEGER :: V(6) = [1, 2, 3, 4, 5, 6] */
    ArrDesc v, shape, order, mask, shift, one, mold, s, r, m;
    ArgList a;
    int32_t b6[] = {1, 6}, b2[] = {1, 2};
    f90_CreateArray(1, b6, 4, &v);
    for (int32_t i = 0; i < 6; ++i) ((int32_t *)v.BASE)[i] = i + 1;
    f90_CreateArray(1, b2, 4, &shape);
    f90_CreateArray(1, b2, 4, &order);
    ((int32_t *)shape.BASE)[0] = 2, ((int32_t *)shape.BASE)[1] = 3;
    ((int32_t *)order.BASE)[0] = 2, ((int32_t *)order.BASE)[1] = 1;

    /* M = RESHAPE(V, [2, 3], ORDER=[2, 1]), checked; the library creates M */
    arg(arg(arg(list(&a, &m), 1, &v), 2, &shape), 4, &order)->Flags = F90_FLAG_CHECK;
    f90_reshape4(&a);
    print_i4("RESHAPE(V, [2,3], ORDER=[2,1])", &m);

    f90_transpose4(arg(list(&a, &r), 1, &m));
    print_i4("TRANSPOSE(M)", &r);
    f90_freespace(r.BASE);

    /* CSHIFT(M, SHIFT=1, DIM=2): SHIFT is a scalar descriptor, DIM a value */
    f90_CreateArray(0, NULL, 4, &shift);
    *(int32_t *)shift.BASE = 1;
    f90_cshift4(val(arg(arg(list(&a, &r), 1, &m), 2, &shift), 3, 2));
    print_i4("CSHIFT(M, 1, DIM=2)", &r);
    f90_freespace(r.BASE);

    /* PACK(V, MOD(V, 2) == 0): MASK elements are 4-byte logicals */
    f90_CreateArray(1, b6, 4, &mask);
    for (int32_t i = 0; i < 6; ++i) ((int32_t *)mask.BASE)[i] = (i + 1) % 2 == 0;
    f90_pack4(arg(arg(list(&a, &r), 1, &v), 2, &mask));
    print_i4("PACK(V, MOD(V,2)==0)", &r);
    f90_freespace(r.BASE);

    /* SPREAD(V(1:2), DIM=1, NCOPIES=3) of a section */
    int32_t trip[] = {F90_SUBSCRIPT_TRIPLET, 1, 2, 1};
    f90_CreateSection(&v, trip, &s);
    f90_spread4(val(val(arg(list(&a, &r), 1, &s), 2, 1), 3, 3));
    print_i4("SPREAD(V(1:2), 1, 3)", &r);
    f90_freespace(r.BASE);

    /* TRANSFER(1.0, 0_1, SIZE=6): the bytes of a REAL(4), then zero fill */
    f90_CreateArray(0, NULL, 4, &one);
    *(float *)one.BASE = 1.0f;
    f90_CreateArray(0, NULL, 1, &mold);
    f90_transfer1(val(arg(arg(list(&a, &r), 1, &one), 2, &mold), 3, 6));
    printf("TRANSFER(1.0, 0_1, 6):");
    for (int32_t i = 0; i < r.EXTENT; ++i) printf(" %02x", (unsigned char)r.BASE[i]);
    printf("\n");
    f90_freespace(r.BASE);

    ArrDesc *owned[] = {&m, &v, &shape, &order, &mask, &shift, &one, &mold};
    for (size_t i = 0; i < sizeof owned / sizeof owned[0]; ++i) f90_freespace(owned[i]->BASE);
}

int main(void) {
    demo_frame();
    printf("\n");
    demo_construct();
    return 0;
}
