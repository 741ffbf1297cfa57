#pragma once

#include <string>

#include "pictures/picture_file.hpp"

namespace cli {

// Binary PGM for a grey picture, PPM for an RGB one.
Bytes encodePnm(const Picture& picture, uint32_t maximum);

// P2, P3, P5 and P6 with any maximum.
PictureHeader readPnmHeader(const Bytes& file, const std::string& name);
DecodedPicture decodePnm(const Bytes& file, const std::string& name);

}  // namespace cli
