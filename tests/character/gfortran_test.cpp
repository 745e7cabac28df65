// Cross-check against GNU Fortran: gfortran_character.inc holds the results
// gfortran/gen_character.f90 computed for LEN_TRIM, ADJUSTL, ADJUSTR, TRIM,
// REPEAT and INDEX/SCAN/VERIFY with BACK both ways, including empty and
// all-blank operands; every entry point must give the same.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/arrays.h"

using testutil::Args;

namespace {

struct Case {
    const char* fn;
    const char* s;
    const char* t;  // SUBSTRING or SET, NCOPIES for REPEAT
    int back;
    const char* want;
};

const Case kCases[] = {
#include "gfortran_character.inc"
};

std::string result_text(const Args& a) {
    return std::string(reinterpret_cast<const char*>(a.a.Result.w[0]), static_cast<std::size_t>(a.a.Result.w[1]));
}

std::string run(const Case& c) {
    const std::string fn = c.fn, s = c.s, t = c.t;
    const int32_t n = static_cast<int32_t>(s.size());
    std::string out(s.size(), '#');
    if (fn == "len_trim") return std::to_string(f90_lentrim(s.data(), n));
    if (fn == "adjustl") return f90_adjustl(s.data(), n, out.data()), out;
    if (fn == "adjustr") return f90_adjustr(s.data(), n, out.data()), out;
    Args a;
    a.text(1, s.data(), n);
    if (fn == "trim") return f90_trim(a.get()), result_text(a);
    if (fn == "repeat") return f90_repeat(a.value<int32_t>(2, std::atoi(c.t)).check().get()), result_text(a);
    a.text(2, t.data(), static_cast<int32_t>(t.size())).value<int32_t>(3, c.back);
    if (fn == "index") f90_index(a.get());
    else if (fn == "scan") f90_scan(a.get());
    else f90_verify(a.get());
    int32_t pos;
    std::memcpy(&pos, a.a.Result.bytes, sizeof pos);
    return std::to_string(pos);
}

TEST(GnuFortran, CharacterFunctionsMatch) {
    int checked = 0;
    for (const Case& c : kCases) {
        EXPECT_EQ(run(c), c.want) << c.fn << " \"" << c.s << "\" \"" << c.t << "\" back " << c.back;
        ++checked;
    }
    EXPECT_GT(checked, 400);
}

}  // namespace
