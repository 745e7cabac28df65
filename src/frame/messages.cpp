// messages.cpp - the message table and the library's one error path,
// f90_ArrLibError.
//
// The table is one flat sequence of string addresses ended by a null word:
// per intrinsic its name (in a 32-byte slot) followed by its templates,
// message 1 first.  A template shared by several intrinsics is stored once.
// The name search compares every word, templates included, and a message
// number past the end of a group deliberately selects the next word of the
// table (MAXLOC and MINLOC rely on it).
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "descriptor.h"
#include "messages.h"

namespace intrins {
namespace {

const char T1[] = " The DIM parameter had a value of @I.\n Its value should be at least 1 and no larger than @I.\n";
const char T2[] = " The RESULT array has shape:    @B.\n The shape of RESULT should be: @G.\n";
const char T3[] = " The RESULT array has shape:    @B.\n The shape of RESULT should be: @B.\n";
const char T4[] = " The SHIFT array has shape:    @B.\n The shape of SHIFT should be: @G.\n";
const char T5[] =
    " Argument @I of the intrinsic function DATEANDTIME has string length @I.\n"
    " It should have string length at least @I.\n";
const char T6[] =
    " Argument 4 of the intrinsic function DATEANDTIME is an array with @I elements.\n"
    " It should be an array with at least 8 elements.\n";
const char T7[] =
    " Argument 4 of the intrinsic function DATEANDTIME is a rank @I array.\n It should be a rank 1 array.\n";
const char T8[] =
    " Array arguments VECTOR_A and VECTOR_B should have the same shape.\n"
    " The shape of argument VECTOR_A is: @B.\n The shape of argument VECTOR_B is: @B.\n";
const char T9[] = " The BOUNDARY array has shape:    @B.\n The shape of BOUNDARY should be: @G.\n";
const char T10[] = " At least one of the array arguments should have rank = 2\n";
const char T11[] =
    " The extent of the last dimension of MATRIX_A is @I.\n"
    " The extent of the first dimension of MATRIX_B is @I.\n These values should be equal.\n";
const char T12[] = " The RESULT array has size @I. It should have size @I.\n";
const char T13[] =
    " Array arguments ARRAY and MASK should have the same shape.\n"
    " The shape of argument ARRAY is: @B.\n The shape of argument MASK is:  @B.\n";
const char T14[] =
    " Argument FROMPOS has the value @I and argument LEN has the value @I.\n"
    " Both arguments should have nonnegative values and their sum should be less than or equal to @I.\n";
const char T15[] =
    " Argument TOPOS has the value @I and argument LEN has the value @I.\n"
    " Both arguments should have nonnegative values and their sum should be less than or equal to @I.\n";
const char T16[] = " Array argument VECTOR has size @I. It should have size @I.\n";
const char T17[] = " The NCOPIES argument has a value of @I. NCOPIES should be nonnegative.\n";
const char T18[] = " The RESULT character string has length @I. It should have length @I.\n";
const char T19[] = " The SHAPE argument has size @I.\n Its size should be at least 1 and no larger than 7.\n";
const char T20[] =
    " The SHAPE argument should have only nonnegative elements.\n The contents of the SHAPE array is: @V.\n";
const char T21[] =
    " The rank of the RESULT array should be equal to the size of the SHAPE array.\n"
    " The rank of the RESULT array is @I. The size of the SHAPE array is @I.\n";
const char T22[] = " The RESULT array has shape:    @B.\n The shape of RESULT should be: @V.\n";
const char T23[] = " The size of the SOURCE array should be at least @I.\n The size of the SOURCE array is @I.\n";
const char T24[] =
    " Array arguments SHAPE and ORDER should have the same shape.\n"
    " The shape of argument SHAPE is: @B.\n The shape of argument ORDER is: @B.\n";
const char T25[] =
    " The ORDER argument should be a permutation of the integers 1 to @I.\n"
    " The contents of the ORDER argument array is: @V.\n";
const char T26[] = " The SIZE argument has a value @I. Its value should be nonnegative.\n";
const char T27[] =
    " Array arguments MASK and FIELD should have the same shape.\n"
    " The shape of argument MASK is:  @B.\n The shape of argument FIELD is: @B.\n";

// Intrinsic names, each in its own 32-byte slot.
using NameSlot = char[32];
NameSlot ALL = "ALL", ANY = "ANY", COUNT = "COUNT", CSHIFT = "CSHIFT", DATEANDTIME = "DATEANDTIME",
         DOT_PRODUCT = "DOT_PRODUCT", EOSHIFT = "EOSHIFT", MATMUL = "MATMUL", MAXLOC = "MAXLOC",
         MAXVAL = "MAXVAL", MINLOC = "MINLOC", MINVAL = "MINVAL", MVBITS = "MVBITS", PACK = "PACK",
         PRODUCT = "PRODUCT", REPEAT = "REPEAT", RESHAPE = "RESHAPE", SPREAD = "SPREAD", SUM = "SUM",
         TRANSFER = "TRANSFER", TRANSPOSE = "TRANSPOSE", TRIM = "TRIM", UNPACK = "UNPACK";

// The table lies in writable data, as the compiled code's runtime expects.
const char* g_table[] = {
    ALL, T1, T2,
    ANY, T1, T2,
    COUNT, T1, T2,
    CSHIFT, T1, T3, T4,
    DATEANDTIME, T5, T6, T7,
    DOT_PRODUCT, T8,
    EOSHIFT, T1, T3, T9, T4,
    MATMUL, T10, T11, T2,
    MAXLOC, T12, T2, T13,
    MAXVAL, T1, T13, T2,
    MINLOC, T12, T2, T13,
    MINVAL, T1, T13, T2,
    MVBITS, T14, T15,
    PACK, T13, T16, T12,
    PRODUCT, T1, T2, T13,
    REPEAT, T17, T18,
    RESHAPE, T19, T20, T21, T22, T23, T24, T25,
    SPREAD, T1, T2,
    SUM, T1, T2, T13,
    TRANSFER, T26, T12,
    TRANSPOSE, T2,
    TRIM, T18,
    UNPACK, T3, T27, T16,
    nullptr,
};
constexpr int kTableWords = sizeof g_table / sizeof g_table[0] - 1;
static_assert(kTableWords == 84, "23 groups, 84 words before the terminator");

void print_extents(const int32_t* ext, int n, std::ptrdiff_t stride) {
    std::fputs("(", stderr);
    for (int k = 0; k < n; ++k) std::fprintf(stderr, k + 1 < n ? "%d, " : "%d)", ext[k * stride]);
}

// "@B": the shape of a descriptor, from its bounds.
void print_shape(const ArrDesc* d) {
    if (d->RANK <= 0) {
        std::fputs("(SCALAR)", stderr);
        return;
    }
    int32_t ext[F90_MAXDIM];
    for (int k = 0; k < d->RANK && k < F90_MAXDIM; ++k) ext[k] = extent(*d, k);
    print_extents(ext, d->RANK < F90_MAXDIM ? d->RANK : F90_MAXDIM, 1);
}

// "@G": a count followed by that many extents.
void print_shape_list(const int32_t* list) {
    if (list[0] <= 0) {
        std::fputs("(SCALAR)", stderr);
        return;
    }
    print_extents(list + 1, list[0], 1);
}

// "@V": the elements of a 32-bit integer vector (always read as 4 bytes).
void print_vector(const ArrDesc* d) {
    if (d->RANK <= 0) {
        std::fputs("(SCALAR)", stderr);
        return;
    }
    if (d->EXTENT <= 0) {
        std::fputs("(EMPTY)", stderr);
        return;
    }
    const ArrDim& dim = d->DIM[0];
    std::fputs("(", stderr);
    for (int32_t i = dim.LOWER; i <= dim.UPPER; ++i) {
        int32_t v;
        std::memcpy(&v, d->ZERO + static_cast<std::intptr_t>(i) * d->SCALEFACTOR * dim.STRIDE, sizeof v);
        std::fprintf(stderr, i < dim.UPPER ? "%d, " : "%d)", v);
    }
}

// Prints a template, expanding its placeholders from the argument list.
// Literal text goes out through a 512-byte buffer, as runs of at most 511
// characters.
void print_template(const char* t, va_list ap) {
    char buf[512];
    for (;;) {
        std::size_t run = 0;
        while (t[run] != '\0' && t[run] != '@') ++run;
        while (run > 0) {
            std::size_t n = run < sizeof buf - 1 ? run : sizeof buf - 1;
            std::memcpy(buf, t, n);
            buf[n] = '\0';
            std::fprintf(stderr, "%s", buf);
            t += n;
            run -= n;
        }
        if (*t == '\0' || t[1] == '\0') return;
        switch (t[1]) {
        case 'I': std::fprintf(stderr, "%d", va_arg(ap, int32_t)); break;
        case 'B': print_shape(va_arg(ap, const ArrDesc*)); break;
        case 'G': print_shape_list(va_arg(ap, const int32_t*)); break;
        case 'V': print_vector(va_arg(ap, const ArrDesc*)); break;
        default: break;  // unknown letter: nothing printed, no value consumed
        }
        t += 2;
    }
}

}  // namespace

void print_message_text(const char* text, ...) {
    va_list ap;
    va_start(ap, text);
    print_template(text, ap);
    va_end(ap);
}

}  // namespace intrins

