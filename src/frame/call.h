// call.h - a typed view of an ArgList, decoded once per call.
//
// Slot contents: an address is the slot's first word; a scalar passed or
// returned by value lies in the slot's bytes from offset 0 in its own width
// (32-bit values in bytes 0-3, 64-bit ones in bytes 0-7, little-endian); a
// result written in its own width leaves the rest of the slot as it was.  A
// character operand is (address, length): the length is read as the low 32
// bits of the second word and written as a whole word, sign-extended.
#pragma once

#include <cstdint>
#include <cstring>

#include "descriptor.h"

namespace intrins {

class Slot {
public:
    explicit Slot(ArgSlot& s) : s_(&s) {}

    template <class T = void>
    T* addr() const { return reinterpret_cast<T*>(s_->w[0]); }
    ArrDesc* desc() const { return addr<ArrDesc>(); }

    int32_t i32() const { return read<int32_t>(); }
    int64_t i64() const { return read<int64_t>(); }

    template <class T>
    T read() const {
        static_assert(sizeof(T) <= sizeof(ArgSlot));
        T v;
        std::memcpy(&v, s_->bytes, sizeof v);
        return v;
    }
    template <class T>
    void write(const T& v) const {
        static_assert(sizeof(T) <= sizeof(ArgSlot));
        std::memcpy(s_->bytes, &v, sizeof v);
    }

    // Character operand: (address, length).
    char* text() const { return reinterpret_cast<char*>(s_->w[0]); }
    int32_t length() const { return static_cast<int32_t>(static_cast<uint32_t>(s_->w[1])); }
    void set_text(char* p, int32_t len) const {
        s_->w[0] = reinterpret_cast<Word>(p);
        s_->w[1] = static_cast<Word>(static_cast<std::intptr_t>(len));
    }
    void set_addr(const void* p) const { s_->w[0] = reinterpret_cast<Word>(p); }

    ArgSlot& raw() const { return *s_; }

private:
    ArgSlot* s_;
};

class Call {
public:
    explicit Call(ArgList* a) : a_(a) {}

    unsigned presence() const { return a_->Presence; }
    unsigned shape() const { return a_->Shape; }
    uint32_t flags() const { return a_->Flags; }

    bool result_supplied() const { return (a_->Presence & F90_PRESENT_RESULT) != 0; }
    bool present(int k) const { return (a_->Presence >> k) & 1u; }  // ARG k, k = 1..4
    bool check() const { return (a_->Flags & F90_FLAG_CHECK) != 0; }

    Slot result() const { return Slot(a_->Result); }
    Slot arg(int k) const { return Slot((&a_->Result)[k]); }  // k = 1..4

    ArgList* raw() const { return a_; }

private:
    ArgList* a_;
};

}  // namespace intrins
