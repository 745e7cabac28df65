// The exported multiply kernels called directly with their documented
// arguments, and the export table: internal kernels stay inside.
#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <complex>
#include <string>

#include "reference.h"
#include "support/arrays.h"

namespace {

using mmref::Fam;
using R8 = mmref::Ty<double, double, Fam::Real, 8, 64, 256, f90_matmulr8, 0>;
using C16 = mmref::Ty<double, double, Fam::Cplx, 8, 32, 128, f90_matmulc16, 0>;

// Column-major values v(i, j) = 100 i + j for the movers.
std::vector<int32_t> grid(int rows, int cols) {
    std::vector<int32_t> v(std::size_t(rows) * cols);
    for (int j = 0; j < cols; ++j)
        for (int i = 0; i < rows; ++i) v[std::size_t(j) * rows + i] = 100 * i + j;
    return v;
}

TEST(MatmulMovers, ConvertBlockGroupsFourRowsPerK) {
    auto a = grid(10, 6);  // rows 1..8 (every row), k stride 10
    std::vector<int32_t> d(8 * 3 + 1, -1);
    f90_ConvertBlockInt4(d.data(), a.data() + 1, 8, 3, 1, 10);
    for (int g = 0; g < 2; ++g)
        for (int k = 0; k < 3; ++k)
            for (int r = 0; r < 4; ++r) EXPECT_EQ(d[(g * 3 + k) * 4 + r], 100 * (1 + 4 * g + r) + k);
    EXPECT_EQ(d[24], -1);
    // Rows taken along a row stride of 2 (a transposed or strided operand), 1-byte elements.
    int8_t b[16], p[8] = {};
    for (int n = 0; n < 16; ++n) b[n] = static_cast<int8_t>(n);
    f90_ConvertBlockInt1(p, b, 4, 2, 2, 1);
    const int8_t want[8] = {0, 2, 4, 6, 1, 3, 5, 7};
    EXPECT_EQ(0, std::memcmp(p, want, 8));
}

TEST(MatmulMovers, CopyBlockLeadingDimensionIsKcount) {
    auto b = grid(5, 4);  // k along a stride of 5 (rows of the transposed view)
    std::vector<int32_t> d(7, -1);
    f90_CopyBlockInt4(d.data(), b.data(), 3, 2, 5, 1);  // 3 values of k, 2 columns
    const int32_t want[7] = {0, 1, 2, 100, 101, 102, -1};
    EXPECT_EQ(0, std::memcmp(d.data(), want, sizeof want));
    double c[6] = {1, 2, 3, 4, 5, 6}, e[7] = {0, 0, 0, 0, 0, 0, 9};
    f90_CopyBlockReal8(e, c, 3, 2, 1, 3);
    for (int n = 0; n < 6; ++n) EXPECT_EQ(e[n], c[n]);
    EXPECT_EQ(e[6], 9);
}

TEST(MatmulMovers, VectorsGatherAndClearAtStride) {
    int64_t src[11], dst[7] = {};
    for (int n = 0; n < 11; ++n) src[n] = n * 7;
    f90_CopyVectorInt8(dst, src + 10, 6, -2);  // 70, 56, ... 0: unrolled body plus tail
    for (int n = 0; n < 6; ++n) EXPECT_EQ(dst[n], 70 - 14 * n);
    EXPECT_EQ(dst[6], 0);
    double z[9];
    for (double& x : z) x = -1;
    f90_InitVectorReal8(z, 5, 2);
    for (int n = 0; n < 9; ++n) EXPECT_EQ(z[n], n % 2 == 0 ? 0.0 : -1.0) << n;
    int16_t h[3] = {5, 5, 5};
    f90_InitVectorInt2(h, 0, 1);
    f90_InitVectorInt2(h, -4, 1);
    EXPECT_EQ(h[0], 5);
    std::complex<double> cz[2] = {{1, 1}, {2, 2}};
    f90_InitVectorComplex16(cz, 1, 1);
    EXPECT_EQ(cz[0], std::complex<double>(0, 0));
    EXPECT_EQ(cz[1], std::complex<double>(2, 2));
}

// Random operands for the compute kernels and the expected element by the
// reference's own dot product.
struct Dots {
    std::mt19937_64 rng{7};
    std::vector<double> rnd(std::size_t n) {
        std::vector<double> v(n);
        for (auto& x : v) mmref::El<R8>::random(reinterpret_cast<char*>(&x), rng);
        return v;
    }
    static double dot(int n, const double* a, std::ptrdiff_t as, const double* b, std::ptrdiff_t bs) {
        double s = 0;
        for (int k = 0; k < n; ++k) {
            double p = a[k * as] * b[k * bs];
            s = s + p;
        }
        return s;
    }
};

TEST(MatmulComputeKernels, Inner2x2OnAPackedPanel) {
    Dots t;
    const int rows = 8, ncols = 5, kc = 6, lda = 11, ldb = 9, ldc = 10;
    auto A = t.rnd(lda * kc), B = t.rnd(ldb * ncols), C0 = t.rnd(ldc * ncols);
    std::vector<double> panel(rows * kc);
    f90_ConvertBlockReal8(panel.data(), A.data(), rows, kc, 1, lda);
    for (int acc : {0, 1}) {
        auto C = C0;
        f90_Inner2x2Real8(acc, rows, ncols, kc, panel.data(), B.data(), ldb, C.data(), 1, ldc);
        for (int j = 0; j < ncols; ++j)
            for (int i = 0; i < ldc; ++i) {
                double s = Dots::dot(kc, &A[i], lda, &B[std::size_t(j) * ldb], 1);
                double want = i >= rows ? C0[j * ldc + i] : acc ? C0[j * ldc + i] + s : s;
                EXPECT_EQ(C[j * ldc + i], want) << acc << " " << i << " " << j;
            }
    }
}

TEST(MatmulComputeKernels, VectorKernelsBothStridePaths) {
    Dots t;
    const int n = 7, kc = 8;
    auto A = t.rnd(3 * kc), B = t.rnd(kc * n * 3), C0 = t.rnd(3 * n);
    for (int bks : {1, n}) {  // unit k stride, then k along rows of a transposed B
        const int bcs = bks == 1 ? kc : 1;
        for (int acc : {0, 1}) {
            auto C = C0;
            f90_Inner1x2Real8(acc, n, kc, A.data(), B.data(), bks, bcs, C.data(), 2);
            auto E = C0;
            f90_Epilogue1x2Real8(acc, n, kc, A.data(), 3, B.data(), bks, bcs, E.data(), 1);
            for (int j = 0; j < n; ++j) {
                double s = Dots::dot(kc, A.data(), 1, &B[std::size_t(j) * bcs], bks);
                EXPECT_EQ(C[2 * j], acc ? C0[2 * j] + s : s);
                EXPECT_EQ(C[2 * j + 1], C0[2 * j + 1]);
                double se = Dots::dot(kc, A.data(), 3, &B[std::size_t(j) * bcs], bks);
                EXPECT_EQ(E[j], acc ? C0[j] + se : se);
            }
        }
    }
    for (int ars : {1, kc}) {  // A row stride 1, then a transposed A
        const int aks = ars == 1 ? n : 1;
        auto M = t.rnd(n * kc), x = t.rnd(2 * kc);
        for (int acc : {0, 1}) {
            auto C = C0, E = C0;
            f90_Inner2x1Real8(acc, n, kc, M.data(), ars, aks, x.data(), C.data(), 1);
            f90_Epilogue2x1Real8(acc, n, kc, M.data(), ars, aks, x.data(), 2, E.data(), 3);
            for (int i = 0; i < n; ++i) {
                double s = Dots::dot(kc, &M[std::size_t(i) * ars], aks, x.data(), 1);
                EXPECT_EQ(C[i], acc ? C0[i] + s : s);
                double se = Dots::dot(kc, &M[std::size_t(i) * ars], aks, x.data(), 2);
                EXPECT_EQ(E[3 * i], acc ? C0[3 * i] + se : se);
            }
        }
    }
}

TEST(MatmulComputeKernels, EpilogueAndComplexProducts) {
    // (1+2i)(3+4i) = -5+10i; (0+1i)(0+1i) = -1; accumulate adds to C.
    std::complex<double> a[2] = {{1, 2}, {0, 1}}, b[2] = {{3, 4}, {0, 1}}, c[1] = {{100, 100}};
    f90_Epilogue2x2Complex16(1, 1, 1, 2, a, 1, 1, b, 1, 1, c, 1, 1);
    EXPECT_EQ(c[0], std::complex<double>(94, 110));
    f90_Epilogue2x2Complex16(0, 1, 1, 2, a, 1, 1, b, 1, 1, c, 1, 1);
    EXPECT_EQ(c[0], std::complex<double>(-6, 10));
    // REAL(4): the sum is carried in double; only the store rounds.
    float fa[2] = {1.0f, 1e-8f}, fb[2] = {1.0f, 1.0f}, fc[1] = {0};
    f90_Epilogue1x2Real4(0, 1, 2, fa, 1, fb, 1, 1, fc, 1);
    EXPECT_EQ(fc[0], static_cast<float>(1.0 + static_cast<double>(1e-8f)));
    // Integers wrap in their own width.
    int8_t ia[2] = {100, 100}, ib[2] = {2, 1}, ic[1] = {0};
    f90_Epilogue2x1Int1(0, 1, 2, ia, 1, 1, ib, 1, ic, 1);
    EXPECT_EQ(ic[0], static_cast<int8_t>(300 - 256));
    int64_t la[1] = {INT64_MAX}, lb[1] = {2}, lc[1] = {1};
    f90_Epilogue2x2Int8(1, 1, 1, 1, la, 1, 1, lb, 1, 1, lc, 1, 1);
    EXPECT_EQ(lc[0], -1);
    // Old contents of C are never read when storing: a NaN there must not leak.
    double na[1] = {2}, nb[1] = {3}, nc[1] = {std::nan("")};
    f90_Epilogue2x2Real8(0, 1, 1, 1, na, 1, 1, nb, 1, 1, nc, 1, 1);
    EXPECT_EQ(nc[0], 6.0);
}

TEST(MatmulEngines, DirectCallsWithNegativeStrides) {
    // A = [1 2; 3 4] stored reversed along its rows; B identity with stride 2.
    double a[4] = {3, 1, 4, 2}, b[8] = {1, -9, 0, -9, 0, -9, 1, -9}, c[4] = {};
    f90_Engine2x2Real8(2, 2, 2, a + 1, -1, 2, b, 2, 4, c, 1, 2);
    EXPECT_EQ(c[0], 1);
    EXPECT_EQ(c[1], 3);
    EXPECT_EQ(c[2], 2);
    EXPECT_EQ(c[3], 4);
    int32_t v[3] = {1, 2, 3}, m[6] = {1, 1, 1, 2, 2, 2}, r[2] = {-1, -1};
    f90_Engine1x2Int4(2, 3, v + 2, -1, m, 1, 3, r, 1);
    EXPECT_EQ(r[0], 6);
    EXPECT_EQ(r[1], 12);
    int32_t r2[2] = {};
    f90_Engine2x1Int4(2, 3, m, 3, 1, v, 1, r2 + 1, -1);
    EXPECT_EQ(r2[1], 6);
    EXPECT_EQ(r2[0], 12);
    // Nothing is written for an empty result; K = 0 clears.
    double keep[2] = {5, 5};
    f90_Engine2x2Real8(0, 2, 3, a, 1, 2, b, 1, 2, keep, 1, 1);
    f90_Engine2x2Real8(2, -1, 3, a, 1, 2, b, 1, 2, keep, 1, 1);
    EXPECT_EQ(keep[0], 5);
    f90_Engine1x2Real8(2, 0, a, 1, b, 1, 2, keep, 1);
    EXPECT_EQ(keep[0], 0);
    EXPECT_EQ(keep[1], 0);
}

TEST(MatmulEngines, LogicalScanAnyBitStoresOne) {
    // A = [T F; F T] with odd bit patterns, B column 1 = [F T], column 2 = [F F].
    int16_t a[4] = {0x100, 0, 0, static_cast<int16_t>(0x8000)}, b[4] = {0, 4, 0, 0}, c[4] = {7, 7, 7, 7};
    f90_Engine2x2Log2(2, 2, 2, a, 1, 2, b, 1, 2, c, 1, 2);
    const int16_t want[4] = {0, 1, 0, 0};
    EXPECT_EQ(0, std::memcmp(c, want, sizeof want));
    int64_t la[2] = {0, 1LL << 40}, lb[2] = {3, 3}, lc[1] = {9};
    f90_Engine1x2Log8(1, 2, la, 1, lb, 1, 2, lc, 1);
    EXPECT_EQ(lc[0], 1);
    int8_t xa[2] = {1, 1}, xb[1] = {0}, xc[2] = {9, 9};
    f90_Engine2x1Log1(2, 0, xa, 1, 2, xb, 1, xc, 1);
    EXPECT_EQ(xc[0], 0);
    EXPECT_EQ(xc[1], 0);
}

// The shared library next to the test programs' folder.
void* open_library() {
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) return nullptr;
    std::string path(self, static_cast<std::size_t>(n));
    path = path.substr(0, path.rfind('/'));
    path = path.substr(0, path.rfind('/')) + "/libintrinsMD.so";
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

TEST(MatmulExports, InternalKernelsAreHidden) {
    void* lib = open_library();
    if (!lib) GTEST_SKIP() << "shared library not found beside the tests";
    for (const char* visible : {"f90_matmulr10", "f90_Engine2x2Real8", "f90_CopyBlockInt4", "f90_Inner1x2Real4",
                                "f90_Engine2x1Log8", "f90_InitVectorComplex16"})
        EXPECT_NE(dlsym(lib, visible), nullptr) << visible;
    for (const char* kind : {"Real10", "Real16", "Complex20", "Complex32"})
        for (const char* role : {"Engine2x2", "Engine1x2", "Engine2x1", "Inner2x2", "Inner1x2", "Inner2x1",
                                 "Epilogue2x2", "Epilogue1x2", "Epilogue2x1", "ConvertBlock", "CopyBlock",
                                 "CopyVector", "InitVector"}) {
            std::string name = std::string("f90_") + role + kind;
            EXPECT_EQ(dlsym(lib, name.c_str()), nullptr) << name;
        }
    for (const char* hidden : {"f90_ConvertBlockReal4", "f90_CopyVectorReal4", "f90_Inner2x2Log1", "f90_CopyBlockLog4"})
        EXPECT_EQ(dlsym(lib, hidden), nullptr) << hidden;
    dlclose(lib);
}

}  // namespace
