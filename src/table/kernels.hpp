// The table of kernels of one instruction set, and the choice among the tables.
#pragma once

#include "kro/kro.h"
#include "records/job.hpp"

namespace kro {

struct Kernels {
    const char* name;  // as in table/sets.def

    // Exported routines: one member of the exported type and name each.
#define KRO_KERNEL(routine, ...) decltype(&::routine) routine;
#include "table/kernels.def"
#undef KRO_KERNEL

    // Internal: frames, or bands of them, by algorithm and output kind (records/job.hpp); of words, all phases,
    // exact.
    void (*bytes[algorithms][outputKinds])(const FrameJob&);
    void (*words[algorithms][outputKinds])(const FrameJob&);
    // Internal: grey frames, by output kind.
    void (*greyBytes[outputKinds])(const FrameJob&);
    void (*greyWords[outputKinds])(const FrameJob&);

    int32_t vectorBytes;  // 2 of the scalar set
};

// The tables by name: scalarKernels, ssse3Kernels ...
#define KRO_SET(set, ...) extern const Kernels set##Kernels;
#include "table/sets.def"
#undef KRO_SET

// The table that serves this processor best. A pure function of the compiler runtime's CPU record.
const Kernels& bestKernels();

// All tables this processor can run, scalar first, best last. Writes at most `room` pointers, returns how many exist.
int usableKernels(const Kernels** tables, int room);

}  // namespace kro
