#pragma once

#include <cstdint>
#include <string>

#include "frames/inference.hpp"

namespace cli {

// Frames in a raw file of so many bytes; a failure where these do not fit the layout, but for a rest that may be
// ignored.
uint64_t countFrames(const std::string& name, uint64_t length, const FrameLayout& layout, bool ignoreRest);

// "1 frame", "2 frames".
std::string framesText(uint64_t count);
// "one 8x6 BayerRG8 frame takes 48".
std::string needText(const FrameLayout& layout);

}  // namespace cli
