// Construction: the diagnostics (one row each: entry, operands, exact text),
// the pinned quirks the model leaves out (allocation courses, early returns,
// supplied results larger than needed) and results large enough for the
// tiled and streamed paths.
#include <deque>

#include "construct/mover.h"
#include "support/arrays.h"
#include "support/messages.h"

namespace {
int g_gets = 0, g_frees = 0;
void* g_freed = nullptr;
}  // namespace
// Counting stand-ins for the runtime's storage (this program only).
extern "C" void* f90_getspace(F90Word n) {
    ++g_gets;
    return std::malloc(n ? n : 1);
}
extern "C" void f90_freespace(void* p) {
    ++g_frees;
    g_freed = p;
    std::free(p);
}

namespace {
using namespace testutil;
using Entry = void (*)(ArgList*);

// Operands of a table row: contiguous, lower bounds 1.
struct Ops {
    std::deque<Array> d;
    Desc r;
    Array& a(const std::vector<int32_t>& ext, int32_t es = 4) {
        std::vector<Dim> dims;
        for (int32_t e : ext) dims.push_back({1, e});
        d.emplace_back(dims, es);
        return d.back();
    }
    Array& iv(const std::vector<int32_t>& v) {
        Array& x = a({static_cast<int32_t>(v.size())});
        for (std::size_t i = 0; i < v.size(); ++i) x.at<int32_t>(static_cast<int64_t>(i)) = v[i];
        return x;
    }
    Array& one(int32_t v) {
        d.emplace_back(4);
        d.back().at<int32_t>(0) = v;
        return d.back();
    }
};
using Build = void (*)(Ops&, Args&);
struct Death {
    Entry fn;
    bool check;
    Build build;
    std::string text;
};

const char* kShapeSize = " The SHAPE argument has size @.\n Its size should be at least 1 and no larger than 7.\n";
const char* kShapeNeg =
    " The SHAPE argument should have only nonnegative elements.\n The contents of the SHAPE array is: @.\n";
const char* kRankSize =
    " The rank of the RESULT array should be equal to the size of the SHAPE array.\n"
    " The rank of the RESULT array is @. The size of the SHAPE array is @.\n";
const char* kSource = " The size of the SOURCE array should be at least @.\n The size of the SOURCE array is @.\n";
const char* kOrderShape =
    " Array arguments SHAPE and ORDER should have the same shape.\n"
    " The shape of argument SHAPE is: @.\n The shape of argument ORDER is: @.\n";
const char* kOrderPerm =
    " The ORDER argument should be a permutation of the integers 1 to @.\n"
    " The contents of the ORDER argument array is: @.\n";
const char* kVector = " Array argument VECTOR has size @. It should have size @.\n";
const char* kMaskField =
    " Array arguments MASK and FIELD should have the same shape.\n"
    " The shape of argument MASK is:  @.\n The shape of argument FIELD is: @.\n";
const char* kShift = " The @ array has shape:    @.\n The shape of @ should be: @.\n";
const char* kSize = " The SIZE argument has a value @. Its value should be nonnegative.\n";

std::string m(const char* name, const char* t, std::initializer_list<std::string> f = {}) { return msg::of(name, t, f); }

TEST(ConstructDeath, EveryMessage) {
    const Death rows[] = {
        {f90_reshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({1, 1, 1, 1, 1, 1, 1, 1})); },
         m("RESHAPE", kShapeSize, {"8"})},
        {f90_Reshape_Validation, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({})); },
         m("RESHAPE", kShapeSize, {"0"})},
        {f90_reshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({3, -2})); },
         m("RESHAPE", kShapeNeg, {"(3, -2)"})},
        {f90_reshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({-1, 2, 3})).result(o.a({2, 3})); },
         m("RESHAPE", kRankSize, {"2", "3"})},
        {f90_reshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({3, 2})).result(o.a({2, 2})); },
         m("RESHAPE", msg::kResultShape, {"(2, 2)", "(3, 2)"})},
        {f90_reshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({7})).addr(3, o.a({0})); },
         m("RESHAPE", kSource, {"7", "6"})},
        {f90_reshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({2, 3})).addr(4, o.iv({1, 2, 3})); },
         m("RESHAPE", kOrderShape, {"(2)", "(3)"})},
        {f90_reshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({6})).addr(2, o.iv({2, 3})).addr(4, o.iv({1, 1})); },
         m("RESHAPE", kOrderPerm, {"2", "(1, 1)"})},
        {f90_kreshape4, true, [](Ops& o, Args& a) { a.addr(1, o.a({2})).addr(2, o.iv({5})); }, msg::unknown("KRESHAPE")},
        {f90_kReshape_Validation, true, [](Ops& o, Args& a) { a.addr(1, o.a({2})).addr(2, o.iv({5})); },
         msg::unknown("KRESHAPE")},
        {f90_pack4, true, [](Ops& o, Args& a) { a.addr(1, o.a({2, 2})).addr(2, o.iv({1, 1, 1, 1})); },
         m("PACK", msg::kArrayMask, {"(2, 2)", "(4)"})},
        {f90_pack4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).addr(2, o.iv({1, 2, -1})).addr(3, o.a({2})); },
         m("PACK", kVector, {"2", "3"})},
        {f90_pack4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).addr(2, o.iv({1, 2, -1})).result(o.a({2})); },
         m("PACK", msg::kResultSize, {"2", "3"})},
        {f90_pack4, true, [](Ops& o, Args& a) { a.addr(1, o.a({4})).addr(2, o.one(1)).result(o.a({2})); },
         m("PACK", msg::kResultSize, {"2", "4"})},
        {f90_unpack4, true, [](Ops& o, Args& a) { a.addr(1, o.a({2})).addr(2, o.iv({1, 1, 0})).addr(3, o.a({3})).result(o.a({2})); },
         m("UNPACK", msg::kResultShape, {"(2)", "(3)"})},
        {f90_unpack4, true, [](Ops& o, Args& a) { a.addr(1, o.a({2})).addr(2, o.iv({1, 1, 0})).addr(3, o.a({2})); },
         m("UNPACK", kMaskField, {"(3)", "(2)"})},
        {f90_unpack4, true, [](Ops& o, Args& a) { a.addr(1, o.a({1})).addr(2, o.iv({1, 3, 2})).addr(3, o.one(0)); },
         m("UNPACK", kVector, {"1", "2"})},
        {f90_spread4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).value(2, 3).value(3, 2); },
         m("SPREAD", msg::kDim, {"3", "2"})},
        {f90_spread4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).value(2, 2).value(3, 2).result(o.a({3, 1})); },
         m("SPREAD", msg::kResultShape, {"(3, 1)", "(3, 2)"})},
        {f90_spread4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).value(2, 2).value(3, -2).result(o.a({2, 1})); },
         m("SPREAD", msg::kResultShape, {"(2, 1)", "(3, 0)"})},  // a negative NCOPIES counts as 0
        {f90_transpose4, true, [](Ops& o, Args& a) { a.addr(1, o.a({2, 3})).result(o.a({2, 3})); },
         m("TRANSPOSE", msg::kResultShape, {"(2, 3)", "(3, 2)"})},
        {f90_cshift4, false, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.one(1)).value(3, 3); },
         m("CSHIFT", msg::kDim, {"3", "2"})},
        {f90_cshift4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.one(1)).result(o.a({4, 3})); },
         m("CSHIFT", msg::kResultShape, {"(4, 3)", "(3, 4)"})},
        {f90_cshift4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.a({4})).value(3, 2); },
         m("CSHIFT", kShift, {"SHIFT", "(4)", "SHIFT", "(3)"})},
        {f90_eoshift4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.one(1)).value(4, 0); },
         m("EOSHIFT", msg::kDim, {"0", "2"})},
        {f90_eoshift4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.one(1)).result(o.a({4, 3})); },
         m("EOSHIFT", msg::kResultShape, {"(4, 3)", "(3, 4)"})},
        {f90_eoshift4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.one(1)).addr(3, o.a({4})).value(4, 2); },
         m("EOSHIFT", kShift, {"BOUNDARY", "(4)", "BOUNDARY", "(3)"})},
        {f90_eoshift4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.a({4})).value(4, 2); },
         m("EOSHIFT", kShift, {"SHIFT", "(4)", "SHIFT", "(3)"})},
        {f90_transfer4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).addr(2, o.a({1})).value(3, -1); },
         m("TRANSFER", kSize, {"-1"})},
        {f90_transfer4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).addr(2, o.a({1})).result(o.a({2})); },
         m("TRANSFER", msg::kResultSize, {"2", "3"})},
        {f90_ktransfer4, true, [](Ops& o, Args& a) { a.addr(1, o.a({3})).addr(2, o.a({1})).value(3, int64_t{-1}); },
         msg::unknown("KTRANSFER")},
    };
    for (const Death& row : rows) {
        auto call = [&row] {
            Ops o;
            Args a;
            a.addr(0, o.r.get()).check(row.check);
            row.build(o, a);
            row.fn(a);
        };
        EXPECT_DIES_WITH(call(), row.text);
    }
}

