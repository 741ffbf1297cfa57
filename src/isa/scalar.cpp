#include "block/words.hpp"
#include "isa/tables.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels scalarKernels = kernelsOf<Cell>("scalar");
}
