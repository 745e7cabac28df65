// kernels.h - the multiply kernels, written once over the element type.
//
// Operands are byte addresses of the first element and strides in elements;
// counts are signed 32-bit and a negative count behaves as zero.  Every
// result element is one dot product over the kernel's k range, started from
// zero and summed in increasing k (Arith<T>), then stored or added to C.
//
// Packed formats:
//   panel (ConvertBlock): groups of 4 rows; per group, for each k the 4 row
//     values side by side: panel[(g * kcount + k) * 4 + r] = A(4g + r, k).
//   B block (CopyBlock): column by column, leading dimension kcount.
// The unrolling named in the kernels' contracts (k by 2 or 4, 4 rows or 4
// columns at a time) does not change any element's sequence, so the loops
// below keep one accumulator per result element and any kcount works.
#pragma once

#include "traits.h"

namespace intrins::mm {

template <class T>
struct Kernels {
    using Ar = Arith<T>;
    using Acc = typename Ar::Acc;
    using K = Kind<typename MmType<T>::elem>;
    static constexpr std::intptr_t S = MmType<T>::size;

    static int32_t pos(int32_t n) { return n < 0 ? 0 : n; }

    // One dot product: a and b advance by their own element strides.  Kept
    // out of line so that its loop has the registers to itself (binary128
    // sums need most of the integer registers).
    template <bool Split = false>
    [[gnu::noinline]] static Acc dot(int32_t kcount, const void* a, std::intptr_t as, const void* b, std::intptr_t bs) {
        Acc s = Ar::zero();
        for (int32_t k = 0; k < kcount; ++k)
            s = Ar::fma(s, Ar::template load<Split>(at<T>(a, k, as)), Ar::template load<Split>(at<T>(b, k, bs)));
        return s;
    }

    // C(i, j) = [C +] sum_k A(i, k) B(k, j) over a rows x ncols block.
    // Split: A and B are packed (hi, lo) slots (split10.h); C is as stored.
    template <bool Split = false>
    static void block(int32_t acc, int32_t rows, int32_t ncols, int32_t kcount, const void* A, int32_t ars,
                      int32_t aks, const void* B, int32_t bks, int32_t bcs, void* C, int32_t crs, int32_t ccs) {
        rows = pos(rows), ncols = pos(ncols), kcount = pos(kcount);
        for (int32_t j = 0; j < ncols; ++j) {
            const void* bj = at<T>(B, j, bcs);
            int32_t i = 0;
            // Four rows side by side: independent sums, each in increasing k.
            // Binary128 sums live in integer registers, where four would not
            // fit: one row at a time.
            if constexpr (!kIntegerHeld<Acc>)
            for (; i + 4 <= rows; i += 4) {
                Acc s[4] = {Ar::zero(), Ar::zero(), Ar::zero(), Ar::zero()};
                for (int32_t k = 0; k < kcount; ++k) {
                    const Acc b = Ar::template load<Split>(at<T>(bj, k, bks));
                    for (int r = 0; r < 4; ++r)
                        s[r] = Ar::fma(s[r], Ar::template load<Split>(at2<T>(A, i + r, ars, k, aks)), b);
                }
                for (int r = 0; r < 4; ++r) Ar::put(at2<T>(C, i + r, crs, j, ccs), acc != 0, s[r]);
            }
            for (; i < rows; ++i)
                Ar::put(at2<T>(C, i, crs, j, ccs), acc != 0, dot<Split>(kcount, at<T>(A, i, ars), aks, bj, bks));
        }
    }

    // One element into a packed buffer: copied, or (Split) each REAL(10)
    // part split into (hi, lo); false when a part cannot be split.
    template <bool Split>
    static bool pack(char* d, const char* s) {
        if constexpr (Split) {
            bool ok = true;
            for (std::intptr_t q = 0; q < S; q += kReal10Slot) ok &= split_r10(d + q, s + q);
            return ok;
        } else {
            std::memcpy(d, s, S);
            return true;
        }
    }

