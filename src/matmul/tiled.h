// tiled.h - the fast engines of the native types, compiled once per
// instruction set.  The including file defines MM_ISA (namespace name),
// MM_TARGET (the function attribute selecting the instruction set, empty for
// the baseline), MM_VBYTES (vector width in bytes) and MM_TABLE (the name of
// the engine table it exports); see tiled_*.cpp and dispatch.cpp.
//
// Arithmetic: each result element is the same sequence as in kernels.h.  The
// K pieces come from for_each_piece in order; within a piece a register tile
// keeps one accumulator per element and adds the products in increasing k,
// starting from zero; the tile is then stored into C or added to it
// (Arith<T>::put rules).  Packing, tile shapes and loop order only decide
// which elements are computed together.
//
// Compute types W: double for REAL(4), REAL(8), COMPLEX(8), COMPLEX(16)
// (REAL(4) values convert exactly); uint32 for INTEGER(1, 2, 4) and uint64
// for INTEGER(8) (sums wrap; the store truncates to the element's width).
//
// Packed layouts (per register tile of MR W-lanes by NR columns):
//   A real:    [k][MR]       the MR row values of k side by side
//   A complex: [k][2][MR]    rows interleaved (re, im), then (-im, re)
//   B real:    [k][NR]       B complex: [k][NR][re, im]
// Complex products: with a = (ar, ai) lanes, as = (-ai, ar) lanes,
//   a * br + as * bi = (ar br + (-ai bi), ai br + ar bi),
// which equals (ar br - ai bi, ar bi + ai br) bit for bit for every value
// that is not a NaN (x - y is x + (-y); sums commute).
#include <cstddef>
#include <utility>

#include "engines.h"

#ifndef MM_ISA
#error "define MM_ISA, MM_TARGET, MM_VBYTES and MM_TABLE before including tiled.h"
#endif

namespace intrins::mm {

// The scalar type of one part of an element value.
template <class V>
struct PartOf {
    using type = V;
};
template <class P>
struct PartOf<Cplx<P>> {
    using type = P;
};

namespace MM_ISA {

template <class T>
struct Tiled {
    using Ar = Arith<T>;
    using Acc = typename Ar::Acc;
    using E = typename MmType<T>::elem;
    static constexpr bool cx = MmType<T>::family == Family::Complex;
    using W = std::conditional_t<cx, double, Acc>;
    using EP = typename PartOf<typename Kind<E>::value>::type;
    static constexpr int L = MM_VBYTES / sizeof(W);  // lanes
    using V [[gnu::vector_size(MM_VBYTES)]] = W;
    using EV [[gnu::vector_size(L * sizeof(EP))]] = EP;
    static constexpr std::intptr_t S = MmType<T>::size;
    static constexpr Blocks bk = MmType<T>::blocks;
    static constexpr int RL = cx ? 2 : 1;  // W-lanes per row

    // Register tile: MV vectors of rows by NR columns, from the registers there are.
    static constexpr int REGS = INTRINS_64BIT ? (MM_VBYTES == 64 ? 32 : 16) : 8;
    static constexpr int MV = REGS == 8 ? 1 : (cx && REGS == 16 ? 1 : 2);
    static constexpr int NR = cx ? (REGS == 32 ? 8 : REGS == 16 ? 4 : 2) : (REGS == 32 ? 12 : REGS == 16 ? 5 : 4);
    static constexpr int MR = MV * L;   // W-lanes of a tile
    static constexpr int MRr = MR / RL; // rows of a tile
    static constexpr int AK = MR * RL;  // W per k in a packed A tile
    static constexpr int BK = NR * RL;  // W per k in a packed B sliver

    // Scratch: packed A block (MC rows, 6144 values) and B block (NC columns,
    // 18432 values), 48 and 144 KiB of doubles: wide B blocks mean fewer
    // passes that pack A again.  Counted in values, so 4-byte integer lanes
    // keep blocks of 24 and 72 KiB, which measured faster for them.
    static constexpr int kBudgetA = 6144, kBudgetB = 18432;
    static constexpr int MC = std::max(1, kBudgetA / (bk.kblk * AK)) * MRr;
    static constexpr int NC = kBudgetB / (bk.kblk * BK) * NR;

