// Descriptor creation, sections, addressing and the element walk.
#include <gtest/gtest.h>

#include <vector>

#include "frame/descriptor.h"
#include "support/arrays.h"

using testutil::Array;
using testutil::Desc;
using testutil::scal;
using testutil::Section;
using testutil::tri;

namespace {

struct BoundsCheckOn {
    BoundsCheckOn() { ArrBoundsCheck = 1; }
    ~BoundsCheckOn() { ArrBoundsCheck = 0; }
};

TEST(CreateArray, EmptyDimensionKeepsZeroAtBase) {
    Desc d;
    int32_t b[] = {5, 2};
    f90_CreateArray(1, b, 8, d);
    EXPECT_EQ(d->DIM[0].LOWER, 5);
    EXPECT_EQ(d->DIM[0].UPPER, 4);
    EXPECT_EQ(d->EXTENT, 0);
    EXPECT_NE(d->BASE, nullptr);
    EXPECT_EQ(d->ZERO, d->BASE);
    f90_freespace(d->BASE);
}

TEST(CreateArray, DefaultLowerBoundAndUnmarkedUpper) {
    Desc d;
    int32_t b[] = {F90_DEFAULT_MARKER, 10};
    f90_CreateArray(1, b, 4, d);
    EXPECT_EQ(d->DIM[0].LOWER, 1);
    EXPECT_EQ(d->DIM[0].UPPER, 10);
    EXPECT_EQ(d->EXTENT, 10);
    EXPECT_EQ(d->SCALEFACTOR, 4);
    EXPECT_EQ(d->NONCONTIG, 0);
    EXPECT_EQ(d->ZERO, d->BASE - 4);
    f90_freespace(d->BASE);
}

TEST(CreateArray, StridesAndZeroOfAMatrix) {
    Desc d;
    int32_t b[] = {0, 2, 1, 4};  // 3 x 4 with lower bounds (0, 1)
    f90_CreateArray(2, b, 8, d);
    EXPECT_EQ(d->RANK, 2);
    EXPECT_EQ(d->DIM[0].STRIDE, 1);
    EXPECT_EQ(d->DIM[1].STRIDE, 3);
    EXPECT_EQ(d->EXTENT, 12);
    EXPECT_EQ(d->ZERO, d->BASE - 3 * 8);
    EXPECT_EQ(f90_ElemAddr(d, 0, 1), d->BASE);
    EXPECT_EQ(f90_ElemAddr(d, 2, 4), d->BASE + 11 * 8);
    EXPECT_EQ(f90_ElemAddrContig(d, 5), d->BASE + 40);
    f90_freespace(d->BASE);
}

TEST(CreateArray, ScalarAndBoundsCheckWords) {
    BoundsCheckOn on;
    Desc d;
    f90_CreateArray(0, nullptr, 4, d);
    EXPECT_EQ(d->EXTENT, 1);
    EXPECT_EQ(d.raw.LOWOFFSET, 0);
    EXPECT_EQ(d.raw.HIGHOFFSET, 1);
    f90_freespace(d->BASE);

    Desc m;
    int32_t b[] = {-1, 1, 2, 3};  // strides 1, 3
    f90_CreateArray(2, b, 4, m);
    EXPECT_EQ(m.raw.LOWOFFSET, -1 + 2 * 3);
    EXPECT_EQ(m.raw.HIGHOFFSET, 1 + 3 * 3 + 1);
    f90_freespace(m->BASE);

    Desc e;
    int32_t eb[] = {3, 1};
    e.raw.LOWOFFSET = e.raw.HIGHOFFSET = 77;
    f90_CreateArray(1, eb, 4, e);
    EXPECT_EQ(e.raw.LOWOFFSET, 0);
    EXPECT_EQ(e.raw.HIGHOFFSET, 0);
    f90_freespace(e->BASE);
}

TEST(CreateArray, ZeroByteRequestsGiveDistinctBlocks) {
    Desc a, b;
    int32_t eb[] = {1, 0};
    f90_CreateArray(1, eb, 4, a);
    f90_CreateArray(1, eb, 4, b);
    EXPECT_NE(a->BASE, nullptr);
    EXPECT_NE(a->BASE, b->BASE);
    f90_freespace(a->BASE);
    f90_freespace(b->BASE);
}

TEST(CreateSection, NegativeStrideRun) {
    Array a({{1, 10}}, 4);
    Section s(a, {tri(10, 1, -3)});
    EXPECT_EQ(s.desc()->RANK, 1);
    EXPECT_EQ(s.desc()->DIM[0].LOWER, 1);
    EXPECT_EQ(s.desc()->DIM[0].UPPER, 4);  // 10, 7, 4, 1
    EXPECT_EQ(s.desc()->DIM[0].STRIDE, -3);
    EXPECT_EQ(s.desc()->EXTENT, 4);
    EXPECT_EQ(s.desc()->NONCONTIG, 1);
    EXPECT_EQ(s.desc()->BASE, a.data() + 9 * 4);
    EXPECT_EQ(f90_ElemAddr(s, 4), a.data());
}

TEST(CreateSection, WrongDirectionIsEmpty) {
    Array a({{1, 10}}, 4);
    Section s(a, {tri(1, 10, -1)});
    EXPECT_EQ(s.desc()->DIM[0].UPPER, 0);
    EXPECT_EQ(s.desc()->EXTENT, 0);
    EXPECT_EQ(s.desc()->BASE, nullptr);
    EXPECT_EQ(s.desc()->ZERO, nullptr);
}

TEST(CreateSection, LowerBelowBoundsMovesOntoProgression) {
    Array a({{1, 10}}, 4);
    Section s(a, {tri(0, F90_DEFAULT_MARKER, 2)});  // 2, 4, ..., 10
    EXPECT_EQ(s.desc()->EXTENT, 5);
    EXPECT_EQ(s.desc()->BASE, a.data() + 4);
    Section t(a, {tri(-5, 4, 3)});  // -5 -> 1, then 1, 4
    EXPECT_EQ(t.desc()->EXTENT, 2);
    EXPECT_EQ(t.desc()->BASE, a.data());
}

TEST(CreateSection, ClampsAndDefaults) {
    Array a({{1, 10}}, 4);
    Section s(a, {tri(3, 99, 4)});  // 3, 7: hi clamped to 10, then to the last index reached
    EXPECT_EQ(s.desc()->EXTENT, 2);
    Section d(a, {tri(F90_DEFAULT_MARKER, F90_DEFAULT_MARKER, F90_DEFAULT_MARKER)});
    EXPECT_EQ(d.desc()->EXTENT, 10);
    EXPECT_EQ(d.desc()->DIM[0].STRIDE, 1);
    Section n(a, {tri(20, -5, -7)});  // 20 -> 6, hi clamped to 1: 6
    EXPECT_EQ(n.desc()->EXTENT, 1);
    EXPECT_EQ(n.desc()->BASE, a.data() + 5 * 4);
}

TEST(CreateSection, ScalarSubscriptsDropDimensions) {
    Array a({{0, 3}, {1, 5}}, 8);
    Section row(a, {scal(2), tri(2, 5, 2)});  // a(2, 2:5:2)
    ASSERT_EQ(row.desc()->RANK, 1);
    EXPECT_EQ(row.desc()->EXTENT, 2);
    EXPECT_EQ(row.desc()->DIM[0].STRIDE, 8);  // 2 * 4 elements
    EXPECT_EQ(row.desc()->BASE, a.data() + (2 + 1 * 4) * 8);
    EXPECT_EQ(f90_ElemAddr(row, 2), a.data() + (2 + 3 * 4) * 8);

    Section elem(a, {scal(1), scal(5)});
    EXPECT_EQ(elem.desc()->RANK, 0);
    EXPECT_EQ(elem.desc()->EXTENT, 1);
    EXPECT_EQ(elem.desc()->BASE, a.data() + (1 + 4 * 4) * 8);
}

TEST(CreateSection, ScalarSubscriptOutOfRangeIsEmpty) {
    Array a({{0, 3}, {1, 5}}, 8);
    Section s(a, {scal(4), tri(1, 5)});
    EXPECT_EQ(s.desc()->EXTENT, 0);
    EXPECT_EQ(s.desc()->BASE, nullptr);
    EXPECT_EQ(s.desc()->ZERO, nullptr);
}

TEST(CreateSection, ZeroStrideGivesEmptyDimension) {
    Array a({{1, 10}}, 4);
    Section s(a, {tri(1, 10, 0)});
    EXPECT_EQ(s.desc()->EXTENT, 0);
}

TEST(CreateSection, BoundsCheckWordsFollowStrideSigns) {
    BoundsCheckOn on;
    Array a({{1, 4}, {1, 3}}, 4);
    testutil::Desc d;
    int32_t t[] = {3, 4, 1, -1, 3, 1, 3, 2};  // a(4:1:-1, 1:3:2): strides -1 and 8
    f90_CreateSection(a, t, d);
    EXPECT_EQ(d->DIM[0].STRIDE, -1);
    EXPECT_EQ(d->DIM[1].STRIDE, 8);
    EXPECT_EQ(d.raw.LOWOFFSET, 4 * -1 + 1 * 8);
    EXPECT_EQ(d.raw.HIGHOFFSET, 1 * -1 + 2 * 8 + 1);
    EXPECT_EQ(f90_ElemAddr(d, 1, 1), a.data() + 3 * 4);
    EXPECT_EQ(f90_ElemAddr(d, 4, 2), a.data() + 8 * 4);
}

TEST(ElemAddrDeath, OutOfBoundsSubscriptWithCheckOn) {
    Desc d;
    int32_t b[] = {1, 4};
    f90_CreateArray(1, b, 4, d);
    EXPECT_EQ(f90_ElemAddr(d, 9), d->BASE + 8 * 4);  // unchecked while the switch is off
    EXPECT_DIES_WITH(
        {
            ArrBoundsCheck = 1;
            f90_CreateArray(1, b, 4, d);
            f90_ElemAddr(d, 5);
        },
        "f90_ElemAddr: Bad subscript.\n");
    EXPECT_DIES_WITH(
        {
            ArrBoundsCheck = 1;
            f90_CreateArray(1, b, 4, d);
            f90_ElemAddr(d, 0);
        },
        "f90_ElemAddr: Bad subscript.\n");
    f90_freespace(d->BASE);
}

std::vector<int32_t> walk(const ArrDesc* d) {
    std::vector<int32_t> v;
    for (auto* p = static_cast<int32_t*>(f90_FirstElemAddr(d)); p; p = static_cast<int32_t*>(f90_NextElemAddr()))
        v.push_back(*p);
    return v;
}

TEST(ElemWalk, ArrayElementOrderOverSections) {
    Array a({{1, 3}, {1, 4}}, 4);
    for (int i = 0; i < 12; ++i) a.at<int32_t>(i) = i;
    EXPECT_EQ(walk(a), (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    Section s(a, {tri(3, 1, -2), tri(2, 4, 2)});
    EXPECT_EQ(walk(s), (std::vector<int32_t>{5, 3, 11, 9}));
}

TEST(ElemWalk, EmptyAndRankZero) {
    Array e({{1, 0}}, 4);
    EXPECT_EQ(f90_FirstElemAddr(e), nullptr);
    EXPECT_EQ(f90_NextElemAddr(), nullptr);

    Array s(4);
    s.at<int32_t>(0) = 42;
    EXPECT_EQ(walk(s), std::vector<int32_t>{42});
}

TEST(ElemWalk, KeepsReturningNullAfterTheEnd) {
    Array a({{1, 2}}, 4);
    EXPECT_NE(f90_FirstElemAddr(a), nullptr);
    EXPECT_NE(f90_NextElemAddr(), nullptr);
    EXPECT_EQ(f90_NextElemAddr(), nullptr);
    EXPECT_EQ(f90_NextElemAddr(), nullptr);
}

TEST(Null, ClearsZeroAndBaseOfTheResult) {
    Array a({{1, 2}}, 4);
    testutil::Args args;
    args.addr(0, a.desc());
    f90_Null(args.get());
    EXPECT_EQ(a.desc()->BASE, nullptr);
    EXPECT_EQ(a.desc()->ZERO, nullptr);
    EXPECT_EQ(a.desc()->EXTENT, 2);
}

}  // namespace
