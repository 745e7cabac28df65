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

static void demo_character(void) {
    /* INDEX('ABCABC', 'BC', BACK=.TRUE.) -- an ArgList with BACK present */
    ArgList a;
    memset(&a, 0, sizeof a);
    a.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
    a.ARG1.w[0] = (F90Word) "ABCABC", a.ARG1.w[1] = 6;
    a.ARG2.w[0] = (F90Word) "BC", a.ARG2.w[1] = 2;
    a.ARG3.w[0] = 1;
    f90_index(&a);
    printf("INDEX('ABCABC', 'BC', BACK=.TRUE.) = %d\n", (int)(int32_t)a.Result.w[0]);

    /* TRIM('ABC  ') into library storage, REPEAT('AB', 3) into a caller buffer */
    memset(&a, 0, sizeof a);
    a.ARG1.w[0] = (F90Word) "ABC  ", a.ARG1.w[1] = 5;
    f90_trim(&a);
    printf("TRIM('ABC  ') = '%.*s'\n", (int)a.Result.w[1], (const char *)a.Result.w[0]);
    f90_freespace((void *)a.Result.w[0]);
    char buf[8];
    memset(&a, 0, sizeof a);
    a.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    a.Flags = F90_FLAG_CHECK;
    a.Result.w[0] = (F90Word)buf, a.Result.w[1] = sizeof buf;
    a.ARG1.w[0] = (F90Word) "AB", a.ARG1.w[1] = 2;
    a.ARG2.w[0] = 3;
    f90_repeat(&a);
    printf("REPEAT('AB', 3) = '%.*s'\n", (int)a.Result.w[1], buf);

    char adj[6];
    f90_adjustr("AB    ", 6, adj);
    printf("ADJUSTR('AB    ') = '%.6s', LEN_TRIM = %d\n", adj, (int)f90_lentrim("AB    ", 6));
}

static void demo_numeric(void) {
    float x = 3.0f, s = -1.0f;
    int32_t i = 1;
    printf("EXPONENT(3.0) = %d, FRACTION(3.0) = %g, SET_EXPONENT(3.0, 1) = %g\n", (int)f90_exponent4(&x),
           f90_fraction4(&x), f90_setexp4(&x, &i));
    printf("NEAREST(3.0, -1.0) = %.9g, SPACING(3.0) = %g\n", f90_nearest4(&x, &s), f90_spacing4(&x));
    double d = -2.5;
    printf("CEILING(-2.5D0) = %d, FLOOR(-2.5D0) entry gives %d (kept as is)\n", (int)f90_ceiling8(&d),
           (int)f90_floor8(&d));
    unsigned char q[16], r[16];
    __float128 v = 10;
    int32_t n = -3;
    memcpy(q, &v, 16);
    f90_scale16(r, q, &n);
    memcpy(&v, r, 16);
    printf("SCALE(10.0_16, -3) = %g\n", (double)v);
    int32_t a = -7, p = 3, to = 0, from_pos = 4, len = 8, to_pos = 0;
    printf("MODULO(-7, 3) = %d\n", (int)f90_moduloi4(&a, &p));
    f90_mvbits4(0xABCD, &from_pos, &len, &to, &to_pos);
    printf("MVBITS(Z'ABCD', 4, 8, TO, 0): TO = Z'%X'\n", (unsigned)to);
    ArgList k;
    memset(&k, 0, sizeof k);
    k.Presence = F90_PRESENT_ARG1;
    k.ARG1.w[0] = 7;
    f90_selrealkind(&k);
    printf("SELECTED_REAL_KIND(P=7) = %d\n", (int)(int32_t)k.Result.w[0]);
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
    demo_random();
    demo_clock();
    demo_character();
    demo_numeric();
    demo_reduce();
    printf("\n");
    demo_construct();
    demo_matmul();
    return 0;
}
