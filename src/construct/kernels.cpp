// kernels.cpp - the movers' inner kernels: the tiled transposition behind
// TRANSPOSE and RESHAPE with ORDER, and the flat PACK and UNPACK loops.
//
// Tiles: the destination is written along its runs (operand 0, contiguous
// along dimension 0) while the source is contiguous along dimension 1.  A
// plain walk reads one element per cache line of the source; tiles of T x T
// elements keep the T source lines in the first-level cache while the T
// destination lines are filled.  Inside a tile, elements of W = 4 or 8 bytes
// are transposed in registers, in blocks of 64 / W x 64 / W with AVX-512
// shuffles, else 32 / W x 32 / W with AVX2 (chosen at run time).
//
// A large result (kStreamBytes and more) whose columns all start at the same
// offset within a 64-byte line is swept instead: 64 / W source rows at a
// time across all columns, so that the source is read as that many
// sequential streams, while every destination line is written whole by one
// streaming store (no read of the line first).  The rows before the first
// and after the last whole line of each column get plain stores.
//
// PACK and UNPACK on 4- and 8-byte elements use AVX-512 compress and expand
// in registers where the processor has them (chosen once, cached); stores
// are masked so that no byte outside the packed elements is written.  The
// portable loops are branch-free over blocks where VECTOR cannot run out.
#include <immintrin.h>

#include "construct/mask.h"
#include "construct/mover.h"

namespace intrins::construct {
namespace {

// One tile: rows x cols elements, d[i + j*dl] = s[j + i*sl] (in elements).
template <class E>
inline void tile(E e, char* d, std::ptrdiff_t dl, const char* s, std::ptrdiff_t sl, int32_t rows, int32_t cols) {
    const std::ptrdiff_t sz = e.bytes();
    for (int32_t j = 0; j < cols; ++j) {
        char* dp = d + j * dl;
        const char* sp = s + j * sz;
        for (int32_t i = 0; i < rows; ++i) copy_elem(e, dp + i * sz, sp + i * sl);
    }
}

int g_vector_limit = 64;  // see set_vector_limit

bool have_avx2() {
    static const bool yes = __builtin_cpu_supports("avx2");
    return yes && g_vector_limit >= 32;
}

// 4 x 4 blocks of 8-byte and 8 x 8 blocks of 4-byte elements transposed in
// registers (the shuffles move bits, whatever the elements hold); the
// edges of a tile fall back to single elements.
// One B x B block (B = 32 / W) from source rows sp, sp + sl, ... into the
// B columns c[0..B-1] (each 32 bytes).
template <int W>
__attribute__((target("avx2"))) inline void block_avx2(const char* sp, std::ptrdiff_t sl, __m256i* c) {
    if constexpr (W == 8) {
        __m256d r[4], t[4];
        for (int k = 0; k < 4; ++k) r[k] = _mm256_loadu_pd(reinterpret_cast<const double*>(sp + k * sl));
        t[0] = _mm256_unpacklo_pd(r[0], r[1]);
        t[1] = _mm256_unpackhi_pd(r[0], r[1]);
        t[2] = _mm256_unpacklo_pd(r[2], r[3]);
        t[3] = _mm256_unpackhi_pd(r[2], r[3]);
        c[0] = _mm256_castpd_si256(_mm256_permute2f128_pd(t[0], t[2], 0x20));
        c[1] = _mm256_castpd_si256(_mm256_permute2f128_pd(t[1], t[3], 0x20));
        c[2] = _mm256_castpd_si256(_mm256_permute2f128_pd(t[0], t[2], 0x31));
        c[3] = _mm256_castpd_si256(_mm256_permute2f128_pd(t[1], t[3], 0x31));
    } else {
        __m256 r[8], t[8], u[8];
        for (int k = 0; k < 8; ++k) r[k] = _mm256_loadu_ps(reinterpret_cast<const float*>(sp + k * sl));
        for (int k = 0; k < 8; k += 2) {
            t[k] = _mm256_unpacklo_ps(r[k], r[k + 1]);
            t[k + 1] = _mm256_unpackhi_ps(r[k], r[k + 1]);
        }
        for (int k = 0; k < 8; k += 4) {
            u[k] = _mm256_shuffle_ps(t[k], t[k + 2], 0x44);
            u[k + 1] = _mm256_shuffle_ps(t[k], t[k + 2], 0xEE);
            u[k + 2] = _mm256_shuffle_ps(t[k + 1], t[k + 3], 0x44);
            u[k + 3] = _mm256_shuffle_ps(t[k + 1], t[k + 3], 0xEE);
        }
        for (int k = 0; k < 4; ++k) {
            c[k] = _mm256_castps_si256(_mm256_permute2f128_ps(u[k], u[k + 4], 0x20));
            c[k + 4] = _mm256_castps_si256(_mm256_permute2f128_ps(u[k], u[k + 4], 0x31));
        }
    }
}

// A tile moved as pairs of blocks stacked along the destination's runs, so
// that each destination column receives 64 contiguous bytes (a whole cache
// line) at a time.  The edges of a tile fall back to single elements.  (Here
// streaming stores measured slower than plain ones for tiles.)
template <int W>
__attribute__((target("avx2"))) void tile_avx2(char* d, std::ptrdiff_t dl, const char* s, std::ptrdiff_t sl,
                                               int32_t rows, int32_t cols) {
    constexpr int B = 32 / W;
    const int32_t rb = rows - rows % (2 * B), cb = cols - cols % B;
    for (int32_t j = 0; j < cb; j += B) {
        for (int32_t i = 0; i < rb; i += 2 * B) {
            __m256i lo[B], hi[B];
            block_avx2<W>(s + i * sl + j * W, sl, lo);
            block_avx2<W>(s + (i + B) * sl + j * W, sl, hi);
            char* dp = d + j * dl + i * W;
            for (int k = 0; k < B; ++k) {
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(dp + k * dl), lo[k]);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(dp + k * dl + 32), hi[k]);
            }
        }
    }
    tile(Fixed<W>{}, d + rb * W, dl, s + rb * sl, sl, rows - rb, cb);
    tile(Fixed<W>{}, d + cb * dl, dl, s + cb * W, sl, rows, cols - cb);
}

