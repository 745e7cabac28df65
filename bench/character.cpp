// Character intrinsics on long strings, side by side with GNU Fortran's
// runtime (bench/peers/character_peers.f90): INDEX forward and backward in
// text and in a run of one letter, SCAN, VERIFY and LEN_TRIM.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <string>

#include "intrins.h"

// which: 1 INDEX, 2 SCAN, 3 VERIFY, 4 LEN_TRIM; lengths follow as hidden arguments.
extern "C" void character_peer_(const int* which, const char* s, const char* t, const int* back, int* r,
                                std::size_t ls, std::size_t lt);

namespace {

// Text of words; the needle stands once, near the far end for the direction.
std::string text(std::size_t n, const std::string& needle, bool back) {
    std::mt19937 gen(3);
    std::string s(n, ' ');
    for (char& c : s) c = "etaoinshrdlu  "[gen() % 14];
    std::memcpy(&s[back ? 16 : n - needle.size() - 16], needle.data(), needle.size());
    return s;
}

using LibFn = void (*)(ArgList*);

int32_t lib_call(LibFn f, const std::string& s, const std::string& t, int back) {
    ArgList a{};
    a.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
    a.ARG1.w[0] = reinterpret_cast<F90Word>(s.data()), a.ARG1.w[1] = s.size();
    a.ARG2.w[0] = reinterpret_cast<F90Word>(t.data()), a.ARG2.w[1] = t.size();
    a.ARG3.w[0] = static_cast<F90Word>(back);
    f(&a);
    return static_cast<int32_t>(a.Result.w[0]);
}

// state.range(0): length; range(1): 0 library, 1 peer; range(2): BACK.
// The peer gets the same operands through its own calling convention.
template <LibFn Lib, int Peer>
void run(benchmark::State& state, const std::string& s, const std::string& t) {
    const int back = static_cast<int>(state.range(2));
    int32_t r = 0;
    for (auto _ : state) {
        if (state.range(1) == 0) {
            r = lib_call(Lib, s, t, back);
        } else {
            int rr;
            const int which = Peer;
            character_peer_(&which, s.data(), t.data(), &back, &rr, s.size(), t.size());
            r = rr;
        }
        benchmark::DoNotOptimize(r);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(s.size()));
    state.SetLabel(state.range(1) == 0 ? "libintrinsMD" : "gfortran");
}

void BM_IndexText(benchmark::State& state) {
    const std::string needle = "needle";
    run<f90_index, 1>(state, text(state.range(0), needle, state.range(2)), needle);
}
void BM_IndexOneLetter(benchmark::State& state) {  // "aaa...a" searched for "aab"
    std::string s(static_cast<std::size_t>(state.range(0)), 'a');
    run<f90_index, 1>(state, s, "aab");
}
void BM_Scan(benchmark::State& state) {
    std::string s = text(state.range(0), "Q", state.range(2));
    run<f90_scan, 2>(state, s, "QXZ");
}
void BM_Verify(benchmark::State& state) {
    std::string s = text(state.range(0), "Q", state.range(2));
    run<f90_verify, 3>(state, s, "etaoinshrdlu ");
}
void BM_LenTrim(benchmark::State& state) {
    std::string s(static_cast<std::size_t>(state.range(0)), ' ');
    s[0] = 'A';
    int32_t r = 0;
    for (auto _ : state) {
        if (state.range(1) == 0) {
            r = f90_lentrim(s.data(), static_cast<int32_t>(s.size()));
        } else {
            int rr;
            const int which = 4, back = 0;
            character_peer_(&which, s.data(), s.data(), &back, &rr, s.size(), 0);
            r = rr;
        }
        benchmark::DoNotOptimize(r);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(s.size()));
    state.SetLabel(state.range(1) == 0 ? "libintrinsMD" : "gfortran");
}

void sizes(benchmark::internal::Benchmark* b) {
    for (int64_t n : {4096, 1 << 20})
        for (int64_t who : {0, 1})
            for (int64_t back : {0, 1}) b->Args({n, who, back});
}
void sizes_only(benchmark::internal::Benchmark* b) {
    for (int64_t n : {4096, 1 << 20})
        for (int64_t who : {0, 1}) b->Args({n, who});
}
BENCHMARK(BM_IndexText)->Apply(sizes);
BENCHMARK(BM_IndexOneLetter)->Apply(sizes);
BENCHMARK(BM_Scan)->Apply(sizes);
BENCHMARK(BM_Verify)->Apply(sizes);
BENCHMARK(BM_LenTrim)->Apply(sizes_only);

}  // namespace

BENCHMARK_MAIN();
