// SPREAD and TRANSPOSE: every size, strided operands, the deliberate
// NCOPIES and DIM behaviours, and the messages.
#include "helpers.h"

namespace ctest {
namespace {

struct SpreadCall {
    Desc result;
    Args args;
    SpreadCall(ArrDesc* src, int32_t dim, int32_t ncopies) {
        args.addr(0, result.get()).addr(1, src).value(2, dim).value(3, ncopies);
    }
};

TEST(Spread, EverySizeEveryDim) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        Array src({{2, 4}, {0, 1}}, row.elsize);  // 3 x 2, odd bounds
        tag_fill(src, row.elsize);
        for (int dim = 1; dim <= 3; ++dim) {
            SpreadCall c(src, dim, 2);
            row.spread(c.args.get());
            std::vector<int32_t> want = {3, 2};
            want.insert(want.begin() + (dim - 1), 2);
            ASSERT_EQ(shape_of(c.result.get()), want);
            std::vector<int> got = tags(c.result.get(), row.elsize), exp;
            for (int i3 = 0; i3 < want[2]; ++i3)
                for (int i2 = 0; i2 < want[1]; ++i2)
                    for (int i1 = 0; i1 < want[0]; ++i1) {
                        int s[3] = {i1, i2, i3}, k = 0, t[2];
                        for (int d = 0; d < 3; ++d)
                            if (d != dim - 1) t[k++] = s[d];
                        exp.push_back(t[0] + 3 * t[1]);
                    }
            EXPECT_EQ(got, exp) << "dim " << dim;
            f90_freespace(c.result->BASE);
        }
    }
}

TEST(Spread, ScalarNegativeNcopiesAndSections) {
    Array s(4);
    s.at<int32_t>(0) = 42;
    SpreadCall c(s, 1, 5);
    c.args.check();
    f90_spread4(c.args.get());
    EXPECT_EQ(ints(c.result.get()), (std::vector<int32_t>{42, 42, 42, 42, 42}));
    f90_freespace(c.result->BASE);

    Array v({{1, 3}}, 4);
    v.fill<int32_t>({1, 2, 3});
    SpreadCall neg(v, 2, -3);
    neg.args.check();
    f90_spread4(neg.args.get());
    EXPECT_EQ(shape_of(neg.result.get()), (std::vector<int32_t>{3, 0}));
    f90_freespace(neg.result->BASE);

    // Reversed source into a strided supplied result whose DIM extent (3)
    // exceeds NCOPIES (2): accepted, only two copies written.
    Array a({{1, 6}}, 4);
    a.fill<int32_t>({1, 2, 3, 4, 5, 6});
    Section rev(a, {tri(6, 1, -2)});  // 6, 4, 2
    Array out({{1, 3}, {1, 6}}, 4);
    for (int i = 0; i < 18; ++i) out.at<int32_t>(i) = 0;
    Section res(out, {tri(1, 3, 1), tri(1, 6, 2)});  // 3 x 3
    SpreadCall st(rev, 1, 2);
    st.args.addr(0, res.desc()).presence(st.args.a.Presence | 1).check();
    f90_spread4(st.args.get());
    std::vector<int32_t> want = {6, 6, 0, 0, 0, 0, 4, 4, 0, 0, 0, 0, 2, 2, 0, 0, 0, 0};
    for (int i = 0; i < 18; ++i) EXPECT_EQ(out.at<int32_t>(i), want[i]) << i;
}

TEST(Spread, ContiguousPlacementUsesNcopies) {
    // A contiguous supplied result with extent 3 along DIM = 2 for NCOPIES 2:
    // copies land at (c*NCOPIES + k)*chunk, i.e. packed at the front.
    Array v({{1, 2}}, 4);
    v.fill<int32_t>({7, 8});
    Array out({{1, 2}, {1, 3}}, 4);
    for (int i = 0; i < 6; ++i) out.at<int32_t>(i) = 0;
    SpreadCall c(v, 2, 2);
    c.args.addr(0, out.desc()).presence(c.args.a.Presence | 1).check();
    f90_spread4(c.args.get());
    std::vector<int32_t> want = {7, 8, 7, 8, 0, 0};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(out.at<int32_t>(i), want[i]);
    // Chunk of 1000 four-byte elements: past the 3600-byte piece size.
    Array big({{1, 1000}}, 4);
    for (int i = 0; i < 1000; ++i) big.at<int32_t>(i) = i;
    SpreadCall b(big, 2, 3);
    f90_spread4(b.args.get());
    auto* r = reinterpret_cast<int32_t*>(b.result->BASE);
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < 1000; ++i) ASSERT_EQ(r[k * 1000 + i], i);
    f90_freespace(b.result->BASE);
}

