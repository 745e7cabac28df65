// Bit patterns in, bit patterns out: the results GNU Fortran gives for the
// standard cases (gfortran_model.tsv, made by gfortran/gen_model.f90), and
// the deliberate departures from the standard model, case by case.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "real_kinds.h"
#include "support/table.h"

using namespace numtest;

namespace {

struct Case {
    const char* fn;
    int kind;
    const char* x;
    const char* y;  // a REAL's or an INTEGER's bits, a decimal integer, or empty
    const char* want;
};


// Kept on purpose; digits most significant first, REAL(10) as 20 digits.
const Case kKept[] = {
    // single FRACTION of a subnormal: signed shift, NaN pattern when the bit
    // after the leading one is set; RRSPACING normalises without it
    {"fraction", 4, "00600000", "", "FFC00000"},
    {"fraction", 4, "00000003", "", "FFC00000"},
    {"fraction", 4, "80000005", "", "BF200000"},
    {"rrspacing", 4, "00600000", "", "4B400000"},
    // NEAREST from zero by TINY; SPACING without a zero test
    {"nearest", 4, "80000000", "C0000000", "80800000"},
    {"nearest", 8, "0000000000000000", "3FF0000000000000", "0010000000000000"},
    // NEAREST's direction is the sign bit of S: +0.0 and a NaN without it step up
    {"nearest", 4, "3F800000", "00000000", "3F800001"},
    {"nearest", 8, "BFF0000000000000", "7FF8000000000000", "BFEFFFFFFFFFFFFF"},
    {"spacing", 4, "00000000", "", "00800000"},
    {"spacing", 4, "7FC00000", "", "74000000"},
    // single SCALE/SET_EXPONENT: truncation, shift counts modulo 32, a
    // subnormal normalised to exponent 0 minus the shifts
    {"scale", 4, "3FFFFFFF", "-127", "007FFFFF"},
    {"scale", 4, "BF800000", "-127", "80400000"},
    {"scale", 4, "3F800000", "-159", "00400000"},
    {"scale", 4, "3F800000", "-160", "00200000"},
    {"scale", 4, "00400000", "10", "04800000"},
    {"scale", 4, "80000003", "3", "80000018"},
    {"scale", 4, "00000007", "-1", "00000003"},
    {"scale", 4, "80400000", "-23", "00000000"},
    {"scale", 4, "80400000", "-22", "80000001"},
    {"setexp", 4, "C0400000", "-130", "80060000"},
    {"setexp", 4, "3F800000", "-158", "00400000"},
    // double: ldexp rounds; SET_EXPONENT of a subnormal joins the words
    {"scale", 8, "3FF0000000000003", "-1074", "0000000000000001"},
    {"setexp", 8, "0008000000000001", "1", "3FF8000000000002"},
    {"setexp", 8, "0000000080000000", "0", "3FE0000000000000"},
    // REAL(10): SPACING with a zero significand and a wrapping exponent
    {"spacing", 10, "3FFF8000000000000000", "", "3FBF0000000000000000"},
    {"spacing", 10, "00000000000000000000", "", "7FC00000000000000000"},
    {"spacing", 10, "00408000000000000000", "", "00010000000000000000"},
    {"setexp", 10, "80004000000000000001", "3", "C0018000000000000002"},
    {"exponent", 10, "00000000000000000001", "", "FFFFBFC4"},
    {"fraction", 10, "00000000000000000003", "", "3FFEC000000000000000"},
    // REAL(16): the top 32-bit word of a subnormal joined to the rest
    {"setexp", 16, "00008000000000000000000000000001", "1", "3FFF8000000000000000000000000002"},
    {"spacing", 16, "00700000000000000000000000000000", "", "00010000000000000000000000000000"},
    // CEILING's 32-bit truncation, the 16-bit out-of-range value, FLOOR
    {"ceiling", 4, "4F000000", "", "80000001"},
    {"ceilingk", 8, "41F0000000000000", "", "0000000000000002"},
    {"ceilingk", 4, "4F32D05E", "", "FFFFFFFFB2D05E01"},
    {"ceilingk", 16, "401F0000000000000000000000000000", "", "0000000000000001"},
    {"ceilingh", 8, "40E3880000000000", "", "0000"},
    {"floor", 4, "40200000", "", "00000003"},
    {"floor", 8, "4004000000000000", "", "00000001"},
    {"floor", 8, "C004000000000000", "", "00000000"},
    {"floor", 8, "41F0000000000000", "", "80000000"},
    {"floor", 10, "4000A000000000000000", "", "00000003"},
    {"floor", 16, "40004000000000000000000000000000", "", "00000003"},
    // MODULO with P = 0 is A
    {"moduloi", 2, "0005", "0000", "0005"},
    {"moduloi", 8, "8000000000000000", "0000000000000000", "8000000000000000"},
};

// Hexadecimal digits, most significant first, to little-endian bytes.
std::vector<unsigned char> bytes_of(const std::string& digits) {
    std::vector<unsigned char> b(digits.size() / 2);
    for (std::size_t i = 0; i < b.size(); ++i)
        b[b.size() - 1 - i] = static_cast<unsigned char>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
    return b;
}
template <class T>
T value_of(const char* digits) {
    std::vector<unsigned char> b = bytes_of(digits);
    T v{};
    std::memcpy(&v, b.data(), b.size());
    return v;
}
template <class V>
std::vector<unsigned char> raw(V v, std::size_t n = sizeof(V)) {
    std::vector<unsigned char> b(n);
    std::memcpy(b.data(), &v, n);
    return b;
}

template <class T>
std::vector<unsigned char> run_real(const Case& c) {
    const std::string fn = c.fn;
    const std::size_t n = kValueBytes<T>;
    const T x = value_of<T>(c.x);
    if (fn == "exponent") return raw(R<T>::exponent(x));
    if (fn == "fraction") return raw(R<T>::fraction(x), n);
    if (fn == "rrspacing") return raw(R<T>::rrspacing(x), n);
    if (fn == "spacing") return raw(R<T>::spacing(x), n);
    if (fn == "nearest") return raw(R<T>::nearest(x, value_of<T>(c.y)), n);
    if (fn == "modulo") return raw(R<T>::modulo(x, value_of<T>(c.y)), n);
    if (fn == "scale") return raw(R<T>::scale(x, std::atoi(c.y)), n);
    if (fn == "setexp") return raw(R<T>::setexp(x, std::atoi(c.y)), n);
    if (fn == "ceiling") return raw(R<T>::ceiling(x));
    if (fn == "floor") return raw(R<T>::floor(x));
    if (fn == "ceilingh") return raw(R<T>::ceilingh(x));
    if (fn == "ceilingk") return raw(R<T>::ceilingk(x));
    ADD_FAILURE() << "unknown function " << fn;
    return {};
}

template <class I>
std::vector<unsigned char> run_int(const Case& c, I (*f)(const I*, const I*)) {
    I a = value_of<I>(c.x), p = value_of<I>(c.y);
    return raw(f(&a, &p));
}

std::vector<unsigned char> run(const Case& c) {
    if (std::string(c.fn) == "moduloi") {
        if (c.kind == 1) return run_int<int8_t>(c, f90_moduloi1);
        if (c.kind == 2) return run_int<int16_t>(c, f90_moduloi2);
        if (c.kind == 4) return run_int<int32_t>(c, f90_moduloi4);
        return run_int<int64_t>(c, f90_moduloi8);
    }
    if (c.kind == 4) return run_real<float>(c);
    if (c.kind == 8) return run_real<double>(c);
    if (c.kind == 10) return run_real<Real10>(c);
    return run_real<Quad>(c);
}

TEST(Patterns, SameResultsAsGnuFortran) {
    const auto rows = testutil::read_table("gfortran_model.tsv");
    ASSERT_GT(rows.size(), 600u);
    for (const auto& r : rows) {
        ASSERT_EQ(r.size(), 5u);
        const Case c{r[0].c_str(), std::atoi(r[1].c_str()), r[2].c_str(), r[3].c_str(), r[4].c_str()};
        EXPECT_EQ(run(c), bytes_of(c.want)) << c.fn << c.kind << " " << c.x << " " << c.y;
    }
}

TEST(Patterns, DeliberateDepartures) {
    for (const Case& c : kKept) EXPECT_EQ(run(c), bytes_of(c.want)) << c.fn << c.kind << " " << c.x << " " << c.y;
}

}  // namespace
