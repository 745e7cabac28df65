// tiled_base.cpp - the fast engines compiled for the baseline SSE2 (16-byte vectors), for any x86.
#define MM_ISA isa_base
#define MM_TARGET 
#define MM_VBYTES 16
#define MM_TABLE table_base
#include "tiled.h"
