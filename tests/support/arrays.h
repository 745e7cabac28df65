// arrays.h - operands shaped the way compiled code shapes them: descriptors of
// any rank built from bounds and steps (lower bounds other than 1, reversed
// and strided sections, zero extents, scalars), randomized layouts with a
// printable description, the element walk in array-element order, argument
// lists, bit comparison and the exact-diagnostic death test.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "intrins.h"

namespace testutil {

// The statement must end the process with status 1 and exactly this text on
// the standard error stream.
#define EXPECT_DIES_WITH(statement, text) \
    EXPECT_EXIT(statement, ::testing::ExitedWithCode(1), ::testing::Eq(std::string(text)))

// A descriptor with its two bounds-check words in front, as compiled code lays it out.
struct Desc {
    ArrDescChecked raw{};
    ArrDesc* operator->() { return &raw.desc; }
    ArrDesc* get() { return &raw.desc; }
    operator ArrDesc*() { return &raw.desc; }
};

// One dimension of an operand: bounds, and the distance in elements of the
// backing storage between neighbours (negative: a reversed section).
struct Dim {
    int32_t lower, extent, step = 0;
};

// An operand owned by the test: `dims` over storage of `elsize`-byte elements.
// A step of 0 means contiguous (each dimension right after the previous
// one).  Storage before and after the elements is filled with 0xA5 bytes
// that must survive.
class Array {
public:
    Array(std::vector<Dim> dims, int32_t elsize, int32_t scale = 0) : dims_(std::move(dims)), elsize_(elsize) {
        ArrDesc& d = *desc_.get();
        d.RANK = static_cast<int8_t>(dims_.size());
        int64_t n = 1, dense = 1, lo = 0, hi = 0, zero = 0;
        bool contiguous = true;
        for (Dim& m : dims_) {
            if (m.extent < 0) m.extent = 0;
            if (m.step == 0) m.step = static_cast<int32_t>(dense);
            contiguous &= m.step == dense || m.extent == 1;
            const int64_t reach = (m.extent > 0 ? m.extent - 1 : 0) * int64_t{m.step};
            (reach < 0 ? lo : hi) += reach;
            dense *= std::max(m.extent, 1);
            n *= m.extent;
        }
        const int32_t unit = scale ? scale : elsize;  // bytes per unit of STRIDE
        store_.assign(static_cast<std::size_t>((hi - lo + 1) * elsize + 2 * kPad), static_cast<char>(0xA5));
        for (std::size_t k = 0; k < dims_.size(); ++k) {
            const Dim& m = dims_[k];
            const int32_t stride = static_cast<int32_t>(int64_t{m.step} * elsize / unit);
            d.DIM[k] = {m.lower, m.lower + m.extent - 1, stride};
            zero += int64_t{m.lower} * stride * unit;
        }
        const int64_t first = -lo;
        d.BASE = store_.data() + kPad + first * elsize;
        d.ZERO = d.BASE - zero;
        d.EXTENT = static_cast<int32_t>(n);
        d.ELSIZE = elsize;
        d.SCALEFACTOR = unit;
        d.NONCONTIG = contiguous ? 0 : 1;
    }
    // Contiguous, from (lower, upper) pairs, elements zero.
    Array(std::initializer_list<std::pair<int32_t, int32_t>> bounds, int32_t elsize)
        : Array(dims_of(bounds), elsize) {
        for (int64_t n = 0; n < size(); ++n) std::memset(elem(n), 0, elsize);
    }
    explicit Array(int32_t elsize) : Array({}, elsize) {}  // a scalar

