// Long contiguous vectors, where the vector loops of MAXVAL, MINVAL, MAXLOC,
// MINLOC and integer SUM run, against the ordered definition: the results
// must be bit-identical, also with NaNs, signed zeros, ties and values equal
// to the start value placed around the vector and chunk boundaries.
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "reduce_support.h"

namespace rtest {
namespace {

template <class T, bool Max>
bool beats(T x, T m) {
    return Max ? x > m : !(x >= m);
}
template <class T, bool Max>
T start() {
    if constexpr (std::is_floating_point_v<T>) return Max ? -std::numeric_limits<T>::max() : std::numeric_limits<T>::max();
    else return Max ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
}

// MAXVAL/MINVAL of a contiguous vector: first element, then last to second.
template <class T, bool Max>
T ref_val(const std::vector<T>& v) {
    if (v.empty()) return start<T, Max>();
    T m = v[0];
    for (size_t i = v.size() - 1; i >= 1; --i)
        if (beats<T, Max>(v[i], m)) m = v[i];
    return m;
}
// MAXLOC/MINLOC: start value, position one past the end.
template <class T, bool Max>
int32_t ref_loc(const std::vector<T>& v) {
    T m = start<T, Max>();
    int32_t pos = static_cast<int32_t>(v.size()) + 1;
    for (size_t i = 0; i < v.size(); ++i)
        if (beats<T, Max>(v[i], m)) {
            m = v[i];
            pos = static_cast<int32_t>(i) + 1;
        }
    return v.empty() ? 0 : pos;
}

template <class T, bool Max>
void check_one(const std::vector<T>& v, void (*val)(ArgList*), void (*loc)(ArgList*), const char* what) {
    Array a({{1, static_cast<int32_t>(v.size())}}, sizeof(T));
    if (!v.empty()) std::memcpy(a.data(), v.data(), v.size() * sizeof(T));
    Array r(sizeof(T));
    val(Red(a).into(r));
    T got;
    std::memcpy(&got, r.data(), sizeof got);
    EXPECT_EQ(bits_of(got), bits_of((ref_val<T, Max>(v)))) << what << " n=" << v.size();
    Red l(a);
    loc(l);
    EXPECT_EQ(l.at<int32_t>(0), (ref_loc<T, Max>(v))) << what << " n=" << v.size();
}

template <class T>
std::vector<std::vector<T>> vectors() {
    std::mt19937 rng(7);
    std::vector<std::vector<T>> out;
    const int sizes[] = {1, 7, 8, 9, 15, 16, 17, 33, 64, 65, 2047, 2048, 2049, 4500};
    for (int n : sizes) {
        for (int variant = 0; variant < 6; ++variant) {
            std::vector<T> v(n);
            for (auto& x : v) x = static_cast<T>(static_cast<int>(rng() % 200) - 100);
            int at = static_cast<int>(rng() % n);
            if (variant == 1) v[at] = v[n - 1 - at] = static_cast<T>(150);         // tie at two places
            if (variant == 2) for (auto& x : v) x = start<T, true>();                // all equal to MAXLOC's start
            if (variant == 3) for (auto& x : v) x = start<T, false>();
            if constexpr (std::is_floating_point_v<T>) {
                if (variant == 4) v[at] = std::numeric_limits<T>::quiet_NaN();
                if (variant == 5) {
                    for (auto& x : v) x = -std::abs(x) - 1;
                    v[at] = -0.0;
                    v[(at * 7) % n] = 0.0;
                    v[0] = rng() % 2 ? std::numeric_limits<T>::quiet_NaN() : v[0];
                }
            }
            out.push_back(v);
        }
    }
    out.push_back({});
    return out;
}

TEST(LongVectors, ExtremesAndLocations) {
    for (auto& v : vectors<double>()) {
        check_one<double, true>(v, f90_maxvalr8, f90_maxlocr8, "r8 max");
        check_one<double, false>(v, f90_minvalr8, f90_minlocr8, "r8 min");
    }
    for (auto& v : vectors<float>()) {
        check_one<float, true>(v, f90_maxvalr4, f90_maxlocr4, "r4 max");
        check_one<float, false>(v, f90_minvalr4, f90_minlocr4, "r4 min");
    }
    for (auto& v : vectors<int32_t>()) {
        check_one<int32_t, true>(v, f90_maxvali4, f90_maxloci4, "i4 max");
        check_one<int32_t, false>(v, f90_minvali4, f90_minloci4, "i4 min");
    }
    for (auto& v : vectors<int8_t>()) check_one<int8_t, true>(v, f90_maxvali1, f90_maxloci1, "i1 max");
    for (auto& v : vectors<int16_t>()) check_one<int16_t, false>(v, f90_minvali2, f90_minloci2, "i2 min");
    for (auto& v : vectors<int64_t>()) check_one<int64_t, true>(v, f90_maxvali8, f90_maxloci8, "i8 max");
}

// SUM, MAXLOC and MAXVAL along DIM=2 of a wide matrix: more rows than one
// block of result elements and a DIM extent that leaves a tail after the
// groups of columns.  Each result element must see its row in DIM order:
// the sums mix magnitudes so that another order gives other bits, and the
// locations have ties, where the first one must win.
TEST(LongDim, RowsKeepTheirOrderAcrossBlocksAndGroups) {
    std::mt19937 rng(5);
    const double mags[] = {1e16, -1e16, 1.0, 3.0, -0.5, 2.5};
    for (int cols : {1, 4, 5, 11}) {
        const int rows = 2048 + 37;
        Array a({{1, rows}, {1, cols}}, 8), ties({{1, rows}, {1, cols}}, 8), m({{1, rows}, {1, cols}}, 4);
        for (int i = 0; i < rows * cols; ++i) {
            a.at<double>(i) = mags[rng() % 6];
            ties.at<double>(i) = static_cast<double>(rng() % 3);
            m.at<int32_t>(i) = rng() % 10 < 7;
        }
        for (bool masked : {false, true}) {
            Red sum(a), loc(ties), val(ties);
            if (masked) sum.mask(m), loc.mask(m), val.mask(m);
            f90_sumr8(sum.dim(2));
            f90_maxlocr8(loc.dim(2));
            f90_maxvalr8(val.dim(2));
            for (int i = 0; i < rows; ++i) {
                double s = 0, v = -std::numeric_limits<double>::max();
                int32_t pos = 0;
                for (int k = 0; k < cols; ++k) {
                    if (masked && !m.at<int32_t>(i + rows * k)) continue;
                    s += a.at<double>(i + rows * k);
                    double x = ties.at<double>(i + rows * k);
                    if (pos == 0 || x > v) {
                        v = x;
                        pos = k + 1;
                    }
                }
                ASSERT_EQ(bits_of(sum.at<double>(i)), bits_of(s)) << cols << masked << " row " << i;
                ASSERT_EQ(loc.at<int32_t>(i), pos) << cols << masked << " row " << i;
                ASSERT_EQ(val.at<double>(i), v) << cols << masked << " row " << i;
            }
        }
    }
}

TEST(LongVectors, IntegerSumsAndMaskedRealSum) {
    std::mt19937 rng(11);
    for (int n : {1, 31, 32, 33, 1000, 4099}) {
        Array a({{1, n}}, 4), b({{1, n}}, 8), d({{1, n}}, 8), m({{1, n}}, 4);
        uint32_t s4 = 0;
        uint64_t s8 = 0;
        double sd = 0, pd = 1;
        for (int i = 0; i < n; ++i) {
            int32_t x = static_cast<int32_t>(rng());
            int64_t y = (static_cast<int64_t>(rng()) << 32) | rng();
            double z = i % 17 == 3 ? -0.0 : (static_cast<double>(rng() % 1000) - 500) / 7;
            int32_t k = rng() % 2 ? static_cast<int32_t>(rng() | 1) : 0;
            a.at<int32_t>(i) = x;
            b.at<int64_t>(i) = y;
            d.at<double>(i) = z;
            m.at<int32_t>(i) = k;
            s4 += static_cast<uint32_t>(x);
            s8 += static_cast<uint64_t>(y);
            if (k) {
                sd += z;
                pd *= (z == 0 ? 1 : z / 64);
            }
        }
        Array r4(4), r8(8);
        f90_sumi4(Red(a).into(r4));
        EXPECT_EQ(r4.at<uint32_t>(0), s4);
        f90_sumi8(Red(b).into(r8));
        EXPECT_EQ(r8.at<uint64_t>(0), s8);
        f90_sumr8(Red(d).mask(m).into(r8));
        EXPECT_EQ(bits_of(r8.at<double>(0)), bits_of(sd)) << n;
        for (int i = 0; i < n; ++i)
            if (d.at<double>(i) == 0) d.at<double>(i) = 1;
            else d.at<double>(i) /= 64;
        f90_prodr8(Red(d).mask(m).into(r8));
        EXPECT_EQ(bits_of(r8.at<double>(0)), bits_of(pd)) << n;
    }
}

}  // namespace
}  // namespace rtest