TEST(SpreadDeath, Messages) {
    Array v({{1, 3}}, 4);
    const std::string head = "ERROR calling the intrinsic subprogram SPREAD:\n";
    SpreadCall c(v, 3, 2);
    c.args.check();
    EXPECT_DIES_WITH(f90_spread4(c.args.get()), head +
                     " The DIM parameter had a value of 3.\n Its value should be at least 1 and no larger than 2.\n");
    Array out({{1, 3}, {1, 1}}, 4);
    SpreadCall s(v, 2, 2);
    s.args.addr(0, out.desc()).presence(s.args.a.Presence | 1).check();
    EXPECT_DIES_WITH(f90_spread4(s.args.get()), head +
                     " The RESULT array has shape:    (3, 1).\n The shape of RESULT should be: (3, 2).\n");
    // Without checks neither fires; a bad DIM copies nothing.
    s.args.a.Flags = 0;
    f90_spread4(s.args.get());
    c.args.a.Flags = 0;
    f90_spread4(c.args.get());
    f90_freespace(c.result->BASE);
}

TEST(Transpose, EverySizeAndSections) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        for (int m : {2, 1, 0, 33}) {
            const int n = m == 33 ? 40 : 3;
            Array a({{0, m - 1}, {5, 4 + n}}, row.elsize);
            tag_fill(a, row.elsize);
            Desc r;
            Args args;
            args.addr(0, r.get()).addr(1, a.desc()).check();
            row.transpose(args.get());
            ASSERT_EQ(shape_of(r.get()), (std::vector<int32_t>{n, m}));
            std::vector<int> got = tags(r.get(), row.elsize), exp;
            for (int i = 0; i < m; ++i)
                for (int j = 0; j < n; ++j) exp.push_back((i + j * m) % 256);
            EXPECT_EQ(got, exp);
            f90_freespace(r->BASE);
        }
    }
    // Negative strides on both sides.
    Array a({{1, 4}, {1, 3}}, 2);
    for (int i = 0; i < 12; ++i) a.at<int16_t>(i) = static_cast<int16_t>(i);
    Section src(a, {tri(4, 1, -1), tri(1, 3, 1)});
    Array out({{1, 3}, {1, 4}}, 2);
    Section res(out, {tri(3, 1, -1), tri(1, 4, 1)});
    Args args;
    args.addr(0, res.desc()).addr(1, src.desc()).presence(args.a.Presence | 1).check();
    f90_transpose2(args.get());
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 4; ++i)  // out(3-j, i+1) = a(4-i, j+1)
            EXPECT_EQ(out.at<int16_t>((2 - j) + 3 * i), (3 - i) + 4 * j);
}

TEST(TransposeDeath, ResultShape) {
    Array a({{1, 2}, {1, 3}}, 4);
    Array out({{1, 2}, {1, 3}}, 4);
    Args args;
    args.addr(0, out.desc()).addr(1, a.desc()).presence(args.a.Presence | 1).check();
    EXPECT_DIES_WITH(f90_transpose4(args.get()),
                     "ERROR calling the intrinsic subprogram TRANSPOSE:\n"
                     " The RESULT array has shape:    (2, 3).\n The shape of RESULT should be: (3, 2).\n");
}

}  // namespace
}  // namespace ctest

namespace ctest {
namespace {

// Tiled transposition: sizes around the tile and register-block edges.
TEST(Transpose, TileEdges) {
    for (auto [m, n] : {std::pair<int, int>{17, 50}, {70, 33}, {130, 129}, {16, 16}}) {
        for (int w : {4, 8}) {
            Array a({{1, m}, {1, n}}, w);
            for (int i = 0; i < m * n; ++i) {
                if (w == 4) a.at<int32_t>(i) = i;
                else a.at<int64_t>(i) = i;
            }
            Desc r;
            Args args;
            args.addr(0, r.get()).addr(1, a.desc());
            (w == 4 ? f90_transpose4 : f90_transpose8)(args.get());
            for (int i = 0; i < m; ++i)
                for (int j = 0; j < n; ++j) {
                    const int64_t got = w == 4 ? reinterpret_cast<int32_t*>(r->BASE)[j + i * n]
                                               : reinterpret_cast<int64_t*>(r->BASE)[j + i * n];
                    ASSERT_EQ(got, i + j * m) << m << "x" << n << " w" << w;
                }
            f90_freespace(r->BASE);
        }
    }
}

// Results of 8 MB and more are written with streaming stores: SPREAD along
// both dimensions and a shift along each, checked element by element.
TEST(Spread, LargeResultsStreamed) {
    const int n = 1024;
    Array v({{1, n}}, 8);
    for (int i = 0; i < n; ++i) v.at<int64_t>(i) = i * 3 + 1;
    for (int dim : {1, 2}) {
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, v.desc()).value(2, dim).value(3, n + 1);
        f90_spread8(args.get());
        const int rows = dim == 1 ? n + 1 : n;
        auto* p = reinterpret_cast<int64_t*>(r->BASE);
        for (int j = 0; j < (dim == 1 ? n : n + 1); ++j)
            for (int i = 0; i < rows; ++i) ASSERT_EQ(p[i + j * rows], (dim == 1 ? j : i) * 3 + 1);
        // CSHIFT of the spread result along each dimension by 5.
        for (int sdim : {1, 2}) {
            Array five(4);
            five.at<int32_t>(0) = 5;
            Desc c;
            Args ca;
            ca.addr(0, c.get()).addr(1, r.get()).addr(2, five.desc()).value(3, sdim);
            f90_cshift8(ca.get());
            const int cols = dim == 1 ? n : n + 1;
            auto* q = reinterpret_cast<int64_t*>(c->BASE);
            for (int j = 0; j < cols; ++j)
                for (int i = 0; i < rows; ++i) {
                    const int si = sdim == 1 ? (i + 5) % rows : i, sj = sdim == 2 ? (j + 5) % cols : j;
                    ASSERT_EQ(q[i + j * rows], p[si + sj * rows]);
                }
            f90_freespace(c->BASE);
        }
        f90_freespace(r->BASE);
    }
}

}  // namespace
}  // namespace ctest

