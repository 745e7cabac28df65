// platform.h - the one place where the targets differ: 64-bit Linux, 32-bit
// x86 Linux and 32-bit Windows (mingw-w64).  Everything target-specific that
// the families need (export marking, symbol labels, the 80-bit and quad
// formats' sizes) is decided here.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define INTRINS_WINDOWS 1
#else
#define INTRINS_WINDOWS 0
#endif

#if UINTPTR_MAX > 0xffffffffu
#define INTRINS_64BIT 1
#else
#define INTRINS_64BIT 0
#endif

// 128-bit integers (the 64-bit targets): the fast binary128 arithmetic of
// the multiply kernels works in them.
#if defined(__SIZEOF_INT128__)
#define INTRINS_INT128 1
#else
#define INTRINS_INT128 0
#endif

// Entry points.  On Linux the library is built with hidden visibility and a
// version script; this marks the names that leave the library.  On Windows the
// .def file made from the same export list decides.
#if INTRINS_WINDOWS
#define INTRINS_EXPORT
#else
#define INTRINS_EXPORT __attribute__((visibility("default")))
#endif

// A C symbol whose linker-level name is given exactly, for a name that C
// cannot spell (one with a '$').  The label is quoted so that the assembler
// never reads the '$' as an immediate operand.  32-bit Windows decorates C
// names with a leading underscore, so the object-file label carries one there
// while the DLL export keeps the plain name (the .def file maps it).  GCC
// writes the names of the parts it splits off a function (".cold", ".part")
// unquoted, so a function so named only forwards one call to a noexcept one.
//   extern "C" INTRINS_EXPORT double f() INTRINS_ASM_NAME("$name");
#if INTRINS_WINDOWS && !INTRINS_64BIT
#define INTRINS_ASM_NAME(name) __asm__("\"_" name "\"")
#else
#define INTRINS_ASM_NAME(name) __asm__("\"" name "\"")
#endif

namespace intrins {

// Address-sized unsigned integer.
using Word = std::uintptr_t;

// Storage of the 80-bit extended format in memory: sizeof(long double) is 12
// on 32-bit x86 and 16 on x86-64, the value itself is always 10 bytes.
inline constexpr std::size_t kReal10Bytes = 10;
inline constexpr std::size_t kLongDoubleBytes = sizeof(long double);

}  // namespace intrins
