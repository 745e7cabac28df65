// TRANSFER: element counts, the unwritten tail versus the zero fill, scalar
// results, strided operands, the K family and the messages.
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

}  // namespace
}  // namespace ctest
