/* intrins/clock.h - DATE_AND_TIME, SYSTEM_CLOCK, CPU_TIME and the high-resolution clock.
   Included by intrins.h; include that header, not this one.

   DATE_AND_TIME: Result = DATE, ARG1 = TIME, ARG2 = ZONE (each address,
   length), ARG3 = VALUES (ArrDesc); Presence bit 0 = DATE, bits 1-3 the
   others; Flags bit 0 checks the lengths and VALUES.  The suffix gives the
   integer kind of VALUES (none: 4).
   SYSTEM_CLOCK: the Result slot, ARG1 and ARG2 hold the addresses of COUNT,
   COUNT_RATE and COUNT_MAX, present by Presence bits 0-2.
   CPU_TIME stores seconds of the high-resolution clock.  That clock's
   exported name is $KORVAf90_dclock; C reaches it as KORVAf90_dclock. */
#ifndef INTRINS_CLOCK_H
#define INTRINS_CLOCK_H

#ifdef __cplusplus
extern "C" {
#endif

void f90_dateandtime(ArgList *a);
void f90_dateandtime2(ArgList *a);
void f90_dateandtime8(ArgList *a);
void f90_sysclock(ArgList *a);
void f90_sysclock2(ArgList *a);
void f90_sysclock8(ArgList *a);
void f90_cputime4(float *out);
void f90_cputime8(double *out);
void f90_cputime10(void *out); /* 10 bytes */
void f90_cputime16(void *out); /* 16 bytes */

/* The label is quoted so that the assembler does not read the '$' as an
   immediate; 32-bit Windows decorates C names with a leading underscore. */
#if defined(__GNUC__) && defined(_WIN32) && !defined(_WIN64)
double KORVAf90_dclock(void) __asm__("\"_$KORVAf90_dclock\"");
#elif defined(__GNUC__)
double KORVAf90_dclock(void) __asm__("\"$KORVAf90_dclock\"");
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_CLOCK_H */
