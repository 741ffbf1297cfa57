#include "isa/unit.hpp"
#include "vector/pair.hpp"

namespace kro {
const Kernels scalarKernels = kernelsOf<PairOfColumns>("scalar");
}
