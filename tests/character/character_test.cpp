// The character intrinsics: a character-by-character model of INDEX, SCAN,
// VERIFY, LEN_TRIM, ADJUSTL and ADJUSTR on random strings (any byte, lengths
// across the sixteen-byte blocks, BACK both ways, both result widths); the
// results GNU Fortran gives (gfortran_character.tsv, made by
// tools/gfortran/character/gen_character.f90); REPEAT and TRIM with their diagnostics.
#include <random>

#include "support/arrays.h"
#include "support/messages.h"
#include "support/table.h"

namespace {
using testutil::Args;
using Entry = void (*)(ArgList*);

// STRING and SUBSTRING/SET in blocks of exactly their length (a read past
// them shows under the address sanitizer); BACK when back >= 0.  The Result
// slot starts as 0xAB bytes: beyond the result's width they must stay so.
template <class R = int32_t>
R position(Entry fn, const std::string& s, const std::string& t, int back = -1) {
    std::vector<char> a(s.begin(), s.end()), b(t.begin(), t.end());
    Args args;
    args.text(1, a.data(), static_cast<int32_t>(a.size())).text(2, b.data(), static_cast<int32_t>(b.size()));
    if (back >= 0) args.value<int32_t>(3, back);
    std::memset(args.slot(0).bytes, 0xAB, sizeof args.slot(0).bytes);
    fn(args);
    R r;
    std::memcpy(&r, args.slot(0).bytes, sizeof r);
    EXPECT_TRUE(sizeof(R) == sizeof(ArgSlot) || args.slot(0).bytes[sizeof(R) % sizeof(ArgSlot)] == 0xAB) << "wrote beyond its width";
    return r;
}

int64_t model(const std::string& fn, const std::string& s, const std::string& t, bool back) {
    const int64_t n = static_cast<int64_t>(s.size());
    for (int64_t k = 0; k < n + 1; ++k) {
        const int64_t i = back ? n - k - (fn == "index" ? 0 : 1) : k;
        if (i < 0 || i > n) continue;
        if (fn == "index" && i + t.size() <= s.size() && s.compare(i, t.size(), t) == 0) return i + 1;
        if (fn != "index" && i < n && (t.find(s[i]) != std::string::npos) == (fn == "scan")) return i + 1;
    }
    return 0;
}

TEST(Character, ModelOnRandomStrings) {
    std::mt19937_64 g(11);
    for (int trial = 0; trial < 20000; ++trial) {
        // Few distinct bytes (blanks and high bytes among them), so that
        // matches and near-matches are frequent.
        std::string alphabet = {' ', 'a', static_cast<char>(0x80 + g() % 128), static_cast<char>(g())};
        auto text = [&](std::size_t n) {
            std::string x(n, ' ');
            for (char& c : x) c = alphabet[g() % (g() % 2 ? 2 : 4)];
            return x;
        };
        const std::string s = text(g() % 70), t = text(g() % 5);
        const int back = static_cast<int>(g() % 3) - 1;  // -1: BACK absent
        const Entry plain[] = {f90_index, f90_scan, f90_verify}, wide[] = {f90_kindex, f90_kscan, f90_kverify};
        const char* names[] = {"index", "scan", "verify"};
        for (int f = 0; f < 3; ++f) {
            const int64_t want = model(names[f], s, t, back == 1);
            ASSERT_EQ(position(plain[f], s, t, back), want) << names[f] << " \"" << s << "\" \"" << t << "\" " << back;
            ASSERT_EQ(position<int64_t>(wide[f], s, t, back), want) << names[f];
        }
        const std::size_t last = s.find_last_not_of(' '), lead = std::min(s.find_first_not_of(' '), s.size());
        const std::size_t trimmed = last == std::string::npos ? 0 : last + 1;
        ASSERT_EQ(f90_lentrim(s.data(), static_cast<int32_t>(s.size())), static_cast<int32_t>(trimmed)) << s;
        ASSERT_EQ(f90_klentrim(s.data(), static_cast<int32_t>(s.size())), static_cast<int64_t>(trimmed)) << s;
        std::string out(s.size() + 1, '#');
        f90_adjustl(s.data(), static_cast<int32_t>(s.size()), out.data());
        ASSERT_EQ(out, s.substr(lead) + std::string(lead, ' ') + "#") << s;
        f90_adjustr(s.data(), static_cast<int32_t>(s.size()), out.data());
        ASSERT_EQ(out, std::string(s.size() - trimmed, ' ') + s.substr(0, trimmed) + "#") << s;
    }
    EXPECT_EQ(f90_lentrim("AB", -4), 0);  // a negative length is empty
    Args unmarked;  // a BACK value without its presence bit does not count
    unmarked.text(1, "ABAB", 4).text(2, "AB", 2).slot(3).w[0] = 1;
    f90_index(unmarked);
    EXPECT_EQ(static_cast<int32_t>(unmarked.a.Result.w[0]), 1);
}

// The Result slot's text after REPEAT or TRIM.
std::string text_of(const Args& a) {
    return std::string(reinterpret_cast<const char*>(a.a.Result.w[0]), static_cast<int32_t>(a.a.Result.w[1]));
}

TEST(Character, SameResultsAsGnuFortran) {
    const auto rows = testutil::read_table("gfortran_character.tsv");
    ASSERT_GT(rows.size(), 400u);
    for (const auto& r : rows) {
        const std::string& fn = r[0];
        const std::string& s = r[1];
        const int32_t n = static_cast<int32_t>(s.size());
        std::string got;
        if (fn == "len_trim") got = std::to_string(f90_lentrim(s.data(), n));
        if (fn == "adjustl" || fn == "adjustr") {
            got = s;
            (fn == "adjustl" ? f90_adjustl : f90_adjustr)(s.data(), n, got.data());
        }
        if (fn == "trim" || fn == "repeat") {
            Args a;
            a.text(1, s.data(), n).check();
            if (fn == "repeat") a.value<int32_t>(2, std::atoi(r[2].c_str()));
            (fn == "trim" ? f90_trim : f90_repeat)(a);
            got = text_of(a);
        }
        if (fn == "index" || fn == "scan" || fn == "verify")
            got = std::to_string(position(fn == "index" ? f90_index : fn == "scan" ? f90_scan : f90_verify, s, r[2], std::atoi(r[3].c_str())));
        EXPECT_EQ(got, r[4]) << fn << " \"" << s << "\" \"" << r[2] << "\" back " << r[3];
    }
}

TEST(Character, SuppliedBuffersAndDiagnostics) {
    char buf[8] = "-------";
    Args rep;
    rep.text(1, "XYZ", 3).value<int32_t>(2, 2).check().result(nullptr).text(0, buf, 7);
    f90_repeat(rep);
    EXPECT_EQ(reinterpret_cast<char*>(rep.a.Result.w[0]), buf);
    EXPECT_EQ(text_of(rep), "XYZXYZ");
    rep.flags(0).value<int32_t>(2, 4).text(0, buf, 7);  // too small, no checks: the whole copies that fit
    f90_repeat(rep);
    EXPECT_EQ(text_of(rep) + buf[6], "XYZXYZ-");
    Args trim;
    trim.text(1, "AB   ", 5).result(nullptr).text(0, buf, 2);
    f90_trim(trim);
    EXPECT_EQ(text_of(trim), "AB");
    const char* len = " The RESULT character string has length @. It should have length @.\n";
    Args neg;
    neg.text(1, "AB", 2).value<int32_t>(2, -1).check();
    EXPECT_DIES_WITH(f90_repeat(neg), testutil::msg::of("REPEAT", " The NCOPIES argument has a value of @. NCOPIES should be nonnegative.\n", {"-1"}));
    neg.value<int32_t>(2, 3).result(nullptr).text(0, buf, 4);
    EXPECT_DIES_WITH(f90_repeat(neg), testutil::msg::of("REPEAT", len, {"4", "6"}));
    trim.text(1, "ABC  ", 5);  // TRIM checks its capacity without the flag
    EXPECT_DIES_WITH(f90_trim(trim), testutil::msg::of("TRIM", len, {"2", "3"}));
}

}  // namespace
