#pragma once

#include "frames/frame_reader.hpp"

namespace cli {

// How a file's frames are to be read: by its header where its name speaks of a picture file that can hold a mosaic
// (PGM, PNG, TIFF, NPY), by options and its name where it is raw.
FrameLayout layoutOf(const InputFile& file, const FrameRequest& request);

// A container's frame as a raw one of its layout.
void readContained(const InputFile& file, const FrameLayout& layout, uint64_t number, Bytes& frame);

}  // namespace cli
