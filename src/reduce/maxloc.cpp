// maxloc.cpp - MAXLOC and MINLOC (INTEGER 1-8, REAL 4-16), and the K forms
// with 8-byte positions (INTEGER 1-8, REAL 4 and 8).
//
// The first of equal extremes in visiting order wins (an element must beat
// the running value under the rules of order.h).  Positions count from 1
// along each dimension whatever the lower bounds.  Whole-array path:
//   empty ARRAY or false scalar MASK      -> the marker (0, 1, ..., 1);
//   contiguous, array MASK                -> start value, no position;
//   contiguous, no MASK                   -> start value, position one past
//                                            the end (kept: an array all equal
//                                            to the start value reports it);
//   otherwise                             -> start value, no position.
// No position taken gives the marker.  The linear index is turned into
// subscripts through the products of the extents, last dimension first.
// DIM path: a run starts from its first element when selected (position 1),
// otherwise from the start value with position 0, which an empty or fully
// masked run stores.
//
// Checks (under the check flag): DIM's range raises code 4, past the end of
// the MAXLOC/MINLOC rows, so the diagnostic prints the next row's name; a
// DIM result of the wrong shape raises code 3, the ARRAY/MASK template, with
// the expected-shape list in the place of the MASK descriptor.  Both are
// kept.  The K names have no row and take the unknown-name course.
#include <cstring>

#include "intrins.h"
#include "reduce/lists.h"
#include "reduce/order.h"
#include "reduce/simd.h"
#include "reduce/walk.h"

namespace intrins::reduce {
namespace {

template <class E, bool Max, class Out>
struct Loc : Order<E, Max> {
    using O = Order<E, Max>;
    using value = typename O::value;
    struct acc {
        value v;
        int32_t pos;  // index + 1 of the running value; 0: none
    };
    static constexpr bool seeds = true;
    static acc init() { return {O::start(), 0}; }
    static void add(acc& a, const char* e, int32_t k) {
        value x = O::load(e);
        if (O::beats(x, a.v)) a = {x, wadd(k, 1)};
    }
    static void seed(acc& a, const char* e) { a = {O::load(e), 1}; }
    static void put(char* dst, const acc& a) { Kind<Out>::store(dst, static_cast<Out>(a.pos)); }

