// CEILING and FLOOR (ranges, out-of-range values, widths, the rounding-up
// FLOORs and FLOOR(REAL(8))), MODULO of integers and reals (against the
// definition, plus the P = 0 and special-value rules), MVBITS (messages and
// bit moves) and the kind inquiries.
#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <random>

#include "real_kinds.h"
#include "support/arrays.h"

using namespace numtest;
using testutil::Args;

namespace {

const std::string kHead = "ERROR calling the intrinsic subprogram ";

template <class T>
class Ceiling : public ::testing::Test {};
using Kinds = ::testing::Types<float, double, Real10, Quad>;
TYPED_TEST_SUITE(Ceiling, Kinds);

TYPED_TEST(Ceiling, AgreesWithCeilInRange) {
    using T = TypeParam;
    for (int k = -4000; k <= 4000; ++k) {
        T x = T(k) * T(0.75) + T(0.125);
        double want = std::ceil(static_cast<double>(x));
        EXPECT_EQ(R<T>::ceiling(x), static_cast<int32_t>(want)) << k;
    }
    EXPECT_EQ(R<T>::ceiling(Classes<T>::min_sub()), 1);
    EXPECT_EQ(R<T>::ceiling(-Classes<T>::min_sub()), 0);
    EXPECT_EQ(R<T>::ceiling(T(-0.0)), 0);
    EXPECT_EQ(R<T>::ceiling(T(1048576.5)), 1048577);
    EXPECT_EQ(R<T>::ceiling(T(-1048576.5)), -1048576);
}

TYPED_TEST(Ceiling, OutOfRangeValue) {
    using T = TypeParam;
    for (T x : {T(-2147483648.0), T(3.0e9), T(-3.0e9), Classes<T>::inf(), -Classes<T>::inf(), Classes<T>::nan()})
        EXPECT_EQ(R<T>::ceiling(x), INT32_MIN) << hex(x);
}

TEST(Ceiling, SingleAndDoubleEdges) {
    float f = 2.5f, g = -2.5f, big = 3.0e9f, two31 = 2147483648.0f;
    EXPECT_EQ(f90_ceiling4(&f), 3);
    EXPECT_EQ(f90_ceiling4(&g), -2);
    EXPECT_EQ(f90_ceiling4(&big), INT32_MIN);
    // 2^31 passes the single range test and wraps in the 32-bit truncation.
    EXPECT_EQ(f90_ceiling4(&two31), INT32_MIN + 1);
    double d = 2147483647.0, e = 2147483646.5, over = 2147483647.5, low = -2147483647.5;
    EXPECT_EQ(f90_ceiling8(&d), 2147483647);
    EXPECT_EQ(f90_ceiling8(&e), 2147483647);
    EXPECT_EQ(f90_ceiling8(&over), INT32_MIN);
    EXPECT_EQ(f90_ceiling8(&low), -2147483647);
}

TEST(Ceiling, SixteenBitResults) {
    double d = 40000.0, top = 32767.0, bottom = -32768.0, x = -2.5, y = 32766.25;
    EXPECT_EQ(f90_ceilingh8(&d), 0);
    EXPECT_EQ(f90_ceilingh8(&top), 32767);
    EXPECT_EQ(f90_ceilingh8(&bottom), 0);
    EXPECT_EQ(f90_ceilingh8(&x), -2);
    EXPECT_EQ(f90_ceilingh8(&y), 32767);
    float f = -32767.5f, nan = Classes<float>::nan();
    EXPECT_EQ(f90_ceilingh4(&f), -32767);
    EXPECT_EQ(f90_ceilingh4(&nan), 0);
    Arg10 big(40000.0L), half(0.5L);
    EXPECT_EQ(f90_ceilingh10(big.b), 0);
    EXPECT_EQ(f90_ceilingh10(half.b), 1);
    Quad q = 40000, r = -7.25;
    EXPECT_EQ(f90_ceilingh16(&q), 0);
    EXPECT_EQ(f90_ceilingh16(&r), -7);
}

TEST(Ceiling, SixtyFourBitResultsKeepThe32BitTruncation) {
    double a = 2147483647.5, b = 4294967296.0, c = -2.5, d = 1.0e19, e = -9.3e18;
    EXPECT_EQ(f90_ceilingk8(&a), int64_t{2147483648});
    EXPECT_EQ(f90_ceilingk8(&b), 2);  // shift count 31 = -1 mod 32: 1, then 1 < x
    EXPECT_EQ(f90_ceilingk8(&c), -2);
    EXPECT_EQ(f90_ceilingk8(&d), int64_t{2147483648});  // out of range: upper word 0
    EXPECT_EQ(f90_ceilingk8(&e), int64_t{2147483648});
    float f = 3.0e9f;
    EXPECT_EQ(f90_ceilingk4(&f), int64_t{-1294967295});  // 0xb2d05e00 as a signed word, plus 1
    Arg10 x10(4294967296.0L);
    EXPECT_EQ(f90_ceilingk10(x10.b), 2);
    Quad q = 4294967296.0, nq = -5.5;
    EXPECT_EQ(f90_ceilingk16(&q), 1);  // low 32 bits of the conversion: 0, then 0 < x
    EXPECT_EQ(f90_ceilingk16(&nq), -5);
}

TEST(Floor, RoundsUpExceptForDouble) {
    float f = 2.5f, g = -2.5f;
    EXPECT_EQ(f90_floor4(&f), 3);
    EXPECT_EQ(f90_floor4(&g), -2);
    double d = 2.5, e = -2.5, z = 0.0, big = 3.0e9, nan = Classes<double>::nan();
    EXPECT_EQ(f90_floor8(&d), 1);
    EXPECT_EQ(f90_floor8(&e), 0);
    EXPECT_EQ(f90_floor8(&z), 0);
    EXPECT_EQ(f90_floor8(&big), INT32_MIN);
    EXPECT_EQ(f90_floor8(&nan), INT32_MIN);
    Arg10 x(2.5L), big10(1.0e10L);
    EXPECT_EQ(f90_floor10(x.b), 3);
    EXPECT_EQ(f90_floorh10(x.b), 3);
    EXPECT_EQ(f90_floork10(x.b), 3);
    EXPECT_EQ(f90_floor10(big10.b), INT32_MIN);
    EXPECT_EQ(f90_floork10(big10.b), f90_ceilingk10(big10.b));
    Quad q = 2.5;
    EXPECT_EQ(f90_floor16(&q), 3);
    EXPECT_EQ(f90_floorh16(&q), 3);
    EXPECT_EQ(f90_floork16(&q), 3);
}

TEST(Floor, QuadEntriesAreOneFunctionUnderTwoNames) {
    EXPECT_EQ(reinterpret_cast<void*>(&f90_floor16), reinterpret_cast<void*>(&f90_ceiling16));
    EXPECT_EQ(reinterpret_cast<void*>(&f90_floorh16), reinterpret_cast<void*>(&f90_ceilingh16));
    EXPECT_EQ(reinterpret_cast<void*>(&f90_floork16), reinterpret_cast<void*>(&f90_ceilingk16));
}

// ---- MODULO ----

template <class I>
I mod(I (*f)(const I*, const I*), I a, I p) {
    return f(&a, &p);
}

TEST(ModuloInt, Cases) {
    EXPECT_EQ(mod(f90_moduloi4, 7, -3), -2);
    EXPECT_EQ(mod(f90_moduloi4, -7, 3), 2);
    EXPECT_EQ(mod(f90_moduloi4, 6, -3), 0);
    EXPECT_EQ(mod(f90_moduloi4, 5, 0), 5);
    EXPECT_EQ(mod(f90_moduloi4, 0, -3), 0);
    EXPECT_EQ(mod(f90_moduloi4, INT32_MIN, 1), 0);
    EXPECT_EQ(mod(f90_moduloi4, INT32_MIN, INT32_MAX), INT32_MAX - 1);
    EXPECT_EQ(mod(f90_moduloi4, INT32_MAX, INT32_MIN), -1);
    EXPECT_EQ(mod<int8_t>(f90_moduloi1, -128, 127), 126);
    EXPECT_EQ(mod<int8_t>(f90_moduloi1, 127, -128), -1);
    EXPECT_EQ(mod<int16_t>(f90_moduloi2, -32768, 3), 1);
    EXPECT_EQ(mod<int64_t>(f90_moduloi8, INT64_MIN, 10), 2);
    EXPECT_EQ(mod<int64_t>(f90_moduloi8, -9000000000, 0), -9000000000);
}

template <class I>
void check_against_definition(I (*f)(const I*, const I*)) {
    std::mt19937_64 gen(11);
    for (int n = 0; n < 20000; ++n) {
        I a = static_cast<I>(gen()), p = static_cast<I>(gen() >> (gen() % (8 * sizeof(I))));
        if (n % 3 == 0) p = static_cast<I>(p % 17);
        if (p == 0 || (a == std::numeric_limits<I>::min() && p == I(-1))) continue;
        long double r = std::fmod(static_cast<long double>(a), static_cast<long double>(p));  // exact for 64 bits
        if (r != 0 && (r < 0) != (p < 0)) r += p;
        ASSERT_EQ(mod(f, a, p), static_cast<I>(r)) << +a << " " << +p;
    }
}

TEST(ModuloInt, AgreesWithDefinitionInEveryWidth) {
    check_against_definition<int8_t>(f90_moduloi1);
    check_against_definition<int16_t>(f90_moduloi2);
    check_against_definition<int32_t>(f90_moduloi4);
    check_against_definition<int64_t>(f90_moduloi8);
}

TEST(ModuloIntDeath, MostNegativeByMinusOneFaults) {
    EXPECT_DEATH(mod(f90_moduloi4, INT32_MIN, -1), "");
    EXPECT_DEATH(mod<int8_t>(f90_moduloi1, -128, -1), "");
    EXPECT_DEATH(mod<int64_t>(f90_moduloi8, INT64_MIN, -1), "");
}

template <class T>
class ModuloReal : public ::testing::Test {};
TYPED_TEST_SUITE(ModuloReal, Kinds);

TYPED_TEST(ModuloReal, SpecialOperands) {
    using T = TypeParam;
    using C = Classes<T>;
    const T a = T(5.5);
    EXPECT_TRUE(same_bits(R<T>::modulo(a, T(0)), a));
    EXPECT_TRUE(same_bits(R<T>::modulo(-a, -T(0)), -a));
    EXPECT_TRUE(same_bits(R<T>::modulo(a, C::nan()), a));  // a NaN P takes the zero path
    EXPECT_TRUE(same_bits(R<T>::modulo(-a, C::inf()), -a));
    EXPECT_TRUE(same_bits(R<T>::modulo(a, -C::inf()), a));
    T qnan = R<T>::modulo(-C::inf(), T(2));
    EXPECT_TRUE(is_nan(qnan));
    EXPECT_TRUE(same_bits(qnan, -R<T>::modulo(C::inf(), T(2))));
    EXPECT_TRUE(std::signbit(static_cast<double>(qnan)));
    EXPECT_TRUE(same_bits(R<T>::modulo(-T(0), T(3)), -T(0)));
    // A zero remainder takes the sign of P.
    EXPECT_TRUE(same_bits(R<T>::modulo(T(-6), T(3)), T(0)));
    EXPECT_TRUE(same_bits(R<T>::modulo(T(6), T(-3)), -T(0)));
    // Subnormal P and exponents far apart.
    EXPECT_TRUE(same_bits(R<T>::modulo(C::huge(), C::min_sub()), T(0)));
    EXPECT_TRUE(same_bits(R<T>::modulo(T(-1), C::huge()), C::huge() - T(1)));
    EXPECT_TRUE(same_bits(R<T>::modulo(C::sub_bits(), -C::tiny()), C::sub_bits() - C::tiny()));
}

TYPED_TEST(ModuloReal, AgreesWithDefinition) {
    using T = TypeParam;
    std::mt19937 gen(5);
    std::uniform_real_distribution<double> mant(-1.0, 1.0);
    for (int n = 0; n < 3000; ++n) {
        T a = R<T>::ldexp(T(mant(gen)), static_cast<int>(gen() % 120) - 60);
        T p = R<T>::ldexp(T(mant(gen)), static_cast<int>(gen() % 120) - 60);
        if (p == 0) continue;
        T r = R<T>::fmod(a, p);
        if (r != 0 && (r < 0) != (p < 0)) r += p;
        if (r == 0) r = p < 0 ? -T(0) : T(0);
        ASSERT_TRUE(same_bits(R<T>::modulo(a, p), r)) << hex(a) << " " << hex(p);
    }
}

// ---- MVBITS ----

TEST(Mvbits, MovesBits) {
    int32_t to = 0x12345678, from_pos = 0, len = 32, to_pos = 0;
    f90_mvbits4(int32_t(0x9abcdef0), &from_pos, &len, &to, &to_pos);
    EXPECT_EQ(static_cast<uint32_t>(to), 0x9abcdef0u);
    from_pos = 4, len = 8, to_pos = 20;
    f90_mvbits4(int32_t(0x00000ab0), &from_pos, &len, &to, &to_pos);
    EXPECT_EQ(static_cast<uint32_t>(to), (0x9abcdef0u & ~0x0ff00000u) | 0x0ab00000u);
    const int32_t before = to;
    len = 0, from_pos = 32, to_pos = 32;  // LEN 0: positions at the end are allowed, TO unchanged
    f90_mvbits4(-1, &from_pos, &len, &to, &to_pos);
    EXPECT_EQ(to, before);
    int8_t t1 = 0;
    from_pos = 7, len = 1, to_pos = 0;
    f90_mvbits1(int8_t(-128), &from_pos, &len, &t1, &to_pos);
    EXPECT_EQ(t1, 1);
    int16_t t2 = -1;
    from_pos = 0, len = 4, to_pos = 12;
    f90_mvbits2(int16_t(0x0005), &from_pos, &len, &t2, &to_pos);
    EXPECT_EQ(static_cast<uint16_t>(t2), 0x5fffu);
    int64_t t8 = 0;
    from_pos = 0, len = 64, to_pos = 0;
    f90_mvbits8(INT64_MIN + 5, &from_pos, &len, &t8, &to_pos);
    EXPECT_EQ(t8, INT64_MIN + 5);
    from_pos = 60, len = 4, to_pos = 0;
    f90_mvbits8(int64_t(0x7000000000000000), &from_pos, &len, &t8, &to_pos);
    EXPECT_EQ(t8, ((INT64_MIN + 5) & ~int64_t{15}) | 7);
}

void mvbits4(int32_t frompos, int32_t len, int32_t topos) {
    int32_t to = 0;
    f90_mvbits4(1, &frompos, &len, &to, &topos);
}

TEST(MvbitsDeath, Messages) {
    const std::string tail = " Both arguments should have nonnegative values and their sum should be less than or equal to ";
    EXPECT_DIES_WITH(mvbits4(30, 3, 0), kHead + "MVBITS:\n Argument FROMPOS has the value 30 and argument LEN has the "
                                                "value 3.\n" + tail + "32.\n");
    EXPECT_DIES_WITH(mvbits4(-1, 3, 0), kHead + "MVBITS:\n Argument FROMPOS has the value -1 and argument LEN has the "
                                                "value 3.\n" + tail + "32.\n");
    EXPECT_DIES_WITH(mvbits4(0, 3, 30), kHead + "MVBITS:\n Argument TOPOS has the value 30 and argument LEN has the "
                                                "value 3.\n" + tail + "32.\n");
    EXPECT_DIES_WITH(mvbits4(INT32_MAX, 2, 0), kHead + "MVBITS:\n Argument FROMPOS has the value 2147483647 and "
                                                       "argument LEN has the value 2.\n" + tail + "32.\n");
    int8_t to = 0;
    int32_t fp = 0, len = 9, tp = 0;
    EXPECT_DIES_WITH(f90_mvbits1(1, &fp, &len, &to, &tp),
                     kHead + "MVBITS:\n Argument FROMPOS has the value 0 and argument LEN has the value 9.\n" + tail +
                         "8.\n");
    int64_t to8 = 0;
    fp = 0, len = 2, tp = 63;
    EXPECT_DIES_WITH(f90_mvbits8(1, &fp, &len, &to8, &tp),
                     kHead + "MVBITS:\n Argument TOPOS has the value 63 and argument LEN has the value 2.\n" + tail +
                         "64.\n");
}

// ---- kind selection ----

int32_t selint(int32_t r) {
    Args a;
    std::memset(a.slot(0).bytes, 0xee, sizeof a.slot(0).bytes);
    a.value<int32_t>(1, r);
    f90_selintkind(a.get());
    EXPECT_EQ(a.slot(0).bytes[4], 0xee) << "wrote beyond 32 bits";
    return static_cast<int32_t>(a.slot(0).w[0] & 0xffffffffu);
}

// P and R given when not kNone.
constexpr int32_t kNone = INT32_MIN;
int32_t selreal(int32_t p, int32_t r, int32_t r_slot_when_absent = 0) {
    Args a;
    if (p != kNone) a.value<int32_t>(1, p);
    if (r != kNone) a.value<int32_t>(2, r);
    else a.slot(2).w[0] = static_cast<F90Word>(static_cast<uint32_t>(r_slot_when_absent));
    f90_selrealkind(a.get());
    int32_t k;
    std::memcpy(&k, a.slot(0).bytes, 4);
    return k;
}

TEST(SelectedKind, IntegerRanges) {
    const std::pair<int32_t, int32_t> table[] = {{-5, 1}, {0, 1}, {1, 1}, {2, 2}, {4, 2}, {5, 4},
                                                 {9, 4},  {10, 8}, {18, 8}, {19, -1}, {INT32_MAX, -1}};
    for (auto [r, k] : table) EXPECT_EQ(selint(r), k) << r;
}

TEST(SelectedKind, RealPrecisionAndRange) {
    EXPECT_EQ(selreal(7, kNone), 8);
    EXPECT_EQ(selreal(-3, kNone), 4);
    EXPECT_EQ(selreal(6, kNone), 4);
    EXPECT_EQ(selreal(15, kNone), 8);
    EXPECT_EQ(selreal(19, kNone), 10);
    EXPECT_EQ(selreal(33, kNone), 16);
    EXPECT_EQ(selreal(34, kNone), -1);
    EXPECT_EQ(selreal(20, 5000), -3);
    EXPECT_EQ(selreal(0, 0), 4);
    EXPECT_EQ(selreal(-1, 38), 8);
    EXPECT_EQ(selreal(6, 307), 8);
    EXPECT_EQ(selreal(6, 4933), -3);
    EXPECT_EQ(selreal(10, 30), 8);
    EXPECT_EQ(selreal(16, 10), 10);
    EXPECT_EQ(selreal(25, 10), 16);
    EXPECT_EQ(selreal(25, 4932), 16);
    EXPECT_EQ(selreal(34, 1), -3);
    EXPECT_EQ(selreal(kNone, 5000), -2);
    EXPECT_EQ(selreal(kNone, 37), 4);
    EXPECT_EQ(selreal(kNone, 308), 10);
    EXPECT_EQ(selreal(kNone, 4000), 10);
    // Without P, R is read from its slot even when it is not marked present.
    EXPECT_EQ(selreal(kNone, kNone, 400), 10);
    EXPECT_EQ(selreal(kNone, kNone, 0), 4);
}

}  // namespace
