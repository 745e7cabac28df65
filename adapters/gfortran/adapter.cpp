// adapter.cpp - GNU Fortran 12's array-intrinsic entry points on libintrinsMD.
//
// Preloaded (or linked before libgfortran), this library defines the
// _gfortran_ entry points of the list at the end of this file.  Each one
// views gfortran's descriptors as ArrDescs over the same storage, hands the
// work to the library's entry point with a caller-supplied result, and passes
// every call it cannot serve with libgfortran's results to the next
// definition of the symbol (dlsym(RTLD_NEXT)): descriptors the 32-bit
// ArrDesc cannot hold, CHARACTER and derived elements,
// BACK=.TRUE., MASKs of another kind than LOGICAL(4), and the cases whose
// rules differ (the README lists them).
//
// INTRINS_GFORTRAN_TRACE=1 prints one line per entry point used at exit.
#include <dlfcn.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "intrins.h"

namespace {

using Index = intptr_t;  // gfortran's index_type
using L4 = int32_t;      // GFC_LOGICAL_4

struct GDim {
    Index stride, lbound, ubound;
};
struct GDesc {
    char* base;
    Index offset;
    size_t elem_len;
    int version;
    int8_t rank, type;
    int16_t attribute;
    Index span;
    GDim dim[F90_MAXDIM];
};
static_assert(offsetof(GDesc, span) == 32 && offsetof(GDesc, dim) == 40);

enum GType { kDerived = 5, kCharacter = 6 };

// ---- trace and forwarding ----

struct Entry {
    const char* name;
    std::atomic<long> served{0}, forwarded{0};
    std::atomic<void*> next{nullptr};
    Entry* link = nullptr;
    explicit Entry(const char* n);
};
std::atomic<Entry*> g_entries{nullptr};
Entry::Entry(const char* n) : name(n), link(g_entries.load()) {
    while (!g_entries.compare_exchange_weak(link, this)) {}
}

// The entries in order of first use (the list holds the latest first).
void print(const Entry* e) {
    if (!e) return;
    print(e->link);
    std::fprintf(stderr, "intrins-gfortran: %s served %ld forwarded %ld\n", e->name, e->served.load(),
                 e->forwarded.load());
}

__attribute__((destructor)) void report() {
    const char* v = std::getenv("INTRINS_GFORTRAN_TRACE");
    if (v && std::strcmp(v, "1") == 0) print(g_entries.load());
}

template <class... A>
void forward(Entry& e, A... a) {
    e.forwarded.fetch_add(1, std::memory_order_relaxed);
    void* f = e.next.load(std::memory_order_acquire);
    if (!f) {
        f = dlsym(RTLD_NEXT, e.name);
        if (!f) {
            std::fprintf(stderr, "intrins-gfortran: %s: no definition after this library\n", e.name);
            std::abort();
        }
        e.next.store(f, std::memory_order_release);
    }
    reinterpret_cast<void (*)(A...)>(f)(a...);
}

// Serves the call when serve() says it did, else forwards it.
template <class S, class... A>
void run(Entry& e, S serve, A... a) {
    if (serve()) e.served.fetch_add(1, std::memory_order_relaxed);
    else forward(e, a...);
}

// ---- descriptors ----

constexpr int64_t kMax32 = INT32_MAX;
bool fits(int64_t v) { return v >= -kMax32 && v <= kMax32; }

Index extent(const GDesc* g, int d) {
    const Index e = g->dim[d].ubound - g->dim[d].lbound + 1;
    return e > 0 ? e : 0;
}
int64_t size_of(const GDesc* g) {
    int64_t n = 1;
    for (int d = 0; d < g->rank; ++d) n *= extent(g, d);
    return n;
}
bool plain(const GDesc* g) { return g->type != kDerived && g->type != kCharacter; }

// The one conversion: an ArrDesc (lower bounds 1) over g's elements, or false
// when the 32-bit descriptor cannot describe them.  Strides count elem_len
// bytes, as in libgfortran's array routines, which never read `span`
// (gfortran 12 leaves it unset in allocatable descriptors and hands these
// routines packed copies where it would matter).
bool view(const GDesc* g, ArrDesc& d, size_t want_elem = 0) {
    if (!g || g->rank < 0 || g->rank > F90_MAXDIM || g->elem_len == 0 || g->elem_len > 64 ||
        (want_elem && g->elem_len != want_elem))
        return false;
    std::memset(&d, 0, sizeof d);
    const int64_t el = static_cast<int64_t>(g->elem_len);
    d.RANK = g->rank;
    d.ELSIZE = d.SCALEFACTOR = static_cast<int32_t>(el);
    int64_t n = 1, first = g->offset, back = 0;
    bool contiguous = true;
    for (int i = 0; i < g->rank; ++i) {
        const int64_t e = extent(g, i), s = g->dim[i].stride;
        if (!fits(e) || !fits(s * el)) return false;
        d.DIM[i] = ArrDim{1, static_cast<int32_t>(e), static_cast<int32_t>(s)};
        if (e != 1 && s != n) contiguous = false;
        n *= e;
        if (!fits(n)) return false;
        first += g->dim[i].lbound * s;
        back += s * el;
    }
    d.EXTENT = static_cast<int32_t>(n);
    d.NONCONTIG = !contiguous;
    uintptr_t b = reinterpret_cast<uintptr_t>(g->base);
    if (b && n > 0) b += static_cast<uintptr_t>(first * el);
    d.BASE = reinterpret_cast<char*>(b);
    d.ZERO = reinterpret_cast<char*>(b && n > 0 ? b - static_cast<uintptr_t>(back) : b);
    return true;
}

ArrDesc scalar(const void* p, size_t elem) {
    ArrDesc d{};
    d.BASE = d.ZERO = static_cast<char*>(const_cast<void*>(p));
    d.EXTENT = 1;
    d.ELSIZE = d.SCALEFACTOR = static_cast<int32_t>(elem);
    return d;
}

// The result: allocated here when its base is null (lower bounds 0, packed,
// malloc(1) when empty; `dim0_quirk`: an empty one reads 0:-1 in dimension 1,
// as the reductions leave it), otherwise checked against the extents.
bool result(GDesc* r, int rank, const int64_t* ext, ArrDesc& d, bool dim0_quirk = false) {
    int64_t n = 1;
    for (int i = 0; i < rank; ++i) {
        n *= ext[i] > 0 ? ext[i] : 0;
        if (!fits(n)) return false;
    }
    if (!r->base) {
        if (!r->elem_len || r->elem_len > 64) return false;
        int64_t s = 1;
        for (int i = 0; i < rank; ++i) {
            const int64_t e = ext[i] > 0 ? ext[i] : 0;
            r->dim[i] = GDim{s, 0, e - 1};
            s *= e;
        }
        r->offset = 0;
        r->rank = static_cast<int8_t>(rank);
        r->span = static_cast<Index>(r->elem_len);
        const size_t bytes = static_cast<size_t>(n) * r->elem_len;
        r->base = static_cast<char*>(std::malloc(bytes ? bytes : 1));
        if (!r->base) return false;
        if (n == 0 && dim0_quirk) r->dim[0] = GDim{1, 0, -1};
    } else {
        if (r->rank != rank) return false;
        for (int i = 0; i < rank; ++i)
            if (extent(r, i) != (ext[i] > 0 ? ext[i] : 0)) return false;
    }
    return view(r, d);
}

// Every element address of d, in array-element order.
template <class F>
void each(const ArrDesc& d, F f) {
    if (d.EXTENT <= 0) return;
    if (d.RANK <= 0) return f(d.BASE);
    int32_t i[F90_MAXDIM] = {};
    for (;;) {
        char* p = d.BASE;
        for (int k = 0; k < d.RANK; ++k) p += int64_t{i[k]} * d.DIM[k].STRIDE * d.SCALEFACTOR;
        f(p);
        int k = 0;
        while (k < d.RANK && ++i[k] == d.DIM[k].UPPER) i[k++] = 0;
        if (k == d.RANK) return;
    }
}

// ---- the library call ----

using LibFn = void (*)(ArgList*);

struct Args {
    ArgList a{};
    void desc(int k, const ArrDesc* d) {
        (&a.Result)[k].w[0] = reinterpret_cast<F90Word>(d);
        a.Presence |= 1u << k;
    }
    void value(int k, int32_t v) {
        std::memcpy((&a.Result)[k].bytes, &v, sizeof v);
        a.Presence |= 1u << k;
    }
    void call(LibFn f) { f(&a); }
};

// ---- MATMUL ----

template <class P>
bool finite_parts(const ArrDesc& d) {
    bool ok = true;
    each(d, [&](char* p) {
        for (int k = 0; k < 2; ++k) {
            P x;
            std::memcpy(&x, p + k * sizeof(P), sizeof x);
            if (!(x - x == 0)) ok = false;  // infinity or NaN
        }
    });
    return ok;
}

// Complex products of infinities follow C's recovery rules in libgfortran:
// complex operands with a non-finite part go there.
template <class Part>
bool matmul(LibFn f, GDesc* r, GDesc* a, GDesc* b, int try_blas) {
    ArrDesc ad, bd, rd;
    if (try_blas || !view(a, ad, r->elem_len) || !view(b, bd, r->elem_len)) return false;
    const int ra = a->rank, rb = b->rank;
    if (ra < 1 || ra > 2 || rb < 1 || rb > 2 || (ra == 1 && rb == 1)) return false;
    if (extent(a, ra - 1) != extent(b, 0)) return false;
    int64_t ext[2];
    int n = 0;
    if (ra == 2) ext[n++] = extent(a, 0);
    if (rb == 2) ext[n++] = extent(b, 1);
    if constexpr (!std::is_void_v<Part>)
        if (!finite_parts<Part>(ad) || !finite_parts<Part>(bd)) return false;
    if (!result(r, n, ext, rd)) return false;
    Args c;
    c.desc(0, &rd), c.desc(1, &ad), c.desc(2, &bd);
    c.call(f);
    return true;
}

// ---- reductions ----

// A MASK operand: a LOGICAL array of any kind, or a scalar LOGICAL(4).
// Passed as a temporary (const&), it owns the copy view_mask may make.
struct Mask {
    const GDesc* array = nullptr;
    const L4* scalar = nullptr;
    mutable int32_t* copy = nullptr;
    bool none() const { return !array && !scalar; }
    ~Mask() { std::free(copy); }
};

// The MASK as the library reads it, 4-byte words of like's shape: LOGICAL(4)
// arrays in place, other kinds copied to packed words holding the truth of
// each element's low byte (the byte libgfortran tests).
bool view_mask(const Mask& m, const GDesc* like, ArrDesc& md) {
    if (m.scalar) return md = scalar(m.scalar, 4), true;
    if (!m.array || m.array->rank != like->rank || !view(m.array, md)) return false;
    for (int d = 0; d < like->rank; ++d)
        if (extent(m.array, d) != extent(like, d)) return false;
    if (md.ELSIZE == 4) return true;
    m.copy = static_cast<int32_t*>(std::malloc(sizeof(int32_t) * (md.EXTENT > 0 ? md.EXTENT : 1)));
    if (!m.copy) return false;
    int32_t* w = m.copy;
    each(md, [&](char* p) { *w++ = *p != 0; });
    md.ELSIZE = md.SCALEFACTOR = 4;
    md.NONCONTIG = 0;
    int32_t stride = 1;
    uintptr_t back = 0;
    for (int d = 0; d < md.RANK; ++d) {
        md.DIM[d].STRIDE = stride;
        back += uintptr_t{4} * static_cast<uint32_t>(stride);
        stride *= md.DIM[d].UPPER;
    }
    md.BASE = reinterpret_cast<char*>(m.copy);
    md.ZERO = reinterpret_cast<char*>(reinterpret_cast<uintptr_t>(m.copy) - back);
    return true;
}

// The result of a DIM reduction of a (dim 1-based), or false.
bool dim_result(GDesc* r, const GDesc* a, Index dim, ArrDesc& rd) {
    if (a->rank < 2 || dim < 1 || dim > a->rank) return false;
    int64_t ext[F90_MAXDIM];
    int n = 0;
    for (int d = 0; d < a->rank; ++d)
        if (d != dim - 1) ext[n++] = extent(a, d);
    return result(r, n, ext, rd, true);
}

// A result element libgfortran may decide otherwise, or nullptr for none.
using Suspect = bool (*)(const char*);

// MAXVAL of a REAL kind agrees with libgfortran's wherever a run's first
// selected element is a number above the start value -HUGE: a run that
// starts with a NaN reads NaN here (libgfortran skips NaNs), and one with
// nothing selected above -HUGE reads -HUGE (libgfortran: -Inf, or NaN when
// all are NaN).  Calls with such a result go to libgfortran again.
template <class T>
bool maxval_suspect(const char* p) {
    constexpr T huge = std::is_same_v<T, float>         ? __FLT_MAX__
                       : std::is_same_v<T, double>      ? __DBL_MAX__
                       : std::is_same_v<T, long double> ? __LDBL_MAX__
                                                        : 1.18973149535723176508575932662800702e4932Q;
    T v;
    std::memcpy(&v, p, sizeof v);
    return v != v || v == -huge;
}

// SUM, PRODUCT, MAXVAL, MINVAL, COUNT, ANY, ALL along DIM (elem: ARRAY's element size).
bool reduce_dim(LibFn f, size_t elem, GDesc* r, const GDesc* a, const Index* dim, const Mask& m,
                Suspect suspect = nullptr) {
    ArrDesc ad, md, rd;
    if (!view(a, ad, elem) || !dim || (!m.none() && !view_mask(m, a, md))) return false;
    if (!dim_result(r, a, *dim, rd)) return false;
    Args c;
    c.desc(0, &rd), c.desc(1, &ad), c.value(2, static_cast<int32_t>(*dim));
    if (!m.none()) c.desc(3, &md);
    c.call(f);
    bool agreed = true;
    if (suspect) each(rd, [&](char* p) { agreed = agreed && !suspect(p); });
    return agreed;
}

// MAXLOC and MINLOC.  The library answers like libgfortran wherever it finds
// a position; where it finds none (empty or fully masked selection, or one
// whose elements all equal the start value) libgfortran decides: such a
// call is forwarded after the fact, overwriting the result.
bool loc(LibFn f, size_t elem, GDesc* r, const GDesc* a, const Index* dim, const Mask& m, L4 back) {
    ArrDesc ad, md, rd;
    if (back || !view(a, ad, elem) || (!m.none() && !view_mask(m, a, md))) return false;
    Args c;
    c.desc(1, &ad);
    if (dim) {
        if (!dim_result(r, a, *dim, rd)) return false;
        c.value(2, static_cast<int32_t>(*dim));
    } else {
        const int64_t rank = a->rank;
        if (rank < 1 || !result(r, 1, &rank, rd)) return false;
    }
    c.desc(0, &rd);
    if (!m.none()) c.desc(3, &md);
    c.call(f);
    bool found = true;
    int32_t k = 0;
    const size_t re = r->elem_len;
    each(rd, [&](char* p) {
        int64_t v = 0;
        std::memcpy(&v, p, re);  // 4 or 8 bytes, little-endian
        if (re == 4) v = static_cast<int32_t>(v);
        if (dim ? v == 0 && m.array : v < 1 || v > extent(a, k)) found = false;
        ++k;
    });
    return found;
}

// ---- construction ----

// The sized library entry for an element size, or the generic one.
struct Movers {
    LibFn s1, s2, s4, s8, s16, s32, n;
    LibFn pick(size_t e) const {
        switch (e) {
        case 1: return s1;
        case 2: return s2;
        case 4: return s4;
        case 8: return s8;
        case 16: return s16;
        case 32: return s32;
        default: return n;
        }
    }
};
#define MOVERS(name) Movers{f90_##name##1, f90_##name##2, f90_##name##4, f90_##name##8, f90_##name##16, f90_##name##32, f90_##name##n}

// Reads an INTEGER of gfortran's kind K.
template <class K>
int64_t get(const K* p) {
    const K v = *p;
    return v > INT64_MAX ? INT64_MAX : v < INT64_MIN ? INT64_MIN : static_cast<int64_t>(v);
}

bool same_shape_result(GDesc* r, const GDesc* a, ArrDesc& rd) {
    int64_t ext[F90_MAXDIM];
    for (int d = 0; d < a->rank; ++d) ext[d] = extent(a, d);
    return result(r, a->rank, ext, rd);
}

// RESHAPE (SHAPE and ORDER are INTEGER(8) vectors).
bool reshape(GDesc* r, const GDesc* src, const GDesc* shape, const GDesc* pad, const GDesc* order) {
    ArrDesc sd, shd, pd, od, rd;
    if (!plain(src) || !view(src, sd) || !view(shape, shd, 8) || shape->rank != 1) return false;
    if (pad && (!view(pad, pd, src->elem_len) || size_of(pad) == 0)) return false;
    const int n = static_cast<int>(extent(shape, 0));
    if (n < 1 || n > F90_MAXDIM) return false;
    int64_t ext[F90_MAXDIM], total = 1;
    int i = 0;
    each(shd, [&](char* p) { std::memcpy(&ext[i++], p, 8); });
    for (i = 0; i < n; ++i) {
        if (ext[i] < 0 || !fits(total *= ext[i])) return false;
    }
    if (!pad && total > size_of(src)) return false;
    if (order) {
        if (!view(order, od, 8) || order->rank != 1 || extent(order, 0) != n) return false;
        unsigned seen = 0;
        each(od, [&](char* p) {
            int64_t v;
            std::memcpy(&v, p, 8);
            if (v >= 1 && v <= n) seen |= 1u << (v - 1);
        });
        if (seen != (1u << n) - 1) return false;
    }
    if (r->elem_len != src->elem_len || !result(r, n, ext, rd)) return false;
    Args c;
    c.desc(0, &rd), c.desc(1, &sd), c.desc(2, &shd);
    if (pad) c.desc(3, &pd);
    if (order) c.desc(4, &od);
    c.call(MOVERS(kreshape).pick(src->elem_len));
    return true;
}

// PACK with an array or a scalar MASK.
bool pack(GDesc* r, const GDesc* a, const Mask& m, const GDesc* vec) {
    ArrDesc ad, md, vd, rd;
    if (!plain(a) || !view(a, ad) || !view_mask(m, a, md)) return false;
    if (vec && !view(vec, vd, a->elem_len)) return false;
    int64_t n;
    if (vec) {
        n = size_of(vec);
    } else if (m.scalar) {
        n = *m.scalar ? size_of(a) : 0;
    } else {
        int32_t count = 0;
        ArrDesc cd = scalar(&count, 4);
        Args c;
        c.desc(0, &cd), c.desc(1, &md);
        c.call(f90_count4);
        n = count;
    }
    if (r->elem_len != a->elem_len || !result(r, 1, &n, rd)) return false;
    Args c;
    c.desc(0, &rd), c.desc(1, &ad), c.desc(2, &md);
    if (vec && n > 0) c.desc(3, &vd);  // an empty VECTOR is an empty result either way
    c.call(MOVERS(pack).pick(a->elem_len));
    return true;
}

// UNPACK with an array FIELD (field_array) or a scalar one.
bool unpack(GDesc* r, const GDesc* vec, const GDesc* mask, const GDesc* field_array, const char* field) {
    ArrDesc vd, md, fd, rd;
    const Mask m{mask};
    if (!plain(vec) || !view(vec, vd) || !view_mask(m, mask, md)) return false;
    if (field_array) {
        if (!view(field_array, fd, vec->elem_len) || field_array->rank != mask->rank) return false;
        for (int d = 0; d < mask->rank; ++d)
            if (extent(field_array, d) != extent(mask, d)) return false;
    } else {
        fd = scalar(field, vec->elem_len);
    }
    if (r->elem_len != vec->elem_len || !same_shape_result(r, mask, rd)) return false;
    Args c;
    c.desc(0, &rd), c.desc(1, &vd), c.desc(2, &md), c.desc(3, &fd);
    c.call(MOVERS(unpack).pick(vec->elem_len));
    return true;
}

// SPREAD of an array (src) or of a scalar (elem: bytes at `element`).
bool spread(GDesc* r, const GDesc* src, const char* element, const Index* along, const Index* ncopies) {
    ArrDesc sd, rd;
    const int rank = src ? src->rank : 0;
    if (src ? !plain(src) || !view(src, sd) || src->elem_len != r->elem_len : !r->elem_len || r->elem_len > 64)
        return false;
    if (!src) sd = scalar(element, r->elem_len);
    const Index dim = *along, nc = *ncopies > 0 ? *ncopies : 0;
    if (dim < 1 || dim > rank + 1 || rank + 1 > F90_MAXDIM || !fits(nc)) return false;
    int64_t ext[F90_MAXDIM];
    for (int d = 0, k = 0; d <= rank; ++d) ext[d] = d == dim - 1 ? nc : extent(src, k++);
    if (!result(r, rank + 1, ext, rd)) return false;
    Args c;
    c.desc(0, &rd), c.desc(1, &sd), c.value(2, static_cast<int32_t>(dim)), c.value(3, static_cast<int32_t>(nc));
    c.call(MOVERS(spread).pick(r->elem_len));
    return true;
}

// CSHIFT (cyclic) and EOSHIFT.  SHIFT is a scalar of any kind (reduced to
// 32 bits by its meaning) or an INTEGER(4) array; BOUNDARY is absent (zero
// bytes), a scalar or an array; DIM is 1 when absent.
template <class K>
bool shift(bool cyclic, GDesc* r, const GDesc* a, const K* sh, const GDesc* sh_array, const char* bound,
           const GDesc* bound_array, const K* pdim) {
    ArrDesc ad, shd, bd, rd;
    if (!plain(a) || !view(a, ad) || a->rank < 1 || r->elem_len != a->elem_len) return false;
    const int64_t dim = pdim ? get(pdim) : 1;
    if (dim < 1 || dim > a->rank) return false;
    int32_t s32 = 0;
    if (sh_array) {
        if (!view(sh_array, shd, 4) || sh_array->rank != a->rank - 1) return false;
    } else {
        const int64_t s = get(sh), n = extent(a, static_cast<int>(dim - 1));
        s32 = static_cast<int32_t>(cyclic ? (n ? s % n : 0) : s > n ? n : s < -n ? -n : s);
        shd = scalar(&s32, 4);
    }
    char zeros[64] = {};  // view() admits elements of at most 64 bytes
    if (bound_array) {
        if (!view(bound_array, bd, a->elem_len) || bound_array->rank != a->rank - 1) return false;
    } else if (!cyclic) {
        if (!bound) bound = zeros;
        bd = scalar(bound, a->elem_len);
    }
    if (!same_shape_result(r, a, rd)) return false;
    Args c;
    c.desc(0, &rd), c.desc(1, &ad), c.desc(2, &shd);
    if (cyclic) {
        c.value(3, static_cast<int32_t>(dim));
        c.call(MOVERS(cshift).pick(a->elem_len));
    } else {
        c.desc(3, &bd), c.value(4, static_cast<int32_t>(dim));
        c.call(MOVERS(eoshift).pick(a->elem_len));
    }
    return true;
}

bool never() { return false; }

}  // namespace

