// drivers.cpp - the sixteen MATMUL entry points.
//
// A driver classifies the operands by rank (matrix x matrix, vector x matrix,
// matrix x vector; anything else is message 1, always checked), allocates the
// result unless the caller supplied it, makes the conformance checks when
// Flags bit 0 asks for them (K against B's first extent, message 2; the
// result's extents, message 3), and hands first-element addresses and strides
// in elements to its type's engine.  First-element addresses use the type's
// fixed element size (REAL(10) 16 bytes, COMPLEX(20) 32), not ELSIZE.  The
// result check compares only the extents named (dimension 1 with M, then
// dimension 2 with N; one dimension in the vector cases).
#include "engines.h"
#include "frame/call.h"

namespace intrins::mm {
namespace {

// Address of the first element: ZERO + (sum of LOWER * STRIDE) * size.
template <class T>
const void* first(const ArrDesc& d, int r) {
    std::intptr_t off = 0;
    for (int k = 0; k < r; ++k) off += std::intptr_t(d.DIM[k].LOWER) * d.DIM[k].STRIDE;
    return at<T>(d.ZERO, off, 1);
}

template <class T>
void matmul(ArgList* args) {
    char name[7] = "MATMUL";
    Call call(args);
    ArrDesc& a = *call.arg(1).desc();
    ArrDesc& b = *call.arg(2).desc();
    ArrDesc& c = *call.result().desc();
    enum { MxM, VxM, MxV } form;
    if (a.RANK == 2 && b.RANK == 2) form = MxM;
    else if (a.RANK == 1 && b.RANK == 2) form = VxM;
    else if (a.RANK != 2 || b.RANK != 1) f90_ArrLibError(name, 1);
    else form = MxV;

    const int32_t M = form == VxM ? 1 : extent(a, 0);
    const int32_t K = extent(a, form == VxM ? 0 : 1);
    const int32_t N = form == MxV ? 1 : extent(b, 1);
    ShapeList want;
    if (form == MxM) want.count = 2, want.extent[0] = M, want.extent[1] = N;
    else want.count = 1, want.extent[0] = form == VxM ? N : M;

    if (!call.result_supplied()) {
        c.ELSIZE = static_cast<int32_t>(MmType<T>::size);
        c.RANK = static_cast<int8_t>(want.count);
        for (int d = 0; d < want.count; ++d) c.DIM[d].LOWER = 1, c.DIM[d].UPPER = want.extent[d];
        f90_CreateArrayM(&c);
    }
    if (call.check()) {
        if (K != extent(b, 0)) f90_ArrLibError(name, 2, K, extent(b, 0));
        for (int d = 0; d < want.count; ++d)
            if (extent(c, d) != want.extent[d]) f90_ArrLibError(name, 3, &c, &want);
    }

    // Operand addresses are formed only from operands that hold elements (an
    // empty section's ZERO and BASE may be null): with no result element
    // there is nothing to do, and with K = 0 every result element is zero
    // while neither A nor B is addressed.
    if (M <= 0 || N <= 0) return;
    void* pc = const_cast<void*>(first<T>(c, want.count));
    if (K <= 0) {
        using Elem = Kind<typename MmType<T>::elem>;
        const int32_t c1 = form == VxM ? 0 : c.DIM[0].STRIDE;  // C(i, j) at i * c1 + j * c2
        const int32_t c2 = form == MxM ? c.DIM[1].STRIDE : form == VxM ? c.DIM[0].STRIDE : 0;
        for (int32_t j = 0; j < N; ++j)
            for (int32_t i = 0; i < M; ++i) Elem::store(at2<T>(pc, i, c1, j, c2), typename Elem::value{});
        return;
    }
    const void* pa = first<T>(a, a.RANK);
    const void* pb = first<T>(b, b.RANK);
    switch (form) {
    case MxM:
        Engines<T>::engine2x2(M, N, K, pa, a.DIM[0].STRIDE, a.DIM[1].STRIDE, pb, b.DIM[0].STRIDE, b.DIM[1].STRIDE,
                              pc, c.DIM[0].STRIDE, c.DIM[1].STRIDE);
        break;
    case VxM:
        Engines<T>::engine1x2(N, K, pa, a.DIM[0].STRIDE, pb, b.DIM[0].STRIDE, b.DIM[1].STRIDE, pc, c.DIM[0].STRIDE);
        break;
    case MxV:
        Engines<T>::engine2x1(M, K, pa, a.DIM[0].STRIDE, a.DIM[1].STRIDE, pb, b.DIM[0].STRIDE, pc, c.DIM[0].STRIDE);
        break;
    }
}

}  // namespace
}  // namespace intrins::mm

#define MM_DRIVERS(X)                                                                                   \
    X(i1, Int1) X(i2, Int2) X(i4, Int4) X(i8, Int8) X(l1, Log1) X(l2, Log2) X(l4, Log4) X(l8, Log8)       \
    X(r4, Real4) X(r8, Real8) X(r10, Real10) X(r16, Real16) X(c8, Complex8) X(c16, Complex16)           \
    X(c20, Complex20) X(c32, Complex32)

#define X(sfx, T) \
    extern "C" INTRINS_EXPORT void f90_matmul##sfx(ArgList* a) { intrins::mm::matmul<intrins::mm::T>(a); }
MM_DRIVERS(X)
#undef X
