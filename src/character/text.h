// text.h - the character intrinsics' algorithms on (address, length) strings.
//
// Strings are bytes without terminator; 0x20 is the only blank.  A negative
// length is taken as 0, the length of such a string in the language.  Every
// function returns what the plain character-by-character definition returns
// (1-based positions, 0 for none); the scans use memchr/memcmp and a byte
// table so that long operands cost linear time in the common cases.
#pragma once

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

// Length without the trailing blanks.
inline int32_t len_trim(Text s) {
    int32_t n = s.n;
    while (n > 0 && s.p[n - 1] == kBlank) --n;
    return n;
}

// ADJUSTL: the leading blanks move to the end.  The blanks are written first,
// from the last character backwards, then the rest is moved to the front; the
// move tolerates overlap, so the outcome for overlapping S and D is that of
// the two steps taken in this order.
inline void adjust_left(Text s, char* d) {
    int32_t k = 0;
    while (k < s.n && s.p[k] == kBlank) ++k;
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

// INDEX: forward, candidates for the first substring character come from
// memchr and are confirmed by memcmp; backward, the same from the right end.
inline int32_t index_of(Text s, Text sub, bool back) {
    const int32_t n = s.n, m = sub.n;
    if (n < m) return 0;
    if (m == 0) return back ? n + 1 : 1;
    const unsigned char first = sub.p[0], last = sub.p[m - 1];
    if (!back) {
        const unsigned char* p = s.p;
        const unsigned char* end = s.p + (n - m) + 1;  // one past the last start
        while (p < end) {
            p = static_cast<const unsigned char*>(std::memchr(p, first, static_cast<std::size_t>(end - p)));
            if (!p) return 0;
            if (p[m - 1] == last && std::memcmp(p + 1, sub.p + 1, static_cast<std::size_t>(m - 1)) == 0)
                return static_cast<int32_t>(p - s.p) + 1;
            ++p;
        }
        return 0;
    }
    for (int32_t end = n; end >= m; --end) {  // end position of the candidate, 1-based
        const unsigned char* start = s.p + (end - m);
        if (start[m - 1] == last && start[0] == first && std::memcmp(start, sub.p, static_cast<std::size_t>(m)) == 0)
            return end - m + 1;
    }
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
