#include "vector/neon.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels neonKernels = kernelsOf<Neon>("neon");
}