namespace ctest {
namespace {

// Large transpositions (results of 8 MB and more): a result whose columns
// share one offset within a 64-byte line takes whole lines with streaming
// stores and the rows before and after with plain ones.  Supplied results are
// sections starting off elements into a column whose byte step is a multiple
// of 64 (each offset gives another head); the elements around the section
// must keep their values.  Then a library-allocated result, whose column
// step (an odd extent) rules the line path out, and a source walked
// backwards.
template <class T>
void large_transpose(int m, int n, int lead) {
    const int32_t w = sizeof(T);
    Array a({{1, m}, {1, n}}, w);
    for (int i = 0; i < m * n; ++i) a.at<T>(i) = static_cast<T>(i);
    auto want = [&](int i, int j) { return static_cast<T>(j + i * m); };  // result(i, j) = a(j, i)
    for (int off : {0, 1, 3, 6}) {
        SCOPED_TRACE(off);
        Array out({{1, lead}, {1, m}}, w);
        for (int i = 0; i < lead * m; ++i) out.at<T>(i) = T(-1);
        Section res(out, {tri(off + 1, off + n), tri(1, m)});
        Args args;
        args.addr(0, res.desc()).addr(1, a.desc()).presence(args.a.Presence | 1);
        (w == 4 ? f90_transpose4 : f90_transpose8)(args.get());
        for (int j = 0; j < m; ++j)
            for (int i = 0; i < lead; ++i) {
                const bool in = i >= off && i < off + n;
                ASSERT_EQ(out.at<T>(i + j * lead), in ? want(i - off, j) : T(-1)) << i << "," << j;
            }
    }
    {
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc());
        (w == 4 ? f90_transpose4 : f90_transpose8)(args.get());
        const T* p = reinterpret_cast<const T*>(r->BASE);
        for (int j = 0; j < m; ++j)
            for (int i = 0; i < n; ++i) ASSERT_EQ(p[i + j * n], want(i, j)) << i << "," << j;
        f90_freespace(r->BASE);
    }
    {
        Section back(a, {tri(1, m), tri(n, 1, -1)});
        Array out({{1, lead}, {1, m}}, w);
        Section res(out, {tri(2, n + 1), tri(1, m)});
        Args args;
        args.addr(0, res.desc()).addr(1, back.desc()).presence(args.a.Presence | 1);
        (w == 4 ? f90_transpose4 : f90_transpose8)(args.get());
        for (int j = 0; j < m; ++j)
            for (int i = 0; i < n; ++i) ASSERT_EQ(out.at<T>(i + 1 + j * lead), want(n - 1 - i, j)) << i << "," << j;
    }
}

TEST(Transpose, LargeResultsStreamed) {
    large_transpose<int32_t>(1401, 1503, 1520);
    large_transpose<int64_t>(1030, 1021, 1032);
}

// RESHAPE with ORDER=(2,1) into a large supplied result (columns of 1536
// elements: whole lines) and into a library-allocated one.
TEST(Reshape, LargeOrderedResult) {
    const int rows = 1536, cols = 1400;
    Array src({{1, rows * cols}}, 4);
    for (int i = 0; i < rows * cols; ++i) src.at<int32_t>(i) = i;
    Array shape = ivec({rows, cols}), order = ivec({2, 1});
    for (bool supplied : {true, false}) {
        Array out({{1, rows}, {1, cols}}, 4);
        Desc r;
        Args args;
        args.addr(0, supplied ? out.desc() : r.get()).addr(1, src.desc()).addr(2, shape.desc()).addr(4, order.desc());
        args.presence(args.a.Presence | (supplied ? 1 : 0));
        f90_reshape4(args.get());
        const int32_t* p = reinterpret_cast<const int32_t*>(supplied ? out.data() : r->BASE);
        for (int j = 0; j < cols; ++j)
            for (int i = 0; i < rows; ++i) ASSERT_EQ(p[i + j * rows], j + i * cols) << i << "," << j;
        if (!supplied) f90_freespace(r->BASE);
    }
}

}  // namespace
}  // namespace ctest