// Runs a table row's call with checks off and returns its operands for inspection.
template <class Inspect>
void quirk(Entry fn, Build build, Inspect inspect) {
    Ops o;
    Args a;
    a.addr(0, o.r.get());
    build(o, a);
    const int gets = g_gets, frees = g_frees;
    fn(a);
    inspect(o, g_gets - gets, g_frees - frees);
}

TEST(Construct, PinnedQuirks) {
    // PACK without VECTOR: a provisional result of ARRAY's size, released.
    quirk(f90_pack8, [](Ops& o, Args& a) { a.addr(1, o.a({4}, 8)).addr(2, o.iv({1, 0, 1, 0})); },
          [](Ops& o, int gets, int frees) {
              EXPECT_EQ(gets * 10 + frees, 21);
              EXPECT_NE(g_freed, o.r->BASE);
              EXPECT_EQ(o.r->EXTENT, 2);
          });
    // The generic EOSHIFT's default boundary lives in scratch storage.
    quirk(f90_eoshiftn, [](Ops& o, Args& a) { a.addr(1, o.a({3}, 5)).addr(2, o.one(1)); },
          [](Ops&, int gets, int frees) { EXPECT_EQ(gets * 10 + frees, 21); });
    // The generic RESHAPE: empty SOURCE and PAD return before creating
    // anything; a SOURCE too short without PAD has its result released.
    quirk(f90_reshapen, [](Ops& o, Args& a) { a.addr(1, o.a({0}, 6)).addr(2, o.iv({2})); },
          [](Ops& o, int gets, int) { EXPECT_EQ(gets * 10 + o.r->RANK, 0); });
    quirk(f90_reshapen, [](Ops& o, Args& a) { a.addr(1, o.a({3}, 6)).addr(2, o.iv({5})); },
          [](Ops& o, int gets, int frees) {
              EXPECT_EQ(gets * 10 + frees, 11);
              EXPECT_EQ(g_freed, o.r->BASE);
          });
    // SPREAD into a result longer along DIM than NCOPIES: contiguous, the
    // copies are packed at its front; strided, they keep their places.
    for (int32_t step : {3, 4}) {
        Ops o;
        Array& out = o.d.emplace_back(std::vector<Dim>{{1, 3, 1}, {1, 2, step}}, 4);
        for (int i = 0; i < 6; ++i) out.at<int32_t>(i) = 0;
        Args b;
        f90_spread4(b.addr(1, o.iv({7, 8})).value(2, 1).value(3, 2).result(out.desc()).check());
        std::vector<int32_t> got;
        for (int i = 0; i < 6; ++i) got.push_back(out.at<int32_t>(i));
        EXPECT_EQ(got, step == 3 ? (std::vector<int32_t>{7, 7, 8, 8, 0, 0}) : (std::vector<int32_t>{7, 7, 0, 8, 8, 0}));
    }
    // Checks off: EOSHIFT with DIM 0 creates its result and copies nothing;
    // SPREAD with DIM out of range copies nothing; a negative SIZE is empty.
    quirk(f90_eoshift4, [](Ops& o, Args& a) { a.addr(1, o.a({3, 4})).addr(2, o.one(1)).value(4, 0); },
          [](Ops& o, int gets, int) { EXPECT_EQ(gets * 100 + o.r->EXTENT, 112); });
    quirk(f90_spread4, [](Ops& o, Args& a) { a.addr(1, o.a({3})).value(2, 5).value(3, 2); },
          [](Ops& o, int gets, int) { EXPECT_EQ(gets * 10 + o.r->RANK, 12); });
    quirk(f90_transfer4, [](Ops& o, Args& a) { a.addr(1, o.a({3})).addr(2, o.a({1})).value(3, -4); },
          [](Ops& o, int, int) { EXPECT_EQ(o.r->EXTENT, 0); });
}

