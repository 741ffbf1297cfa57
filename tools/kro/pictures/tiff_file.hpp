#pragma once

#include "pictures/picture.hpp"

namespace cli {

// Uncompressed; the picture's channels must be grey, RGB or RGBA.
Bytes encodeTiff(const Picture& picture);

}  // namespace cli
