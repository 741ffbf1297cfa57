#include "isa/unit.hpp"
#include "vector/avx512.hpp"

namespace kro {
const Kernels avx512bwKernels = kernelsOf<Avx512<false>>("avx512bw");
}
