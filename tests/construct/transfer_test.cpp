// TRANSFER: element counts, the unwritten tail versus the zero fill, scalar
// results, strided operands, the K family and the messages.
#include <algorithm>

#include "helpers.h"

namespace ctest {
namespace {

struct TransferCall {
    Desc result;
    Args args;
    TransferCall(ArrDesc* src, ArrDesc* mold) { args.addr(0, result.get()).addr(1, src).addr(2, mold); }
};

// A supplied result pre-filled with 0xEE shows which bytes are written.
TEST(Transfer, TailUnwrittenWithoutSizeZeroedWithSize) {
    Array src({{1, 3}}, 1);
    src.fill<char>({'a', 'b', 'c'});
    Array mold({{1, 1}}, 4);
    Array out({{1, 1}}, 4);
    std::memset(out.data(), 0xEE, 4);
    TransferCall c(src, mold);
    c.args.addr(0, out.desc()).presence(c.args.a.Presence | 1).check();
    f90_transfer4(c.args.get());
    EXPECT_EQ(std::string(out.data(), 4), "abc\xEE");

    Array out2({{1, 2}}, 4);
    std::memset(out2.data(), 0xEE, 8);
    TransferCall s(src, mold);
    s.args.addr(0, out2.desc()).value(3, int32_t{2}).presence(s.args.a.Presence | 1).check();
    f90_transfer4(s.args.get());
    EXPECT_EQ(std::string(out2.data(), 8), std::string("abc\0\0\0\0\0", 8));

    TransferCall z(src, mold);
    z.args.value(3, int32_t{0}).check();
    f90_transfer4(z.args.get());
    EXPECT_EQ(z.result->RANK, 1);
    EXPECT_EQ(z.result->EXTENT, 0);
    f90_freespace(z.result->BASE);
}

TEST(Transfer, EverySizeScalarAndArrayMold) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        Array src({{1, 12}}, 4);
        for (int i = 0; i < 48; ++i) src.data()[i] = static_cast<char>(i + 1);
        Array smold(row.elsize);
        for (Entry fn : {row.transfer, row.ktransfer}) {
            TransferCall c(src, smold);
            c.args.check();
            fn(c.args.get());
            EXPECT_EQ(c.result->RANK, 0);
            EXPECT_EQ(c.result->ELSIZE, row.elsize);
            for (int b = 0; b < row.elsize; ++b) EXPECT_EQ(c.result->BASE[b], b + 1);
            f90_freespace(c.result->BASE);

            Array amold({{1, 2}}, row.elsize);
            TransferCall a(src, amold);
            a.args.check();
            fn(a.args.get());
            EXPECT_EQ(a.result->EXTENT, (48 + row.elsize - 1) / row.elsize);
            EXPECT_EQ(std::memcmp(a.result->BASE, src.data(), 48), 0);
            f90_freespace(a.result->BASE);
        }
    }
}

TEST(Transfer, StridedStreamsAndKSize) {
    Array a({{1, 8}}, 2);
    for (int i = 0; i < 8; ++i) a.at<int16_t>(i) = static_cast<int16_t>(0x0101 * (i + 1));
    Section rev(a, {tri(8, 1, -3)});  // elements 8, 5, 2
    Array mold({{1, 1}}, 1);
    Array out({{1, 12}}, 1);
    std::memset(out.data(), 0x55, 12);
    Section res(out, {tri(1, 12, 2)});  // 6 one-byte slots
    TransferCall c(rev, mold);
    c.args.addr(0, res.desc()).value(3, int64_t{6}).presence(c.args.a.Presence | 1).check();
    f90_ktransfer1(c.args.get());
    const unsigned char want[12] = {8, 0x55, 8, 0x55, 5, 0x55, 5, 0x55, 2, 0x55, 2, 0x55};
    EXPECT_EQ(std::memcmp(out.data(), want, 12), 0);
    // SIZE beyond SOURCE into a strided result: the zero fill stays on the
    // result's own elements.
    std::memset(out.data(), 0x55, 12);
    Array one({{1, 1}}, 2);
    one.at<int16_t>(0) = 0x0707;
    TransferCall z(one, mold);
    z.args.addr(0, res.desc()).value(3, int64_t{6}).presence(z.args.a.Presence | 1);
    f90_ktransfer1(z.args.get());
    const unsigned char want2[12] = {7, 0x55, 7, 0x55, 0, 0x55, 0, 0x55, 0, 0x55, 0, 0x55};
    EXPECT_EQ(std::memcmp(out.data(), want2, 12), 0);
}

