/* intrins/reduce.h - Array reductions: ALL, ANY, COUNT, SUM, PRODUCT, MAXVAL, MINVAL, MAXLOC, MINLOC, DOT_PRODUCT.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_REDUCE_H
#define INTRINS_REDUCE_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_REDUCE_H */