    ArrDesc* desc() { return desc_.get(); }
    operator ArrDesc*() { return desc_.get(); }
    int32_t size() const { return desc_.raw.desc.EXTENT; }
    int rank() const { return static_cast<int>(dims_.size()); }
    const std::vector<Dim>& dims() const { return dims_; }
    char* data() { return desc_.raw.desc.BASE; }
    // Element n (0-based) in array-element order.
    char* elem(int64_t n) {
        const ArrDesc& d = desc_.raw.desc;
        char* p = d.BASE;
        for (const Dim& m : dims_) {
            p += (n % m.extent) * m.step * int64_t{elsize_};
            n /= m.extent;
        }
        return p;
    }
    template <class T>
    T& at(int64_t n) {
        return *reinterpret_cast<T*>(elem(n));
    }
    template <class T>
    void fill(std::initializer_list<T> v) {
        int64_t i = 0;
        for (const T& x : v) std::memcpy(elem(i++), &x, sizeof x);
    }
    // Whether the bytes around the elements (padding, gaps) are untouched.
    bool guard_intact() {
        std::vector<bool> used(store_.size());
        for (int64_t n = 0; n < size(); ++n)
            for (int32_t b = 0; b < elsize_; ++b) used[elem(n) + b - store_.data()] = true;
        for (std::size_t i = 0; i < store_.size(); ++i)
            if (!used[i] && store_[i] != static_cast<char>(0xA5)) return false;
        return true;
    }
    std::string str() const {
        std::string s = "(";
        for (const Dim& m : dims_)
            s += std::to_string(m.lower) + ":" + std::to_string(m.lower + m.extent - 1) + " step " +
                 std::to_string(m.step) + (&m == &dims_.back() ? "" : ", ");
        return s + ") elsize " + std::to_string(elsize_) + " scale " + std::to_string(desc_.raw.desc.SCALEFACTOR);
    }

private:
    static constexpr int kPad = 64;
    static std::vector<Dim> dims_of(std::initializer_list<std::pair<int32_t, int32_t>> b) {
        std::vector<Dim> v;
        for (auto [lo, hi] : b) v.push_back({lo, hi - lo + 1});
        return v;
    }
    Desc desc_;
    std::vector<Dim> dims_;
    int32_t elsize_;
    std::vector<char> store_;
};

// Random extents for rank r: mostly small odd and even sizes, sometimes 0 or 1.
inline std::vector<int32_t> random_extents(std::mt19937_64& rng, int rank, int32_t most = 5) {
    std::vector<int32_t> e(rank);
    for (auto& x : e) x = rng() % 8 == 0 ? static_cast<int32_t>(rng() % 2) : 1 + static_cast<int32_t>(rng() % most);
    return e;
}
// A random layout of these extents: lower bounds in -3..3, each dimension
// contiguous, strided by 2 or 3, or reversed; sometimes (`bytes`) in byte units of STRIDE.
inline Array random_array(std::mt19937_64& rng, const std::vector<int32_t>& extents, int32_t elsize, bool bytes = true) {
    std::vector<Dim> dims;
    int64_t span = 1;
    bool plain = rng() % 3 == 0;
    for (int32_t e : extents) {
        int32_t gap = plain ? 1 : static_cast<int32_t>(1 + rng() % 3 / 2 + rng() % 4 / 3);
        int32_t step = static_cast<int32_t>(span * gap) * (!plain && rng() % 3 == 0 ? -1 : 1);
        dims.push_back({plain ? 1 : static_cast<int32_t>(rng() % 7) - 3, e, step});
        span *= int64_t{std::max(e, 1)} * gap + (plain ? 0 : rng() % 2);
    }
    return Array(dims, elsize, bytes && rng() % 4 == 0 ? 1 : 0);
}

// A section of an Array built by the library from triplets (kind 3) and
// scalar subscripts (kind 1): Section s(a, {tri(1, 9, 2), scal(3)});
struct Sub {
    int32_t kind, lo, hi, st;
};
inline Sub tri(int32_t lo, int32_t hi, int32_t st = 1) { return {F90_SUBSCRIPT_TRIPLET, lo, hi, st}; }
inline Sub scal(int32_t i) { return {F90_SUBSCRIPT_SCALAR, i, 0, 0}; }
class Section {
public:
    Section(Array& a, std::initializer_list<Sub> subs) {
        std::vector<int32_t> t;
        for (const Sub& s : subs) t.insert(t.end(), {s.kind, s.lo, s.hi, s.st});
        f90_CreateSection(a.desc(), t.data(), desc_.get());
    }
    ArrDesc* desc() { return desc_.get(); }
    operator ArrDesc*() { return desc_.get(); }

private:
    Desc desc_;
};

// The addresses of a descriptor's elements in array-element order, from its
// fields alone (a rank-0 descriptor: BASE).
inline std::vector<char*> elements(const ArrDesc& d) {
    if (d.RANK <= 0) return {d.BASE};
    std::vector<char*> out;
    int32_t sub[F90_MAXDIM];
    for (int k = 0; k < d.RANK; ++k) {
        if (d.DIM[k].UPPER < d.DIM[k].LOWER) return out;
        sub[k] = d.DIM[k].LOWER;
    }
    for (;;) {
        intptr_t off = 0;
        for (int k = 0; k < d.RANK; ++k) off += intptr_t{sub[k]} * d.DIM[k].STRIDE;
        out.push_back(d.ZERO + off * d.SCALEFACTOR);
        int k = 0;
        while (k < d.RANK && ++sub[k] > d.DIM[k].UPPER) sub[k] = d.DIM[k].LOWER, ++k;
        if (k == d.RANK) return out;
    }
}

// An ArgList with the given slots; addresses go in the first word.
struct Args {
    ArgList a{};
    Args& presence(unsigned p) { a.Presence = static_cast<uint16_t>(p); return *this; }
    Args& flags(uint32_t f) { a.Flags = f; return *this; }
    Args& check(bool on = true) { if (on) a.Flags |= F90_FLAG_CHECK; return *this; }
    ArgSlot& slot(int k) { return (&a.Result)[k]; }
    // ARG k (k = 1..4) or the Result slot (k = 0) holding an address.
    Args& addr(int k, const void* p) {
        slot(k).w[0] = reinterpret_cast<F90Word>(p);
        if (k > 0) a.Presence |= static_cast<uint16_t>(1u << k);
        return *this;
    }
    // A caller-supplied result descriptor.
    Args& result(const void* p) {
        a.Presence |= F90_PRESENT_RESULT;
        return addr(0, p);
    }
    // A by-value scalar in a slot, in its own width from offset 0.
    template <class T>
    Args& value(int k, T v) {
        std::memcpy(slot(k).bytes, &v, sizeof v);
        if (k > 0) a.Presence |= static_cast<uint16_t>(1u << k);
        return *this;
    }
    // A character operand: (address, length).
    Args& text(int k, const char* p, int32_t len) {
        slot(k).w[0] = reinterpret_cast<F90Word>(p);
        slot(k).w[1] = static_cast<F90Word>(static_cast<intptr_t>(len));
        if (k > 0) a.Presence |= static_cast<uint16_t>(1u << k);
        return *this;
    }
    ArgList* get() { return &a; }
    operator ArgList*() { return &a; }
};

// The first n bytes of a value as hexadecimal digits, most significant first.
inline std::string hex(const void* p, std::size_t n) {
    std::string s;
    static const char* d = "0123456789abcdef";
    for (std::size_t i = n; i-- > 0;) {
        unsigned char b = static_cast<const unsigned char*>(p)[i];
        s += d[b >> 4], s += d[b & 15];
    }
    return s;
}
// Bit equality of the first n bytes, printing both on failure.
inline ::testing::AssertionResult same_bits(const void* got, const void* want, std::size_t n) {
    if (std::memcmp(got, want, n) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << hex(got, n) << ", want " << hex(want, n);
}

}  // namespace testutil