bool have_avx512() {
    static const bool yes = __builtin_cpu_supports("avx512f");
    return yes && g_vector_limit >= 64;
}

// The four 128-bit lanes of a, b, c, d regrouped by lane: out[L] holds lane
// L of a, b, c and d, in that order.  (Here and below the zero-masked forms
// with every lane selected stand for the plain ones, which pass an undefined
// operand through that the compiler warns about.)
__attribute__((target("avx512f"))) inline void lanes4(__m512i a, __m512i b, __m512i c, __m512i d, __m512i* out) {
    const __m512i v = _mm512_maskz_shuffle_i64x2(0xFF, a, b, 0x88), w = _mm512_maskz_shuffle_i64x2(0xFF, a, b, 0xDD);
    const __m512i v2 = _mm512_maskz_shuffle_i64x2(0xFF, c, d, 0x88), w2 = _mm512_maskz_shuffle_i64x2(0xFF, c, d, 0xDD);
    out[0] = _mm512_maskz_shuffle_i64x2(0xFF, v, v2, 0x88);
    out[1] = _mm512_maskz_shuffle_i64x2(0xFF, w, w2, 0x88);
    out[2] = _mm512_maskz_shuffle_i64x2(0xFF, v, v2, 0xDD);
    out[3] = _mm512_maskz_shuffle_i64x2(0xFF, w, w2, 0xDD);
}

