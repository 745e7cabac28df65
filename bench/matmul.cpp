// MATMUL against GNU Fortran's MATMUL and OpenBLAS (single thread), square
// sizes; counters give GFLOP/s (2 n^3 real, 8 n^3 complex operations).
// Matrix x vector and vector x matrix are also compared with one plain read
// of the matrix.
#include <benchmark/benchmark.h>

#include <chrono>

#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "intrins.h"

extern "C" {
void gf_matmul_r8(int, int, int, const void*, const void*, void*);
void gf_matmul_r4(int, int, int, const void*, const void*, void*);
void gf_matmul_c16(int, int, int, const void*, const void*, void*);
void gf_matmul_i4(int, int, int, const void*, const void*, void*);
void gf_matmul_r10(int, int, int, const void*, const void*, void*);
void gf_matmul_r16(int, int, int, const void*, const void*, void*);
void gf_matvec_r8(int, int, const void*, const void*, void*);
void gf_vecmat_r8(int, int, const void*, const void*, void*);
#ifdef HAVE_OPENBLAS
void dgemm_(const char*, const char*, const int*, const int*, const int*, const double*, const double*, const int*,
            const double*, const int*, const double*, double*, const int*);
void sgemm_(const char*, const char*, const int*, const int*, const int*, const float*, const float*, const int*,
            const float*, const int*, const float*, float*, const int*);
void zgemm_(const char*, const char*, const int*, const int*, const int*, const void*, const void*, const int*,
            const void*, const int*, const void*, void*, const int*);
void openblas_set_num_threads(int);
#endif
}

namespace {

// A column-major rows x cols matrix of `size`-byte elements with its descriptor.
struct Matrix {
    std::vector<char> data;
    ArrDesc d{};
    Matrix(int rows, int cols, int size, bool vector = false) : data(std::size_t(rows) * cols * size + 64) {
        d.BASE = d.ZERO = data.data();
        d.ELSIZE = d.SCALEFACTOR = size;
        d.RANK = vector ? 1 : 2;
        d.DIM[0] = {1, vector ? rows * cols : rows, 1};
        d.DIM[1] = {1, cols, rows};
        d.ZERO = d.BASE - std::ptrdiff_t(vector ? 1 : 1 + rows) * size;
        d.EXTENT = rows * cols;
    }
    template <class T>
    void fill(T (*gen)(std::mt19937_64&)) {
        std::mt19937_64 rng(data.size());
        for (std::size_t i = 0; i + d.ELSIZE <= data.size() - 64; i += d.ELSIZE) {
            T v = gen(rng);
            std::memcpy(&data[i], &v, sizeof v);
        }
    }
};

template <class T>
T small(std::mt19937_64& r) {
    return static_cast<T>(double(int(r() % 64) - 32) / 8.0);
}
std::complex<double> small_c(std::mt19937_64& r) { return {small<double>(r), small<double>(r)}; }
int32_t small_i(std::mt19937_64& r) { return int32_t(r() % 200) - 100; }

enum Kind { R8, R4, C16, I4, R10, R16 };
struct KindInfo {
    int size;
    void (*ours)(ArgList*);
    void (*gf)(int, int, int, const void*, const void*, void*);
    double flops_per_mac;
};
const KindInfo kinds[] = {{8, f90_matmulr8, gf_matmul_r8, 2},   {4, f90_matmulr4, gf_matmul_r4, 2},
                          {16, f90_matmulc16, gf_matmul_c16, 8}, {4, f90_matmuli4, gf_matmul_i4, 2},
                          {16, f90_matmulr10, gf_matmul_r10, 2}, {16, f90_matmulr16, gf_matmul_r16, 2}};

void fill_kind(Matrix& m, Kind k) {
    switch (k) {
    case R8: m.fill<double>(small<double>); break;
    case R4: m.fill<float>(small<float>); break;
    case C16: m.fill<std::complex<double>>(small_c); break;
    case I4: m.fill<int32_t>(small_i); break;
    case R10: m.fill<long double>(small<long double>); break;
    case R16: m.fill<__float128>(small<__float128>); break;
    }
}

enum Impl { Ours, GFortran, OpenBLAS };

void BM_Square(benchmark::State& state, Kind kind, Impl impl) {
    const int n = int(state.range(0));
    const KindInfo& k = kinds[kind];
    Matrix a(n, n, k.size), b(n, n, k.size), c(n, n, k.size);
    fill_kind(a, kind);
    fill_kind(b, kind);
    ArgList args{};
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    args.Result.w[0] = reinterpret_cast<F90Word>(&c.d);
    args.ARG1.w[0] = reinterpret_cast<F90Word>(&a.d);
    args.ARG2.w[0] = reinterpret_cast<F90Word>(&b.d);
    for (auto _ : state) {
        if (impl == Ours) k.ours(&args);
        else if (impl == GFortran) k.gf(n, n, n, a.data.data(), b.data.data(), c.data.data());
#ifdef HAVE_OPENBLAS
        else {
            const char t = 'N';
            if (kind == R8) {
                const double one = 1, zero = 0;
                dgemm_(&t, &t, &n, &n, &n, &one, (double*)a.data.data(), &n, (double*)b.data.data(), &n, &zero,
                       (double*)c.data.data(), &n);
            } else if (kind == R4) {
                const float one = 1, zero = 0;
                sgemm_(&t, &t, &n, &n, &n, &one, (float*)a.data.data(), &n, (float*)b.data.data(), &n, &zero,
                       (float*)c.data.data(), &n);
            } else {
                const std::complex<double> one = 1, zero = 0;
                zgemm_(&t, &t, &n, &n, &n, &one, a.data.data(), &n, b.data.data(), &n, &zero, c.data.data(), &n);
            }
        }
#endif
        benchmark::DoNotOptimize(c.data.data());
        benchmark::ClobberMemory();
    }
    state.counters["GFLOPs"] =
        benchmark::Counter(k.flops_per_mac * double(n) * n * n * double(state.iterations()), benchmark::Counter::kIsRate,
                           benchmark::Counter::kIs1000);
}

// One read of `words` 8-byte words (combined with OR, vectorized).
[[gnu::noinline]] uint64_t read_once(const char* p, std::size_t words) {
    uint64_t acc[8] = {};
    for (std::size_t i = 0; i + 8 <= words; i += 8)
        for (int l = 0; l < 8; ++l) {
            uint64_t w;
            std::memcpy(&w, p + (i + l) * 8, 8);
            acc[l] |= w;
        }
    return acc[0] | acc[1] | acc[2] | acc[3] | acc[4] | acc[5] | acc[6] | acc[7];
}

// Matrix x vector (form 0) and vector x matrix (form 1), REAL(8).  Each
// iteration first reads the matrix once and then multiplies, and only the
// product is timed; "x_read" is the product's time over the read's, both
// taken under the same conditions (the host's memory bandwidth drifts).
void BM_Vector(benchmark::State& state, int form, Impl impl) {
    using Clock = std::chrono::steady_clock;
    const int n = int(state.range(0));
    Matrix a(n, n, 8), x(n, 1, 8, true), y(n, 1, 8, true);
    a.fill<double>(small<double>);
    x.fill<double>(small<double>);
    ArgList args{};
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    args.Result.w[0] = reinterpret_cast<F90Word>(&y.d);
    args.ARG1.w[0] = reinterpret_cast<F90Word>(form == 0 ? &a.d : &x.d);
    args.ARG2.w[0] = reinterpret_cast<F90Word>(form == 0 ? &x.d : &a.d);
    double product = 0, read = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        benchmark::DoNotOptimize(read_once(a.data.data(), std::size_t(n) * n));
        const auto t1 = Clock::now();
        if (impl == Ours) f90_matmulr8(&args);
        else if (form == 0) gf_matvec_r8(n, n, a.data.data(), x.data.data(), y.data.data());
        else gf_vecmat_r8(n, n, x.data.data(), a.data.data(), y.data.data());
        benchmark::DoNotOptimize(y.data.data());
        benchmark::ClobberMemory();
        const auto t2 = Clock::now();
        const double p = std::chrono::duration<double>(t2 - t1).count();
        state.SetIterationTime(p);
        product += p;
        read += std::chrono::duration<double>(t1 - t0).count();
    }
    state.counters["GFLOPs"] = 2.0 * n * n * double(state.iterations()) / product / 1e9;
    state.counters["x_read"] = product / read;
}

