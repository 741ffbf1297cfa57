#pragma once

#include "frames/frame_reader.hpp"
#include "pictures/picture_file.hpp"

namespace cli {

// An array as numpy.save writes it: rows and columns, or frames, rows and columns, of uint8 or uint16.
PictureHeader readNpyHeader(const InputFile& file);
// Frames count from 1.
DecodedPicture decodeNpy(const InputFile& file, uint64_t number);

}  // namespace cli
