// Every reduction against one naive model of the documented rules, over
// randomized layouts: ranks 0-7, extents 0, 1 and odd sizes, lower bounds
// other than 1, strided and reversed operands, MASKs (absent, scalar, array
// sections) and results (library-allocated or caller sections), DIM in and
// out of range.  The model: start values, the visiting orders of the whole
// array path, a DIM run seeded by its first selected element, the NaN and
// signed-zero rules of the max and min updates, MAXLOC's marker and
// one-past-the-end position, REAL(4)/COMPLEX(8) accumulated in double and
// rounded once, integers wrapping.  Results are compared bit for bit; a
// failure prints the case.
#include <quadmath.h>

#include <functional>
#include <limits>
#include <sstream>

#include "support/arrays.h"

namespace {

using namespace testutil;
using Fn = void (*)(ArgList*);

template <class P>
struct Cx {
    P re, im;
};
// An element kind: value type, model accumulator, slot and value bytes.
template <class V, class A, int Size = sizeof(V), int Bytes = sizeof(V)>
struct Ty {
    using value = V;
    using acc = A;
    static constexpr int size = Size, bytes = Bytes;
    static V load(const char* p) {
        V v{};
        std::memcpy(&v, p, Bytes);
        return v;
    }
    static std::string bits(const V& v) { return v != v ? "NaN" : hex(&v, Bytes); }  // NaN signs: operand order
};
template <class P, class A, int PS = sizeof(P), int PB = sizeof(P)>
struct CTy {
    using value = Cx<P>;
    using acc = Cx<A>;
    static constexpr int size = 2 * PS, bytes = PB;
    static value load(const char* p) {
        value v{};
        std::memcpy(&v.re, p, PB), std::memcpy(&v.im, p + PS, PB);
        return v;
    }
    static std::string bits(const value& v) { return Ty<P, A, PS, PB>::bits(v.im) + Ty<P, A, PS, PB>::bits(v.re); }
};
using R10 = Ty<long double, long double, 16, 10>;
using Q = Ty<__float128, __float128>;

template <class T>
constexpr bool is_int = std::is_integral_v<typename T::value>;
template <class T>
constexpr bool is_cx = !std::is_arithmetic_v<typename T::value> && !std::is_same_v<T, Q>;

template <class A, class V>
A widen(const V& v) {
    if constexpr (std::is_class_v<V>) return {widen<decltype(A::re)>(v.re), widen<decltype(A::re)>(v.im)};
    else return static_cast<A>(v);
}
template <class V, class A>
V narrow(const A& a) {
    if constexpr (std::is_class_v<V>) return {narrow<decltype(V::re)>(a.re), narrow<decltype(V::re)>(a.im)};
    else return static_cast<V>(a);
}
template <class A>
A one() {
    if constexpr (std::is_class_v<A>) return {1, 0};
    else return A(1);
}
template <class A>
A plus(const A& a, const A& x) {
    if constexpr (std::is_class_v<A>) return {a.re + x.re, a.im + x.im};
    else return static_cast<A>(a + x);
}
template <class A>
A times(const A& a, const A& x) {
    if constexpr (std::is_class_v<A>) return {a.re * x.re - a.im * x.im, a.re * x.im + a.im * x.re};
    else if constexpr (std::is_unsigned_v<A>) return static_cast<A>(uint64_t{a} * x);
    else return a * x;
}
template <class V>
V start(bool max) {
    if constexpr (std::is_same_v<V, __float128>) return max ? -FLT128_MAX : FLT128_MAX;
    else if constexpr (std::is_floating_point_v<V>) return max ? -std::numeric_limits<V>::max() : std::numeric_limits<V>::max();
    else return max ? std::numeric_limits<V>::min() : std::numeric_limits<V>::max();
}
template <class V>
bool beats(const V& x, const V& m, bool max) {
    return max ? x > m : !(x >= m);
}

// Random values with ties, signed zeros, NaNs, infinities, start values and
// magnitudes whose sums depend on the order.
template <class T>
typename T::value random_value(std::mt19937_64& rng) {
    using V = typename T::value;
    if constexpr (is_cx<T>) {
        using P = decltype(V::re);
        auto part = [&] { return static_cast<P>(static_cast<int>(rng() % 41) - 20) * static_cast<P>(rng() % 3 ? 0.375 : 1e9); };
        return {part(), part()};
    } else {
        const int r = static_cast<int>(rng() % 40);
        if constexpr (is_int<T>) {
            if (r < 3) return start<V>(r == 0);
            return r < 8 ? static_cast<V>(rng()) : static_cast<V>(static_cast<int>(rng() % 11) - 5);
        } else {
            if (r == 0) return std::numeric_limits<double>::quiet_NaN();
            if (r < 3) return start<V>(r == 1);
            if (r == 3) return (rng() % 2 ? V(1) : V(-1)) / V(0);
            if (r < 6) return -V(0);
            return static_cast<V>(static_cast<int>(rng() % 17) - 8) * (r < 12 ? V(1e16) : V(0.125));
        }
    }
}

enum Op { SUM, PRODUCT, MAXVAL, MINVAL, MAXLOC, MINLOC, KMAXLOC, KMINLOC, ALL, ANY, COUNT, KOUNT };
const char* const kOpName[] = {"SUM", "PRODUCT", "MAXVAL", "MINVAL", "MAXLOC", "MINLOC",
                               "KMAXLOC", "KMINLOC", "ALL", "ANY", "COUNT", "KOUNT"};

std::string int_bits(int64_t v, int bytes) { return hex(&v, bytes); }

// A call's operands; `sel` is the selection in array-element order.
struct Case {
    int rank;
    std::vector<int32_t> ext;
    std::vector<int64_t> stride;  // elements per step of each dimension in array-element order
    int32_t dim = 0;
    int mask_kind = 0;  // absent, scalar true, scalar false, array
    bool check;
    std::vector<bool> sel;
    std::ostringstream say;
};

// The model: the result elements in array-element order, each as the bits of
// fold(run) over the runs the rules visit.  fold gets the element indices in
// visiting order, whether the first seeds the running value, and the
// position the whole-array path starts with.
template <class R>
std::vector<R> model(const Case& c, bool seeds, const std::function<R(const std::vector<int64_t>&, bool)>& fold) {
    std::vector<R> out;
    if (c.dim >= 1 && c.dim <= c.rank && c.rank > 1) {
        const int d = c.dim - 1;
        int64_t n = 1;
        for (int k = 0; k < c.rank; ++k) n *= k == d ? 1 : c.ext[k];
        for (int64_t r = 0; r < n; ++r) {
            std::vector<int64_t> run;
            for (int32_t k = 0; k < c.ext[d]; ++k) run.push_back(r % c.stride[d] + k * c.stride[d] + r / c.stride[d] * c.stride[d + 1]);
            out.push_back(fold(run, seeds && !run.empty() && c.sel[run[0]]));
        }
        return out;
    }
    std::vector<int64_t> all;
    for (int64_t n = 0; n < c.stride[c.rank]; ++n) all.push_back(n);
    out.push_back(fold(all, false));
    return out;
}

// Random operands of rank 0-7 with their layout printed into c.say.
Case random_case(std::mt19937_64& rng, bool takes_mask) {
    Case c;
    c.rank = static_cast<int>(rng() % 8);
    c.ext = random_extents(rng, c.rank, c.rank <= 2 ? 9 : c.rank <= 4 ? 3 : 2);
    c.stride.assign(c.rank + 1, 1);
    for (int d = 0; d < c.rank; ++d) c.stride[d + 1] = c.stride[d] * c.ext[d];
    c.check = rng() % 2;
    const int dim_kind = c.rank == 0 ? 0 : static_cast<int>(rng() % 4);  // absent, in range x2, out of range
    c.dim = dim_kind == 0 ? 0 : dim_kind < 3 || c.check ? 1 + static_cast<int32_t>(rng() % c.rank) : rng() % 2 ? 0 : c.rank + 1;
    c.mask_kind = takes_mask ? static_cast<int>(rng() % 5) : 0;
    if (c.mask_kind > 3) c.mask_kind = 3;
    if (c.mask_kind == 3 && c.rank == 0) c.mask_kind = 1 + static_cast<int>(rng() % 2);  // a scalar
    c.sel.assign(c.stride[c.rank], c.mask_kind != 2);
    c.say << " dim " << c.dim << " mask " << c.mask_kind << " check " << c.check;
    return c;
}

// Reads a result: its elements in array-element order, `bytes` of each.
std::vector<std::string> read_result(const ArrDesc& r, const std::function<std::string(const char*)>& bits) {
    std::vector<std::string> got;
    for (char* p : elements(r)) got.push_back(bits(p));
    return got;
}

// One randomized call of a numeric reduction (SUM .. KMINLOC) of kind T.
template <class T>
void numeric_case(std::mt19937_64& rng, const Fn* fns, const char* kind) {
    using V = typename T::value;
    using A = typename T::acc;
    Op op;
    do op = static_cast<Op>(rng() % 8);
    while (!fns[op]);
    const bool loc = op >= MAXLOC, max = op == MAXVAL || op == MAXLOC || op == KMAXLOC;
    const int out = op >= KMAXLOC ? 8 : 4;
    Case c = random_case(rng, true);
    Array a = random_array(rng, c.ext, T::size);
    std::vector<V> v(a.size());
    for (int64_t n = 0; n < a.size(); ++n) v[n] = random_value<T>(rng), std::memcpy(a.elem(n), &v[n], T::size);
    Array m = c.mask_kind == 3 ? random_array(rng, c.ext, 4) : Array(4);
    for (int64_t n = 0; c.mask_kind == 3 && n < a.size(); ++n) {
        uint32_t t = rng() % 3 ? uint32_t{1} << (rng() % 32) : 0;
        std::memcpy(m.elem(n), &t, 4), c.sel[n] = t != 0;
    }
    if (c.mask_kind == 1 || c.mask_kind == 2) *reinterpret_cast<uint32_t*>(m.data()) = c.mask_kind == 1 ? 0x100u : 0u;
    const bool dim_path = c.dim >= 1 && c.dim <= c.rank && c.rank > 1;
    const bool ordered_whole = a.desc()->NONCONTIG == 0 && c.mask_kind != 3 && c.mask_kind != 2;
    const bool masked_contiguous = a.desc()->NONCONTIG == 0 && c.mask_kind == 3 && m.desc()->NONCONTIG == 0;

    auto fold = [&](const std::vector<int64_t>& run, bool seeded) -> std::string {
        if (op <= PRODUCT) {
            A acc = op == SUM ? A{} : one<A>();
            for (int64_t i : run)
                if (c.sel[i]) acc = op == SUM ? plus(acc, widen<A>(v[i])) : times(acc, widen<A>(v[i]));
            return T::bits(narrow<V>(acc));
        }
        if constexpr (!is_cx<T>) {
            std::vector<int64_t> order = run;
            V mv = start<V>(max);
            int64_t pos = 0;  // 1 + index in `run`, 0: none
            std::size_t k0 = 0;
            if (seeded) mv = v[run[0]], pos = 1, k0 = 1;
            if (!dim_path && !loc && ordered_whole && !run.empty())  // first, then last down to second
                std::reverse(order.begin() + 1, order.end()), mv = v[run[0]], k0 = 1;
            if (!dim_path && !loc && masked_contiguous) std::reverse(order.begin(), order.end());
            if (!dim_path && loc && ordered_whole) pos = a.size() + 1;
            for (std::size_t k = k0; k < order.size(); ++k)
                if (c.sel[order[k]] && beats(v[order[k]], mv, max)) mv = v[order[k]], pos = order[k] - run[0] + 1;
            if (!loc) return T::bits(mv);
            if (dim_path) {
                if (pos > 0) pos = (pos - 1) / c.stride[c.dim - 1] + 1;
                return int_bits(pos, out);
            }
            std::string subs;  // the position's subscripts, or the marker
            if (a.size() == 0 || c.mask_kind == 2) pos = 0;
            for (int k = 0; k < c.rank; ++k)
                subs += int_bits(pos == 0 ? k > 0 : k == c.rank - 1 ? (pos - 1) / c.stride[k] + 1
                                                                    : (pos - 1) / c.stride[k] % c.ext[k] + 1, out) + " ";
            return subs;
        }
        return {};
    };
    const std::vector<std::string> want = model<std::string>(c, op >= MAXVAL, fold);

    Desc own;
    Args args;
    args.addr(0, own.get()).addr(1, a.desc()).check(c.check);
    if (c.dim) args.value(2, c.dim);
    if (c.mask_kind) args.addr(3, m.desc());
    std::vector<int32_t> rext;
    for (int d = 0; d < c.rank; ++d)
        if (d != c.dim - 1 || !dim_path) rext.push_back(c.ext[d]);
    if (loc && !dim_path) rext = {c.rank};
    if (!dim_path && !loc) rext.clear();
    const bool supply = !dim_path && !loc ? op <= PRODUCT || rng() % 2 : rng() % 2;
    Array res = supply ? random_array(rng, rext, loc ? out : T::size) : Array(4);
    if (supply) args.result(res.desc());
    c.say << " array " << a.str() << " mask " << m.str() << (supply ? " result " + res.str() : "");
    fns[op](args);
    const ArrDesc& r = supply ? *res.desc() : *own.get();
    std::vector<std::string> got = read_result(r, [&](const char* p) {
        if (!loc) return T::bits(T::load(p));
        int64_t x = 0;
        std::memcpy(&x, p, out);
        return int_bits(out == 4 ? static_cast<int32_t>(x) : x, out);
    });
    if (loc && !dim_path) {  // the position vector as one string
        std::string s;
        for (auto& g : got) s += g + " ";
        got = {s};
    }
    auto values = [&] {  // ARRAY in array-element order, '-' after an unselected element
        std::string s = " values";
        for (int64_t n = 0; n < a.size(); ++n) s += " " + T::bits(v[n]) + (c.sel[n] ? "" : "-");
        return s;
    };
    EXPECT_EQ(got, want) << kOpName[op] << kind << c.say.str() << (got != want ? values() : "");
    if (supply) {
        EXPECT_TRUE(res.guard_intact()) << kOpName[op] << kind << c.say.str();
    }
}

// One randomized ALL, ANY, COUNT or KOUNT of LOGICAL kind L: true is any
// bit set; the DIM argument is checked always; COUNT wraps in 32 bits.
template <class L>
void logical_case(std::mt19937_64& rng, const Fn* fns) {
    const Op op = static_cast<Op>(ALL + rng() % 4);
    const int out = op == COUNT ? 4 : op == KOUNT ? 8 : sizeof(L);
    Case c = random_case(rng, false);
    if (c.rank > 1 && c.dim > c.rank) c.dim = 0;  // checked always: tested in the death table
    Array a = random_array(rng, c.ext, sizeof(L));
    for (int64_t n = 0; n < a.size(); ++n) {
        L t = rng() % 2 ? static_cast<L>(L{1} << (rng() % (8 * sizeof(L)))) : 0;
        std::memcpy(a.elem(n), &t, sizeof t), c.sel[n] = t != 0;
    }
    const bool dim_path = c.dim >= 1 && c.rank > 1;
    auto fold = [&](const std::vector<int64_t>& run, bool) {
        int64_t n = 0;
        for (int64_t i : run) n += c.sel[i];
        const int64_t r = op == ALL ? n == static_cast<int64_t>(run.size()) : op == ANY ? n > 0 : n;
        return int_bits(r, out);
    };
    std::vector<std::string> want = model<std::string>(c, false, fold);
    std::vector<int32_t> rext;
    for (int d = 0; dim_path && d < c.rank; ++d)
        if (d != c.dim - 1) rext.push_back(c.ext[d]);
    const bool supply = !dim_path || rng() % 2;
    Array res = supply ? random_array(rng, rext, out) : Array(4);
    Desc own;
    Args args;
    args.addr(0, supply ? res.desc() : own.get()).addr(1, a.desc()).check(c.check);
    if (supply) args.result(res.desc());
    if (c.dim) args.value(2, c.dim);
    c.say << " array " << a.str() << (supply ? " result " + res.str() : "");
    fns[op - ALL](args);
    // A KOUNT DIM result allocated by the library is 4 bytes per element.
    const int bytes = supply ? out : own->ELSIZE;
    std::vector<std::string> got = read_result(supply ? *res.desc() : *own.get(), [&](const char* p) { return hex(p, bytes); });
    for (auto& w : want) w = w.substr(w.size() - 2 * bytes);
    EXPECT_EQ(got, want) << kOpName[op] << sizeof(L) << c.say.str();
    if (supply) {
        EXPECT_TRUE(res.guard_intact()) << kOpName[op] << c.say.str();
    }
}

// DOT_PRODUCT of two rank-1 sections: the sum in order of conj(a) * b, the
// accumulators of SUM; LOGICAL: ANY(a .AND. b).  The result lies in the slot
// (up to 8 bytes) or at the address in its first word.
template <class T>
void dot_case(std::mt19937_64& rng, Fn fn, const char* kind) {
    using V = typename T::value;
    using A = typename T::acc;
    const std::vector<int32_t> n = random_extents(rng, 1, 40);
    Array x = random_array(rng, n, T::size), y = random_array(rng, n, T::size);
    A acc{};
    bool any = false;
    for (int64_t i = 0; i < x.size(); ++i) {
        V p = random_value<T>(rng), q = random_value<T>(rng);
        if constexpr (is_int<T>) {
            if (kind[0] == 'l') p = static_cast<V>(rng() % 2), q = static_cast<V>(rng() % 3 ? V(0) : V(4));
            any |= p != 0 && q != 0;
        }
        std::memcpy(x.elem(i), &p, T::size), std::memcpy(y.elem(i), &q, T::size);
        A a = widen<A>(p), b = widen<A>(q);
        if constexpr (std::is_class_v<A>) {
            acc.re = acc.re + a.re * b.re, acc.re = acc.re + a.im * b.im;
            acc.im = acc.im + a.re * b.im, acc.im = acc.im - a.im * b.re;
        } else {
            acc = plus(acc, times(a, b));
        }
    }
    V want = narrow<V>(acc);
    if constexpr (is_int<T>)
        if (kind[0] == 'l') want = any;
    alignas(16) char big[32] = {};
    Args args;
    args.addr(1, x.desc()).addr(2, y.desc()).check(rng() % 2);
    if (T::size > 8) args.addr(0, big);
    fn(args);
    const char* got = T::size > 8 ? big : reinterpret_cast<const char*>(args.a.Result.bytes);
    EXPECT_EQ(T::bits(T::load(got)), T::bits(want)) << "DOT_PRODUCT " << kind << " " << x.str() << " " << y.str();
}

template <class T>
void numeric_kind(uint64_t seed, std::initializer_list<Fn> list, const char* kind) {
    std::mt19937_64 rng(seed);
    Fn fns[8] = {};
    std::copy(list.begin(), list.end(), fns);
    for (int i = 0; i < 700 && !::testing::Test::HasFailure(); ++i) numeric_case<T>(rng, fns, kind);
}

#define SUMS(k) f90_sum##k, f90_prod##k
#define ALLOPS(k) SUMS(k), f90_maxval##k, f90_minval##k, f90_maxloc##k, f90_minloc##k
TEST(Model, IntegerKinds) {
    numeric_kind<Ty<int8_t, uint32_t>>(1, {ALLOPS(i1), f90_kmaxloci1, f90_kminloci1}, "i1");
    numeric_kind<Ty<int16_t, uint32_t>>(2, {ALLOPS(i2), f90_kmaxloci2, f90_kminloci2}, "i2");
    numeric_kind<Ty<int32_t, uint32_t>>(3, {ALLOPS(i4), f90_kmaxloci4, f90_kminloci4}, "i4");
    numeric_kind<Ty<int64_t, uint64_t>>(4, {ALLOPS(i8), f90_kmaxloci8, f90_kminloci8}, "i8");
}
TEST(Model, RealKinds) {
    numeric_kind<Ty<float, double>>(5, {ALLOPS(r4), f90_kmaxlocr4, f90_kminlocr4}, "r4");
    numeric_kind<Ty<double, double>>(6, {ALLOPS(r8), f90_kmaxlocr8, f90_kminlocr8}, "r8");
    numeric_kind<R10>(7, {ALLOPS(r10)}, "r10");
    numeric_kind<Q>(8, {ALLOPS(r16)}, "r16");
}
TEST(Model, ComplexKinds) {
    numeric_kind<CTy<float, double>>(9, {SUMS(c8)}, "c8");
    numeric_kind<CTy<double, double>>(10, {SUMS(c16)}, "c16");
    numeric_kind<CTy<long double, long double, 16, 10>>(11, {SUMS(c20)}, "c20");
    numeric_kind<CTy<__float128, __float128>>(12, {SUMS(c32)}, "c32");
}
TEST(Model, LogicalKinds) {
    std::mt19937_64 rng(13);
    const Fn fns[4][4] = {{f90_all1, f90_any1, f90_count1, f90_kcount1}, {f90_all2, f90_any2, f90_count2, f90_kcount2},
                          {f90_all4, f90_any4, f90_count4, f90_kcount4}, {f90_all8, f90_any8, f90_count8, f90_kcount8}};
    for (int i = 0; i < 600 && !HasFailure(); ++i) {
        logical_case<int8_t>(rng, fns[0]), logical_case<int16_t>(rng, fns[1]);
        logical_case<int32_t>(rng, fns[2]), logical_case<int64_t>(rng, fns[3]);
    }
}
TEST(Model, DotProducts) {
    std::mt19937_64 rng(14);
    for (int i = 0; i < 60; ++i) {
        dot_case<Ty<int8_t, uint32_t>>(rng, f90_dotpri1, "i1"), dot_case<Ty<int16_t, uint32_t>>(rng, f90_dotpri2, "i2");
        dot_case<Ty<int32_t, uint32_t>>(rng, f90_dotpri4, "i4"), dot_case<Ty<int64_t, uint64_t>>(rng, f90_dotpri8, "i8");
        dot_case<Ty<int8_t, uint32_t>>(rng, f90_dotprl1, "l1"), dot_case<Ty<int16_t, uint32_t>>(rng, f90_dotprl2, "l2");
        dot_case<Ty<int32_t, uint32_t>>(rng, f90_dotprl4, "l4"), dot_case<Ty<int64_t, uint64_t>>(rng, f90_dotprl8, "l8");
        dot_case<Ty<float, double>>(rng, f90_dotprr4, "r4"), dot_case<Ty<double, double>>(rng, f90_dotprr8, "r8");
        dot_case<R10>(rng, f90_dotprr10, "r10"), dot_case<Q>(rng, f90_dotprr16, "r16");
        dot_case<CTy<float, double>>(rng, f90_dotprc8, "c8"), dot_case<CTy<double, double>>(rng, f90_dotprc16, "c16");
        dot_case<CTy<long double, long double, 16, 10>>(rng, f90_dotprc20, "c20");
        dot_case<CTy<__float128, __float128>>(rng, f90_dotprc32, "c32");
    }
}

}  // namespace