// One read of an n x n REAL(8) matrix.
void BM_ReadMatrixOnce(benchmark::State& state) {
    const int n = int(state.range(0));
    Matrix a(n, n, 8);
    a.fill<double>(small<double>);
    for (auto _ : state) benchmark::DoNotOptimize(read_once(a.data.data(), std::size_t(n) * n));
}

#define SQUARE(kind, impl, ...) BENCHMARK_CAPTURE(BM_Square, kind##_##impl, kind, impl)->Unit(benchmark::kMillisecond)->ArgsProduct({{__VA_ARGS__}})
SQUARE(R8, Ours, 4, 8, 16, 32, 64, 256, 1000, 2000);
SQUARE(R8, GFortran, 4, 8, 16, 32, 64, 256, 1000, 2000);
SQUARE(R4, Ours, 8, 32, 64, 256, 1000, 2000);
SQUARE(R4, GFortran, 8, 32, 64, 256, 1000, 2000);
SQUARE(C16, Ours, 8, 32, 64, 256, 1000);
SQUARE(C16, GFortran, 8, 32, 64, 256, 1000);
SQUARE(I4, Ours, 8, 32, 64, 256, 1000);
SQUARE(I4, GFortran, 8, 32, 64, 256, 1000);
SQUARE(R10, Ours, 8, 64, 256);
SQUARE(R10, GFortran, 8, 64, 256);
SQUARE(R16, Ours, 8, 64, 128);
SQUARE(R16, GFortran, 8, 64, 128);
#ifdef HAVE_OPENBLAS
SQUARE(R8, OpenBLAS, 64, 256, 1000, 2000);
SQUARE(R4, OpenBLAS, 64, 256, 1000, 2000);
SQUARE(C16, OpenBLAS, 64, 256, 1000);
#endif
BENCHMARK_CAPTURE(BM_Vector, MatVec_Ours, 0, Ours)->Arg(2000)->Arg(4000)->Unit(benchmark::kMicrosecond)->UseManualTime();
BENCHMARK_CAPTURE(BM_Vector, MatVec_GFortran, 0, GFortran)->Arg(2000)->Arg(4000)->Unit(benchmark::kMicrosecond)->UseManualTime();
BENCHMARK_CAPTURE(BM_Vector, VecMat_Ours, 1, Ours)->Arg(2000)->Arg(4000)->Unit(benchmark::kMicrosecond)->UseManualTime();
BENCHMARK_CAPTURE(BM_Vector, VecMat_GFortran, 1, GFortran)->Arg(2000)->Arg(4000)->Unit(benchmark::kMicrosecond)->UseManualTime();
BENCHMARK(BM_ReadMatrixOnce)->Arg(2000)->Arg(4000)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
#ifdef HAVE_OPENBLAS
    openblas_set_num_threads(1);
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
