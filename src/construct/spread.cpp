// spread.cpp - SPREAD and TRANSPOSE, sized entries and the generic one.
//
// Both are one two-operand nest over the result's shape: SPREAD's source
// step along DIM is 0 (each element repeated NCOPIES times), TRANSPOSE swaps
// the source steps.  The mover core turns contiguous runs into block copies
// and fills, and tiles the transposition.
//
// SPREAD keeps its deliberate behaviours: a negative NCOPIES counts as 0
// without a message; the result's extent along DIM is checked as a lower
// bound; with both operands contiguous, chunk c's copy k lands at element
// offset (c*NCOPIES + k)*chunk, whatever a supplied result's layout.
#include "construct/mover.h"
#include "frame/call.h"

namespace intrins::construct {
namespace {

template <class E>
void spread(ArgList* al, E e) {
    Call c(al);
    ArrDesc& r = *c.result().desc();
    const ArrDesc& src = *c.arg(1).desc();
    const int32_t dim = c.arg(2).i32();
    const int32_t nc = std::max(c.arg(3).i32(), int32_t{0});
    const int n = rank(src);
    if (n >= F90_MAXDIM) return;  // no rank-8 result exists
    // Source dimension that result dimension j shows (-1: the new one).  With
    // DIM out of range the layout reads the source's unused bounds, as the
    // unchecked call always has; nothing is copied then.
    auto from = [&](int j) { return j == dim - 1 ? -1 : (j < dim - 1 ? j : j - 1); };
    auto src_extent = [&](int j) { return from(j) < 0 ? 0 : extent(src, from(j)); };
    if (!c.result_supplied()) {
        int32_t upper[F90_MAXDIM];
        for (int j = 0; j <= n; ++j) upper[j] = from(j) == -1 && j == dim - 1 ? nc : src_extent(j);
        create(r, n + 1, src.ELSIZE, upper);
    }
    const bool dim_ok = dim >= 1 && dim <= n + 1;
    if (c.check()) {
        if (!dim_ok) f90_ArrLibError("SPREAD", 1, dim, n + 1);
        ShapeList want;
        want.count = n + 1;
        bool bad = false;
        for (int j = 0; j <= n; ++j) {
            want.extent[j] = j == dim - 1 ? nc : src_extent(j);
            int32_t got = extent(r, j);
            if (j == dim - 1 ? got < nc : got != want.extent[j]) bad = true;
        }
        if (bad) f90_ArrLibError("SPREAD", 2, &r, &want);
    }
    if (!dim_ok) return;
    if (n == 0) {
        // A scalar: NCOPIES elements along dimension 1.
        Nest<2> one;
        one.base[0] = r.BASE;
        one.base[1] = src.BASE;
        one.add_dim(std::min(nc, r.EXTENT), {byte_step(r, 0), 0});
        copy_nest(e, one);
        return;
    }
    if (src.EXTENT == 0 || nc == 0) return;
    Nest<2> nest;
    nest.base[0] = r.BASE;
    nest.base[1] = src.BASE;
    const std::ptrdiff_t sz = e.bytes();
    if (src.NONCONTIG == 0 && r.NONCONTIG == 0) {
        // The elements below DIM, from the extents (a contiguous operand's
        // STRIDE counts units of SCALEFACTOR bytes and is free where the
        // extent is 1).
        int64_t chunk = 1;
        for (int d = 0; d < dim - 1; ++d) chunk *= extent(src, d);
        if (chunk <= 0) return;
        const int64_t chunks = src.EXTENT / chunk;
        if (chunks * chunk * nc > r.EXTENT) return;  // a supplied result too small (checks off)
        nest.add_dim(static_cast<int32_t>(chunk), {sz, sz});
        const std::ptrdiff_t step = static_cast<std::ptrdiff_t>(chunk) * sz;  // fits: it lies within the result
        nest.add_dim(nc, {step, 0});
        nest.add_dim(static_cast<int32_t>(chunks), {step * nc, step});
    } else {
        for (int j = 0; j <= n; ++j) {
            const bool copies = j == dim - 1;
            const int32_t ext = std::min(copies ? nc : src_extent(j), extent(r, j));
            nest.add_dim(ext, {byte_step(r, j), copies ? 0 : byte_step(src, from(j))});
        }
    }
    copy_nest(e, nest);
}

template <class E>
void transpose(ArgList* al, E e) {
    Call c(al);
    ArrDesc& r = *c.result().desc();
    const ArrDesc& m = *c.arg(1).desc();
    const int32_t rows = extent(m, 0), cols = extent(m, 1);
    if (c.check() && c.result_supplied() && (extent(r, 0) != cols || extent(r, 1) != rows)) {
        ShapeList want;
        want.count = 2;
        want.extent[0] = cols;
        want.extent[1] = rows;
        f90_ArrLibError("TRANSPOSE", 1, &r, &want);
    }
    if (!c.result_supplied()) {
        const int32_t upper[2] = {cols, rows};
        create(r, 2, m.ELSIZE, upper);
    }
    // result(j, i) = MATRIX(i, j); the result is written in its storage order.
    Nest<2> nest;
    nest.base[0] = r.BASE;
    nest.base[1] = m.BASE;
    nest.add_dim(std::min(cols, extent(r, 0)), {byte_step(r, 0), byte_step(m, 1)});
    nest.add_dim(std::min(rows, extent(r, 1)), {byte_step(r, 1), byte_step(m, 0)});
    copy_nest(e, nest);
}

}  // namespace
}  // namespace intrins::construct

using namespace intrins::construct;

extern "C" {
#define X(S)                                                                             \
    INTRINS_EXPORT void f90_spread##S(ArgList* a) { spread(a, Fixed<S>{}); }            \
    INTRINS_EXPORT void f90_transpose##S(ArgList* a) { transpose(a, Fixed<S>{}); }
CONSTRUCT_SIZES(X)
#undef X

INTRINS_EXPORT void f90_spreadn(ArgList* a) { spread(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}); }
INTRINS_EXPORT void f90_transposen(ArgList* a) { transpose(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}); }
}
