// tiled_avx512.cpp - the fast engines compiled for AVX-512 (64-byte vectors, 32 registers).
#define MM_ISA isa_avx512
#define MM_TARGET __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl,avx2")))
#define MM_VBYTES 64
#define MM_TABLE table_avx512
#include "tiled.h"
