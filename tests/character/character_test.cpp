// The character intrinsics through their entry points: the results GNU
// Fortran gives (gfortran_character.tsv, made by gfortran/gen_character.f90:
// empty and all-blank operands, BACK both ways), INDEX against the plain
// search on long operands, the k widths and BACK's presence bit, supplied
// result buffers and the REPEAT/TRIM diagnostics.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/arrays.h"
#include "support/table.h"

using testutil::Args;

namespace {

const std::string kHead = "ERROR calling the intrinsic subprogram ";

// An ArgList call with STRING and SUBSTRING/SET in blocks of exactly their
// length (a read past them shows under the address sanitizer) and BACK given
// unless back < 0; the Result slot starts filled with 0xAB.
struct Call {
    std::vector<char> s, t;
    Args a;
    Call(const std::string& str, const std::string& sub, int back = -1) : s(str.begin(), str.end()), t(sub.begin(), sub.end()) {
        s.shrink_to_fit(), t.shrink_to_fit();
        a.text(1, s.data(), static_cast<int32_t>(s.size())).text(2, t.data(), static_cast<int32_t>(t.size()));
        if (back >= 0) a.value<int32_t>(3, back);
        std::memset(a.slot(0).bytes, 0xAB, sizeof a.slot(0).bytes);
    }
    template <class R = int32_t>
    R pos(void (*f)(ArgList*)) {
        f(a.get());
        R r;
        std::memcpy(&r, a.slot(0).bytes, sizeof r);
        if (sizeof(R) < sizeof(ArgSlot)) {
            EXPECT_EQ(a.slot(0).bytes[sizeof(R)], 0xAB) << "wrote beyond its width";
        }
        return r;
    }
    std::string text() const {
        return std::string(reinterpret_cast<const char*>(a.a.Result.w[0]), static_cast<int32_t>(a.a.Result.w[1]));
    }
};

struct Case {
    const char *fn, *s, *t;  // t: SUBSTRING or SET, NCOPIES for REPEAT
    int back;
    const char* want;
};

std::string run(const Case& c) {
    const std::string fn = c.fn, s = c.s;
    const int32_t n = static_cast<int32_t>(s.size());
    std::string out(s.size() + 1, '#');  // the guard must survive
    if (fn == "len_trim") return std::to_string(f90_lentrim(s.data(), n));
    if (fn == "adjustl" || fn == "adjustr") {
        (fn == "adjustl" ? f90_adjustl : f90_adjustr)(s.data(), n, out.data());
        return out.back() == '#' ? out.substr(0, s.size()) : "guard overwritten";
    }
    Call call(s, fn == "repeat" ? "" : c.t, c.back);
    if (fn == "trim" || fn == "repeat") {
        if (fn == "repeat") call.a.check().value<int32_t>(2, std::atoi(c.t));
        (fn == "trim" ? f90_trim : f90_repeat)(call.a.get());
        EXPECT_EQ(static_cast<intptr_t>(call.a.a.Result.w[1]), static_cast<int32_t>(call.a.a.Result.w[1]));
        return call.text();
    }
    return std::to_string(call.pos(fn == "index" ? f90_index : fn == "scan" ? f90_scan : f90_verify));
}

TEST(Character, SameResultsAsGnuFortran) {
    const auto rows = testutil::read_table("gfortran_character.tsv");
    ASSERT_GT(rows.size(), 400u);
    for (const auto& r : rows) {
        ASSERT_EQ(r.size(), 5u);
        const Case c{r[0].c_str(), r[1].c_str(), r[2].c_str(), std::atoi(r[3].c_str()), r[4].c_str()};
        EXPECT_EQ(run(c), c.want) << c.fn << " \"" << c.s << "\" \"" << c.t << "\" back " << c.back;
    }
}

int32_t ref_index(const std::string& s, const std::string& t, bool back) {
    const int32_t n = static_cast<int32_t>(s.size()), m = static_cast<int32_t>(t.size());
    for (int32_t k = 0; k <= n - m; ++k)
        if (s.compare(back ? n - m - k : k, m, t) == 0) return (back ? n - m - k : k) + 1;
    return 0;
}

// Long operands over two letters: many candidate starts per block of sixteen.
TEST(Index, LongOperandsAgreeWithThePlainSearch) {
    std::mt19937 gen(9);
    for (int trial = 0; trial < 500; ++trial) {
        std::string s(gen() % 240, 'A'), t(1 + gen() % 6, 'A');
        for (char& ch : s) ch = gen() % 5 ? 'A' : 'B';
        for (char& ch : t) ch = gen() % 3 ? 'A' : 'B';
        for (int back = 0; back < 2; ++back) ASSERT_EQ(Call(s, t, back).pos(f90_index), ref_index(s, t, back)) << s << '|' << t;
    }
    std::string s(100000, 'a');
    s.append("ab");
    EXPECT_EQ(Call(s, "ab").pos(f90_index), 100001);
    EXPECT_EQ(Call(s, "aa", 1).pos(f90_index), 100000);
}

TEST(Position, WidthsAndBack) {
    EXPECT_EQ(Call("ABCABC", "BC", 1).pos<int64_t>(f90_kindex), 5);
    EXPECT_EQ(Call("FORTRAN", "TR", 1).pos<int64_t>(f90_kscan), 5);
    EXPECT_EQ(Call("AAB", "A").pos<int64_t>(f90_kverify), 3);
    EXPECT_EQ(Call("ABCABC", "BC", -7 & 0x7fffffff).pos(f90_index), 5);  // any nonzero BACK is true
    Call unmarked("ABAB", "AB");
    unmarked.a.slot(3).w[0] = 1;  // a value in ARG 3 without Presence bit 3
    EXPECT_EQ(unmarked.pos(f90_index), 1);
    EXPECT_EQ(f90_klentrim(" A B  ", 6), int64_t{4});
    EXPECT_EQ(f90_lentrim("AB\t", 3), 3);  // only 0x20 is a blank
    EXPECT_EQ(f90_lentrim("AB", -4), 0);   // a negative length is empty
    std::string s(40, ' ');
    for (int32_t lead = 0; lead < 20; ++lead, s[lead - 1] = ' ') {
        s[lead] = 'X';
        EXPECT_EQ(f90_lentrim(s.data() + 1, 39), lead);  // blank words at any alignment
        std::string out(40, '#');
        f90_adjustl(s.data(), 40, out.data());
        EXPECT_EQ(out.find_first_not_of(' ', 1), std::string::npos);
        EXPECT_EQ(out[0], 'X');
        f90_adjustr(s.data(), 40, out.data());
        EXPECT_EQ(out.find_last_not_of(' ', 38), std::string::npos);
        EXPECT_EQ(out[39], 'X');
    }
}

TEST(Result, SuppliedBuffers) {
    char buf[8] = "-------";
    Call rep("XYZ", "");
    rep.a.value<int32_t>(2, 2).check().presence(rep.a.a.Presence | F90_PRESENT_RESULT).text(0, buf, 7);
    f90_repeat(rep.a.get());
    EXPECT_EQ(reinterpret_cast<char*>(rep.a.a.Result.w[0]), buf);
    EXPECT_EQ(rep.text(), "XYZXYZ");
    rep.a.flags(0).value<int32_t>(2, 4).text(0, buf, 7);  // too small, no checks: whole copies that fit
    f90_repeat(rep.a.get());
    EXPECT_EQ(rep.text(), "XYZXYZ");
    EXPECT_EQ(buf[6], '-');
    rep.a.presence(F90_PRESENT_ARG1 | F90_PRESENT_ARG2).value<int32_t>(2, -1);
    f90_repeat(rep.a.get());
    EXPECT_EQ(rep.text(), "");
    Call trim("AB   ", "");
    trim.a.presence(F90_PRESENT_RESULT | F90_PRESENT_ARG1).text(0, buf, 2);
    f90_trim(trim.a.get());
    EXPECT_EQ(trim.text(), "AB");
}

TEST(ResultDeath, Messages) {
    char buf[4];
    Call rep("AB", "");
    rep.a.value<int32_t>(2, -1).check();
    EXPECT_DIES_WITH(f90_repeat(rep.a.get()),
                     kHead + "REPEAT:\n The NCOPIES argument has a value of -1. NCOPIES should be nonnegative.\n");
    rep.a.value<int32_t>(2, 3).presence(rep.a.a.Presence | F90_PRESENT_RESULT).text(0, buf, 4);
    EXPECT_DIES_WITH(f90_repeat(rep.a.get()),
                     kHead + "REPEAT:\n The RESULT character string has length 4. It should have length 6.\n");
    Call trim("ABC  ", "");
    trim.a.presence(F90_PRESENT_RESULT | F90_PRESENT_ARG1).text(0, buf, 2);  // checked without Flags
    EXPECT_DIES_WITH(f90_trim(trim.a.get()),
                     kHead + "TRIM:\n The RESULT character string has length 2. It should have length 3.\n");
}

}  // namespace
