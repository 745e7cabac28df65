// random.cpp - RANDOM_NUMBER and RANDOM_SEED entry points and the per-thread
// generator state.
//
// Each thread has its own record: a flag asking for initialisation (set until
// the thread's first RANDOM_NUMBER or RANDOM_SEED) and the address of its
// 188-byte state block, taken from f90_getspace once and never given back.
// Every thread therefore starts with the same sequence.
//
// RANDOM_SEED resets the thread's generator to the default seed before it
// looks at its arguments, so GET always returns the default state and PUT
// replaces only the 43 table words (i, j, c and w keep their default values),
// while SIZE and GET count 47 words.  This asymmetry is what programs built
// against the library have always seen and is kept.
#include <cstdint>
#include <cstring>

#include "frame/call.h"
#include "frame/runtime.h"
#include "intrins.h"
#include "random/generator.h"

namespace intrins::random {
namespace {

struct ThreadRecord {
    uint32_t init_wanted = 0xFFFFFFFFu;
    State* state = nullptr;
};
thread_local ThreadRecord record;

// InitMarsagliaRander: (re)initialise the calling thread's state.
State& reset() {
    if (record.init_wanted) {
        record.state = static_cast<State*>(getspace(sizeof(State)));
        record.init_wanted = 0;
    }
    seed_default(*record.state);
    return *record.state;
}

State& thread_state() {
    if (record.init_wanted) return reset();
    return *record.state;
}

template <class E>
void number(void* out) {
    Kind<E>::store(out, Unit<E>::value(step(thread_state())));
}

template <class E>
void number_array(void* out, int32_t n) {
    State& s = thread_state();
    if (n > 0) fill<E>(s, out, n);
}

// Elements of PUT and GET: from BASE in steps of SCALEFACTOR * STRIDE bytes.
// The arguments are not checked against the 43 or 47 words the generator
// uses; only the elements the descriptor holds are touched, so a short array
// is read or written as far as it goes and no further.
struct Elements {
    char* base;
    std::ptrdiff_t step;
    int32_t count;
    explicit Elements(const ArrDesc& d)
        : base(d.BASE),
          step(rank(d) ? byte_step(d, 0) : 0),
          count(rank(d) ? extent(d, 0) : 1) {}
    char* operator[](int k) const { return base + k * step; }
};

// I: the integer kind of SIZE/PUT/GET.  PUT reads the low 32 bits of each
// element; GET stores each word sign-extended; SIZE is written as a 32-bit 47
// into the first four bytes (the upper half of an 8-byte SIZE is left alone).
template <class I>
void seed(ArgList* a) {
    Call call(a);
    State& s = reset();
    if (call.result_supplied()) {
        const int32_t size = kStateWords;
        std::memcpy(call.result().addr(), &size, sizeof size);
    } else if (call.present(1)) {
        Elements put(*call.arg(1).desc());
        for (int k = 0; k < kTableWords && k < put.count; ++k)
            s.x[k] = static_cast<uint32_t>(Kind<I>::load(put[k]));
    } else if (call.present(2)) {
        Elements get(*call.arg(2).desc());
        uint32_t words[kStateWords];  // the 47 words in state order
        std::memcpy(words, &s, sizeof words);
        for (int k = 0; k < kStateWords && k < get.count; ++k)
            Kind<I>::store(get[k], static_cast<I>(static_cast<int32_t>(words[k])));
    }
}

}  // namespace
}  // namespace intrins::random

using namespace intrins;

extern "C" INTRINS_EXPORT void InitMarsagliaRander(void) { random::reset(); }

// suffix, element tag, pointer type of the C declaration
#define RANDOM_NUMBER_KINDS(X) X(4, float, float) X(8, double, double) X(10, R10, void) X(16, Quad, void)
#define X(k, E, P)                                                                                      \
    extern "C" INTRINS_EXPORT void f90_randnum##k(P* out) { random::number<E>(out); }                 \
    extern "C" INTRINS_EXPORT void f90_randnum##k##a(P* out, int32_t n) { random::number_array<E>(out, n); }
RANDOM_NUMBER_KINDS(X)
#undef X

extern "C" INTRINS_EXPORT void f90_randseed(ArgList* a) { random::seed<int32_t>(a); }
extern "C" INTRINS_EXPORT void f90_randseed8(ArgList* a) { random::seed<int64_t>(a); }
