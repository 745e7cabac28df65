// Descriptor services: creating arrays and sections, and the element walk
// that compiled code uses for the rare operand shapes it cannot address itself.
#include <benchmark/benchmark.h>

#include <vector>

#include "intrins.h"

namespace {

void BM_CreateArray3D(benchmark::State& state) {
    int32_t bounds[] = {0, 9, 1, 20, -5, 5};
    ArrDescChecked d{};
    for (auto _ : state) {
        f90_CreateArray(3, bounds, 8, &d.desc);
        benchmark::DoNotOptimize(d.desc.ZERO);
        f90_freespace(d.desc.BASE);
    }
}
BENCHMARK(BM_CreateArray3D);

void BM_CreateSection(benchmark::State& state) {
    int32_t bounds[] = {1, 100, 1, 100};
    ArrDescChecked a{}, s{};
    f90_CreateArray(2, bounds, 8, &a.desc);
    int32_t trip[] = {3, 99, 2, -3, 3, F90_DEFAULT_MARKER, F90_DEFAULT_MARKER, 2};
    for (auto _ : state) {
        f90_CreateSection(&a.desc, trip, &s.desc);
        benchmark::DoNotOptimize(s.desc.BASE);
    }
    f90_freespace(a.desc.BASE);
}
BENCHMARK(BM_CreateSection);

void BM_ElementWalk(benchmark::State& state) {
    const int32_t n = static_cast<int32_t>(state.range(0));
    int32_t bounds[] = {1, n, 1, n};
    ArrDescChecked a{}, s{};
    f90_CreateArray(2, bounds, 8, &a.desc);
    int32_t trip[] = {3, n, 1, -1, 3, 1, n, 2};  // reversed rows, every second column
    f90_CreateSection(&a.desc, trip, &s.desc);
    for (auto _ : state) {
        int64_t count = 0;
        for (void* p = f90_FirstElemAddr(&s.desc); p; p = f90_NextElemAddr()) ++count;
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(state.iterations() * s.desc.EXTENT);
    f90_freespace(a.desc.BASE);
}
BENCHMARK(BM_ElementWalk)->Arg(64)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
