// wrap.h - 32-bit two's-complement arithmetic that wraps instead of
// overflowing, for descriptor bounds and offsets computed from caller data.
#pragma once

#include <cstdint>

namespace intrins {

inline int32_t wadd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wsub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline int32_t wmul(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
// Truncating division; the one overflowing case (INT32_MIN / -1) wraps.
inline int32_t wdiv(int32_t a, int32_t b) {
    if (b == -1) return wsub(0, a);
    return a / b;
}

// Address arithmetic that may leave the data block (ZERO may point outside).
inline char* offset_by(char* p, std::intptr_t bytes) {
    return reinterpret_cast<char*>(reinterpret_cast<std::uintptr_t>(p) + static_cast<std::uintptr_t>(bytes));
}

}  // namespace intrins
