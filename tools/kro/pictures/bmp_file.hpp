#pragma once

#include <string>

#include "pictures/picture_file.hpp"

namespace cli {

// The picture's channels must be BGR or BGRA.
Bytes encodeBmp(const Picture& picture);

// 8 bits with a palette, 24 or 32 bits, not compressed.
DecodedPicture decodeBmp(const Bytes& file, const std::string& name);

}  // namespace cli
