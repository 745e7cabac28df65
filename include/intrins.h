/*
 * intrins.h - public interface of libintrinsMD, the intrinsic-procedure
 * library that compiled Fortran 90 code calls.
 *
 * Usable from C and C++.  Two records cross the boundary:
 *   ArrDesc  - the array descriptor (every array operand and result);
 *   ArgList  - the argument list of the intrinsics with optional operands.
 *
 * Layout.  A "word" is an address-sized unsigned integer (4 bytes on 32-bit
 * x86, 8 on x86-64).  ZERO and BASE are words; every other descriptor field is
 * 32-bit (RANK and NONCONTIG are bytes) and the fields follow each other with
 * no gaps:
 *
 *                      32-bit   64-bit
 *   ZERO                   0        0
 *   BASE                   4        8
 *   EXTENT                 8       16
 *   ELSIZE                12       20
 *   SCALEFACTOR           16       24
 *   RANK                  20       28
 *   NONCONTIG             21       29
 *   two reserved bytes    22       30
 *   dimension triples     24       32   (LOWER, UPPER, STRIDE; 12 bytes each)
 *   sizeof               108      120
 *
 * With bounds checking on, two 32-bit words (LOWOFFSET, HIGHOFFSET) sit
 * directly in front of the descriptor; see ArrDescChecked.
 *
 * ArgList is twelve words: word 0 holds Shape (bits 0-15) and Presence
 * (bits 16-31), word 1 holds Flags (low 32 bits), then the Result slot and
 * ARG1..ARG4, two words each.  A scalar passed or returned by value in a slot
 * lies in the slot's bytes from offset 0 in its own width (little-endian); a
 * character operand is (address in the first word, length in the second).
 */
#ifndef INTRINS_H
#define INTRINS_H

#include <stddef.h>
#include <stdint.h>

/* INTRINS_VERSION ("1.0.0") and INTRINS_VERSION_MAJOR, _MINOR, _PATCH come from
   intrins/version.h, which the build makes and installs beside this header.
   Straight from the source tree the header works without them. */
#if defined(__has_include)
#if __has_include("intrins/version.h")
#include "intrins/version.h"
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define INTRINS_NORETURN __attribute__((noreturn))
#else
#define INTRINS_NORETURN
#endif

/* Address-sized unsigned integer. */
typedef uintptr_t F90Word;

#define F90_MAXDIM 7

/* A bound, triplet value or lower bound equal to this takes the default. */
#define F90_DEFAULT_MARKER ((int32_t)0x80000000u)

/* Presence bits: bit 0 = result supplied by the caller; bit k = ARG k present. */
#define F90_PRESENT_RESULT 0x1u
#define F90_PRESENT_ARG1 0x2u
#define F90_PRESENT_ARG2 0x4u
#define F90_PRESENT_ARG3 0x8u
#define F90_PRESENT_ARG4 0x10u

/* Flags bit 0: make the argument checks. */
#define F90_FLAG_CHECK 0x1u

/* Subscript kinds of a section triplet record. */
#define F90_SUBSCRIPT_SCALAR 1
#define F90_SUBSCRIPT_TRIPLET 3

typedef struct ArrDim {
    int32_t LOWER;
    int32_t UPPER;
    int32_t STRIDE; /* in elements; times SCALEFACTOR gives bytes */
} ArrDim;

typedef struct ArrDesc {
    char *ZERO;          /* address of the element whose subscripts are all 0 */
    char *BASE;          /* first element in array-element order; null: no data */
    int32_t EXTENT;      /* number of elements */
    int32_t ELSIZE;      /* bytes per element */
    int32_t SCALEFACTOR; /* bytes per unit of STRIDE */
    int8_t RANK;         /* 0 (or less) for a scalar */
    int8_t NONCONTIG;    /* 0: contiguous column-major from BASE */
    int8_t RESERVED[2];
    ArrDim DIM[F90_MAXDIM];
} ArrDesc;

/* A descriptor preceded by its bounds-check words, as callers lay it out
   when bounds checking may be on. */
typedef struct ArrDescChecked {
    int32_t LOWOFFSET;  /* smallest linear offset of any element */
    int32_t HIGHOFFSET; /* one more than the largest */
    ArrDesc desc;
} ArrDescChecked;

/* One argument slot: two words. */
typedef union ArgSlot {
    F90Word w[2];
    unsigned char bytes[2 * sizeof(F90Word)];
} ArgSlot;

typedef struct ArgList {
    uint16_t Shape;
    uint16_t Presence;
#if UINTPTR_MAX > 0xffffffffu
    uint32_t reserved0;
#endif
    uint32_t Flags;
#if UINTPTR_MAX > 0xffffffffu
    uint32_t reserved1;
#endif
    ArgSlot Result;
    ArgSlot ARG1;
    ArgSlot ARG2;
    ArgSlot ARG3;
    ArgSlot ARG4;
} ArgList;

/* ---- Array descriptors and element addressing ---- */
void f90_CreateArray(int32_t rank, const int32_t *bounds, int32_t elsize, ArrDesc *d);
void f90_CreateArrayM(ArrDesc *d);
void f90_CreateSection(const ArrDesc *src, const int32_t *triplets, ArrDesc *d);
void *f90_ElemAddr(const ArrDesc *d, ...);
void *f90_ElemAddrContig(const ArrDesc *d, int32_t n);
void *f90_FirstElemAddr(const ArrDesc *d);
void *f90_NextElemAddr(void);
void f90_Null(ArgList *a);

/* ---- Error reporting and diagnostic dumps ---- */
INTRINS_NORETURN void f90_ArrLibError(const char *name, int32_t number, ...);
void f90_PrintArgList(const ArgList *a);
void f90_PrintArrDesc(const ArrDesc *d);

/* ---- Runtime support (libzamtf90md) ---- */
void *f90_getspace(F90Word nbytes);
void f90_freespace(void *p);

#ifdef __cplusplus
} /* extern "C" */
#endif

/* The intrinsic families. */
#include "intrins/character.h"
#include "intrins/reduce.h"
#include "intrins/construct.h"
#include "intrins/matmul.h"
#include "intrins/numeric.h"
#include "intrins/random.h"
#include "intrins/clock.h"

#endif /* INTRINS_H */
