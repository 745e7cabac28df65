// sum.cpp - SUM and PRODUCT for every INTEGER, REAL and COMPLEX kind.
//
// Each result is accumulated one element at a time in array-element order
// (along DIM for a DIM result) in the accumulator of arith.h, and converted
// to the element type once, when stored.  Integer accumulation wraps.
//
// Order of work: the result is allocated first (when the caller has not),
// then the checks run under the check flag: DIM's range (every rank), the
// DIM result's shape (the loose max(upper - lower, 0) comparison), MASK's
// shape.  The allocation takes its bounds from every ARRAY dimension other
// than DIM without clamping; CreateArrayM clamps them.
//
// A masked-out element adds +0.0 (multiplies by 1) instead of branching where
// that gives the same bits: the accumulator starts at +0.0 and a sum of it
// with anything never yields -0.0, and x * 1 is x.  The complex product is
// the exception (1 + 0i times an infinite accumulator makes NaNs), so it
// branches.
#include <cstring>
#include <type_traits>

#include "intrins.h"
#include "reduce/arith.h"
#include "reduce/lists.h"
#include "reduce/simd.h"
#include "reduce/walk.h"

namespace intrins::reduce {
namespace {

template <class E, bool Product>
struct Fold {
    using A = Arith<E>;
    using acc = typename A::acc;
    static constexpr std::size_t size = Kind<E>::size;
    static constexpr bool seeds = false;
    static constexpr bool selects = !(Product && is_complex<E>);

    static acc init() { return Product ? one<E>() : zero<E>(); }
    static acc combine(const acc& a, const acc& x) {
        if constexpr (!Product) return a + x;
        else if constexpr (std::is_unsigned_v<acc>) return mul(a, x);
        else return a * x;
    }
    static acc at(const char* e) { return A::widen(Kind<E>::load(e)); }
    static void add(acc& a, const char* e, int32_t) { a = combine(a, at(e)); }
    static void seed(acc& a, const char* e) { add(a, e, 0); }
    static void put(char* dst, const acc& a) { Kind<E>::store(dst, A::narrow(a)); }

    // Integer runs of adjacent elements go to the vector fold; the others
    // run in order, adjacent ones with the element size as a constant step.
    static void run(acc& a, const char* p, std::ptrdiff_t s, int32_t n, int32_t) {
        acc r = a;
        if constexpr (std::is_unsigned_v<acc> && sizeof(acc) == size) {
            if (s == static_cast<std::ptrdiff_t>(size)) {
                a = combine(a, Product ? simd::product<acc>(p, n) : simd::sum<acc>(p, n));
                return;
            }
        }
        if (s == static_cast<std::ptrdiff_t>(size)) {
            for (int32_t i = 0; i < n; ++i) r = combine(r, at(p + i * size));
        } else {
            for (int32_t i = 0; i < n; ++i) r = combine(r, at(p + i * s));
        }
        a = r;
    }
    static void run_masked(acc& a, const char* p, std::ptrdiff_t s, const char* m, std::ptrdiff_t ms,
                           int32_t n, int32_t) {
        acc r = a;
        const acc id = init();
        if constexpr (std::is_same_v<acc, double>) {
            // A masked-out element becomes +0.0 (or 1.0) through its bits,
            // without a branch.
            for (int32_t i = 0; i < n; ++i) {
                double x = at(p + i * s);
                uint64_t b;
                std::memcpy(&b, &x, 8);
                uint64_t keep = 0 - static_cast<uint64_t>(mask_true(m + i * ms));
                b = (b & keep) | (Product ? 0x3FF0000000000000ull & ~keep : 0);
                std::memcpy(&x, &b, 8);
                r = combine(r, x);
            }
        } else if constexpr (selects) {
            if (s == static_cast<std::ptrdiff_t>(size) && ms == 4) {
                for (int32_t i = 0; i < n; ++i) r = combine(r, mask_true(m + 4 * i) ? at(p + i * size) : id);
            } else {
                for (int32_t i = 0; i < n; ++i) r = combine(r, mask_true(m + i * ms) ? at(p + i * s) : id);
            }
        } else {
            for (int32_t i = 0; i < n; ++i)
                if (mask_true(m + i * ms)) r = combine(r, at(p + i * s));
        }
        a = r;
    }
};

template <class P>
void arith_reduce(ArgList* args, const char* name) {
    Frame f(args, true);
    if (!f.supplied()) {
        int32_t upper[F90_MAXDIM] = {};
        int i = 0;
        for (int d = 0; d < f.rank && i < F90_MAXDIM; ++d)
            if (d != f.dim - 1) upper[i++] = wadd(wsub(f.array->DIM[d].UPPER, f.array->DIM[d].LOWER), 1);
        allocate(f.result, f.rank - 1, f.array->ELSIZE, upper);
    }
    if (f.check()) {
        if (f.dim_present && f.dim_out_of_range()) f90_ArrLibError(name, 1, f.dim, static_cast<int32_t>(f.rank));
        if (f.dim_present && f.rank > 1 && result_shape_differs(f, false)) {
            ShapeList shape = expected_shape(f);
            f90_ArrLibError(name, 2, f.result, &shape);
        }
        if (f.array_mask() && mask_shape_differs(f)) f90_ArrLibError(name, 3, f.array, f.mask);
    }
    const bool empty = f.masked_out();
    if (f.dim_path()) {
        reduce_dim<P>(f, empty);
        return;
    }
    // A scalar stored into a result allocated here with no room (a rank-1
    // allocation of an empty DIM shape) is dropped.
    if (!f.supplied() && f.result->EXTENT <= 0) return;
    typename P::acc acc = P::init();
    if (!empty) {
        bool contiguous = f.array->NONCONTIG == 0 && f.result->NONCONTIG == 0 &&
                          (!f.array_mask() || f.mask->NONCONTIG == 0);
        Nest<2> n = contiguous ? contiguous_nest(f) : element_nest(f);
        reduce_whole<P>(f, n, acc);
    }
    P::put(f.result->BASE, acc);
}

}  // namespace
}  // namespace intrins::reduce

using namespace intrins::reduce;

#define X(sfx, E)                                                                                         \
    extern "C" INTRINS_EXPORT void f90_sum##sfx(ArgList* a) { arith_reduce<Fold<E, false>>(a, "SUM"); } \
    extern "C" INTRINS_EXPORT void f90_prod##sfx(ArgList* a) { arith_reduce<Fold<E, true>>(a, "PRODUCT"); }
REDUCE_SUM_KINDS(X)
#undef X
