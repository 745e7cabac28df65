// dotpr.cpp - DOT_PRODUCT for every INTEGER, LOGICAL, REAL and COMPLEX kind.
//
// No DIM, no MASK, no allocation.  Under the check flag the two EXTENTs must
// agree (only the counts are compared); otherwise VECTOR_A's count is taken
// as it is.  Both vectors are read through their dimension-1 byte steps.
// Numeric members accumulate in the accumulator of arith.h, first element
// first; a complex VECTOR_A is conjugated:
//   re += ar*br;  re += ai*bi;  im += ar*bi;  im -= ai*br.
// LOGICAL members give ANY(VECTOR_A .AND. VECTOR_B), stopping at the first
// pair of true elements.  Results of up to 8 bytes go into the Result slot
// itself, larger ones to the address in its first word.
#include "intrins.h"
#include "frame/call.h"
#include "reduce/arith.h"
#include "reduce/lists.h"

namespace intrins::reduce {
namespace {

template <class E>
struct Dot {
    using A = Arith<E>;
    using acc = typename A::acc;
    static constexpr std::size_t size = Kind<E>::size;
    static acc at(const char* e) { return A::widen(Kind<E>::load(e)); }

    static void step(acc& r, const acc& a, const acc& b) {
        if constexpr (is_complex<E>) {
            r.re = r.re + a.re * b.re;
            r.re = r.re + a.im * b.im;
            r.im = r.im + a.re * b.im;
            r.im = r.im - a.im * b.re;
        } else if constexpr (std::is_unsigned_v<acc>) {
            r = r + mul(a, b);
        } else {
            r = r + a * b;
        }
    }
    static acc run(const char* pa, std::ptrdiff_t sa, const char* pb, std::ptrdiff_t sb, int32_t n) {
        acc r = zero<E>();
        if (sa == static_cast<std::ptrdiff_t>(size) && sb == static_cast<std::ptrdiff_t>(size)) {
            for (int32_t i = 0; i < n; ++i) step(r, at(pa + i * size), at(pb + i * size));
        } else {
            for (int32_t i = 0; i < n; ++i) step(r, at(pa + i * sa), at(pb + i * sb));
        }
        return r;
    }
    static void put(const Slot& result, const acc& r) {
        auto v = A::narrow(r);
        if constexpr (size <= 8) result.write(v);
        else Kind<E>::store(result.addr(), v);
    }
};

template <class L>
struct DotLogical {
    static bool run(const char* pa, std::ptrdiff_t sa, const char* pb, std::ptrdiff_t sb, int32_t n) {
        for (int32_t i = 0; i < n; ++i)
            if (logical_true<L>(pa + i * sa) && logical_true<L>(pb + i * sb)) return true;
        return false;
    }
    static void put(const Slot& result, bool r) { result.write(static_cast<L>(r ? 1 : 0)); }
};

template <class P>
void dot_product(ArgList* args) {
    Call call(args);
    const ArrDesc* a = call.arg(1).desc();
    const ArrDesc* b = call.arg(2).desc();
    if (call.check() && a->EXTENT != b->EXTENT) f90_ArrLibError("DOT_PRODUCT", 1, a, b);
    int32_t n = a->EXTENT > 0 ? a->EXTENT : 0;
    P::put(call.result(), P::run(a->BASE, byte_step(*a, 0), b->BASE, byte_step(*b, 0), n));
}

}  // namespace
}  // namespace intrins::reduce

using namespace intrins::reduce;

#define X(sfx, E) \
    extern "C" INTRINS_EXPORT void f90_dotpr##sfx(ArgList* a) { dot_product<Dot<E>>(a); }
REDUCE_DOT_KINDS(X)
#undef X
#define X(sfx, L) \
    extern "C" INTRINS_EXPORT void f90_dotpr##sfx(ArgList* a) { dot_product<DotLogical<L>>(a); }
REDUCE_DOT_LOGICAL_KINDS(X)
#undef X
