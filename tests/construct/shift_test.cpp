// CSHIFT and EOSHIFT: every size, scalar and array SHIFT and BOUNDARY, every
// DIM, sections, the default boundaries and the DIM check difference.
#include "helpers.h"

namespace ctest {
namespace {

Array scalar_i4(int32_t v) {
    Array s(4);
    s.at<int32_t>(0) = v;
    return s;
}

std::vector<int32_t> cshift1(std::vector<int32_t> in, int32_t s, bool eo) {
    Array a({{1, static_cast<int32_t>(in.size())}}, 4);
    for (size_t i = 0; i < in.size(); ++i) a.at<int32_t>(i) = in[i];
    Array sh = scalar_i4(s);
    Desc r;
    Args args;
    args.addr(0, r.get()).addr(1, a.desc()).addr(2, sh.desc()).check();
    (eo ? f90_eoshift4 : f90_cshift4)(args.get());
    std::vector<int32_t> out = ints(r.get());
    f90_freespace(r->BASE);
    return out;
}

TEST(Shift, RankOneValues) {
    const std::vector<int32_t> v = {1, 2, 3, 4, 5};
    EXPECT_EQ(cshift1(v, 2, false), (std::vector<int32_t>{3, 4, 5, 1, 2}));
    EXPECT_EQ(cshift1(v, -1, false), (std::vector<int32_t>{5, 1, 2, 3, 4}));
    EXPECT_EQ(cshift1(v, 7, false), cshift1(v, 2, false));
    EXPECT_EQ(cshift1(v, -13, false), cshift1(v, 2, false));
    EXPECT_EQ(cshift1(v, 5, false), v);
    EXPECT_EQ(cshift1(v, 0, false), v);
    EXPECT_EQ(cshift1(v, 2, true), (std::vector<int32_t>{3, 4, 5, 0, 0}));
    EXPECT_EQ(cshift1(v, -2, true), (std::vector<int32_t>{0, 0, 1, 2, 3}));
    EXPECT_EQ(cshift1(v, 5, true), (std::vector<int32_t>(5, 0)));
    EXPECT_EQ(cshift1(v, -9, true), (std::vector<int32_t>(5, 0)));
}

// Reference: result(i1,i2,i3) per the definitions, on tags.
int ref(const int* ext, int dim, const int* i, int s, bool eo, int bnd) {
    int j[3] = {i[0], i[1], i[2]};
    const int n = ext[dim];
    if (eo) {
        j[dim] = i[dim] + s;
        if (j[dim] < 0 || j[dim] >= n) return bnd;
    } else {
        j[dim] = ((i[dim] + s) % n + n) % n;
    }
    return j[0] + ext[0] * (j[1] + ext[1] * j[2]);
}

TEST(Shift, EverySizeEveryDimScalarAndArrayShift) {
    const int ext[3] = {4, 3, 5};
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        Array a({{0, 3}, {1, 3}, {-2, 2}}, row.elsize);
        tag_fill(a, row.elsize);
        Array b(row.elsize);
        tag_fill(b, row.elsize, 200);
        for (int dim = 1; dim <= 3; ++dim) {
            for (bool eo : {false, true}) {
                for (bool array_shift : {false, true}) {
                    SCOPED_TRACE(std::to_string(dim) + (eo ? " eo" : " c") + (array_shift ? " array" : ""));
                    // SHIFT array over the other two dimensions: values -6 .. 6
                    int oe[2], k = 0;
                    for (int d = 0; d < 3; ++d)
                        if (d != dim - 1) oe[k++] = ext[d];
                    Array sha({{1, oe[0]}, {1, oe[1]}}, 4);
                    for (int q = 0; q < oe[0] * oe[1]; ++q) sha.at<int32_t>(q) = (q * 5) % 13 - 6;
                    Array shs = scalar_i4(-2);
                    Desc r;
                    Args args;
                    args.addr(0, r.get()).addr(1, a.desc()).addr(2, array_shift ? sha.desc() : shs.desc()).check();
                    if (eo) args.addr(3, b.desc()).value(4, dim);
                    else args.value(3, dim);
                    (eo ? row.eoshift : row.cshift)(args.get());
                    std::vector<int> got = tags(r.get(), row.elsize), exp;
                    int i[3];
                    for (i[2] = 0; i[2] < 5; ++i[2])
                        for (i[1] = 0; i[1] < 3; ++i[1])
                            for (i[0] = 0; i[0] < 4; ++i[0]) {
                                int o[2], kk = 0;
                                for (int d = 0; d < 3; ++d)
                                    if (d != dim - 1) o[kk++] = i[d];
                                int s = array_shift ? (((o[0] + oe[0] * o[1]) * 5) % 13 - 6) : -2;
                                exp.push_back(ref(ext, dim - 1, i, s, eo, 200));
                            }
                    EXPECT_EQ(got, exp);
                    f90_freespace(r->BASE);
                }
            }
        }
    }
}

TEST(Shift, SectionsArrayBoundaryAndDefaults) {
    // Reversed columns of a 3 x 4 section, result into a strided supplied
    // result; EOSHIFT along DIM 2 with a BOUNDARY array (one per row).
    Array a({{1, 3}, {1, 8}}, 4);
    for (int i = 0; i < 24; ++i) a.at<int32_t>(i) = i;
    Section src(a, {tri(1, 3), tri(8, 1, -2)});  // columns 8, 6, 4, 2
    Array out({{1, 6}, {1, 4}}, 4);
    for (int i = 0; i < 24; ++i) out.at<int32_t>(i) = -1;
    Section res(out, {tri(6, 1, -2), tri(1, 4)});  // rows 6, 4, 2
    Array bnd({{1, 3}}, 4);
    bnd.fill<int32_t>({100, 200, 300});
    Array sh = scalar_i4(1);
    Args args;
    args.addr(0, res.desc()).addr(1, src.desc()).addr(2, sh.desc()).addr(3, bnd.desc()).value(4, 2)
        .presence(args.a.Presence | 1).check();
    f90_eoshift4(args.get());
    // src(i, j) = a(i, 10 - 2j) = (i-1) + 3*(9-2j); result(i, j) = src(i, j+1), j = 4 -> bnd(i)
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 4; ++j) {
            int want = j < 4 ? (i - 1) + 3 * (9 - 2 * (j + 1)) : 100 * i;
            EXPECT_EQ(out.at<int32_t>((6 - 2 * (i - 1)) - 1 + 6 * (j - 1)), want) << i << "," << j;
        }
    EXPECT_EQ(out.at<int32_t>(0), -1);

