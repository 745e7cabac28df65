// construct_model.h - the construction tests' shared pieces: the entry table
// per element size, elements as byte strings, index helpers of the model and
// the result comparison.
#pragma once

#include <algorithm>
#include <functional>
#include <numeric>

#include "support/arrays.h"
#include "support/messages.h"

namespace ctest {

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
inline const std::vector<Row>& rows() {
    static const std::vector<Row> r = {CT_ROW(1, 1, 1),  CT_ROW(2, 2, 1),   CT_ROW(4, 4, 1),   CT_ROW(8, 8, 1),
                                       CT_ROW(10, 10, 1), CT_ROW(16, 16, 1), CT_ROW(20, 20, 1), CT_ROW(32, 32, 1),
                                       CT_ROW(3, n, 0),  CT_ROW(12, n, 0),  CT_ROW(8, n, 0)};
    return r;
}
#undef CT_ROW

inline int64_t count(const std::vector<int32_t>& ext) {
    int64_t n = 1;
    for (int32_t e : ext) n *= e;
    return n;
}
inline Els random_els(Rng& g, int64_t n, int32_t es) {
    Els v(static_cast<std::size_t>(n), El(static_cast<std::size_t>(es), '\0'));
    for (El& e : v)
        for (char& b : e) b = static_cast<char>(g());
    return v;
}
inline void put(Array& a, const Els& v) {
    for (int64_t i = 0; i < a.size(); ++i) std::memcpy(a.elem(i), v[i].data(), v[i].size());
}
inline Els get(Array& a) {
    Els v;
    for (int64_t i = 0; i < a.size(); ++i) v.push_back(El(a.elem(i), a.desc()->ELSIZE));
    return v;
}
inline Els ints32(const std::vector<int64_t>& v) {
    Els e;
    for (int64_t x : v) e.push_back(El(reinterpret_cast<const char*>(&x), 4));
    return e;
}
// MASK words: 0, 1 and 3 (true by either rule), 2 and -2 (true for PACK only).
inline std::vector<int32_t> mask_words(Rng& g, int64_t n) {
    std::vector<int32_t> m(static_cast<std::size_t>(n));
    for (int32_t& w : m) w = std::vector<int32_t>{0, 0, 1, 3, 2, -2}[g() % 6];
    return m;
}
inline Els words(const std::vector<int32_t>& m) { return ints32(std::vector<int64_t>(m.begin(), m.end())); }
// A random shape of n elements (rank 1 or 2).
inline std::vector<int32_t> split(Rng& g, int64_t n) {
    for (int32_t d = 2 + static_cast<int32_t>(g() % 3); d > 1 && n > 0; --d)
        if (n % d == 0 && g() % 2) return {d, static_cast<int32_t>(n / d)};
    return {static_cast<int32_t>(n)};
}
// Column-major position of subscripts i (0-based) in extents ext.
inline int64_t linear(const std::vector<int32_t>& ext, const std::vector<int32_t>& i) {
    int64_t at = 0, mul = 1;
    for (std::size_t d = 0; d < ext.size(); ++d) at += i[d] * mul, mul *= ext[d];
    return at;
}
inline void for_each_index(const std::vector<int32_t>& ext, const std::function<void(const std::vector<int32_t>&)>& f) {
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
inline void expect_result(Entry fn, Args& a, Array* sup, const std::vector<int32_t>& ext, Els want, int32_t es,
                          int64_t known, const std::string& what) {
    Desc own;
    if (!sup) a.addr(0, own.get());
    for (std::size_t i = 0; sup && i < want.size() && static_cast<int64_t>(i) < sup->size(); ++i)
        if (want[i].size() < static_cast<std::size_t>(es)) want[i] += El(sup->elem(i) + want[i].size(), es - want[i].size());
    fn(a);
    ArrDesc& r = sup ? *sup->desc() : *own.get();
    Els got;
    for (char* p : elements(r)) got.push_back(El(p, es));
    if (!sup) {
        std::vector<int32_t> shape;
        for (int d = 0; d < r.RANK; ++d) {
            shape.push_back(r.DIM[d].UPPER - r.DIM[d].LOWER + 1);
            EXPECT_EQ(r.DIM[d].LOWER, 1) << what;
        }
        EXPECT_EQ(shape, ext) << what;
        EXPECT_EQ(r.ELSIZE, es) << what;
    }
    if (known >= 0 && !sup) {
        El g, w;
        for (const El& e : got) g += e;
        for (const El& e : want) w += e;
        EXPECT_EQ(hex(g.data(), std::min<std::size_t>(g.size(), known)), hex(w.data(), w.size())) << what;
    } else {
        for (std::size_t i = 0; i < std::max(got.size(), want.size()); ++i)
            if (i >= got.size() || i >= want.size() || got[i] != want[i]) {
                ADD_FAILURE() << what << "\n element " << i << " of " << want.size() << " differs" << (i < got.size() && i < want.size() ? ": " + hex(got[i].data(), got[i].size()) + " vs " + hex(want[i].data(), want[i].size()) : "");
                break;
            }
    }
    EXPECT_TRUE(!sup || sup->guard_intact()) << what << ": written outside the result";
    if (!sup && r.BASE) f90_freespace(r.BASE);
}

}  // namespace ctest
