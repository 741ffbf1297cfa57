#include "block/words_avx2.hpp"
#include "isa/tables.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels avx2Kernels = kernelsOf<Avx2>("avx2");
}
