// RANDOM_NUMBER and RANDOM_SEED against a model of the generator written here
// from its description: the lattice seeding, and the values as one sequence
// y[n] = y[n-22] - y[n-43] - c with a Weyl word subtracted.  Every check runs
// in a fresh thread, so each starts from a thread that has never drawn.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "random/generator.h"
#include "support/arrays.h"

using testutil::Args;
using testutil::Array;
using testutil::Section;
using testutil::tri;

namespace {

using Bytes = std::vector<unsigned char>;

struct Model {
    std::vector<uint32_t> y;  // the 43 table words oldest first, then every value drawn
    uint32_t c = 0, w = 390878531u;

    Model() {
        uint32_t x[43];
        int32_t s = 390878531, a = s % 179, b = (s >> 8) % 179, e = (s >> 16) % 179, l = (s >> 24) % 169;
        for (auto& word : x) {
            word = 0;
            for (int bit = 0; bit < 32; ++bit) {
                int32_t m = (a * b * e) % 179;
                a = b, b = e, e = m;
                l = (53 * l + 1) % 169;
                if ((l * m) % 64 >= 32) word |= 1u << bit;
            }
        }
        set_table(x);
    }
    // The table x[0..42] with the next slot 42 and the other lag 21: slot 42
    // is the oldest word, slot 0 the newest.
    void set_table(const uint32_t* x) {
        y.clear();
        for (int k = 42; k >= 0; --k) y.push_back(x[k]);
    }
    int32_t next() {
        size_t n = y.size();
        uint32_t d = y[n - 22] - y[n - 43] - c;
        if (static_cast<int32_t>(d) < 0) d -= 5, c = 1;
        y.push_back(d);
        w -= 362436069u;
        return static_cast<int32_t>(d - w);
    }
};

template <class T>
Bytes bytes_of(const T& v, size_t n = sizeof(T)) {
    Bytes b(n);
    std::memcpy(b.data(), &v, n);
    return b;
}

// The value of r for each kind, as raw bytes of its significant width.
Bytes real4(int32_t r) { return bytes_of(static_cast<float>(static_cast<long double>(r) * 0x1p-32L + 0.5L)); }
Bytes real8(int32_t r) {
    const uint64_t bits = 0x3DEFFFFFFFF7FFFFull;
    double m;
    std::memcpy(&m, &bits, 8);
    return bytes_of(static_cast<double>(r) * m + 0.5);
}
Bytes real10(int32_t r) {
    const unsigned char raw[16] = {0xFF, 0xFF, 0xFF, 0xBF, 0xFF, 0xFF, 0xFF, 0xFF, 0xDE, 0x3F};
    long double m = 0;
    std::memcpy(&m, raw, 10);
    return bytes_of(static_cast<long double>(r) * m + 0.5L, 10);
}
Bytes real16(int32_t r) {
    const uint64_t bits[2] = {0xFFFFFFFFFFFFFFFFull, 0x3FDEFFFFFFFF7FFFull};
    __float128 m;
    std::memcpy(&m, bits, 16);
    return bytes_of(static_cast<__float128>(static_cast<int64_t>(r)) * m + static_cast<__float128>(0.5));
}

struct KindCase {
    const char* name;
    size_t slot;   // bytes between array elements
    size_t width;  // significant bytes of one value
    Bytes (*expect)(int32_t);
    void (*one)(void*);
    void (*many)(void*, int32_t);
};
const KindCase kKinds[] = {
    {"REAL(4)", 4, 4, real4, reinterpret_cast<void (*)(void*)>(f90_randnum4),
     reinterpret_cast<void (*)(void*, int32_t)>(f90_randnum4a)},
    {"REAL(8)", 8, 8, real8, reinterpret_cast<void (*)(void*)>(f90_randnum8),
     reinterpret_cast<void (*)(void*, int32_t)>(f90_randnum8a)},
    {"REAL(10)", 16, 10, real10, f90_randnum10, f90_randnum10a},
    {"REAL(16)", 16, 16, real16, f90_randnum16, f90_randnum16a},
};

template <class F>
void in_fresh_thread(F f) {
    std::thread t(f);
    t.join();
}

// Draws through the array form in pieces of the given sizes and checks every
// slot against the model; bytes past a REAL(10) value stay as they were.
void expect_pieces(const KindCase& k, Model& m, std::initializer_list<int32_t> pieces) {
    for (int32_t n : pieces) {
        Bytes buf(k.slot * n + k.slot, 0xA5);
        k.many(buf.data(), n);
        for (int32_t e = 0; e < n; ++e) {
            Bytes want = k.expect(m.next());
            ASSERT_EQ(Bytes(buf.begin() + e * k.slot, buf.begin() + e * k.slot + k.width), want)
                << k.name << " piece " << n << " element " << e;
            for (size_t b = k.width; b < k.slot; ++b) ASSERT_EQ(buf[e * k.slot + b], 0xA5) << k.name;
        }
        for (size_t b = 0; b < k.slot; ++b) ASSERT_EQ(buf[n * k.slot + b], 0xA5) << k.name << " past the end";
    }
}

TEST(RandomNumber, FreshThreadFollowsTheModelInEveryKind) {
    for (const KindCase& k : kKinds) {
        in_fresh_thread([&] {
            Model m;
            for (int e = 0; e < 300; ++e) {
                unsigned char v[16];
                std::memset(v, 0xA5, sizeof v);
                k.one(v);
                ASSERT_EQ(Bytes(v, v + k.width), k.expect(m.next())) << k.name << " value " << e;
                if (k.width == 10) {
                    EXPECT_EQ(v[10], 0xA5) << "REAL(10) stores exactly 10 bytes";
                }
            }
        });
    }
}

TEST(RandomNumber, ArrayFormsContinueTheSameSequence) {
    for (const KindCase& k : kKinds) {
        in_fresh_thread([&] {
            Model m;
            // Short pieces, pieces across the 43-word table, and long runs
            // whose state must be carried on by the scalar form afterwards.
            expect_pieces(k, m, {1, 2, 21, 22, 43, 44, 7, 1000, 3, 4097, 5, 64, 65, 129});
            unsigned char v[16];
            k.one(v);
            EXPECT_EQ(Bytes(v, v + k.width), k.expect(m.next())) << k.name;
        });
    }
}

TEST(RandomNumber, CountOfZeroOrLessStoresNothingAndDrawsNothing) {
    for (const KindCase& k : kKinds) {
        in_fresh_thread([&] {
            Bytes buf(64, 0x5A);
            k.many(buf.data(), 0);
            k.many(buf.data(), -5);
            EXPECT_EQ(buf, Bytes(64, 0x5A)) << k.name;
            Model m;
            k.one(buf.data());
            EXPECT_EQ(Bytes(buf.begin(), buf.begin() + k.width), k.expect(m.next())) << k.name;
        });
    }
}

TEST(RandomNumber, ThreadsRunTheSameSequenceWithoutDisturbingEachOther) {
    constexpr int kDraws = 20000;
    std::vector<double> a(kDraws), b(kDraws);
    auto draw = [](std::vector<double>* out) {
        for (int e = 0; e < kDraws; e += 100) {
            f90_randnum8a(out->data() + e, 50);
            for (int s = 50; s < 100; ++s) f90_randnum8(out->data() + e + s);
        }
    };
    std::thread ta(draw, &a), tb(draw, &b);
    ta.join();
    tb.join();
    Model m;
    for (int e = 0; e < kDraws; ++e) ASSERT_EQ(bytes_of(a[e]), real8(m.next())) << e;
    EXPECT_EQ(a, b);
}

// RANDOM_SEED through an ArgList: SIZE in the Result slot, PUT in ARG1, GET in ARG2.
void seed_none(void (*entry)(ArgList*)) {
    Args args;
    entry(args.get());
}
template <class I>
void seed_get(void (*entry)(ArgList*), Array& get) {
    Args args;
    entry(args.addr(2, get.desc()).get());
}

TEST(RandomSeed, NoArgumentRestartsTheSequence) {
    in_fresh_thread([] {
        double first, again;
        f90_randnum8(&first);
        std::vector<double> skip(500);
        f90_randnum8a(skip.data(), 500);
        seed_none(f90_randseed);
        f90_randnum8(&again);
        EXPECT_EQ(bytes_of(first), bytes_of(again));
        f90_randnum8a(skip.data(), 77);
        seed_none(f90_randseed8);
        f90_randnum8(&again);
        EXPECT_EQ(bytes_of(first), bytes_of(again));
        f90_randnum8a(skip.data(), 9);
        InitMarsagliaRander();
        f90_randnum8(&again);
        EXPECT_EQ(bytes_of(first), bytes_of(again));
    });
}

TEST(RandomSeed, SizeIs47AndLeavesTheUpperHalfOfAn8ByteSize) {
    in_fresh_thread([] {
        int32_t size4 = -1;
        Args a4;
        a4.presence(F90_PRESENT_RESULT).addr(0, &size4);
        f90_randseed(a4.get());
        EXPECT_EQ(size4, 47);

        int64_t size8 = INT64_C(0x7777777700000000) | 0x1234;
        Args a8;
        a8.presence(F90_PRESENT_RESULT).addr(0, &size8);
        f90_randseed8(a8.get());
        EXPECT_EQ(size8, INT64_C(0x7777777700000000) | 47);
    });
}

// PUT replaces the table only: the sequence is the model's with that table
// and the default i, j, c and w.  PUT is read through its descriptor's steps.
TEST(RandomSeed, PutReplacesTheTableOnly) {
    in_fresh_thread([] {
        Array whole({{0, 99}}, 4);
        for (int k = 0; k < 100; ++k) whole.at<uint32_t>(k) = 0x9E3779B9u * (k + 1) * (k + 3) ^ (k << 20);
        Section put(whole, {tri(98, 1, -2)});  // 49 elements, descending, every other
        double skip;
        f90_randnum8(&skip);
        Args args;
        f90_randseed(args.addr(1, put.desc()).get());
        Model m;
        uint32_t table[43];
        for (int k = 0; k < 43; ++k) table[k] = whole.at<uint32_t>(98 - 2 * k);  // element 98 - 2k of 0:99
        m.set_table(table);
        std::vector<double> got(200);
        f90_randnum8a(got.data(), 200);
        for (int e = 0; e < 200; ++e) ASSERT_EQ(bytes_of(got[e]), real8(m.next())) << e;
    });
}

TEST(RandomSeed, Put8ReadsTheLow32BitsOfEachElement) {
    in_fresh_thread([] {
        Array put({{1, 47}}, 8);
        uint32_t table[43];
        for (int k = 0; k < 47; ++k) {
            uint32_t low = 2654435761u * (k + 7) * (k + 1) ^ (k << 25);
            put.at<uint64_t>(k) = (uint64_t{0xDEAD0000u + static_cast<uint32_t>(k)} << 32) | low;
            if (k < 43) table[k] = low;
        }
        Args args;
        f90_randseed8(args.addr(1, put.desc()).get());
        Model m;
        m.set_table(table);
        for (int e = 0; e < 100; ++e) {
            float v;
            f90_randnum4(&v);
            ASSERT_EQ(bytes_of(v), real4(m.next())) << e;
        }
    });
}

// GET after PUT (or after drawing) returns the default state: the lattice
// table, i = 42, j = 21, c = 0, w = the seed.
TEST(RandomSeed, GetAlwaysReturnsTheDefaultState) {
    in_fresh_thread([] {
        Model m;
        std::vector<int64_t> want;
        for (int k = 42; k >= 0; --k) want.push_back(static_cast<int32_t>(m.y[k]));
        want.insert(want.end(), {42, 21, 0, 390878531});

        Array put({{1, 43}}, 4);
        for (int k = 0; k < 43; ++k) put.at<int32_t>(k) = k;
        Args args;
        f90_randseed(args.addr(1, put.desc()).get());
        std::vector<double> skip(100);
        f90_randnum8a(skip.data(), 100);

        Array get4({{-3, 60}}, 4);
        for (int k = 0; k < 64; ++k) get4.at<int32_t>(k) = -7;
        seed_get<int32_t>(f90_randseed, get4);
        for (int k = 0; k < 47; ++k) EXPECT_EQ(get4.at<int32_t>(k), want[k]) << k;
        EXPECT_EQ(get4.at<int32_t>(47), -7) << "GET writes 47 words only";

        Array get8({{1, 47}}, 8);
        seed_get<int64_t>(f90_randseed8, get8);
        bool negative_seen = false;
        for (int k = 0; k < 47; ++k) {
            EXPECT_EQ(get8.at<int64_t>(k), want[k]) << "sign-extended word " << k;
            negative_seen |= want[k] < 0;
        }
        EXPECT_TRUE(negative_seen) << "the default table has words with the top bit set";
    });
}

// The largest r (2^31 - 1) made the first value: PUT a table whose first
// difference gives it.  REAL(8), 80-bit and quad stay below 1; REAL(4) rounds
// to exactly 1.0.
TEST(RandomNumber, LargestDrawStaysBelowOneExceptInSinglePrecision) {
    for (const KindCase& k : kKinds) {
        in_fresh_thread([&] {
            const uint32_t w1 = 390878531u - 362436069u;
            const uint32_t d = 0x7FFFFFFFu + w1;  // stored word after the -5 of a negative difference
            ASSERT_LT(static_cast<int32_t>(d + 5), 0);
            Array put({{1, 43}}, 4);
            put.at<uint32_t>(21) = d + 5;  // x[21] - x[42] - 0 = d + 5, negative
            Args args;
            f90_randseed(args.addr(1, put.desc()).get());
            unsigned char v[16] = {};
            k.one(v);
            ASSERT_EQ(Bytes(v, v + k.width), k.expect(0x7FFFFFFF)) << k.name;
            if (k.slot == 4) {  // REAL(4)
                float f;
                std::memcpy(&f, v, 4);
                EXPECT_EQ(f, 1.0f);
            } else if (k.slot == 8) {
                double f;
                std::memcpy(&f, v, 8);
                EXPECT_LT(f, 1.0);
            } else if (k.width == 10) {
                long double f = 0;
                std::memcpy(&f, v, 10);
                EXPECT_LT(f, 1.0L);
            } else {
                __float128 f;
                std::memcpy(&f, v, 16);
                EXPECT_TRUE(f < static_cast<__float128>(1.0));
            }
        });
    }
}

}  // namespace

