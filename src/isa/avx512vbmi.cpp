#include "isa/unit.hpp"
#include "vector/avx512.hpp"

namespace kro {
const Kernels avx512vbmiKernels = kernelsOf<Avx512<true>>("avx512vbmi");
}
