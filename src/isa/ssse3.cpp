#include "block/words_ssse3.hpp"
#include "isa/tables.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels ssse3Kernels = kernelsOf<Ssse3>("ssse3");
}
