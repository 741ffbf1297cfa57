// The table of kernels of one instruction set, and the choice among the tables.
#pragma once

#include <cstdint>

#include "frame/job.hpp"
#include "kro/kro.h"

namespace kro {


struct Kernels {
    const char* name;  // "scalar", "ssse3", "avx2", "avx512bw", "avx512vbmi"

    // Exported routines: one member of the exported type and name each.
#define KRO_KERNEL(routine, arity) decltype(&::routine) routine;
#include "isa/kernels.def"
#undef KRO_KERNEL

    // Internal: whole frames, 8 bits, any phase and order, indexed by algorithm and by output kind (frame/job.hpp).
    void (*frame[3][4])(const FrameJob&);
    // Internal: samples [first, first + count) of a frame of n to bytes; source, first, count, n, destination.
    void (*reduce)(const Source&, ptrdiff_t, ptrdiff_t, ptrdiff_t, uint8_t*);
    // Internal: grey to three and four bytes a pixel; source, pixels, destination.
    void (*monoToBgr)(const uint8_t*, int64_t, uint8_t*);
    void (*monoToBgra)(const uint8_t*, int64_t, uint8_t*);
};

// The table that serves this processor best. A pure function of the compiler runtime's CPU record.
const Kernels& bestKernels();

// All tables this processor can run, scalar first, best last. Writes at most `room` pointers, returns how many exist.
int usableKernels(const Kernels** tables, int room);

// The exported functions with the table given instead of chosen.
int32_t demosaicing(const Kernels& kernels, KroContext* handle, const KroImage* input, KroAlgorithm algorithm,
                    KroImage* output);
int32_t bayerConvert(const Kernels& kernels, Phase phase, const Source& source, uint8_t* destination, int32_t height,
                     int32_t width, uint32_t outputFormat, KroAlgorithm algorithm);
int32_t monoConvert(const Kernels& kernels, const Source& source, uint8_t* destination, int32_t height, int32_t width,
                    uint32_t outputFormat);

}  // namespace kro
