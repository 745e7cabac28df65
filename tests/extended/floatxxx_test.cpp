// REAL(10) and REAL(16) support: exact 10-byte moves, decimal text round
// trips, integer conversion.
#include <gtest/gtest.h>

#include <cfloat>
#include <cstring>
#include <string>

#include <quadmath.h>

#include "extended/floatxxx.h"

using namespace intrins;

namespace {

std::string text(Quad v) {
    char buf[80];
    quad_to_text(v, buf, sizeof buf);
    return buf;
}

bool same_bits(Quad a, Quad b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(Real10, MovesExactlyTenBytes) {
    unsigned char slot[16];
    std::memset(slot, 0xAB, sizeof slot);
    store_r10(slot, -1.5L);
    for (int i = 10; i < 16; ++i) EXPECT_EQ(slot[i], 0xAB) << i;
    EXPECT_EQ(load_r10(slot), -1.5L);
    Real10Bits b = bits_of(-1.5L);
    EXPECT_EQ(b.mantissa, 0xC000000000000000ull);
    EXPECT_EQ(b.sign_exp, 0xBFFF);
    EXPECT_EQ(from_bits(b), -1.5L);
}

TEST(Quad, LargestValuesRoundTripThroughText) {
    const Quad largest = FLT128_MAX;
    EXPECT_EQ(text(largest), "1.1897314953572317650857593266280070162E+4932L");
    const Quad cases[] = {largest, -largest, FLT128_MIN, FLT128_DENORM_MIN, nextafterq(largest, 0), 1.0Q / 3,
                          -0.0Q, 1e-4000Q};
    for (Quad v : cases) {
        Quad back;
        ASSERT_TRUE(quad_from_text(text(v).c_str(), &back)) << text(v);
        EXPECT_TRUE(same_bits(v, back)) << text(v);
    }
}

TEST(Quad, SpecialTexts) {
    EXPECT_EQ(text(HUGE_VALQ), "INF");
    EXPECT_EQ(text(-HUGE_VALQ), "-INF");
    EXPECT_EQ(text(nanq("")), "QNAN");
    Quad v;
    ASSERT_TRUE(quad_from_text("INF", &v));
    EXPECT_TRUE(isinfq(v) && v > 0);
    ASSERT_TRUE(quad_from_text("-inf", &v));
    EXPECT_TRUE(isinfq(v) && v < 0);
    ASSERT_TRUE(quad_from_text("QNAN", &v));
    EXPECT_TRUE(isnanq(v));
    ASSERT_TRUE(quad_from_text("2.5E+0L", &v));
    EXPECT_TRUE(v == 2.5Q);
    EXPECT_FALSE(quad_from_text("2.5x", &v));
    EXPECT_FALSE(quad_from_text("", &v));
}

TEST(Quad, ToInt64TruncatesAndFlagsOutOfRange) {
    EXPECT_EQ(quad_to_int64(-2.75Q), -2);
    EXPECT_EQ(quad_to_int64(9223372036854775807.0Q), INT64_MAX);
    EXPECT_EQ(quad_to_int64(-9223372036854775808.5Q), INT64_MIN);
    EXPECT_EQ(quad_to_int64(9223372036854775808.0Q), INT64_MIN);
    EXPECT_EQ(quad_to_int64(nanq("")), INT64_MIN);
    EXPECT_EQ(quad_to_int64(-HUGE_VALQ), INT64_MIN);
}

TEST(Scale, PowersOfTwo) {
    EXPECT_TRUE(scale_q(3.0Q, -2) == 0.75Q);
    EXPECT_TRUE(scale_q(1.0Q, 16384) == HUGE_VALQ);
    EXPECT_EQ(scale_r10(3.0L, 4), 48.0L);
    EXPECT_EQ(scale_r10(LDBL_MIN, -63), LDBL_MIN / 9223372036854775808.0L);
}

}  // namespace