    // The packers return false when a Split pack met a value it cannot split.
    template <bool Split = false>
    static bool convert_block(void* dest, const void* A, int32_t rows, int32_t kcount, int32_t ars, int32_t aks) {
        rows = pos(rows), kcount = pos(kcount);
        char* d = static_cast<char*>(dest);
        bool ok = true;
        for (int32_t g = 0; g + 4 <= rows; g += 4)
            for (int32_t k = 0; k < kcount; ++k)
                for (int32_t r = 0; r < 4; ++r, d += S) ok &= pack<Split>(d, at2<T>(A, g + r, ars, k, aks));
        return ok;
    }
    template <bool Split = false>
    static bool copy_block(void* dest, const void* B, int32_t kcount, int32_t ncols, int32_t bks, int32_t bcs) {
        kcount = pos(kcount), ncols = pos(ncols);
        char* d = static_cast<char*>(dest);
        bool ok = true;
        for (int32_t j = 0; j < ncols; ++j)
            for (int32_t k = 0; k < kcount; ++k, d += S) ok &= pack<Split>(d, at2<T>(B, k, bks, j, bcs));
        return ok;
    }
    static void copy_vector(void* dest, const void* src, int32_t n, int32_t stride) {
        char* d = static_cast<char*>(dest);
        for (int32_t i = 0; i < n; ++i, d += S) std::memcpy(d, at<T>(src, i, stride), S);
    }
    static void init_vector(void* dest, int32_t n, int32_t stride) {
        for (int32_t i = 0; i < n; ++i) std::memset(at<T>(dest, i, stride), 0, S);
    }

    // Panel x B block: panel rows (a multiple of 4), B with unit k stride.
    template <bool Split = false>
    static void inner2x2(int32_t acc, int32_t rows, int32_t ncols, int32_t kcount, const void* panel, const void* B,
                         int32_t bcs, void* C, int32_t crs, int32_t ccs) {
        rows = pos(rows) / 4 * 4, kcount = pos(kcount);
        for (int32_t g = 0; g < rows; g += 4)
            block<Split>(acc, 4, ncols, kcount, at<T>(panel, std::intptr_t(g) * kcount, 1), 1, 4, B, 1, bcs,
                  at<T>(C, g, crs), crs, ccs);
    }
    static void inner1x2(int32_t acc, int32_t ncols, int32_t kcount, const void* A, const void* B, int32_t bks,
                         int32_t bcs, void* C, int32_t cs) {
        block(acc, 1, ncols, kcount, A, 0, 1, B, bks, bcs, C, 0, cs);
    }
    static void inner2x1(int32_t acc, int32_t rows, int32_t kcount, const void* A, int32_t ars, int32_t aks,
                         const void* x, void* C, int32_t cs) {
        block(acc, rows, 1, kcount, A, ars, aks, x, 1, 0, C, cs, 0);
    }
    static void epilogue1x2(int32_t acc, int32_t ncols, int32_t kcount, const void* A, int32_t as, const void* B,
                            int32_t bks, int32_t bcs, void* C, int32_t cs) {
        block(acc, 1, ncols, kcount, A, 0, as, B, bks, bcs, C, 0, cs);
    }
    static void epilogue2x1(int32_t acc, int32_t rows, int32_t kcount, const void* A, int32_t ars, int32_t aks,
                            const void* x, int32_t xs, void* C, int32_t cs) {
        block(acc, rows, 1, kcount, A, ars, aks, x, xs, 0, C, cs, 0);
    }
};

// The blocked engines, step by step: column blocks, row blocks, the K
// remainder first (even part through panels, the odd last k through the
// epilogue), then the full K blocks; the vector engines split K into chunks
// the same way.  Scratch lives in this frame.
template <class T>
struct Blocked {
    using Kn = Kernels<T>;
    static constexpr Blocks bk = MmType<T>::blocks;
    static constexpr std::intptr_t S = MmType<T>::size;

