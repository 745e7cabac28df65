// MATMUL drivers of all sixteen kinds against the naive reference, bit for
// bit: matrix x matrix, vector x matrix and matrix x vector over sizes around
// every block boundary, strided operands, lower bounds other than 1, supplied
// (and strided) results whose old contents must not leak.
#include <tuple>

#include "reference.h"
#include "support/arrays.h"

namespace {

using namespace mmref;
using testutil::Args;
using testutil::Array;
using testutil::Section;
using testutil::tri;

template <class T>
class MatmulKinds : public ::testing::Test {};

// clang-format off
using Kinds = ::testing::Types<
    Ty<int8_t, int8_t, Fam::Int, 1, 128, 1536, f90_matmuli1, 0>,
    Ty<int16_t, int16_t, Fam::Int, 2, 64, 512, f90_matmuli2, 0>,
    Ty<int32_t, int32_t, Fam::Int, 4, 64, 256, f90_matmuli4, 0>,
    Ty<int64_t, int64_t, Fam::Int, 8, 64, 256, f90_matmuli8, 0>,
    Ty<int8_t, int8_t, Fam::Log, 1, 1, 1, f90_matmull1, 0>,
    Ty<int16_t, int16_t, Fam::Log, 2, 1, 1, f90_matmull2, 0>,
    Ty<int32_t, int32_t, Fam::Log, 4, 1, 1, f90_matmull4, 0>,
    Ty<int64_t, int64_t, Fam::Log, 8, 1, 1, f90_matmull8, 0>,
    Ty<float, double, Fam::Real, 4, 64, 512, f90_matmulr4, 0>,
    Ty<double, double, Fam::Real, 8, 64, 256, f90_matmulr8, 0>,
    Ty<long double, long double, Fam::Real, 16, 32, 128, f90_matmulr10, 0>,
    Ty<__float128, __float128, Fam::Real, 16, 32, 128, f90_matmulr16, 0>,
    Ty<float, double, Fam::Cplx, 4, 32, 256, f90_matmulc8, 0>,
    Ty<double, double, Fam::Cplx, 8, 32, 128, f90_matmulc16, 0>,
    Ty<long double, long double, Fam::Cplx, 16, 32, 128, f90_matmulc20, 0>,
    Ty<__float128, __float128, Fam::Cplx, 16, 32, 128, f90_matmulc32, 0>>;
// clang-format on
TYPED_TEST_SUITE(MatmulKinds, Kinds);

// An operand: a backing array with lower bounds `lo`, optionally viewed
// through a section that takes every second row or column.
template <class T>
struct Operand {
    std::unique_ptr<Array> arr;
    std::unique_ptr<Section> sec;
    ArrDesc* d = nullptr;
    Operand(std::vector<int> ext, int lo, int stride_dim, std::mt19937_64& rng) {
        std::vector<int> back = ext;
        if (stride_dim >= 0) back[stride_dim] = 2 * ext[stride_dim] + 1;
        if (back.size() == 1) arr = std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{{lo, lo + back[0] - 1}}, T::size);
        else arr = std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{{lo, lo + back[0] - 1}, {lo + 1, lo + back[1]}}, T::size);
        for (int n = 0; n < arr->size(); ++n) El<T>::random(arr->data() + std::size_t(n) * T::size, rng);
        d = arr->desc();
        if (stride_dim >= 0) {
            auto t = [&](int dm) {
                int l = d->DIM[dm].LOWER;
                return dm == stride_dim ? tri(l + 1, l + 2 * ext[dm], 2) : tri(l, d->DIM[dm].UPPER);
            };
            sec = back.size() == 1 ? std::make_unique<Section>(*arr, std::initializer_list<testutil::Sub>{t(0)})
                                   : std::make_unique<Section>(*arr, std::initializer_list<testutil::Sub>{t(0), t(1)});
            d = sec->desc();
        }
    }
    char* elem(int i, int j = 0) {  // 0-based logical subscripts
        std::intptr_t off = std::intptr_t(i + d->DIM[0].LOWER) * d->DIM[0].STRIDE;
        if (d->RANK == 2) off += std::intptr_t(j + d->DIM[1].LOWER) * d->DIM[1].STRIDE;
        return d->ZERO + off * d->SCALEFACTOR;
    }
    Mat plain(int rows, int cols, bool vector) {
        Mat m(rows, cols, T::size);
        for (int j = 0; j < cols; ++j)
            for (int i = 0; i < rows; ++i)
                std::memcpy(m.at(i, j), vector ? elem(i + j) : elem(i, j), T::size);
        return m;
    }
};

