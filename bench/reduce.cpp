// Reductions against GNU Fortran's library routines on the same data, one
// run: contiguous INTEGER(4) SUM, COUNT of LOGICAL(4), INTEGER(4) MAXVAL and
// MAXLOC, REAL(8) MAXVAL and MINLOC (10^7 and 10^8 elements); REAL(8) SUM and
// DOT_PRODUCT; SUM(A, DIM=1) and SUM(A, DIM=2) of a 4000 x 4000 REAL(8);
// SUM(A, MASK=M) with a 50% random MASK.  Each pair is BM_<name>/lib and
// BM_<name>/gfortran; bytes/s counts the bytes of ARRAY (and MASK) read.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "intrins.h"

extern "C" {
void peer_sum_i4_(const int32_t*, const int32_t*, const int32_t*, int32_t*);
void peer_count_l4_(const int32_t*, const int32_t*, const int32_t*, int32_t*);
void peer_maxval_i4_(const int32_t*, const int32_t*, const int32_t*, int32_t*);
void peer_maxval_r8_(const double*, const int32_t*, const int32_t*, double*);
void peer_maxloc_i4_(const int32_t*, const int32_t*, const int32_t*, int32_t*);
void peer_minloc_r8_(const double*, const int32_t*, const int32_t*, int32_t*);
void peer_sum_r8_(const double*, const int32_t*, const int32_t*, double*);
void peer_msum_r8_(const double*, const int32_t*, const int32_t*, const int32_t*, double*);
void peer_dot_r8_(const double*, const double*, const int32_t*, double*);
void peer_sum_dim_r8_(const double*, const int32_t*, const int32_t*, double*);
}

namespace {

// A contiguous array over caller storage, as compiled code describes it.
struct Desc {
    ArrDescChecked raw{};
    Desc(void* data, int32_t elsize, std::initializer_list<int32_t> extents) {
        ArrDesc& d = raw.desc;
        d.BASE = d.ZERO = static_cast<char*>(data);
        d.ELSIZE = d.SCALEFACTOR = elsize;
        d.RANK = static_cast<int8_t>(extents.size());
        int32_t n = 1, k = 0;
        for (int32_t e : extents) {
            d.DIM[k++] = {1, e, n};
            n *= e;
        }
        d.EXTENT = n;
        // Lower bounds 1: element (1, ..., 1) sits at BASE.  A scalar has
        // no subscripts, so its ZERO is BASE.
        if (n > 0)
            for (int i = 0; i < k; ++i) d.ZERO -= static_cast<std::ptrdiff_t>(d.DIM[i].STRIDE) * elsize;
    }
    ArrDesc* get() { return &raw.desc; }
};

// Benchmark arrays live where compiled programs' array temporaries and
// intrinsic results live: in blocks of the storage service (from 8 MiB on
// 2 MiB aligned and on huge pages where the system offers them).  With
// INTRINS_BENCH_MALLOC set they come from malloc instead (ordinary pages),
// to see how much of a figure is the page size.  Both sides read the same.
template <class T>
class Store {
  public:
    Store() = default;
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    ~Store() { release(); }
    void assign(int64_t n, T fill) {
        release();
        const size_t bytes = static_cast<size_t>(n > 0 ? n : 1) * sizeof(T);
        plain_ = std::getenv("INTRINS_BENCH_MALLOC") != nullptr;
        p_ = static_cast<T*>(plain_ ? std::malloc(bytes) : f90_getspace(static_cast<F90Word>(bytes)));
        for (int64_t i = 0; i < n; ++i) p_[i] = fill;
    }
    T* data() const { return p_; }

