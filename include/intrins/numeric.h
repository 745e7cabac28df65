/* intrins/numeric.h - Numeric model intrinsics, rounding, MODULO, MVBITS and kind selection.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_NUMERIC_H
#define INTRINS_NUMERIC_H

#ifdef __cplusplus
extern "C" {
#endif

/* Real model.  Arguments by address.  REAL(4)/REAL(8) results by value;
   REAL(10) arguments are 10-byte values, results long double; REAL(16)
   functions store their result at the address passed first and return it. */
int32_t f90_exponent4(const float *x);
int32_t f90_exponent8(const double *x);
int32_t f90_exponent10(const void *x);
int32_t f90_exponent16(const void *x);
#define F90_REAL_MODEL_DECL(name)                                  \
    float f90_##name##4(const float *x);                           \
    double f90_##name##8(const double *x);                         \
    long double f90_##name##10(const void *x);                     \
    void *f90_##name##16(void *result, const void *x);
F90_REAL_MODEL_DECL(fraction)
F90_REAL_MODEL_DECL(rrspacing)
F90_REAL_MODEL_DECL(spacing)
#undef F90_REAL_MODEL_DECL
float f90_nearest4(const float *x, const float *s);
double f90_nearest8(const double *x, const double *s);
long double f90_nearest10(const void *x, const void *s);
void *f90_nearest16(void *result, const void *x, const void *s);
#define F90_REAL_SCALE_DECL(name)                                          \
    float f90_##name##4(const float *x, const int32_t *i);                 \
    double f90_##name##8(const double *x, const int32_t *i);               \
    long double f90_##name##10(const void *x, const int32_t *i);           \
    void *f90_##name##16(void *result, const void *x, const int32_t *i);
F90_REAL_SCALE_DECL(scale)
F90_REAL_SCALE_DECL(setexp)
#undef F90_REAL_SCALE_DECL

/* CEILING and FLOOR: argument by address; h = INTEGER(2), k = INTEGER(8)
   result.  f90_floorN16 is the same function as f90_ceilingN16. */
int32_t f90_ceiling4(const float *x);
int32_t f90_ceiling8(const double *x);
int32_t f90_ceiling10(const void *x);
int32_t f90_ceiling16(const void *x);
int16_t f90_ceilingh4(const float *x);
int16_t f90_ceilingh8(const double *x);
int16_t f90_ceilingh10(const void *x);
int16_t f90_ceilingh16(const void *x);
int64_t f90_ceilingk4(const float *x);
int64_t f90_ceilingk8(const double *x);
int64_t f90_ceilingk10(const void *x);
int64_t f90_ceilingk16(const void *x);
int32_t f90_floor4(const float *x);
int32_t f90_floor8(const double *x);
int32_t f90_floor10(const void *x);
int32_t f90_floor16(const void *x);
int16_t f90_floorh10(const void *x);
int16_t f90_floorh16(const void *x);
int64_t f90_floork10(const void *x);
int64_t f90_floork16(const void *x);

/* MODULO(A, P): both by address. */
int8_t f90_moduloi1(const int8_t *a, const int8_t *p);
int16_t f90_moduloi2(const int16_t *a, const int16_t *p);
int32_t f90_moduloi4(const int32_t *a, const int32_t *p);
int64_t f90_moduloi8(const int64_t *a, const int64_t *p);
float f90_modulor4(const float *a, const float *p);
double f90_modulor8(const double *a, const double *p);
long double f90_modulor10(const void *a, const void *p);
void *f90_modulor16(void *result, const void *a, const void *p);

/* MVBITS(FROM, FROMPOS, LEN, TO, TOPOS): FROM by value, the rest by address. */
void f90_mvbits1(int8_t from, const int32_t *frompos, const int32_t *len, int8_t *to, const int32_t *topos);
void f90_mvbits2(int16_t from, const int32_t *frompos, const int32_t *len, int16_t *to, const int32_t *topos);
void f90_mvbits4(int32_t from, const int32_t *frompos, const int32_t *len, int32_t *to, const int32_t *topos);
void f90_mvbits8(int64_t from, const int32_t *frompos, const int32_t *len, int64_t *to, const int32_t *topos);

/* Kind selection: ARG1 = R (SELECTED_INT_KIND) or P, ARG2 = R, by value,
   present as the Presence bits say; the kind (32-bit) goes to Result. */
void f90_selintkind(ArgList *a);
void f90_selrealkind(ArgList *a);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_NUMERIC_H */
