# 32-bit x86 Linux with the host compiler (-m32).  REAL(4) and REAL(8) use
# SSE2 so that they round as on x86-64; REAL(10) stays on the x87.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_Fortran_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
