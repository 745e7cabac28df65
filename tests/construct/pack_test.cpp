// PACK and UNPACK: every size, the two MASK readings, VECTOR tails, the
// provisional result, strided operands and the messages.
#include "helpers.h"

namespace ctest {
namespace {

Array mask_of(std::initializer_list<int32_t> v, std::initializer_list<std::pair<int32_t, int32_t>> b) {
    Array m(b, 4);
    int i = 0;
    for (int32_t x : v) m.at<int32_t>(i++) = x;
    return m;
}

TEST(Pack, EverySizeWithAndWithoutVector) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        Array a({{0, 2}, {-1, 0}}, row.elsize);  // 3 x 2
        tag_fill(a, row.elsize);
        Array m = mask_of({0, 2, 1, 0, -1, 0}, {{1, 3}, {1, 2}});  // word 2 counts as true
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, m.desc()).check();
        row.pack(args.get());
        EXPECT_EQ(shape_of(r.get()), (std::vector<int32_t>{3}));
        EXPECT_EQ(tags(r.get(), row.elsize), (std::vector<int>{1, 2, 4}));
        f90_freespace(r->BASE);

        Array v({{1, 5}}, row.elsize);
        tag_fill(v, row.elsize, 50);
        Desc rv;
        Args withv;
        withv.addr(0, rv.get()).addr(1, a.desc()).addr(2, m.desc()).addr(3, v.desc()).check();
        row.pack(withv.get());
        EXPECT_EQ(tags(rv.get(), row.elsize), (std::vector<int>{1, 2, 4, 53, 54}));
        f90_freespace(rv->BASE);
    }
}

TEST(Pack, ScalarMaskEmptyVectorAndSections) {
    Array a({{1, 4}}, 8);
    a.fill<int64_t>({10, 20, 30, 40});
    Array yes(4), no(4);
    yes.at<int32_t>(0) = 4;  // any nonzero word
    no.at<int32_t>(0) = 0;
    Array empty({{1, 0}}, 8);
    for (Array* m : {&yes, &no}) {
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, m->desc()).addr(3, empty.desc()).check();
        f90_pack8(args.get());  // empty VECTOR = absent VECTOR
        EXPECT_EQ(r->EXTENT, m == &yes ? 4 : 0);
        if (m == &yes) { EXPECT_EQ(reinterpret_cast<int64_t*>(r->BASE)[3], 40); }
        f90_freespace(r->BASE);
    }
    // Reversed ARRAY, strided MASK, supplied strided result: the positions
    // beyond those written keep their contents.
    Array mm = mask_of({1, 9, 0, 9, 1, 9, 1, 9}, {{1, 8}});
    Section ms(mm, {tri(1, 8, 2)});  // 1, 0, 1, 1
    Section ar(a, {tri(4, 1, -1)});  // 40, 30, 20, 10
    Array out({{1, 8}}, 8);
    for (int i = 0; i < 8; ++i) out.at<int64_t>(i) = -1;
    Section res(out, {tri(1, 8, 2)});
    Args args;
    args.addr(0, res.desc()).addr(1, ar.desc()).addr(2, ms.desc()).presence(args.a.Presence | 1).check();
    f90_pack8(args.get());
    std::vector<int64_t> want = {40, -1, 20, -1, 10, -1, -1, -1};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(out.at<int64_t>(i), want[i]);
}

TEST(Pack, AllFalseReleasesProvisional) {
    Array a({{1, 3}}, 4);
    Array m = mask_of({0, 0, 0}, {{1, 3}});
    Desc r;
    Args args;
    args.addr(0, r.get()).addr(1, a.desc()).addr(2, m.desc());
    f90_pack4(args.get());
    EXPECT_EQ(r->EXTENT, 0);
    EXPECT_EQ(r->DIM[0].UPPER, 0);
    f90_freespace(r->BASE);
}

