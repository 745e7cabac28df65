/* intrins/construct.h - Array construction: RESHAPE, PACK, UNPACK, SPREAD, TRANSPOSE, CSHIFT, EOSHIFT, TRANSFER.
   Included by intrins.h; include that header, not this one.

   Every entry point takes one ArgList and delivers its result through the
   Result slot's descriptor.  The number after the name is the element size
   in bytes (1, 2, 4, 8, 10, 16, 20, 32: elements are moved as bytes, never
   converted); the `n' entries take the size from the governing operand's
   ELSIZE.  The K forms of RESHAPE and TRANSFER take 8-byte SHAPE/ORDER and
   SIZE. */
#ifndef INTRINS_CONSTRUCT_H
#define INTRINS_CONSTRUCT_H

#ifdef __cplusplus
extern "C" {
#endif

#define INTRINS_CONSTRUCT_DECL(sfx)               \
    void f90_reshape##sfx(ArgList *a);            \
    void f90_kreshape##sfx(ArgList *a);           \
    void f90_pack##sfx(ArgList *a);               \
    void f90_unpack##sfx(ArgList *a);             \
    void f90_spread##sfx(ArgList *a);             \
    void f90_transpose##sfx(ArgList *a);          \
    void f90_cshift##sfx(ArgList *a);             \
    void f90_eoshift##sfx(ArgList *a);            \
    void f90_transfer##sfx(ArgList *a);           \
    void f90_ktransfer##sfx(ArgList *a);
INTRINS_CONSTRUCT_DECL(1)
INTRINS_CONSTRUCT_DECL(2)
INTRINS_CONSTRUCT_DECL(4)
INTRINS_CONSTRUCT_DECL(8)
INTRINS_CONSTRUCT_DECL(10)
INTRINS_CONSTRUCT_DECL(16)
INTRINS_CONSTRUCT_DECL(20)
INTRINS_CONSTRUCT_DECL(32)
INTRINS_CONSTRUCT_DECL(n)
#undef INTRINS_CONSTRUCT_DECL

/* RESHAPE's argument checks, run first when Flags bit 0 is set. */
void f90_Reshape_Validation(ArgList *a);
void f90_kReshape_Validation(ArgList *a);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_CONSTRUCT_H */