namespace rtest {
namespace {

// COUNT of long LOGICAL(4) and LOGICAL(8) vectors (the vector loop), with
// true values that set only one high bit, around the vector boundaries.
TEST(LongVectors, CountOfWideLogicals) {
    std::mt19937 rng(5);
    for (int n : {0, 1, 7, 8, 31, 32, 33, 63, 1000, 4099}) {
        Array l4({{1, n}}, 4), l8({{1, n}}, 8);
        uint32_t want4 = 0, want8 = 0;
        for (int i = 0; i < n; ++i) {
            uint32_t r = rng();
            int32_t x = r % 3 == 0 ? 0 : static_cast<int32_t>(1u << (r % 32));
            int64_t y = r % 5 == 0 ? 0 : static_cast<int64_t>(1ull << (r % 64));
            l4.at<int32_t>(i) = x;
            l8.at<int64_t>(i) = y;
            want4 += x != 0;
            want8 += y != 0;
        }
        Array c4(4), c8(4);
        f90_count4(Red(l4).into(c4));
        EXPECT_EQ(c4.at<uint32_t>(0), want4) << n;
        f90_count8(Red(l8).into(c8));
        EXPECT_EQ(c8.at<uint32_t>(0), want8) << n;
    }
}

}  // namespace
}  // namespace rtest