    [[gnu::always_inline]] static W part(const char* p, int q) {
        EP v;
        std::memcpy(&v, p + q * sizeof(EP), sizeof v);
        if constexpr (std::is_integral_v<EP>) return static_cast<W>(static_cast<std::make_unsigned_t<EP>>(v));
        else return static_cast<W>(v);
    }
    [[gnu::always_inline]] MM_TARGET static V splat(W x) {
        // Through the integer image: OR with zero folds to a plain broadcast,
        // where 0.0 + x would not (it turns -0 into +0).
        using U = std::conditional_t<sizeof(W) == 8, uint64_t, uint32_t>;
        using VU [[gnu::vector_size(MM_VBYTES)]] = U;
        U bits;
        std::memcpy(&bits, &x, sizeof bits);
        VU vu = VU{} | bits;
        V v;
        std::memcpy(&v, &vu, sizeof v);
        return v;
    }

    // acc[j][m] over kl values of k.  A: packed (k step AK) or, for real
    // types, read in place from columns (k step lda elements, type EA).
    // L W-lanes of sums into L element parts at c: C = C + s or C = s, in
    // the element's type (the rounding and truncation of Arith<T>::put).
    [[gnu::always_inline]] MM_TARGET static void put_vector(char* c, V t, bool accumulate) {
        if (accumulate) {
            EV e;
            std::memcpy(&e, c, sizeof e);
            t = __builtin_convertvector(e, V) + t;
        }
        EV out = __builtin_convertvector(t, EV);
        std::memcpy(c, &out, sizeof out);
    }

    // (Straight-line vectorization is off here: it would merge the column
    // broadcasts into one load plus shuffles.)
    // With `C` given (a full tile over unit-stride columns) the sums go
    // straight into C (C + s, or s) instead of through `tile`.
    template <class EA, bool packedB, int TM = MV, int TN = NR>
    MM_TARGET [[gnu::optimize("no-tree-slp-vectorize")]] static void micro(int kl, const EA* a, std::ptrdiff_t ak, const char* b, std::ptrdiff_t bk1,
                                std::ptrdiff_t bk2, W* tile, char* C = nullptr, std::ptrdiff_t c2 = 0,
                                bool accumulate = false) {
        V acc[TN][TM];
        for (int j = 0; j < TN; ++j)
            for (int m = 0; m < TM; ++m) acc[j][m] = V{};
        // The C tile is only touched after the k loop: ask for its lines now,
        // so that the store-back does not wait on the caches.
        if (C) {
            constexpr int bytes = TM * L * int(sizeof(EP));
            for (int j = 0; j < TN; ++j) {
                const char* cj = C + j * c2 * S;
                for (int o = 0; o < bytes; o += 64) __builtin_prefetch(cj + o, 1, 3);
                __builtin_prefetch(cj + bytes - 1, 1, 3);
            }
        }
        for (int k = 0; k < kl; ++k) {
            V av[TM], as[TM];
            for (int m = 0; m < TM; ++m) {
                if constexpr (std::is_same_v<EA, W>) {
                    std::memcpy(&av[m], a + m * L, sizeof(V));
                    if constexpr (cx) std::memcpy(&as[m], a + TM * L + m * L, sizeof(V));
                } else {
                    EV e;
                    std::memcpy(&e, a + m * L, sizeof e);
                    av[m] = __builtin_convertvector(e, V);
                }
            }
#pragma GCC unroll 16
            for (int j = 0; j < TN; ++j) {
                if constexpr (cx) {
                    const W* bj = reinterpret_cast<const W*>(b) + 2 * j;
                    V br = splat(bj[0]), bi = splat(bj[1]);
                    for (int m = 0; m < TM; ++m) {
                        V t1 = av[m] * br, t2 = as[m] * bi;
                        V p = t1 + t2;
                        acc[j][m] = acc[j][m] + p;
                    }
                } else {
                    V bj;
                    if constexpr (packedB) bj = splat(reinterpret_cast<const W*>(b)[j]);
                    else bj = splat(part(b + j * bk2 * S, 0));
                    for (int m = 0; m < TM; ++m) {
                        V p = av[m] * bj;
                        acc[j][m] = acc[j][m] + p;
                    }
                }
            }
            a += ak;
            b += bk1;
        }
        if (C) {
            for (int j = 0; j < TN; ++j)
                for (int m = 0; m < TM; ++m) {
                    put_vector(C + (j * c2 * S) + m * L * std::ptrdiff_t(sizeof(EP)), acc[j][m], accumulate);
                }
            return;
        }
        for (int j = 0; j < TN; ++j)
            for (int m = 0; m < TM; ++m) std::memcpy(tile + j * TM * L + m * L, &acc[j][m], sizeof(V));
    }

