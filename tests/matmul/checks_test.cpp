// MATMUL's checks and their exact diagnostics: ranks always, shapes only when
// Flags bit 0 asks for them; and the allocated result's descriptor.
#include "support/arrays.h"

namespace {

using testutil::Args;
using testutil::Array;

const char kHead[] = "ERROR calling the intrinsic subprogram MATMUL:\n";
const char kRank[] = " At least one of the array arguments should have rank = 2\n";

void call(void (*f)(ArgList*), ArrDesc* r, ArrDesc* a, ArrDesc* b, bool check, bool supplied) {
    Args args;
    args.addr(0, r).addr(1, a).addr(2, b);
    if (check) args.check();
    if (supplied) args.presence(args.a.Presence | F90_PRESENT_RESULT);
    f(args.get());
}

TEST(MatmulChecks, RanksAreAlwaysChecked) {
    Array v1({{1, 3}}, 8), v2({{1, 3}}, 8), m({{1, 3}, {1, 3}}, 8), t({{1, 3}, {1, 3}, {1, 2}}, 8), s(8);
    testutil::Desc r;
    const std::string msg = std::string(kHead) + kRank;
    EXPECT_DIES_WITH(call(f90_matmulr8, r, v1, v2, false, false), msg);
    EXPECT_DIES_WITH(call(f90_matmuli4, r, m, t, false, false), msg);
    EXPECT_DIES_WITH(call(f90_matmull1, r, t, m, true, false), msg);
    EXPECT_DIES_WITH(call(f90_matmulc16, r, s, m, false, false), msg);
    EXPECT_DIES_WITH(call(f90_matmulr16, r, m, s, false, false), msg);
}

TEST(MatmulChecks, InnerExtentsOnlyWithCheckFlag) {
    Array a({{1, 4}, {0, 5}}, 8), b({{1, 5}, {1, 2}}, 8), v({{2, 6}}, 8);
    testutil::Desc r;
    const std::string msg = std::string(kHead) +
                            " The extent of the last dimension of MATRIX_A is 6.\n"
                            " The extent of the first dimension of MATRIX_B is 5.\n"
                            " These values should be equal.\n";
    EXPECT_DIES_WITH(call(f90_matmulr8, r, a, b, true, false), msg);
    EXPECT_DIES_WITH(call(f90_matmulr8, r, a, v, true, false), msg);
    Array v7({{1, 7}}, 4), b2({{1, 5}, {1, 2}}, 4);
    EXPECT_DIES_WITH(call(f90_matmuli4, r, v7, b2, true, false),
                     std::string(kHead) +
                         " The extent of the last dimension of MATRIX_A is 7.\n"
                         " The extent of the first dimension of MATRIX_B is 5.\n"
                         " These values should be equal.\n");
    // Unchecked, a mismatch is the caller's business: a K that fits both is taken.
    Array a2({{1, 2}, {1, 2}}, 4), b3({{1, 3}, {1, 1}}, 4);
    a2.fill<int32_t>({1, 2, 3, 4});
    b3.fill<int32_t>({10, 100, 1000});
    call(f90_matmuli4, r, a2, b3, false, false);
    EXPECT_EQ(reinterpret_cast<int32_t*>(r->BASE)[0], 1 * 10 + 3 * 100);
    EXPECT_EQ(reinterpret_cast<int32_t*>(r->BASE)[1], 2 * 10 + 4 * 100);
}

TEST(MatmulChecks, ResultShapeOnlyWithCheckFlag) {
    Array a({{1, 3}, {1, 4}}, 8), b({{1, 4}, {1, 2}}, 8), v({{1, 4}}, 8), w({{1, 3}}, 8);
    Array big({{1, 3}, {1, 3}}, 8), wrong_rows({{0, 3}, {1, 2}}, 8), vec5({{1, 5}}, 8);
    EXPECT_DIES_WITH(call(f90_matmulr8, big, a, b, true, true),
                     std::string(kHead) + " The RESULT array has shape:    (3, 3).\n The shape of RESULT should be: (3, 2).\n");
    EXPECT_DIES_WITH(call(f90_matmulc8, wrong_rows, a, b, true, true),
                     std::string(kHead) + " The RESULT array has shape:    (4, 2).\n The shape of RESULT should be: (3, 2).\n");
    EXPECT_DIES_WITH(call(f90_matmull4, vec5, w, b, true, true),  // 3 x (wrong K) is caught first
                     std::string(kHead) +
                         " The extent of the last dimension of MATRIX_A is 3.\n"
                         " The extent of the first dimension of MATRIX_B is 4.\n"
                         " These values should be equal.\n");
    EXPECT_DIES_WITH(call(f90_matmull4, vec5, v, b, true, true),
                     std::string(kHead) + " The RESULT array has shape:    (5).\n The shape of RESULT should be: (2).\n");
    EXPECT_DIES_WITH(call(f90_matmulr10, vec5, a, v, true, true),
                     std::string(kHead) + " The RESULT array has shape:    (5).\n The shape of RESULT should be: (3).\n");
    // Without the flag a larger result is written in its leading part only.
    Array a1({{1, 2}, {1, 1}}, 8), b1({{1, 1}, {1, 1}}, 8), r3({{1, 3}}, 8);
    a1.fill<double>({2.0, 3.0});
    b1.fill<double>({5.0});
    Array r33({{1, 3}, {1, 3}}, 8);
    r33.fill<double>({-1, -1, -1, -1, -1, -1, -1, -1, -1});
    call(f90_matmulr8, r33, a1, b1, false, true);
    EXPECT_EQ(r33.at<double>(0), 10.0);
    EXPECT_EQ(r33.at<double>(1), 15.0);
    EXPECT_EQ(r33.at<double>(2), -1.0);
}

TEST(MatmulChecks, AllocatedResultDescriptor) {
    Array a({{-1, 1}, {5, 8}}, 16), b({{0, 3}, {2, 3}}, 16), v({{1, 4}}, 16);
    testutil::Desc r;
    call(f90_matmulr10, r, a, b, true, false);
    EXPECT_EQ(r->RANK, 2);
    EXPECT_EQ(r->ELSIZE, 16);
    EXPECT_EQ(r->DIM[0].LOWER, 1);
    EXPECT_EQ(r->DIM[0].UPPER, 3);
    EXPECT_EQ(r->DIM[1].UPPER, 2);
    EXPECT_EQ(r->DIM[1].STRIDE, 3);
    testutil::Desc rc;
    Array ac({{1, 2}, {1, 4}}, 32);
    Array vc({{1, 4}}, 32);
    call(f90_matmulc20, rc, ac, vc, true, false);
    EXPECT_EQ(rc->RANK, 1);
    EXPECT_EQ(rc->ELSIZE, 32);
    EXPECT_EQ(rc->EXTENT, 2);
    testutil::Desc e;
    Array a0({{1, 0}, {1, 3}}, 1), b0({{1, 3}, {1, 2}}, 1);
    call(f90_matmuli1, e, a0, b0, true, false);
    EXPECT_EQ(e->RANK, 2);
    EXPECT_EQ(e->EXTENT, 0);
    EXPECT_EQ(e->DIM[1].UPPER, 2);
}

}  // namespace