  private:
    void release() {
        if (p_) plain_ ? std::free(p_) : f90_freespace(p_);
        p_ = nullptr;
    }
    T* p_ = nullptr;
    bool plain_ = false;
};

template <class T>
const Store<T>& data(int64_t n, int kind) {
    static Store<T> v;
    static int64_t have = -1;
    static int have_kind = -1;
    if (have != n || have_kind != kind) {
        std::mt19937_64 rng(42 + kind);
        v.assign(n, T{});
        T* x = v.data();
        for (int64_t i = 0; i < n; ++i) {
            if (kind == 0) x[i] = static_cast<T>(static_cast<int64_t>(rng() % 2000001) - 1000000);
            else if (kind == 1) x[i] = static_cast<T>(rng() & 1);
            else x[i] = static_cast<T>(static_cast<double>(rng() >> 11) * 0x1p-53 - 0.5);
        }
        have = n;
        have_kind = kind;
    }
    return v;
}

// Calls a whole-array entry point of the library on a (and m), scalar result.
template <class T, class R>
R call_lib(void (*fn)(ArgList*), const T* a, int64_t n, const int32_t* m = nullptr, int32_t rsize = sizeof(R)) {
    Desc da(const_cast<T*>(a), sizeof(T), {static_cast<int32_t>(n)});
    R r{};
    Desc dr(&r, rsize, {});
    ArgList args{};
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1;
    args.Result.w[0] = reinterpret_cast<F90Word>(dr.get());
    args.ARG1.w[0] = reinterpret_cast<F90Word>(da.get());
    Desc dm(const_cast<int32_t*>(m), 4, {static_cast<int32_t>(n)});
    if (m) {
        args.Presence |= F90_PRESENT_ARG3;
        args.ARG3.w[0] = reinterpret_cast<F90Word>(dm.get());
    }
    fn(&args);
    return r;
}

// MAXLOC/MINLOC: the result is a one-element vector.
template <class T>
int32_t call_loc(void (*fn)(ArgList*), const T* a, int64_t n) {
    Desc da(const_cast<T*>(a), sizeof(T), {static_cast<int32_t>(n)});
    int32_t r = 0;
    Desc dr(&r, 4, {1});
    ArgList args{};
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1;
    args.Result.w[0] = reinterpret_cast<F90Word>(dr.get());
    args.ARG1.w[0] = reinterpret_cast<F90Word>(da.get());
    fn(&args);
    return r;
}

const int32_t kOne = 1;

#define PAIR(name, T, kind, bytes_per, lib_expr, peer_expr)                      \
    void BM_##name##_lib(benchmark::State& st) {                                 \
        const int64_t n = st.range(0);                                           \
        const auto& v = data<T>(n, kind);                                        \
        const T* a = v.data();                                                   \
        (void)a;                                                                 \
        for (auto _ : st) benchmark::DoNotOptimize(lib_expr);                    \
        st.SetBytesProcessed(st.iterations() * n * (bytes_per));                 \
    }                                                                            \
    void BM_##name##_gfortran(benchmark::State& st) {                            \
        const int64_t n = st.range(0);                                           \
        const int32_t n32 = static_cast<int32_t>(n);                             \
        const auto& v = data<T>(n, kind);                                        \
        const T* a = v.data();                                                   \
        for (auto _ : st) {                                                      \
            peer_expr;                                                           \
        }                                                                        \
        st.SetBytesProcessed(st.iterations() * n * (bytes_per));                 \
    }                                                                            \
    BENCHMARK(BM_##name##_lib)->Arg(10000000)->Arg(100000000)->Unit(benchmark::kMillisecond);      \
    BENCHMARK(BM_##name##_gfortran)->Arg(10000000)->Arg(100000000)->Unit(benchmark::kMillisecond);

PAIR(SumI4, int32_t, 0, 4, (call_lib<int32_t, int32_t>(f90_sumi4, a, n)),
     int32_t r; peer_sum_i4_(a, &n32, &kOne, &r); benchmark::DoNotOptimize(r))
PAIR(CountL4, int32_t, 1, 4, (call_lib<int32_t, int32_t>(f90_count4, a, n)),
     int32_t r; peer_count_l4_(a, &n32, &kOne, &r); benchmark::DoNotOptimize(r))
PAIR(MaxvalI4, int32_t, 0, 4, (call_lib<int32_t, int32_t>(f90_maxvali4, a, n)),
     int32_t r; peer_maxval_i4_(a, &n32, &kOne, &r); benchmark::DoNotOptimize(r))
PAIR(MaxlocI4, int32_t, 0, 4, (call_loc<int32_t>(f90_maxloci4, a, n)),
     int32_t r; peer_maxloc_i4_(a, &n32, &kOne, &r); benchmark::DoNotOptimize(r))
PAIR(MaxvalR8, double, 2, 8, (call_lib<double, double>(f90_maxvalr8, a, n)),
     double r; peer_maxval_r8_(a, &n32, &kOne, &r); benchmark::DoNotOptimize(r))
PAIR(MinlocR8, double, 2, 8, (call_loc<double>(f90_minlocr8, a, n)),
     int32_t r; peer_minloc_r8_(a, &n32, &kOne, &r); benchmark::DoNotOptimize(r))

void BM_SumR8_lib(benchmark::State& st) {
    const int64_t n = st.range(0);
    const auto& v = data<double>(n, 2);
    for (auto _ : st) benchmark::DoNotOptimize(call_lib<double, double>(f90_sumr8, v.data(), n));
    st.SetBytesProcessed(st.iterations() * n * 8);
}
void BM_SumR8_gfortran(benchmark::State& st) {
    const int64_t n = st.range(0);
    const int32_t n32 = static_cast<int32_t>(n);
    const auto& v = data<double>(n, 2);
    for (auto _ : st) {
        double r;
        peer_sum_r8_(v.data(), &n32, &kOne, &r);
        benchmark::DoNotOptimize(r);
    }
    st.SetBytesProcessed(st.iterations() * n * 8);
}
BENCHMARK(BM_SumR8_lib)->Arg(10000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SumR8_gfortran)->Arg(10000000)->Unit(benchmark::kMillisecond);

const Store<double>& second(int64_t n) {
    static Store<double> b;
    static int64_t have = -1;
    if (have != n) {
        b.assign(n, 0.0);
        for (int64_t i = 0; i < n; ++i) b.data()[i] = 1.0 / static_cast<double>(1 + (i % 7));
        have = n;
    }
    return b;
}
void BM_DotR8_lib(benchmark::State& st) {
    const int64_t n = st.range(0);
    const auto& v = data<double>(n, 2);
    const auto& b = second(n);
    Desc da(const_cast<double*>(v.data()), 8, {static_cast<int32_t>(n)});
    Desc db(b.data(), 8, {static_cast<int32_t>(n)});
    ArgList args{};
    args.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    args.ARG1.w[0] = reinterpret_cast<F90Word>(da.get());
    args.ARG2.w[0] = reinterpret_cast<F90Word>(db.get());
    for (auto _ : st) {
        f90_dotprr8(&args);
        benchmark::DoNotOptimize(args.Result.w[0]);
    }
    st.SetBytesProcessed(st.iterations() * n * 16);
}
void BM_DotR8_gfortran(benchmark::State& st) {
    const int64_t n = st.range(0);
    const int32_t n32 = static_cast<int32_t>(n);
    const auto& v = data<double>(n, 2);
    const auto& b = second(n);
    for (auto _ : st) {
        double r;
        peer_dot_r8_(v.data(), b.data(), &n32, &r);
        benchmark::DoNotOptimize(r);
    }
    st.SetBytesProcessed(st.iterations() * n * 16);
}
BENCHMARK(BM_DotR8_lib)->Arg(10000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DotR8_gfortran)->Arg(10000000)->Unit(benchmark::kMillisecond);

// SUM(A, DIM=d) of a 4000 x 4000 REAL(8) (range(0) = d).
void BM_SumDimR8_lib(benchmark::State& st) {
    const int32_t n = 4000, dim = static_cast<int32_t>(st.range(0));
    const auto& v = data<double>(int64_t{n} * n, 2);
    std::vector<double> r(n);
    Desc da(const_cast<double*>(v.data()), 8, {n, n});
    Desc dr(r.data(), 8, {n});
    ArgList args{};
    args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
    args.Result.w[0] = reinterpret_cast<F90Word>(dr.get());
    args.ARG1.w[0] = reinterpret_cast<F90Word>(da.get());
    std::memcpy(args.ARG2.bytes, &dim, 4);
    for (auto _ : st) {
        f90_sumr8(&args);
        benchmark::DoNotOptimize(r.data());
    }
    st.SetBytesProcessed(st.iterations() * int64_t{n} * n * 8);
}
void BM_SumDimR8_gfortran(benchmark::State& st) {
    const int32_t n = 4000, dim = static_cast<int32_t>(st.range(0));
    const auto& v = data<double>(int64_t{n} * n, 2);
    std::vector<double> r(n);
    for (auto _ : st) {
        peer_sum_dim_r8_(v.data(), &n, &dim, r.data());
        benchmark::DoNotOptimize(r.data());
    }
    st.SetBytesProcessed(st.iterations() * int64_t{n} * n * 8);
}
BENCHMARK(BM_SumDimR8_lib)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SumDimR8_gfortran)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

// SUM(A, MASK=M), M 50% random.
void BM_MaskedSumR8_lib(benchmark::State& st) {
    const int64_t n = st.range(0);
    const auto& v = data<double>(n, 2);
    const auto& m = data<int32_t>(n, 1);
    for (auto _ : st) benchmark::DoNotOptimize(call_lib<double, double>(f90_sumr8, v.data(), n, m.data()));
    st.SetBytesProcessed(st.iterations() * n * 12);
}
void BM_MaskedSumR8_gfortran(benchmark::State& st) {
    const int64_t n = st.range(0);
    const int32_t n32 = static_cast<int32_t>(n);
    const auto& v = data<double>(n, 2);
    const auto& m = data<int32_t>(n, 1);
    for (auto _ : st) {
        double r;
        peer_msum_r8_(v.data(), m.data(), &n32, &kOne, &r);
        benchmark::DoNotOptimize(r);
    }
    st.SetBytesProcessed(st.iterations() * n * 12);
}
BENCHMARK(BM_MaskedSumR8_lib)->Arg(10000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MaskedSumR8_gfortran)->Arg(10000000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
