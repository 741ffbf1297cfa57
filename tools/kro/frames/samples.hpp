#pragma once

#include <cstdint>
#include <vector>

#include "frames/formats.hpp"
#include "frames/frame_reader.hpp"

namespace cli {

using Samples = std::vector<uint16_t>;

// The samples of a frame as numbers, whatever its layout. Words may exceed their format.
void unpackSamples(const Bytes& frame, const FrameLayout& layout, Samples& samples);

// The reverse. Samples must not exceed the format's maximum.
Bytes packSamples(const Samples& samples, const FrameLayout& layout);

}  // namespace cli
