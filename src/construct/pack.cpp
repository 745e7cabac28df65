// pack.cpp - PACK and UNPACK, sized entries and the generic one.
//
// MASK elements are 4-byte logicals read two ways, deliberately: PACK takes
// a word as true when it is nonzero, UNPACK when its bit 0 is set.  A VECTOR
// present with EXTENT 0 is PACK's absent VECTOR.
//
// PACK without VECTOR and without a supplied result allocates a provisional
// result of ARRAY's size, packs into it, then creates the final result of
// the packed size, copies, and releases the provisional storage.
//
// Without checks nothing guards a VECTOR, FIELD or result too short for the
// MASK; the copies here stop at the end of each operand instead of reading or
// writing past it (positions whose source ran out are left as they were).
#include "construct/mask.h"
#include "construct/mover.h"
#include "frame/call.h"

namespace intrins::construct {
namespace {

// upper - lower of a dimension, 0 when empty (PACK's shape test compares
// this, so extents 0 and 1 compare equal).
int32_t span(const ArrDesc& a, int d) {
    int32_t s = a.DIM[d].UPPER - a.DIM[d].LOWER;
    return s < 0 ? 0 : s;
}

template <class E>
void pack(ArgList* al, E e) {
    Call c(al);
    ArrDesc& r = *c.result().desc();
    const ArrDesc& arr = *c.arg(1).desc();
    const ArrDesc& mask = *c.arg(2).desc();
    const ArrDesc* vec = c.present(3) ? c.arg(3).desc() : nullptr;
    if (vec && vec->EXTENT == 0) vec = nullptr;
    const bool supplied = c.result_supplied();
    if (!supplied) {
        const int32_t upper = vec ? vec->EXTENT : arr.EXTENT;  // provisional without VECTOR
        create(r, 1, arr.ELSIZE, &upper);
    }
    if (r.EXTENT <= 0) return;
    const bool scalar = mask.RANK <= 0;
    if (c.check()) {
        if (vec && r.EXTENT != vec->EXTENT) f90_ArrLibError("PACK", 3, r.EXTENT, vec->EXTENT);
        if (scalar) {
            if (read_i32(mask.BASE) != 0 && r.EXTENT < arr.EXTENT) f90_ArrLibError("PACK", 3, r.EXTENT, arr.EXTENT);
        } else {
            bool bad = mask.RANK != arr.RANK || mask.EXTENT != arr.EXTENT;
            for (int d = rank(arr) - 1; d >= 0 && !bad; --d) bad = span(arr, d) != span(mask, d);
            if (bad) f90_ArrLibError("PACK", 1, &arr, &mask);
            const int64_t count = count_mask(mask, mask.EXTENT, kWordTrue);
            if (!vec && r.EXTENT < count) f90_ArrLibError("PACK", 3, r.EXTENT, static_cast<int32_t>(count));
            if (vec && vec->EXTENT < count) f90_ArrLibError("PACK", 2, vec->EXTENT, static_cast<int32_t>(count));
        }
    }
    const bool mask_on = scalar && read_i32(mask.BASE) != 0;
    const int64_t n = std::min(arr.EXTENT, mask.EXTENT);
    if (!vec && !supplied) {
        // The final size is the packed count.  It is counted first, so that
        // the elements go straight into the final result; the provisional
        // block is still obtained and released as always (its contents are
        // never seen).
        const int64_t count = scalar ? (mask_on ? r.EXTENT : 0) : (n > 0 ? count_mask(mask, n, kWordTrue) : 0);
        char* provisional = r.BASE;
        const int32_t upper = static_cast<int32_t>(std::min<int64_t>(count, r.EXTENT));
        create(r, 1, arr.ELSIZE, &upper);
        Stream rs(walk(r, e.bytes()));
        if (mask_on) {
            Stream as(walk(arr, e.bytes()));
            copy_stream(e, rs, as, arr.EXTENT);
        } else if (!scalar && n > 0) {
            pack_masked(e, rs, arr, mask);
        }
        freespace(provisional);
        return;
    }
    Stream rs(walk(r, e.bytes()));
    int64_t written = 0;
    if (mask_on) {
        Stream as(walk(arr, e.bytes()));
        written = copy_stream(e, rs, as, arr.EXTENT);
    } else if (!scalar && mask.EXTENT > 0) {
        written = pack_masked(e, rs, arr, mask);
    }
    if (vec) {
        // The tail comes from VECTOR's elements after the packed count.
        Stream vs(walk(*vec, e.bytes()));
        vs.skip(written);
        copy_stream(e, rs, vs, r.EXTENT - written);
    }
}

template <class E>
void unpack(ArgList* al, E e) {
    Call c(al);
    ArrDesc& r = *c.result().desc();
    const ArrDesc& vec = *c.arg(1).desc();
    const ArrDesc& mask = *c.arg(2).desc();
    const ArrDesc& field = *c.arg(3).desc();
    if (!c.result_supplied()) {
        int32_t upper[F90_MAXDIM];
        for (int d = 0; d < rank(mask); ++d) upper[d] = extent(mask, d);
        create(r, rank(mask), vec.ELSIZE, upper);
    }
    const int64_t count = std::min(mask.EXTENT, r.EXTENT);
    const bool field_scalar = field.RANK <= 0;
    if (c.check()) {
        for (int d = 0; d < rank(r); ++d)
            if (extent(r, d) != extent(mask, d)) f90_ArrLibError("UNPACK", 1, &r, &mask);
        if (!field_scalar)
            for (int d = 0; d < rank(field); ++d)
                if (extent(field, d) != extent(mask, d)) f90_ArrLibError("UNPACK", 2, &mask, &field);
        const int64_t n = count_mask(mask, count, kBit0True);
        if (vec.EXTENT < n) f90_ArrLibError("UNPACK", 3, vec.EXTENT, static_cast<int32_t>(n));
    }
    if (count <= 0) return;
    unpack_masked(e, r, vec, mask, field_scalar ? nullptr : &field, field.BASE, count);
}

}  // namespace
}  // namespace intrins::construct

using namespace intrins::construct;

extern "C" {
#define X(S)                                                                       \
    INTRINS_EXPORT void f90_pack##S(ArgList* a) { pack(a, Fixed<S>{}); }          \
    INTRINS_EXPORT void f90_unpack##S(ArgList* a) { unpack(a, Fixed<S>{}); }
CONSTRUCT_SIZES(X)
#undef X

INTRINS_EXPORT void f90_packn(ArgList* a) { pack(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}); }
INTRINS_EXPORT void f90_unpackn(ArgList* a) { unpack(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}); }
}
