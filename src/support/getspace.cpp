// getspace.cpp - libzamtf90md, the runtime-support library: the storage
// services the intrinsic library imports.  A compiler's own runtime may
// provide these two names instead.
//
// Every block carries a 16-byte header just before the address handed out:
// its capacity and its distance from the start of the underlying malloc
// block.  Small blocks are malloc blocks plus the header.  Large blocks
// (kLarge bytes and more), typically array results, get more:
// - 64-byte alignment (whole cache lines for vector and streaming stores),
//   2 MiB alignment from kHuge bytes on, and on Linux the advice to back them
//   with huge pages, so that the first touch faults once per 2 MiB;
// - a small reuse cache: a freed large block is kept (at most kCacheBlocks
//   blocks, kCacheBytes in all, the oldest given back first) and handed out
//   again for a request it fits within a factor of 2, so a loop that obtains
//   and releases large results does not fault fresh pages in every time.
//   The cache is off under AddressSanitizer, so that a use after release is
//   still reported.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "intrins.h"

#if defined(_WIN32)
#define ZAMT_EXPORT __declspec(dllexport)
#else
#define ZAMT_EXPORT __attribute__((visibility("default")))
#include <sys/mman.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define ZAMT_CACHE 0
#else
#define ZAMT_CACHE 1
#endif

namespace {

constexpr std::size_t kHead = 16;
constexpr std::size_t kLarge = std::size_t{1} << 20;
constexpr std::size_t kHuge = std::size_t{8} << 20;
constexpr std::size_t kLineAlign = 64;
constexpr std::size_t kHugeAlign = std::size_t{2} << 20;
constexpr int kCacheBlocks = 4;
constexpr std::size_t kCacheBytes = (sizeof(void*) >= 8 ? std::size_t{512} : std::size_t{128}) << 20;

struct Head {
    std::size_t capacity;  // bytes usable from the address handed out
    std::size_t offset;    // that address minus the malloc block's
};
static_assert(sizeof(Head) <= kHead);

Head* head(void* p) { return reinterpret_cast<Head*>(static_cast<char*>(p) - kHead); }

[[noreturn]] void out_of_memory(F90Word nbytes) {
    std::fprintf(stderr, "f90_getspace: cannot allocate %llu bytes\n", static_cast<unsigned long long>(nbytes));
    std::fflush(stderr);
    std::exit(1);
}

// Huge-page advice for the whole pages inside [p, p + n) (Linux only).
void advise_huge(char* p, std::size_t n) {
#if defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t page = 4096;
    const std::uintptr_t lo = (reinterpret_cast<std::uintptr_t>(p) + page - 1) & ~(page - 1);
    const std::uintptr_t hi = (reinterpret_cast<std::uintptr_t>(p) + n) & ~(page - 1);
    if (hi > lo) madvise(reinterpret_cast<void*>(lo), hi - lo, MADV_HUGEPAGE);
#else
    (void)p;
    (void)n;
#endif
}

// A new block of capacity n from malloc, aligned to align (a power of two,
// at least kHead) past its header.
void* fresh(std::size_t n, std::size_t align) {
    const std::size_t slack = align > kHead ? align : kHead;
    if (n > SIZE_MAX - slack) return nullptr;
    char* raw = static_cast<char*>(std::malloc(n + slack));
    if (!raw) return nullptr;
    char* p = raw + kHead;
    if (align > kHead) p = reinterpret_cast<char*>((reinterpret_cast<std::uintptr_t>(p) + align - 1) & ~(align - 1));
    *head(p) = Head{n, static_cast<std::size_t>(p - raw)};
    return p;
}

void release(void* p) { std::free(static_cast<char*>(p) - head(p)->offset); }

#if ZAMT_CACHE
// The freed large blocks kept for reuse, oldest first.  A spin lock guards
// them: the critical sections are a few compares, and it needs nothing from
// the platform's thread library.
class Cache {
public:
    // A kept block of capacity n .. 2n, the smallest such, or null.
    void* take(std::size_t n) {
        Guard g(lock_);
        int best = -1;
        for (int i = 0; i < count_; ++i) {
            const std::size_t c = head(block_[i])->capacity;
            if (c >= n && c / 2 <= n && (best < 0 || c < head(block_[best])->capacity)) best = i;
        }
        if (best < 0) return nullptr;
        void* p = block_[best];
        bytes_ -= head(p)->capacity;
        remove(best);
        return p;
    }
    // Keeps p, making room by taking out the oldest blocks; stores the
    // blocks to give back in out (p itself when it cannot be kept) and
    // returns their number.
    int keep(void* p, void** out) {
        const std::size_t c = head(p)->capacity;
        if (c > kCacheBytes) {
            out[0] = p;
            return 1;
        }
        Guard g(lock_);
        int k = 0;
        while (count_ == kCacheBlocks || bytes_ + c > kCacheBytes) {
            out[k++] = block_[0];
            bytes_ -= head(block_[0])->capacity;
            remove(0);
        }
        block_[count_++] = p;
        bytes_ += c;
        return k;
    }

private:
    struct Guard {
        explicit Guard(std::atomic_flag& f) : f_(f) {
            while (f_.test_and_set(std::memory_order_acquire)) __builtin_ia32_pause();
        }
        ~Guard() { f_.clear(std::memory_order_release); }
        std::atomic_flag& f_;
    };
    void remove(int i) {
        for (int j = i + 1; j < count_; ++j) block_[j - 1] = block_[j];
        --count_;
    }
    std::atomic_flag lock_ = ATOMIC_FLAG_INIT;
    void* block_[kCacheBlocks] = {};
    int count_ = 0;
    std::size_t bytes_ = 0;
};

constinit Cache g_cache;  // no constructor runs: usable from any static initialiser
#endif

}  // namespace

extern "C" {

// A block of at least nbytes bytes.  A request of 0 bytes still returns a
// valid, distinct block; a failed allocation ends the program.
ZAMT_EXPORT void* f90_getspace(F90Word nbytes) {
    const std::size_t n = nbytes;
    if (n < kLarge) {
        void* p = fresh(n, kHead);
        if (!p) out_of_memory(nbytes);
        return p;
    }
#if ZAMT_CACHE
    if (void* p = g_cache.take(n)) return p;
#endif
    char* p = static_cast<char*>(fresh(n, n >= kHuge ? kHugeAlign : kLineAlign));
    if (!p) out_of_memory(nbytes);
    advise_huge(p, n);
    return p;
}

ZAMT_EXPORT void f90_freespace(void* p) {
    if (!p) return;
#if ZAMT_CACHE
    if (head(p)->capacity >= kLarge) {
        void* out[kCacheBlocks];
        for (int i = 0, k = g_cache.keep(p, out); i < k; ++i) release(out[i]);
        return;
    }
#endif
    release(p);
}

}  // extern "C"