using namespace intrins;

extern "C" {

INTRINS_EXPORT void f90_ArrLibError(const char* name, int32_t number, ...) {
    int found = -1;
    for (int i = 0; i < kTableWords; ++i) {
        if (std::strcmp(g_table[i], name) == 0) {
            found = i;
            break;
        }
    }
    if (found < 0) {
        std::fprintf(stderr, "ERROR calling the error handler by the\n intrinsic subprogram, signed by %s.\n", name);
        std::fflush(stderr);
        std::exit(1);
    }
    std::fprintf(stderr, "ERROR calling the intrinsic subprogram %s:\n", name);
    // A number that leads outside the table (or onto its terminator) would
    // read memory that is not a template; such a call prints no template.
    const int64_t at = static_cast<int64_t>(found) + number;
    if (at >= 0 && at < kTableWords) {
        va_list ap;
        va_start(ap, number);
        print_template(g_table[at], ap);
        va_end(ap);
    }
    std::fflush(stderr);
    std::exit(1);
}

INTRINS_EXPORT void f90_PrintArgList(const ArgList* a) {
    // Words are printed with "%08x" widths; on 64-bit a word shows all its
    // digits (at least eight).
    std::printf("- ARGUMENT LIST -      Presence:%04x    Shape:%04x   Flags:%08x\n",
                static_cast<unsigned>(static_cast<int>(static_cast<int16_t>(a->Presence))),
                static_cast<unsigned>(static_cast<int>(static_cast<int16_t>(a->Shape))),
                static_cast<unsigned>(a->Flags));
    auto words = [](const ArgSlot& s, const char* fmt) {
        std::printf(fmt, static_cast<unsigned long long>(s.w[0]), static_cast<unsigned long long>(s.w[1]));
    };
    words(a->Result, "- Result:  %08llx %08llx\n");
    words(a->ARG1, "- ARG 1:   %08llx %08llx  ");
    words(a->ARG2, "  ARG 2:   %08llx %08llx\n");
    words(a->ARG3, "- ARG 3:   %08llx %08llx  ");
    words(a->ARG4, "  ARG 4:   %08llx %08llx\n");
}

INTRINS_EXPORT void f90_PrintArrDesc(const ArrDesc* d) {
    auto word = [](const void* p) { return static_cast<unsigned long long>(reinterpret_cast<Word>(p)); };
    std::printf("- ARRAY DESCRIPTOR     %08llx\n", word(d));
    std::printf("- ZERO:%08llx  BASE:%08llx --> ", word(d->ZERO), word(d->BASE));
    if (!d->BASE) {
        std::printf(" NOT PRESENT");
    } else {
        // Each byte is widened as a signed value: 0x80..0xFF print as eight digits.
        for (int i = 0; i < 32; ++i)
            std::printf("%02x", static_cast<unsigned>(static_cast<int>(static_cast<signed char>(d->BASE[i]))));
    }
    std::printf("\n- EXTENT:%d     ELSIZE:%d    SCALEFACTOR:%d\n", d->EXTENT, d->ELSIZE, d->SCALEFACTOR);
    std::printf("- RANK:%1d  NONCONTIG:%1d  ", d->RANK, d->NONCONTIG);
    for (int k = 0; k < d->RANK && k < F90_MAXDIM; ++k)
        std::printf("%d(%d %d %d) ", k + 1, d->DIM[k].LOWER, d->DIM[k].UPPER, d->DIM[k].STRIDE);
    std::printf("\n-\n");
}

}  // extern "C"
