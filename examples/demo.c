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

int main(void) {
    demo_frame();
    return 0;
}
