// The runtime-support library's storage service: alignment, distinct live
// blocks, the reuse cache's limits (blocks within a factor of 2, at most four
// kept), concurrent use and the failure message.
#include <thread>

#include "support/arrays.h"

namespace {

constexpr F90Word kMiB = F90Word{1} << 20;

TEST(GetSpace, AlignedDistinctBlocks) {
    std::vector<std::pair<unsigned char*, F90Word>> live;
    for (F90Word n : {F90Word{0}, F90Word{0}, F90Word{24}, kMiB, kMiB + 3, 3 * kMiB, 9 * kMiB}) {
        auto* p = static_cast<unsigned char*>(f90_getspace(n));
        ASSERT_NE(p, nullptr);
        const uintptr_t align = n >= 8 * kMiB ? 2 * kMiB : n >= kMiB ? 64 : 8;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % align, 0u) << n;
        std::memset(p, static_cast<int>(live.size()), n);
        live.push_back({p, n});
    }
    for (std::size_t i = 0; i < live.size(); ++i) {
        EXPECT_EQ(live[i].second ? live[i].first[live[i].second - 1] : i, i) << "a later block overlaps this one";
        for (std::size_t j = 0; j < i; ++j) EXPECT_NE(live[i].first, live[j].first);
    }
    for (auto& b : live) f90_freespace(b.first);
}

TEST(GetSpace, ReuseCacheLimits) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "no reuse cache under AddressSanitizer";
#else
    // Five freed blocks of 3, 6, 12, 24 and 48 MiB: the first is no longer kept.
    void* b[5];
    for (int i = 0; i < 5; ++i) b[i] = f90_getspace((3 * kMiB) << i);
    for (void* p : b) f90_freespace(p);
    void* small = f90_getspace(3 * kMiB - 1);  // fits only the first within a factor of 2
    for (int i = 1; i < 5; ++i) EXPECT_NE(small, b[i]) << i;
    void* again[4];
    for (int i = 1; i < 5; ++i) EXPECT_EQ(again[i - 1] = f90_getspace(((3 * kMiB) << i) - 5), b[i]) << i;
    // A block more than twice the request is not handed out.
    f90_freespace(again[3]);
    void* half = f90_getspace(20 * kMiB);
    EXPECT_NE(half, b[4]);
    for (void* p : {small, again[0], again[1], again[2], half}) f90_freespace(p);
#endif
}

// Several threads obtain, fill, check and release blocks of mixed sizes; a
// block handed to two threads shows the other's pattern.
TEST(GetSpace, ManyThreads) {
    std::vector<int> bad(4, 0);
    std::vector<std::thread> pool;
    for (int t = 0; t < 4; ++t)
        pool.emplace_back([t, &bad] {
            for (int it = 0; it < 60; ++it) {
                const F90Word n = it % 3 == 0 ? 100 + it : kMiB + 4096 * ((it * 7 + t) % 11);
                auto* p = static_cast<unsigned char*>(f90_getspace(n));
                const auto tag = static_cast<unsigned char>(t * 60 + it);
                std::memset(p, tag, n);
                std::this_thread::yield();
                for (F90Word i = 0; i < n; i += 509) bad[t] += p[i] != tag;
                f90_freespace(p);
            }
        });
    for (auto& th : pool) th.join();
    EXPECT_EQ(bad, std::vector<int>(4, 0));
}

TEST(GetSpaceDeath, FailedAllocation) {
    const F90Word huge = ~F90Word{0} - 4096;
    const std::string text = "f90_getspace: cannot allocate " + std::to_string(static_cast<unsigned long long>(huge)) + " bytes\n";
    EXPECT_EXIT(f90_getspace(huge), ::testing::ExitedWithCode(1), ::testing::EndsWith(text));
}

}  // namespace
