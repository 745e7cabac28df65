// RESHAPE: every sized entry and the generic one, PAD and ORDER, the
// validation order and messages, the generic entry's early return and release.
#include "helpers.h"

namespace ctest {
namespace {

struct ReshapeCall {
    Desc result;
    Args args;
    ReshapeCall(ArrDesc* src, ArrDesc* shape) { args.addr(0, result.get()).addr(1, src).addr(2, shape); }
};

TEST(Reshape, EverySizeWithPadAndOrder) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        Array src({{0, 4}}, row.elsize);  // lower bound 0
        tag_fill(src, row.elsize);
        Array pad({{1, 2}}, row.elsize);
        tag_fill(pad, row.elsize, 100);
        Array shape = ivec({3, 4});
        for (Entry fn : {row.reshape, row.kreshape}) {
            ReshapeCall c(src, shape);
            c.args.addr(3, pad.desc());
            fn(c.args.get());
            EXPECT_EQ(c.result->ELSIZE, row.elsize);
            EXPECT_EQ(shape_of(c.result.get()), (std::vector<int32_t>{3, 4}));
            // 5 from SOURCE, then PAD repeated: 7 = 3 passes + 1.
            EXPECT_EQ(tags(c.result.get(), row.elsize),
                      (std::vector<int>{0, 1, 2, 3, 4, 100, 101, 100, 101, 100, 101, 100}));
            f90_freespace(c.result->BASE);
        }
        // ORDER = (2, 1): SOURCE fills the 2 x 3 result row by row.
        Array order = ivec({2, 1});
        Array shape23 = ivec({2, 3});
        ReshapeCall c(src, shape23);
        c.args.addr(3, pad.desc()).addr(4, order.desc());
        row.reshape(c.args.get());
        EXPECT_EQ(tags(c.result.get(), row.elsize), (std::vector<int>{0, 3, 1, 4, 2, 100}));
        f90_freespace(c.result->BASE);
    }
}

TEST(Reshape, StridedOperandsAndSuppliedResult) {
    Array a({{1, 6}, {1, 4}}, 4);
    for (int i = 0; i < 24; ++i) a.at<int32_t>(i) = i;
    Section src(a, {tri(6, 1, -2), tri(1, 4, 1)});  // rows 6,4,2 of every column: 3 x 4
    Array out({{-1, 4}, {2, 5}}, 4);                // a 6 x 4 result with odd bounds
    for (int i = 0; i < 24; ++i) out.at<int32_t>(i) = -7;
    Section res(out, {tri(-1, 4, 2), tri(2, 5, 1)});  // every second row: 3 x 4
    Array shape = ivec({3, 4});
    Array order = ivec({2, 1});
    ReshapeCall c(src, shape);
    c.args.addr(0, res.desc()).addr(4, order.desc()).presence(c.args.a.Presence | F90_PRESENT_RESULT).check();
    f90_reshape4(c.args.get());
    // SOURCE in element order: 5,3,1, 11,9,7, 17,15,13, 23,21,19; the result
    // is filled with dimension 2 fastest.
    std::vector<int32_t> want = {5, -7, 9, -7, 13, -7, 3, -7, 7, -7, 23, -7,
                                 1, -7, 17, -7, 21, -7, 11, -7, 15, -7, 19, -7};
    for (int i = 0; i < 24; ++i) EXPECT_EQ(out.at<int32_t>(i), want[i]) << i;
}

TEST(Reshape, LargeOrderedMatchesDefinition) {
    // Large enough for the tiled path; ORDER (2,1) is a transposition.
    const int m = 70, n = 45;
    Array src({{1, m * n}}, 8);
    for (int i = 0; i < m * n; ++i) src.at<int64_t>(i) = i;
    Array shape = ivec({m, n}, 8);
    Array order = ivec({2, 1}, 8);
    ReshapeCall c(src, shape);
    c.args.addr(4, order.desc()).check();
    f90_kreshape8(c.args.get());
    auto* r = reinterpret_cast<int64_t*>(c.result->BASE);
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) ASSERT_EQ(r[i + j * m], i * n + j);
    f90_freespace(c.result->BASE);
}

TEST(Reshape, ZeroExtentAndPadBoundaries) {
    Array src({{1, 3}}, 4);
    src.fill<int32_t>({1, 2, 3});
    Array pad({{1, 2}}, 4);
    pad.fill<int32_t>({8, 9});
    {  // N - S = P exactly: PAD once.
        Array shape = ivec({5});
        ReshapeCall c(src, shape);
        c.args.addr(3, pad.desc());
        f90_reshape4(c.args.get());
        EXPECT_EQ(ints(c.result.get()), (std::vector<int32_t>{1, 2, 3, 8, 9}));
        f90_freespace(c.result->BASE);
    }
    {  // N - S = 2P + 1.
        Array shape = ivec({8});
        ReshapeCall c(src, shape);
        c.args.addr(3, pad.desc());
        f90_reshape4(c.args.get());
        EXPECT_EQ(ints(c.result.get()), (std::vector<int32_t>{1, 2, 3, 8, 9, 8, 9, 8}));
        f90_freespace(c.result->BASE);
    }
    {  // A zero in SHAPE: the sized entry creates an empty result.
        Array shape = ivec({2, 0});
        ReshapeCall c(src, shape);
        c.args.check();
        f90_reshape4(c.args.get());
        EXPECT_EQ(c.result->RANK, 2);
        EXPECT_EQ(c.result->EXTENT, 0);
        f90_freespace(c.result->BASE);
    }
}