namespace {

using intrins::random::State;

// Blocks of 4, 8 and 16 lanes (as far as this processor has them) leave the
// same values and the same state as single steps, in every kind, from the
// default state and from one whose borrow is still clear.
template <class E>
void expect_blocks_match_steps(int lanes) {
    using K = intrins::Kind<E>;
    for (int32_t n : {1, 3, 4, 15, 16, 17, 43, 100, 1000}) for (int skip : {0, 50}) {
        State a, b;
        intrins::random::seed_default(a);
        for (int k = 0; k < skip; ++k) intrins::random::step(a);  // a different place in the table
        ASSERT_EQ(a.c, skip ? 1u : 0u);
        b = a;
        std::vector<unsigned char> got(n * K::size), want(n * K::size);
        intrins::random::fill_lanes<E>(a, got.data(), n, lanes);
        for (int32_t k = 0; k < n; ++k)
            K::store(want.data() + k * K::size, intrins::random::Unit<E>::value(intrins::random::step(b)));
        ASSERT_EQ(got, want) << lanes << " lanes, n " << n;
        ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0) << lanes << " lanes, n " << n;
    }
}

TEST(RandomBlocks, EveryLaneWidthMatchesSingleSteps) {
    __builtin_cpu_init();
    std::vector<int> widths{4};
    if (__builtin_cpu_supports("avx2")) widths.push_back(8);
    if (__builtin_cpu_supports("avx512f")) widths.push_back(16);
    for (int lanes : widths) {
        expect_blocks_match_steps<float>(lanes);
        expect_blocks_match_steps<double>(lanes);
        expect_blocks_match_steps<intrins::R10>(lanes);
        expect_blocks_match_steps<intrins::Quad>(lanes);
    }
    EXPECT_EQ(intrins::random::lane_count(), widths.back());
}

}  // namespace
