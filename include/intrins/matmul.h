/* intrins/matmul.h - MATMUL and its exported multiply kernels.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_MATMUL_H
#define INTRINS_MATMUL_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_MATMUL_H */
