/* intrins/random.h - RANDOM_NUMBER and RANDOM_SEED.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_RANDOM_H
#define INTRINS_RANDOM_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_RANDOM_H */