    static void engine2x2(int32_t M, int32_t N, int32_t K, const void* A, int32_t a1, int32_t a2, const void* B,
                          int32_t b1, int32_t b2, void* C, int32_t c1, int32_t c2) {
        if (N < 1) return;
        if (K < 0) K = 0;
        alignas(64) char panel[bk.panel * bk.kblk * S];
        alignas(64) char bbuf[bk.kblk * bk.col * S];
        const int32_t full = K / bk.kblk * bk.kblk, R = K - full, R2 = R / 2 * 2;
        // B block from (k0, j0) with kc values of k: in place or copied.
        // REAL(10) parts are packed split when every value of the block
        // splits (Bv.split), else taken as stored.
        struct BView {
            const void* p;
            int32_t ld;
            bool split;
        };
        constexpr bool splits = kSplitParts<typename MmType<T>::elem>;
        bool may_split = false;
        if constexpr (splits) may_split = x87_full_precision();
        auto bblock = [&](int32_t k0, int32_t j0, int32_t kc, int32_t w) -> BView {
            if constexpr (splits)
                if (may_split && Kn::template copy_block<true>(bbuf, at2<T>(B, k0, b1, j0, b2), kc, w, b1, b2))
                    return {bbuf, kc, true};
            if (b1 == 1) return {at2<T>(B, k0, 1, j0, b2), b2, false};
            Kn::copy_block(bbuf, at2<T>(B, k0, b1, j0, b2), kc, w, b1, b2);
            return {bbuf, kc, false};
        };
        auto panels = [&](int32_t acc, int32_t i, int32_t rows, int32_t k0, int32_t kc, const BView& Bv, int32_t j0,
                          int32_t w) {
            void* Ct = at2<T>(C, i, c1, j0, c2);
            if constexpr (splits) {
                if (Bv.split) {
                    if (Kn::template convert_block<true>(panel, at2<T>(A, i, a1, k0, a2), rows, kc, a1, a2))
                        Kn::template inner2x2<true>(acc, rows, w, kc, panel, Bv.p, Bv.ld, Ct, c1, c2);
                    else  // a value of this panel does not split: the operands as stored
                        Kn::block(acc, rows, w, kc, at2<T>(A, i, a1, k0, a2), a1, a2, at2<T>(B, k0, b1, j0, b2), b1,
                                  b2, Ct, c1, c2);
                    return;
                }
            }
            Kn::convert_block(panel, at2<T>(A, i, a1, k0, a2), rows, kc, a1, a2);
            Kn::inner2x2(acc, rows, w, kc, panel, Bv.p, Bv.ld, Ct, c1, c2);
        };
        for (int32_t j0 = 0; j0 < N; j0 += bk.col) {
            const int32_t w = std::min(j0 + bk.col, N) - j0;
            for (int32_t i0 = 0; i0 < M; i0 += bk.row) {
                const int32_t h = std::min(i0 + bk.row, M) - i0, hp = h / bk.panel * bk.panel;
                if (R == 0) {
                    for (int32_t j = 0; j < w; ++j) Kn::init_vector(at2<T>(C, i0, c1, j0 + j, c2), h, c1);
                } else {
                    if (R2 > 0) {
                        const BView Bv = bblock(full, j0, R2, w);
                        for (int32_t p = 0; p < hp; p += bk.panel) panels(0, i0 + p, bk.panel, full, R2, Bv, j0, w);
                        Kn::block(0, h - hp, w, R2, at2<T>(A, i0 + hp, a1, full, a2), a1, a2,
                                  at2<T>(B, full, b1, j0, b2), b1, b2, at2<T>(C, i0 + hp, c1, j0, c2), c1, c2);
                    }
                    if (R & 1)
                        Kn::block(R2 > 0, h, w, 1, at2<T>(A, i0, a1, full + R2, a2), a1, a2,
                                  at2<T>(B, full + R2, b1, j0, b2), b1, b2, at2<T>(C, i0, c1, j0, c2), c1, c2);
                }
                for (int32_t k0 = 0; k0 < full; k0 += bk.kblk) {
                    const BView Bv = bblock(k0, j0, bk.kblk, w);
                    int32_t p = 0;
                    for (; p < hp; p += bk.panel) panels(1, i0 + p, bk.panel, k0, bk.kblk, Bv, j0, w);
                    for (; p + 4 <= h; p += 4) panels(1, i0 + p, 4, k0, bk.kblk, Bv, j0, w);
                    Kn::block(1, h - p, w, bk.kblk, at2<T>(A, i0 + p, a1, k0, a2), a1, a2, at2<T>(B, k0, b1, j0, b2),
                              b1, b2, at2<T>(C, i0 + p, c1, j0, c2), c1, c2);
                }
            }
        }
    }

    // A vector operand chunk: in place when contiguous, else gathered.
    static const void* gather(char* buf, const void* v, int32_t k0, int32_t n, int32_t s) {
        if (s == 1) return at<T>(v, k0, 1);
        Kn::copy_vector(buf, at<T>(v, k0, s), n, s);
        return buf;
    }

