// dispatch.cpp - picks the engine table for this processor on first use and
// keeps it.  The choice is made without a lock: two threads that race make
// the same choice and store the same pointer.
#include <atomic>

#include "engines.h"

namespace intrins::mm {

extern const EngineTable table_avx512, table_avx2, table_base;

namespace {
const EngineTable* pick(bool narrow) {
    __builtin_cpu_init();
    if (!narrow && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"))
        return &table_avx512;
    if (__builtin_cpu_supports("avx2")) return &table_avx2;
    return &table_base;
}
}  // namespace

const EngineTable& engine_table(bool narrow) {
    static std::atomic<const EngineTable*> chosen[2] = {nullptr, nullptr};
    const EngineTable* t = chosen[narrow].load(std::memory_order_relaxed);
    if (!t) {
        t = pick(narrow);
        chosen[narrow].store(t, std::memory_order_relaxed);
    }
    return *t;
}

}  // namespace intrins::mm
