// split10.h - a packing format for REAL(10) operands that loads fast.
//
// The x87 loads an 80-bit value from memory with a slow microcoded
// instruction, while it loads and adds a double in one step each.  A packed
// REAL(10) block therefore holds each value as two doubles (hi, lo) in the
// value's 16-byte slot, with hi + lo equal to the value exactly; the kernels
// rebuild it in a register with one double load and one double add (exact:
// the sum needs at most 64 significant bits), so every product and sum sees
// the very value that the 80-bit load would have given.
//
// hi is the value rounded to 53 bits and lo = value - hi (exact, at most 11
// bits).  This holds when the value is zero or a normal number with binary
// exponent in [-1000, 1000]: hi cannot overflow and lo stays a multiple of
// 2^-1063, which a double (down to its subnormals) keeps exactly.  Any other
// value (infinities, NaN with their payloads, huge, tiny, unnormal) cannot be
// split; the packer reports it and the engine multiplies that block from the
// operands as stored.  A zero keeps its sign through hi = lo = the zero.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "frame/kinds.h"

namespace intrins::mm {

// Types whose parts are REAL(10) slots (REAL(10), COMPLEX(20)).
template <class E>
inline constexpr bool kSplitParts = std::is_same_v<E, R10> || std::is_same_v<E, Cplx<R10>>;

// Packs the REAL(10) value of the slot at s into (hi, lo) at d; false when
// it cannot be split (d is then left unspecified).
inline bool split_r10(void* d, const void* s) {
    uint64_t mant;
    uint16_t se;
    std::memcpy(&mant, s, 8);
    std::memcpy(&se, static_cast<const char*>(s) + 8, 2);
    const unsigned e = se & 0x7fffu;
    double part[2];
    if (e == 0 && mant == 0) {
        part[0] = part[1] = (se & 0x8000u) ? -0.0 : 0.0;
    } else if ((mant >> 63) != 0 && e >= 16383u - 1000u && e <= 16383u + 1000u) {
        long double x;  // the register image straight from the slot, as the kernels load it
        std::memcpy(&x, s, sizeof x);
        part[0] = static_cast<double>(x);
        part[1] = static_cast<double>(x - static_cast<long double>(part[0]));
    } else {
        return false;
    }
    std::memcpy(d, part, sizeof part);
    return true;
}

// The pairs are rebuilt by an x87 addition, which is exact only when the
// precision control is at its full 64 bits (the state every REAL(10)
// program runs in); under a narrower setting the engines multiply as stored.
inline bool x87_full_precision() {
    uint16_t cw;
    asm volatile("fnstcw %0" : "=m"(cw));
    return (cw & 0x300u) == 0x300u;
}

// The value of a packed slot.
inline long double join_r10(const void* p) {
    double part[2];
    std::memcpy(part, p, sizeof part);
    return static_cast<long double>(part[0]) + static_cast<long double>(part[1]);
}

}  // namespace intrins::mm