// One B x B block (B = 64 / W) from the source rows sp, sp + sl, ... into
// the B destination columns c[0..B-1], each one 64-byte line.
template <int W>
__attribute__((target("avx512f"))) inline void block_avx512(const char* sp, std::ptrdiff_t sl, __m512i* c) {
    constexpr int B = 64 / W;
    constexpr __mmask8 all8 = 0xFF;
    constexpr __mmask16 all16 = 0xFFFF;
    __m512i r[B], t[B];
    for (int k = 0; k < B; ++k) r[k] = _mm512_loadu_si512(sp + k * sl);
    if constexpr (W == 8) {
        // t[2k + p], lane L: column 2L + p of rows 2k, 2k + 1.
        for (int k = 0; k < B; k += 2) {
            t[k] = _mm512_maskz_unpacklo_epi64(all8, r[k], r[k + 1]);
            t[k + 1] = _mm512_maskz_unpackhi_epi64(all8, r[k], r[k + 1]);
        }
        for (int p = 0; p < 2; ++p) {
            __m512i o[4];
            lanes4(t[p], t[2 + p], t[4 + p], t[6 + p], o);
            for (int L = 0; L < 4; ++L) c[2 * L + p] = o[L];
        }
    } else {
        // t: pairs of rows interleaved; r reused for groups of four rows,
        // r[k + m], lane L: column 4L + m of rows k .. k + 3.
        for (int k = 0; k < B; k += 2) {
            t[k] = _mm512_maskz_unpacklo_epi32(all16, r[k], r[k + 1]);
            t[k + 1] = _mm512_maskz_unpackhi_epi32(all16, r[k], r[k + 1]);
        }
        for (int k = 0; k < B; k += 4) {
            r[k] = _mm512_maskz_unpacklo_epi64(all8, t[k], t[k + 2]);
            r[k + 1] = _mm512_maskz_unpackhi_epi64(all8, t[k], t[k + 2]);
            r[k + 2] = _mm512_maskz_unpacklo_epi64(all8, t[k + 1], t[k + 3]);
            r[k + 3] = _mm512_maskz_unpackhi_epi64(all8, t[k + 1], t[k + 3]);
        }
        for (int m = 0; m < 4; ++m) {
            __m512i o[4];
            lanes4(r[m], r[4 + m], r[8 + m], r[12 + m], o);
            for (int L = 0; L < 4; ++L) c[4 * L + m] = o[L];
        }
    }
}

// A tile of whole B x B blocks; the edges fall back to single elements.
// Stream: every destination block line is a 64-byte aligned line, written
// whole with a streaming store (the caller fences).
template <int W, bool Stream>
__attribute__((target("avx512f"))) void tile_avx512(char* d, std::ptrdiff_t dl, const char* s, std::ptrdiff_t sl,
                                                    int32_t rows, int32_t cols) {
    constexpr int B = 64 / W;
    const int32_t rb = rows - rows % B, cb = cols - cols % B;
    for (int32_t j = 0; j < cb; j += B) {
        for (int32_t i = 0; i < rb; i += B) {
            __m512i c[B];
            block_avx512<W>(s + i * sl + j * W, sl, c);
            char* dp = d + j * dl + i * W;
            for (int k = 0; k < B; ++k) {
                if constexpr (Stream) _mm512_stream_si512(reinterpret_cast<__m512i*>(dp + k * dl), c[k]);
                else _mm512_storeu_si512(dp + k * dl, c[k]);
            }
        }
    }
    tile(Fixed<W>{}, d + rb * W, dl, s + rb * sl, sl, rows - rb, cb);
    tile(Fixed<W>{}, d + cb * dl, dl, s + cb * W, sl, rows, cols - cb);
}

__attribute__((target("sse2"))) void store_fence() { _mm_sfence(); }

// The transposition d[i*sz + j*dl] = s[i*sl + j*sz], i < rows, j < cols, in
// tiles of t x t elements, taken in blocks of (8t) x (8t) that keep the pages
// of both operands in the TLB while their tiles are moved.
template <class Tile>
void for_tiles(char* d, std::ptrdiff_t dl, const char* s, std::ptrdiff_t sl, std::ptrdiff_t sz, int32_t rows,
               int32_t cols, int32_t t, Tile&& tile_fn) {
    const int32_t big = 8 * t;
    for (int32_t jb = 0; jb < cols; jb += big) {
        for (int32_t ib = 0; ib < rows; ib += big) {
            const int32_t jend = std::min(cols, jb + big), iend = std::min(rows, ib + big);
            for (int32_t j0 = jb; j0 < jend; j0 += t)
                for (int32_t i0 = ib; i0 < iend; i0 += t)
                    tile_fn(d + i0 * sz + j0 * dl, s + i0 * sl + j0 * sz, std::min(t, iend - i0), std::min(t, jend - j0));
        }
    }
}

