// walk.h - the reduction walk shared by every reduction family.
//
// A reduction call is decoded once into a Frame (ARRAY, DIM, MASK, result).
// Two drivers walk the operands:
//   - fold_whole: the whole-array path, one accumulator over every selected
//     element, in array-element order, ARRAY and MASK in lockstep;
//   - fold_dim: the DIM path, one accumulator per result element.  The result
//     elements are taken in blocks of up to kBlock; for each block the DIM
//     index runs outside and the block's elements inside:
//         for k in 0 .. extent(DIM)-1:
//             for j in block: acc[j] = combine(acc[j], ARRAY(j, k))
//     Every result element still sees its own elements in DIM order, so the
//     result is that of one run per element, but memory is read in wide
//     contiguous sweeps (DIM > 1) or several columns at once (DIM = 1).
// A family is a policy P:
//   using acc;  static acc init();                   identity or start value
//   static void add(acc&, const char* e, int32_t k)  combine element k of a run
//   static constexpr bool seeds;  static void seed(acc&, const char* e)
//                                  (the first element of a DIM run, when
//                                   selected, becomes the running value)
//   static void put(char* dst, const acc&)           store a result element
//   static constexpr std::size_t size                element bytes
// MASK is absent (the template flag Masked false) or an array of 4-byte
// logicals; a scalar MASK is resolved by the caller before the walk.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "frame/call.h"
#include "frame/cursor.h"
#include "frame/descriptor.h"
#include "frame/wrap.h"

namespace intrins::reduce {

inline bool mask_true(const char* m) {
    uint32_t w;
    std::memcpy(&w, m, 4);
    return w != 0;
}

struct Frame {
    Call call;
    ArrDesc* array;
    ArrDesc* result;
    ArrDesc* mask = nullptr;  // present MASK argument (scalar or array)
    bool dim_present;
    int32_t dim;  // 0 when absent
    int rank;