enum Form { MxM, VxM, MxV };

template <int N>
std::string hex_bytes(const char* p) {
    std::string s;
    char b[4];
    for (int n = N - 1; n >= 0; --n) std::snprintf(b, sizeof b, "%02x", static_cast<unsigned char>(p[n])), s += b;
    return s;
}

// Runs one product through the driver and compares every element with the
// reference.  res_stride >= 0: a supplied result (every second column or
// element when 1), filled with all-ones bytes that must not leak.
template <class T>
void check_product(Form form, int M, int N, int K, int lo, int a_stride, int b_stride, int res_mode,
                   uint64_t seed) {
    SCOPED_TRACE(::testing::Message() << "form " << form << " M " << M << " N " << N << " K " << K << " lo " << lo
                                      << " strides " << a_stride << b_stride << " result " << res_mode);
    std::mt19937_64 rng(seed);
    Operand<T> a(form == VxM ? std::vector<int>{K} : std::vector<int>{M, K}, lo, a_stride, rng);
    Operand<T> b(form == MxV ? std::vector<int>{K} : std::vector<int>{K, N}, -lo, b_stride, rng);
    Mat pa = form == VxM ? a.plain(1, K, true) : a.plain(M, K, false);
    Mat pb = form == MxV ? b.plain(K, 1, true) : b.plain(K, N, false);
    Mat want(form == VxM ? 1 : M, form == MxV ? 1 : N, T::size);
    const int kb = form == MxM ? T::kblk : T::chunk, split = form == VxM ? 4 : 2;
    reference<T>(pa, pb, want, T::fam == Fam::Log ? 1 : kb, split);

    const int r0 = form == VxM ? N : M, r1 = form == MxM ? N : 1;
    std::unique_ptr<Array> res;
    std::unique_ptr<Section> rsec;
    testutil::Desc fresh;
    ArrDesc* rd = fresh.get();
    Args args;
    if (res_mode >= 0) {
        if (form == MxM) res = std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{{3, 2 + r0}, {0, (res_mode ? 2 * r1 : r1) - 1}}, T::size);
        else res = std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{{3, 2 + (res_mode ? 2 * r0 : r0)}}, T::size);
        std::memset(res->data(), 0xff, std::size_t(res->size()) * T::size);
        rd = res->desc();
        if (res_mode) {
            rsec = form == MxM ? std::make_unique<Section>(*res, std::initializer_list<testutil::Sub>{tri(3, 2 + r0), tri(0, 2 * r1 - 1, 2)})
                               : std::make_unique<Section>(*res, std::initializer_list<testutil::Sub>{tri(3, 2 + 2 * r0, 2)});
            rd = rsec->desc();
        }
        args.presence(F90_PRESENT_RESULT);
    }
    args.addr(0, rd).addr(1, a.d).addr(2, b.d).check();
    T::run(args.get());

    ASSERT_EQ(rd->RANK, form == MxM ? 2 : 1);
    if (res_mode < 0) {
        EXPECT_EQ(rd->ELSIZE, T::size);
        EXPECT_EQ(rd->DIM[0].LOWER, 1);
        EXPECT_EQ(rd->EXTENT, r0 * r1);
    }
    auto hex = [](const char* p) { return hex_bytes<T::size>(p); };
    int bad = 0;
    for (int j = 0; j < r1; ++j)
        for (int i = 0; i < r0; ++i) {
            std::intptr_t off = std::intptr_t(i + rd->DIM[0].LOWER) * rd->DIM[0].STRIDE;
            if (form == MxM) off += std::intptr_t(j + rd->DIM[1].LOWER) * rd->DIM[1].STRIDE;
            const char* got = rd->ZERO + off * T::size;
            const char* exp = form == VxM ? want.at(0, i) : want.at(i, j);
            if (!El<T>::same(got, exp) && ++bad <= 3)
                ADD_FAILURE() << "element (" << i << ", " << j << ") differs: " << hex(got) << " want " << hex(exp);
        }
    if (res_mode == 1) {  // the skipped columns or elements keep their old bytes
        for (int n = 0; n < res->size(); ++n) {
            bool skipped = form == MxM ? (n / r0) % 2 == 1 : n % 2 == 1;
            if (skipped) {
                EXPECT_EQ(static_cast<unsigned char>(res->data()[std::size_t(n) * T::size]), 0xffu) << n;
            }
        }
    }
    EXPECT_EQ(bad, 0);
}

