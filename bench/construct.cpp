// Construction benchmarks, each side by side with the same operation through
// GNU Fortran's intrinsics (bench/peers/construct_peers.f90) on the same data:
// TRANSPOSE and CSHIFT/EOSHIFT of a 4000 x 4000 REAL(8), RESHAPE with
// ORDER=(2,1) of a 4000 x 4000 REAL(4), SPREAD of a 4000-vector 4000 times,
// PACK and UNPACK of 10^7 REAL(8) with a 50% random mask.  Bytes counted are
// the result's bytes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "intrins.h"

extern "C" {
void peer_transpose_r8(int n, const double* a, double* b);
void peer_reshape21_r4(int n, const float* a, float* b);
void peer_spread_r8(int n, int dim, const double* v, double* b);
void peer_pack_only_r8(int n, const double* a, const int32_t* m, int* count);
void peer_unpack_r8(int n, int nv, const double* v, const int32_t* m, const double* f, double* b);
void peer_cshift_r8(int n, int shift, int dim, const double* a, double* b);
void peer_eoshift_r8(int n, int shift, int dim, const double* a, double* b);
}

namespace {

constexpr int kN = 4000;
constexpr int kPack = 10000000;

// A contiguous array created by the library, filled with distinct values.
struct Arr {
    ArrDescChecked d{};
    Arr(std::initializer_list<int32_t> ext, int32_t elsize) {
        int32_t b[14];
        int k = 0;
        for (int32_t e : ext) b[k++] = 1, b[k++] = e;
        f90_CreateArray(static_cast<int32_t>(ext.size()), b, elsize, &d.desc);
        std::memset(d.desc.BASE, 0, static_cast<size_t>(d.desc.EXTENT) * elsize);
    }
    ~Arr() { f90_freespace(d.desc.BASE); }
    ArrDesc* get() { return &d.desc; }
    template <class T>
    T* data() { return reinterpret_cast<T*>(d.desc.BASE); }
};

template <class T>
void iota(Arr& a) {
    for (int32_t i = 0; i < a.get()->EXTENT; ++i) a.data<T>()[i] = static_cast<T>(i);
}

ArgList args(ArrDesc* res, bool supplied) {
    ArgList a{};
    a.Result.w[0] = reinterpret_cast<F90Word>(res);
    if (supplied) a.Presence |= F90_PRESENT_RESULT;
    return a;
}
void put(ArgSlot& s, const void* p) { s.w[0] = reinterpret_cast<F90Word>(p); }
void put_i(ArgSlot& s, int32_t v) { std::memcpy(s.bytes, &v, 4); }

void bytes(benchmark::State& st, int64_t n) { st.SetBytesProcessed(st.iterations() * n); }

void BM_Transpose_r8(benchmark::State& st) {
    Arr a({kN, kN}, 8), b({kN, kN}, 8);
    iota<double>(a);
    for (auto _ : st) {
        if (st.range(0)) {
            peer_transpose_r8(kN, a.data<double>(), b.data<double>());
        } else {
            ArgList al = args(b.get(), true);
            put(al.ARG1, a.get());
            f90_transpose8(&al);
        }
        benchmark::ClobberMemory();
    }
    bytes(st, int64_t{kN} * kN * 8);
}
BENCHMARK(BM_Transpose_r8)->ArgName("gfortran")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Reshape21_r4(benchmark::State& st) {
    Arr a({kN * kN}, 4), b({kN, kN}, 4), shape({2}, 4), order({2}, 4);
    iota<float>(a);
    shape.data<int32_t>()[0] = shape.data<int32_t>()[1] = kN;
    order.data<int32_t>()[0] = 2;
    order.data<int32_t>()[1] = 1;
    for (auto _ : st) {
        if (st.range(0)) {
            peer_reshape21_r4(kN, a.data<float>(), b.data<float>());
        } else {
            ArgList al = args(b.get(), true);
            put(al.ARG1, a.get());
            put(al.ARG2, shape.get());
            put(al.ARG4, order.get());
            al.Presence |= F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG4;
            f90_reshape4(&al);
        }
        benchmark::ClobberMemory();
    }
    bytes(st, int64_t{kN} * kN * 4);
}
BENCHMARK(BM_Reshape21_r4)->ArgName("gfortran")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Spread_r8(benchmark::State& st) {
    const int dim = static_cast<int>(st.range(0));
    Arr v({kN}, 8), b({kN, kN}, 8);
    iota<double>(v);
    for (auto _ : st) {
        if (st.range(1)) {
            peer_spread_r8(kN, dim, v.data<double>(), b.data<double>());
        } else {
            ArgList al = args(b.get(), true);
            put(al.ARG1, v.get());
            put_i(al.ARG2, dim);
            put_i(al.ARG3, kN);
            al.Presence |= F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
            f90_spread8(&al);
        }
        benchmark::ClobberMemory();
    }
    bytes(st, int64_t{kN} * kN * 8);
}
BENCHMARK(BM_Spread_r8)->ArgNames({"dim", "gfortran"})->ArgsProduct({{1, 2}, {0, 1}})->Unit(benchmark::kMillisecond);

struct PackData {
    Arr a{{kPack}, 8}, m{{kPack}, 4}, f{{kPack}, 8};
    int32_t trues = 0;
    PackData() {
        iota<double>(a);
        std::mt19937 rng(7);
        for (int i = 0; i < kPack; ++i) trues += (m.data<int32_t>()[i] = static_cast<int32_t>(rng() & 1));
        for (int i = 0; i < kPack; ++i) f.data<double>()[i] = -1.0;
    }
};
PackData& pack_data() {
    static PackData d;
    return d;
}

void BM_Pack_r8(benchmark::State& st) {
    PackData& d = pack_data();
    for (auto _ : st) {
        if (st.range(0)) {
            int count;
            peer_pack_only_r8(kPack, d.a.data<double>(), d.m.data<int32_t>(), &count);
            benchmark::DoNotOptimize(count);
        } else {
            ArrDescChecked r{};
            ArgList al = args(&r.desc, false);
            put(al.ARG1, d.a.get());
            put(al.ARG2, d.m.get());
            al.Presence |= F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
            f90_pack8(&al);
            f90_freespace(r.desc.BASE);
        }
        benchmark::ClobberMemory();
    }
    bytes(st, int64_t{kPack} * 8);
}
BENCHMARK(BM_Pack_r8)->ArgName("gfortran")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Unpack_r8(benchmark::State& st) {
    PackData& d = pack_data();
    Arr b({kPack}, 8);
    for (auto _ : st) {
        if (st.range(0)) {
            peer_unpack_r8(kPack, d.trues, d.a.data<double>(), d.m.data<int32_t>(), d.f.data<double>(),
                           b.data<double>());
        } else {
            ArgList al = args(b.get(), true);
            put(al.ARG1, d.a.get());
            put(al.ARG2, d.m.get());
            put(al.ARG3, d.f.get());
            al.Presence |= F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | F90_PRESENT_ARG3;
            f90_unpack8(&al);
        }
        benchmark::ClobberMemory();
    }
    bytes(st, int64_t{kPack} * 8);
}
BENCHMARK(BM_Unpack_r8)->ArgName("gfortran")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Shift_r8(benchmark::State& st) {
    const bool eo = st.range(0) != 0;
    const int dim = static_cast<int>(st.range(1));
    Arr a({kN, kN}, 8), b({kN, kN}, 8), shift({}, 4);
    iota<double>(a);
    shift.data<int32_t>()[0] = 7;
    for (auto _ : st) {
        if (st.range(2)) {
            (eo ? peer_eoshift_r8 : peer_cshift_r8)(kN, 7, dim, a.data<double>(), b.data<double>());
        } else {
            ArgList al = args(b.get(), true);
            put(al.ARG1, a.get());
            put(al.ARG2, shift.get());
            put_i(eo ? al.ARG4 : al.ARG3, dim);
            al.Presence |= F90_PRESENT_ARG1 | F90_PRESENT_ARG2 | (eo ? F90_PRESENT_ARG4 : F90_PRESENT_ARG3);
            (eo ? f90_eoshift8 : f90_cshift8)(&al);
        }
        benchmark::ClobberMemory();
    }
    bytes(st, int64_t{kN} * kN * 8);
}
BENCHMARK(BM_Shift_r8)
    ->ArgNames({"eoshift", "dim", "gfortran"})
    ->ArgsProduct({{0, 1}, {1, 2}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
BENCHMARK_MAIN();
