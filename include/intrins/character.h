/* intrins/character.h - Character intrinsics: ADJUSTL, ADJUSTR, INDEX, LEN_TRIM, REPEAT, SCAN, TRIM, VERIFY.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_CHARACTER_H
#define INTRINS_CHARACTER_H

#ifdef __cplusplus
extern "C" {
#endif

/* Direct form.  ADJUSTL/ADJUSTR fill the len characters at dst (which must not
   overlap src); LEN_TRIM returns the length without trailing blanks. */
void f90_adjustl(const char *src, int32_t len, char *dst);
void f90_adjustr(const char *src, int32_t len, char *dst);
int32_t f90_lentrim(const char *s, int32_t len);
int64_t f90_klentrim(const char *s, int32_t len);

/* ArgList form.  ARG1 = STRING (address, length); ARG2 = SUBSTRING or SET
   (address, length), or NCOPIES for REPEAT; ARG3 = BACK (Presence bit 3).
   Positions go to the Result slot (32-bit, 64-bit for the k entries); REPEAT
   and TRIM put (address, length) of the text there.  Presence bit 0: the
   caller supplies the result buffer, its capacity in the Result slot's
   length word.  Flags bit 0: REPEAT checks its arguments. */
void f90_index(ArgList *a);
void f90_kindex(ArgList *a);
void f90_scan(ArgList *a);
void f90_kscan(ArgList *a);
void f90_verify(ArgList *a);
void f90_kverify(ArgList *a);
void f90_repeat(ArgList *a);
void f90_trim(ArgList *a);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_CHARACTER_H */
