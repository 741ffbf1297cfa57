#pragma once

#include "frames/frame_reader.hpp"

namespace cli {

// Puts the picture file into the folder for temporary files and has the desktop open it. Returns its path.
std::string openInViewer(const Bytes& png);

}  // namespace cli
