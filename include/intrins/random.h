/* intrins/random.h - RANDOM_NUMBER and RANDOM_SEED.
   Included by intrins.h; include that header, not this one.

   Each thread has its own generator, created on its first call and started
   from the same default seed.  The array forms store n values contiguously;
   REAL(10) values go into 16-byte slots (value in the first 10 bytes), quad
   values into 16 bytes.  RANDOM_SEED: Presence bit 0 = SIZE (its address in
   the Result slot), bit 1 = PUT (ARG1: ArrDesc), bit 2 = GET (ARG2: ArrDesc). */
#ifndef INTRINS_RANDOM_H
#define INTRINS_RANDOM_H

#ifdef __cplusplus
extern "C" {
#endif

void InitMarsagliaRander(void);
void f90_randnum4(float *out);
void f90_randnum8(double *out);
void f90_randnum10(void *out); /* 10 bytes */
void f90_randnum16(void *out); /* 16 bytes */
void f90_randnum4a(float *out, int32_t n);
void f90_randnum8a(double *out, int32_t n);
void f90_randnum10a(void *out, int32_t n); /* 16-byte slots */
void f90_randnum16a(void *out, int32_t n);
void f90_randseed(ArgList *a);
void f90_randseed8(ArgList *a);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_RANDOM_H */
