#pragma once

#include <string>

#include "pictures/picture_file.hpp"

namespace cli {

// Levels of compression: 0 stores, 12 takes the longest.
constexpr int mostPngLevel = 12;

// The picture's channels must be grey, RGB or RGBA.
Bytes encodePng(Picture picture, int level);

PictureHeader readPngHeader(const Bytes& file, const std::string& name);
DecodedPicture decodePng(const Bytes& file, const std::string& name);

}  // namespace cli