    // The vector engines' K order: the remainder first (its part that is a
    // multiple of `split` through inner, the rest through the epilogue), C
    // cleared when there is no remainder, then the full chunks through inner.
    template <int split, class Inner, class Epilogue>
    static void vector_engine(int32_t n, int32_t K, void* C, int32_t cs, Inner inner, Epilogue epilogue) {
        if (n < 1) return;
        if (K < 0) K = 0;
        const int32_t full = K / bk.chunk * bk.chunk, R = K - full, Rs = R / split * split;
        if (R == 0) Kn::init_vector(C, n, cs);
        if (Rs > 0) inner(0, full, Rs);
        if (R - Rs > 0) epilogue(Rs > 0, full + Rs, R - Rs);
        for (int32_t k0 = 0; k0 < full; k0 += bk.chunk) inner(1, k0, bk.chunk);
    }

    static void engine1x2(int32_t N, int32_t K, const void* A, int32_t as, const void* B, int32_t b1, int32_t b2,
                          void* C, int32_t cs) {
        alignas(64) char buf[bk.chunk * S];
        vector_engine<4>(
            N, K, C, cs,
            [&](int32_t acc, int32_t k0, int32_t n) {
                Kn::inner1x2(acc, N, n, gather(buf, A, k0, n, as), at<T>(B, k0, b1), b1, b2, C, cs);
            },
            [&](int32_t acc, int32_t k0, int32_t n) {
                Kn::epilogue1x2(acc, N, n, at<T>(A, k0, as), as, at<T>(B, k0, b1), b1, b2, C, cs);
            });
    }

    static void engine2x1(int32_t M, int32_t K, const void* A, int32_t a1, int32_t a2, const void* B, int32_t bs,
                          void* C, int32_t cs) {
        alignas(64) char buf[bk.chunk * S];
        vector_engine<2>(
            M, K, C, cs,
            [&](int32_t acc, int32_t k0, int32_t n) {
                Kn::inner2x1(acc, M, n, at<T>(A, k0, a2), a1, a2, gather(buf, B, k0, n, bs), C, cs);
            },
            [&](int32_t acc, int32_t k0, int32_t n) {
                Kn::epilogue2x1(acc, M, n, at<T>(A, k0, a2), a1, a2, at<T>(B, k0, bs), bs, C, cs);
            });
    }
};

// LOGICAL: no blocking.  Per column, the first k with B(k, j) true bounds
// every row's scan from below; a row stops at its first k where both are
// true.  Any set bit is true; a stored true is 1 in the element's width.
template <class T>
struct LogicalEngines {
    using E = typename MmType<T>::elem;
    static bool truth(const void* p) { return logical_true<E>(p); }
    static void put(void* c, bool v) { Kind<E>::store(c, static_cast<E>(v ? 1 : 0)); }

    static void column(int32_t M, int32_t K, const void* A, int32_t a1, int32_t a2, const void* Bj, int32_t b1,
                       void* Cj, int32_t c1) {
        int32_t first = 0;
        while (first < K && !truth(at<T>(Bj, first, b1))) ++first;
        for (int32_t i = 0; i < M; ++i) {
            bool v = false;
            for (int32_t k = first; k < K && !v; ++k) v = truth(at<T>(Bj, k, b1)) && truth(at2<T>(A, i, a1, k, a2));
            put(at<T>(Cj, i, c1), v);
        }
    }
    static void engine2x2(int32_t M, int32_t N, int32_t K, const void* A, int32_t a1, int32_t a2, const void* B,
                          int32_t b1, int32_t b2, void* C, int32_t c1, int32_t c2) {
        for (int32_t j = 0; j < N; ++j) column(M, K, A, a1, a2, at<T>(B, j, b2), b1, at<T>(C, j, c2), c1);
    }
    static void engine1x2(int32_t N, int32_t K, const void* A, int32_t as, const void* B, int32_t b1, int32_t b2,
                          void* C, int32_t cs) {
        for (int32_t j = 0; j < N; ++j) column(1, K, A, 0, as, at<T>(B, j, b2), b1, at<T>(C, j, cs), 0);
    }
    static void engine2x1(int32_t M, int32_t K, const void* A, int32_t a1, int32_t a2, const void* B, int32_t bs,
                          void* C, int32_t cs) {
        column(M, K, A, a1, a2, B, bs, C, cs);
    }
};

}  // namespace intrins::mm
