#pragma once

#include "picture.hpp"

namespace cli {

// The picture's channels must be BGR or BGRA.
Bytes encodeBmp(const Picture& picture);

}  // namespace cli
