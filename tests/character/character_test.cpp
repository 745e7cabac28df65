// The character intrinsics through their entry points: the edge cases of each
// function, BACK both ways, the k widths, supplied result buffers and the
// REPEAT/TRIM diagnostics; INDEX/SCAN/VERIFY against a character-by-character
// reference on many small random strings.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/arrays.h"

using testutil::Args;

namespace {

const std::string kHead = "ERROR calling the intrinsic subprogram ";

// INDEX/SCAN/VERIFY-style call; BACK given unless back is kNoBack.
constexpr int kNoBack = 0x7fff;
template <class R>
R position(void (*f)(ArgList*), const std::string& s, const std::string& t, int back = kNoBack) {
    // Operands in blocks of exactly their length, so that a read past them
    // shows under the address sanitizer.
    std::vector<char> sb(s.begin(), s.end()), tb(t.begin(), t.end());
    sb.shrink_to_fit(), tb.shrink_to_fit();
    Args a;
    a.text(1, sb.data(), static_cast<int32_t>(sb.size())).text(2, tb.data(), static_cast<int32_t>(tb.size()));
    if (back != kNoBack) a.value<int32_t>(3, back);
    std::memset(a.slot(0).bytes, 0xAB, sizeof a.slot(0).bytes);
    f(a.get());
    R r;
    std::memcpy(&r, a.slot(0).bytes, sizeof r);
    if (sizeof(R) < sizeof(ArgSlot)) {
        EXPECT_EQ(a.slot(0).bytes[sizeof(R)], 0xAB) << "wrote beyond its width";
    }
    return r;
}
int32_t idx(const std::string& s, const std::string& t, int back = kNoBack) { return position<int32_t>(f90_index, s, t, back); }
int32_t scan(const std::string& s, const std::string& t, int back = kNoBack) { return position<int32_t>(f90_scan, s, t, back); }
int32_t verify(const std::string& s, const std::string& t, int back = kNoBack) {
    return position<int32_t>(f90_verify, s, t, back);
}

TEST(Index, Cases) {
    EXPECT_EQ(idx("ABCABC", "BC"), 2);
    EXPECT_EQ(idx("ABCABC", "BC", 0), 2);  // BACK given as false
    EXPECT_EQ(idx("ABCABC", "BC", 1), 5);
    EXPECT_EQ(idx("ABCABC", "BC", -7), 5);  // any nonzero BACK is true
    EXPECT_EQ(idx("ABCABC", ""), 1);
    EXPECT_EQ(idx("ABCABC", "", 1), 7);
    EXPECT_EQ(idx("", ""), 1);
    EXPECT_EQ(idx("", "", 1), 1);
    EXPECT_EQ(idx("AB", "ABC"), 0);
    EXPECT_EQ(idx("ABCABC", "CA"), 3);
    EXPECT_EQ(idx("ABCABC", "ABCABC", 1), 1);
    EXPECT_EQ(idx("ABCABC", "X"), 0);
    EXPECT_EQ(idx("ABCABC", "X", 1), 0);
    EXPECT_EQ(idx("AAAA", "AA", 1), 3);
    EXPECT_EQ(idx(std::string("A\0B\xff", 4), "B\xff"), 3);  // an embedded NUL is a character
}

TEST(Index, BackBitClearIgnoresSlotValue) {
    Args a;
    std::string s = "ABAB";
    a.text(1, s.data(), 4).text(2, "AB", 2);
    a.slot(3).w[0] = 1;  // a value in ARG 3 without Presence bit 3
    f90_index(a.get());
    EXPECT_EQ(a.slot(0).w[0] & 0xffffffffu, 1u);
}

TEST(Index, KFormWritesBothWords) {
    EXPECT_EQ(position<int64_t>(f90_kindex, "ABCABC", "BC", 1), 5);
    EXPECT_EQ(position<int64_t>(f90_kindex, "ABCABC", "Q"), 0);
    EXPECT_EQ(position<int64_t>(f90_kscan, "FORTRAN", "TR", 1), 5);
    EXPECT_EQ(position<int64_t>(f90_kverify, "AAB", "A"), 3);
}

TEST(Index, LongStringNearTheEnd) {
    std::string s(100000, 'a');
    s += "ab";
    EXPECT_EQ(idx(s, "ab"), 100001);
    EXPECT_EQ(idx(s, "abb", 1), 0);
    EXPECT_EQ(idx(s, "aa", 1), 100000);
    EXPECT_EQ(idx(s, "ba"), 0);
}

TEST(Scan, Cases) {
    EXPECT_EQ(scan("FORTRAN", "TR"), 3);
    EXPECT_EQ(scan("FORTRAN", "TR", 1), 5);
    EXPECT_EQ(scan("FORTRAN", ""), 0);
    EXPECT_EQ(scan("", "TR"), 0);
    EXPECT_EQ(scan("FORTRAN", "XYZ", 1), 0);
    EXPECT_EQ(scan("   ", " "), 1);
    EXPECT_EQ(scan("\x80\xff", "\xff"), 2);  // bytes above 0x7f
}

TEST(Verify, Cases) {
    EXPECT_EQ(verify("AAB", "A"), 3);
    EXPECT_EQ(verify("AAB", ""), 1);
    EXPECT_EQ(verify("AAB", "", 1), 3);
    EXPECT_EQ(verify("", "A"), 0);
    EXPECT_EQ(verify("", "", 1), 0);
    EXPECT_EQ(verify("AAB", "AB"), 0);
    EXPECT_EQ(verify("BAA", "A", 1), 1);
    EXPECT_EQ(verify("AB  ", " ", 1), 2);
}

// Character-by-character definitions.
int32_t ref_index(const std::string& s, const std::string& t, bool back) {
    int32_t n = static_cast<int32_t>(s.size()), m = static_cast<int32_t>(t.size());
    if (n < m) return 0;
    if (m == 0) return back ? n + 1 : 1;
    for (int32_t k = 0; k <= n - m; ++k) {
        int32_t i = back ? n - m - k : k;
        if (s.compare(i, m, t) == 0) return i + 1;
    }
    return 0;
}
int32_t ref_class(const std::string& s, const std::string& set, bool back, bool member) {
    for (std::size_t k = 0; k < s.size(); ++k) {
        std::size_t i = back ? s.size() - 1 - k : k;
        if ((set.find(s[i]) != std::string::npos) == member) return static_cast<int32_t>(i) + 1;
    }
    return 0;
}

TEST(Position, AgreesWithCharacterByCharacterDefinition) {
    std::mt19937 gen(7);
    auto random_text = [&](int maxlen) {
        std::string s(gen() % (maxlen + 1), ' ');
        for (char& ch : s) ch = "AB C"[gen() % 4];
        return s;
    };
    for (int trial = 0; trial < 3000; ++trial) {
        std::string s = random_text(12), t = random_text(4);
        for (int back = 0; back < 2; ++back) {
            ASSERT_EQ(idx(s, t, back), ref_index(s, t, back)) << '"' << s << "\" \"" << t << '"' << back;
            int32_t sc = s.empty() || t.empty() ? 0 : ref_class(s, t, back, true);
            ASSERT_EQ(scan(s, t, back), sc) << s << '|' << t;
            int32_t vf = s.empty() ? 0 : t.empty() ? (back ? static_cast<int32_t>(s.size()) : 1)
                                                   : ref_class(s, t, back, false);
            ASSERT_EQ(verify(s, t, back), vf) << s << '|' << t;
        }
    }
}

TEST(LenTrim, Cases) {
    EXPECT_EQ(f90_lentrim("   ", 3), 0);
    EXPECT_EQ(f90_klentrim("   ", 3), 0);
    EXPECT_EQ(f90_lentrim("", 0), 0);
    EXPECT_EQ(f90_lentrim(" A B  ", 6), 4);
    EXPECT_EQ(f90_klentrim(" A B  ", 6), int64_t{4});
    EXPECT_EQ(f90_lentrim("AB\t", 3), 3);  // only 0x20 is a blank
    EXPECT_EQ(f90_lentrim("AB", -4), 0);   // negative length: empty
}

std::string adjust(void (*f)(const char*, int32_t, char*), const std::string& s) {
    std::string d(s.size() + 2, '#');  // the two guards must survive
    f(s.data(), static_cast<int32_t>(s.size()), d.data());
    EXPECT_EQ(d.substr(s.size()), "##");
    return d.substr(0, s.size());
}

TEST(Adjust, LeftAndRight) {
    EXPECT_EQ(adjust(f90_adjustl, "  AB"), "AB  ");
    EXPECT_EQ(adjust(f90_adjustr, "AB  "), "  AB");
    EXPECT_EQ(adjust(f90_adjustl, " A B "), "A B  ");
    EXPECT_EQ(adjust(f90_adjustr, " A B "), "  A B");
    EXPECT_EQ(adjust(f90_adjustl, "   "), "   ");
    EXPECT_EQ(adjust(f90_adjustr, "   "), "   ");
    EXPECT_EQ(adjust(f90_adjustl, "AB"), "AB");
    EXPECT_EQ(adjust(f90_adjustr, ""), "");
    EXPECT_EQ(adjust(f90_adjustl, ""), "");
}

// REPEAT/TRIM call: the result either allocated by the library or a supplied
// buffer of `capacity` characters.
struct TextResult {
    std::string text;
    const char* addr;
};
TextResult text_call(void (*f)(ArgList*), const std::string& s, int32_t copies, bool check,
                     char* buffer = nullptr, int32_t capacity = 0) {
    Args a;
    a.text(1, s.data(), static_cast<int32_t>(s.size()));
    if (f == f90_repeat) a.value<int32_t>(2, copies);
    if (check) a.check();
    if (buffer) a.presence(a.a.Presence | F90_PRESENT_RESULT).text(0, buffer, capacity);
    f(a.get());
    const char* p = reinterpret_cast<const char*>(a.slot(0).w[0]);
    int32_t len = static_cast<int32_t>(a.slot(0).w[1]);
    EXPECT_EQ(static_cast<intptr_t>(a.slot(0).w[1]), len) << "length word not sign-extended";
    return {std::string(p, static_cast<std::size_t>(len)), p};
}

TEST(Repeat, Copies) {
    EXPECT_EQ(text_call(f90_repeat, "AB", 3, true).text, "ABABAB");
    EXPECT_EQ(text_call(f90_repeat, "AB", 0, true).text, "");
    EXPECT_EQ(text_call(f90_repeat, "", 5, true).text, "");
    EXPECT_EQ(text_call(f90_repeat, "AB", -1, false).text, "");  // no check: nothing copied
    char buf[8] = "xxxxxxx";
    TextResult r = text_call(f90_repeat, "XYZ", 2, true, buf, 7);
    EXPECT_EQ(r.addr, buf);
    EXPECT_EQ(r.text, "XYZXYZ");
    EXPECT_EQ(buf[6], 'x');
}

TEST(Repeat, TooSmallBufferWithoutChecksStaysInside) {
    char buf[8] = "-------";
    TextResult r = text_call(f90_repeat, "XYZ", 4, false, buf, 7);
    EXPECT_EQ(r.text, "XYZXYZ");  // the whole copies that fit
    EXPECT_EQ(buf[6], '-');
}

TEST(RepeatDeath, Messages) {
    char buf[4];
    EXPECT_DIES_WITH(text_call(f90_repeat, "AB", -1, true),
                     kHead + "REPEAT:\n The NCOPIES argument has a value of -1. NCOPIES should be nonnegative.\n");
    EXPECT_DIES_WITH(text_call(f90_repeat, "AB", 3, true, buf, 4),
                     kHead + "REPEAT:\n The RESULT character string has length 4. It should have length 6.\n");
}

TEST(Trim, Results) {
    EXPECT_EQ(text_call(f90_trim, "ABC  ", 0, false).text, "ABC");
    EXPECT_EQ(text_call(f90_trim, "   ", 0, false).text, "");
    EXPECT_EQ(text_call(f90_trim, "", 0, false).text, "");
    EXPECT_EQ(text_call(f90_trim, " A ", 0, false).text, " A");
    char buf[3] = {'-', '-', '-'};
    TextResult r = text_call(f90_trim, "AB   ", 0, false, buf, 3);
    EXPECT_EQ(r.addr, buf);
    EXPECT_EQ(r.text, "AB");
    EXPECT_EQ(buf[2], '-');
}

TEST(TrimDeath, CapacityCheckedEvenWithoutFlags) {
    char buf[2];
    EXPECT_DIES_WITH(text_call(f90_trim, "ABC  ", 0, false, buf, 2),
                     kHead + "TRIM:\n The RESULT character string has length 2. It should have length 3.\n");
}

// Long operands over a two-letter alphabet: frequent candidates move INDEX
// to its skipping search, long blank runs go by whole words.
TEST(Position, LongOperandsAgreeWithDefinition) {
    std::mt19937 gen(9);
    for (int trial = 0; trial < 400; ++trial) {
        std::string s(40 + gen() % 200, 'A'), t(1 + gen() % 6, 'A');
        for (char& ch : s) ch = gen() % 5 ? 'A' : 'B';
        for (char& ch : t) ch = gen() % 3 ? 'A' : 'B';
        for (int back = 0; back < 2; ++back) ASSERT_EQ(idx(s, t, back), ref_index(s, t, back)) << s << '|' << t;
    }
    for (int32_t lead = 0; lead < 20; ++lead) {
        std::string s(40, ' '), left(40, ' '), right(40, ' ');
        s[lead] = left[0] = right[39] = 'X';
        EXPECT_EQ(f90_lentrim(s.data() + 1, 39), lead);  // misaligned start
        EXPECT_EQ(adjust(f90_adjustl, s), left);
        EXPECT_EQ(adjust(f90_adjustr, s), right);
    }
}

}  // namespace
