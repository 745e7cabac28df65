/* intrins/construct.h - Array construction: RESHAPE, PACK, UNPACK, SPREAD, TRANSPOSE, CSHIFT, EOSHIFT, TRANSFER.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_CONSTRUCT_H
#define INTRINS_CONSTRUCT_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_CONSTRUCT_H */
