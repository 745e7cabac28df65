// mover.h - the shared core of the data movers (RESHAPE, PACK, UNPACK, SPREAD,
// TRANSPOSE, CSHIFT, EOSHIFT, TRANSFER).
//
// Elements are moved as raw bytes, never converted.  The element size is a
// policy: Fixed<S> for the sized entries (a compile-time size, so the copy is
// a few moves), Bytes for the generic entries (the size comes from ELSIZE).
// Every walk is a Nest (frame/cursor.h): operands of one shape walked in
// lockstep as runs, or a Stream, which hands out one array's elements in
// array-element order piece by piece so that arrays of different shapes can
// be paired by their element number.
#pragma once

#include <algorithm>
#include <utility>
#include <cstdint>
#include <cstring>

#include "frame/cursor.h"
#include "frame/descriptor.h"
#include "frame/runtime.h"

// The element sizes of the sized entries: every family stamps its entry
// points f90_<name><S> from this one list.
#define CONSTRUCT_SIZES(X) X(1) X(2) X(4) X(8) X(10) X(16) X(20) X(32)

namespace intrins::construct {

template <int S>
struct Fixed {
    static constexpr int kSize = S;
    static constexpr int32_t bytes() { return S; }
};
struct Bytes {
    static constexpr int kSize = 0;  // known only at run time
    int32_t n;
    int32_t bytes() const { return n; }
};

// Calls fn with the size policy for elsz: a fixed size where the kernels
// gain from one, else Bytes.
template <class Fn>
decltype(auto) by_size(int32_t elsz, Fn&& fn) {
    switch (elsz) {
        case 1: return fn(Fixed<1>{});
        case 2: return fn(Fixed<2>{});
        case 4: return fn(Fixed<4>{});
        case 8: return fn(Fixed<8>{});
        case 16: return fn(Fixed<16>{});
        default: return fn(Bytes{elsz});
    }
}

template <class E>
inline void copy_elem(E e, char* d, const char* s) {
    std::memcpy(d, s, static_cast<std::size_t>(e.bytes()));
}

// A copy whose whole destination has at least this many bytes writes its
// long contiguous runs with streaming stores: they would not stay in the
// caches anyway, and the stores then skip reading the destination lines.
inline constexpr int64_t kStreamBytes = int64_t{8} << 20;
inline constexpr int64_t kStreamRun = 256;  // shorter runs are stored normally

// The widest vectors the kernels may use, in bytes: 64 (AVX-512, the
// default where the processor has it), 32 (AVX2) or 16 (SSE2 only).  Lowering
// it reaches the narrower kernels on a wide processor (tests do).
void set_vector_limit(int bytes);

// Streaming block copy.  (Fills measured faster with plain stores.)
void stream_copy(char* d, const char* s, std::size_t bytes);

// len elements from s (byte step ss) to d (byte step ds).  A source step of 0
// repeats one element (SPREAD, boundary fill).  stream: the whole transfer
// is large (see kStreamBytes).
template <class E>
inline void copy_run(E e, char* d, std::ptrdiff_t ds, const char* s, std::ptrdiff_t ss, int64_t len,
                     bool stream = false) {
    const std::ptrdiff_t sz = e.bytes();
    if (len <= 0 || sz <= 0) return;
    const bool big = stream && ds == sz && len * sz >= kStreamRun;
    if (ds == sz && ss == sz) {
        if (big) stream_copy(d, s, static_cast<std::size_t>(len * sz));
        else std::memcpy(d, s, static_cast<std::size_t>(len * sz));
    } else if (ss == 0 && ds == sz && E::kSize > 0 && E::kSize <= 16) {
        // Fill with one value: plain stores the compiler can widen.
        unsigned char v[E::kSize > 0 ? E::kSize : 1];
        std::memcpy(v, s, sizeof v);
        for (int64_t i = 0; i < len; ++i) std::memcpy(d + i * sz, v, sizeof v);
    } else if (ss == 0 && ds == sz) {
        // Fill: the element written once, then doubled from what is written.
        copy_elem(e, d, s);
        for (int64_t done = 1; done < len;) {
            const int64_t k = std::min(done, len - done);
            std::memcpy(d + done * sz, d, static_cast<std::size_t>(k * sz));
            done += k;
        }
    } else {
        for (int64_t i = 0; i < len; ++i, d += ds, s += ss) copy_elem(e, d, s);
    }
}

// The walk of one descriptor in array-element order: contiguous from BASE
// (EXTENT elements of elsz bytes) when its NONCONTIG byte is clear, else by
// its strides.  Contiguity is decided here, once per call and operand.
inline Nest<1> walk(const ArrDesc& a, int32_t elsz) {
    Nest<1> n;
    n.base[0] = a.BASE;
    if (a.NONCONTIG == 0) {
        n.add_dim(a.RANK > 0 ? a.EXTENT : 1, {elsz});
    } else {
        for (int d = 0; d < rank(a); ++d) n.add_dim(extent(a, d), {byte_step(a, d)});
        n.coalesce();
    }
    return n;
}

// The byte stream of an array: each element's elsz bytes, in element order
// (the bytes are the nest's extra level, under up to seven dimensions).
inline Nest<1> byte_walk(const ArrDesc& a, int32_t elsz) {
    Nest<1> n;
    n.base[0] = a.BASE;
    n.add_dim(elsz, {1});
    if (a.NONCONTIG == 0) {
        if (a.RANK > 0) n.add_dim(a.EXTENT, {elsz});
    } else {
        for (int d = 0; d < rank(a); ++d) n.add_dim(extent(a, d), {byte_step(a, d)});
    }
    n.coalesce();
    return n;
}

// One array's elements in order, taken in pieces of runs.
class Stream {
public:
    explicit Stream(const Nest<1>& n) : n_(n), p_(n.base[0]) {
        left_ = n_.empty() ? 0 : n_.count();
        if (n_.rank == 0) {
            n_.rank = 1;
            n_.extent[0] = 1;
            n_.step[0][0] = 0;
        }
    }
    int64_t left() const { return left_; }
    // Elements remaining in the current run.
    int64_t avail() const { return left_ > 0 ? n_.extent[0] - i0_ : 0; }
    char* ptr() const { return i0_ ? p_ + i0_ * n_.step[0][0] : p_; }  // null for an empty operand
    std::ptrdiff_t step() const { return n_.step[0][0]; }
    // Moves k <= avail() elements forward.
    void advance(int64_t k) {
        i0_ += k;
        left_ -= k;
        if (i0_ < n_.extent[0] || left_ <= 0) return;
        i0_ = 0;
        for (int d = 1; d < n_.rank; ++d) {
            p_ += n_.step[0][d];
            if (++idx_[d] < n_.extent[d]) return;
            idx_[d] = 0;
            p_ -= n_.step[0][d] * n_.extent[d];
        }
    }
    void skip(int64_t k) {
        while (k > 0 && left_ > 0) {
            int64_t t = std::min(k, avail());
            advance(t);
            k -= t;
        }
    }

private:
    Nest<1> n_;
    char* p_;
    int64_t i0_ = 0;
    int64_t left_ = 0;
    int32_t idx_[kNestLevels] = {};
};

// Copies up to count elements from s to d, pairing them by element number;
// stops early when either runs out.  Returns the number copied.
template <class E>
inline int64_t copy_stream(E e, Stream& d, Stream& s, int64_t count) {
    int64_t done = 0;
    while (done < count && d.left() > 0 && s.left() > 0) {
        int64_t k = std::min({count - done, d.avail(), s.avail()});
        copy_run(e, d.ptr(), d.step(), s.ptr(), s.step(), k);
        d.advance(k);
        s.advance(k);
        done += k;
    }
    return done;
}

// Writes count copies of one element into d.
template <class E>
inline void fill_stream(E e, Stream& d, const char* value, int64_t count) {
    while (count > 0 && d.left() > 0) {
        int64_t k = std::min(count, d.avail());
        copy_run(e, d.ptr(), d.step(), value, 0, k);
        d.advance(k);
        count -= k;
    }
}

// Copies operand 1 of a nest into operand 0 element by element (a source
// step of 0 repeats).  Two-dimensional nests whose source runs across the
// destination's runs (a transposition) go through cache-sized tiles.
void copy_tiled(int32_t elsz, const Nest<2>& n);

template <class E>
inline void copy_nest(E e, Nest<2> n) {
    n.coalesce();
    if (n.empty()) return;
    const std::ptrdiff_t sz = e.bytes();
    if (n.rank == 2 && n.step[0][0] != sz && n.step[0][1] == sz && n.step[1][0] == sz) {
        // Destination contiguous along the outer dimension: swap the two
        // (every element is written once, so the visiting order is free).
        std::swap(n.extent[0], n.extent[1]);
        for (int k = 0; k < 2; ++k) std::swap(n.step[k][0], n.step[k][1]);
    }
    if (n.rank == 2 && n.step[0][0] == sz && n.step[1][1] == sz && n.step[1][0] != sz && n.step[1][0] != 0 &&
        n.extent[0] >= 16 && n.extent[1] >= 16) {
        copy_tiled(e.bytes(), n);
        return;
    }
    const bool stream = n.count() * sz >= kStreamBytes;
    n.runs([&](char* const* p, const std::ptrdiff_t* s, int32_t len) {
        copy_run(e, p[0], s[0], p[1], s[1], len, stream);
    });
}

// ---- result creation ----

// Lays out a result of the given rank with lower bounds 1 and the given
// upper bounds, and obtains its storage.
inline void create(ArrDesc& r, int rank_, int32_t elsize, const int32_t* upper) {
    r.RANK = static_cast<int8_t>(rank_);
    r.ELSIZE = elsize;
    int32_t stride = 1;
    for (int d = 0; d < rank_; ++d) {
        r.DIM[d].LOWER = 1;
        r.DIM[d].UPPER = upper[d];
        r.DIM[d].STRIDE = stride;
        stride = stride * (upper[d] > 0 ? upper[d] : 0);
    }
    f90_CreateArrayM(&r);
}

// Element i (0-based) of a rank-1 integer vector (SHAPE, ORDER): its low 32
// bits, whatever the element width.
inline int32_t vec_elem(const ArrDesc& v, int32_t i) {
    const char* p = v.ZERO + (static_cast<std::ptrdiff_t>(v.DIM[0].LOWER) + i) * byte_step(v, 0);
    int32_t x;
    std::memcpy(&x, p, sizeof x);
    return x;
}

inline int32_t read_i32(const char* p) {
    int32_t x;
    std::memcpy(&x, p, sizeof x);
    return x;
}

}  // namespace intrins::construct