TEST(PackDeath, Messages) {
    const std::string head = "ERROR calling the intrinsic subprogram PACK:\n";
    Array a({{1, 2}, {1, 2}}, 4);
    Array m1 = mask_of({1, 1, 1, 1}, {{1, 4}});
    Desc r;
    Args args;
    args.addr(0, r.get()).addr(1, a.desc()).addr(2, m1.desc()).check();
    EXPECT_DIES_WITH(f90_pack4(args.get()), head +
                     " Array arguments ARRAY and MASK should have the same shape.\n"
                     " The shape of argument ARRAY is: (2, 2).\n The shape of argument MASK is:  (4).\n");
    Array m = mask_of({1, 1, 1, 0}, {{1, 2}, {1, 2}});
    Array v({{1, 2}}, 4);
    args.addr(2, m.desc()).addr(3, v.desc());
    EXPECT_DIES_WITH(f90_pack4(args.get()), head + " Array argument VECTOR has size 2. It should have size 3.\n");
    Array out({{1, 2}}, 4);
    Args sup;
    sup.addr(0, out.desc()).addr(1, a.desc()).addr(2, m.desc()).presence(sup.a.Presence | 1).check();
    EXPECT_DIES_WITH(f90_pack4(sup.get()), head + " The RESULT array has size 2. It should have size 3.\n");
    Array v3({{1, 3}}, 4);
    sup.addr(3, v3.desc());
    EXPECT_DIES_WITH(f90_pack4(sup.get()), head + " The RESULT array has size 2. It should have size 3.\n");
    Array yes(4);
    yes.at<int32_t>(0) = 1;
    Args sc;
    sc.addr(0, out.desc()).addr(1, a.desc()).addr(2, yes.desc()).presence(sc.a.Presence | 1).check();
    EXPECT_DIES_WITH(f90_pack4(sc.get()), head + " The RESULT array has size 2. It should have size 4.\n");
    // Extents 0 and 1 compare equal in the per-dimension test: only the
    // total size (0 both) is compared, so this is accepted.
    Array a0({{1, 1}, {1, 0}}, 4);
    Array m0({{1, 0}, {1, 0}}, 4);
    Desc r0;
    Args ok;
    ok.addr(0, r0.get()).addr(1, a0.desc()).addr(2, m0.desc()).check();
    f90_pack4(ok.get());
    EXPECT_EQ(r0->EXTENT, 0);
    f90_freespace(r0->BASE);
}

TEST(Unpack, EverySizeBit0AndScalarField) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        Array v({{1, 4}}, row.elsize);
        tag_fill(v, row.elsize);
        Array m = mask_of({1, 2, 3, 0, -1, 0}, {{1, 2}, {0, 2}});  // 2 is false for UNPACK
        Array f({{1, 2}, {1, 3}}, row.elsize);
        tag_fill(f, row.elsize, 20);
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, v.desc()).addr(2, m.desc()).addr(3, f.desc()).check();
        row.unpack(args.get());
        EXPECT_EQ(shape_of(r.get()), (std::vector<int32_t>{2, 3}));
        EXPECT_EQ(tags(r.get(), row.elsize), (std::vector<int>{0, 21, 1, 23, 2, 25}));
        f90_freespace(r->BASE);

        Array s(row.elsize);
        tag_fill(s, row.elsize, 99);
        Desc rs;
        Args sa;
        sa.addr(0, rs.get()).addr(1, v.desc()).addr(2, m.desc()).addr(3, s.desc()).check();
        row.unpack(sa.get());
        EXPECT_EQ(tags(rs.get(), row.elsize), (std::vector<int>{0, 99, 1, 99, 2, 99}));
        f90_freespace(rs->BASE);
    }
}

TEST(Unpack, SmallerResultAndSections) {
    Array v({{1, 3}}, 4);
    v.fill<int32_t>({1, 2, 3});
    Array m = mask_of({1, 0, 1, 1}, {{1, 4}});
    Array f(4);
    f.at<int32_t>(0) = 0;
    Array out({{1, 4}}, 4);
    for (int i = 0; i < 4; ++i) out.at<int32_t>(i) = -5;
    Section res(out, {tri(4, 2, -1)});  // 3 positions, reversed
    Args args;
    args.addr(0, res.desc()).addr(1, v.desc()).addr(2, m.desc()).addr(3, f.desc()).presence(args.a.Presence | 1);
    f90_unpack4(args.get());  // only 3 positions processed
    EXPECT_EQ(ints(out.desc()), (std::vector<int32_t>{-5, 2, 0, 1}));
}

