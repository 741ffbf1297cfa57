#include "isa/unit.hpp"
#include "vector/avx2.hpp"

namespace kro {
const Kernels avx2Kernels = kernelsOf<Avx2>("avx2");
}
