// The fast binary128 multiply, add and subtract (the REAL(16) arithmetic of
// the reductions and MATMUL) against the compiler's __float128 operators, bit
// for bit, over millions of operand pairs chosen to reach every path: random
// exponents and significands, significands with few bits (exact products and
// exact ties), sums that carry into the exponent, cancellations, results at
// the overflow and underflow edges, and every special class.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "extended/quadfast.h"

using namespace intrins;

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr int kScale = 1;  // the sanitizers slow every operation down
#else
constexpr int kScale = 8;
#endif

struct Bits {
    uint64_t lo, hi;
};
Quad make(uint64_t sign, uint64_t exp, uint64_t frac_hi, uint64_t frac_lo) {
    Bits b{frac_lo, (sign << 63) | ((exp & 0x7fff) << 48) | (frac_hi & 0xffffffffffffull)};
    Quad q;
    std::memcpy(&q, &b, sizeof q);
    return q;
}
Bits bits(Quad q) {
    Bits b;
    std::memcpy(&b, &q, sizeof b);
    return b;
}

// A random operand generator with a choice of exponent and significand shape.
struct Gen {
    std::mt19937_64 rng;
    explicit Gen(uint64_t seed) : rng(seed) {}
    uint64_t u() { return rng(); }
    // Significand with only its leading `width` bits (of 112 stored) random.
    void frac(int width, uint64_t& hi, uint64_t& lo) {
        hi = u() & 0xffffffffffffull, lo = u();
        const int drop = 112 - width;
        if (drop >= 64) lo = 0, hi &= ~0ull << (drop - 64);
        else if (drop > 0) lo &= ~0ull << drop;
    }
    int width() {
        switch (u() % 4) {
        case 0: return 112;
        case 1: return int(u() % 113);
        case 2: return 50 + int(u() % 12);  // products of two near the 113-bit boundary: ties
        default: return int(u() % 8);
        }
    }
    Quad any(uint64_t exp) {
        uint64_t hi, lo;
        frac(width(), hi, lo);
        if (u() % 16 == 0) hi = 0xffffffffffffull, lo = ~0ull >> (u() % 8 * 8);  // runs of ones: carries
        return make(u() & 1, exp, hi, lo);
    }
    Quad special() {
        const Quad table[] = {make(0, 0, 0, 0),          make(1, 0, 0, 0),
                              make(0, 0, 0, 1),          make(1, 0, u(), u()),
                              make(0, 0x7fff, 0, 0),     make(1, 0x7fff, 0, 0),
                              make(0, 0x7fff, 1ull << 47, u()),  // quiet NaN, payload
                              make(1, 0x7fff, 0, 1 | u()),       // signalling NaN
                              make(0, 1, 0, 0),          make(1, 0x7ffe, ~0ull, ~0ull)};
        return table[u() % (sizeof table / sizeof table[0])];
    }
};

struct Tally {
    long cases = 0, bad = 0;
    void check(const char* op, Quad x, Quad y, Quad got, Quad want) {
        ++cases;
        Bits g = bits(got), w = bits(want);
        if ((g.lo != w.lo || g.hi != w.hi) && ++bad <= 5) {
            Bits a = bits(x), b = bits(y);
            ADD_FAILURE() << std::hex << op << " of " << a.hi << ":" << a.lo << " and " << b.hi << ":" << b.lo
                          << " gave " << g.hi << ":" << g.lo << ", want " << w.hi << ":" << w.lo;
        }
    }
    void all(Quad x, Quad y) {
        check("product", x, y, qfast::mul(x, y), x * y);
        check("sum", x, y, qfast::add(x, y), x + y);
        check("difference", x, y, qfast::sub(x, y), x - y);
    }
};

TEST(QuadFast, EveryPath) {
    if (!INTRINS_INT128) GTEST_SKIP() << "no 128-bit integers: the operators themselves are used";
    Gen g(1);
    Tally t;
    for (int n = 0; n < 100000 * kScale; ++n) {
        // Random exponents anywhere, or close together (sums round, carry, cancel).
        const uint64_t ea = 1 + g.u() % 0x7ffe;
        const int64_t near = std::max<int64_t>(1, int64_t(ea) + int64_t(g.u() % 241) - 120);
        t.all(g.any(ea), g.any(g.u() % 2 ? 1 + g.u() % 0x7ffe : std::min<uint64_t>(0x7ffe, uint64_t(near))));
        // Exactly half an ulp of x (and a hair either side): ties to even.
        const uint64_t e = 2 + g.u() % 0x7ff0, d = 113 + g.u() % 3;
        Quad x = g.any(e);
        t.all(x, make(g.u() & 1, e > d ? e - d : 1, g.u() % 4 == 0 ? g.u() : 0, g.u() % 4 == 0 ? 1 : 0));
        // x minus a neighbour of itself: massive cancellation.
        Bits c = bits(x);
        c.lo ^= g.u() >> (g.u() % 64);
        if (g.u() % 2) c.hi ^= g.u() & 0xffff;
        Quad y;
        std::memcpy(&y, &c, sizeof y);
        t.all(x, -y);
        // The largest significand plus something small: a carry into the exponent.
        t.all(make(0, e, 0xffffffffffffull, ~0ull), make(0, e - 1 - g.u() % 120, 0, g.u()));
        // Products just inside or outside the range; sums near the largest
        // finite value, differences near the smallest normal.
        const int64_t target = g.u() % 2 ? int64_t(g.u() % 6) - 2 : 0x7ffe + int64_t(g.u() % 6) - 3;
        const int64_t eb = target - int64_t(ea) + 16383;
        if (eb >= 1 && eb <= 0x7ffe) t.all(g.any(ea), g.any(uint64_t(eb)));
        t.all(g.any(0x7ffe), g.any(0x7ffe - g.u() % 4));
        t.all(g.any(1 + g.u() % 3), g.any(1 + g.u() % 3));
        // Special operands.
        if (n % 5 == 0) t.all(g.special(), x), t.all(x, g.special()), t.all(g.special(), g.special()), t.all(x, x);
    }
    EXPECT_EQ(t.bad, 0) << "of " << t.cases;
}

}  // namespace