// Results of 8 MB and more go out with streaming stores: a transposition
// (tiled, crossing the TLB blocks) at every vector width, SPREAD along either
// dimension and CSHIFT of that along the other.
TEST(Construct, LargeResults) {
    const int m = 1450, n = 1461, lead = 1472;
    Array a({{1, m}, {1, n}}, 4);
    for (int i = 0; i < m * n; ++i) a.at<int32_t>(i) = i;
    for (int width : {64, 32, 16}) {
        intrins::construct::set_vector_limit(width);
        Array out(std::vector<Dim>{{1, n, 1}, {1, m, lead}}, 4);
        Args t;
        f90_transpose4(t.addr(1, a.desc()).result(out.desc()));
        for (int j = 0; j < m; ++j)
            for (int i = 0; i < n; ++i) ASSERT_EQ(out.at<int32_t>(i + j * int64_t{n}), j + i * m) << width << " " << i << "," << j;
        ASSERT_TRUE(out.guard_intact());
    }
    intrins::construct::set_vector_limit(64);
    Array v({{1, 1024}}, 8), five(4);
    for (int i = 0; i < 1024; ++i) v.at<int64_t>(i) = i * 3 + 1;
    five.at<int32_t>(0) = 5;
    for (int dim : {1, 2}) {
        Desc r, s;
        Args sp, cs;
        f90_spread8(sp.addr(0, r.get()).addr(1, v.desc()).value(2, dim).value(3, 1025));
        f90_cshift8(cs.addr(0, s.get()).addr(1, r.get()).addr(2, five.desc()).value(3, 3 - dim));
        const int rows = dim == 1 ? 1025 : 1024, cols = 2049 - rows;
        const auto* p = reinterpret_cast<const int64_t*>(s->BASE);
        for (int j = 0; j < cols; ++j)
            for (int i = 0; i < rows; ++i)
                ASSERT_EQ(p[i + int64_t{j} * rows], (dim == 1 ? (j + 5) % cols : (i + 5) % rows) * 3 + 1) << dim << " " << i << "," << j;
        f90_freespace(r->BASE);
        f90_freespace(s->BASE);
    }
}

}  // namespace