    Frame(ArgList* a, bool takes_mask) : call(a) {
        array = call.arg(1).desc();
        result = call.result().desc();
        dim_present = call.present(2);
        dim = dim_present ? call.arg(2).i32() : 0;
        rank = array->RANK;
        if (takes_mask && call.present(3)) mask = call.arg(3).desc();
    }
    bool check() const { return call.check(); }
    bool supplied() const { return call.result_supplied(); }
    bool dim_out_of_range() const { return dim < 1 || dim > rank; }
    // The DIM path: DIM present for an argument of rank > 1.  Without the
    // checks an out-of-range DIM is never examined; such a call, like a DIM
    // of 0, takes the whole-array path rather than address a dimension that
    // does not exist.
    bool dim_path() const { return dim_present && rank > 1 && !dim_out_of_range(); }
    bool array_mask() const { return mask && mask->RANK != 0; }
    // A scalar MASK that is false empties the selection.
    bool masked_out() const { return mask && mask->RANK == 0 && !mask_true(mask->BASE); }
};

// The extents of ARRAY's dimensions other than DIM, ascending: the shape a
// DIM result must have ("@G" list: count, extents).
inline ShapeList expected_shape(const Frame& f) {
    ShapeList s;
    for (int d = 0; d < f.rank; ++d)
        if (d != f.dim - 1) s.extent[s.count++] = extent(*f.array, d);
    return s;
}

// max(upper - lower, 0): the deliberately loose extent comparison of the
// shape checks (extents 0 and 1 compare equal).
inline int32_t span(const ArrDesc& a, int d) {
    int32_t s = wsub(a.DIM[d].UPPER, a.DIM[d].LOWER);
    return s < 0 ? 0 : s;
}

// Whether ARRAY and MASK differ (loosely) in any of ARRAY's dimensions.
inline bool mask_shape_differs(const Frame& f) {
    for (int d = 0; d < f.rank; ++d)
        if (span(*f.array, d) != span(*f.mask, d)) return true;
    return false;
}

// Whether a DIM result's dimensions differ from ARRAY's other dimensions.
// exact: compare extents (logical reductions); otherwise the loose spans.
inline bool result_shape_differs(const Frame& f, bool exact) {
    int i = 0;
    for (int d = 0; d < f.rank; ++d) {
        if (d == f.dim - 1) continue;
        bool differs = exact ? extent(*f.result, i) != extent(*f.array, d)
                             : span(*f.result, i) != span(*f.array, d);
        if (differs) return true;
        ++i;
    }
    return false;
}

// Fills and allocates a result of the given rank whose dimension i has bounds
// 1 .. upper[i]; BASE is read afresh by the walks.
inline void allocate(ArrDesc* r, int rank, int32_t elsize, const int32_t* upper) {
    r->RANK = static_cast<int8_t>(rank);
    r->ELSIZE = elsize;
    for (int i = 0; i < rank; ++i) r->DIM[i] = {1, upper[i], 0};
    f90_CreateArrayM(r);
}
inline void allocate_dim_result(const Frame& f, int32_t elsize) {
    ShapeList s = expected_shape(f);
    allocate(f.result, s.count, elsize, s.extent);
}

// ---- operand nests ----

// ARRAY and MASK (or ARRAY twice when unmasked, never read) as one linear run
// of `count` elements at the given byte steps, from element `from` of the
// contiguous layout (a backward run starts at its last element).
inline Nest<2> linear_nest(const Frame& f, std::ptrdiff_t step, std::ptrdiff_t mstep, int32_t count,
                           int32_t from = 0) {
    Nest<2> n;
    bool m = f.array_mask();
    n.base[0] = offset_by(f.array->BASE, std::ptrdiff_t{from} * f.array->ELSIZE);
    n.base[1] = m ? offset_by(f.mask->BASE, std::ptrdiff_t{from} * f.mask->ELSIZE) : f.array->BASE;
    n.add_dim(count, {step, m ? mstep : 0});
    return n;
}
// The contiguous linear run: EXTENT elements ELSIZE apart (MASK: its ELSIZE).
inline Nest<2> contiguous_nest(const Frame& f) {
    return linear_nest(f, f.array->ELSIZE, f.array_mask() ? f.mask->ELSIZE : 0, f.array->EXTENT);
}
// ARRAY and MASK in array-element order through their byte steps.
inline Nest<2> element_nest(const Frame& f) {
    Nest<2> n;
    bool m = f.array_mask();
    n.base[0] = f.array->BASE;
    n.base[1] = m ? f.mask->BASE : f.array->BASE;
    for (int d = 0; d < std::max(f.rank, 0); ++d)
        n.add_dim(extent(*f.array, d), {byte_step(*f.array, d), m ? byte_step(*f.mask, d) : 0});
    n.coalesce();
    return n;
}

// The DIM walk: the result positions (ARRAY, MASK, result) over the
// dimensions other than DIM, and the run along DIM.
struct DimNest {
    Nest<3> outer;
    int32_t len = 0;                // extent along DIM
    std::ptrdiff_t astep = 0, mstep = 0;  // byte steps along DIM
};
inline DimNest dim_nest(const Frame& f) {
    DimNest n;
    bool m = f.array_mask();
    const ArrDesc& a = *f.array;
    n.outer.base[0] = a.BASE;
    n.outer.base[1] = m ? f.mask->BASE : a.BASE;
    n.outer.base[2] = f.result->BASE;
    int i = 0;
    for (int d = 0; d < f.rank; ++d) {
        if (d == f.dim - 1) continue;
        n.outer.add_dim(extent(a, d), {byte_step(a, d), m ? byte_step(*f.mask, d) : 0,
                                       byte_step(*f.result, i)});
        ++i;
    }
    n.len = extent(a, f.dim - 1);
    n.astep = byte_step(a, f.dim - 1);
    n.mstep = m ? byte_step(*f.mask, f.dim - 1) : 0;
    n.outer.coalesce();
    return n;
}

// ---- drivers ----

// Folds every selected element of the nest into acc, in order; add() gets
// the element's zero-based index in that order.  A policy may provide
// run(acc&, p, step, n, k0) for an unmasked run and run_masked(acc&, p, step,
// m, mstep, n, k0) for a masked one (faster loops with the same result);
// P::stop(acc) ends the walk early where it exists.
template <class P>
concept HasRun = requires(typename P::acc& a, const char* p) {
    P::run(a, p, std::ptrdiff_t{}, int32_t{}, int32_t{});
};
template <class P>
concept HasRunMasked = requires(typename P::acc& a, const char* p) {
    P::run_masked(a, p, std::ptrdiff_t{}, p, std::ptrdiff_t{}, int32_t{}, int32_t{});
};
template <class P>
concept Stops = requires(const typename P::acc& a) { P::stop(a); };

template <class P, bool Masked>
void fold_whole(const Nest<2>& n, typename P::acc& acc) {
    int32_t k0 = 0;
    n.runs([&](char* const* p, const std::ptrdiff_t* s, int32_t len) {
        if constexpr (!Masked && HasRun<P>) {
            P::run(acc, p[0], s[0], len, k0);
        } else if constexpr (Masked && HasRunMasked<P>) {
            P::run_masked(acc, p[0], s[0], p[1], s[1], len, k0);
        } else {
            const char* a = p[0];
            const char* m = p[1];
            for (int32_t k = 0; k < len; ++k, a += s[0], m += s[1]) {
                if (Masked && !mask_true(m)) continue;
                P::add(acc, a, wadd(k0, k));
                if constexpr (Stops<P>) {
                    if (P::stop(acc)) return false;
                }
            }
        }
        k0 = wadd(k0, len);
        return true;
    });
}

// Result elements per block: many when they lie side by side in memory (DIM
// > 1: long contiguous sweeps; 2048 keeps a column of 4000 in two sweeps and
// the accumulators, at most 32 KiB, near the core), few when each runs down
// its own stretch of memory (DIM = 1: a handful of interleaved streams hides
// the latency of each ordered chain).
template <class P>
inline constexpr int32_t kBlock = sizeof(typename P::acc) <= 16 ? 2048 : 64;
inline constexpr int32_t kStreams = 8;
inline constexpr int32_t kGroup = 4;

template <class P>
void fill_dim(const DimNest& n);

template <class P, bool Masked>
void fold_dim(const DimNest& n) {
    using Acc = typename P::acc;
    if (n.len == 0) {  // no element along DIM: ARRAY and MASK are not addressed
        fill_dim<P>(n);
        return;
    }
    n.outer.runs([&](char* const* p, const std::ptrdiff_t* s, int32_t len) {
        // One block: `step` is ARRAY's byte step between result elements;
        // a separate instance for the contiguous step lets the inner loop
        // run over adjacent elements.
        // b (the block's length) is a constant for a full block of streams,
        // so that its accumulators can live in registers.
        auto block = [&](int32_t j0, auto b, auto step) {
            using B = decltype(b);
            constexpr int32_t cap = [] {
                if constexpr (std::is_integral_v<B>) return kBlock<P>;
                else return B::value;
            }();
            Acc acc[cap];
            for (int32_t j = 0; j < b; ++j) acc[j] = P::init();
            const char* a = p[0] + j0 * s[0];
            const char* m = p[1] + j0 * s[1];
            int32_t k = 0;
            if (P::seeds && n.len > 0) {
                for (int32_t j = 0; j < b; ++j)
                    if (!Masked || mask_true(m + j * s[1])) P::seed(acc[j], a + j * step);
                k = 1, a += n.astep, m += n.mstep;
            }
            // G DIM positions per pass over the block: each accumulator still
            // takes its elements in DIM order.  Adjacent result elements (the
            // contiguous step, a compile-time constant) take kGroup at a
            // time, so each is loaded and stored once per group.
            auto pass = [&](auto group) {
                constexpr int32_t G = decltype(group)::value;
                for (int32_t j = 0; j < b; ++j) {
#pragma GCC unroll 4
                    for (int32_t g = 0; g < G; ++g) {
                        if (Masked && !mask_true(m + g * n.mstep + j * s[1])) continue;
                        P::add(acc[j], a + g * n.astep + j * step, k + g);
                    }
                }
                k += G, a += G * n.astep, m += G * n.mstep;
            };
            constexpr bool adjacent = !std::is_integral_v<decltype(step)>;
            if constexpr (adjacent)
                while (k + kGroup <= n.len) pass(std::integral_constant<int32_t, kGroup>{});
            while (k < n.len) pass(std::integral_constant<int32_t, 1>{});
            for (int32_t j = 0; j < b; ++j) P::put(p[2] + (j0 + j) * s[2], acc[j]);
        };
        const bool along = std::abs(n.astep) < std::abs(s[0]);
        const int32_t per = along ? kStreams : kBlock<P>;
        for (int32_t j0 = 0; j0 < len; j0 += per) {
            int32_t b = std::min(per, len - j0);
            if (s[0] == static_cast<std::ptrdiff_t>(P::size))
                block(j0, b, std::integral_constant<std::ptrdiff_t, P::size>{});
            else if (b == kStreams)
                block(j0, std::integral_constant<int32_t, kStreams>{}, s[0]);
            else
                block(j0, b, s[0]);
        }
    });
}

// A DIM result of identities (DIM extent 0 or a false scalar MASK).
template <class P>
void fill_dim(const DimNest& n) {
    n.outer.elements([&](char* const* p) { P::put(p[2], P::init()); });
}

// The DIM path of a call whose MASK is absent, an array, or a scalar
// (`empty`: a false one, which leaves only identities).
template <class P>
void reduce_dim(const Frame& f, bool empty) {
    DimNest n = dim_nest(f);
    if (empty) fill_dim<P>(n);
    else if (f.array_mask()) fold_dim<P, true>(n);
    else fold_dim<P, false>(n);
}

// The whole-array walk of a nest, masked when the call has an array MASK.
template <class P>
void reduce_whole(const Frame& f, const Nest<2>& n, typename P::acc& acc) {
    if (f.array_mask()) fold_whole<P, true>(n, acc);
    else fold_whole<P, false>(n, acc);
}

}  // namespace intrins::reduce