TEST(UnpackDeath, Messages) {
    const std::string head = "ERROR calling the intrinsic subprogram UNPACK:\n";
    Array v({{1, 1}}, 4);
    Array m = mask_of({1, 1, 0}, {{1, 3}});
    Array f({{1, 2}}, 4);
    Array out({{1, 2}}, 4);
    Args a1;
    a1.addr(0, out.desc()).addr(1, v.desc()).addr(2, m.desc()).addr(3, f.desc()).presence(a1.a.Presence | 1).check();
    EXPECT_DIES_WITH(f90_unpack4(a1.get()), head +
                     " The RESULT array has shape:    (2).\n The shape of RESULT should be: (3).\n");
    Desc r;
    Args a2;
    a2.addr(0, r.get()).addr(1, v.desc()).addr(2, m.desc()).addr(3, f.desc()).check();
    EXPECT_DIES_WITH(f90_unpack4(a2.get()), head +
                     " Array arguments MASK and FIELD should have the same shape.\n"
                     " The shape of argument MASK is:  (3).\n The shape of argument FIELD is: (2).\n");
    Array s(4);
    a2.addr(3, s.desc());
    EXPECT_DIES_WITH(f90_unpack4(a2.get()), head + " Array argument VECTOR has size 1. It should have size 2.\n");
}

}  // namespace
}  // namespace ctest

namespace ctest {
namespace {

// Long operands reach the block and vector kernels: every size against a
// plain reference, with result space to spare (must stay untouched) and
// with too little (checks off: packing stops at the end of the result).
TEST(Pack, LongRandomMasksEverySize) {
    uint32_t seed = 12345;
    auto rnd = [&] { return (seed = seed * 1103515245u + 12345u) >> 16; };
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        for (int n : {17, 300, 1000}) {
            Array a({{1, n}}, row.elsize);
            tag_fill(a, row.elsize);
            Array m({{1, n}}, 4);
            std::vector<int> want;
            for (int i = 0; i < n; ++i) {
                m.at<int32_t>(i) = rnd() % 3 == 0 ? 0 : static_cast<int32_t>(rnd() % 4);
                if (m.at<int32_t>(i) != 0) want.push_back(i % 256);
            }
            for (int cap : {n, static_cast<int>(want.size()) / 2}) {
                Array out({{1, cap}}, row.elsize);
                std::memset(out.data(), 0x5A, static_cast<size_t>(cap) * row.elsize + 64);
                Args args;
                args.addr(0, out.desc()).addr(1, a.desc()).addr(2, m.desc()).presence(args.a.Presence | 1);
                row.pack(args.get());
                const int k = std::min<int>(cap, static_cast<int>(want.size()));
                for (int i = 0; i < k; ++i) ASSERT_EQ(tag_of(out.data() + i * row.elsize, row.elsize), want[i]) << i;
                for (int b = k * row.elsize; b < cap * row.elsize + 64; ++b)
                    ASSERT_EQ(static_cast<unsigned char>(out.data()[b]), 0x5A) << "byte " << b;
            }
        }
    }
}

TEST(Unpack, LongRandomMasksEverySize) {
    uint32_t seed = 777;
    auto rnd = [&] { return (seed = seed * 1103515245u + 12345u) >> 16; };
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        const int n = 600;
        Array m({{1, n}}, 4);
        int trues = 0;
        for (int i = 0; i < n; ++i) trues += (m.at<int32_t>(i) = static_cast<int32_t>(rnd() % 4)) & 1;
        for (int vl : {trues, trues - 40}) {  // the short VECTOR: checks off, its end is respected
            Array v({{1, vl}}, row.elsize);
            tag_fill(v, row.elsize);
            Array f({{1, n}}, row.elsize);
            tag_fill(f, row.elsize, 100);
            Array out({{1, n}}, row.elsize);
            std::memset(out.data(), 0, static_cast<size_t>(n) * row.elsize);
            Args args;
            args.addr(0, out.desc()).addr(1, v.desc()).addr(2, m.desc()).addr(3, f.desc()).presence(args.a.Presence | 1);
            row.unpack(args.get());
            int k = 0;
            for (int i = 0; i < n; ++i) {
                const int got = tag_of(out.data() + i * row.elsize, row.elsize);
                if (m.at<int32_t>(i) & 1) {
                    if (k < vl) ASSERT_EQ(got, k % 256) << i;
                    else ASSERT_EQ(std::string(out.data() + i * row.elsize, row.elsize),
                                   std::string(row.elsize, '\0')) << i;  // left as it was
                    ++k;
                } else {
                    ASSERT_EQ(got, (100 + i) % 256) << i;
                }
            }
        }
    }
}

}  // namespace
}  // namespace ctest
