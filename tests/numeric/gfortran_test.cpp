// Cross-check against GNU Fortran: the expected results in
// gfortran_model.inc were computed once by gfortran/gen_model.f90 (EXPONENT,
// FRACTION, NEAREST, RRSPACING, SCALE, SET_EXPONENT, SPACING, CEILING with
// three result kinds, MODULO) for values where the library follows the
// standard model; every case must match bit for bit.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "real_kinds.h"

using namespace numtest;

namespace {

struct Case {
    const char* fn;
    int kind;
    const char* x;
    const char* y;  // a REAL's bits, a decimal integer, or empty
    const char* want;
};

const Case kCases[] = {
#include "gfortran_model.inc"
};

// Big-endian hexadecimal digits to little-endian bytes.
std::vector<unsigned char> bytes_of(const std::string& hexdigits) {
    std::vector<unsigned char> b(hexdigits.size() / 2);
    for (std::size_t i = 0; i < b.size(); ++i)
        b[b.size() - 1 - i] = static_cast<unsigned char>(std::stoul(hexdigits.substr(2 * i, 2), nullptr, 16));
    return b;
}

template <class T>
T value_of(const char* hexdigits) {
    std::vector<unsigned char> b = bytes_of(hexdigits);
    T v{};
    std::memcpy(&v, b.data(), b.size());
    return v;
}

template <class V>
std::vector<unsigned char> raw(V v, std::size_t n) {
    std::vector<unsigned char> b(n);
    std::memcpy(b.data(), &v, n);
    return b;
}

// The entry points' CEILING for the three result widths.
int16_t ceiling_h(float x) { return f90_ceilingh4(&x); }
int16_t ceiling_h(double x) { return f90_ceilingh8(&x); }
int16_t ceiling_h(Real10 x) { return f90_ceilingh10(Arg10(x).b); }
int16_t ceiling_h(Quad x) { return f90_ceilingh16(&x); }
int64_t ceiling_k(float x) { return f90_ceilingk4(&x); }
int64_t ceiling_k(double x) { return f90_ceilingk8(&x); }
int64_t ceiling_k(Real10 x) { return f90_ceilingk10(Arg10(x).b); }
int64_t ceiling_k(Quad x) { return f90_ceilingk16(&x); }

template <class T>
std::vector<unsigned char> run_real(const Case& c) {
    const std::string fn = c.fn;
    const std::size_t n = kValueBytes<T>;
    T x = value_of<T>(c.x);
    if (fn == "exponent") return raw(R<T>::exponent(x), 4);
    if (fn == "fraction") return raw(R<T>::fraction(x), n);
    if (fn == "rrspacing") return raw(R<T>::rrspacing(x), n);
    if (fn == "spacing") return raw(R<T>::spacing(x), n);
    if (fn == "nearest") return raw(R<T>::nearest(x, value_of<T>(c.y)), n);
    if (fn == "modulo") return raw(R<T>::modulo(x, value_of<T>(c.y)), n);
    if (fn == "scale") return raw(R<T>::scale(x, std::atoi(c.y)), n);
    if (fn == "setexp") return raw(R<T>::setexp(x, std::atoi(c.y)), n);
    if (fn == "ceiling") return raw(R<T>::ceiling(x), 4);
    if (fn == "ceilingh") return raw(ceiling_h(x), 2);
    if (fn == "ceilingk") return raw(ceiling_k(x), 8);
    ADD_FAILURE() << "no such function in the data: " << fn;
    return {};
}

template <class I>
std::vector<unsigned char> run_int(const Case& c, I (*f)(const I*, const I*)) {
    I a = value_of<I>(c.x), p = value_of<I>(c.y);
    return raw(f(&a, &p), sizeof(I));
}

std::vector<unsigned char> run(const Case& c) {
    if (std::string(c.fn) == "moduloi") {
        switch (c.kind) {
            case 1: return run_int<int8_t>(c, f90_moduloi1);
            case 2: return run_int<int16_t>(c, f90_moduloi2);
            case 4: return run_int<int32_t>(c, f90_moduloi4);
            default: return run_int<int64_t>(c, f90_moduloi8);
        }
    }
    switch (c.kind) {
        case 4: return run_real<float>(c);
        case 8: return run_real<double>(c);
        case 10: return run_real<Real10>(c);
        default: return run_real<Quad>(c);
    }
}

TEST(GnuFortran, StandardCasesMatchBitForBit) {
    int checked = 0;
    for (const Case& c : kCases) {
        EXPECT_EQ(run(c), bytes_of(c.want)) << c.fn << " kind " << c.kind << " x " << c.x << " y " << c.y;
        ++checked;
    }
    EXPECT_GT(checked, 600);
}

}  // namespace
