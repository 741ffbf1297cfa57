#include "vector/simd128.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels simd128Kernels = kernelsOf<Simd128>("simd128");
}
