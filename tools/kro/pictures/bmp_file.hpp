#pragma once

#include "pictures/picture.hpp"

namespace cli {

// The picture's channels must be BGR or BGRA.
Bytes encodeBmp(const Picture& picture);

}  // namespace cli
