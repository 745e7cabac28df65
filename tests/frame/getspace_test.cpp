// The runtime-support library's storage services.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "support/arrays.h"

namespace {

TEST(GetSpace, BlocksAreUsableAndZeroRequestsDistinct) {
    auto* a = static_cast<unsigned char*>(f90_getspace(0));
    auto* b = static_cast<unsigned char*>(f90_getspace(0));
    auto* c = static_cast<unsigned char*>(f90_getspace(1000));
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(a, b);
    std::memset(c, 0x5A, 1000);
    EXPECT_EQ(c[999], 0x5A);
    f90_freespace(a);
    f90_freespace(b);
    f90_freespace(c);
}

// Large blocks (1 MiB and more) start on a 64-byte boundary, from 8 MiB on a
// 2 MiB one; small ones keep malloc's alignment.  Live blocks never overlap.
TEST(GetSpace, LargeBlocksAlignedAndDistinct) {
    const F90Word sizes[] = {F90Word{1} << 20, (F90Word{1} << 20) + 3, F90Word{3} << 20, F90Word{9} << 20};
    std::vector<unsigned char*> live;
    for (F90Word n : sizes)
        for (int k = 0; k < 2; ++k) {
            auto* p = static_cast<unsigned char*>(f90_getspace(n));
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 64, 0u) << n;
            if (n >= (F90Word{8} << 20)) {
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % (std::uintptr_t{2} << 20), 0u) << n;
            }
            std::memset(p, static_cast<int>(live.size()), n);
            live.push_back(p);
        }
    auto* small = static_cast<unsigned char*>(f90_getspace(24));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(small) % alignof(std::max_align_t) % 8, 0u);
    for (std::size_t i = 0; i < live.size(); ++i) {
        const F90Word n = sizes[i / 2];
        EXPECT_EQ(live[i][0], i);
        EXPECT_EQ(live[i][n - 1], i);  // no later block was laid over this one
    }
    for (unsigned char* p : live) f90_freespace(p);
    f90_freespace(small);
}

// A freed large block is handed out again for a request it fits within a
// factor of 2, and not for a smaller one.
TEST(GetSpace, FreedLargeBlockReused) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "no reuse cache under AddressSanitizer";
#else
    // Larger than any block the other tests release, so that p is the only
    // candidate.
    const F90Word n = (F90Word{40} << 20) + 123;
    void* p = f90_getspace(n);
    f90_freespace(p);
    void* q = f90_getspace(n - 100);
    EXPECT_EQ(q, p);
    f90_freespace(q);
    void* big = f90_getspace(F90Word{16} << 20);
    f90_freespace(big);
    void* r = f90_getspace((F90Word{2} << 20) + 1);
    EXPECT_NE(r, big);
    std::memset(r, 1, (F90Word{2} << 20) + 1);
    f90_freespace(r);
#endif
}

// Several threads obtain, fill, check and release blocks of mixed sizes at
// once; a block handed to two threads would show the other's pattern.
TEST(GetSpace, ManyThreads) {
    constexpr int kThreads = 4;
    std::vector<int> bad(kThreads, 0);
    std::vector<std::thread> pool;
    for (int t = 0; t < kThreads; ++t)
        pool.emplace_back([t, &bad] {
            for (int it = 0; it < 60; ++it) {
                const F90Word n = (it % 3 == 0) ? 100 + it : ((F90Word{1} << 20) + 4096 * ((it * 7 + t) % 11));
                auto* p = static_cast<unsigned char*>(f90_getspace(n));
                const auto tag = static_cast<unsigned char>(t * 60 + it);
                std::memset(p, tag, 4096 < n ? 4096 : n);
                p[n - 1] = tag;
                std::this_thread::yield();
                for (F90Word i = 0; i < (4096 < n ? 4096 : n); i += 512) bad[t] += p[i] != tag;
                bad[t] += p[n - 1] != tag;
                f90_freespace(p);
            }
        });
    for (auto& th : pool) th.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(bad[t], 0) << "thread " << t;
}

TEST(GetSpaceDeath, FailedAllocationEndsTheProgram) {
    const F90Word huge = ~static_cast<F90Word>(0) - 4096;
    const std::string text =
        "f90_getspace: cannot allocate " + std::to_string(static_cast<unsigned long long>(huge)) + " bytes\n";
#if defined(__SANITIZE_ADDRESS__)
    // The sanitizer's allocator announces the failure before our message.
    EXPECT_EXIT(f90_getspace(huge), ::testing::ExitedWithCode(1), ::testing::EndsWith(text));
#else
    EXPECT_DIES_WITH(f90_getspace(huge), text);
#endif
}

}  // namespace
