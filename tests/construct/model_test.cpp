// Array construction against one naive model of the index rules of RESHAPE
// (PAD, ORDER), PACK, UNPACK, SPREAD, TRANSPOSE, CSHIFT, EOSHIFT and TRANSFER,
// run over random layouts: ranks 0-7, extents 0, 1 and odd, lower bounds other
// than 1, strided and reversed operands and supplied results, every element
// size, every vector width, checks on and (for short operands) off.
#include <deque>
#include <numeric>

#include "construct/mover.h"
#include "support/arrays.h"

namespace {

using namespace testutil;
using Entry = void (*)(ArgList*);
using Rng = std::mt19937_64;
using El = std::string;  // one element's bytes; empty: left as it was
using Els = std::vector<El>;

struct Row {
    int32_t es, fixed;  // element size; 0 for the generic entries
    Entry reshape, kreshape, pack, unpack, spread, transpose, cshift, eoshift, transfer, ktransfer;
};
#define CT_ROW(S, N, F)                                                                                           \
    Row{S, F, f90_reshape##N, f90_kreshape##N, f90_pack##N, f90_unpack##N, f90_spread##N, f90_transpose##N, \
        f90_cshift##N, f90_eoshift##N, f90_transfer##N, f90_ktransfer##N}
const Row kRows[] = {CT_ROW(1, 1, 1),   CT_ROW(2, 2, 1),   CT_ROW(4, 4, 1),   CT_ROW(8, 8, 1),
                     CT_ROW(10, 10, 1), CT_ROW(16, 16, 1), CT_ROW(20, 20, 1), CT_ROW(32, 32, 1),
                     CT_ROW(3, n, 0),   CT_ROW(12, n, 0),  CT_ROW(8, n, 0)};
#undef CT_ROW

int64_t count(const std::vector<int32_t>& ext) {
    int64_t n = 1;
    for (int32_t e : ext) n *= e;
    return n;
}
Els random_els(Rng& g, int64_t n, int32_t es) {
    Els v(static_cast<std::size_t>(n), El(static_cast<std::size_t>(es), '\0'));
    for (El& e : v)
        for (char& b : e) b = static_cast<char>(g());
    return v;
}
void put(Array& a, const Els& v) {
    for (int64_t i = 0; i < a.size(); ++i) std::memcpy(a.elem(i), v[i].data(), v[i].size());
}
Els get(Array& a) {
    Els v;
    for (int64_t i = 0; i < a.size(); ++i) v.push_back(El(a.elem(i), a.desc()->ELSIZE));
    return v;
}
Els ints32(const std::vector<int64_t>& v) {
    Els e;
    for (int64_t x : v) e.push_back(El(reinterpret_cast<const char*>(&x), 4));
    return e;
}
// MASK words: 0, 1 and 3 (true by either rule), 2 and -2 (true for PACK only).
std::vector<int64_t> mask_words(Rng& g, int64_t n) {
    std::vector<int64_t> m(static_cast<std::size_t>(n));
    for (int64_t& w : m) w = std::vector<int64_t>{0, 0, 1, 3, 2, -2}[g() % 6];
    return m;
}
// A random shape of n elements (rank 1 or 2).
std::vector<int32_t> split(Rng& g, int64_t n) {
    for (int32_t d = 2 + static_cast<int32_t>(g() % 3); d > 1 && n > 0; --d)
        if (n % d == 0 && g() % 2) return {d, static_cast<int32_t>(n / d)};
    return {static_cast<int32_t>(n)};
}
// Column-major position of subscripts i (0-based) in extents ext.
int64_t linear(const std::vector<int32_t>& ext, const std::vector<int32_t>& i) {
    int64_t at = 0, mul = 1;
    for (std::size_t d = 0; d < ext.size(); ++d) at += i[d] * mul, mul *= ext[d];
    return at;
}
void for_each_index(const std::vector<int32_t>& ext, const std::function<void(const std::vector<int32_t>&)>& f) {
    if (count(ext) == 0) return;
    std::vector<int32_t> i(ext.size(), 0);
    for (;;) {
        f(i);
        std::size_t d = 0;
        while (d < ext.size() && ++i[d] == ext[d]) i[d++] = 0;
        if (d == ext.size()) return;
    }
}

// Calls fn and compares its result with the model's elements `want`: a
// supplied result `sup` in place (nothing else of its storage may change), or
// the library's own result (lower bounds 1, the model's extents and ELSIZE).
// known >= 0: only the first `known` bytes of the result are defined.
void expect_result(Entry fn, Args& a, Array* sup, const std::vector<int32_t>& ext, Els want, int32_t es,
                          int64_t known, const std::string& what) {
    Desc own;
    if (!sup) a.addr(0, own.get());
    for (std::size_t i = 0; sup && i < want.size() && static_cast<int64_t>(i) < sup->size(); ++i)
        if (want[i].size() < static_cast<std::size_t>(es)) want[i] += El(sup->elem(i) + want[i].size(), es - want[i].size());
    fn(a);
    ArrDesc& r = sup ? *sup->desc() : *own.get();
    std::vector<int32_t> shape;  // lower bounds 1, or -1
    for (int d = 0; !sup && d < r.RANK; ++d) shape.push_back(r.DIM[d].LOWER == 1 ? r.DIM[d].UPPER : -1);
    EXPECT_TRUE(sup || (shape == ext && r.ELSIZE == es)) << what << ": result layout";
    El g, w;
    for (char* p : elements(r)) g += El(p, es);
    for (const El& e : want) w += e;
    if (known >= 0 && !sup) g.resize(std::min<std::size_t>(g.size(), known));
    const std::size_t at = std::mismatch(g.begin(), g.end(), w.begin(), w.end()).first - g.begin();
    EXPECT_TRUE(g == w) << what << "\n first difference in element " << at / es << " of " << want.size();
    EXPECT_TRUE(!sup || sup->guard_intact()) << what << ": written outside the result";
    if (!sup && r.BASE) f90_freespace(r.BASE);
}

// One random call of the family `op` through the entries of `row`.
struct Case {
    Rng g;
    const Row& row;
    std::deque<Array> ops;
    std::string what;
    Args a;
    Case(uint64_t seed, const Row& r) : g(seed), row(r) {}
    int pick(int lo, int hi) { return lo + static_cast<int>(g() % static_cast<uint64_t>(hi - lo + 1)); }
    bool one_in(int n) { return g() % static_cast<uint64_t>(n) == 0; }
    // An operand of random layout holding `v` (random elements when empty).
    Array& add(const std::vector<int32_t>& ext, int32_t es, Els v = {}) {
        if (v.empty()) v = random_els(g, count(ext), es);
        ops.push_back(random_array(g, ext, es));
        put(ops.back(), v);
        if (ops.back().size() == 0 && one_in(2)) ops.back().desc()->BASE = ops.back().desc()->ZERO = nullptr;
        what.append(" ").append(ops.back().str());
        return ops.back();
    }
    Array& ints(const std::vector<int64_t>& v, int32_t w) {
        Els e;
        for (int64_t x : v) e.push_back(El(reinterpret_cast<const char*>(&x), w));
        return add({static_cast<int32_t>(v.size())}, w, e);
    }
    Array& scalar(const El& v) { return add({}, static_cast<int32_t>(v.size()), {v}); }
    // The caller's result (sometimes) or the library's; then the comparison.
    void run(Entry fn, std::vector<int32_t> ext, Els want, bool check = true, int64_t known = -1,
             bool must_supply = false, bool scalar_result = false) {
        Array* sup = nullptr;
        if (must_supply || one_in(3)) {
            sup = &add(scalar_result ? std::vector<int32_t>{} : ext, row.es);
            Els before = get(*sup);
            for (std::size_t i = 0; i < want.size(); ++i)
                if (want[i].empty()) want[i] = before[i];
            a.result(sup->desc());
        }
        expect_result(fn, a.check(check), sup, scalar_result ? std::vector<int32_t>{} : ext, want, row.es, known, what);
    }
};

void reshape(Case& c) {
    const bool k = c.one_in(4), pad = c.one_in(2), order = c.one_in(2);
    // Checks off: SOURCE short with an empty PAD (the rest is left as it
    // was), or an ORDER that is no permutation (ignored); the caller's result.
    const bool off = c.row.fixed && c.one_in(6);
    const int rank = c.pick(1, 7);
    const std::vector<int32_t> shape = random_extents(c.g, rank, rank > 4 ? 2 : 4);
    const int64_t n = count(shape);
    const int64_t s = pad || off ? c.pick(0, static_cast<int>(n) + 2) : n + c.pick(c.row.fixed ? 0 : 1, 2);
    const int64_t p = pad ? c.pick(1, 3) : 0;
    Els src = random_els(c.g, s, c.row.es), pv = random_els(c.g, p, c.row.es);
    std::vector<int> perm(rank);
    std::iota(perm.begin(), perm.end(), 0);
    std::shuffle(perm.begin(), perm.end(), c.g);
    std::vector<int64_t> ov;
    for (int d : perm) ov.push_back(d + 1);
    if (off) ov[0] = rank + 1;
    if (off || !order) std::iota(perm.begin(), perm.end(), 0);
    c.a.addr(1, c.add(split(c.g, s), c.row.es, src).desc());
    c.a.addr(2, c.ints(std::vector<int64_t>(shape.begin(), shape.end()), k ? 8 : 4).desc());
    if (pad || off) c.a.addr(3, c.add({static_cast<int32_t>(off && !pad ? 0 : p)}, c.row.es, pv).desc());
    if (order) c.a.addr(4, c.ints(ov, k ? 8 : 4).desc());
    Els want(static_cast<std::size_t>(n));
    std::vector<int32_t> sub(rank, 0);
    for (int64_t j = 0; j < n; ++j) {  // j-th element in the permuted order
        int64_t at = 0, mul = 1;
        for (int d = 0; d < rank; ++d) at += sub[d] * mul, mul *= shape[d];
        if (j < s) want[at] = src[j];
        else if (p > 0 && pad) want[at] = pv[(j - s) % p];
        for (int q = 0; q < rank && ++sub[perm[q]] == shape[perm[q]]; ++q) sub[perm[q]] = 0;
    }
    c.run(k ? c.row.kreshape : c.row.reshape, shape, want, !off, -1, off);
}

void pack(Case& c) {
    const std::vector<int32_t> ext = random_extents(c.g, c.pick(1, 7), 3);
    Els arr = random_els(c.g, count(ext), c.row.es), sel;
    const bool scalar = c.one_in(6);
    std::vector<int64_t> m = scalar ? std::vector<int64_t>{c.pick(-1, 2)} : mask_words(c.g, count(ext));
    for (std::size_t i = 0; i < arr.size(); ++i)
        if (m[scalar ? 0 : i] != 0) sel.push_back(arr[i]);  // any nonzero word is true
    const int vec = c.pick(0, 4);  // 0, 1: absent; 2: empty (the absent VECTOR); 3, 4: present
    Els v = random_els(c.g, vec < 2 ? 0 : vec == 2 ? 0 : static_cast<int64_t>(sel.size()) + c.pick(0, 2), c.row.es);
    const bool off = c.one_in(5) && !sel.empty();  // a short result or VECTOR, checks off
    c.a.addr(1, c.add(ext, c.row.es, arr).desc());
    c.a.addr(2, c.add(scalar ? std::vector<int32_t>{} : ext, 4, ints32(m)).desc());
    if (off && !v.empty()) v.resize(sel.size() - 1);
    if (vec >= 2) c.a.addr(3, c.add({static_cast<int32_t>(v.size())}, c.row.es, v).desc());
    Els want = v.empty() ? sel : v;
    if (off && v.empty()) want.pop_back();
    for (std::size_t i = 0; i < want.size() && i < sel.size(); ++i) want[i] = sel[i];
    c.run(c.row.pack, {static_cast<int32_t>(want.size())}, want, !off, -1, off);
}

void unpack(Case& c) {
    const std::vector<int32_t> ext = random_extents(c.g, c.pick(1, 7), 3);
    const std::vector<int64_t> m = mask_words(c.g, count(ext));
    int64_t trues = 0;
    for (int64_t w : m) trues += w & 1;  // bit 0 only
    const bool off = c.one_in(5) && trues > 0, scalar = c.one_in(3);
    Els v = random_els(c.g, off ? trues - 1 : trues + c.pick(0, 2), c.row.es);
    // Checks off: VECTOR one short of the true elements, FIELD one short.
    const std::vector<int32_t> fext = scalar ? std::vector<int32_t>{} : off ? std::vector<int32_t>{static_cast<int32_t>(m.size() - 1)} : ext;
    Els f = random_els(c.g, count(fext), c.row.es), want;
    c.a.addr(1, c.add({static_cast<int32_t>(v.size())}, c.row.es, v).desc());
    c.a.addr(2, c.add(ext, 4, ints32(m)).desc());
    c.a.addr(3, c.add(fext, c.row.es, f).desc());
    std::size_t k = 0;
    for (std::size_t i = 0; i < m.size(); ++i)
        want.push_back(!(m[i] & 1) ? (scalar ? f[0] : i < f.size() ? f[i] : El()) : k < v.size() ? v[k++] : El());
    c.run(c.row.unpack, ext, want, !off, -1, off);
}

void spread(Case& c) {
    std::vector<int32_t> ext = random_extents(c.g, c.pick(0, 6), 3);
    const int dim = c.pick(1, static_cast<int>(ext.size()) + 1), nc = c.pick(-1, 3);
    Els src = random_els(c.g, count(ext), c.row.es), want;
    c.what += " DIM " + std::to_string(dim) + " NCOPIES " + std::to_string(nc);
    c.a.addr(1, c.add(ext, c.row.es, src).desc()).value(2, dim).value(3, nc);
    std::vector<int32_t> out = ext;
    out.insert(out.begin() + dim - 1, std::max(nc, 0));
    for_each_index(out, [&](const std::vector<int32_t>& i) {
        std::vector<int32_t> j = i;
        j.erase(j.begin() + dim - 1);
        want.push_back(src[linear(ext, j)]);
    });
    c.run(c.row.spread, out, want);
}

void transpose(Case& c) {
    std::vector<int32_t> ext = c.one_in(4) ? std::vector<int32_t>{c.pick(14, 140), c.pick(14, 140)} : random_extents(c.g, 2);
    Els src = random_els(c.g, count(ext), c.row.es), want;
    c.a.addr(1, c.add(ext, c.row.es, src).desc());
    for_each_index({ext[1], ext[0]}, [&](const std::vector<int32_t>& i) { want.push_back(src[linear(ext, {i[1], i[0]})]); });
    c.run(c.row.transpose, {ext[1], ext[0]}, want);
}

void shift(Case& c, bool eo) {
    const int rank = c.one_in(10) ? 0 : c.pick(1, 7);
    std::vector<int32_t> ext = random_extents(c.g, rank, 3), others = ext;
    const int dim = rank ? c.pick(1, rank) : 1;
    if (rank) others.erase(others.begin() + dim - 1);
    const bool sh_array = rank && c.one_in(2), b_array = rank && c.one_in(3), b_absent = c.one_in(2);
    const int64_t sections = count(others);
    // Checks off: one SHIFT or BOUNDARY element fewer than there are sections.
    const bool off = rank && c.one_in(6) && sections > 1;
    std::vector<int32_t> sh_shape = off ? std::vector<int32_t>{static_cast<int32_t>(sections - 1)} : others;
    std::vector<int64_t> sv;
    for (int64_t i = 0; i < (sh_array ? count(sh_shape) : 1); ++i) sv.push_back(c.pick(-7, 7));
    Els src = random_els(c.g, count(ext), c.row.es), want;
    Els bnd = random_els(c.g, b_array ? count(sh_shape) : 1, c.row.es);
    c.a.addr(1, c.add(ext, c.row.es, src).desc());
    c.a.addr(2, (sh_array ? c.add(sh_shape, 4, ints32(sv)) : c.scalar(ints32(sv)[0])).desc());
    if (eo && !b_absent) c.a.addr(3, (b_array ? c.add(sh_shape, c.row.es, bnd) : c.scalar(bnd[0])).desc());
    if (rank && eo) c.a.value(4, dim);
    if (rank && !eo) c.a.value(3, dim);
    const El fill = b_absent ? El(static_cast<std::size_t>(c.row.es), c.row.fixed ? '\0' : ' ') : El();
    for_each_index(ext, [&](const std::vector<int32_t>& i) {
        if (!rank) {
            want.push_back(eo && sv[0] != 0 ? (b_absent ? fill : bnd[0]) : src[0]);
            return;
        }
        std::vector<int32_t> o = i;
        o.erase(o.begin() + dim - 1);
        const int64_t sec = linear(others, o);
        const int64_t s = sh_array ? (sec < static_cast<int64_t>(sv.size()) ? sv[sec] : 0) : sv[0];
        const int64_t n = ext[dim - 1];
        int64_t j = i[dim - 1] + s;
        std::vector<int32_t> from = i;
        if (!eo) j = ((j % n) + n) % n;
        from[dim - 1] = static_cast<int32_t>(j);
        if (j >= 0 && j < n) want.push_back(src[linear(ext, from)]);
        else if (b_absent) want.push_back(fill);
        else want.push_back(!b_array ? bnd[0] : sec < static_cast<int64_t>(bnd.size()) ? bnd[sec] : El());
    });
    c.run(eo ? c.row.eoshift : c.row.cshift, ext, want, !off, -1, off);
}

void transfer(Case& c) {
    const bool k = c.one_in(4), mold_scalar = c.one_in(2), size = c.one_in(3);
    const int32_t ses = std::vector<int32_t>{1, 2, 3, 4, 8}[c.pick(0, 4)];
    const int srank = c.one_in(5) ? 7 : c.pick(0, 2);  // rank 7: a walk with a level for the bytes
    const std::vector<int32_t> sext = random_extents(c.g, srank, srank == 7 ? 2 : 4);
    Els src = random_els(c.g, count(sext), ses);
    El bytes;
    for (const El& e : src) bytes += e;
    const int64_t es = c.row.es, b = static_cast<int64_t>(bytes.size());
    const int64_t n = size ? c.pick(0, static_cast<int>((b + es - 1) / es) + 2) : mold_scalar ? 1 : (b + es - 1) / es;
    c.a.addr(1, c.add(sext, ses, src).desc());
    c.a.addr(2, c.add(mold_scalar ? std::vector<int32_t>{} : std::vector<int32_t>{c.pick(1, 2)}, c.row.es).desc());
    if (size) k ? c.a.value(3, int64_t{n}) : c.a.value(3, static_cast<int32_t>(n));
    Els want(static_cast<std::size_t>(n));
    bytes.resize(static_cast<std::size_t>(std::min(n * es, b)));
    if (size) bytes.resize(static_cast<std::size_t>(n * es), '\0');
    for (int64_t i = 0; i * es < static_cast<int64_t>(bytes.size()); ++i) want[i] = bytes.substr(i * es, es);
    // A partial last element without SIZE: its tail is left as it was.
    const bool partial = !size && n * es > b;
    c.run(k ? c.row.ktransfer : c.row.transfer, {static_cast<int32_t>(n)}, want, true,
          partial ? static_cast<int64_t>(bytes.size()) : -1, false, mold_scalar && !size);
}

TEST(Construct, ModelOverRandomLayouts) {
    void (*families[])(Case&) = {reshape, pack, unpack, spread, transpose, [](Case& c) { shift(c, false); },
                                 [](Case& c) { shift(c, true); }, transfer};
    const char* names[] = {"RESHAPE", "PACK", "UNPACK", "SPREAD", "TRANSPOSE", "CSHIFT", "EOSHIFT", "TRANSFER"};
    for (uint64_t seed = 1; seed <= 6000; ++seed) {
        const int width = 16 << (seed % 3);
        intrins::construct::set_vector_limit(width);
        Case c(seed, kRows[seed / 8 % std::size(kRows)]);
        c.what = std::string(names[seed % 8]) + " seed " + std::to_string(seed) + " elsize " +
                 std::to_string(c.row.es) + (c.row.fixed ? "" : " (generic)") + " width " + std::to_string(width) + ":";
        families[seed % 8](c);
        if (::testing::Test::HasFailure()) break;  // the first failing layout is enough
    }
    intrins::construct::set_vector_limit(64);
}

}  // namespace
