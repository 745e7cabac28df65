// mask.h - the MASK-driven loops of PACK and UNPACK.
//
// MASK elements are 4-byte logicals.  Each loop has a flat form, taken when
// every operand is one contiguous run (decided once per call), and a general
// form over Streams.
#pragma once

#include "construct/mover.h"

namespace intrins::construct {

enum MaskRule { kWordTrue, kBit0True };  // PACK: word nonzero; UNPACK: bit 0 set

inline bool mask_true(const char* p, MaskRule rule) {
    int32_t w = read_i32(p);
    return rule == kWordTrue ? w != 0 : (w & 1) != 0;
}

// Whether the rest of a stream is one run of adjacent elements.
inline bool flat(const Stream& s, std::ptrdiff_t sz) { return s.avail() == s.left() && s.step() == sz; }

// The true words among n contiguous MASK words.
int64_t count_flat(const char* m, int64_t n, MaskRule rule);

// The true elements among MASK's first `limit` elements.
inline int64_t count_mask(const ArrDesc& m, int64_t limit, MaskRule rule) {
    Stream ms(walk(m, 4));
    if (flat(ms, 4)) return count_flat(ms.ptr(), std::min(limit, ms.left()), rule);
    int64_t n = 0;
    for (int64_t seen = 0; seen < limit && ms.left() > 0;) {
        const int64_t k = std::min(limit - seen, ms.avail());
        const char* p = ms.ptr();
        for (int64_t i = 0; i < k; ++i) n += mask_true(p + i * ms.step(), rule);
        ms.advance(k);
        seen += k;
    }
    return n;
}

// Fast contiguous PACK kernel: a[i] for every nonzero m[i], i < n, into d
// (at most cap).  Returns the count written.
int64_t pack_flat(int32_t elsz, char* d, int64_t cap, const char* a, const char* m, int64_t n);

template <class E>
int64_t pack_flat_generic(E e, char* d, int64_t cap, const char* a, const char* m, int64_t n) {
    const std::ptrdiff_t sz = e.bytes();
    int64_t w = 0, i = 0;
    if constexpr (E::kSize > 0 && E::kSize <= 16) {
        // Branch-free into a buffer, block by block; only the selected
        // elements reach the result.
        constexpr int64_t kBlock = 256;
        unsigned char buf[kBlock * E::kSize];
        for (; i + kBlock <= n && w < cap; i += kBlock) {
            int64_t c = 0;
            for (int64_t j = 0; j < kBlock; ++j) {
                copy_elem(e, reinterpret_cast<char*>(buf) + c * sz, a + (i + j) * sz);
                c += read_i32(m + 4 * (i + j)) != 0;
            }
            c = std::min(c, cap - w);
            std::memcpy(d + w * sz, buf, static_cast<std::size_t>(c * sz));
            w += c;
        }
        if (w == cap) return w;
    }
    for (; i < n; ++i) {
        if (read_i32(m + 4 * i) == 0) continue;
        if (w == cap) break;
        copy_elem(e, d + w * sz, a + i * sz);
        ++w;
    }
    return w;
}

// Flat UNPACK of count positions: VECTOR v holds vl elements; FIELD f steps
// by fstep bytes (0: a scalar).
void unpack_flat(int32_t elsz, char* d, const char* v, int64_t vl, const char* m, const char* f,
                 std::ptrdiff_t fstep, int64_t count);

template <class E>
void unpack_flat_generic(E e, char* d, const char* v, int64_t vl, const char* m, const char* f,
                         std::ptrdiff_t fstep, int64_t count) {
    const std::ptrdiff_t sz = e.bytes();
    constexpr int64_t kBlock = 256;
    for (int64_t i0 = 0; i0 < count; i0 += kBlock) {
        const int64_t end = std::min(count, i0 + kBlock);
        if (vl >= end - i0) {
            // VECTOR cannot run out within the block: no branch on MASK.
            for (int64_t i = i0; i < end; ++i) {
                const int64_t t = read_i32(m + 4 * i) & 1;
                copy_elem(e, d + i * sz, t ? v : f + i * fstep);
                v += t * sz;
                vl -= t;
            }
            continue;
        }
        for (int64_t i = i0; i < end; ++i) {
            if (!(read_i32(m + 4 * i) & 1)) {
                copy_elem(e, d + i * sz, f + i * fstep);
            } else if (vl > 0) {
                copy_elem(e, d + i * sz, v);
                v += sz;
                --vl;
            }
        }
    }
}

// PACK's gather: ARRAY's elements where MASK is true, into the result
// stream.  Returns the number written.
template <class E>
int64_t pack_masked(E e, Stream& rs, const ArrDesc& arr, const ArrDesc& mask) {
    const std::ptrdiff_t sz = e.bytes();
    Stream as(walk(arr, e.bytes())), ms(walk(mask, 4));
    const int64_t n = std::min(as.left(), ms.left());
    if (flat(rs, sz) && flat(as, sz) && flat(ms, 4)) {
        int64_t w = pack_flat(e.bytes(), rs.ptr(), rs.left(), as.ptr(), ms.ptr(), n);
        rs.skip(w);
        return w;
    }
    int64_t written = 0;
    for (int64_t seen = 0; seen < n;) {
        const int64_t k = std::min({n - seen, as.avail(), ms.avail()});
        const char* a = as.ptr();
        const char* m = ms.ptr();
        for (int64_t i = 0; i < k; ++i) {
            if (read_i32(m + i * ms.step()) == 0) continue;
            if (rs.left() == 0) return written;
            copy_elem(e, rs.ptr(), a + i * as.step());
            rs.advance(1);
            ++written;
        }
        as.advance(k);
        ms.advance(k);
        seen += k;
    }
    return written;
}

// UNPACK's scatter over the first `count` positions: VECTOR's next element
// where MASK's bit 0 is set, else FIELD's element (array) or *value (scalar).
template <class E>
void unpack_masked(E e, const ArrDesc& r, const ArrDesc& vec, const ArrDesc& mask, const ArrDesc* field,
                   const char* value, int64_t count) {
    const std::ptrdiff_t sz = e.bytes();
    Stream rs(walk(r, e.bytes())), vs(walk(vec, e.bytes())), ms(walk(mask, 4));
    Stream fs(field ? walk(*field, e.bytes()) : Nest<1>{});
    count = std::min({count, rs.left(), ms.left()});
    const bool fields_flat = !field || (flat(fs, sz) && fs.left() >= count);
    if (flat(rs, sz) && flat(vs, sz) && flat(ms, 4) && fields_flat) {
        unpack_flat(e.bytes(), rs.ptr(), vs.ptr(), vs.left(), ms.ptr(), field ? fs.ptr() : value, field ? sz : 0,
                    count);
        return;
    }
    for (int64_t i = 0; i < count; ++i) {
        if (mask_true(ms.ptr(), kBit0True)) {
            if (vs.left() > 0) {
                copy_elem(e, rs.ptr(), vs.ptr());
                vs.advance(1);
            }
        } else if (!field) {
            copy_elem(e, rs.ptr(), value);
        } else if (fs.left() > 0) {
            copy_elem(e, rs.ptr(), fs.ptr());
        }
        rs.advance(1);
        ms.advance(1);
        if (field && fs.left() > 0) fs.advance(1);
    }
}

}  // namespace intrins::construct
