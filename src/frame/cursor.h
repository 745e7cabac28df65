// cursor.h - the one descriptor walk of the library.
//
// A Nest<N> describes N operands walked in lockstep over the same extents:
// per dimension an extent and, per operand, a byte step.  runs() hands the
// caller one run along the innermost dimension at a time (pointers, steps,
// length) and carries the odometer only at the end of a run, so a contiguous
// array costs one call.  Dimensions may be listed in any order (a DIM
// reduction puts DIM last, RESHAPE's ORDER permutes them); coalesce() merges
// neighbouring dimensions that continue each other in every operand.
//
// A nest has room for the seven dimensions of an array plus one level that a
// walk adds of its own (the bytes of each element, in a byte stream).  An
// operand whose base is null (an empty section's BASE) never moves: its
// pointer stays null and its steps read as 0, so no address is formed from a
// null base even where the walk has runs to hand out (a DIM reduction over
// an empty DIM still visits every result element).
//
//   for each outer index (i1 .. i_{r-1}), first fastest:
//       fn(p[k] = base[k] + sum_d i_d * step[k][d], step[k][0], extent[0])
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "descriptor.h"

namespace intrins {

inline constexpr int kNestLevels = F90_MAXDIM + 1;

template <int N>
struct Nest {
    int rank = 0;  // 0: a single element
    int32_t extent[kNestLevels] = {};
    std::ptrdiff_t step[N][kNestLevels] = {};
    char* base[N] = {};

    // Appends a dimension (the next-outer one).
    void add_dim(int32_t ext, const std::ptrdiff_t (&steps)[N]) {
        extent[rank] = ext < 0 ? 0 : ext;
        for (int k = 0; k < N; ++k) step[k][rank] = steps[k];
        ++rank;
    }

    int64_t count() const {
        int64_t n = 1;
        for (int d = 0; d < rank; ++d) n *= extent[d];
        return n;
    }
    bool empty() const {
        for (int d = 0; d < rank; ++d)
            if (extent[d] == 0) return true;
        return false;
    }

    // Merges dimension d+1 into d wherever it continues d for every operand,
    // and drops dimensions of extent 1.  The visiting order is unchanged.
    void coalesce() {
        if (empty()) return;
        int out = 0;
        for (int d = 0; d < rank; ++d) {
            if (extent[d] == 1 && rank > 1) continue;
            if (out > 0) {
                bool joins = true;
                for (int k = 0; k < N; ++k)
                    if (step[k][d] != step[k][out - 1] * extent[out - 1]) joins = false;
                if (joins) {
                    extent[out - 1] *= extent[d];
                    continue;
                }
            }
            extent[out] = extent[d];
            for (int k = 0; k < N; ++k) step[k][out] = step[k][d];
            ++out;
        }
        if (out == 0) {  // every dimension had extent 1
            out = 1;
            extent[0] = 1;
        }
        rank = out;
    }

    // Calls fn(p, s, len) for every run along dimension 0, where p[k] is the
    // first element of operand k in the run and s[k] its byte step.  If fn
    // returns bool, false ends the walk (and runs() returns false).
    template <class Fn>
    bool runs(Fn&& fn) const {
        char* p[N];
        std::ptrdiff_t s[N];
        for (int k = 0; k < N; ++k) {
            p[k] = base[k];
            s[k] = rank > 0 && base[k] ? step[k][0] : 0;
        }
        if (rank == 0) return call(fn, p, s, 1);
        if (empty()) return true;
        int32_t idx[kNestLevels] = {};
        for (;;) {
            if (!call(fn, p, s, extent[0])) return false;
            int d = 1;
            for (; d < rank; ++d) {
                for (int k = 0; k < N; ++k)
                    if (base[k]) p[k] += step[k][d];
                if (++idx[d] < extent[d]) break;
                idx[d] = 0;
                for (int k = 0; k < N; ++k)
                    if (base[k]) p[k] -= step[k][d] * extent[d];
            }
            if (d >= rank) return true;
        }
    }

    // Calls fn(p) for every element in array-element order.
    template <class Fn>
    bool elements(Fn&& fn) const {
        return runs([&](char* const* p0, const std::ptrdiff_t* s, int32_t len) {
            char* p[N];
            for (int k = 0; k < N; ++k) p[k] = p0[k];
            for (int32_t i = 0; i < len; ++i) {
                if constexpr (std::is_same_v<decltype(fn(p)), bool>) {
                    if (!fn(p)) return false;
                } else {
                    fn(p);
                }
                for (int k = 0; k < N; ++k)
                    if (p[k]) p[k] += s[k];
            }
            return true;
        });
    }

private:
    template <class Fn>
    static bool call(Fn& fn, char* const* p, const std::ptrdiff_t* s, int32_t len) {
        if constexpr (std::is_same_v<decltype(fn(p, s, len)), bool>) {
            return fn(p, s, len);
        } else {
            fn(p, s, len);
            return true;
        }
    }
};

// The nest of one descriptor in array-element order, from BASE.
inline Nest<1> nest_of(const ArrDesc& a) {
    Nest<1> n;
    n.base[0] = a.BASE;
    for (int d = 0; d < rank(a); ++d) n.add_dim(extent(a, d), {byte_step(a, d)});
    return n;
}

// Two descriptors of the same shape walked together (the shape is the first's).
inline Nest<2> nest_of(const ArrDesc& a, const ArrDesc& b) {
    Nest<2> n;
    n.base[0] = a.BASE;
    n.base[1] = b.BASE;
    for (int d = 0; d < rank(a); ++d) n.add_dim(extent(a, d), {byte_step(a, d), byte_step(b, d)});
    return n;
}

}  // namespace intrins
