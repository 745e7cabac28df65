/* intrins/clock.h - DATE_AND_TIME, SYSTEM_CLOCK, CPU_TIME and the high-resolution clock.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_CLOCK_H
#define INTRINS_CLOCK_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_CLOCK_H */
