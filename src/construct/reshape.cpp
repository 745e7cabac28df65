// reshape.cpp - RESHAPE: the sized entries f90_reshape<S>, the generic
// f90_reshapen, the K family (8-byte SHAPE and ORDER) and the two validation
// routines.
//
// SHAPE and ORDER elements are read through their descriptors' dimension 1;
// only the low 32 bits of each element are used, also in the K family (values
// beyond 32 bits are not supported).  The K routines differ from the plain
// ones only in the name their diagnostics carry ("KRESHAPE"), which has no
// row in the message table: the error reporter's unknown-name course.
//
// Copy: the result is walked in ORDER's permuted subscript order (level 1
// fastest) or in array-element order, SOURCE and then PAD (repeated) in
// array-element order, the two paired by element number.  When SOURCE is
// contiguous and covers the result, a permuted result becomes one
// two-operand nest, which the mover core tiles.
#include "construct/mover.h"
#include "frame/call.h"
#include "frame/wrap.h"

namespace intrins::construct {
namespace {

constexpr const char* kName = "RESHAPE";
constexpr const char* kKName = "KRESHAPE";

bool pad_empty(const Call& c) {
    return !c.present(3) || c.arg(3).desc()->EXTENT == 0;  // an empty PAD counts as absent
}

void validate(ArgList* al, const char* name) {
    Call c(al);
    const ArrDesc& shape = *c.arg(2).desc();
    const ArrDesc& source = *c.arg(1).desc();
    ArrDesc* result = c.result().desc();
    const bool supplied = c.result_supplied();
    if (shape.EXTENT < 1 || shape.EXTENT > F90_MAXDIM) f90_ArrLibError(name, 1, shape.EXTENT);
    if (supplied && result->RANK != shape.EXTENT) f90_ArrLibError(name, 3, int32_t{result->RANK}, shape.EXTENT);
    int32_t product = 1;
    const int32_t n = std::min(extent(shape, 0), int32_t{F90_MAXDIM});
    for (int32_t k = 0; k < n; ++k) {
        int32_t v = vec_elem(shape, k);
        if (v < 0) f90_ArrLibError(name, 2, &shape);
        if (supplied && extent(*result, k) != v) f90_ArrLibError(name, 4, result, &shape);
        product = wmul(product, v);
    }
    if (pad_empty(c) && source.EXTENT < product) f90_ArrLibError(name, 5, product, source.EXTENT);
    if (c.present(4)) {
        const ArrDesc& order = *c.arg(4).desc();
        if (order.RANK != shape.RANK || order.EXTENT != shape.EXTENT) f90_ArrLibError(name, 6, &shape, &order);
        const int32_t m = extent(order, 0);
        for (int32_t i = 0; i < m; ++i) {
            int32_t v = vec_elem(order, i);
            bool bad = v < 1 || v > shape.EXTENT;
            for (int32_t j = i + 1; j < m && !bad; ++j) bad = vec_elem(order, j) == v;
            if (bad) f90_ArrLibError(name, 7, shape.EXTENT, &order);
        }
    }
}

// ORDER as 0-based dimension numbers, when it is a permutation of the
// result's dimensions.  Without checks a bad ORDER gives undefined results;
// here it is ignored (array-element order) so that no walk leaves the result.
bool read_order(const Call& c, int rank_, int* perm) {
    if (!c.present(4)) return false;
    const ArrDesc& order = *c.arg(4).desc();
    if (order.RANK < 1 || extent(order, 0) < rank_) return false;
    bool seen[F90_MAXDIM] = {};
    for (int k = 0; k < rank_; ++k) {
        int32_t v = vec_elem(order, k);
        if (v < 1 || v > rank_ || seen[v - 1]) return false;
        seen[v - 1] = true;
        perm[k] = v - 1;
    }
    return true;
}

template <class E>
void reshape(ArgList* al, E e, const char* name, bool generic) {
    Call c(al);
    if (c.check()) validate(al, name);
    ArrDesc& r = *c.result().desc();
    const ArrDesc& src = *c.arg(1).desc();
    const ArrDesc& shape = *c.arg(2).desc();
    const bool no_pad = pad_empty(c);
    if (generic) {
        if (src.EXTENT == 0 && no_pad) return;  // result left untouched
        if (c.result_supplied() && r.EXTENT == 0) return;
    }
    if (!c.result_supplied()) {
        const int rk = std::clamp(shape.EXTENT, 0, int32_t{F90_MAXDIM});
        int32_t upper[F90_MAXDIM];
        for (int k = 0; k < rk; ++k) upper[k] = vec_elem(shape, k);
        create(r, rk, generic ? src.ELSIZE : e.bytes(), upper);
    }
    if (r.EXTENT <= 0) return;
    const int64_t n = r.EXTENT, s = src.EXTENT;
    if (generic && n > s && no_pad) {
        // Deliberate: a result that SOURCE cannot fill and no PAD completes
        // is released, whoever supplied it, and nothing is copied.
        freespace(r.BASE);
        return;
    }

    int perm[F90_MAXDIM];
    const bool ordered = read_order(c, rank(r), perm);
    Nest<1> rn;
    if (ordered) {
        rn.base[0] = r.BASE;
        for (int k = 0; k < rank(r); ++k) rn.add_dim(extent(r, perm[k]), {byte_step(r, perm[k])});
        if (src.NONCONTIG == 0 && n <= s) {
            // Permuted result against a straight SOURCE: one nest, tiled.
            Nest<2> both;
            both.base[0] = r.BASE;
            both.base[1] = src.BASE;
            std::ptrdiff_t sstep = e.bytes();
            for (int k = 0; k < rank(r); ++k) {
                both.add_dim(rn.extent[k], {rn.step[0][k], sstep});
                sstep *= rn.extent[k];
            }
            copy_nest(e, both);
            return;
        }
        rn.coalesce();
    } else {
        rn = walk(r, e.bytes());
    }
    Stream rs(rn);
    Stream ss(walk(src, e.bytes()));
    copy_stream(e, rs, ss, std::min(n, s));
    if (n <= s || !c.present(3)) return;
    const ArrDesc& pad = *c.arg(3).desc();
    if (pad.EXTENT <= 0) return;  // nothing to repeat (checks off): the rest is left alone
    const Nest<1> pn = walk(pad, e.bytes());
    for (int64_t rest = n - s; rest > 0 && rs.left() > 0;) {
        Stream ps(pn);
        rest -= copy_stream(e, rs, ps, std::min<int64_t>(rest, pad.EXTENT));
    }
}

}  // namespace
}  // namespace intrins::construct

using namespace intrins::construct;

extern "C" {
INTRINS_EXPORT void f90_Reshape_Validation(ArgList* a) { validate(a, kName); }
INTRINS_EXPORT void f90_kReshape_Validation(ArgList* a) { validate(a, kKName); }

#define X(S)                                                                                           \
    INTRINS_EXPORT void f90_reshape##S(ArgList* a) { reshape(a, Fixed<S>{}, kName, false); }          \
    INTRINS_EXPORT void f90_kreshape##S(ArgList* a) { reshape(a, Fixed<S>{}, kKName, false); }
CONSTRUCT_SIZES(X)
#undef X

INTRINS_EXPORT void f90_reshapen(ArgList* a) {
    reshape(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}, kName, true);
}
INTRINS_EXPORT void f90_kreshapen(ArgList* a) {
    reshape(a, Bytes{intrins::Call(a).arg(1).desc()->ELSIZE}, kKName, true);
}
}
