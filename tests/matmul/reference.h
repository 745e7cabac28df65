// reference.h - a naive MATMUL that follows the per-element sequence word for
// word, and the element types of the sixteen kinds.
//
// Sequence of one result element (K block B, remainder split s):
//   R = K mod B, Rs = R rounded down to s
//   R = 0:  C = 0
//   else:   Rs > 0: C = dot(k = K-R .. K-R+Rs-1)
//           R > Rs: C = (Rs > 0 ? C + dot(rest) : dot(rest))
//   for each full block in increasing k: C = C + dot(block)
// where dot starts from zero and adds products in increasing k, and C is
// rounded to the element type every time it is stored.
#pragma once

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "intrins.h"

namespace mmref {

enum class Fam { Int, Log, Real, Cplx };

// One kind: element part type P (complex: each part), accumulator part type
// A, slot bytes of one part, K block and vector chunk of its engines.
template <class P_, class A_, Fam F_, int PartSize, int KB, int CH, void (*Drv)(ArgList*)>
struct Ty {
    using P = P_;
    using A = A_;
    static constexpr Fam fam = F_;
    static constexpr int parts = F_ == Fam::Cplx ? 2 : 1, part = PartSize, size = parts * PartSize;
    static constexpr int kblk = KB, chunk = CH;
    static constexpr int value_bytes = std::is_same_v<P, long double> ? 10 : int(sizeof(P));  // REAL(10): 10 of 16
    static void run(ArgList* a) { Drv(a); }
};

// An 80-bit value from its fields.
inline long double bits80(uint16_t sign_exp, uint64_t mant) {
    unsigned char raw[sizeof(long double)] = {};
    std::memcpy(raw, &mant, 8), std::memcpy(raw + 8, &sign_exp, 2);
    long double v;
    std::memcpy(&v, raw, sizeof v);
    return v;
}
// 80-bit values at the edges of what a pair of doubles holds exactly (binary
// exponents up to +-1000), and (not splittable) beyond and every special class.
inline std::vector<long double> edges80(bool splittable_only) {
    const uint64_t top = 1ull << 63, odd = top | 0x5a5a5a5a5a5a5a5bull;
    std::vector<long double> v = {0.0L, -0.0L};
    for (int e : {-1000, -999, 999, 1000})
        for (uint64_t m : {top, odd, ~uint64_t(0)})
            for (uint16_t sign : {0, 0x8000}) v.push_back(bits80(uint16_t(sign | (16383 + e)), m));
    if (splittable_only) return v;
    for (int e : {-1001, 1001, -16382, 16383})
        for (uint64_t m : {top, odd, ~uint64_t(0)}) v.push_back(bits80(uint16_t(16383 + e), m));
    for (auto [se, m] : {std::pair<uint16_t, uint64_t>{0, 0x1234}, {0x8000, top | 5}, {0x3fff, top >> 1},
                         {0x7fff, top}, {0xffff, top}, {0x7fff, top | 0x4000000000000123ull}, {0xffff, top | 0x777}})
        v.push_back(bits80(se, m));  // subnormal, pseudo-subnormal, unnormal, infinities, NaNs
    return v;
}

// Element access for a value of Ty T at p (a slot of T::size bytes).
template <class T>
struct El {
    using P = typename T::P;
    static P get(const char* p, int part) {
        P v{};
        std::memcpy(&v, p + part * T::part, T::value_bytes);
        return v;
    }
    static void set(char* p, int part, P v) { std::memcpy(p + part * T::part, &v, T::value_bytes); }
    static bool same(const char* a, const char* b) {
        for (int q = 0; q < T::parts; ++q)
            if (std::memcmp(a + q * T::part, b + q * T::part, T::value_bytes) != 0) return false;
        return true;
    }
    // edge: 1 in `edge` REAL(10) parts take an edge value (0: none).
    template <class R>
    static void random(char* p, R& rng, int edge = 0) {
        static const std::vector<long double> e80 = edges80(false);
        for (int q = 0; q < T::parts; ++q) {
            P v;
            if constexpr (T::fam == Fam::Log) {
                v = (rng() % 3 == 0) ? P(P(1) << (rng() % (8 * sizeof(P) - 1))) : P(0);
            } else if constexpr (T::fam == Fam::Int) {
                v = static_cast<P>(static_cast<uint64_t>(rng()) * 0x9E3779B97F4A7C15ull >> 13);
            } else {
                std::uniform_real_distribution<double> u(-1.0, 1.0);
                double hi = std::ldexp(u(rng), static_cast<int>(rng() % 21) - 10);
                v = P(hi) + P(u(rng)) * P(std::ldexp(1.0, -60)) * P(hi);
                if constexpr (std::is_same_v<P, long double>)
                    if (edge && rng() % edge == 0) v = e80[rng() % e80.size()];
            }
            set(p, q, v);
        }
    }
};

template <class P>
P wrap(uint64_t v) {
    return static_cast<P>(static_cast<std::conditional_t<sizeof(P) == 8, uint64_t, uint32_t>>(v));
}

// A plain column-major matrix of T elements (slot size), rows x cols.
struct Mat {
    int rows = 0, cols = 0, size = 0;
    std::vector<char> v;
    Mat(int r, int c, int s) : rows(r), cols(c), size(s), v(std::size_t(r) * c * s + 1) {}
    char* at(int i, int j) { return v.data() + (std::size_t(j) * rows + i) * size; }
};

// C(i, j) over the plain matrices, with the engine's K partition.
template <class T>
void reference(Mat& A, Mat& B, Mat& C, int kblk, int split) {
    using E = El<T>;
    using P = typename T::P;
    using Acc = typename T::A;
    const int M = A.rows, K = A.cols, N = B.cols;
    const int R = K % kblk, Rs = R / split * split;
    for (int j = 0; j < N; ++j)
        for (int i = 0; i < M; ++i) {
            char* c = C.at(i, j);
            if constexpr (T::fam == Fam::Log) {
                bool v = false;
                for (int k = 0; k < K; ++k) v = v || (E::get(A.at(i, k), 0) != 0 && E::get(B.at(k, j), 0) != 0);
                E::set(c, 0, P(v ? 1 : 0));
                continue;
            } else {
                auto dot = [&](int k0, int n, int q) -> Acc {  // part q of the dot product
                    Acc s = Acc(0);
                    for (int k = k0; k < k0 + n; ++k) {
                        Acc ar = E::get(A.at(i, k), 0), br = E::get(B.at(k, j), 0);
                        if constexpr (T::fam == Fam::Int) {
                            s = wrap<Acc>(uint64_t(s) + uint64_t(ar) * uint64_t(br));
                        } else if constexpr (T::fam == Fam::Real) {
                            s = s + ar * br;
                        } else {
                            Acc ai = E::get(A.at(i, k), 1), bi = E::get(B.at(k, j), 1);
                            s = s + (q == 0 ? Acc(ar * br) - Acc(ai * bi) : Acc(ar * bi) + Acc(ai * br));
                        }
                    }
                    return s;
                };
                auto put = [&](bool acc, int k0, int n) {
                    for (int q = 0; q < T::parts; ++q) {
                        Acc s = dot(k0, n, q);
                        if constexpr (T::fam == Fam::Int) E::set(c, q, acc ? wrap<P>(uint64_t(E::get(c, q)) + uint64_t(s)) : P(s));
                        else E::set(c, q, P(acc ? Acc(E::get(c, q)) + s : s));
                    }
                };
                const int full = K - R;
                if (R == 0) {
                    for (int q = 0; q < T::parts; ++q) E::set(c, q, P(0));
                } else {
                    if (Rs > 0) put(false, full, Rs);
                    if (R > Rs) put(Rs > 0, full + Rs, R - Rs);
                }
                for (int k0 = 0; k0 < full; k0 += kblk) put(true, k0, kblk);
            }
        }
}

}  // namespace mmref