TEST(TransferDeath, Messages) {
    Array src({{1, 3}}, 4);
    Array mold({{1, 1}}, 4);
    TransferCall c(src, mold);
    c.args.value(3, int32_t{-1}).check();
    EXPECT_DIES_WITH(f90_transfer4(c.args.get()), "ERROR calling the intrinsic subprogram TRANSFER:\n"
                                                  " The SIZE argument has a value -1. Its value should be nonnegative.\n");
    Array out({{1, 2}}, 4);
    TransferCall s(src, mold);
    s.args.addr(0, out.desc()).presence(s.args.a.Presence | 1).check();
    EXPECT_DIES_WITH(f90_transfer4(s.args.get()), "ERROR calling the intrinsic subprogram TRANSFER:\n"
                                                  " The RESULT array has size 2. It should have size 3.\n");
    s.args.value(3, int64_t{3});
    EXPECT_DIES_WITH(f90_ktransfer4(s.args.get()),
                     "ERROR calling the error handler by the\n intrinsic subprogram, signed by KTRANSFER.\n");
    // A supplied scalar result (scalar MOLD, no SIZE) is not checked.
    Array sm(4);
    Array sr(4);
    TransferCall ok(src, sm);
    ok.args.addr(0, sr.desc()).presence(ok.args.a.Presence | 1).check();
    f90_transfer4(ok.args.get());
    // Without checks a negative SIZE just gives an empty result.
    TransferCall neg(src, mold);
    neg.args.value(3, int32_t{-4});
    f90_transfer4(neg.args.get());
    EXPECT_EQ(neg.result->EXTENT, 0);
    f90_freespace(neg.result->BASE);
}

// Runs a mover on a library-allocated result and returns the result's tags.
std::vector<int> moved(Entry fn, Args a, int32_t elsize) {
    Desc r;
    a.addr(0, r.get()).check();
    fn(a.get());
    std::vector<int> t = tags(r.get(), elsize);
    f90_freespace(r->BASE);
    return t;
}