    // A contiguous forward run, in blocks: the vector extreme of a block
    // tells whether anything in it beats the running value; if so, the
    // first element equal to that extreme is the one the ordered scan would
    // end on (earlier elements are worse, later equal ones do not replace).
    // A block holding a NaN hands the rest of the run to the ordered loop.
    static void run(acc& a, const char* p, std::ptrdiff_t s, int32_t n, int32_t k0) {
        constexpr bool vector = std::is_integral_v<E> || std::is_same_v<E, float> || std::is_same_v<E, double>;
        int32_t i = 0;
        if constexpr (vector) {
            if (s == static_cast<std::ptrdiff_t>(sizeof(E))) {
                constexpr int32_t kChunk = 2048;
                for (; i < n; i += kChunk) {
                    const int32_t len = n - i < kChunk ? n - i : kChunk;
                    const char* q = p + std::ptrdiff_t{i} * s;
                    auto r = simd::extreme<E, Max>(q, len);
                    if (r.nan || a.v != a.v) break;
                    if (!O::beats(r.value, a.v)) continue;
                    for (int32_t j = 0;; ++j) {
                        value x = O::load(q + std::ptrdiff_t{j} * s);
                        if (x == r.value) {
                            a = {x, wadd(k0, wadd(i, j + 1))};
                            break;
                        }
                    }
                }
            }
        }
        for (; i < n; ++i) add(a, p + std::ptrdiff_t{i} * s, wadd(k0, i));
    }
};

template <class Out>
void store_position(const Frame& f, int n, int32_t pos) {
    char* r = f.result->BASE;
    std::ptrdiff_t step = byte_step(*f.result, 0);
    int32_t sub[F90_MAXDIM];
    if (pos == 0) {
        for (int d = 0; d < n; ++d) sub[d] = d == 0 ? 0 : 1;
    } else {
        int32_t mult[F90_MAXDIM];
        int32_t m = 1;
        for (int d = 0; d < n; ++d) {
            mult[d] = m;
            m = wmul(m, extent(*f.array, d));
        }
        int32_t l = wsub(pos, 1);
        for (int d = n - 1; d >= 0; --d) {
            int32_t q = mult[d] > 0 ? l / mult[d] : 0;
            sub[d] = wadd(q, 1);
            l = wsub(l, wmul(q, mult[d]));
        }
    }
    for (int d = n - 1; d >= 0; --d) Kind<Out>::store(offset_by(r, d * step), static_cast<Out>(sub[d]));
}

template <class P, class Out>
void loc_reduce(ArgList* args, const char* name) {
    Frame f(args, true);
    const int n = f.rank > 0 ? f.rank : 0;
    const int32_t elsize = sizeof(Out);
    if (f.check()) {
        if (f.dim_present && f.dim_out_of_range()) f90_ArrLibError(name, 4, f.dim, static_cast<int32_t>(f.rank));
        if (f.array_mask() && mask_shape_differs(f)) f90_ArrLibError(name, 3, f.array, f.mask);
        if (f.dim_path()) {
            if (f.supplied() && result_shape_differs(f, false)) {
                ShapeList shape = expected_shape(f);
                ArrDesc as_desc{};  // the list stands where a descriptor is read
                std::memcpy(&as_desc, &shape, sizeof shape);
                f90_ArrLibError(name, 3, f.result, &as_desc);
            }
        } else if (f.supplied()) {
            if (f.result->EXTENT != n) f90_ArrLibError(name, 1, f.result->EXTENT, static_cast<int32_t>(n));
            if (f.result->RANK != 1) {
                ShapeList list;
                list.count = 1;
                list.extent[0] = n;
                f90_ArrLibError(name, 2, f.result, &list);
            }
        }
    }
    const bool empty = f.masked_out();
    if (!f.array_mask()) f.mask = nullptr;
    if (f.dim_path()) {
        if (!f.supplied()) allocate_dim_result(f, elsize);
        reduce_dim<P>(f, empty);
        return;
    }
    if (!f.supplied()) {
        int32_t upper = n;
        allocate(f.result, 1, elsize, &upper);
    }
    const ArrDesc& a = *f.array;
    typename P::acc acc = P::init();
    if (a.EXTENT > 0 && !empty) {
        if (a.NONCONTIG == 0 && f.mask && f.mask->NONCONTIG == 0) {
            fold_whole<P, true>(contiguous_nest(f), acc);
        } else if (a.NONCONTIG == 0 && !f.mask) {
            acc.pos = wadd(a.EXTENT, 1);
            fold_whole<P, false>(contiguous_nest(f), acc);
        } else {
            reduce_whole<P>(f, element_nest(f), acc);
        }
    }
    store_position<Out>(f, n, acc.pos);
}

}  // namespace
}  // namespace intrins::reduce

using namespace intrins::reduce;

#define X(sfx, E)                                                                                              \
    extern "C" INTRINS_EXPORT void f90_maxloc##sfx(ArgList* a) { loc_reduce<Loc<E, true, int32_t>, int32_t>(a, "MAXLOC"); } \
    extern "C" INTRINS_EXPORT void f90_minloc##sfx(ArgList* a) { loc_reduce<Loc<E, false, int32_t>, int32_t>(a, "MINLOC"); }
REDUCE_ORDERED_KINDS(X)
#undef X
#define X(sfx, E)                                                                                               \
    extern "C" INTRINS_EXPORT void f90_kmaxloc##sfx(ArgList* a) { loc_reduce<Loc<E, true, int64_t>, int64_t>(a, "KMAXLOC"); } \
    extern "C" INTRINS_EXPORT void f90_kminloc##sfx(ArgList* a) { loc_reduce<Loc<E, false, int64_t>, int64_t>(a, "KMINLOC"); }
REDUCE_KLOC_KINDS(X)
#undef X
