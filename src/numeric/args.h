// args.h - how the numeric entry points receive and return REAL values:
// REAL(4) and REAL(8) by address and by value; REAL(10) by address (10
// bytes) and returned as long double; REAL(16) by address, returned through
// a result address the caller passes first, which is also the return value.
#pragma once

#include <cstring>

#include "extended/floatxxx.h"

namespace intrins::num {

template <class T>
inline T load(const void* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <>
inline Real10 load<Real10>(const void* p) {
    return load_r10(p);
}

inline void* deliver(void* result, Quad v) {
    store_q(result, v);
    return result;
}

}  // namespace intrins::num
