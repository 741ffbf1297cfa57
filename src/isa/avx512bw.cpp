#include "block/words_avx512.hpp"
#include "isa/tables.hpp"
#include "isa/unit.hpp"

namespace kro {
const Kernels avx512bwKernels = kernelsOf<Avx512<false>>("avx512bw");
}