// Every mover over a rank-7 section (NONCONTIG set, a strided first and a
// reversed last dimension), against the section's own element order.
TEST(Movers, RankSevenSections) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        const int32_t z = row.elsize;
        const std::initializer_list<std::pair<int32_t, int32_t>> bounds = {{1, 4}, {0, 1}, {-1, 0}, {1, 2},
                                                                            {2, 3}, {1, 2}, {1, 3}};
        Array big(bounds, z), out(bounds, z), alt({{1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 3}}, 4);
        tag_fill(big, z);
        for (int i = 0; i < alt.size(); ++i) alt.at<int32_t>(i) = i % 2;
        const std::initializer_list<Sub> sub = {tri(1, 4, 2), tri(0, 1), tri(-1, 0), tri(1, 2), tri(2, 3), tri(1, 2), tri(3, 1, -1)};
        Section s(big, sub), o(out, sub), s6(big, {tri(1, 4, 2), tri(0, 1), tri(-1, 0), tri(1, 2), tri(2, 3), tri(1, 2), scal(2)});
        const std::vector<int> want = tags(s, z), want6 = tags(s6, z);
        ASSERT_EQ(want.size(), 192u);
        auto model = [](int n, auto f) { std::vector<int> v(n); for (int l = 0; l < n; ++l) v[l] = f(l); return v; };
        Array mold({{1, 1}}, z), shape = ivec({192}), yes(4), one(4), bnd(z), flat({{1, 192}}, z);
        yes.at<int32_t>(0) = one.at<int32_t>(0) = 1;
        for (int b = 0; b < z; ++b) bnd.data()[b] = static_cast<char>(pat(200, b));
        for (Entry fn : {row.transfer, row.ktransfer}) EXPECT_EQ(moved(fn, Args().addr(1, s).addr(2, mold), z), want);
        Args into;
        into.addr(0, o.desc()).addr(1, s).addr(2, mold).presence(into.a.Presence | 1).check();
        row.transfer(into.get());
        EXPECT_EQ(tags(o, z), want);
        EXPECT_EQ(moved(row.reshape, Args().addr(1, s).addr(2, shape), z), want);
        EXPECT_EQ(moved(row.pack, Args().addr(1, s).addr(2, yes), z), want);
        tag_fill(flat, z, 50);
        EXPECT_EQ(moved(row.unpack, Args().addr(1, flat).addr(2, alt).addr(3, s), z),
                  model(192, [&](int l) { return l % 2 ? 50 + l / 2 : want[l]; }));
        EXPECT_EQ(moved(row.spread, Args().addr(1, s6).value(2, int32_t{4}).value(3, int32_t{3}), z),
                  model(192, [&](int l) { return want6[l % 8 + 8 * (l / 24)]; }));
        EXPECT_EQ(moved(row.cshift, Args().addr(1, s).addr(2, one).value(3, int32_t{7}), z),
                  model(192, [&](int l) { return want[l % 64 + (l / 64 + 1) % 3 * 64]; }));
        EXPECT_EQ(moved(row.eoshift, Args().addr(1, s).addr(2, one).addr(3, bnd).value(4, int32_t{7}), z),
                  model(192, [&](int l) { return l / 64 < 2 ? want[l % 64 + (l / 64 + 1) * 64] : 200; }));
    }
}

// Empty sections whose BASE and ZERO are null, reversed along their other
// dimension, through every mover; and a supplied empty result (checks off)
// that CSHIFT and EOSHIFT clip every section to.
TEST(Movers, EmptySectionsWithNullBase) {
    for (const Sized& row : sized_entries()) {
        SCOPED_TRACE(row.label);
        const int32_t z = row.elsize;
        Array a({{1, 3}, {1, 4}}, z), out({{1, 3}, {1, 4}}, z), m({{1, 3}, {1, 4}}, 4), mold({{1, 1}}, z), one(4);
        Array shape = ivec({0});
        tag_fill(a, z);
        one.at<int32_t>(0) = 1;
        Section e(a, {tri(3, 1, -1), tri(1, 0)}), me(m, {tri(3, 1, -1), tri(1, 0)}), re(out, {tri(1, 0), tri(4, 1, -1)});
        ASSERT_EQ(e.desc()->BASE, nullptr);
        ASSERT_EQ(re.desc()->ZERO, nullptr);
        const std::pair<Entry, Args> calls[] = {
            {row.transfer, Args().addr(1, e).addr(2, mold)},      {row.reshape, Args().addr(1, e).addr(2, shape)},
            {row.pack, Args().addr(1, e).addr(2, me)},            {row.unpack, Args().addr(1, e).addr(2, me).addr(3, e)},
            {row.spread, Args().addr(1, e).value(2, int32_t{2}).value(3, int32_t{2})},
            {row.transpose, Args().addr(1, e)},                   {row.cshift, Args().addr(1, e).addr(2, one).value(3, int32_t{1})},
            {row.eoshift, Args().addr(1, e).addr(2, one).value(4, int32_t{2})}};
        for (const auto& [fn, args] : calls) EXPECT_TRUE(moved(fn, args, z).empty());
        for (int32_t dim : {1, 2}) {
            Args cs, eo;
            cs.addr(0, re.desc()).addr(1, a).addr(2, one).value(3, dim).presence(cs.a.Presence | 1);
            eo.addr(0, re.desc()).addr(1, a).addr(2, one).value(4, dim).presence(eo.a.Presence | 1);
            row.cshift(cs.get());
            row.eoshift(eo.get());
        }
        EXPECT_EQ(std::count(out.data(), out.data() + out.size() * z, 0), out.size() * z);
    }
}

}  // namespace
}  // namespace ctest
