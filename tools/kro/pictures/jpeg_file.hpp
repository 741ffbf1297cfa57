#pragma once

#include "pictures/picture_file.hpp"

namespace cli {

// The picture's samples must be bytes, its channels grey, RGB or BGR.
Bytes encodeJpeg(const Picture& picture, int quality);
DecodedPicture decodeJpeg(const Bytes& file, const std::string& name);

}  // namespace cli