template <class E>
void tiled(E e, const Nest<2>& n) {
    const std::ptrdiff_t sz = e.bytes();
    // Tile edge: about 16 KB of source per tile.
    int32_t t = 16;
    while (t < 128 && static_cast<std::ptrdiff_t>(2 * t) * (2 * t) * sz <= 16384) t *= 2;
    char* const d = n.base[0];
    const char* const s = n.base[1];
    const std::ptrdiff_t dl = n.step[0][1], sl = n.step[1][0];
    const int32_t rows = n.extent[0], cols = n.extent[1];
    if constexpr (E::kSize == 4 || E::kSize == 8) {
        constexpr int W = E::kSize, B = 64 / W;
        if (have_avx512()) {
            const auto at = reinterpret_cast<std::uintptr_t>(d);
            if (n.count() * sz < kStreamBytes || dl % 64 != 0 || at % W != 0) {
                for_tiles(d, dl, s, sl, sz, rows, cols, t, [&](char* dp, const char* sp, int32_t r, int32_t c) {
                    tile_avx512<W, false>(dp, dl, sp, sl, r, c);
                });
                return;
            }
            // Large result whose columns all start at the same offset within
            // a line: rows [h, h + mid) fill whole lines, written with
            // streaming stores; the rows before and after with plain ones.
            const int32_t h = std::min<int32_t>(rows, static_cast<int32_t>((64 - at % 64) % 64 / W));
            const int32_t mid = (rows - h) / B * B;
            tile(e, d, dl, s, sl, h, cols);
            for (int32_t i0 = h; i0 < h + mid; i0 += B) tile_avx512<W, true>(d + i0 * sz, dl, s + i0 * sl, sl, B, cols);
            tile(e, d + (h + mid) * sz, dl, s + (h + mid) * sl, sl, rows - h - mid, cols);
            store_fence();
            return;
        }
        if (have_avx2()) {
            for_tiles(d, dl, s, sl, sz, rows, cols, t, [&](char* dp, const char* sp, int32_t r, int32_t c) {
                tile_avx2<W>(dp, dl, sp, sl, r, c);
            });
            return;
        }
    }
    for_tiles(d, dl, s, sl, sz, rows, cols, t,
              [&](char* dp, const char* sp, int32_t r, int32_t c) { tile(e, dp, dl, sp, sl, r, c); });
}

// PACK of W-byte elements (W = 4 or 8), 16 at a time.
template <int W>
__attribute__((target("avx512f"))) int64_t pack_avx512(char* d, int64_t cap, const char* a, const char* m,
                                                        int64_t n, int64_t& i) {
    int64_t w = 0;
    const __m512i zero = _mm512_setzero_si512();
    for (; i + 16 <= n && w + 16 <= cap; i += 16) {
        const __mmask16 k = _mm512_cmpneq_epi32_mask(_mm512_loadu_si512(m + 4 * i), zero);
        if constexpr (W == 4) {
            const __m512i x = _mm512_maskz_compress_epi32(k, _mm512_loadu_si512(a + 4 * i));
            const int c = __builtin_popcount(k);
            _mm512_mask_storeu_epi32(d + 4 * w, static_cast<__mmask16>((1u << c) - 1), x);
            w += c;
        } else {
            const __mmask8 lo = static_cast<__mmask8>(k), hi = static_cast<__mmask8>(k >> 8);
            const __m512i x0 = _mm512_maskz_compress_epi64(lo, _mm512_loadu_si512(a + 8 * i));
            const __m512i x1 = _mm512_maskz_compress_epi64(hi, _mm512_loadu_si512(a + 8 * i + 64));
            const int c0 = __builtin_popcount(lo), c1 = __builtin_popcount(hi);
            _mm512_mask_storeu_epi64(d + 8 * w, static_cast<__mmask8>((1u << c0) - 1), x0);
            w += c0;
            _mm512_mask_storeu_epi64(d + 8 * w, static_cast<__mmask8>((1u << c1) - 1), x1);
            w += c1;
        }
    }
    return w;
}

