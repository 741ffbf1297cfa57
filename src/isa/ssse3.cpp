#include "isa/unit.hpp"
#include "vector/ssse3.hpp"

namespace kro {
const Kernels ssse3Kernels = kernelsOf<Ssse3>("ssse3");
}
