// The main entry with the table of kernels given instead of chosen.
#pragma once

#include "kro/kro.h"
#include "table/kernels.hpp"

namespace kro {

int32_t demosaicing(const Kernels& kernels, KroContext* handle, const KroImage* input, KroAlgorithm algorithm,
                    KroImage* output);

}  // namespace kro
