// Counts instructions exactly, the same number in every run: on x86 by the processor's single-step flag, which works
// for every instruction set that it has and needs no tool; elsewhere by a plugin of the emulator that plays the
// processor.
#pragma once

#include <cstdint>

#include "kernels/cases.hpp"

namespace bench {

uint64_t instructionsOf(const Work& work);

}  // namespace bench
