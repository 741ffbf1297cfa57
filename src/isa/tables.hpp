// The tables of all units.
#pragma once

#include "isa/kernels.hpp"

namespace kro {

extern const Kernels scalarKernels;
extern const Kernels ssse3Kernels;
extern const Kernels avx2Kernels;
extern const Kernels avx512bwKernels;
extern const Kernels avx512vbmiKernels;

}  // namespace kro
