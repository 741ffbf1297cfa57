#pragma once

#include <string>

#include "pictures/picture.hpp"
#include "terminal/screen.hpp"

namespace cli {

// Pixels that a number of characters takes.
FrameSize pixelsOf(const Screen& screen, int columns, int rows);

// What puts an RGB picture of bytes on the terminal, with the cursor at the start of the line below it afterwards.
std::string drawn(const Picture& picture, const Screen& screen);

}  // namespace cli
