#include "vector/ssse3.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels ssse3Kernels = kernelsOf<Ssse3>("ssse3");
}