    // Generic EOSHIFT without BOUNDARY fills with blanks; sized with zeros.
    Array c({{1, 3}}, 3);
    tag_fill(c, 3);
    Array two = scalar_i4(2);
    Desc r;
    Args g;
    g.addr(0, r.get()).addr(1, c.desc()).addr(2, two.desc());
    f90_eoshiftn(g.get());
    EXPECT_EQ(std::string(r->BASE, 9).substr(3), "      ");
    EXPECT_EQ(tag_of(r->BASE, 3), 2);
    f90_freespace(r->BASE);

    // A scalar ARRAY: shifted off gives the boundary.
    Array s = scalar_i4(7);
    Array bs = scalar_i4(9);
    Desc rs;
    Args sa;
    sa.addr(0, rs.get()).addr(1, s.desc()).addr(2, two.desc()).addr(3, bs.desc());
    f90_eoshift4(sa.get());
    EXPECT_EQ(reinterpret_cast<int32_t*>(rs->BASE)[0], 9);
    f90_freespace(rs->BASE);
}

TEST(Shift, ShortShiftAndBoundaryWithChecksOff) {
    // Three sections, one SHIFT and one BOUNDARY element: the later sections
    // take shift 0 and are not read past either array's end.
    Array a({{1, 2}, {1, 3}}, 4);
    a.fill<int32_t>({1, 2, 3, 4, 5, 6});
    Array sh({{1, 1}}, 4), bd({{1, 1}}, 4);
    sh.at<int32_t>(0) = 1;
    bd.at<int32_t>(0) = 9;
    Desc r;
    Args args;
    args.addr(0, r.get()).addr(1, a.desc()).addr(2, sh.desc()).addr(3, bd.desc());
    f90_eoshift4(args.get());
    EXPECT_EQ(ints(r.get()), (std::vector<int32_t>{2, 9, 3, 4, 5, 6}));
    f90_freespace(r->BASE);
}

TEST(ShiftDeath, Messages) {
    Array a({{1, 3}, {1, 4}}, 4);
    Array sh = scalar_i4(1);
    Desc r;
    {  // CSHIFT rejects DIM = 3 even without checks.
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, sh.desc()).value(3, 3);
        EXPECT_DIES_WITH(f90_cshift4(args.get()),
                         "ERROR calling the intrinsic subprogram CSHIFT:\n"
                         " The DIM parameter had a value of 3.\n Its value should be at least 1 and no larger than 2.\n");
    }
    {  // SHIFT of 4 elements along DIM 2 of a 3 x 4 ARRAY
        Array s4({{1, 4}}, 4);
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, s4.desc()).value(3, 2).check();
        EXPECT_DIES_WITH(f90_cshift4(args.get()),
                         "ERROR calling the intrinsic subprogram CSHIFT:\n"
                         " The SHIFT array has shape:    (4).\n The shape of SHIFT should be: (3).\n");
        Args eo;
        eo.addr(0, r.get()).addr(1, a.desc()).addr(2, s4.desc()).value(4, 2).check();
        EXPECT_DIES_WITH(f90_eoshift4(eo.get()),
                         "ERROR calling the intrinsic subprogram EOSHIFT:\n"
                         " The SHIFT array has shape:    (4).\n The shape of SHIFT should be: (3).\n");
        eo.addr(2, sh.desc()).addr(3, s4.desc());
        EXPECT_DIES_WITH(f90_eoshift4(eo.get()),
                         "ERROR calling the intrinsic subprogram EOSHIFT:\n"
                         " The BOUNDARY array has shape:    (4).\n The shape of BOUNDARY should be: (3).\n");
    }
    {
        Array out({{1, 4}, {1, 3}}, 4);
        for (Entry fn : {f90_cshift4, f90_eoshift4}) {
            Args args;
            args.addr(0, out.desc()).addr(1, a.desc()).addr(2, sh.desc()).presence(args.a.Presence | 1).check();
            EXPECT_DIES_WITH(fn(args.get()), std::string("ERROR calling the intrinsic subprogram ") +
                             (fn == f90_cshift4 ? "CSHIFT" : "EOSHIFT") +
                             ":\n The RESULT array has shape:    (4, 3).\n The shape of RESULT should be: (3, 4).\n");
        }
    }
    {  // EOSHIFT checks DIM only with checks on; DIM = 0 without is no error.
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, sh.desc()).value(4, 0).check();
        EXPECT_DIES_WITH(f90_eoshift4(args.get()),
                         "ERROR calling the intrinsic subprogram EOSHIFT:\n"
                         " The DIM parameter had a value of 0.\n Its value should be at least 1 and no larger than 2.\n");
        args.a.Flags = 0;
        f90_eoshift4(args.get());
        EXPECT_EQ(r->EXTENT, 12);
        f90_freespace(r->BASE);
    }
}

}  // namespace
}  // namespace ctest
