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

static void demo_random(void) {
    /* CALL RANDOM_SEED(SIZE=n); CALL RANDOM_SEED(PUT=seed); CALL RANDOM_NUMBER(x) */
    int32_t n = 0;
    ArgList size_args = {0};
    size_args.Presence = F90_PRESENT_RESULT;
    size_args.Result.w[0] = (F90Word)&n;
    f90_randseed(&size_args);

    int32_t seed[47];
    uint32_t h = 2463534242u; /* a seed from a xorshift sequence */
    for (int k = 0; k < 47; ++k) {
        h ^= h << 13, h ^= h >> 17, h ^= h << 5;
        seed[k] = (int32_t)h;
    }
    ArrDesc put;
    int32_t bounds[] = {1, 47};
    f90_CreateArray(1, bounds, 4, &put);
    memcpy(put.BASE, seed, sizeof seed);
    ArgList put_args = {0};
    put_args.Presence = F90_PRESENT_ARG1;
    put_args.ARG1.w[0] = (F90Word)&put;
    f90_randseed(&put_args);

    double x[6];
    f90_randnum8a(x, 6);
    printf("\nRANDOM_SEED size %d; six REAL(8) values from a seeded stream:\n", n);
    for (int k = 0; k < 6; ++k) printf("  %.17f\n", x[k]);
    float one;
    f90_randnum4(&one);
    printf("  then one REAL(4): %.9f\n", one);
    f90_freespace(put.BASE);
}

static void demo_clock(void) {
    /* CALL DATE_AND_TIME(DATE=d, TIME=t, ZONE=z, VALUES=v) */
    char date[8], time[10], zone[5];
    int32_t values[8];
    ArrDesc v;
    int32_t bounds[] = {1, 8};
    f90_CreateArray(1, bounds, 4, &v);
    ArgList a = {0};
    a.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
    a.Flags = F90_FLAG_CHECK;
    a.Result.w[0] = (F90Word)date, a.Result.w[1] = sizeof date;
    a.ARG1.w[0] = (F90Word)time, a.ARG1.w[1] = sizeof time;
    a.ARG2.w[0] = (F90Word)zone, a.ARG2.w[1] = sizeof zone;
    a.ARG3.w[0] = (F90Word)&v;
    f90_dateandtime(&a);
    memcpy(values, v.BASE, sizeof values);
    printf("\nDATE_AND_TIME (UTC): DATE '%.8s' TIME '%.10s' ZONE '%.5s' (minutes west)\n", date, time, zone);
    printf("  VALUES %d %d %d %d %d %d %d %d\n", values[0], values[1], values[2], values[3], values[4], values[5],
           values[6], values[7]);

    /* CALL SYSTEM_CLOCK(COUNT=c, COUNT_RATE=r, COUNT_MAX=m) */
    int32_t count = 0, rate = 0, max = 0;
    ArgList s = {0};
    s.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    s.Result.w[0] = (F90Word)&count, s.ARG1.w[0] = (F90Word)&rate, s.ARG2.w[0] = (F90Word)&max;
    f90_sysclock(&s);
    printf("  SYSTEM_CLOCK count %d, rate %d, max %d\n", count, rate, max);
    f90_freespace(v.BASE);
}

int main(void) {
    demo_frame();
    demo_random();
    demo_clock();
    return 0;
}