// UNPACK of W-byte elements, 16 positions at a time, while VECTOR holds at
// least 16 more elements.
template <int W>
__attribute__((target("avx512f"))) void unpack_avx512(char* d, const char*& v, int64_t& vl, const char* m,
                                                      const char* f, std::ptrdiff_t fstep, int64_t count,
                                                      int64_t& i) {
    const __m512i one = _mm512_set1_epi32(1);
    for (; i + 16 <= count && vl >= 16; i += 16) {
        const __mmask16 k = _mm512_test_epi32_mask(_mm512_loadu_si512(m + 4 * i), one);
        if constexpr (W == 4) {
            const __m512i fv = fstep ? _mm512_loadu_si512(f + 4 * i) : _mm512_set1_epi32(*reinterpret_cast<const int32_t*>(f));
            _mm512_storeu_si512(d + 4 * i, _mm512_mask_expand_epi32(fv, k, _mm512_loadu_si512(v)));
            const int c = __builtin_popcount(k);
            v += 4 * c;
            vl -= c;
        } else {
            for (int h = 0; h < 2; ++h) {
                const __mmask8 kh = static_cast<__mmask8>(k >> (8 * h));
                const int64_t p = i + 8 * h;
                int64_t fval;
                std::memcpy(&fval, f, 8);
                const __m512i fv = fstep ? _mm512_loadu_si512(f + 8 * p) : _mm512_set1_epi64(fval);
                _mm512_storeu_si512(d + 8 * p, _mm512_mask_expand_epi64(fv, kh, _mm512_loadu_si512(v)));
                const int c = __builtin_popcount(kh);
                v += 8 * c;
                vl -= c;
            }
        }
    }
}

__attribute__((target("avx512f"))) int64_t count_avx512(const char* m, int64_t n, MaskRule rule, int64_t& i) {
    const __m512i bits = _mm512_set1_epi32(rule == kWordTrue ? -1 : 1);
    int64_t c = 0;
    for (; i + 16 <= n; i += 16) c += __builtin_popcount(_mm512_test_epi32_mask(_mm512_loadu_si512(m + 4 * i), bits));
    return c;
}

}  // namespace

void set_vector_limit(int bytes) { g_vector_limit = bytes; }

int64_t count_flat(const char* m, int64_t n, MaskRule rule) {
    int64_t i = 0, c = 0;
    if (have_avx512()) c = count_avx512(m, n, rule, i);
    for (; i < n; ++i) c += mask_true(m + 4 * i, rule);
    return c;
}

// SSE2 streaming stores: 16-byte aligned from the first aligned byte on.
__attribute__((target("sse2"))) void stream_copy(char* d, const char* s, std::size_t bytes) {
    const std::size_t head = std::min<std::size_t>(bytes, (16 - reinterpret_cast<std::uintptr_t>(d) % 16) % 16);
    std::memcpy(d, s, head);
    std::size_t i = head;
    for (; i + 64 <= bytes; i += 64) {
        for (int k = 0; k < 64; k += 16)
            _mm_stream_si128(reinterpret_cast<__m128i*>(d + i + k),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + k)));
    }
    for (; i + 16 <= bytes; i += 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(d + i), _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)));
    std::memcpy(d + i, s + i, bytes - i);
    _mm_sfence();
}

void copy_tiled(int32_t elsz, const Nest<2>& n) {
    by_size(elsz, [&](auto e) { tiled(e, n); });
}

int64_t pack_flat(int32_t elsz, char* d, int64_t cap, const char* a, const char* m, int64_t n) {
    int64_t i = 0, w = 0;
    if (have_avx512() && (elsz == 4 || elsz == 8))
        w = elsz == 4 ? pack_avx512<4>(d, cap, a, m, n, i) : pack_avx512<8>(d, cap, a, m, n, i);
    return w + by_size(elsz, [&](auto e) {
               return pack_flat_generic(e, d + w * elsz, cap - w, a + i * elsz, m + 4 * i, n - i);
           });
}

void unpack_flat(int32_t elsz, char* d, const char* v, int64_t vl, const char* m, const char* f,
                 std::ptrdiff_t fstep, int64_t count) {
    int64_t i = 0;
    if (have_avx512() && (elsz == 4 || elsz == 8)) {
        if (elsz == 4) unpack_avx512<4>(d, v, vl, m, f, fstep, count, i);
        else unpack_avx512<8>(d, v, vl, m, f, fstep, count, i);
    }
    by_size(elsz, [&](auto e) {
        unpack_flat_generic(e, d + i * elsz, v, vl, m + 4 * i, f + i * fstep, fstep, count - i);
    });
}

}  // namespace intrins::construct