    // Tile -> C: rows x cols valid; vector stores down unit-stride columns.
    template <int TM = MV>
    MM_TARGET static void put_tile(const W* tile, int rows, int cols, char* C, std::ptrdiff_t c1, std::ptrdiff_t c2,
                                   bool acc) {
        if (c1 == 1 && rows == TM * L / RL) {
            for (int j = 0; j < cols; ++j) {
                char* c = C + j * c2 * S;
                for (int m = 0; m < TM; ++m, c += L * sizeof(EP)) {
                    V t;
                    std::memcpy(&t, tile + j * TM * L + m * L, sizeof t);
                    put_vector(c, t, acc);
                }
            }
            return;
        }
        for (int j = 0; j < cols; ++j)
            for (int i = 0; i < rows; ++i) {
                const W* t = tile + j * TM * L + i * RL;
                Acc s;
                if constexpr (cx) s = Acc{t[0], t[1]};
                else s = t[0];
                Ar::put(C + (i * c1 + j * c2) * S, acc, s);
            }
    }

    MM_TARGET static void pack_a(W* dst, const char* A, int rows, int kl, std::ptrdiff_t a1, std::ptrdiff_t a2) {
        for (int r0 = 0; r0 < rows; r0 += MRr, dst += std::ptrdiff_t(kl) * AK) {
            const int h = rows - r0 < MRr ? rows - r0 : MRr;
            for (int k = 0; k < kl; ++k) {
                W* d = dst + k * AK;
                const char* src = A + (r0 * a1 + k * a2) * S;
                if constexpr (cx) {
                    for (int r = 0; r < MRr; ++r) {
                        W re = 0, im = 0;
                        if (r < h) re = part(src + r * a1 * S, 0), im = part(src + r * a1 * S, 1);
                        d[2 * r] = re, d[2 * r + 1] = im, d[MR + 2 * r] = -im, d[MR + 2 * r + 1] = re;
                    }
                } else if (a1 == 1 && h == MRr) {
                    if constexpr (std::is_same_v<W, EP>) std::memcpy(d, src, MRr * sizeof(W));
                    else for (int r = 0; r < MRr; ++r) d[r] = part(src + r * S, 0);
                } else {
                    for (int r = 0; r < MRr; ++r) d[r] = r < h ? part(src + r * a1 * S, 0) : W(0);
                }
            }
        }
    }

    // One stage of an L x L transpose: rows i and i + h exchange their
    // h-lane blocks (lo keeps row i's even blocks, hi its odd ones).
    template <int h, std::size_t... I>
    [[gnu::always_inline]] MM_TARGET static void swap_blocks(V& a, V& b, std::index_sequence<I...>) {
        const V lo = __builtin_shufflevector(a, b, ((I & h) ? L + I - h : I)...);
        const V hi = __builtin_shufflevector(a, b, ((I & h) ? L + I : I + h)...);
        a = lo, b = hi;
    }
    template <int h = 1>
    [[gnu::always_inline]] MM_TARGET static void transpose(V* r) {
        if constexpr (h < L) {
#pragma GCC unroll 16
            for (int i = 0; i < L; ++i)
                if (!(i & h)) swap_blocks<h>(r[i], r[i + h], std::make_index_sequence<L>{});
            transpose<2 * h>(r);
        }
    }
    // NC columns (c0 ..) x L values of k (k0 ..) of unit-stride columns into
    // a packed sliver: lanes of a column become the column's slot of L rows.
    template <int NCOL>
    [[gnu::always_inline]] MM_TARGET static void pack_b_square(W* dst, const char* src, std::ptrdiff_t b2) {
        V r[L];
#pragma GCC unroll 16
        for (int c = 0; c < L; ++c) {
            if (c < NCOL) {
                EV e;
                std::memcpy(&e, src + c * b2 * S, sizeof e);
                r[c] = __builtin_convertvector(e, V);
            } else {
                r[c] = V{};
            }
        }
        transpose(r);
#pragma GCC unroll 16
        for (int k = 0; k < L; ++k) std::memcpy(dst + k * BK, &r[k], NCOL * sizeof(W));
    }

