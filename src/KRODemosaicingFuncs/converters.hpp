// Converters of one frame: the output format decides kernel, channel order and planes.
#pragma once

#include "kro/kro.h"
#include "records/formats.hpp"
#include "table/kernels.hpp"

namespace kro {

// A frame whose rows, and the picture's, follow each other without gaps. Grey or of a phase, as `input` says.
int32_t convertFrame(const Kernels& kernels, const InputFormat& input, const Source& source, uint8_t* destination,
                     int32_t height, int32_t width, uint32_t outputFormat, KroAlgorithm algorithm);

// The kernels of a frame, by what goes in and comes out.
void runFrame(const Kernels& kernels, const InputFormat& input, const OutputFormat& output, KroAlgorithm algorithm,
              const FrameJob& job);

}  // namespace kro
