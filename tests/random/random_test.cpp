// RANDOM_NUMBER and RANDOM_SEED against a model of the generator written here
// from its description: the lattice seeding, and the values as one sequence
// y[n] = y[n-22] - y[n-43] - c with a Weyl word subtracted.  Checks run in
// fresh threads, so each starts from a thread that has never drawn.
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
    // Slot 42 (the next to be replaced) is the oldest word, slot 0 the newest.
    void set_table(const uint32_t* x) { y.assign(std::make_reverse_iterator(x + 43), std::make_reverse_iterator(x)); }
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
template <class T>
T from_bytes(const void* p, size_t n = sizeof(T)) {
    T v{};
    std::memcpy(&v, p, n);
    return v;
}

// The value of r in each kind, as its significant bytes; REAL(4) computed in
// extended precision and rounded once.
Bytes real4(int32_t r) { return bytes_of(static_cast<float>(static_cast<long double>(r) * 0x1p-32L + 0.5L)); }
Bytes real8(int32_t r) {
    return bytes_of(static_cast<double>(r) * from_bytes<double>("\xFF\xFF\xF7\xFF\xFF\xFF\xEF\x3D") + 0.5);
}
Bytes real10(int32_t r) {
    const long double m = from_bytes<long double>("\xFF\xFF\xFF\xBF\xFF\xFF\xFF\xFF\xDE\x3F", 10);
    return bytes_of(static_cast<long double>(r) * m + 0.5L, 10);
}
Bytes real16(int32_t r) {
    const auto m = from_bytes<__float128>("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F\xFF\xFF\xFF\xFF\xDE\x3F");
    return bytes_of(static_cast<__float128>(static_cast<int64_t>(r)) * m + static_cast<__float128>(0.5));
}

struct KindCase {
    const char* name;
    size_t slot, width;  // bytes between array elements; significant bytes
    Bytes (*expect)(int32_t);
    void (*one)(void*);
    void (*many)(void*, int32_t);
    bool (*below_one)(const void*);
};
template <class T>
bool below_one(const void* p) {
    return from_bytes<T>(p, sizeof(T) == 16 ? 16 : sizeof(T) > 8 ? 10 : sizeof(T)) < static_cast<T>(1);
}
const KindCase kKinds[] = {
    {"REAL(4)", 4, 4, real4, reinterpret_cast<void (*)(void*)>(f90_randnum4),
     reinterpret_cast<void (*)(void*, int32_t)>(f90_randnum4a), below_one<float>},
    {"REAL(8)", 8, 8, real8, reinterpret_cast<void (*)(void*)>(f90_randnum8),
     reinterpret_cast<void (*)(void*, int32_t)>(f90_randnum8a), below_one<double>},
    {"REAL(10)", 16, 10, real10, f90_randnum10, f90_randnum10a, below_one<long double>},
    {"REAL(16)", 16, 16, real16, f90_randnum16, f90_randnum16a, below_one<__float128>},
};

template <class F>
void in_fresh_thread(F f) {
    std::thread(f).join();
}

// One value through the one-value form; bytes past its width stay as they were.
void expect_one(const KindCase& k, Model& m) {
    unsigned char v[16];
    std::memset(v, 0xA5, sizeof v);
    k.one(v);
    ASSERT_EQ(Bytes(v, v + k.width), k.expect(m.next())) << k.name;
    for (size_t b = k.width; b < 16; ++b) ASSERT_EQ(v[b], 0xA5) << k.name;
}

// Values through the array form in pieces of these sizes (0 and less store
// nothing), each slot checked; bytes 10-15 of a REAL(10) slot and the slot
// after the last stay as they were.
void expect_pieces(const KindCase& k, Model& m, std::initializer_list<int32_t> pieces) {
    for (int32_t n : pieces) {
        const int32_t count = n > 0 ? n : 0;
        Bytes buf(k.slot * count + k.slot, 0xA5);
        k.many(buf.data(), n);
        for (int32_t e = 0; e < count; ++e) {
            auto at = buf.begin() + e * k.slot;
            ASSERT_EQ(Bytes(at, at + k.width), k.expect(m.next())) << k.name << " piece " << n << " element " << e;
            ASSERT_EQ(Bytes(at + k.width, at + k.slot), Bytes(k.slot - k.width, 0xA5)) << k.name;
        }
        ASSERT_EQ(Bytes(buf.end() - k.slot, buf.end()), Bytes(k.slot, 0xA5)) << k.name << " past the end";
    }
}

