#pragma once

#include <cstdint>
#include <vector>

#include "frames/formats.hpp"
#include "frames/frame_reader.hpp"

namespace cli {

using Samples = std::vector<uint16_t>;

// The first count samples of a frame as numbers, whatever its layout.
void unpackSamples(const Bytes& frame, const InputFormat& format, std::size_t count, Samples& samples);

// The reverse. Samples must not exceed the format's maximum.
Bytes packSamples(const Samples& samples, const InputFormat& format);

}  // namespace cli
