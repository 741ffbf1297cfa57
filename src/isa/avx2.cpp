#include "vector/avx2.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels avx2Kernels = kernelsOf<Avx2>("avx2");
}