    MM_TARGET static void pack_b(W* dst, const char* B, int kl, int cols, std::ptrdiff_t b1, std::ptrdiff_t b2) {
        for (int c0 = 0; c0 < cols; c0 += NR, dst += std::ptrdiff_t(kl) * BK) {
            const int w = cols - c0 < NR ? cols - c0 : NR;
            // Unit-stride columns of a real type: L x L blocks moved through
            // in-register transposes, the last kl % L values one by one.
            if constexpr (!cx && std::is_floating_point_v<W>) {
                if (b1 == 1 && w == NR) {
                    const char* col = B + c0 * b2 * S;
                    std::ptrdiff_t k = 0;
                    for (; k + L <= kl; k += L) {
                        for (int g = 0; g + L <= NR; g += L)
                            pack_b_square<L>(dst + k * BK + g, col + (g * b2 + k) * S, b2);
                        if constexpr (NR % L != 0)
                            pack_b_square<NR % L>(dst + k * BK + NR / L * L, col + (NR / L * L * b2 + k) * S, b2);
                    }
                    W* d = dst + k * BK;
                    for (const char* ck = col + k * S; k < kl; ++k, d += BK, ck += S)
                        for (int c = 0; c < NR; ++c) d[c] = part(ck + c * b2 * S, 0);
                    continue;
                }
            }
            // Columns past the last (c >= w) are zeros: no address is formed
            // for a column B does not have.
            for (int c = 0; c < NR; ++c) {
                for (int k = 0; k < kl; ++k)
                    for (int q = 0; q < RL; ++q)
                        dst[k * BK + c * RL + q] = c < w ? part(B + ((c0 + c) * b2 + k * b1) * S, q) : W(0);
            }
        }
    }

