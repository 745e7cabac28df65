// shift.cpp - CSHIFT and EOSHIFT, sized entries and the generic one.
//
// Every section along DIM is cut into at most two pieces: a run of ARRAY
// moved to another position, and (CSHIFT) the wrapped-around run or
// (EOSHIFT) a run of the boundary value.  With a scalar SHIFT and a scalar
// or default BOUNDARY every section is cut the same way, so each piece is
// one nest over the whole array: along DIM > 1 its runs along dimension 1
// stay whole and contiguous data moves as block copies.  An array SHIFT or
// BOUNDARY cuts each section on its own.
//
// Deliberate behaviours kept: CSHIFT checks DIM whenever DIM is present, also
// without Flags bit 0, EOSHIFT only with it; the generic EOSHIFT's default
// boundary is an element of blanks in scratch storage, released before
// returning; the sized entries' default is all zero bytes.  A SHIFT array
// with fewer elements than there are sections (checks off) gives the
// remaining sections shift 0, past a short BOUNDARY array nothing is filled,
// and an EOSHIFT with DIM out of range (checks off) creates the result and
// copies nothing.
#include "construct/mover.h"
#include "frame/call.h"

namespace intrins::construct {
namespace {

// ARRAY's extents with dimension dim (0-based) left out.
ShapeList others(const ArrDesc& a, int dim) {
    ShapeList l;
    for (int d = 0; d < rank(a); ++d)
        if (d != dim) l.extent[l.count++] = extent(a, d);
    return l;
}

bool differs(const ArrDesc& x, const ShapeList& want) {
    for (int d = 0; d < want.count; ++d)
        if (extent(x, d) != want.extent[d]) return true;
    return false;
}

// Cuts a section of n elements shifted by s into pieces:
// move(r0, a0, len): result positions r0.. from ARRAY positions a0..;
// fill(r0, len): result positions r0.. from the boundary.
template <class Move, class Fill>
void cut(bool cyclic, int64_t n, int64_t s, Move move, Fill fill) {
    if (cyclic) {
        s %= n;
        if (s < 0) s += n;  // the non-negative residue
        move(0, s, n - s);
        move(n - s, 0, s);
    } else if (s >= n || s <= -n) {
        fill(0, n);
    } else if (s >= 0) {
        move(0, s, n - s);
        fill(n - s, s);
    } else {
        fill(0, -s);
        move(-s, 0, n + s);
    }
}

struct Op {
    bool cyclic;
    const char* name;
};

template <class E>
void shift(ArgList* al, E e, Op op, bool generic) {
    Call c(al);
    ArrDesc& r = *c.result().desc();
    const ArrDesc& arr = *c.arg(1).desc();
    const ArrDesc& sh = *c.arg(2).desc();
    const int rk = rank(arr);
    const int dim_slot = op.cyclic ? 3 : 4;
    const bool dim_given = c.present(dim_slot);
    const int32_t dim = dim_given ? c.arg(dim_slot).i32() : 1;
    const ArrDesc* bnd = !op.cyclic && c.present(3) ? c.arg(3).desc() : nullptr;
    const bool dim_ok = dim >= 1 && dim <= rk;
    if (op.cyclic && dim_given && !dim_ok) f90_ArrLibError(op.name, 1, dim, rk);
    if (c.check()) {
        if (!op.cyclic && rk >= 1 && !dim_ok) f90_ArrLibError(op.name, 1, dim, rk);
        if (c.result_supplied())
            for (int d = 0; d < rk; ++d)
                if (extent(r, d) != extent(arr, d)) f90_ArrLibError(op.name, 2, &r, &arr);
        const ShapeList want = others(arr, dim - 1);
        if (sh.RANK > 0 && (op.cyclic ? rk >= 2 : rk >= 1) && differs(sh, want))
            f90_ArrLibError(op.name, op.cyclic ? 3 : 4, &sh, &want);
        if (bnd && bnd->RANK > 0 && rk >= 1 && differs(*bnd, want)) f90_ArrLibError(op.name, 3, bnd, &want);
    }
    if (!c.result_supplied()) {
        int32_t upper[F90_MAXDIM];
        // EOSHIFT writes upper - lower + 1 unclamped; the creator clamps it.
        for (int d = 0; d < rk; ++d)
            upper[d] = op.cyclic ? extent(arr, d) : arr.DIM[d].UPPER - arr.DIM[d].LOWER + 1;
        create(r, rk, arr.ELSIZE, upper);
    }
    if (arr.EXTENT <= 0) return;

    // The fill value: BOUNDARY, or zero bytes, or (generic) blanks in scratch.
    const int32_t sz = e.bytes();
    char zeros[32] = {};
    char* scratch = nullptr;
    const char* fill_value = zeros;
    if (!op.cyclic && !bnd && generic) {
        scratch = static_cast<char*>(getspace(static_cast<Word>(sz > 0 ? sz : 0)));
        if (sz > 0) std::memset(scratch, ' ', static_cast<std::size_t>(sz));
        fill_value = scratch;
    } else if (bnd) {
        fill_value = bnd->BASE;
    }

    if (rk == 0) {
        // A scalar ARRAY: itself, or the boundary when shifted off.
        const bool off = !op.cyclic && read_i32(sh.BASE) != 0;
        copy_elem(e, r.BASE, off ? fill_value : arr.BASE);
    } else if (dim_ok) {
        const int D = dim - 1;
        const int64_t n = extent(arr, D);
        const int64_t rn = std::min<int64_t>(extent(r, D), n);
        const std::ptrdiff_t rsD = byte_step(r, D), asD = byte_step(arr, D);
        const bool stream = static_cast<int64_t>(r.EXTENT) * sz >= kStreamBytes;
        if (D > 0 && sh.RANK <= 0 && (!bnd || bnd->RANK <= 0)) {
            // Every section cut alike, along a dimension other than the
            // first: each piece is one nest whose runs are whole columns.
            auto piece = [&](int64_t r0, const char* src, std::ptrdiff_t sstep, std::ptrdiff_t other_scale,
                             int64_t len) {
                len = std::min(len, rn - r0);
                Nest<2> nn;
                for (int d = 0; d < rk; ++d) {
                    if (d == D) nn.add_dim(static_cast<int32_t>(len), {rsD, sstep});
                    else nn.add_dim(std::min(extent(r, d), extent(arr, d)), {byte_step(r, d), byte_step(arr, d) * other_scale});
                }
                if (nn.empty()) return;  // the result's BASE may be null then
                nn.base[0] = r.BASE + r0 * rsD;
                nn.base[1] = const_cast<char*>(src);
                copy_nest(e, nn);
            };
            cut(op.cyclic, n, read_i32(sh.BASE),
                [&](int64_t r0, int64_t a0, int64_t len) { piece(r0, arr.BASE + a0 * asD, asD, 1, len); },
                [&](int64_t r0, int64_t len) { piece(r0, fill_value, 0, 0, len); });
        } else {
            // Per section (each section's pieces written together): SHIFT
            // and BOUNDARY elements taken in order.
            Stream shs(walk(sh, sh.ELSIZE));
            Stream bs(bnd && bnd->RANK > 0 ? walk(*bnd, sz) : Nest<1>{});
            const bool bnd_array = bnd && bnd->RANK > 0;
            const int32_t scalar_shift = sh.RANK <= 0 ? read_i32(sh.BASE) : 0;
            Nest<2> outer;  // the dimensions other than DIM, clipped to the result
            outer.base[0] = r.BASE;
            outer.base[1] = arr.BASE;
            for (int d = 0; d < rk; ++d)
                if (d != D) outer.add_dim(std::min(extent(r, d), extent(arr, d)), {byte_step(r, d), byte_step(arr, d)});
            outer.elements([&](char* const* p) {
                int64_t s = scalar_shift;
                if (sh.RANK > 0) {
                    s = shs.left() > 0 ? read_i32(shs.ptr()) : 0;
                    if (shs.left() > 0) shs.advance(1);
                }
                const char* b = fill_value;
                if (bnd_array) {  // past BOUNDARY's end (checks off) nothing is filled
                    b = bs.left() > 0 ? bs.ptr() : nullptr;
                    if (b) bs.advance(1);
                }
                // Only result positions below rn exist (none when the result
                // is empty along DIM and its BASE null).
                cut(op.cyclic, n, s,
                    [&](int64_t r0, int64_t a0, int64_t len) {
                        if (r0 < rn) copy_run(e, p[0] + r0 * rsD, rsD, p[1] + a0 * asD, asD, std::min(len, rn - r0), stream);
                    },
                    [&](int64_t r0, int64_t len) {
                        if (b && r0 < rn) copy_run(e, p[0] + r0 * rsD, rsD, b, 0, std::min(len, rn - r0), stream);
                    });
            });
        }
    }
    if (scratch) freespace(scratch);
}

constexpr Op kCshift{true, "CSHIFT"};
constexpr Op kEoshift{false, "EOSHIFT"};

}  // namespace
}  // namespace intrins::construct

using namespace intrins::construct;

extern "C" {
#define X(S)                                                                                   \
    INTRINS_EXPORT void f90_cshift##S(ArgList* a) { shift(a, Fixed<S>{}, kCshift, false); }   \
    INTRINS_EXPORT void f90_eoshift##S(ArgList* a) { shift(a, Fixed<S>{}, kEoshift, false); }
CONSTRUCT_SIZES(X)
#undef X

INTRINS_EXPORT void f90_cshiftn(ArgList* a) { shift(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}, kCshift, true); }
INTRINS_EXPORT void f90_eoshiftn(ArgList* a) { shift(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}, kEoshift, true); }
}
