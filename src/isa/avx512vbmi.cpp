#include "block/words_avx512.hpp"
#include "isa/tables.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels avx512vbmiKernels = kernelsOf<Avx512<true>>("avx512vbmi");
}
