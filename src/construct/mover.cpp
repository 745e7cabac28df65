// mover.cpp - the tiled transposition behind TRANSPOSE and RESHAPE with ORDER.
//
// The destination is written along its runs (operand 0, contiguous along
// dimension 0) while the source is contiguous along dimension 1.  A plain
// walk reads one element per cache line of the source; tiles of T x T
// elements keep the T source lines in the first-level cache while the T
// destination lines are filled, so every line is fetched once.
#include "construct/mask.h"
#include "construct/mover.h"

namespace intrins::construct {
namespace {

// One tile: rows x cols elements, d[i + j*dl] = s[j + i*sl] (in elements).
template <class E>
inline void tile(E e, char* d, std::ptrdiff_t dl, const char* s, std::ptrdiff_t sl, int32_t rows, int32_t cols) {
    const std::ptrdiff_t sz = e.bytes();
    for (int32_t j = 0; j < cols; ++j) {
        char* dp = d + j * dl;
        const char* sp = s + j * sz;
        for (int32_t i = 0; i < rows; ++i) copy_elem(e, dp + i * sz, sp + i * sl);
    }
}

template <class E>
void tiled(E e, const Nest<2>& n) {
    const std::ptrdiff_t sz = e.bytes();
    // Tile edge: about 16 KB of source per tile.
    int32_t t = 16;
    while (t < 128 && static_cast<std::ptrdiff_t>(2 * t) * (2 * t) * sz <= 16384) t *= 2;
    const std::ptrdiff_t dl = n.step[0][1], sl = n.step[1][0];
    for (int32_t j0 = 0; j0 < n.extent[1]; j0 += t) {
        int32_t cols = std::min(t, n.extent[1] - j0);
        for (int32_t i0 = 0; i0 < n.extent[0]; i0 += t) {
            int32_t rows = std::min(t, n.extent[0] - i0);
            tile(e, n.base[0] + i0 * sz + j0 * dl, dl, n.base[1] + i0 * sl + j0 * sz, sl, rows, cols);
        }
    }
}

}  // namespace

void copy_tiled(int32_t elsz, const Nest<2>& n) {
    switch (elsz) {
        case 1: return tiled(Fixed<1>{}, n);
        case 2: return tiled(Fixed<2>{}, n);
        case 4: return tiled(Fixed<4>{}, n);
        case 8: return tiled(Fixed<8>{}, n);
        case 16: return tiled(Fixed<16>{}, n);
        default: return tiled(Bytes{elsz}, n);
    }
}

int64_t pack_flat(int32_t elsz, char* d, int64_t cap, const char* a, const char* m, int64_t n) {
    switch (elsz) {
        case 1: return pack_flat_generic(Fixed<1>{}, d, cap, a, m, n);
        case 2: return pack_flat_generic(Fixed<2>{}, d, cap, a, m, n);
        case 4: return pack_flat_generic(Fixed<4>{}, d, cap, a, m, n);
        case 8: return pack_flat_generic(Fixed<8>{}, d, cap, a, m, n);
        case 16: return pack_flat_generic(Fixed<16>{}, d, cap, a, m, n);
        default: return pack_flat_generic(Bytes{elsz}, d, cap, a, m, n);
    }
}

}  // namespace intrins::construct
