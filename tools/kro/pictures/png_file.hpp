#pragma once

#include <string>

#include "pictures/picture_file.hpp"

namespace cli {

// The picture's channels must be grey, RGB or RGBA.
Bytes encodePng(const Picture& picture);
DecodedPicture decodePng(const Bytes& file, const std::string& name);

}  // namespace cli
