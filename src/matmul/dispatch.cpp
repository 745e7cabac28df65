// dispatch.cpp - picks the engine table for this processor on first use and
// keeps it.  The choice is made without a lock: two threads that race make
// the same choice and store the same pointer.
#include <atomic>

#include "engines.h"

namespace intrins::mm {

extern const EngineTable table_avx512, table_avx2, table_base;

const EngineTable& engine_table() {
    static std::atomic<const EngineTable*> chosen{nullptr};
    const EngineTable* t = chosen.load(std::memory_order_relaxed);
    if (!t) {
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
            __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"))
            t = &table_avx512;
        else if (__builtin_cpu_supports("avx2"))
            t = &table_avx2;
        else
            t = &table_base;
        chosen.store(t, std::memory_order_relaxed);
    }
    return *t;
}

}  // namespace intrins::mm
