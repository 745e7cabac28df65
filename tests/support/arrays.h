// arrays.h - test builders for descriptors shaped the way compiled code
// shapes them: lower bounds other than 1, strided and reversed sections,
// zero extents, scalars; and the death-test helper for exact diagnostics.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "intrins.h"

namespace testutil {

// The statement must end the process with status 1 and exactly this text on
// the standard error stream.
#define EXPECT_DIES_WITH(statement, text) \
    EXPECT_EXIT(statement, ::testing::ExitedWithCode(1), ::testing::Eq(std::string(text)))

// A descriptor with its two bounds-check words in front, as compiled code
// lays it out.
struct Desc {
    ArrDescChecked raw{};
    ArrDesc* operator->() { return &raw.desc; }
    ArrDesc* get() { return &raw.desc; }
    const ArrDesc* get() const { return &raw.desc; }
    operator ArrDesc*() { return &raw.desc; }
};

// An array owned by the test: contiguous column-major storage of `elsize`-byte
// elements with the given (lower, upper) bounds per dimension, described the
// way f90_CreateArrayM would (but with the test's own storage).
class Array {
public:
    Array(std::initializer_list<std::pair<int32_t, int32_t>> bounds, int32_t elsize)
        : elsize_(elsize) {
        ArrDesc& d = *desc_.get();
        d.RANK = static_cast<int8_t>(bounds.size());
        int32_t n = 1, k = 0, zero_off = 0;
        for (auto [lo, hi] : bounds) {
            int32_t e = hi - lo + 1 < 0 ? 0 : hi - lo + 1;
            d.DIM[k] = {lo, e == 0 ? lo - 1 : hi, n};
            zero_off += lo * n;
            n *= e;
            ++k;
        }
        data_.assign(static_cast<std::size_t>(n) * elsize + 64, 0);  // slack: dumps read 32 bytes
        d.BASE = data_.data();
        d.ZERO = n > 0 ? d.BASE - static_cast<std::ptrdiff_t>(zero_off) * elsize : d.BASE;
        d.EXTENT = n;
        d.ELSIZE = elsize;
        d.SCALEFACTOR = elsize;
    }
    // A rank-0 (scalar) operand of elsize bytes.
    explicit Array(int32_t elsize) : Array({}, elsize) {}

    ArrDesc* desc() { return desc_.get(); }
    operator ArrDesc*() { return desc_.get(); }
    int32_t size() const { return desc_.get()->EXTENT; }
    char* data() { return data_.data(); }

    // Element n (0-based) in storage order.
    template <class T>
    T& at(int64_t n) {
        return *reinterpret_cast<T*>(data_.data() + n * elsize_);
    }
    template <class T>
    void fill(std::initializer_list<T> v) {
        int64_t i = 0;
        for (const T& x : v) std::memcpy(data_.data() + (i++) * elsize_, &x, sizeof x);
    }

private:
    Desc desc_;
    std::vector<char> data_;
    int32_t elsize_;
};

// A section of an Array, built by the library from triplets (kind 3) and
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

// An ArgList with the given slots; addresses go in the first word.
struct Args {
    ArgList a{};
    Args& presence(unsigned p) { a.Presence = static_cast<uint16_t>(p); return *this; }
    Args& flags(uint32_t f) { a.Flags = f; return *this; }
    Args& check() { a.Flags |= F90_FLAG_CHECK; return *this; }
    ArgSlot& slot(int k) { return (&a.Result)[k]; }
    // ARG k (k = 1..4) or the Result slot (k = 0) holding an address.
    Args& addr(int k, const void* p) {
        slot(k).w[0] = reinterpret_cast<F90Word>(p);
        if (k > 0) a.Presence |= static_cast<uint16_t>(1u << k);
        return *this;
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
};

}  // namespace testutil
