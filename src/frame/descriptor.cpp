// descriptor.cpp - descriptor creation, sections, element addressing and the
// process-wide element walk.
//
// Every bound and offset is 32-bit and wraps like the machine arithmetic the
// compiled code uses; addresses are words.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "call.h"
#include "descriptor.h"
#include "runtime.h"
#include "wrap.h"

extern "C" {
int32_t ArrBoundsCheck = 0;
}

namespace intrins {
namespace {

// The element walk of f90_FirstElemAddr / f90_NextElemAddr: process-wide, one
// walk at a time, unguarded.
struct ElemIterator {
    const ArrDesc* desc;
    int32_t sub[F90_MAXDIM];
};
ElemIterator g_iter;

void* elem_addr(const ArrDesc* d, const int32_t* sub) {
    int32_t lin = 0;
    for (int k = 0; k < rank(*d); ++k) lin = wadd(lin, wmul(d->DIM[k].STRIDE, sub[k]));
    if (ArrBoundsCheck && (lin < *low_offset(d) || lin >= *high_offset(d))) {
        std::fputs("f90_ElemAddr: Bad subscript.\n", stderr);
        std::exit(1);
    }
    return offset_by(d->ZERO, static_cast<std::intptr_t>(lin) * d->SCALEFACTOR);
}

// Completes and clamps one section triplet against the source bounds [lb, ub].
// A stride of 0 cannot step through the dimension; it gives an empty one
// instead of the division fault a literal evaluation would raise.
void clamp_triplet(int32_t lb, int32_t ub, int32_t& lo, int32_t& hi, int32_t& st) {
    if (lo == F90_DEFAULT_MARKER) lo = lb;
    if (hi == F90_DEFAULT_MARKER) hi = ub;
    if (st == F90_DEFAULT_MARKER) st = 1;
    if (st == 0) {
        hi = wsub(lo, 1);
        return;
    }
    if (st >= 1) {
        if (lo < lb) {
            lo = wadd(lo, wmul(wdiv(wsub(lb, lo), st), st));
            if (lo < lb) lo = wadd(lo, st);
        }
        if (hi > ub) hi = ub;
        if (hi >= lo)
            hi = wadd(lo, wmul(wdiv(wsub(hi, lo), st), st));
        else
            hi = wsub(lo, st);
    } else {
        if (lo > ub) {
            lo = wadd(lo, wmul(wdiv(wsub(ub, lo), st), st));
            if (lo > ub) lo = wadd(lo, st);
        }
        if (hi < lb) hi = lb;
        if (hi <= lo)
            hi = wadd(lo, wmul(wdiv(wsub(hi, lo), st), st));
        else
            hi = wsub(lo, st);
    }
}

}  // namespace
}  // namespace intrins

using namespace intrins;

