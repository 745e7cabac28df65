/* intrins/numeric.h - Numeric model intrinsics, rounding, MODULO, MVBITS and kind selection.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_NUMERIC_H
#define INTRINS_NUMERIC_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_NUMERIC_H */
