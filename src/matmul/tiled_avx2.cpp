// tiled_avx2.cpp - the fast engines compiled for AVX2 (32-byte vectors).
#define MM_ISA isa_avx2
#define MM_TARGET __attribute__((target("avx2")))
#define MM_VBYTES 32
#define MM_TABLE table_avx2
#include "tiled.h"