extern "C" {

INTRINS_EXPORT void f90_CreateArrayM(ArrDesc* d) {
    int32_t total = 1;
    for (int k = 0; k < rank(*d); ++k) {
        ArrDim& dim = d->DIM[k];
        dim.STRIDE = total;
        int32_t e = wadd(wsub(dim.UPPER, dim.LOWER), 1);
        if (e < 0) {
            dim.UPPER = wsub(dim.LOWER, 1);
            e = 0;
        }
        total = wmul(total, e);
    }
    d->EXTENT = total;
    Word bytes = static_cast<Word>(static_cast<int64_t>(total) * d->ELSIZE);
    d->BASE = static_cast<char*>(getspace(bytes));
    d->ZERO = d->BASE;
    d->SCALEFACTOR = d->ELSIZE;
    d->NONCONTIG = 0;
    d->RESERVED[0] = d->RESERVED[1] = 0;
    int32_t low = 0, high = 0;
    for (int k = 0; k < rank(*d); ++k) {
        low = wadd(low, wmul(d->DIM[k].LOWER, d->DIM[k].STRIDE));
        high = wadd(high, wmul(d->DIM[k].UPPER, d->DIM[k].STRIDE));
    }
    if (d->EXTENT > 0) d->ZERO = offset_by(d->BASE, -static_cast<std::intptr_t>(low) * d->ELSIZE);
    if (ArrBoundsCheck) {
        *low_offset(d) = d->EXTENT > 0 ? low : 0;
        *high_offset(d) = d->EXTENT > 0 ? wadd(high, 1) : 0;
    }
}

INTRINS_EXPORT void f90_CreateArray(int32_t rank_, const int32_t* bounds, int32_t elsize, ArrDesc* d) {
    d->RANK = static_cast<int8_t>(rank_);
    for (int k = 0; k < rank(*d); ++k) {
        int32_t lo = bounds[2 * k];
        d->DIM[k].LOWER = lo == F90_DEFAULT_MARKER ? 1 : lo;
        d->DIM[k].UPPER = bounds[2 * k + 1];
    }
    d->ELSIZE = elsize;
    f90_CreateArrayM(d);
}

INTRINS_EXPORT void f90_CreateSection(const ArrDesc* s, const int32_t* trip, ArrDesc* d) {
    const int n = rank(*s);
    int32_t first[F90_MAXDIM];  // scalar index or clamped first index, per source dimension
    int32_t mult = 1;           // element multiplier M(k) of the source, from its bounds
    int32_t offset = 0;         // sum of (first - LOWER) * M over all source dimensions
    int32_t zero_off = 0;       // sum of st * M over the kept dimensions
    int out = 0;
    int32_t total = 1;
    bool out_of_range = false;
    for (int k = 0; k < n; ++k) {
        const int32_t* t = trip + 4 * k;
        const int32_t lb = s->DIM[k].LOWER, ub = s->DIM[k].UPPER;
        if (t[0] == F90_SUBSCRIPT_SCALAR) {
            first[k] = t[1];
            if (t[1] < lb || t[1] > ub) out_of_range = true;
        } else {
            int32_t lo = t[1], hi = t[2], st = t[3];
            clamp_triplet(lb, ub, lo, hi, st);
            first[k] = lo;
            if (t[0] == F90_SUBSCRIPT_TRIPLET) {
                ArrDim& dim = d->DIM[out++];
                dim.LOWER = 1;
                dim.UPPER = st == 0 ? 0 : wadd(wdiv(wsub(hi, lo), st), 1);
                dim.STRIDE = wmul(st, mult);
                total = wmul(total, dim.UPPER);
                zero_off = wadd(zero_off, dim.STRIDE);
            }
        }
        offset = wadd(offset, wmul(wsub(first[k], lb), mult));
        mult = wmul(mult, wadd(wsub(ub, lb), 1));
    }
    d->RANK = static_cast<int8_t>(out);
    d->EXTENT = out_of_range ? 0 : total;
    d->ELSIZE = s->ELSIZE;
    d->SCALEFACTOR = s->ELSIZE;
    d->NONCONTIG = 1;
    d->RESERVED[0] = d->RESERVED[1] = 0;
    if (d->EXTENT != 0) {
        d->BASE = offset_by(s->BASE, static_cast<std::intptr_t>(offset) * s->ELSIZE);
        d->ZERO = offset_by(d->BASE, -static_cast<std::intptr_t>(zero_off) * s->ELSIZE);
    } else {
        d->BASE = nullptr;
        d->ZERO = nullptr;
    }
    if (ArrBoundsCheck) {
        int32_t low = 0, high = 0;
        if (d->EXTENT >= 1) {
            for (int k = 0; k < out; ++k) {
                const ArrDim& dim = d->DIM[k];
                if (dim.STRIDE > 0) {
                    low = wadd(low, wmul(dim.LOWER, dim.STRIDE));
                    high = wadd(high, wmul(dim.UPPER, dim.STRIDE));
                } else {
                    low = wadd(low, wmul(dim.UPPER, dim.STRIDE));
                    high = wadd(high, wmul(dim.LOWER, dim.STRIDE));
                }
            }
            high = wadd(high, 1);
        }
        *low_offset(d) = low;
        *high_offset(d) = high;
    }
}

INTRINS_EXPORT void* f90_ElemAddr(const ArrDesc* d, ...) {
    int32_t sub[F90_MAXDIM] = {};
    va_list ap;
    va_start(ap, d);
    for (int k = 0; k < rank(*d); ++k) sub[k] = va_arg(ap, int32_t);
    va_end(ap);
    return elem_addr(d, sub);
}

INTRINS_EXPORT void* f90_ElemAddrContig(const ArrDesc* d, int32_t n) {
    return offset_by(d->BASE, static_cast<std::intptr_t>(n) * d->ELSIZE);
}

INTRINS_EXPORT void* f90_FirstElemAddr(const ArrDesc* d) {
    if (d->EXTENT == 0) {
        g_iter = {};
        return nullptr;
    }
    g_iter.desc = d;
    for (int k = 0; k < F90_MAXDIM; ++k) g_iter.sub[k] = k < rank(*d) ? d->DIM[k].LOWER : 0;
    return elem_addr(d, g_iter.sub);
}

INTRINS_EXPORT void* f90_NextElemAddr(void) {
    const ArrDesc* d = g_iter.desc;
    if (!d) return nullptr;
    for (int k = 0; k < rank(*d); ++k) {
        g_iter.sub[k] = wadd(g_iter.sub[k], 1);
        if (g_iter.sub[k] <= d->DIM[k].UPPER) return elem_addr(d, g_iter.sub);
        g_iter.sub[k] = d->DIM[k].LOWER;
    }
    g_iter = {};
    return nullptr;
}

INTRINS_EXPORT void f90_Null(ArgList* a) {
    ArrDesc* d = Call(a).result().desc();
    d->ZERO = nullptr;
    d->BASE = nullptr;
}

}  // extern "C"