TEST(Reshape, GenericEarlyReturnAndRelease) {
    Array empty({{1, 0}}, 6);
    Array shape = ivec({2});
    ReshapeCall c(empty, shape);
    c.result->RANK = 5;  // untouched marker
    f90_reshapen(c.args.get());
    EXPECT_EQ(c.result->RANK, 5);
    EXPECT_EQ(c.result->BASE, nullptr);

    // Checks off, no PAD, result larger than SOURCE: the supplied result's
    // storage is released and nothing copied (the block is the caller's own
    // f90_getspace block here, so releasing it is observable as no crash and
    // no write).
    Array src({{1, 2}}, 6);
    Desc res;
    int32_t bounds[] = {1, 4};
    f90_CreateArray(1, bounds, 6, res.get());
    Array shape4 = ivec({4});
    ReshapeCall g(src, shape4);
    g.args.addr(0, res.get()).presence(g.args.a.Presence | F90_PRESENT_RESULT);
    f90_reshapen(g.args.get());
    EXPECT_EQ(res->EXTENT, 4);  // descriptor left as it was
}

TEST(ReshapeDeath, ValidationOrderAndMessages) {
    const char* head = "ERROR calling the intrinsic subprogram RESHAPE:\n";
    Array src({{1, 6}}, 4);
    {
        Array shape = ivec({1, 1, 1, 1, 1, 1, 1, 1});
        ReshapeCall c(src, shape);
        c.args.check();
        EXPECT_DIES_WITH(f90_reshape4(c.args.get()), std::string(head) +
                         " The SHAPE argument has size 8.\n Its size should be at least 1 and no larger than 7.\n");
    }
    {
        Array shape({{1, 0}}, 4);
        ReshapeCall c(src, shape);
        c.args.check();
        EXPECT_DIES_WITH(f90_Reshape_Validation(c.args.get()), std::string(head) +
                         " The SHAPE argument has size 0.\n Its size should be at least 1 and no larger than 7.\n");
    }
    {  // rank mismatch comes before any SHAPE element (even a negative one)
        Array shape = ivec({-1, 2, 3});
        Array out({{1, 2}, {1, 3}}, 4);
        ReshapeCall c(src, shape);
        c.args.addr(0, out.desc()).presence(c.args.a.Presence | 1).check();
        EXPECT_DIES_WITH(f90_reshape4(c.args.get()), std::string(head) +
                         " The rank of the RESULT array should be equal to the size of the SHAPE array.\n"
                         " The rank of the RESULT array is 2. The size of the SHAPE array is 3.\n");
    }
    {  // negative element after a matching one; mismatch at an earlier position wins
        Array shape = ivec({3, -2});
        ReshapeCall c(src, shape);
        c.args.check();
        EXPECT_DIES_WITH(f90_reshape4(c.args.get()), std::string(head) +
                         " The SHAPE argument should have only nonnegative elements.\n"
                         " The contents of the SHAPE array is: (3, -2).\n");
        Array out({{1, 2}, {1, 2}}, 4);
        c.args.addr(0, out.desc()).presence(c.args.a.Presence | 1);
        EXPECT_DIES_WITH(f90_reshape4(c.args.get()), std::string(head) +
                         " The RESULT array has shape:    (2, 2).\n The shape of RESULT should be: (3, -2).\n");
    }
    {  // SOURCE too small: an empty PAD counts as absent; a real PAD skips the test
        Array shape = ivec({7});
        Array empty({{1, 0}}, 4);
        ReshapeCall c(src, shape);
        c.args.addr(3, empty.desc()).check();
        EXPECT_DIES_WITH(f90_reshape4(c.args.get()), std::string(head) +
                         " The size of the SOURCE array should be at least 7.\n The size of the SOURCE array is 6.\n");
        Array pad({{1, 1}}, 4);
        c.args.addr(3, pad.desc());
        f90_reshape4(c.args.get());
        EXPECT_EQ(c.result->EXTENT, 7);
        f90_freespace(c.result->BASE);
    }
    {  // ORDER shape, then ORDER contents
        Array shape = ivec({2, 3});
        Array order3 = ivec({1, 2, 3});
        ReshapeCall c(src, shape);
        c.args.addr(4, order3.desc()).check();
        EXPECT_DIES_WITH(f90_reshape4(c.args.get()), std::string(head) +
                         " Array arguments SHAPE and ORDER should have the same shape.\n"
                         " The shape of argument SHAPE is: (2).\n The shape of argument ORDER is: (3).\n");
        for (auto bad : {std::pair<int, int>{1, 1}, {0, 1}, {2, 3}}) {
            Array order = ivec({bad.first, bad.second});
            c.args.addr(4, order.desc());
            EXPECT_DIES_WITH(f90_reshape4(c.args.get()),
                             std::string(head) + " The ORDER argument should be a permutation of the integers 1 to 2.\n"
                             " The contents of the ORDER argument array is: (" + std::to_string(bad.first) + ", " +
                             std::to_string(bad.second) + ").\n");
        }
    }
}

TEST(ReshapeDeath, KFamilySignsWithItsOwnName) {
    Array src({{1, 2}}, 4);
    Array shape = ivec({5}, 8);
    ReshapeCall c(src, shape);
    c.args.check();
    const std::string unknown =
        "ERROR calling the error handler by the\n intrinsic subprogram, signed by KRESHAPE.\n";
    EXPECT_DIES_WITH(f90_kreshape4(c.args.get()), unknown);
    EXPECT_DIES_WITH(f90_kReshape_Validation(c.args.get()), unknown);
    // Without checks nothing is validated: a too-small SOURCE is copied as far as it goes.
    Args off = c.args;
    off.a.Flags = 0;
    f90_kreshape4(off.get());
    EXPECT_EQ(c.result->EXTENT, 5);
    f90_freespace(c.result->BASE);
}

}  // namespace
}  // namespace ctest
