// CEILING and FLOOR over every kind against ceil and the out-of-range rule,
// MODULO of integers and reals against the definition plus the special
// operands, MVBITS's moves and messages, and the kind inquiries.
#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "real_kinds.h"
#include "support/arrays.h"
#include "support/messages.h"

using namespace numtest;

namespace {

template <class T>
class PerKind : public ::testing::Test {};
TYPED_TEST_SUITE(PerKind, Kinds);

TYPED_TEST(PerKind, Ceiling) {
    using T = TypeParam;
    for (int k = -4000; k <= 4000; ++k) {
        T x = T(k) * T(0.75) + T(0.125);
        int32_t want = static_cast<int32_t>(std::ceil(static_cast<double>(x)));
        EXPECT_EQ(R<T>::ceiling(x), want) << k;
        EXPECT_EQ(R<T>::ceilingh(x), want);
        EXPECT_EQ(R<T>::ceilingk(x), want);
    }
    EXPECT_EQ(R<T>::ceiling(Classes<T>::min_sub()), 1);
    EXPECT_EQ(R<T>::ceiling(T(-0.0)), 0);
    EXPECT_EQ(R<T>::ceiling(T(-1048576.5)), -1048576);
    for (T x : {T(-2147483648.0), T(3.0e9), Classes<T>::inf(), -Classes<T>::inf(), Classes<T>::nan()}) {
        EXPECT_EQ(R<T>::ceiling(x), INT32_MIN) << hex(x);
        EXPECT_EQ(R<T>::ceilingh(x), 0) << hex(x);
    }
    EXPECT_EQ(R<T>::ceilingh(T(32767)), 32767);
    EXPECT_EQ(R<T>::ceilingh(T(-32768)), 0);
    EXPECT_EQ(R<T>::ceilingk(T(1.0e19)), int64_t{2147483648});
    EXPECT_EQ(R<T>::ceilingk(T(-8388607.5)), -8388607);
    EXPECT_EQ(R<T>::floor(T(-2.5)), (std::is_same_v<T, double> ? 0 : -2));  // rounds up, but for REAL(8)
    if constexpr (std::is_same_v<T, Real10>) EXPECT_EQ(f90_floorh10(Arg10(2.5L).b) + f90_floork10(Arg10(2.5L).b), 6);
}

template <class I>
I mod(I (*f)(const I*, const I*), I a, I p) { return f(&a, &p); }

template <class I>
void modulo_against_definition(I (*f)(const I*, const I*)) {
    std::mt19937_64 gen(11);
    for (int n = 0; n < 20000; ++n) {
        I a = static_cast<I>(gen()), p = static_cast<I>(gen() >> (gen() % (8 * sizeof(I))));
        if (n % 3 == 0) p = static_cast<I>(p % 17);
        if (n % 5 == 0) a = std::numeric_limits<I>::min();
        if (p == 0 || (a == std::numeric_limits<I>::min() && p == I(-1))) continue;
        long double r = std::fmod(static_cast<long double>(a), static_cast<long double>(p));  // exact
        if (r != 0 && (r < 0) != (p < 0)) r += p;
        ASSERT_EQ(mod(f, a, p), static_cast<I>(r)) << +a << " " << +p;
    }
    EXPECT_EQ(mod<I>(f, 7, -3), -2);
    EXPECT_EQ(mod<I>(f, -7, 0), -7);  // P = 0 gives A
}

TEST(Modulo, IntegersInEveryWidth) {
    modulo_against_definition<int8_t>(f90_moduloi1);
    modulo_against_definition<int16_t>(f90_moduloi2);
    modulo_against_definition<int32_t>(f90_moduloi4);
    modulo_against_definition<int64_t>(f90_moduloi8);
}

TEST(ModuloDeath, MostNegativeByMinusOneFaults) {
    EXPECT_DEATH(mod(f90_moduloi4, INT32_MIN, -1), "");
    EXPECT_DEATH(mod<int8_t>(f90_moduloi1, -128, -1), "");
}

TYPED_TEST(PerKind, ModuloReal) {
    using T = TypeParam;
    using C = Classes<T>;
    std::mt19937 gen(5);
    std::uniform_real_distribution<double> mant(-1.0, 1.0);
    for (int n = 0; n < 3000; ++n) {
        T a = R<T>::ldexp(T(mant(gen)), static_cast<int>(gen() % 120) - 60);
        T p = R<T>::ldexp(T(mant(gen)), static_cast<int>(gen() % 120) - 60);
        T r = R<T>::fmod(a, p);
        if (r != 0 && (r < 0) != (p < 0)) r += p;
        if (r == 0) r = p < 0 ? -T(0) : T(0);  // a zero result takes P's sign
        ASSERT_TRUE(same_bits(R<T>::modulo(a, p), r)) << hex(a) << " " << hex(p);
    }
    for (T p : {T(0), -T(0), C::nan(), C::inf(), -C::inf()}) EXPECT_TRUE(same_bits(R<T>::modulo(T(-5.5), p), T(-5.5)));
    T qnan = R<T>::modulo(-C::inf(), T(2));
    EXPECT_TRUE(is_nan(qnan));
    EXPECT_TRUE(std::signbit(static_cast<double>(qnan)));
    EXPECT_TRUE(same_bits(qnan, -R<T>::modulo(C::inf(), T(2))));  // a quiet NaN with A's sign
    EXPECT_TRUE(same_bits(R<T>::modulo(-T(0), T(3)), -T(0)));
    EXPECT_TRUE(same_bits(R<T>::modulo(C::huge(), C::min_sub()), T(0)));
    EXPECT_TRUE(same_bits(R<T>::modulo(C::sub_bits(), -C::tiny()), C::sub_bits() - C::tiny()));
}

TEST(Mvbits, MovesBits) {
    int32_t to = 0x12345678, fp = 0, len = 32, tp = 0;
    f90_mvbits4(int32_t(0x9abcdef0), &fp, &len, &to, &tp);
    EXPECT_EQ(static_cast<uint32_t>(to), 0x9abcdef0u);
    fp = 4, len = 8, tp = 20;
    f90_mvbits4(0xab0, &fp, &len, &to, &tp);
    EXPECT_EQ(static_cast<uint32_t>(to), 0x9abcdef0u);
    fp = 32, len = 0, tp = 32;  // LEN 0: positions at the end allowed, TO unchanged
    f90_mvbits4(-1, &fp, &len, &to, &tp);
    EXPECT_EQ(static_cast<uint32_t>(to), 0x9abcdef0u);
    int8_t t1 = 0;
    fp = 7, len = 1, tp = 0;
    f90_mvbits1(int8_t(-128), &fp, &len, &t1, &tp);
    EXPECT_EQ(t1, 1);
    int16_t t2 = -1;
    fp = 0, len = 4, tp = 12;
    f90_mvbits2(5, &fp, &len, &t2, &tp);
    EXPECT_EQ(static_cast<uint16_t>(t2), 0x5fffu);
    int64_t t8 = 0;
    fp = 60, len = 4, tp = 59;
    f90_mvbits8(INT64_MIN + (int64_t{7} << 60), &fp, &len, &t8, &tp);
    EXPECT_EQ(t8, int64_t{15} << 59);
}

void mvbits4(int32_t fp, int32_t len, int32_t tp) {
    int32_t to = 0;
    f90_mvbits4(1, &fp, &len, &to, &tp);
}
TEST(MvbitsDeath, Messages) {
    using testutil::msg::of;
    const char* k = testutil::msg::kBits;
    const struct {
        int32_t fp, len, tp;
        const char* arg;
        const char* value;
    } rows[] = {{30, 3, 0, "FROMPOS", "30"}, {-1, 3, 0, "FROMPOS", "-1"}, {0, -1, 0, "FROMPOS", "0"},
                {INT32_MAX, 2, 0, "FROMPOS", "2147483647"}, {0, 3, 30, "TOPOS", "30"}, {0, 3, -2, "TOPOS", "-2"}};
    for (auto r : rows)
        EXPECT_DIES_WITH(mvbits4(r.fp, r.len, r.tp), of("MVBITS", k, {r.arg, r.value, std::to_string(r.len), "32"}));
    int64_t to8 = 0;
    int32_t fp = 0, len = 2, tp = 63;
    EXPECT_DIES_WITH(f90_mvbits8(1, &fp, &len, &to8, &tp), of("MVBITS", k, {"TOPOS", "63", "2", "64"}));
}

// SELECTED_INT_KIND(R) and SELECTED_REAL_KIND(P, R); kNone: not present
// (the slot then holds `stale`).
constexpr int32_t kNone = INT32_MIN;
int32_t selkind(void (*f)(ArgList*), int32_t p, int32_t r = kNone, int32_t stale = 0) {
    testutil::Args a;
    std::memset(a.slot(0).bytes, 0xee, sizeof a.slot(0).bytes);
    if (p != kNone) a.value<int32_t>(1, p);
    if (r != kNone) a.value<int32_t>(2, r);
    else a.slot(2).w[0] = static_cast<uint32_t>(stale);
    f(a.get());
    EXPECT_EQ(a.slot(0).bytes[4], 0xee) << "wrote beyond 32 bits";
    int32_t k;
    std::memcpy(&k, a.slot(0).bytes, 4);
    return k;
}

TEST(SelectedKind, Tables) {
    const int32_t ints[][2] = {{-5, 1}, {1, 1}, {2, 2}, {4, 2}, {5, 4}, {9, 4}, {10, 8}, {18, 8}, {19, -1}};
    for (auto [r, k] : ints) EXPECT_EQ(selkind(f90_selintkind, r), k) << r;
    const int32_t reals[][3] = {{7, kNone, 8},  {-3, kNone, 4}, {15, kNone, 8}, {19, kNone, 10}, {33, kNone, 16},
                                {34, kNone, -1}, {20, 5000, -3}, {0, 0, 4},      {-1, 38, 8},     {6, 4933, -3},
                                {10, 30, 8},    {16, 10, 10},   {25, 4932, 16},  {34, 1, -3},     {kNone, 5000, -2},
                                {kNone, 37, 4}, {kNone, 308, 10}};
    for (auto [p, r, k] : reals) EXPECT_EQ(selkind(f90_selrealkind, p, r), k) << p << " " << r;
    EXPECT_EQ(selkind(f90_selrealkind, kNone, kNone, 400), 10);  // R read without P even when not present
}

}  // namespace
