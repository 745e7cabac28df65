// helpers.h - shared pieces of the construction tests: the entry table per
// element size, byte patterns that tell elements apart, and result readers.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "support/arrays.h"

namespace ctest {

using namespace testutil;
using Entry = void (*)(ArgList*);

// One row per entry: the element size it moves (0: generic, ELSIZE decides)
// and the size used with it in the tests.
struct Sized {
    const char* label;
    int32_t fixed;  // 0 for the generic entry
    int32_t elsize;
    Entry reshape, kreshape, pack, unpack, spread, transpose, cshift, eoshift, transfer, ktransfer;
};

#define CT_ROW(S) {#S, S, S, f90_reshape##S, f90_kreshape##S, f90_pack##S, f90_unpack##S, f90_spread##S, \
                   f90_transpose##S, f90_cshift##S, f90_eoshift##S, f90_transfer##S, f90_ktransfer##S}
inline const std::vector<Sized>& sized_entries() {
    static const std::vector<Sized> rows = {
        CT_ROW(1), CT_ROW(2), CT_ROW(4), CT_ROW(8), CT_ROW(10), CT_ROW(16), CT_ROW(20), CT_ROW(32),
        {"n3", 0, 3, f90_reshapen, f90_kreshapen, f90_packn, f90_unpackn, f90_spreadn, f90_transposen,
         f90_cshiftn, f90_eoshiftn, f90_transfern, f90_ktransfern},
        {"n12", 0, 12, f90_reshapen, f90_kreshapen, f90_packn, f90_unpackn, f90_spreadn, f90_transposen,
         f90_cshiftn, f90_eoshiftn, f90_transfern, f90_ktransfern},
    };
    return rows;
}
#undef CT_ROW

// Byte b of element `tag` (distinct per element and per byte).
inline unsigned char pat(int tag, int b) { return static_cast<unsigned char>(tag * 37 + b * 11 + 1); }

// Fills the elements of a contiguous Array with tags base, base+1, ...
inline void tag_fill(Array& a, int32_t elsize, int base = 0) {
    for (int32_t i = 0; i < a.size(); ++i)
        for (int b = 0; b < elsize; ++b) a.data()[i * elsize + b] = static_cast<char>(pat(base + i, b));
}

// The tag (mod 256: the patterns repeat) of the element at p, or -1.
inline int tag_of(const char* p, int32_t elsize) {
    for (int t = 0; t < 256; ++t) {
        bool ok = true;
        for (int b = 0; b < elsize && ok; ++b) ok = static_cast<unsigned char>(p[b]) == pat(t, b);
        if (ok) return t;
    }
    return -1;
}

// Tags of all elements of a descriptor in array-element order.
inline std::vector<int> tags(const ArrDesc* d, int32_t elsize) {
    std::vector<int> out;
    for (char* p = static_cast<char*>(f90_FirstElemAddr(d)); p; p = static_cast<char*>(f90_NextElemAddr()))
        out.push_back(tag_of(p, elsize));
    return out;
}

// Values of a 4-byte integer descriptor in array-element order.
inline std::vector<int32_t> ints(const ArrDesc* d) {
    std::vector<int32_t> out;
    for (char* p = static_cast<char*>(f90_FirstElemAddr(d)); p; p = static_cast<char*>(f90_NextElemAddr())) {
        int32_t v;
        std::memcpy(&v, p, 4);
        out.push_back(v);
    }
    return out;
}

// A rank-1 integer vector (SHAPE, ORDER, MASK) of 4 or 8 bytes per element.
inline Array ivec(std::initializer_list<int64_t> v, int32_t width = 4) {
    Array a({{1, static_cast<int32_t>(v.size())}}, width);
    int i = 0;
    for (int64_t x : v) {
        if (width == 4) a.at<int32_t>(i++) = static_cast<int32_t>(x);
        else a.at<int64_t>(i++) = x;
    }
    return a;
}

inline std::vector<int32_t> shape_of(const ArrDesc* d) {
    std::vector<int32_t> s;
    for (int k = 0; k < d->RANK; ++k) s.push_back(d->DIM[k].UPPER - d->DIM[k].LOWER + 1);
    return s;
}

}  // namespace ctest
