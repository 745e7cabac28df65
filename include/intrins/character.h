/* intrins/character.h - Character intrinsics: ADJUSTL, ADJUSTR, INDEX, LEN_TRIM, REPEAT, SCAN, TRIM, VERIFY.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_CHARACTER_H
#define INTRINS_CHARACTER_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_CHARACTER_H */