    MM_TARGET static void mm(int32_t M, int32_t N, int32_t K, const void* A, int32_t a1, int32_t a2, const void* B,
                             int32_t b1, int32_t b2, void* C, int32_t c1, int32_t c2) {
        if (M < 1 || N < 1) return;
        const char* pa = static_cast<const char*>(A);
        const char* pb = static_cast<const char*>(B);
        char* pc = static_cast<char*>(C);
        alignas(64) W tile[MR * NR];
        // Small problems with unit-stride columns of A: no packing.
        if constexpr (!cx) {
          if (a1 == 1 && std::int64_t(M) * N * (K > 0 ? K : 1) <= 48 * 48 * 48) {
            // Tiles of one vector of rows by 4 columns, then single columns;
            // rows short of a vector go through the scalar kernel.
            const int Mt = M / L * L, Nt = N / 4 * 4;
            for_each_piece(K, bk.kblk, 2, [&](int32_t k0, int32_t kl, bool acc) MM_TARGET {
                for (int i = 0; i < Mt; i += L) {
                    const EP* ai = reinterpret_cast<const EP*>(pa + (i + std::ptrdiff_t(k0) * a2) * S);
                    for (int j = 0; j < N; j += j < Nt ? 4 : 1) {
                        const char* bj = pb + (std::ptrdiff_t(k0) * b1 + std::ptrdiff_t(j) * b2) * S;
                        char* cij = pc + (i * std::ptrdiff_t(c1) + j * std::ptrdiff_t(c2)) * S;
                        if (j < Nt) {
                            micro<EP, false, 1, 4>(kl, ai, a2, bj, b1 * S, b2, tile);
                            put_tile<1>(tile, L, 4, cij, c1, c2, acc);
                        } else {
                            micro<EP, false, 1, 1>(kl, ai, a2, bj, b1 * S, b2, tile);
                            put_tile<1>(tile, L, 1, cij, c1, c2, acc);
                        }
                    }
                }
                Kernels<T>::block(acc, M - Mt, N, kl, at2<T>(pa, Mt, a1, k0, a2), a1, a2, at<T>(pb, k0, b1), b1, b2,
                                  at<T>(pc, Mt, c1), c1, c2);
            });
            return;
          }
        }
        alignas(64) W abuf[MC / MRr * AK * bk.kblk];
        alignas(64) W bbuf[NC * bk.kblk * RL];
        for (int j0 = 0; j0 < N; j0 += NC) {
            const int w = N - j0 < NC ? N - j0 : NC;
            for_each_piece(K, bk.kblk, 2, [&](int32_t k0, int32_t kl, bool acc) MM_TARGET {
                pack_b(bbuf, pb + (std::ptrdiff_t(k0) * b1 + std::ptrdiff_t(j0) * b2) * S, kl, w, b1, b2);
                for (int i0 = 0; i0 < M; i0 += MC) {
                    const int h = M - i0 < MC ? M - i0 : MC;
                    pack_a(abuf, pa + (std::ptrdiff_t(i0) * a1 + std::ptrdiff_t(k0) * a2) * S, h, kl, a1, a2);
                    // The next row block's columns, a few per B sliver, so
                    // that its packing finds them in the caches.
                    const int hn = M - i0 - MC < MC ? M - i0 - MC : MC;
                    const int slivers = (w + NR - 1) / NR, kper = (kl + slivers - 1) / slivers;
                    for (int j = 0; j < w; j += NR) {
                        if (a1 == 1 && hn > 0) {
                            const int kb = j / NR * kper, ke = kb + kper < kl ? kb + kper : kl;
                            for (int k = kb; k < ke; ++k) {
                                const char* col = pa + (std::ptrdiff_t(i0 + MC) + std::ptrdiff_t(k0 + k) * a2) * S;
                                for (std::ptrdiff_t o = 0; o < hn * S; o += 64) __builtin_prefetch(col + o, 0, 2);
                                __builtin_prefetch(col + hn * S - 1, 0, 2);
                            }
                        }
                        const W* bs = bbuf + std::ptrdiff_t(j / NR) * kl * BK;
                        for (int i = 0; i < h; i += MRr) {
                            const int rows = h - i < MRr ? h - i : MRr, cols = w - j < NR ? w - j : NR;
                            char* ct = pc + ((i0 + i) * std::ptrdiff_t(c1) + (j0 + j) * std::ptrdiff_t(c2)) * S;
                            const bool whole = c1 == 1 && rows == MRr && cols == NR;
                            micro<W, true>(kl, abuf + std::ptrdiff_t(i / MRr) * kl * AK, AK,
                                           reinterpret_cast<const char*>(bs), BK * sizeof(W), 0, tile,
                                           whole ? ct : nullptr, c2, acc);
                            if (!whole) put_tile(tile, rows, cols, ct, c1, c2, acc);
                        }
                    }
                }
            });
        }
    }

    // One sweep of CPS unit-stride columns over the h partial sums s, L rows
    // per vector; each row adds its CPS products in increasing k.  A function
    // of its own so that nothing is reloaded through a closure in the loop.
    template <int CPS>
    MM_TARGET static void mv_sweep(const char* const* colp, const W* xp, Acc* s, int h) {
        const char* col[CPS];
        W x[CPS];
        for (int q = 0; q < CPS; ++q) col[q] = colp[q], x[q] = xp[q];
        int i = 0;
        for (; i + L <= h; i += L) {
            V t;
            std::memcpy(&t, &s[i], sizeof t);
#pragma GCC unroll 8
            for (int q = 0; q < CPS; ++q) {
                EV e;
                __builtin_prefetch(col[q] + i * S + 512, 0, 0);  // 512 bytes ahead measured best
                std::memcpy(&e, col[q] + i * S, sizeof e);
                t = t + __builtin_convertvector(e, V) * x[q];
            }
            std::memcpy(&s[i], &t, sizeof t);
        }
        for (; i < h; ++i) {
            Acc t = s[i];
            for (int q = 0; q < CPS; ++q) t = Ar::fma(t, Ar::load(col[q] + i * S), x[q]);
            s[i] = t;
        }
    }

