// text.h - the character intrinsics' algorithms on (address, length) strings.
//
// Strings are bytes without terminator; 0x20 is the only blank.  A negative
// length is taken as 0, the length of such a string in the language.  Every
// function returns what the plain character-by-character definition returns
// (1-based positions, 0 for none); INDEX filters candidates sixteen at a
// time and the scans use a byte table, so that long operands cost linear time
// in the common cases.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

namespace intrins::text {

inline constexpr unsigned char kBlank = 0x20;

struct Text {
    const unsigned char* p;
    int32_t n;
    Text(const void* addr, int32_t len)
        : p(static_cast<const unsigned char*>(addr)), n(len < 0 ? 0 : len) {}
};

// True when the sixteen bytes at p (any alignment) are all blanks.
inline bool blank_block(const unsigned char* p) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(kBlank)))) == 0xffff;
}

// Length without the trailing blanks; sixteen blanks at a time.
inline int32_t len_trim(Text s) {
    int32_t n = s.n;
    while (n >= 16 && blank_block(s.p + n - 16)) n -= 16;
    while (n > 0 && s.p[n - 1] == kBlank) --n;
    return n;
}

// Number of leading blanks.
inline int32_t leading_blanks(Text s) {
    int32_t k = 0;
    while (s.n - k >= 16 && blank_block(s.p + k)) k += 16;
    while (k < s.n && s.p[k] == kBlank) ++k;
    return k;
}

// ADJUSTL: the leading blanks move to the end.  The blanks are written first,
// from the last character backwards, then the rest is moved to the front; the
// move tolerates overlap, so the outcome for overlapping S and D is that of
// the two steps taken in this order.
inline void adjust_left(Text s, char* d) {
    const int32_t k = leading_blanks(s);
    if (s.n == 0) return;
    std::memset(d + (s.n - k), kBlank, static_cast<std::size_t>(k));
    std::memmove(d, s.p + k, static_cast<std::size_t>(s.n - k));
}

// ADJUSTR: the trailing blanks move to the front.
inline void adjust_right(Text s, char* d) {
    int32_t t = len_trim(s);
    int32_t k = s.n - t;
    if (s.n == 0) return;
    std::memset(d, kBlank, static_cast<std::size_t>(k));
    std::memmove(d + k, s.p, static_cast<std::size_t>(t));
}

// INDEX.  Sixteen candidate start positions at a time (SSE2, part of every
// target): a start is a candidate when the string has the substring's first
// byte there and its last byte m - 1 further on; only candidates are compared
// in full.  Forward takes the lowest candidate of a block first, backward
// the highest, so both give the position of the plain character-by-character
// search.  The few starts that do not fill a block are checked one by one.
inline bool match_at(Text s, Text sub, int32_t start) {
    return s.p[start] == sub.p[0] && s.p[start + sub.n - 1] == sub.p[sub.n - 1] &&
           std::memcmp(s.p + start, sub.p, static_cast<std::size_t>(sub.n)) == 0;
}

// Bit k set: start `from` + k is a candidate (both loads stay inside s).
inline unsigned candidates(Text s, Text sub, int32_t from) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.p + from));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.p + from + sub.n - 1));
    const __m128i hit = _mm_and_si128(_mm_cmpeq_epi8(a, _mm_set1_epi8(static_cast<char>(sub.p[0]))),
                                      _mm_cmpeq_epi8(b, _mm_set1_epi8(static_cast<char>(sub.p[sub.n - 1]))));
    return static_cast<unsigned>(_mm_movemask_epi8(hit));
}

inline int32_t index_of(Text s, Text sub, bool back) {
    const int32_t n = s.n, m = sub.n;
    if (n < m) return 0;
    if (m == 0) return back ? n + 1 : 1;
    const int32_t last = n - m;  // the last start
    if (!back) {
        int32_t i = 0;
        for (; i + 15 <= last; i += 16)
            for (unsigned bits = candidates(s, sub, i); bits; bits &= bits - 1) {
                int32_t start = i + __builtin_ctz(bits);
                if (match_at(s, sub, start)) return start + 1;
            }
        for (; i <= last; ++i)
            if (match_at(s, sub, i)) return i + 1;
        return 0;
    }
    int32_t j = last;  // blocks of starts j - 15 .. j
    for (; j >= 15; j -= 16)
        for (unsigned bits = candidates(s, sub, j - 15); bits; bits &= ~(1u << (31 - __builtin_clz(bits)))) {
            int32_t start = j - 15 + (31 - __builtin_clz(bits));
            if (match_at(s, sub, start)) return start + 1;
        }
    for (; j >= 0; --j)
        if (match_at(s, sub, j)) return j + 1;
    return 0;
}

// Membership table of a SET.
struct ByteSet {
    bool has[256] = {};
    explicit ByteSet(Text set) {
        for (int32_t i = 0; i < set.n; ++i) has[set.p[i]] = true;
    }
};

// First (or, with back, last) position whose membership in the set equals
// `member`; 0 when there is none.
inline int32_t find_class(Text s, const ByteSet& set, bool member, bool back) {
    if (!back) {
        for (int32_t i = 0; i < s.n; ++i)
            if (set.has[s.p[i]] == member) return i + 1;
    } else {
        for (int32_t i = s.n; i > 0; --i)
            if (set.has[s.p[i - 1]] == member) return i;
    }
    return 0;
}

inline int32_t scan(Text s, Text set, bool back) {
    if (s.n == 0 || set.n == 0) return 0;
    return find_class(s, ByteSet(set), true, back);
}

inline int32_t verify(Text s, Text set, bool back) {
    if (s.n == 0) return 0;
    if (set.n == 0) return back ? s.n : 1;
    return find_class(s, ByteSet(set), false, back);
}

}  // namespace intrins::text
