// extrema.cpp - MAXVAL and MINVAL for INTEGER 1-8 and REAL 4-16.
//
// Checks first (under the check flag only): DIM's range, MASK's shape, a
// caller-allocated DIM result's shape; then the allocation.  The visiting
// order of the whole-array path is fixed, because with the update rules of
// order.h it decides between +0.0 and -0.0 and what follows a NaN:
//   contiguous, no MASK:       m = first element; then last down to second;
//   contiguous, array MASK:    m = start value; last down to first;
//   otherwise:                 m = start value; array-element order.
// A DIM run starts from its first element when selected, else from the
// start value.
#include "intrins.h"
#include "reduce/lists.h"
#include "reduce/order.h"
#include "reduce/simd.h"
#include "reduce/walk.h"

namespace intrins::reduce {
namespace {

template <class E, bool Max>
struct Extreme : Order<E, Max> {
    using O = Order<E, Max>;
    using acc = typename O::value;
    static constexpr bool seeds = true;
    static acc init() { return O::start(); }
    static void add(acc& m, const char* e, int32_t) {
        acc x = O::load(e);
        if (O::beats(x, m)) m = x;
    }
    static void seed(acc& m, const char* e) { m = O::load(e); }
    static void put(char* dst, const acc& m) { Kind<E>::store(dst, m); }

    // A contiguous run, forward or backward.  For integers the order does
    // not matter: the vector extreme is the answer.  For floats the vector
    // extreme (NaNs aside) is the answer unless it is a zero (then the
    // first zero in visiting order decides its sign) or, for the min rule,
    // a NaN is involved (then the order decides everything); those runs
    // take the ordered loop.
    static void run(acc& m, const char* p, std::ptrdiff_t s, int32_t n, int32_t k0) {
        constexpr bool vector = std::is_integral_v<E> || std::is_same_v<E, float> || std::is_same_v<E, double>;
        if constexpr (vector) {
            if (s == static_cast<std::ptrdiff_t>(sizeof(E)) || s == -static_cast<std::ptrdiff_t>(sizeof(E))) {
                if (n <= 0) return;
                const char* lo = s > 0 ? p : p + std::ptrdiff_t{n - 1} * s;
                if (std::is_integral_v<E> || (Max && m != m)) {
                    if constexpr (std::is_integral_v<E>) {
                        auto r = simd::extreme<E, Max>(lo, n);
                        if (O::beats(r.value, m)) m = r.value;
                    }
                    return;
                }
                auto r = simd::extreme<E, Max>(lo, n);
                if (!r.nan && m == m) {
                    if (!(Max ? r.value > m : r.value < m)) return;
                    if (r.value != 0) {
                        m = r.value;
                        return;
                    }
                } else if (Max) {
                    if (!(r.value > m)) return;
                    if (r.value != 0) {
                        m = r.value;
                        return;
                    }
                }
            }
        }
        for (int32_t i = 0; i < n; ++i) add(m, p + i * s, k0 + i);
    }
};

template <class P>
void extreme_reduce(ArgList* args, const char* name, int32_t elsize) {
    Frame f(args, true);
    if (f.check()) {
        if (f.dim_present && f.dim_out_of_range()) f90_ArrLibError(name, 1, f.dim, static_cast<int32_t>(f.rank));
        if (f.array_mask() && mask_shape_differs(f)) f90_ArrLibError(name, 2, f.array, f.mask);
        if (f.dim_present && f.rank > 1 && f.supplied() && result_shape_differs(f, false)) {
            ShapeList shape = expected_shape(f);
            f90_ArrLibError(name, 3, f.result, &shape);
        }
    }
    const bool empty = f.masked_out();
    if (!f.array_mask()) f.mask = nullptr;  // a true scalar MASK is dropped
    if (f.dim_path()) {
        if (!f.supplied()) allocate_dim_result(f, elsize);
        reduce_dim<P>(f, empty);
        return;
    }
    if (!f.supplied()) {  // a scalar: rank 0, first dimension 0:0
        f.result->RANK = 0;
        f.result->ELSIZE = elsize;
        f.result->DIM[0] = {0, 0, 0};
        f90_CreateArrayM(f.result);
    }
    const ArrDesc& a = *f.array;
    typename P::acc m = P::init();
    if (a.EXTENT > 0 && !empty) {
        if (a.NONCONTIG == 0 && !f.mask) {
            P::seed(m, a.BASE);
            fold_whole<P, false>(linear_nest(f, -std::ptrdiff_t{a.ELSIZE}, 0, a.EXTENT - 1, a.EXTENT - 1), m);
        } else if (a.NONCONTIG == 0 && f.mask->NONCONTIG == 0) {
            fold_whole<P, true>(
                linear_nest(f, -std::ptrdiff_t{a.ELSIZE}, -std::ptrdiff_t{f.mask->ELSIZE}, a.EXTENT, a.EXTENT - 1),
                m);
        } else {
            reduce_whole<P>(f, element_nest(f), m);
        }
    }
    P::put(f.result->BASE, m);
}

}  // namespace
}  // namespace intrins::reduce

using namespace intrins::reduce;

#define X(sfx, E)                                                                           \
    extern "C" INTRINS_EXPORT void f90_maxval##sfx(ArgList* a) {                            \
        extreme_reduce<Extreme<E, true>>(a, "MAXVAL", static_cast<int32_t>(intrins::Kind<E>::size)); \
    }                                                                                       \
    extern "C" INTRINS_EXPORT void f90_minval##sfx(ArgList* a) {                            \
        extreme_reduce<Extreme<E, false>>(a, "MINVAL", static_cast<int32_t>(intrins::Kind<E>::size)); \
    }
REDUCE_ORDERED_KINDS(X)
#undef X