    // Matrix x vector: a column of partial sums per row chunk, k outermost
    // within a piece, so A is read down its columns once.
    MM_TARGET static void mv(int32_t M, int32_t K, const void* A, int32_t a1, int32_t a2, const void* B, int32_t bs,
                             void* C, int32_t cs) {
        if (M < 1) return;
        constexpr int RB = 2048;
        Acc s[RB];
        for (int i0 = 0; i0 < M; i0 += RB) {
            const int h = M - i0 < RB ? M - i0 : RB;
            const char* a0 = static_cast<const char*>(A) + std::ptrdiff_t(i0) * a1 * S;
            for_each_piece(K, bk.chunk, 2, [&](int32_t k0, int32_t kl, bool acc) MM_TARGET {
                for (int i = 0; i < h; ++i) s[i] = Ar::zero();
                int k = k0;
                // Real types over unit-stride columns: eight columns per sweep
                // over the partial sums, L rows per vector (more streams in
                // flight, one load and store of the sums per eight columns).
                if constexpr (!cx && std::is_floating_point_v<W>) {
                    constexpr int CPS = 8;
                    for (; a1 == 1 && k + CPS <= k0 + kl; k += CPS) {
                        const char* col[CPS];
                        W x[CPS];
                        for (int q = 0; q < CPS; ++q) {
                            col[q] = a0 + std::ptrdiff_t(k + q) * a2 * S;
                            x[q] = Ar::load(at<T>(B, k + q, bs));
                        }
                        mv_sweep<CPS>(col, x, s, h);
                    }
                }
                // Four columns per sweep over the partial sums, still in increasing k per row.
                for (; a1 == 1 && k + 4 <= k0 + kl; k += 4) {
                    const Acc x0 = Ar::load(at<T>(B, k, bs)), x1 = Ar::load(at<T>(B, k + 1, bs)),
                              x2 = Ar::load(at<T>(B, k + 2, bs)), x3 = Ar::load(at<T>(B, k + 3, bs));
                    const char* c0 = a0 + std::ptrdiff_t(k) * a2 * S;
                    const char* c1 = c0 + std::ptrdiff_t(a2) * S;
                    const char* c2 = c1 + std::ptrdiff_t(a2) * S;
                    const char* c3 = c2 + std::ptrdiff_t(a2) * S;
                    for (int i = 0; i < h; ++i) {
                        Acc t = Ar::fma(s[i], Ar::load(c0 + i * S), x0);
                        t = Ar::fma(t, Ar::load(c1 + i * S), x1);
                        t = Ar::fma(t, Ar::load(c2 + i * S), x2);
                        s[i] = Ar::fma(t, Ar::load(c3 + i * S), x3);
                    }
                }
                for (; k < k0 + kl; ++k) {
                    const Acc x = Ar::load(at<T>(B, k, bs));
                    const char* col = a0 + std::ptrdiff_t(k) * a2 * S;
                    for (int i = 0; i < h; ++i) s[i] = Ar::fma(s[i], Ar::load(col + i * a1 * S), x);
                }
                for (int i = 0; i < h; ++i) Ar::put(at<T>(C, i0 + i, cs), acc, s[i]);
            });
        }
    }

    // CW unit-stride columns (byte step cstep) against av: one chain per
    // column, all columns advancing together in k.  Values are passed, not
    // captured, so that nothing is reloaded inside the loop.  Scalar on
    // purpose: the vectorizer would multiply along k and then pull every
    // product out of its lane for the ordered sums.
    template <int CW>
    MM_TARGET [[gnu::optimize("no-tree-vectorize")]] static void vm_columns(int kl, const Acc* av, const char* bj, std::ptrdiff_t cstep, Acc* out) {
        Acc s[CW];
        for (int c = 0; c < CW; ++c) s[c] = out[c];
        for (int k = 0; k < kl; ++k, bj += S) {
            // One line ahead per column and line's worth of k: the column
            // streams are too many for the hardware to follow all of them.
            if (k % (64 / S) == 0)
                for (int c = 0; c < CW; ++c) __builtin_prefetch(bj + c * cstep + 512, 0, 0);
            const Acc x = av[k];
#pragma GCC unroll 16
            for (int c = 0; c < CW; ++c) s[c] = Ar::fma(s[c], x, Ar::load(bj + c * cstep));
        }
        for (int c = 0; c < CW; ++c) out[c] = s[c];
    }