// ---- the entry points ----
// One list per family; each entry stamps one thin extern "C" definition.

using D = GDesc*;
#define API extern "C" __attribute__((visibility("default"))) void
#define ENTRY(sym) static Entry e("_gfortran_" #sym)

// MATMUL: gfortran suffix, library suffix, complex part type (void: none).
#define MATMUL_NUMERIC(X)                                                                       \
    X(i1, i1, void) X(i2, i2, void) X(i4, i4, void) X(i8, i8, void) X(r4, r4, void) X(r8, r8, void) \
    X(r10, r10, void) X(r16, r16, void) X(c4, c8, float) X(c8, c16, double)                     \
    X(c10, c20, long double) X(c16, c32, __float128)
#define MATMUL_LOGICAL(X) X(l4, l4) X(l8, l8)

#define DEF_MATMUL(g, lib, part)                                                        \
    API _gfortran_matmul_##g(D r, D a, D b, int try_blas, int limit, void* gemm) {     \
        ENTRY(matmul_##g);                                                              \
        run(e, [&] { return matmul<part>(f90_matmul##lib, r, a, b, try_blas); }, r, a, b, try_blas, limit, gemm); \
    }
#define DEF_MATMUL_L(g, lib)                                                         \
    API _gfortran_matmul_##g(D r, D a, D b) {                                        \
        ENTRY(matmul_##g);                                                           \
        run(e, [&] { return matmul<void>(f90_matmul##lib, r, a, b, 0); }, r, a, b); \
    }
MATMUL_NUMERIC(DEF_MATMUL)
MATMUL_LOGICAL(DEF_MATMUL_L)

// SUM, PRODUCT, MAXVAL, MINVAL (and their m, s forms): gfortran name,
// element size, library function or `never` (forwarded always), the check of
// the result (nullptr: none).
#define REDUCTIONS(X)                                                                               \
    X(sum_i1, 1, f90_sumi1, nullptr) X(sum_i2, 2, f90_sumi2, nullptr) X(sum_i4, 4, f90_sumi4, nullptr) \
    X(sum_i8, 8, f90_sumi8, nullptr) X(sum_r4, 4, f90_sumr4, nullptr) X(sum_r8, 8, f90_sumr8, nullptr) \
    X(sum_r10, 16, f90_sumr10, nullptr) X(sum_r16, 16, f90_sumr16, nullptr)                           \
    X(sum_c4, 8, f90_sumc8, nullptr) X(sum_c8, 16, f90_sumc16, nullptr)                               \
    X(sum_c10, 32, f90_sumc20, nullptr) X(sum_c16, 32, f90_sumc32, nullptr)                           \
    X(product_i1, 1, f90_prodi1, nullptr) X(product_i2, 2, f90_prodi2, nullptr)                       \
    X(product_i4, 4, f90_prodi4, nullptr) X(product_i8, 8, f90_prodi8, nullptr)                       \
    X(product_r4, 4, never, nullptr) X(product_r8, 8, f90_prodr8, nullptr)                            \
    X(product_r10, 16, f90_prodr10, nullptr) X(product_r16, 16, f90_prodr16, nullptr)                 \
    X(product_c4, 8, never, nullptr) X(product_c8, 16, never, nullptr)                                \
    X(product_c10, 32, never, nullptr) X(product_c16, 32, never, nullptr)                             \
    X(maxval_i1, 1, f90_maxvali1, nullptr) X(maxval_i2, 2, f90_maxvali2, nullptr)                     \
    X(maxval_i4, 4, f90_maxvali4, nullptr) X(maxval_i8, 8, f90_maxvali8, nullptr)                     \
    X(maxval_r4, 4, f90_maxvalr4, maxval_suspect<float>)                                              \
    X(maxval_r8, 8, f90_maxvalr8, maxval_suspect<double>)                                             \
    X(maxval_r10, 16, f90_maxvalr10, maxval_suspect<long double>)                                     \
    X(maxval_r16, 16, f90_maxvalr16, maxval_suspect<__float128>)                                      \
    X(minval_i1, 1, f90_minvali1, nullptr) X(minval_i2, 2, f90_minvali2, nullptr)                     \
    X(minval_i4, 4, f90_minvali4, nullptr) X(minval_i8, 8, f90_minvali8, nullptr)                     \
    X(minval_r4, 4, never, nullptr) X(minval_r8, 8, never, nullptr) X(minval_r10, 16, never, nullptr) \
    X(minval_r16, 16, never, nullptr)

// The library function, or nullptr for `never`.
template <class F>
constexpr LibFn lib(F f) {
    if constexpr (std::is_same_v<F, bool (*)()>) return nullptr;
    else return f;
}
#define SERVE_IF(fn, expr) (lib(fn) && (expr))

#define DEF_REDUCE(name, el, fn, check)                                                            \
    API _gfortran_##name(D r, D a, const Index* dim) {                                              \
        ENTRY(name);                                                                                \
        run(e, [&] { return SERVE_IF(fn, reduce_dim(lib(fn), el, r, a, dim, {}, check)); }, r, a, dim); \
    }                                                                                               \
    API _gfortran_m##name(D r, D a, const Index* dim, D mask) {                                     \
        ENTRY(m##name);                                                                             \
        run(e, [&] { return SERVE_IF(fn, reduce_dim(lib(fn), el, r, a, dim, {mask}, check)); }, r, a, dim, mask); \
    }                                                                                               \
    API _gfortran_s##name(D r, D a, const Index* dim, L4* mask) {                                   \
        ENTRY(s##name);                                                                             \
        run(e, [&] { return SERVE_IF(fn, reduce_dim(lib(fn), el, r, a, dim, {nullptr, mask}, check)); }, r, a, dim, mask); \
    }
REDUCTIONS(DEF_REDUCE)

// MAXLOC, MINLOC: gfortran type, element size, library type (REAL: forwarded).
#define LOC_TYPES(X, k, K)                                                                   \
    X(k, i1, 1, K##i1) X(k, i2, 2, K##i2) X(k, i4, 4, K##i4) X(k, i8, 8, K##i8) X(k, r4, 4, never) \
    X(k, r8, 8, never) X(k, r10, 16, never) X(k, r16, 16, never)
#define LOC_KINDS(X) LOC_TYPES(X, 4, f90_maxloc) LOC_TYPES(X, 8, f90_kmaxloc)
#define LOC_KINDS_MIN(X) LOC_TYPES(X, 4, f90_minloc) LOC_TYPES(X, 8, f90_kminloc)

#define DEF_LOC_ONE(op, k, t, el, fn)                                                              \
    API _gfortran_##op##0_##k##_##t(D r, D a, L4 back) {                                           \
        ENTRY(op##0_##k##_##t);                                                                    \
        run(e, [&] { return SERVE_IF(fn, loc(lib(fn), el, r, a, nullptr, {}, back)); }, r, a, back); \
    }                                                                                              \
    API _gfortran_m##op##0_##k##_##t(D r, D a, D mask, L4 back) {                                  \
        ENTRY(m##op##0_##k##_##t);                                                                 \
        run(e, [&] { return SERVE_IF(fn, loc(lib(fn), el, r, a, nullptr, {mask}, back)); }, r, a, mask, back); \
    }                                                                                              \
    API _gfortran_s##op##0_##k##_##t(D r, D a, L4* mask, L4 back) {                                \
        ENTRY(s##op##0_##k##_##t);                                                                 \
        run(e, [&] { return SERVE_IF(fn, loc(lib(fn), el, r, a, nullptr, {nullptr, mask}, back)); }, r, a, mask, back); \
    }                                                                                              \
    API _gfortran_##op##1_##k##_##t(D r, D a, const Index* dim, L4 back) {                         \
        ENTRY(op##1_##k##_##t);                                                                    \
        run(e, [&] { return SERVE_IF(fn, loc(lib(fn), el, r, a, dim, {}, back)); }, r, a, dim, back); \
    }                                                                                              \
    API _gfortran_m##op##1_##k##_##t(D r, D a, const Index* dim, D mask, L4 back) {                \
        ENTRY(m##op##1_##k##_##t);                                                                 \
        run(e, [&] { return SERVE_IF(fn, loc(lib(fn), el, r, a, dim, {mask}, back)); }, r, a, dim, mask, back); \
    }                                                                                              \
    API _gfortran_s##op##1_##k##_##t(D r, D a, const Index* dim, L4* mask, L4 back) {              \
        ENTRY(s##op##1_##k##_##t);                                                                 \
        run(e, [&] { return SERVE_IF(fn, loc(lib(fn), el, r, a, dim, {nullptr, mask}, back)); }, r, a, dim, mask, back); \
    }
#define DEF_MAXLOC(k, t, el, fn) DEF_LOC_ONE(maxloc, k, t, el, fn)
#define DEF_MINLOC(k, t, el, fn) DEF_LOC_ONE(minloc, k, t, el, fn)
LOC_KINDS(DEF_MAXLOC)
LOC_KINDS_MIN(DEF_MINLOC)

// COUNT (result kind 4: COUNT, 8: KOUNT), ANY and ALL (MASK of the result's
// kind): gfortran name, MASK element size, library function.
#define LOGICAL_REDUCTIONS(X)                                                                       \
    X(count_4_l, 0, f90_count) X(count_8_l, 0, f90_kcount) X(any_l1, 1, f90_any) X(any_l2, 2, f90_any) \
    X(any_l4, 4, f90_any) X(any_l8, 8, f90_any) X(all_l1, 1, f90_all) X(all_l2, 2, f90_all)            \
    X(all_l4, 4, f90_all) X(all_l8, 8, f90_all)

// The library's entry for a LOGICAL kind.
#define BY_KIND(fn) [](size_t k) -> LibFn { return k == 1 ? fn##1 : k == 2 ? fn##2 : k == 4 ? fn##4 : k == 8 ? fn##8 : nullptr; }
#define DEF_LOGICAL(name, el, fn)                                                                 \
    API _gfortran_##name(D r, D a, const Index* dim) {                                             \
        ENTRY(name);                                                                               \
        run(e, [&] {                                                                               \
            const size_t k = el ? el : a->elem_len;                                                \
            const LibFn f = BY_KIND(fn)(k);                                                        \
            return f && reduce_dim(f, k, r, a, dim, {});                                           \
        }, r, a, dim);                                                                             \
    }
LOGICAL_REDUCTIONS(DEF_LOGICAL)

// RESHAPE: the generic entry and the type-specific ones, all by element size.
#define RESHAPES(X) X(reshape) X(reshape_4) X(reshape_8) X(reshape_16) X(reshape_r4) X(reshape_r8) \
    X(reshape_r10) X(reshape_r16) X(reshape_c4) X(reshape_c8) X(reshape_c10) X(reshape_c16)
#define DEF_RESHAPE(name)                                                              \
    API _gfortran_##name(D r, D src, D shape, D pad, D order) {                         \
        ENTRY(name);                                                                    \
        run(e, [&] { return reshape(r, src, shape, pad, order); }, r, src, shape, pad, order); \
    }
RESHAPES(DEF_RESHAPE)

API _gfortran_pack(D r, D a, D mask, D vec) {
    ENTRY(pack);
    run(e, [&] { return pack(r, a, {mask}, vec); }, r, a, mask, vec);
}
API _gfortran_pack_s(D r, D a, L4* mask, D vec) {
    ENTRY(pack_s);
    run(e, [&] { return pack(r, a, {nullptr, mask}, vec); }, r, a, mask, vec);
}
API _gfortran_unpack1(D r, D vec, D mask, D field) {
    ENTRY(unpack1);
    run(e, [&] { return unpack(r, vec, mask, field, nullptr); }, r, vec, mask, field);
}
API _gfortran_unpack0(D r, D vec, D mask, char* field) {
    ENTRY(unpack0);
    run(e, [&] { return unpack(r, vec, mask, nullptr, field); }, r, vec, mask, field);
}
API _gfortran_spread(D r, D src, const Index* along, const Index* ncopies) {
    ENTRY(spread);
    run(e, [&] { return spread(r, src, nullptr, along, ncopies); }, r, src, along, ncopies);
}
API _gfortran_spread_scalar(D r, const char* src, const Index* along, const Index* ncopies) {
    ENTRY(spread_scalar);
    run(e, [&] { return spread(r, nullptr, src, along, ncopies); }, r, src, along, ncopies);
}

// CSHIFT and EOSHIFT by the kind of SHIFT and DIM (array SHIFTs of kind 4 only).
#define SHIFT_KINDS(X) X(1, int8_t) X(2, int16_t) X(4, int32_t) X(8, int64_t) X(16, __int128)
#define DEF_SHIFT(k, K)                                                                                   \
    API _gfortran_cshift0_##k(D r, D a, const K* sh, const K* dim) {                                       \
        ENTRY(cshift0_##k);                                                                                \
        run(e, [&] { return shift<K>(true, r, a, sh, nullptr, nullptr, nullptr, dim); }, r, a, sh, dim);   \
    }                                                                                                      \
    API _gfortran_cshift1_##k(D r, D a, D sh, const K* dim) {                                              \
        ENTRY(cshift1_##k);                                                                                \
        run(e, [&] { return shift<K>(true, r, a, nullptr, sh, nullptr, nullptr, dim); }, r, a, sh, dim);   \
    }                                                                                                      \
    API _gfortran_eoshift0_##k(D r, D a, const K* sh, const char* b, const K* dim) {                       \
        ENTRY(eoshift0_##k);                                                                               \
        run(e, [&] { return shift<K>(false, r, a, sh, nullptr, b, nullptr, dim); }, r, a, sh, b, dim);     \
    }                                                                                                      \
    API _gfortran_eoshift1_##k(D r, D a, D sh, const char* b, const K* dim) {                              \
        ENTRY(eoshift1_##k);                                                                               \
        run(e, [&] { return shift<K>(false, r, a, nullptr, sh, b, nullptr, dim); }, r, a, sh, b, dim);     \
    }                                                                                                      \
    API _gfortran_eoshift2_##k(D r, D a, const K* sh, D b, const K* dim) {                                 \
        ENTRY(eoshift2_##k);                                                                               \
        run(e, [&] { return shift<K>(false, r, a, sh, nullptr, nullptr, b, dim); }, r, a, sh, b, dim);     \
    }                                                                                                      \
    API _gfortran_eoshift3_##k(D r, D a, D sh, D b, const K* dim) {                                        \
        ENTRY(eoshift3_##k);                                                                               \
        run(e, [&] { return shift<K>(false, r, a, nullptr, sh, nullptr, b, dim); }, r, a, sh, b, dim);     \
    }
SHIFT_KINDS(DEF_SHIFT)
