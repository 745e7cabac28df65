// DOT_PRODUCT: every kind, conjugation, strides, result placement, check.
#include "reduce_support.h"

namespace rtest {
namespace {

// Two vectors of n elements of `size` bytes and an ArgList for them.
struct Dot {
    Array a, b;
    Args args;
    Dot(int n, int size) : a({{1, n}}, size), b({{1, n}}, size) {
        args.addr(1, a.desc());
        args.addr(2, b.desc());
    }
    template <class T>
    T slot() {
        T v;
        std::memcpy(&v, args.a.Result.bytes, sizeof v);
        return v;
    }
};

template <class T>
void fill_raw(Array& a, std::initializer_list<T> v) {
    int i = 0;
    for (T x : v) std::memcpy(a.data() + sizeof(T) * i++, &x, sizeof x);
}

TEST(Dot, IntegersWrapAndLandInTheSlot) {
    Dot d(3, 4);
    d.a.fill<int32_t>({65536, 2, -3});
    d.b.fill<int32_t>({65536, 5, 7});
    std::memset(d.args.a.Result.bytes, 0x55, sizeof d.args.a.Result.bytes);
    f90_dotpri4(d.args.get());
    EXPECT_EQ(d.slot<int32_t>(), 0 + 10 - 21);  // 2^32 wraps to 0
    Dot e(2, 1);
    e.a.fill<int8_t>({100, 1});
    e.b.fill<int8_t>({2, 1});
    f90_dotpri1(e.args.get());
    EXPECT_EQ(e.slot<int8_t>(), static_cast<int8_t>(201));
    Dot g(2, 8);
    g.a.fill<int64_t>({INT64_MAX, 3});
    g.b.fill<int64_t>({2, 1});
    f90_dotpri8(g.args.get());
    EXPECT_EQ(g.slot<int64_t>(), 1);  // 2 * INT64_MAX = -2 (mod 2^64), + 3
}

TEST(Dot, NarrowKinds) {
    Dot i2(2, 2);
    i2.a.fill<int16_t>({300, -2});
    i2.b.fill<int16_t>({300, 5});
    f90_dotpri2(i2.args.get());
    EXPECT_EQ(i2.slot<int16_t>(), static_cast<int16_t>(90000 - 10));
    Dot l1(3, 1), l2(3, 2);
    l1.a.fill<int8_t>({0, 4, 1});
    l1.b.fill<int8_t>({1, 0, 0});
    f90_dotprl1(l1.args.get());
    EXPECT_EQ(l1.slot<int8_t>(), 0);
    l2.a.fill<int16_t>({0, 256, 1});
    l2.b.fill<int16_t>({1, 1, 0});
    f90_dotprl2(l2.args.get());
    EXPECT_EQ(l2.slot<int16_t>(), 1);  // 256: a high-byte bit is true
}

TEST(Dot, Logical) {
    Dot d(2, 4);
    d.a.fill<int32_t>({1, 0});
    d.b.fill<int32_t>({0, 1});
    f90_dotprl4(d.args.get());
    EXPECT_EQ(d.slot<int32_t>(), 0);
    d.b.fill<int32_t>({2, 1});
    f90_dotprl4(d.args.get());
    EXPECT_EQ(d.slot<int32_t>(), 1);
    Dot e(1, 8);
    e.a.fill<int64_t>({int64_t{1} << 33});
    e.b.fill<int64_t>({1});
    f90_dotprl8(e.args.get());
    EXPECT_EQ(e.slot<int64_t>(), 1);
}

TEST(Dot, RealsAndEmpty) {
    Dot d(3, 4);
    d.a.fill<float>({16777216.0f, 1.0f, 1.0f});
    d.b.fill<float>({1.0f, 1.0f, 1.0f});
    f90_dotprr4(d.args.get());
    EXPECT_EQ(d.slot<float>(), 16777218.0f);  // double accumulator
    Dot e(0, 8);
    e.args.a.Result.w[0] = 12345;
    f90_dotprr8(e.args.get());
    EXPECT_EQ(e.slot<double>(), 0.0);
    Dot q(2, 16);
    __float128 qa[2] = {1.5Q, 2}, qb[2] = {4, 0.25Q}, out = 7;
    std::memcpy(q.a.data(), qa, 32);
    std::memcpy(q.b.data(), qb, 32);
    q.args.a.Result.w[0] = reinterpret_cast<F90Word>(&out);
    f90_dotprr16(q.args.get());
    EXPECT_TRUE(out == 6.5Q);
    Dot x(2, 16);
    long double xa[2] = {1.5L, 2}, xb[2] = {4, 0.25L};
    for (int i = 0; i < 2; ++i) {
        std::memcpy(x.a.data() + 16 * i, &xa[i], 10);
        std::memcpy(x.b.data() + 16 * i, &xb[i], 10);
    }
    unsigned char res[16];
    std::memset(res, 0x77, 16);
    x.args.a.Result.w[0] = reinterpret_cast<F90Word>(res);
    f90_dotprr10(x.args.get());
    long double lv = 0;
    std::memcpy(&lv, res, 10);
    EXPECT_EQ(lv, 6.5L);
    EXPECT_EQ(res[10], 0x77);  // exactly 10 bytes written
}

TEST(Dot, ComplexConjugatesTheFirstArgument) {
    Dot d(1, 8);
    fill_raw<float>(d.a, {0, 1});
    fill_raw<float>(d.b, {0, 1});
    f90_dotprc8(d.args.get());
    EXPECT_EQ(d.slot<float>(), 1.0f);
    float im;
    std::memcpy(&im, d.args.a.Result.bytes + 4, 4);
    EXPECT_EQ(im, 0.0f);
    // (1+2i)^* (3+4i) = (3 + 8) + (4 - 6)i, in each of the wider kinds.
    Dot c(1, 16);
    fill_raw<double>(c.a, {1, 2});
    fill_raw<double>(c.b, {3, 4});
    double out[2] = {9, 9};
    c.args.a.Result.w[0] = reinterpret_cast<F90Word>(out);
    f90_dotprc16(c.args.get());
    EXPECT_EQ(out[0], 11);
    EXPECT_EQ(out[1], -2);
    Dot x(1, 32);
    long double xv[4] = {1, 2, 3, 4};
    for (int i = 0; i < 2; ++i) {
        std::memcpy(x.a.data() + 16 * i, &xv[i], 10);
        std::memcpy(x.b.data() + 16 * i, &xv[2 + i], 10);
    }
    unsigned char res[32] = {};
    x.args.a.Result.w[0] = reinterpret_cast<F90Word>(res);
    f90_dotprc20(x.args.get());
    long double re = 0, imx = 0;
    std::memcpy(&re, res, 10);
    std::memcpy(&imx, res + 16, 10);
    EXPECT_EQ(re, 11);
    EXPECT_EQ(imx, -2);
    Dot q(1, 32);
    __float128 qv[4] = {1, 2, 3, 4}, qo[2];
    std::memcpy(q.a.data(), qv, 32);
    std::memcpy(q.b.data(), qv + 2, 32);
    q.args.a.Result.w[0] = reinterpret_cast<F90Word>(qo);
    f90_dotprc32(q.args.get());
    EXPECT_TRUE(qo[0] == 11 && qo[1] == -2);
}

TEST(Dot, StridedVectors) {
    Array a({{1, 6}}, 8);
    a.fill<double>({1, 100, 2, 100, 3, 100});
    Array b({{1, 3}}, 8);
    b.fill<double>({3, 2, 1});
    Section s(a, {tri(1, 6, 2)});
    Section r(b, {tri(3, 1, -1)});
    Args args;
    args.addr(1, s.desc()).addr(2, r.desc());
    f90_dotprr8(args.get());
    double v;
    std::memcpy(&v, args.a.Result.bytes, 8);
    EXPECT_EQ(v, 1 * 1 + 2 * 2 + 3 * 3);
}

TEST(DotDeath, ShapesDifferOnlyUnderTheFlag) {
    Dot d(3, 4);
    Array shorter({{1, 2}}, 4);
    d.args.addr(2, shorter.desc());
    d.args.check();
    EXPECT_DIES_WITH(f90_dotpri4(d.args.get()),
                     head("DOT_PRODUCT") +
                         " Array arguments VECTOR_A and VECTOR_B should have the same shape.\n"
                         " The shape of argument VECTOR_A is: (3).\n The shape of argument VECTOR_B is: (2).\n");
    Dot ok(2, 4);
    ok.a.fill<int32_t>({1, 2});
    ok.b.fill<int32_t>({3, 4});
    Array longer({{1, 5}}, 4);
    longer.fill<int32_t>({3, 4, 5, 6, 7});
    ok.args.addr(2, longer.desc());
    f90_dotpri4(ok.args.get());
    EXPECT_EQ(ok.slot<int32_t>(), 11);  // read as far as VECTOR_A's count
}

}  // namespace
}  // namespace rtest