    // G groups of L unit-stride columns against av, for the real types.  The
    // products of L values of k down each column are formed as one vector;
    // an L x L transpose turns the group's L vectors into one per k across
    // the columns, and those are added in increasing k, so each column keeps
    // its own ordered chain in its own lane (one vector add per L elements
    // instead of one scalar add each).  The last kl % L values go lane by
    // lane.
    template <int G>
    MM_TARGET static void vm_lanes(int kl, const Acc* av, const char* bj, std::ptrdiff_t cstep, Acc* out) {
        V s[G];
        std::memcpy(s, out, sizeof s);
        int k = 0;
        for (; k + L <= kl; k += L) {
            V x;
            std::memcpy(&x, av + k, sizeof x);
#pragma GCC unroll 4
            for (int g = 0; g < G; ++g) {
                V r[L];
#pragma GCC unroll 16
                for (int c = 0; c < L; ++c) {
                    const char* p = bj + (g * L + c) * cstep + k * S;
                    __builtin_prefetch(p + 256, 0, 0);  // 256 bytes ahead measured best
                    EV e;
                    std::memcpy(&e, p, sizeof e);
                    r[c] = __builtin_convertvector(e, V) * x;
                }
                transpose(r);
#pragma GCC unroll 16
                for (int t = 0; t < L; ++t) s[g] = s[g] + r[t];
            }
        }
        const char* bk = bj + std::ptrdiff_t{k} * S;
        for (int t = 0; t < kl % L; ++t, bk += S)  // k = kl - kl % L here
            for (int g = 0; g < G; ++g)
                for (int c = 0; c < L; ++c) s[g][c] = Ar::fma(s[g][c], av[k + t], Ar::load(bk + (g * L + c) * cstep));
        std::memcpy(out, s, sizeof s);
    }

    // Vector x matrix: blocks of CW columns outermost, so each column of B is
    // read as one sequential stream; within a block the K pieces in order,
    // one chain per column.
    MM_TARGET static void vm(int32_t N, int32_t K, const void* A, int32_t as, const void* B, int32_t b1, int32_t b2,
                             void* C, int32_t cs) {
        if (N < 1) return;
        // Real types: groups of L columns through vm_lanes, at least two
        // groups (two independent vector chains) where the registers allow.
        // Others: eight scalar column streams (with more, the column
        // addresses no longer fit in the general registers).
        constexpr bool lanes = !cx && std::is_floating_point_v<W>;
        constexpr int G = REGS == 8 ? 1 : std::max(2, 8 / L);
        constexpr int CW = lanes ? G * L : 8;
        Acc av[bk.chunk];
        for (int j = 0; j < N; j += CW) {
            const int cw = N - j < CW ? N - j : CW;
            for_each_piece(K, bk.chunk, 4, [&](int32_t k0, int32_t kl, bool acc) MM_TARGET {
                for (int k = 0; k < kl; ++k) av[k] = Ar::load(at<T>(A, k0 + k, as));
                const char* bj = at2<T>(B, k0, b1, j, b2);
                Acc s[CW];
                for (int c = 0; c < CW; ++c) s[c] = Ar::zero();
                if (cw == CW && b1 == 1) {
                    if constexpr (lanes) vm_lanes<G>(kl, av, bj, std::ptrdiff_t(b2) * S, s);
                    else vm_columns<CW>(kl, av, bj, std::ptrdiff_t(b2) * S, s);
                } else {
                    for (int c = 0; c < cw; ++c)
                        for (int k = 0; k < kl; ++k)
                            s[c] = Ar::fma(s[c], av[k], Ar::load(bj + (k * std::ptrdiff_t(b1) + std::ptrdiff_t(c) * b2) * S));
                }
                for (int c = 0; c < cw; ++c) Ar::put(at<T>(C, j + c, cs), acc, s[c]);
            });
        }
    }
};

}  // namespace MM_ISA

#define X(T, ...) {&MM_ISA::Tiled<T>::mm, &MM_ISA::Tiled<T>::vm, &MM_ISA::Tiled<T>::mv},
extern const EngineTable MM_TABLE = {MM_NATIVE_TYPES(X)};
#undef X

}  // namespace intrins::mm