TEST(RandomNumber, EveryKindFollowsTheModelFromAFreshThread) {
    for (const KindCase& k : kKinds) {
        in_fresh_thread([&] {
            Model m;
            expect_pieces(k, m, {0, -5});
            for (int e = 0; e < 60; ++e) expect_one(k, m);
            // Pieces across the 43-word table and long runs whose state the
            // one-value form must carry on.
            expect_pieces(k, m, {1, 2, 21, 22, 43, 44, 7, 1000, 0, 3, 4097, 5, 64, 65, 129});
            expect_one(k, m);
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

// The largest r, 2^31 - 1, as the first value after a PUT whose first
// difference gives it: REAL(8), 80-bit and quad stay below 1, REAL(4) rounds
// to exactly 1.0.
TEST(RandomNumber, LargestDrawStaysBelowOneExceptInSinglePrecision) {
    for (const KindCase& k : kKinds) {
        in_fresh_thread([&] {
            const uint32_t d = 0x7FFFFFFFu + (390878531u - 362436069u);  // stored after the -5
            Array put({{1, 43}}, 4);
            put.at<uint32_t>(21) = d + 5;  // x[21] - x[42] - 0, negative
            Args args;
            f90_randseed(args.addr(1, put.desc()).get());
            unsigned char v[16] = {};
            k.one(v);
            ASSERT_EQ(Bytes(v, v + k.width), k.expect(0x7FFFFFFF)) << k.name;
            EXPECT_EQ(k.below_one(v), k.slot != 4) << k.name;
        });
    }
}

TEST(RandomSeed, EveryFormOfResetRestartsTheSequence) {
    in_fresh_thread([] {
        double first, again, skip[77];
        f90_randnum8(&first);
        for (auto reset : {+[] { f90_randseed(Args().get()); }, +[] { f90_randseed8(Args().get()); },
                           +[] { InitMarsagliaRander(); }}) {
            f90_randnum8a(skip, 77);
            reset();
            f90_randnum8(&again);
            EXPECT_EQ(bytes_of(first), bytes_of(again));
        }
    });
}

TEST(RandomSeed, SizeIs47AndLeavesTheUpperHalfOfAn8ByteSize) {
    int32_t size4 = -1;
    int64_t size8 = INT64_C(0x7777777700001234);
    Args a4, a8;
    f90_randseed(a4.presence(F90_PRESENT_RESULT).addr(0, &size4).get());
    f90_randseed8(a8.presence(F90_PRESENT_RESULT).addr(0, &size8).get());
    EXPECT_EQ(size4, 47);
    EXPECT_EQ(size8, INT64_C(0x7777777700000000) | 47);
}

// PUT replaces the table only (i, j, c and w are the default ones), read
// through the descriptor's steps; the 8-byte form reads each low half.
template <class I>
void expect_put(void (*entry)(ArgList*)) {
    in_fresh_thread([entry] {
        Array whole({{0, 99}}, sizeof(I));
        uint32_t h = 2463534242u, table[43];
        for (int k = 0; k < 100; ++k) {
            h ^= h << 13, h ^= h >> 17, h ^= h << 5;
            whole.at<I>(k) = static_cast<I>((static_cast<uint64_t>(~h) << 32) | h);
        }
        Section put(whole, {tri(98, 1, -2)});  // 49 elements: 98, 96, ..., 2
        for (int k = 0; k < 43; ++k) table[k] = static_cast<uint32_t>(whole.at<I>(98 - 2 * k));
        double skip;
        f90_randnum8(&skip);
        Args args;
        entry(args.addr(1, put.desc()).get());
        Model m;
        m.set_table(table);
        expect_pieces(kKinds[1], m, {200});
    });
}

TEST(RandomSeed, PutReplacesTheTableOnly) {
    expect_put<int32_t>(f90_randseed);
    expect_put<int64_t>(f90_randseed8);
}

// GET after a PUT and after drawing returns the default state: the lattice
// table, i = 42, j = 21, c = 0, w = the seed; 8-byte words sign-extended.
TEST(RandomSeed, GetAlwaysReturnsTheDefaultState) {
    in_fresh_thread([] {
        Model m;
        std::vector<int64_t> want(m.y.rbegin(), m.y.rend());
        for (auto& v : want) v = static_cast<int32_t>(v);
        want.insert(want.end(), {42, 21, 0, 390878531});

        Array put({{1, 43}}, 4), get4({{-3, 60}}, 4), get8({{1, 47}}, 8);
        Args args;
        f90_randseed(args.addr(1, put.desc()).get());
        double skip[100];
        f90_randnum8a(skip, 100);
        for (int k = 0; k < 64; ++k) get4.at<int32_t>(k) = -7;
        f90_randseed(Args().addr(2, get4.desc()).get());
        f90_randseed8(Args().addr(2, get8.desc()).get());
        for (int k = 0; k < 47; ++k) {
            EXPECT_EQ(get4.at<int32_t>(k), want[k]) << k;
            EXPECT_EQ(get8.at<int64_t>(k), want[k]) << k;
        }
        EXPECT_EQ(get4.at<int32_t>(47), -7) << "GET writes 47 words only";
        EXPECT_LT(*std::min_element(want.begin(), want.end()), 0) << "some words have the top bit set";
    });
}

// Blocks of 4, 8 and 16 lanes (as far as this processor has them) leave the
// same values and state as single steps, in every kind, with the borrow clear
// at the start and set.
template <class E>
void expect_blocks_match_steps(int lanes) {
    using K = intrins::Kind<E>;
    namespace r = intrins::random;
    for (int32_t n : {1, 3, 4, 15, 16, 17, 43, 100, 1000}) {
        for (int skip : {0, 50}) {
            r::State a, b;
            r::seed_default(a);
            for (int k = 0; k < skip; ++k) r::step(a);
            ASSERT_EQ(a.c, skip ? 1u : 0u);
            b = a;
            Bytes got(n * K::size), want(n * K::size);
            r::fill_lanes<E>(a, got.data(), n, lanes);
            for (int32_t k = 0; k < n; ++k) K::store(want.data() + k * K::size, r::Unit<E>::value(r::step(b)));
            ASSERT_EQ(got, want) << lanes << " lanes, n " << n;
            ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0) << lanes << " lanes, n " << n;
        }
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