TYPED_TEST(MatmulKinds, MatrixTimesMatrixAroundBlockEdges) {
    const int small[] = {0, 1, 3, 4, 7, 8, 13};
    uint64_t seed = 1;
    for (int M : small)
        for (int N : small)
            for (int K : small) check_product<TypeParam>(MxM, M, N, K, 1, -1, -1, -1, seed++);
    const std::tuple<int, int, int> big[] = {{63, 64, 65}, {65, 63, 64}, {64, 65, 127}, {127, 13, 129},
                                             {129, 7, 63},  {13, 129, 33}, {8, 3, 200},  {33, 97, 31}};
    for (auto [M, N, K] : big) check_product<TypeParam>(MxM, M, N, K, 1, -1, -1, -1, seed++);
}

TYPED_TEST(MatmulKinds, VectorProductsAroundChunkEdges) {
    const int ks[] = {0, 1, 3, 4, 7, 8, 13, 63, 64, 65, 127, 128, 129, 255, 256, 257, 515, 1539};
    uint64_t seed = 100;
    for (int K : ks) {
        check_product<TypeParam>(VxM, 1, 7, K, 1, -1, -1, -1, seed++);
        check_product<TypeParam>(MxV, 13, 1, K, 1, -1, -1, -1, seed++);
    }
    for (int n : {0, 1, 4, 5, 17, 65}) {
        check_product<TypeParam>(VxM, 1, n, 70, 1, -1, -1, -1, seed++);
        check_product<TypeParam>(MxV, n, 1, 70, 1, -1, -1, -1, seed++);
    }
}

TYPED_TEST(MatmulKinds, StridedOperandsBoundsAndSuppliedResults) {
    uint64_t seed = 500;
    for (int sa : {-1, 0, 1})
        for (int sb : {-1, 0, 1}) {
            check_product<TypeParam>(MxM, 13, 9, 67, -3, sa, sb, sa == sb ? 1 : 0, seed++);
            check_product<TypeParam>(MxM, 65, 5, 33, 4, sa, sb, -1, seed++);
        }
    for (int s : {-1, 0}) {
        check_product<TypeParam>(VxM, 1, 11, 37, 2, s, 1, 1, seed++);
        check_product<TypeParam>(VxM, 1, 6, 300, -7, s, 0, 0, seed++);
        check_product<TypeParam>(MxV, 9, 1, 37, 5, 1, s, 1, seed++);
        check_product<TypeParam>(MxV, 21, 1, 300, 0, 0, s, 0, seed++);
    }
}

TYPED_TEST(MatmulKinds, EmptyAndZeroK) {
    uint64_t seed = 900;
    check_product<TypeParam>(MxM, 5, 4, 0, 1, -1, -1, 0, seed++);  // all zeros over 0xff bytes
    check_product<TypeParam>(MxM, 0, 4, 6, 1, -1, -1, 0, seed++);
    check_product<TypeParam>(MxM, 4, 0, 6, 1, -1, -1, -1, seed++);
    check_product<TypeParam>(VxM, 1, 6, 0, 1, -1, -1, 0, seed++);
    check_product<TypeParam>(MxV, 6, 1, 0, 1, -1, -1, 0, seed++);
    // K = 0 with B's columns taken backwards from a one-row array: B's
    // first element lies at its ZERO, which is null.
    Array a({{1, 5}, {1, 1}}, TypeParam::size), b({{1, 1}, {1, 300}}, TypeParam::size);
    Section sa(a, {tri(1, 5), tri(1, 0)}), sb(b, {tri(1, 0), tri(300, 1, -1)});
    testutil::Desc r;
    Args args;
    args.addr(0, r.get()).addr(1, sa.desc()).addr(2, sb.desc()).check();
    TypeParam::run(args.get());
    ASSERT_EQ(r->EXTENT, 1500);
    const std::vector<char> zero(TypeParam::size);
    for (int n = 0; n < 1500; ++n) EXPECT_TRUE(El<TypeParam>::same(r->BASE + n * TypeParam::size, zero.data())) << n;
    f90_freespace(r->BASE);
}

}  // namespace
