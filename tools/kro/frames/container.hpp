#pragma once

#include "frames/frame_reader.hpp"

namespace cli {

// By the first bytes of a file, whatever its name.
Container containerIn(const uint8_t* start, std::size_t count);
const char* nameOf(Container container);

// How a file's frames are to be read: by its header where its name speaks of a picture file that can hold a mosaic
// (PGM, PNG, TIFF, NPY), by options and its name where it is raw.
FrameLayout layoutOf(const InputFile& file, const FrameRequest& request);

// A container's frame as a raw one of its layout.
void readContained(const InputFile& file, const FrameLayout& layout, uint64_t number, Bytes& frame);

}  // namespace cli
