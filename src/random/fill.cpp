// fill.cpp - the array forms of RANDOM_NUMBER.
#include "random/generator.h"

namespace intrins::random {

template <class E>
void fill(State& s, void* out, int32_t n) {
    char* p = static_cast<char*>(out);
    for (int32_t k = 0; k < n; ++k, p += Kind<E>::size) Kind<E>::store(p, Unit<E>::value(step(s)));
}

template void fill<float>(State&, void*, int32_t);
template void fill<double>(State&, void*, int32_t);
template void fill<R10>(State&, void*, int32_t);
template void fill<Quad>(State&, void*, int32_t);

}  // namespace intrins::random
