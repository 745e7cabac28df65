// reduce_support.h - building reduction calls the way compiled code does.
#pragma once

#include <cstring>
#include <string>

#include "support/arrays.h"

namespace rtest {

using namespace testutil;

// One reduction call: ARG 1 = ARRAY, ARG 2 = DIM, ARG 3 = MASK, the result
// descriptor either left to the library or supplied.
struct Red {
    Desc own;  // the result descriptor when the test does not supply one
    ArrDesc* res = own.get();
    Args args;
    explicit Red(ArrDesc* array) {
        args.addr(0, res);
        args.addr(1, array);
    }
    Red& dim(int32_t d) { args.value(2, d); return *this; }
    Red& mask(ArrDesc* m) { args.addr(3, m); return *this; }
    Red& into(ArrDesc* r) {
        res = r;
        args.addr(0, r);
        args.a.Presence |= F90_PRESENT_RESULT;
        return *this;
    }
    Red& check() { args.check(); return *this; }
    ArgList* get() { return args.get(); }
    operator ArgList*() { return args.get(); }
    // Element i of the result in storage order (library-allocated results).
    template <class T>
    T at(int64_t i) const {
        T v{};
        std::memcpy(&v, res->BASE + i * res->SCALEFACTOR, sizeof v);
        return v;
    }
};

// A scalar result held by the test.
template <class T>
struct Scalar {
    Array a{static_cast<int32_t>(sizeof(T) < 16 ? sizeof(T) : 16)};
    T value() {
        T v{};
        std::memcpy(&v, a.data(), sizeof v);
        return v;
    }
};

template <class T>
uint64_t bits_of(T v) {
    uint64_t b = 0;
    std::memcpy(&b, &v, sizeof v);
    return b;
}

inline std::string head(const char* name) {
    return std::string("ERROR calling the intrinsic subprogram ") + name + ":\n";
}
inline std::string unknown(const char* name) {
    return std::string("ERROR calling the error handler by the\n intrinsic subprogram, signed by ") + name + ".\n";
}
inline const char* kDimMsg =
    " The DIM parameter had a value of %d.\n Its value should be at least 1 and no larger than %d.\n";
inline std::string dim_msg(int d, int r) {
    char buf[200];
    std::snprintf(buf, sizeof buf, kDimMsg, d, r);
    return buf;
}
inline std::string result_msg(const char* has, const char* should) {
    return std::string(" The RESULT array has shape:    ") + has + ".\n The shape of RESULT should be: " + should +
           ".\n";
}
inline std::string mask_msg(const char* array, const char* mask) {
    return std::string(
               " Array arguments ARRAY and MASK should have the same shape.\n The shape of argument ARRAY is: ") +
           array + ".\n The shape of argument MASK is:  " + mask + ".\n";
}

}  // namespace rtest
