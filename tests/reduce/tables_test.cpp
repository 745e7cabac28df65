// The reductions' pinned quirks and their diagnostics, one row per call.
#include "support/arrays.h"
#include "support/messages.h"

namespace {

using namespace testutil;
using Fn = void (*)(ArgList*);

// A call on A(2, 3) (or V(3) for rank 1), 8-byte elements: DIM (0: absent),
// MASK(3, 2), a supplied result of the given extents, the check flag.
struct Call {
    Fn fn;
    int rank;
    int32_t dim;
    bool mask;
    std::vector<int32_t> result;  // {-1}: none supplied
    bool check;
    void run() const {
        Array a = rank == 2 ? Array({{1, 2}, {1, 3}}, 8) : Array({{1, 3}}, 8), m({{1, 3}, {1, 2}}, 4);
        std::vector<Dim> rd;
        for (int32_t e : result) rd.push_back({1, e});
        Array r(rd, 8);
        Desc own;
        Args args;
        args.addr(0, own.get()).addr(1, a.desc()).check(check);
        if (result.empty() || result[0] >= 0) args.result(r.desc());
        if (dim) args.value(2, dim);
        if (mask) args.addr(3, m.desc());
        fn(args);
    }
};
const std::vector<int32_t> kNone = {-1};

TEST(ReduceDeath, Diagnostics) {
    using namespace msg;
    const std::string maxloc_dim = of("MAXLOC", "MAXVAL"), minloc_dim = of("MINLOC", "MINVAL");
    const struct {
        Call call;
        std::string text;
    } rows[] = {
        {{f90_maxvali4, 2, 3, true, {5}, true}, of("MAXVAL", kDim, {"3", "2"})},
        {{f90_minvalr8, 2, 1, true, {5}, true}, of("MINVAL", kArrayMask, {"(2, 3)", "(3, 2)"})},
        {{f90_maxvalr4, 2, 1, false, {5}, true}, of("MAXVAL", kResultShape, {"(5)", "(3)"})},
        {{f90_sumi4, 2, 3, false, {}, true}, of("SUM", kDim, {"3", "2"})},
        {{f90_sumi4, 1, 2, false, {}, true}, of("SUM", kDim, {"2", "1"})},
        {{f90_prodr8, 2, 2, false, {4}, true}, of("PRODUCT", kResultShape, {"(4)", "(2)"})},
        {{f90_sumi4, 2, 0, true, {}, true}, of("SUM", kArrayMask, {"(2, 3)", "(3, 2)"})},
        {{f90_prodc16, 2, 0, true, {}, true}, of("PRODUCT", kArrayMask, {"(2, 3)", "(3, 2)"})},
        {{f90_count4, 2, 2, false, {5}, true}, of("COUNT", kResultShape, {"(5)", "(2)"})},
        {{f90_all4, 2, -1, false, kNone, false}, of("ALL", kDim, {"-1", "2"})},  // DIM checked always
        {{f90_any1, 2, 3, false, kNone, false}, of("ANY", kDim, {"3", "2"})},
        {{f90_count2, 2, 3, false, kNone, false}, of("COUNT", kDim, {"3", "2"})},
        {{f90_kcount8, 2, 3, false, kNone, false}, unknown("KOUNT")},
        {{f90_maxloci4, 2, 3, false, kNone, true}, maxloc_dim},  // code 4: the next row's name
        {{f90_minlocr8, 2, 3, false, kNone, true}, minloc_dim},
        {{f90_kmaxloci4, 2, 3, false, kNone, true}, unknown("KMAXLOC")},
        {{f90_kminlocr4, 2, 0, true, kNone, true}, unknown("KMINLOC")},
        {{f90_maxloci4, 2, 0, true, kNone, true}, of("MAXLOC", kArrayMask, {"(2, 3)", "(3, 2)"})},
        {{f90_maxloci4, 2, 0, false, {3}, true}, of("MAXLOC", kResultSize, {"3", "2"})},
        {{f90_minloci4, 2, 0, false, {1, 2}, true}, of("MINLOC", kResultShape, {"(1, 2)", "(2)"})},
        // the expected-shape list printed through the ARRAY/MASK template
        {{f90_maxloci4, 2, 1, false, {2}, true}, of("MAXLOC", kArrayMask, {"(2)", "(SCALAR)"})},
    };
    for (const auto& r : rows) EXPECT_DIES_WITH(r.call.run(), r.text) << r.text;
    // Without the flag the same calls run (the logical DIM check aside).
    for (const auto& r : rows)
        if (r.call.check && r.call.dim <= r.call.rank) Call{r.call.fn, r.call.rank, r.call.dim, false, kNone, false}.run();
    Array a({{1, 3}}, 4), b({{1, 2}}, 4);
    EXPECT_DIES_WITH(f90_dotpri4(Args().addr(1, a.desc()).addr(2, b.desc()).check()),
                     msg::of("DOT_PRODUCT", msg::kVectors, {"(3)", "(2)"}));
}

TEST(ReduceQuirks, Pinned) {
    // A KOUNT DIM result allocated by the library records ELSIZE 4: the
    // 8-byte counts overlap, each visible in its low half.
    Array a({{1, 3}, {1, 2}}, 4);
    a.fill<int32_t>({1, 0, 1, 1, 1, 1});
    Desc r;
    f90_kcount4(Args().addr(0, r.get()).addr(1, a.desc()).value(2, int32_t{1}));
    EXPECT_EQ(r->ELSIZE, 4);
    EXPECT_EQ(reinterpret_cast<int32_t*>(r->BASE)[0], 2);
    EXPECT_EQ(reinterpret_cast<int32_t*>(r->BASE)[1], 3);
    // The shape checks compare max(upper - lower, 0): extents 0 and 1 agree.
    Array e({{1, 2}, {1, 0}}, 8), one({{1, 1}}, 8);
    f90_sumr8(Args().result(one.desc()).addr(1, e.desc()).value(2, int32_t{1}).check());
    // MAXLOC of a contiguous array all equal to the start value: one past the end.
    Array m({{1, 2}, {1, 2}}, 4);
    m.fill<int32_t>({INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN});
    Desc p;
    f90_maxloci4(Args().addr(0, p.get()).addr(1, m.desc()));
    EXPECT_EQ(reinterpret_cast<int32_t*>(p->BASE)[0], 1);
    EXPECT_EQ(reinterpret_cast<int32_t*>(p->BASE)[1], 3);
}

}  // namespace
