// logical.cpp - ALL, ANY, COUNT and KOUNT (COUNT with an INTEGER(8) result).
//
// A LOGICAL(k) element is true when any of its k bytes is nonzero.  The
// whole-array path runs one linear loop for a contiguous array and for every
// rank-1 array (through its byte step even when NONCONTIG is set); ALL and
// ANY stop at the first deciding element.  The tally is a 32-bit counter
// that wraps; KOUNT sign-extends it to 8 bytes.
//
// The DIM check is made on every DIM call (not only under the check flag);
// the result shape is checked, exactly, only for a caller-allocated result
// under the check flag.  A KOUNT DIM result allocated here records ELSIZE 4
// like COUNT's, so the 8-byte stores overlap; the block gets 4 spare bytes
// so that the last store stays inside it.
#include "intrins.h"
#include "frame/platform.h"
#include "frame/runtime.h"
#include "frame/wrap.h"
#include "reduce/lists.h"
#include "reduce/simd.h"
#include "reduce/walk.h"

namespace intrins::reduce {
namespace {

template <class L>
struct Truth {
    static constexpr std::size_t size = sizeof(L);
    static constexpr bool seeds = false;
    static bool at(const char* e) { return logical_true<L>(e); }
};

// ALL (All = true) and ANY: the result is the identity until a deciding
// element flips it.
template <class L, bool All>
struct AllAny : Truth<L> {
    using acc = bool;
    static acc init() { return All; }
    static void add(acc& a, const char* e, int32_t) {
        if (Truth<L>::at(e) != All) a = !All;
    }
    static bool stop(const acc& a) { return a != All; }
    // A run of adjacent 4- or 8-byte logicals is tallied in chunks, which
    // stop at the first chunk holding a deciding element.
    static void run(acc& a, const char* p, std::ptrdiff_t s, int32_t n, int32_t) {
        if constexpr (sizeof(L) >= 4) {
            if (s == static_cast<std::ptrdiff_t>(sizeof(L))) {
                constexpr int32_t kChunk = 4096;
                for (int32_t i = 0; i < n && !stop(a); i += kChunk) {
                    const int32_t len = n - i < kChunk ? n - i : kChunk;
                    const uint32_t t = simd::count<std::make_unsigned_t<L>>(p + std::ptrdiff_t{i} * s, len);
                    if (All ? t != static_cast<uint32_t>(len) : t != 0) a = !All;
                }
                return;
            }
        }
        for (int32_t i = 0; i < n && !stop(a); ++i) add(a, p + i * s, 0);
    }
    static void put(char* dst, const acc& a) { Kind<L>::store(dst, static_cast<L>(a ? 1 : 0)); }
    static void seed(acc& a, const char* e) { add(a, e, 0); }
};

template <class L, class Out>
struct Count : Truth<L> {
    using acc = uint32_t;
    static acc init() { return 0; }
    static void add(acc& a, const char* e, int32_t) { a += Truth<L>::at(e) ? 1u : 0u; }
    static void run(acc& a, const char* p, std::ptrdiff_t s, int32_t n, int32_t) {
        if (s == static_cast<std::ptrdiff_t>(sizeof(L))) {
            if constexpr (sizeof(L) >= 4) {
                a += simd::count<std::make_unsigned_t<L>>(p, n);
            } else {
                for (int32_t i = 0; i < n; ++i) a += Kind<L>::load(p + i * sizeof(L)) != 0 ? 1u : 0u;
            }
        } else {
            for (int32_t i = 0; i < n; ++i) a += Kind<L>::load(p + i * s) != 0 ? 1u : 0u;
        }
    }
    static void put(char* dst, const acc& a) {
        Kind<Out>::store(dst, static_cast<Out>(static_cast<int32_t>(a)));
    }
    static void seed(acc& a, const char* e) { add(a, e, 0); }
};

// Moves a freshly allocated KOUNT result into a block 4 bytes longer.
void add_spare_bytes(ArrDesc* r) {
    if (r->EXTENT <= 0) return;
    std::intptr_t zero = reinterpret_cast<std::intptr_t>(r->ZERO) - reinterpret_cast<std::intptr_t>(r->BASE);
    freespace(r->BASE);
    r->BASE = static_cast<char*>(getspace(static_cast<Word>(r->EXTENT) * 4 + 4));
    r->ZERO = offset_by(r->BASE, zero);
}

template <class P>
void logical_reduce(ArgList* args, const char* name, int32_t result_elsize, bool spare) {
    Frame f(args, false);
    if (f.dim_present && f.rank != 1) {
        if (f.dim < 1 || f.dim > f.rank) f90_ArrLibError(name, 1, f.dim, static_cast<int32_t>(f.rank));
        if (f.supplied()) {
            ShapeList shape = expected_shape(f);
            if (f.check() && result_shape_differs(f, true)) f90_ArrLibError(name, 2, f.result, &shape);
        } else {
            allocate_dim_result(f, result_elsize);
            if (spare) add_spare_bytes(f.result);
        }
        fold_dim<P, false>(dim_nest(f));
        return;
    }
    const ArrDesc& a = *f.array;
    Nest<2> n = a.NONCONTIG == 0 || f.rank == 1
                    ? linear_nest(f, f.rank == 1 ? byte_step(a, 0) : a.ELSIZE, 0, a.EXTENT)
                    : element_nest(f);
    typename P::acc acc = P::init();
    fold_whole<P, false>(n, acc);
    P::put(f.result->BASE, acc);
}

}  // namespace
}  // namespace intrins::reduce

using namespace intrins::reduce;

#define X(k, L)                                                                                        \
    extern "C" INTRINS_EXPORT void f90_all##k(ArgList* a) { logical_reduce<AllAny<L, true>>(a, "ALL", k, false); } \
    extern "C" INTRINS_EXPORT void f90_any##k(ArgList* a) { logical_reduce<AllAny<L, false>>(a, "ANY", k, false); } \
    extern "C" INTRINS_EXPORT void f90_count##k(ArgList* a) {                                          \
        logical_reduce<Count<L, int32_t>>(a, "COUNT", 4, false);                                       \
    }                                                                                                  \
    extern "C" INTRINS_EXPORT void f90_kcount##k(ArgList* a) {                                         \
        logical_reduce<Count<L, int64_t>>(a, "KOUNT", 4, true);                                        \
    }
REDUCE_LOGICAL_KINDS(X)
#undef X
