// character.cpp - entry points of the character intrinsics: ADJUSTL, ADJUSTR
// and LEN_TRIM with plain arguments; INDEX, SCAN, VERIFY, REPEAT and TRIM
// through an ArgList.
//
// The position functions come in two widths: the plain entry writes a 32-bit
// result into the Result slot, the `k` entry a 64-bit one; both read the same
// 32-bit lengths.  BACK counts only when Presence bit 3 says it was given, and
// then any nonzero value is true.
//
// REPEAT checks NCOPIES and a supplied result's capacity only when Flags bit 0
// asks for checks; TRIM checks a supplied result's capacity always.  The
// asymmetry is deliberate.  Whatever the checks, REPEAT never writes beyond
// the storage it writes into: it makes as many whole copies as fit (see
// repeat_into), which is all of them whenever the caller's buffer is large
// enough and the length is representable in 32 bits.
#include <cstdint>
#include <cstring>

#include "frame/call.h"
#include "frame/platform.h"
#include "frame/runtime.h"
#include "intrins.h"
#include "text.h"

namespace intrins {
namespace {

using text::Text;

Text text_of(const Slot& s) { return Text(s.text(), s.length()); }

bool back_of(const Call& c) { return c.present(3) && c.arg(3).i32() != 0; }

// INDEX, SCAN and VERIFY: STRING in ARG 1, SUBSTRING or SET in ARG 2, BACK in
// ARG 3; the position goes to the Result slot in the width R.
template <class R, int32_t (*Find)(Text, Text, bool)>
void position(ArgList* a) {
    Call c(a);
    int32_t pos = Find(text_of(c.arg(1)), text_of(c.arg(2)), back_of(c));
    c.result().write(static_cast<R>(pos));
}

// Storage for a character result of `len` characters: the caller's buffer
// when Presence bit 0 says one is supplied, otherwise a new block whose
// address goes to the Result slot.
char* result_text(const Call& c, uint32_t len) {
    if (c.result_supplied()) return c.result().text();
    char* p = static_cast<char*>(getspace(len));
    c.result().set_addr(p);
    return p;
}

// The copies of REPEAT: `copies` times the string, but never more whole
// copies than `room` characters hold.  Returns the characters written.
int32_t repeat_into(char* d, Text s, int32_t copies, uint32_t room) {
    if (copies <= 0 || s.n == 0) return 0;
    uint32_t fit = room / static_cast<uint32_t>(s.n);
    if (fit < static_cast<uint32_t>(copies)) copies = static_cast<int32_t>(fit);
    for (int32_t i = 0; i < copies; ++i) std::memcpy(d + static_cast<std::size_t>(i) * s.n, s.p, s.n);
    return copies * s.n;
}

}  // namespace
}  // namespace intrins

using namespace intrins;

extern "C" {

INTRINS_EXPORT void f90_adjustl(const char* s, int32_t len, char* d) { text::adjust_left(Text(s, len), d); }
INTRINS_EXPORT void f90_adjustr(const char* s, int32_t len, char* d) { text::adjust_right(Text(s, len), d); }

#define LENTRIM_ENTRIES(X) X(lentrim, int32_t) X(klentrim, int64_t)
#define X(name, R) \
    INTRINS_EXPORT R f90_##name(const char* s, int32_t len) { return text::len_trim(Text(s, len)); }
LENTRIM_ENTRIES(X)
#undef X

#define POSITION_ENTRIES(X)                                                                   \
    X(index, int32_t, text::index_of) X(kindex, int64_t, text::index_of)                   \
    X(scan, int32_t, text::scan) X(kscan, int64_t, text::scan) X(verify, int32_t, text::verify) \
    X(kverify, int64_t, text::verify)
#define X(name, R, find) \
    INTRINS_EXPORT void f90_##name(ArgList* a) { position<R, find>(a); }
POSITION_ENTRIES(X)
#undef X

// REPEAT(STRING, NCOPIES): STRING in ARG 1, NCOPIES by value in ARG 2.
INTRINS_EXPORT void f90_repeat(ArgList* a) {
    Call c(a);
    Text s = text_of(c.arg(1));
    int32_t copies = c.arg(2).i32();
    // The required length in 32-bit arithmetic, as the messages show it.
    uint32_t need = static_cast<uint32_t>(s.n) * static_cast<uint32_t>(copies);
    if (c.check()) {
        if (copies < 0) f90_ArrLibError("REPEAT", 1, copies);
        uint32_t capacity = static_cast<uint32_t>(c.result().length());
        if (c.result_supplied() && need > capacity)
            f90_ArrLibError("REPEAT", 2, static_cast<int32_t>(capacity), static_cast<int32_t>(need));
    }
    uint32_t room = c.result_supplied() ? static_cast<uint32_t>(c.result().length()) : (copies > 0 ? need : 0);
    char* d = result_text(c, room);
    c.result().set_text(d, repeat_into(d, s, copies, room));
}

// TRIM(STRING): STRING in ARG 1.
INTRINS_EXPORT void f90_trim(ArgList* a) {
    Call c(a);
    Text s = text_of(c.arg(1));
    int32_t t = text::len_trim(s);
    if (c.result_supplied()) {
        uint32_t capacity = static_cast<uint32_t>(c.result().length());
        if (static_cast<uint32_t>(t) > capacity) f90_ArrLibError("TRIM", 1, static_cast<int32_t>(capacity), t);
    }
    char* d = result_text(c, static_cast<uint32_t>(t));
    if (t > 0) std::memcpy(d, s.p, static_cast<std::size_t>(t));
    c.result().set_text(d, t);
}

}  // extern "C"
