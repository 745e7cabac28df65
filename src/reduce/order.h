// order.h - the comparison rule and start values of MAXVAL, MINVAL, MAXLOC
// and MINLOC, one table per kind.
//
// Update rules (m the running value, x the next selected element):
//   max: x replaces m when x > m; equal values and NaNs on either side
//        leave m, so a NaN element is never taken.
//   min: x replaces m when x >= m is false: when x < m, or when either is a
//        NaN, so a NaN element is taken and the next element replaces it.
// The asymmetry is kept on purpose.  Start values are the most negative
// (max) or most positive (min) finite value of the type, never an infinity;
// REAL(16)'s are converted from their decimal text at each use.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "extended/floatxxx.h"
#include "frame/kinds.h"

namespace intrins::reduce {

template <class E, bool Max>
struct Order {
    using value = typename Kind<E>::value;
    static constexpr std::size_t size = Kind<E>::size;

    static bool beats(const value& x, const value& m) {
        if constexpr (Max) return x > m;
        else return !(x >= m);
    }
    static value start() {
        if constexpr (std::is_same_v<E, Quad>) {
            Quad q;
            quad_from_text(Max ? "-1.1897314953572317650857593266280070162E+4932L"
                               : "1.1897314953572317650857593266280070162E+4932L",
                           &q);
            return q;
        } else if constexpr (std::is_same_v<E, R10>) {
            // bits FFFE/7FFE FFFFFFFFFFFFFFFF: the largest finite 80-bit value
            return from_bits(Real10Bits{~uint64_t{0}, static_cast<uint16_t>(Max ? 0xFFFE : 0x7FFE)});
        } else if constexpr (std::is_floating_point_v<value>) {
            return Max ? -std::numeric_limits<value>::max() : std::numeric_limits<value>::max();
        } else {
            return Max ? std::numeric_limits<value>::min() : std::numeric_limits<value>::max();
        }
    }
    static value load(const char* e) { return Kind<E>::load(e); }
};

}  // namespace intrins::reduce
