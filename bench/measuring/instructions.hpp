// Counts instructions exactly, by the processor's single-step flag: works for every instruction set the processor
// has, needs no counter and no tool, and gives the same number in every run.
#pragma once

#include <cstdint>

#include "kernels/cases.hpp"

namespace bench {

uint64_t instructionsOf(const Work& work);

}  // namespace bench
