// transfer.cpp - TRANSFER: the sized entries, the generic one (MOLD's ELSIZE)
// and the K family, whose SIZE is 64-bit and whose size arithmetic is done
// in 64 bits ("KTRANSFER" has no row in the message table: the error
// reporter's unknown-name course).
//
// SOURCE and the result are byte streams: each element's bytes in array
// element order, so strided operands need no separate modes.  With SIZE the
// bytes of the result beyond SOURCE's are zeroed; without SIZE the tail of a
// partial last element is deliberately left unwritten.  The zero fill runs
// over the result's own elements, also when the result is strided.
#include <type_traits>

#include "construct/mover.h"
#include "frame/call.h"
#include "frame/wrap.h"

namespace intrins::construct {
namespace {

// The size arithmetic: 32-bit wrapping for the plain family, 64-bit for K.
inline int32_t mul(int32_t a, int32_t b) { return wmul(a, b); }
inline int64_t mul(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}

template <class T, class E>
void transfer(ArgList* al, E e, const char* name) {
    Call c(al);
    ArrDesc& r = *c.result().desc();
    const ArrDesc& src = *c.arg(1).desc();
    const ArrDesc& mold = *c.arg(2).desc();
    const bool has_size = c.present(3);
    T size = 0;
    if (has_size) size = std::is_same_v<T, int64_t> ? static_cast<T>(c.arg(3).i64()) : static_cast<T>(c.arg(3).i32());
    const bool mold_scalar = mold.RANK <= 0;
    const T bytes = mul(static_cast<T>(src.RANK <= 0 ? 1 : src.EXTENT), static_cast<T>(src.ELSIZE));
    // A MOLD of size 0 holds nothing: no element is needed.
    const T fit = mold.ELSIZE > 0 ? bytes / mold.ELSIZE + (bytes % mold.ELSIZE != 0 ? 1 : 0) : 0;
    const T count = has_size ? size : (mold_scalar ? 1 : fit);
    if (c.check()) {
        if (has_size && size < 0) f90_ArrLibError(name, 1, static_cast<int32_t>(size));
        if (c.result_supplied() && (!mold_scalar || has_size) && static_cast<T>(r.EXTENT) != count)
            f90_ArrLibError(name, 2, r.EXTENT, static_cast<int32_t>(count));
    }
    if (!c.result_supplied()) {
        if (mold.ELSIZE > 0) r.ELSIZE = mold.ELSIZE;
        r.RANK = mold_scalar && !has_size ? 0 : 1;
        r.DIM[0].LOWER = 1;
        r.DIM[0].UPPER = static_cast<int32_t>(count);  // written for the scalar too
        f90_CreateArrayM(&r);
    }
    const T esz = static_cast<T>(e.bytes());
    Stream rs(byte_walk(r, e.bytes()));
    Stream ss(byte_walk(src, src.ELSIZE));
    const T want = mold_scalar && !has_size ? esz : mul(count, esz);
    const T copied = std::max<T>(std::min(want, bytes), 0);
    copy_stream(Fixed<1>{}, rs, ss, copied);
    if (has_size && want > copied) {
        const char zero = 0;
        fill_stream(Fixed<1>{}, rs, &zero, want - copied);
    }
}

}  // namespace
}  // namespace intrins::construct

using namespace intrins::construct;

extern "C" {
#define X(S)                                                                                             \
    INTRINS_EXPORT void f90_transfer##S(ArgList* a) { transfer<int32_t>(a, Fixed<S>{}, "TRANSFER"); }   \
    INTRINS_EXPORT void f90_ktransfer##S(ArgList* a) { transfer<int64_t>(a, Fixed<S>{}, "KTRANSFER"); }
CONSTRUCT_SIZES(X)
#undef X

INTRINS_EXPORT void f90_transfern(ArgList* a) {
    transfer<int32_t>(a, Bytes{intrins::Call(a).arg(2).desc()->ELSIZE}, "TRANSFER");
}
INTRINS_EXPORT void f90_ktransfern(ArgList* a) {
    transfer<int64_t>(a, Bytes{intrins::Call(a).arg(2).desc()->ELSIZE}, "KTRANSFER");
}
}
