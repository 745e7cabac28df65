// Reductions against GNU Fortran's library routines on the same data, one
// run: contiguous INTEGER(4) SUM, COUNT of LOGICAL(4), INTEGER(4) MAXVAL and
// MAXLOC, REAL(8) MAXVAL and MINLOC (10^7 and 10^8 elements); REAL(8) SUM and
// DOT_PRODUCT; SUM(A, DIM=1) and SUM(A, DIM=2) of a 4000 x 4000 REAL(8);
// SUM(A, MASK=M) with a 50% random MASK.  Each case runs as BM_<name>_lib,
// BM_<name>_gfortran (bytes/s counts the bytes of ARRAY and MASK read) and
// BM_<name>_alt, the two alternately in every iteration, with both rates and
// x_gfortran (GNU Fortran's time over ours): the host's memory bandwidth
// drifts by 20-30% within minutes, so two benchmarks run one after the
// other do not always see the same machine.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
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

// Calls a whole-array entry point of the library on a (and m): a scalar
// result, or for MAXLOC/MINLOC (Loc) a one-element vector.
template <class T, class R, bool Loc = false>
R call_lib(void (*fn)(ArgList*), const T* a, int64_t n, const int32_t* m = nullptr) {
    Desc da(const_cast<T*>(a), sizeof(T), {static_cast<int32_t>(n)});
    R r{};
    Desc dr = Loc ? Desc(&r, sizeof(R), {1}) : Desc(&r, sizeof(R), {});
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

const int32_t kOne = 1;

// One benchmark case: C(n) prepares the data; lib() and peer() run the
// reduction through this library and through GNU Fortran's; bytes() is
// what one call reads.  Each case is registered three times:
//   <name>_lib/n and <name>_gfortran/n   each side alone;
//   <name>_alt/n   both alternately in every iteration (which goes first
//                  alternates too), reporting both rates and x_gfortran,
//                  GNU Fortran's time over ours under the same conditions.
template <class C>
void alone(benchmark::State& st, bool ours) {
    C c(st.range(0));
    for (auto _ : st) ours ? c.lib() : c.peer();
    st.SetBytesProcessed(st.iterations() * c.bytes());
}
template <class C>
void alternate(benchmark::State& st) {
    using Clock = std::chrono::steady_clock;
    C c(st.range(0));
    double ours = 0, theirs = 0;
    bool flip = false;
    for (auto _ : st) {
        const auto t0 = Clock::now();
        flip ? c.peer() : c.lib();
        const auto t1 = Clock::now();
        flip ? c.lib() : c.peer();
        const auto t2 = Clock::now();
        const double first = std::chrono::duration<double>(t1 - t0).count();
        const double second = std::chrono::duration<double>(t2 - t1).count();
        ours += flip ? second : first;
        theirs += flip ? first : second;
        flip = !flip;
    }
    const double b = static_cast<double>(c.bytes()) * static_cast<double>(st.iterations());
    st.counters["lib_GBps"] = b / ours / 1e9;
    st.counters["gfortran_GBps"] = b / theirs / 1e9;
    st.counters["x_gfortran"] = theirs / ours;
}
template <class C>
void add(const std::string& name, std::initializer_list<int64_t> sizes) {
    for (auto* b : {benchmark::RegisterBenchmark((name + "_lib").c_str(), alone<C>, true),
                    benchmark::RegisterBenchmark((name + "_gfortran").c_str(), alone<C>, false),
                    benchmark::RegisterBenchmark((name + "_alt").c_str(), alternate<C>)}) {
        for (int64_t n : sizes) b->Arg(n);
        b->Unit(benchmark::kMillisecond);
    }
}

// A whole-array reduction of n elements of T (data kind `kind`, see data())
// with a scalar result of type R, or a MAXLOC/MINLOC one (Loc).
template <class T, class R, int Kind, void (*Lib)(ArgList*), void (*Peer)(const T*, const int32_t*, const int32_t*, R*),
          bool Loc = false>
struct Whole {
    const T* a;
    int64_t n;
    int32_t n32;
    explicit Whole(int64_t size) : a(data<T>(size, Kind).data()), n(size), n32(static_cast<int32_t>(size)) {}
    void lib() {
        benchmark::DoNotOptimize(call_lib<T, R, Loc>(Lib, a, n));
    }
    void peer() {
        R r;
        Peer(a, &n32, &kOne, &r);
        benchmark::DoNotOptimize(r);
    }
    int64_t bytes() const { return n * static_cast<int64_t>(sizeof(T)); }
};

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

struct DotR8 {
    const double* a;
    double* b;
    int64_t n;
    int32_t n32;
    Desc da, db;
    ArgList args{};
    explicit DotR8(int64_t size)
        : a(data<double>(size, 2).data()),
          b(second(size).data()),
          n(size),
          n32(static_cast<int32_t>(size)),
          da(const_cast<double*>(a), 8, {n32}),
          db(b, 8, {n32}) {
        args.Presence = F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
        args.ARG1.w[0] = reinterpret_cast<F90Word>(da.get());
        args.ARG2.w[0] = reinterpret_cast<F90Word>(db.get());
    }
    void lib() {
        f90_dotprr8(&args);
        benchmark::DoNotOptimize(args.Result.w[0]);
    }
    void peer() {
        double r;
        peer_dot_r8_(a, b, &n32, &r);
        benchmark::DoNotOptimize(r);
    }
    int64_t bytes() const { return n * 16; }
};

// SUM(A, DIM=d) of a 4000 x 4000 REAL(8) (the size given is d).
struct SumDimR8 {
    static constexpr int32_t n = 4000;
    int32_t dim;
    const double* a;
    std::vector<double> r;
    Desc da, dr;
    ArgList args{};
    explicit SumDimR8(int64_t d)
        : dim(static_cast<int32_t>(d)),
          a(data<double>(int64_t{n} * n, 2).data()),
          r(n),
          da(const_cast<double*>(a), 8, {n, n}),
          dr(r.data(), 8, {n}) {
        args.Presence = F90_PRESENT_RESULT | F90_PRESENT_ARG1 | F90_PRESENT_ARG2;
        args.Result.w[0] = reinterpret_cast<F90Word>(dr.get());
        args.ARG1.w[0] = reinterpret_cast<F90Word>(da.get());
        std::memcpy(args.ARG2.bytes, &dim, 4);
    }
    void lib() {
        f90_sumr8(&args);
        benchmark::DoNotOptimize(r.data());
    }
    void peer() {
        peer_sum_dim_r8_(a, &n, &dim, r.data());
        benchmark::DoNotOptimize(r.data());
    }
    int64_t bytes() const { return int64_t{n} * n * 8; }
};

// SUM(A, MASK=M), M 50% random.
struct MaskedSumR8 {
    const double* a;
    const int32_t* m;
    int64_t n;
    int32_t n32;
    explicit MaskedSumR8(int64_t size)
        : a(data<double>(size, 2).data()), m(data<int32_t>(size, 1).data()), n(size), n32(static_cast<int32_t>(size)) {}
    void lib() { benchmark::DoNotOptimize(call_lib<double, double>(f90_sumr8, a, n, m)); }
    void peer() {
        double r;
        peer_msum_r8_(a, m, &n32, &kOne, &r);
        benchmark::DoNotOptimize(r);
    }
    int64_t bytes() const { return n * 12; }
};

// Registered before main runs, in this order.
const bool kRegistered = [] {
    const std::initializer_list<int64_t> big = {10000000, 100000000};
    add<Whole<int32_t, int32_t, 0, f90_sumi4, peer_sum_i4_>>("BM_SumI4", big);
    add<Whole<int32_t, int32_t, 1, f90_count4, peer_count_l4_>>("BM_CountL4", big);
    add<Whole<int32_t, int32_t, 0, f90_maxvali4, peer_maxval_i4_>>("BM_MaxvalI4", big);
    add<Whole<int32_t, int32_t, 0, f90_maxloci4, peer_maxloc_i4_, true>>("BM_MaxlocI4", big);
    add<Whole<double, double, 2, f90_maxvalr8, peer_maxval_r8_>>("BM_MaxvalR8", big);
    add<Whole<double, int32_t, 2, f90_minlocr8, peer_minloc_r8_, true>>("BM_MinlocR8", big);
    add<Whole<double, double, 2, f90_sumr8, peer_sum_r8_>>("BM_SumR8", {10000000});
    add<DotR8>("BM_DotR8", {10000000});
    add<SumDimR8>("BM_SumDimR8", {1, 2});
    add<MaskedSumR8>("BM_MaskedSumR8", {10000000});
    return true;
}();

}  // namespace

BENCHMARK_MAIN();
