// RANDOM_NUMBER's array forms against GNU Fortran's RANDOM_NUMBER on the same
// arrays, in one run: 10^8 values (the Monte Carlo case), and 10^4 values
// that stay in the first-level cache.  Items are values, so items per second
// compare directly.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "intrins.h"

extern "C" void peer_random_r8(double* a, int32_t n);
extern "C" void peer_random_r4(float* a, int32_t n);

namespace {

template <class T>
std::vector<T>& buffer(int64_t n) {
    static std::vector<T> b;
    if (static_cast<int64_t>(b.size()) < n) b.assign(n, T{});  // touched before timing
    return b;
}

template <class T, void (*Fill)(T*, int32_t)>
void BM_Fill(benchmark::State& state) {
    const int32_t n = static_cast<int32_t>(state.range(0));
    std::vector<T>& b = buffer<T>(n);
    for (auto _ : state) {
        Fill(b.data(), n);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

struct Slot16 {
    unsigned char bytes[16];
};
void lib_r10(Slot16* p, int32_t n) { f90_randnum10a(p, n); }
void lib_r16(Slot16* p, int32_t n) { f90_randnum16a(p, n); }

}  // namespace

BENCHMARK(BM_Fill<double, f90_randnum8a>)->Name("randnum8a/lib")->Arg(100000000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fill<double, peer_random_r8>)->Name("randnum8a/gfortran")->Arg(100000000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fill<float, f90_randnum4a>)->Name("randnum4a/lib")->Arg(100000000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fill<float, peer_random_r4>)->Name("randnum4a/gfortran")->Arg(100000000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fill<Slot16, lib_r10>)->Name("randnum10a/lib")->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Fill<Slot16, lib_r16>)->Name("randnum16a/lib")->Arg(10000)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
