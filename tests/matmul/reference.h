// reference.h - a naive MATMUL that follows the per-element sequence word for
// word, plus the element types of the sixteen kinds for typed tests.
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
template <class P_, class A_, Fam F_, int PartSize, int KB, int CH, void (*Drv)(ArgList*), int Tag>
struct Ty {
    using P = P_;
    using A = A_;
    static constexpr Fam fam = F_;
    static constexpr int parts = F_ == Fam::Cplx ? 2 : 1;
    static constexpr int part = PartSize;
    static constexpr int size = parts * PartSize;
    static constexpr int kblk = KB, chunk = CH;
    static constexpr int value_bytes = std::is_same_v<P, long double> ? 10 : int(sizeof(P));  // REAL(10): 10 of 16
    static void run(ArgList* a) { Drv(a); }
};

// Element access for a value of Ty T at p (a slot of T::size bytes).
template <class T>
struct El {
    using P = typename T::P;
    using A = typename T::A;
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
    template <class R>
    static void random(char* p, R& rng) {
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
            }
            set(p, q, v);
        }
    }
};

// Wrapping integer arithmetic in the element's own width.
template <class P>
P wrap_add(P a, P b) {
    using U = std::conditional_t<sizeof(P) == 8, uint64_t, uint32_t>;
    return static_cast<P>(static_cast<U>(a) + static_cast<U>(b));
}
template <class P>
P wrap_mul(P a, P b) {
    using U = std::conditional_t<sizeof(P) == 8, uint64_t, uint32_t>;
    return static_cast<P>(static_cast<U>(a) * static_cast<U>(b));
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
                        if constexpr (T::fam == Fam::Int) {
                            s = wrap_add(s, wrap_mul(E::get(A.at(i, k), 0), E::get(B.at(k, j), 0)));
                        } else if constexpr (T::fam == Fam::Real) {
                            Acc p = Acc(E::get(A.at(i, k), 0)) * Acc(E::get(B.at(k, j), 0));
                            s = s + p;
                        } else {
                            Acc ar = E::get(A.at(i, k), 0), ai = E::get(A.at(i, k), 1);
                            Acc br = E::get(B.at(k, j), 0), bi = E::get(B.at(k, j), 1);
                            Acc p = q == 0 ? Acc(ar * br) - Acc(ai * bi) : Acc(ar * bi) + Acc(ai * br);
                            s = s + p;
                        }
                    }
                    return s;
                };
                auto put = [&](bool acc, int k0, int n) {
                    for (int q = 0; q < T::parts; ++q) {
                        Acc s = dot(k0, n, q);
                        if constexpr (T::fam == Fam::Int) {
                            E::set(c, q, acc ? wrap_add(E::get(c, q), P(s)) : P(s));
                        } else {
                            E::set(c, q, P(acc ? Acc(E::get(c, q)) + s : s));
                        }
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
